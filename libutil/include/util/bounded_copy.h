// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// Copies that never write past their destination. Sources and destinations must not overlap.
/// @threads Any, on memory that nobody else writes.
/// @par Example
/// @code{.cpp}
/// char text[8];
/// assert(strncpy_s(text, sizeof text, "MaxFps", 6) == 0);
/// assert(strnlen_s(text, sizeof text) == 6);
/// assert(strncpy_s(text, sizeof text, "MaxBitrate", 10) != 0 && *text == '\0');
///
/// int numbers[2];
/// const int source[2] = {1, 2};
/// assert(memcpy_s(numbers, sizeof numbers, source, sizeof source) == 0 && numbers[1] == 2);
/// assert(memset_s(numbers, sizeof numbers, 0, sizeof numbers) == 0 && numbers[1] == 0);
/// @endcode

#include <cstddef>

#include "util/export.h"

/// Copies bytes. When they do not fit, or `source` is null, the destination is zeroed.
/// @param destination  where to
/// @param destinationSize  its size in bytes
/// @param source  where from
/// @param count  how many bytes
/// @return 0; EINVAL when `destination` or `source` is null; ERANGE when the bytes do not fit.
UTIL_API int memcpy_s(void* destination, std::size_t destinationSize, const void* source, std::size_t count);

/// Sets bytes; when they do not fit, all that there are.
/// @param destination  where
/// @param destinationSize  its size in bytes
/// @param value  what to, of which the low 8 bits count
/// @param count  how many bytes
/// @return 0; EINVAL when `destination` is null; ERANGE when the bytes do not fit.
UTIL_API int memset_s(void* destination, std::size_t destinationSize, int value, std::size_t count);

/// Copies a string, up to its NUL, and terminates the copy. When string and NUL do not fit, or `source` is
/// null, the destination becomes the empty string.
/// @param destination  where to
/// @param destinationSize  its size in bytes
/// @param source  where from
/// @param count  how many characters at most
/// @return 0; EINVAL when `destination` or `source` is null; ERANGE when string and NUL do not fit.
UTIL_API int strncpy_s(char* destination, std::size_t destinationSize, const char* source, std::size_t count);

/// Measures a string; reads no further than `limit` characters.
/// @param text  may be null
/// @param limit  how many characters at most
/// @return The string's length, at most `limit`; 0 for null.
UTIL_API std::size_t strnlen_s(const char* text, std::size_t limit);
