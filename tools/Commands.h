// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Makes `app` the program's command line. Parsing it runs the command, which sets `exitStatus` or throws
/// CommandError.
void AddCommands(CLI::App& app, int& exitStatus);
