// SPDX-License-Identifier: Apache-2.0
#include "ExportCommand.h"

#include <memory>
#include <optional>
#include <string>

#include "CommandError.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "Printable.h"
#include "TextFile.h"
#include "recording/PerfettoTrace.h"
#include "recording/RecordingFile.h"
#include "recording/StatisticsTables.h"

namespace {

struct ExportOptions {
  std::string file;
  std::optional<std::string> folder;
  std::optional<std::string> trace;
};

int Export(const ExportOptions& options) {
  if (!options.folder && !options.trace) throw UsageError("--csv or --perfetto is required");
  RefuseToReadAgain(options.file, "it is read twice");
  StatisticsTables tables;
  bool isRecording = false;
  RecordingFile recording(options.file);
  if (options.trace && recording.Has(*options.trace))
    throw UsageError("--perfetto " + Quoted(*options.trace) + ": is the recording");
  const bool isWhole = recording.Read([&](const RecordingEvent& event, const std::string&) {
    isRecording = true;
    tables.Learn(event);
  });
  if (!isRecording) return kExitNotUsable;

  if (options.folder) {
    for (const std::string& table : tables.Files(*options.folder)) {
      if (recording.Has(table)) throw UsageError("--csv: " + Quoted(table) + " is the recording");
    }
    tables.Begin(*options.folder);
  }
  std::optional<PerfettoTrace> trace;
  if (options.trace) trace.emplace(*options.trace);
  const auto write = [&](const RecordingEvent& event, const std::string&) {
    if (options.folder) tables.Write(event);
    if (trace) trace->Write(event);
  };
  RecordingFile(options.file).Read(write, RecordingFile::End::kOfFile, RecordingFile::Faults::kSilent);
  if (options.folder) tables.Finish();
  if (trace) trace->Finish();
  return isWhole ? kExitFine : kExitNotUsable;
}

}  // namespace

void AddExportCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<ExportOptions>();
  CLI::App* const command =
      app.add_subcommand("export", "Write a recording as tables of its statistics, or as a trace");
  SetFile(*command->add_option("FILE", options->file, "A recording")->required());
  CLI::Option* const folder = command->add_option(
      "--csv", options->folder, "Write a table of statistics per call and kind into this folder");
  SetFile(*folder);
  folder->type_name("DIR");
  SetFile(*command->add_option("--perfetto", options->trace,
                               "Write the deliveries and sets on their threads, for ui.perfetto.dev"));
  command->footer(
      "A table is named call-7-video.csv, for example. It has a line of names, the time t in seconds first, "
      "then a\n"
      "line for each time that members were recorded, with the last value of each.\n\n" +
      ExitStatusHelp("done") +
      "\n\n"
      "Examples:\n"
      "  tessel export call.tessel --csv tables\n"
      "  tessel export call.tessel --perfetto call.json");
  command->callback([options, &exitStatus] { exitStatus = Export(*options); });
}
