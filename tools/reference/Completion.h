// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

#include "CommandLine.h"

/// Write the completion of the command line for a shell.
void WriteBashCompletion(std::ostream& out, const CommandLine& line);
void WriteZshCompletion(std::ostream& out, const CommandLine& line);
