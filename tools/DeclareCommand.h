// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds the command `declare` to the program.
void AddDeclareCommand(CLI::App& app, int& exitStatus);
