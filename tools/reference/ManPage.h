#pragma once

#include <CLI/CLI.hpp>
#include <ostream>

/// Writes the manual page of the program.
void WriteManPage(std::ostream& out, const CLI::App& program);

/// Writes the manual page of one of its commands.
void WriteManPage(std::ostream& out, const CLI::App& program, const CLI::App& command);
