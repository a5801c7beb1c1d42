// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel diff`, which reports what a second settings document changes after a first one, or what
/// differs between two. Running it sets `exitStatus`, or throws CommandError.
void AddDiffCommand(CLI::App& app, int& exitStatus);
