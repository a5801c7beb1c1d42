// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// Says what is wrong with a command line that `app` has refused, and what may be meant. Has bytes of the
/// command line as they are.
std::string Explained(const CLI::ParseError& error, const CLI::App& app);
