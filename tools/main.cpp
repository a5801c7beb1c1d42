// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <system_error>

#include "CommandError.h"
#include "Commands.h"
#include "ExitStatus.h"
#include "ParseErrors.h"
#include "Printable.h"
#include "StandardOutput.h"
#include "TraceOutput.h"

namespace {

int Fail(const std::string& line) {
  if (!line.empty()) std::cerr << line << '\n';
  return kExitNotUsable;
}

int Run(int argc, char** argv) {
  int exitStatus = kExitFine;
  CLI::App app;
  AddCommands(app, exitStatus);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return app.exit(success);  // Help or version.
  } catch (const CLI::ParseError& error) {
    return Fail("tessel: " + Printable(Explained(error, app)));
  } catch (const CommandError& error) {
    return Fail(error.what());
  }
  return exitStatus;
}

}  // namespace

int main(int argc, char** argv) {
  ReserveStandardDescriptors();
  ShowTraceLines();
  StandardOutput output;
  int exitStatus = kExitNotUsable;
  try {
    exitStatus = Run(argc, argv);
  } catch (const std::bad_alloc&) {
    Fail("tessel: not enough memory");
  } catch (const std::exception& error) {
    Fail("tessel: " + Printable(error.what()));
  }
  if (const int error = output.Finish(); error != 0) {
    return Fail(std::string("tessel: standard output cannot be written: ") +
                std::generic_category().message(error));
  }
  return exitStatus;
}
