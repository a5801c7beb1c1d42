// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel toggles`, which prints the catalogue of feature toggles, and what settings documents make of
/// them. Running it sets `exitStatus`, or throws CommandError.
void AddTogglesCommand(CLI::App& app, int& exitStatus);
