// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel export`, which writes a recording in forms that other programs open. Running it sets
/// `exitStatus`, or throws CommandError.
void AddExportCommand(CLI::App& app, int& exitStatus);
