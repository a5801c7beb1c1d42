// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel dump`, which writes the settings that a recorded call had at a moment. Running it sets
/// `exitStatus`, or throws CommandError.
void AddDumpCommand(CLI::App& app, int& exitStatus);
