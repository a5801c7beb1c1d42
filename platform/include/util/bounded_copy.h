#pragma once

#include <cstddef>

#include "util/export.h"

/// Copies that never write past their destination. All return 0, or an errno value when an argument is wrong:
/// EINVAL for a null pointer, ERANGE for what does not fit. Sources and destinations must not overlap.

/// Copies `count` bytes. When they do not fit, or `source` is null, the destination is zeroed.
UTIL_API int memcpy_s(void* destination, std::size_t destinationSize, const void* source, std::size_t count);

/// Sets `count` bytes; when they do not fit, sets all `destinationSize` bytes and returns ERANGE.
UTIL_API int memset_s(void* destination, std::size_t destinationSize, int value, std::size_t count);

/// Copies at most `count` characters up to the source's NUL, and terminates. When text and NUL do not fit, or
/// `source` is null, the destination becomes the empty text.
UTIL_API int strncpy_s(char* destination, std::size_t destinationSize, const char* source, std::size_t count);

/// The text's length, at most `limit`; reads no further than `limit` characters. 0 for null.
UTIL_API std::size_t strnlen_s(const char* text, std::size_t limit);
