// Writes the manual pages and the completion of bash and zsh into a folder:
// usage: tessel_reference FOLDER

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
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

template <class... Apps>
std::string Written(void (*write)(std::ostream&, const Apps&...), const Apps&... apps) {
  std::ostringstream out;
  write(out, apps...);
  return out.str();
}

void WriteAll(const std::filesystem::path& folder) {
  int exitStatus = 0;
  CLI::App program;
  AddCommands(program, exitStatus);
  const std::string& name = program.get_name();
  WriteFile(folder / "man1" / (name + ".1"), Written<CLI::App>(WriteManPage, program));
  for (const CLI::App* const command : CommandsOf(program)) {
    WriteFile(folder / "man1" / (name + "-" + command->get_name() + ".1"),
              Written<CLI::App, CLI::App>(WriteManPage, program, *command));
  }
  WriteFile(folder / "bash" / name, Written(WriteBashCompletion, program));
  WriteFile(folder / "zsh" / ("_" + name), Written(WriteZshCompletion, program));
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
