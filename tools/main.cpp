#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <string>
#include <system_error>

#include "ApplyCommand.h"
#include "CommandError.h"
#include "ExitStatus.h"
#include "Printable.h"
#include "StandardOutput.h"
#include "StatsCommand.h"
#include "TogglesCommand.h"

namespace {

int Fail(const std::string& line) {
  std::cerr << line << '\n';
  return kExitNotUsable;
}

int Run(int argc, char** argv) {
  int exitStatus = kExitFine;
  CLI::App app("See what the settings of a media engine's call are, and what changes them.", "tessel");
  app.set_version_flag("--version", "tessel " TESSEL_VERSION, "Print the version and exit");
  app.require_subcommand(1);
  AddApplyCommand(app, exitStatus);
  AddStatsCommand(app, exitStatus);
  AddTogglesCommand(app, exitStatus);
  app.footer(
      "Examples:\n"
      "  tessel apply base.json lab.json --dump all\n"
      "  tessel stats blocks.bin\n"
      "  tessel toggles audio --from lab.json\n"
      "  tessel apply --help");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return app.exit(success);  // Help or version.
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
