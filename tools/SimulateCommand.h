// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel simulate`, which runs the calls of a small media engine on the library and reports what the
/// library did. Running it sets `exitStatus`, or throws CommandError.
void AddSimulateCommand(CLI::App& app, int& exitStatus);
