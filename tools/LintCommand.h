#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel lint`, which tells everything in settings documents that import would pass over in silence.
/// Running it sets `exitStatus`, or throws CommandError.
void AddLintCommand(CLI::App& app, int& exitStatus);
