// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"

#include <memory>
#include <string>

#include "ApplyCommand.h"
#include "DeclareCommand.h"
#include "DiffCommand.h"
#include "DumpCommand.h"
#include "ExitStatus.h"
#include "ExportCommand.h"
#include "LintCommand.h"
#include "LiveCommand.h"
#include "LogCommand.h"
#include "ReportCommand.h"
#include "SimulateCommand.h"
#include "StatsCommand.h"
#include "TogglesCommand.h"

namespace {

// The help as CLI11 writes it, but with the placeholder of an option's value as all that follows its name.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    if (option->get_positional()) return option->get_expected_max() > 1 ? "..." : "";
    return option->get_items_expected_max() == 0 ? "" : " " + option->get_type_name();
  }
};

}  // namespace

void AddCommands(CLI::App& app, int& exitStatus) {
  app.formatter(std::make_shared<HelpFormatter>())  // Of the commands, too.
      ->name("tessel")
      ->description("See what the settings of a media engine's call are, and what changes them")
      ->require_subcommand(1);
  app.set_version_flag("--version", "tessel " TESSEL_VERSION, "Print the version and exit");
  AddApplyCommand(app, exitStatus);
  AddDeclareCommand(app, exitStatus);
  AddDiffCommand(app, exitStatus);
  AddDumpCommand(app, exitStatus);
  AddExportCommand(app, exitStatus);
  AddLintCommand(app, exitStatus);
  AddLiveCommand(app, exitStatus);
  AddLogCommand(app, exitStatus);
  AddReportCommand(app, exitStatus);
  AddSimulateCommand(app, exitStatus);
  AddStatsCommand(app, exitStatus);
  AddTogglesCommand(app, exitStatus);
  app.footer(
      "What import skips is reported on standard error; where that is a terminal, so is the progress of"
      " a run of\n"
      "more than a second. Standard output has colour where it is a terminal, unless NO_COLOR is set.\n\n" +
      ExitStatusHelp("done", "done, and there are findings or differences") +
      "\n\n"
      "Examples:\n"
      "  tessel apply base.json lab.json --dump all\n"
      "  tessel declare settings.json --header\n"
      "  tessel diff base.json lab.json\n"
      "  tessel dump call.tessel --at 12.5 --call 7\n"
      "  tessel export call.tessel --perfetto call.json\n"
      "  tessel lint lab.json\n"
      "  tessel live call.tessel\n"
      "  tessel log call.tessel --group Video\n"
      "  tessel report call.tessel -o call.html\n"
      "  tessel simulate --settings base.json --report report.html\n"
      "  tessel stats blocks.bin\n"
      "  tessel toggles audio --from lab.json\n"
      "  tessel apply --help");
}
