// SPDX-License-Identifier: Apache-2.0
#include "DiffCommand.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Change.h"
#include "Colour.h"
#include "ConfigPath.h"
#include "DocumentDifference.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "Progress.h"
#include "SettingsDocument.h"
#include "TextFile.h"
#include "recording/RecordedSettings.h"

namespace {

struct DiffOptions {
  std::string first;
  std::string second;
  std::optional<unsigned> call;
  bool exact = false;
  bool json = false;
};

// A document, or the settings of a recorded call at a moment. What a recording lacks makes `exitStatus`
// greater.
SettingsDocument LoadSide(const std::string& side, const DiffOptions& options, int& exitStatus) {
  const std::optional<RecordedMoment> moment = ParseMoment(side);
  if (!moment) return SettingsDocument::Load(side);
  const SettingsAtMoment settings = ReadSettingsAt(*moment, options.call);
  exitStatus = std::max(exitStatus, settings.exitStatus);
  return {side, settings.document};
}

// The file of a side.
std::string SideFile(const std::string& side) {
  const std::optional<RecordedMoment> moment = ParseMoment(side);
  return moment ? moment->file : side;
}

std::vector<Change> Compare(const SettingsDocument& first, const SettingsDocument& second, bool exact) {
  const Progress progress("comparing");
  return (exact ? ExactChanges : ChangesInStore)(first, second);
}

void PrintByGroup(const std::vector<Change>& changes) {
  for (auto begin = changes.begin(); begin != changes.end();) {
    const auto end =
        std::find_if(begin, changes.end(), [&](const Change& one) { return one.group != begin->group; });
    std::cout << Coloured(Colour::kBold, GroupName(begin->group)) << ": " << ChangeCounts({begin, end})
              << '\n';
    for (; begin != end; ++begin) PrintChange(std::cout, *begin);
  }
}

int Diff(const DiffOptions& options) {
  RefuseRepeatedInput({SideFile(options.first), SideFile(options.second)});
  int exitStatus = kExitFine;
  const SettingsDocument first = LoadSide(options.first, options, exitStatus);
  const SettingsDocument second = LoadSide(options.second, options, exitStatus);
  if (!ParseMoment(options.first)) first.PrintFindings(std::cerr);
  if (!ParseMoment(options.second)) second.PrintFindings(std::cerr);
  const std::vector<Change> changes = Compare(first, second, options.exact);
  if (options.json) {
    for (const Change& change : changes) PrintChangeAsJson(std::cout, change);
  } else {
    PrintByGroup(changes);
  }
  return std::max<int>(exitStatus, changes.empty() ? kExitFine : kExitFindings);
}

}  // namespace

void AddDiffCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App* const command = app.add_subcommand(
      "diff", "Show what a settings document changes when it is applied after another one");
  SetFile(
      *command
           ->add_option("A", options->first,
                        "A settings document, or a moment of a recording, FILE@SECONDS; - is standard input")
           ->required());
  SetFile(
      *command->add_option("B", options->second, "The one that is applied after it, likewise")->required());
  command->add_flag("--exact", options->exact,
                    "Compare the documents themselves, for example two dumps: what only A has is removed");
  SetCall(*command->add_option("--call", options->call,
                               "The call of the recordings; may be left out when there is only one"));
  command->add_flag("--json", options->json, "A JSON object per change, each on a line");
  command->footer(
      "Values stay in a store until they are set again: without --exact, nothing is ever removed.\n\n" +
      ExitStatusHelp("no difference", "differences, or a recording lacks values") +
      "\n\n"
      "Examples:\n"
      "  tessel diff base.json lab.json\n"
      "  tessel diff --exact before.json after.json\n"
      "      What differs between two dumps of a call?\n"
      "  tessel diff --exact call.tessel@10 call.tessel@20 --call 7\n"
      "      What did the ten seconds change?");
  command->callback([options, &exitStatus] { exitStatus = Diff(*options); });
}
