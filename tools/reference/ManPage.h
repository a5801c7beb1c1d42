// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "CommandLine.h"

/// Writes the manual page of the program.
void WriteManPage(std::ostream& out, const CommandLine& line);

/// Writes the manual page of one of its commands.
void WriteManPage(std::ostream& out, const CommandLine& line, const Command& command);
