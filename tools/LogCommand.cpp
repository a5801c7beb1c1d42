// SPDX-License-Identifier: Apache-2.0
#include "LogCommand.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommandError.h"
#include "ConfigPath.h"
#include "ExitStatus.h"
#include "Glob.h"
#include "OptionChecks.h"
#include "Printable.h"
#include "TextFile.h"
#include "recording/EventText.h"
#include "recording/RecordingFile.h"

namespace {

struct LogOptions {
  std::vector<std::string> files;
  std::vector<std::string> types;
  std::optional<std::string> group;
  std::optional<std::string> name;
  std::optional<std::string> origin;
  std::optional<unsigned> call;
  std::optional<double> since;
  std::optional<double> until;
  bool follow = false;
  bool json = false;
};

// Which events are shown. Where a recording begins and ends and what was lost concerns each selection: it is
// left out by its type and time alone, so that a selection in JSON is a recording itself.
class Selection {
 public:
  explicit Selection(const LogOptions& options) : m_options(options) {
    if (!options.group) return;
    m_group = kalStore::GroupName2KalConfigGroup(*options.group);
    if (!kalStore::IsConfigGroup(m_group)) throw UsageError("--group: " + UnknownGroup(*options.group));
  }

  bool Has(const RecordingEvent& event) const {
    const std::vector<std::string>& types = m_options.types;
    if (!types.empty() && std::ranges::find(types, event.type) == types.end()) return false;
    if (event.type == "recording") return true;
    if (m_options.since && event.time < *m_options.since) return false;
    if (m_options.until && event.time > *m_options.until) return false;
    return event.type == "lost" || hasSubject(event);
  }

 private:
  bool hasSubject(const RecordingEvent& event) const {
    if (m_options.call && event.call != *m_options.call) return false;
    if (m_options.group && event.group != m_group) return false;
    if (m_options.name && !fits(*m_options.name, event.name)) return false;
    return !m_options.origin || isBy(*m_options.origin, event.origin);
  }

  static bool fits(const std::string& pattern, const std::optional<std::string>& text) {
    return text && FitsGlob(pattern, *text);
  }

  // A module is named by its file or by its whole path.
  static bool isBy(const std::string& pattern, const RecordingEvent::Origin& origin) {
    return fits(pattern, origin.label) || fits(pattern, origin.document) || fits(pattern, origin.symbol) ||
           fits(pattern, origin.module) || (origin.module && FitsGlob(pattern, BaseName(*origin.module)));
  }

  const LogOptions& m_options;
  kalStore::KalConfigGroup m_group{};
};

// The line itself: it has members that this program may not know. White space that a terminal does not show
// as a space is no part of a recorded line; with it, the line is written again.
void PrintLine(const std::string& line) {
  const bool isCompact = line.find_first_of("\t\v\f\r") == std::string::npos;
  std::cout << PrintableJson(isCompact ? line : json::Serialize(json::Deserialize(line))) << '\n';
}

int Log(const LogOptions& options) {
  const Selection selection(options);
  RefuseRepeatedInput(options.files);
  if (options.follow && options.files.size() != 1) throw UsageError("--follow: expected one FILE");
  std::vector<RecordingFile> files = OpenRecordings(options.files);
  bool isFine = true;
  for (RecordingFile& file : files) {
    const bool isWhole = file.Read(
        [&](const RecordingEvent& event, const std::string& line) {
          if (!selection.Has(event)) return;
          if (options.json) {
            PrintLine(line);
          } else {
            PrintRecordingEvent(std::cout, event);
          }
        },
        options.follow ? RecordingFile::End::kOfRecording : RecordingFile::End::kOfFile);
    isFine = isFine && isWhole;
  }
  return isFine ? kExitFine : kExitNotUsable;
}

std::string LogFooter() {
  return "A recording is described in the guide on recordings. A damaged line is reported on standard error, "
         "and the\n"
         "rest is shown; an end that is cut off is no damage. Lines of type recording and lost are left out "
         "by\n"
         "--type, and lost ones by --since and --until, but by no other option.\n\n" +
         ExitStatusHelp("done") +
         "\n\n"
         "Examples:\n"
         "  tessel log call.tessel --group Video --name 'Max*'\n"
         "      Who set the limits of the video, and who was notified?\n"
         "  tessel log call.tessel --origin '*bandwidth*' --since 10 --until 20\n"
         "  tessel log call.tessel --type lost --type apply\n"
         "  tessel log call.tessel --call 7 --json > call7.tessel\n"
         "      The recording of one call.\n"
         "  tessel log call.tessel --follow";
}

}  // namespace

void AddLogCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<LogOptions>();
  CLI::App* const command = app.add_subcommand("log", "Show what recordings say happened, a line an event");
  SetFile(*command->add_option("FILE", options->files, "Recordings, one after the other; - is standard input")
               ->required());
  SetCall(*command->add_option("--call", options->call, "The events of this call"));
  command->add_option("--group", options->group, "The events of this group")->type_name("GROUP");
  command
      ->add_option(
          "--name", options->name,
          "The events of fitting names; in GLOB, * is any text and ? any letter, letter case does not count")
      ->type_name("GLOB");
  command
      ->add_option("--origin", options->origin,
                   "The events whose label, document, symbol, or module, with or without its folders, fits")
      ->type_name("GLOB");
  SetSeconds(*command->add_option("--since", options->since, "The events from this second on"));
  SetSeconds(*command->add_option("--until", options->until, "The events up to this second"));
  CLI::Option* const type =
      command->add_option("--type", options->types, "The events of this type; repeatable");
  type->allow_extra_args(false);
  SetChoices(*type, RecordingTypes());
  command->add_flag("--follow", options->follow, "Show what is appended, until the recording ends");
  command->add_flag("--json", options->json, "The lines as the recording has them");
  command->footer(LogFooter());
  command->callback([options, &exitStatus] { exitStatus = Log(*options); });
}
