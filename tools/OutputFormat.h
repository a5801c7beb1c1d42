#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// Lets the option's value be one of the names only.
void SetChoices(CLI::Option& option, const std::vector<std::string>& names);

/// Adds `--format`, which sets `format` to one of the names, and for each name but the first, which is what a
/// command writes unless told otherwise, the short form `--NAME`.
void AddFormatOption(CLI::App& command, std::string& format, const std::vector<std::string>& names);
