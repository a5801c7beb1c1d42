// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel stats`, which prints raw statistics blocks with names and units. Running it sets
/// `exitStatus`, or throws CommandError.
void AddStatsCommand(CLI::App& app, int& exitStatus);
