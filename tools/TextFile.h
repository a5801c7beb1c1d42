#pragma once

#include <string>
#include <vector>

/// The name that stands for standard input.
inline constexpr const char* kStandardInput = "-";

/// The file's name, or "<stdin>".
std::string FileName(const std::string& file);

/// What messages call the file: the same as it can be shown.
std::string FileTitle(const std::string& file);

/// Throws UsageError when standard input is among the files more than once.
void RefuseRepeatedInput(const std::vector<std::string>& files, const std::vector<std::string>& others = {});

/// The whole of a file, or of standard input. Throws CommandError with the system's reason.
std::string ReadFile(const std::string& file);
