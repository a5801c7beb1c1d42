// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel report`, which writes recordings as a page for a browser. Running it sets `exitStatus`, or
/// throws CommandError.
void AddReportCommand(CLI::App& app, int& exitStatus);
