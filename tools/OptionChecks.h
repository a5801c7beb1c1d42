// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

// What the value of an option may be. A value that it may not be is refused with a sentence that says so.

/// One of the names.
void SetChoices(CLI::Option& option, const std::vector<std::string>& names);

/// A decimal number within the range.
void SetRange(CLI::Option& option, unsigned least, unsigned most);
void SetRange(CLI::Option& option, double least, double most);

/// A time in seconds, and the id of a call.
void SetSeconds(CLI::Option& option);
void SetCall(CLI::Option& option);

/// A file: a name that is not empty.
void SetFile(CLI::Option& option);
