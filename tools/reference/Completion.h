#pragma once

#include <CLI/CLI.hpp>
#include <ostream>

/// Write the completion of the program's command line for a shell.
void WriteBashCompletion(std::ostream& out, const CLI::App& program);
void WriteZshCompletion(std::ostream& out, const CLI::App& program);
