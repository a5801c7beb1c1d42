// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel lint`, which reports everything in settings documents that import would skip without a word.
/// Running it sets `exitStatus`, or throws CommandError.
void AddLintCommand(CLI::App& app, int& exitStatus);
