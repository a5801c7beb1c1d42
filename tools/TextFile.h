// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The name of standard input.
inline constexpr const char* kStandardInput = "-";

/// The file's name, or "<stdin>".
std::string FileName(const std::string& file);

/// What messages call the file: the same as it can be shown.
std::string FileTitle(const std::string& file);

/// Throws UsageError for standard input, a pipe and a device: they have nothing more for who reads again.
/// @param why  the command does
void RefuseToReadAgain(const std::string& file, const std::string& why);

/// Throws UsageError when standard input is among the files more than once.
void RefuseRepeatedInput(const std::vector<std::string>& files, const std::vector<std::string>& others = {});

/// The whole of a file, or of standard input; of up to 1 GiB. Throws CommandError with the reason.
std::string ReadFile(const std::string& file);

/// Why a text cannot be a JSON document, as its first bytes show: it is empty, a recording, has a byte order
/// mark, or is in UTF-16 or UTF-32. "" when they show nothing of the kind.
std::string ForeignFormat(std::string_view text);
