// SPDX-License-Identifier: Apache-2.0
// Writes the manual pages and the completion of bash and zsh into a folder:
// usage: tessel_reference FOLDER

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "CommandLine.h"
#include "Commands.h"
#include "Completion.h"
#include "ManPage.h"

namespace {

void WriteFile(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary);
  out << text << std::flush;
  if (!out) throw std::runtime_error(file.string() + " cannot be written");
}

template <class... Parts>
std::string Written(void (*write)(std::ostream&, const Parts&...), const Parts&... parts) {
  std::ostringstream out;
  write(out, parts...);
  return out.str();
}

void WriteAll(const std::filesystem::path& folder) {
  int exitStatus = 0;  // Of a command: none runs.
  CLI::App app;
  AddCommands(app, exitStatus);
  const CommandLine line = CommandLineOf(app);
  const std::string& name = line.program.name;
  WriteFile(folder / "man1" / (name + ".1"), Written<CommandLine>(WriteManPage, line));
  for (const Command& command : line.commands) {
    WriteFile(folder / "man1" / (name + "-" + command.name + ".1"),
              Written<CommandLine, Command>(WriteManPage, line, command));
  }
  WriteFile(folder / "bash" / name, Written(WriteBashCompletion, line));
  WriteFile(folder / "zsh" / ("_" + name), Written(WriteZshCompletion, line));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: tessel_reference FOLDER\n";
    return 2;
  }
  try {
    WriteAll(argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "tessel_reference: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
