// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>

/// Adds `tessel apply`, which applies settings documents to the store of one call and shows what they change.
/// Running it sets `exitStatus`, or throws CommandError.
void AddApplyCommand(CLI::App& app, int& exitStatus);
