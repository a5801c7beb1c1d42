// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "Commands.h"
#include "ConfigPath.h"

namespace {

std::vector<Parameter> ParametersOf(const CLI::App& command) {
  std::vector<Parameter> parameters;
  for (const CLI::Option* const option : command.get_options()) {
    if (option->get_group().empty()) continue;  // Hidden.
    Parameter& parameter = parameters.emplace_back();
    parameter.isArgument = option->get_positional();
    parameter.isRequired = option->get_required();
    parameter.isRepeatable = option->get_expected_max() > 1;
    if (option->get_items_expected_max() != 0) parameter.value = option->get_type_name();
    parameter.description = option->get_description();
    if (parameter.isArgument) parameter.names.push_back(option->get_name());
    for (const std::string& name : option->get_snames()) parameter.names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) parameter.names.push_back("--" + name);
  }
  return parameters;
}

std::vector<HelpSection> SectionsOf(const CLI::App& command) {
  std::vector<HelpSection> sections;
  std::istringstream footer(command.get_footer());
  bool isBegun = false;
  for (std::string line; std::getline(footer, line);) {
    if (line.empty()) {
      isBegun = false;
      continue;
    }
    if (!isBegun && line.front() != ' ') {
      const bool isTitle = line.back() == ':';
      sections.push_back({isTitle ? line.substr(0, line.size() - 1) : "", {}});
      isBegun = true;
      if (isTitle) continue;
    }
    if (sections.empty()) sections.emplace_back();
    std::vector<std::string>& lines = sections.back().lines;
    if (!isBegun && !lines.empty()) lines.emplace_back();
    isBegun = true;
    lines.push_back(line.starts_with("  ") ? line.substr(2) : line);
  }
  return sections;
}

Command CommandOf(const CLI::App& app) {
  return {app.get_name(), app.get_description(), ParametersOf(app), SectionsOf(app)};
}

}  // namespace

CommandLine ReadCommandLine() {
  int exitStatus = 0;
  CLI::App app;
  AddCommands(app, exitStatus);
  CommandLine line{CommandOf(app), app.version(), {}};
  for (const CLI::App* const command : app.get_subcommands({})) {
    if (!command->get_group().empty()) line.commands.push_back(CommandOf(*command));  // Not a hidden one.
  }
  return line;
}

Values ValuesOf(const Parameter& parameter) {
  Values values;
  if (parameter.value == "FILE") {
    values.areFiles = true;
  } else if (parameter.value.starts_with("GROUP/")) {
    values.areBeginnings = true;
    for (const std::string& group : GroupNames()) values.words.push_back(group + "/");
  } else if (parameter.value.find('|') != std::string::npos) {
    if (parameter.value.starts_with("GROUP,")) values.words.assign(GroupNames().begin(), GroupNames().end());
    for (const std::string& word : CLI::detail::split(parameter.value, '|')) {
      // A word in capitals is a placeholder.
      if (std::ranges::any_of(word, [](char letter) { return letter >= 'a' && letter <= 'z'; })) {
        values.words.push_back(word);
      }
    }
  }
  return values;
}

std::string Joined(const std::vector<std::string>& words) {
  return CLI::detail::join(words, " ");
}

std::string ShellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char letter : text) {
    if (letter == '\'') {
      quoted += "'\\''";
    } else {
      quoted += letter;
    }
  }
  return quoted + "'";
}
