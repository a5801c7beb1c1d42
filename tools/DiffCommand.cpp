// SPDX-License-Identifier: Apache-2.0
#include "DiffCommand.h"

#include <algorithm>
#include <iostream>
#include <memory>
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

namespace {

struct DiffOptions {
  std::string first;
  std::string second;
  bool exact = false;
  bool json = false;
};

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
  const std::vector<SettingsDocument> documents = LoadDocuments({options.first, options.second});
  for (const SettingsDocument& document : documents) document.PrintFindings(std::cerr);
  const std::vector<Change> changes = Compare(documents[0], documents[1], options.exact);
  if (options.json) {
    for (const Change& change : changes) PrintChangeAsJson(std::cout, change);
  } else {
    PrintByGroup(changes);
  }
  return changes.empty() ? kExitFine : kExitFindings;
}

}  // namespace

void AddDiffCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App* const command = app.add_subcommand(
      "diff", "Show what a settings document changes when it is applied after another one");
  SetFile(*command->add_option("A", options->first, "A settings document; - is standard input")->required());
  SetFile(*command->add_option("B", options->second, "The one that is applied after it; - is standard input")
               ->required());
  command->add_flag("--exact", options->exact,
                    "Compare the documents themselves, for example two dumps: what only A has is removed");
  command->add_flag("--json", options->json, "A JSON object per change, each on a line");
  command->footer(
      "Values stay in a store until they are set again: without --exact, nothing is ever removed.\n\n" +
      ExitStatusHelp("no difference", "differences") +
      "\n\n"
      "Examples:\n"
      "  tessel diff base.json lab.json\n"
      "  tessel diff --exact before.json after.json\n"
      "      What differs between two dumps of a call?");
  command->callback([options, &exitStatus] { exitStatus = Diff(*options); });
}
