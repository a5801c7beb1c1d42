#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <string>
#include <system_error>

#include "CommandError.h"
#include "Commands.h"
#include "ExitStatus.h"
#include "Printable.h"
#include "StandardOutput.h"

namespace {

int Fail(const std::string& line) {
  std::cerr << line << '\n';
  return kExitNotUsable;
}

int Run(int argc, char** argv) {
  int exitStatus = kExitFine;
  CLI::App app;
  AddCommands(app, exitStatus);
  try {
    if (argc > 1 && *argv[1] != '-') app.get_subcommand(std::string(argv[1]));
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return app.exit(success);  // Help or version.
  } catch (const CLI::OptionNotFound&) {
    return Fail("tessel: there is no command \"" + Printable(argv[1]) + "\" (tessel --help lists them)");
  } catch (const CLI::ParseError& error) {
    return Fail("tessel: " + Printable(error.what()) + " (tessel --help tells more)");
  } catch (const CommandError& error) {
    return Fail(error.what());
  }
  return exitStatus;
}

}  // namespace

int main(int argc, char** argv) {
  OpenMissingDescriptors();
  StandardOutput output;
  int exitStatus = kExitNotUsable;
  try {
    exitStatus = Run(argc, argv);
  } catch (const std::exception& error) {
    Fail(std::string("tessel: ") + error.what());
  }
  if (const int error = output.Finish(); error != 0) {
    return Fail(std::string("tessel: standard output cannot be written: ") +
                std::generic_category().message(error));
  }
  return exitStatus;
}
