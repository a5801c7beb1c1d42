// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel log`, which shows what recordings say, a line an event. Running it sets `exitStatus`, or
/// throws CommandError.
void AddLogCommand(CLI::App& app, int& exitStatus);
