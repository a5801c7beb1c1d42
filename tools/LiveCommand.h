// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel live`, which serves the page over a growing recording to browsers of this machine. Running it
/// sets `exitStatus`, or throws CommandError.
void AddLiveCommand(CLI::App& app, int& exitStatus);
