#pragma once

#include <string>

/// The name that stands for standard input.
inline constexpr const char* kStandardInput = "-";

/// What messages call the file: its name as it can be shown, or "<stdin>".
std::string FileTitle(const std::string& file);

/// The whole of a file, or of standard input. Throws CommandError with the system's reason.
std::string ReadFile(const std::string& file);
