// SPDX-License-Identifier: Apache-2.0
#include "DumpCommand.h"

#include <memory>
#include <optional>

#include "DumpOutput.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "recording/RecordedSettings.h"

namespace {

struct DumpOptions {
  RecordedMoment moment;
  std::optional<unsigned> call;
};

int Dump(const DumpOptions& options) {
  const SettingsAtMoment settings = ReadSettingsAt(options.moment, options.call);
  PrintDump(settings.document);
  return settings.exitStatus;
}

}  // namespace

void AddDumpCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<DumpOptions>();
  CLI::App* const command =
      app.add_subcommand("dump", "Print the settings that a recorded call had at a moment, as a document");
  SetFile(*command->add_option("FILE", options->moment.file, "A recording; - is standard input")->required());
  SetSeconds(*command->add_option("--at", options->moment.seconds,
                                  "Seconds from the start of the recording; its end without it"));
  SetCall(*command->add_option("--call", options->call, "The call; may be left out when there is only one"));
  command->footer(
      "The settings document is a line of JSON; applied to an empty store, it gives the values of that "
      "moment. A\n"
      "value that the recording does not have whole is left out, and reported on standard error.\n\n" +
      ExitStatusHelp("done", "done, but the recording lacks values") +
      "\n\n"
      "Examples:\n"
      "  tessel dump call.tessel --at 12.5 --call 7\n"
      "  tessel dump call.tessel --call 7 | tessel lint -");
  command->callback([options, &exitStatus] { exitStatus = Dump(*options); });
}
