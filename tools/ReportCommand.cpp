// SPDX-License-Identifier: Apache-2.0
#include "ReportCommand.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "CommandError.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "OutputFile.h"
#include "Printable.h"
#include "TextFile.h"
#include "recording/RecordingFile.h"
#include "report/Page.h"
#include "report/RecordingsPage.h"

namespace {

struct ReportOptions {
  std::vector<std::string> files;
  std::string page;
};

void RefuseRecordingAsPage(const std::string& page, const std::vector<RecordingFile>& files) {
  if (std::ranges::any_of(files, [&](const RecordingFile& file) { return file.Has(page); }))
    throw UsageError("--output " + Quoted(page) + ": is one of the recordings");
}

int WriteReport(const ReportOptions& options) {
  RefuseRepeatedInput(options.files);
  if (options.page == kStandardInput) throw UsageError("--output -: a page needs a file of its own");
  RequirePage();
  std::vector<RecordingFile> files = OpenRecordings(options.files);
  RefuseRecordingAsPage(options.page, files);
  return WriteRecordingsPage(files, OutputFile(options.page)) ? kExitFine : kExitNotUsable;
}

}  // namespace

void AddReportCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<ReportOptions>();
  CLI::App* const command =
      app.add_subcommand("report", "Write recordings as a page to look at in a browser");
  SetFile(
      *command
           ->add_option("FILE", options->files, "Recordings, compared on one time axis; - is standard input")
           ->required());
  SetFile(*command->add_option("-o,--output", options->page, "The page, one HTML file")->required());
  command->footer(
      "The page needs nothing but a browser: it has the recordings in it, and asks for nothing from "
      "elsewhere. It\n"
      "has plots of the statistics with the changes on them, tables of changes and of subscribers, and the "
      "settings\n"
      "at any time. Another recording can be dropped on it. A damaged line is reported and left out.\n\n" +
      ExitStatusHelp("done") +
      "\n\n"
      "Examples:\n"
      "  tessel report call.tessel -o call.html\n"
      "  tessel report before.tessel after.tessel -o compared.html");
  command->callback([options, &exitStatus] { exitStatus = WriteReport(*options); });
}
