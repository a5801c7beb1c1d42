// SPDX-License-Identifier: Apache-2.0
#include "LintCommand.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "CommandError.h"
#include "DeclarationFiles.h"
#include "ExitStatus.h"
#include "LintOutput.h"
#include "NamesList.h"
#include "OptionChecks.h"
#include "OutputFormat.h"
#include "Progress.h"
#include "SettingsDocument.h"
#include "TextFile.h"
#include "tessel/settings_check.h"

namespace {

struct LintOptions {
  std::vector<std::string> files;
  std::vector<std::string> names;
  std::vector<std::string> declared;
  std::string format;
};

// What documents are checked against.
struct Expected {
  kalStore::SettingsNames names;
  std::vector<kalStore::SettingDeclaration> declared;
};

std::vector<kalStore::SettingsFinding> Check(const std::string& file, const Expected& expected) {
  const std::string text = ReadFile(file);
  const Progress progress("checking " + FileTitle(file));
  std::vector<kalStore::SettingsFinding> findings =
      kalStore::CheckSettings(text, expected.names, expected.declared);
  ExplainFormat(text, findings);
  return findings;
}

int Lint(const LintOptions& options) {
  std::vector<std::string> lists = options.names;
  lists.insert(lists.end(), options.declared.begin(), options.declared.end());
  RefuseRepeatedInput(options.files, lists);
  Expected expected;
  for (const std::string& file : options.names) ReadNamesList(file, expected.names);
  expected.declared = ReadDeclarationFiles(options.declared);
  const auto print = options.format == "json"     ? PrintFindingAsJson
                     : options.format == "github" ? PrintFindingForGithub
                                                  : PrintFindingAsText;
  int status = kExitFine;
  for (const std::string& file : options.files) {
    try {
      for (const kalStore::SettingsFinding& finding : Check(file, expected)) {
        print(std::cout, FileName(file), finding);
        status = std::max<int>(status, kExitFindings);
      }
    } catch (const CommandError& error) {  // The other files are checked all the same.
      std::cout << std::flush;
      std::cerr << error.what() << '\n';
      status = kExitNotUsable;
    }
  }
  return status;
}

}  // namespace

void AddLintCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<LintOptions>();
  CLI::App* const command = app.add_subcommand(
      "lint", "Report everything in settings documents that import would skip without a word");
  SetFile(
      *command->add_option("FILE", options->files, "Settings documents; - is standard input")->required());
  SetFile(*command
               ->add_option("--names", options->names,
                            "Report every name that this list of known names does not have; repeatable")
               ->allow_extra_args(false));
  SetFile(*command
               ->add_option("--declared", options->declared,
                            "Check names and values against these declarations of settings; repeatable")
               ->allow_extra_args(false));
  AddFormatOption(*command, options->format, {"text", "json", "github"});
  command->footer(
      "A finding has the place, the part of the document, and what is wrong. What import refuses or skips "
      "is\n"
      "found, and what it takes but is most likely a mistake: a name that is set twice, an unknown feature "
      "toggle,\n"
      "or a value that a toggle cannot have. A malformed document is one finding, at its first fault: import "
      "would\n"
      "refuse all of it.\n\n"
      "Names:\n"
      "  A list of known names is a JSON object of groups, each an array of\n"
      "  names: {\"Video\":[\"MaxFps\",\"MaxWidth\"],\"Audio\":[\"Bitrate\"]}\n"
      "  An entry in place of a name counts as its key, so that a settings\n"
      "  document or a dump is a list, too. A group that no list has may have\n"
      "  any name; Feature also has the feature toggles.\n\n"
      "Declarations:\n"
      "  Declared settings are known names; their values are checked as well:\n"
      "  the type, the range, and which are allowed. A deprecated setting is\n"
      "  found wherever it is set. tessel declare --help has the form.\n\n"
      "Formats:\n"
      "  text    FILE:LINE:COLUMN: PART: REASON (did you mean \"NAME\"?)\n"
      "  json    an object per finding, each on a line\n"
      "  github  annotations: errors for what is refused or skipped, warnings\n"
      "          for the rest\n\n" +
      ExitStatusHelp("nothing found", "findings") +
      "\n\n"
      "Examples:\n"
      "  tessel lint settings/*.json\n"
      "  tessel lint lab.json --names base.json\n"
      "      Does lab.json set a name that base.json does not?\n"
      "  tessel lint lab.json --declared audio.json --declared video.json\n"
      "  tessel lint --format github settings/*.json");
  command->callback([options, &exitStatus] { exitStatus = Lint(*options); });
}
