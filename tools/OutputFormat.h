// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// Adds `--format`, which sets `format` to one of the names, and for each name but the first, which is what a
/// command writes by default, the short form `--NAME`.
void AddFormatOption(CLI::App& command, std::string& format, const std::vector<std::string>& names);
