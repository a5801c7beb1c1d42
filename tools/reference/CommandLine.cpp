// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <utility>

#include "ConfigPath.h"

namespace {

std::vector<std::string> NamesOf(const CLI::Option& option) {
  std::vector<std::string> names;
  if (option.get_positional()) names.push_back(option.get_name());
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

std::vector<Parameter> ParametersOf(const CLI::App& command) {
  std::vector<Parameter> parameters;
  for (const CLI::Option* const option : command.get_options()) {
    if (option->get_group().empty()) continue;  // Hidden.
    parameters.push_back({.names = NamesOf(*option),
                          .value = option->get_items_expected_max() == 0 ? "" : option->get_type_name(),
                          .description = option->get_description(),
                          .isArgument = option->get_positional(),
                          .isRequired = option->get_required(),
                          .isRepeatable = option->get_expected_max() > 1});
  }
  return parameters;
}

std::vector<HelpSection> SectionsOf(const CLI::App& command) {
  std::vector<HelpSection> sections;
  std::istringstream footer(command.get_footer());
  bool isAfterEmpty = true;
  for (std::string line; std::getline(footer, line);) {
    const bool isFirst = std::exchange(isAfterEmpty, line.empty());
    if (line.empty()) continue;
    if (isFirst && line.front() != ' ') {
      const bool isTitle = line.back() == ':';
      sections.push_back({isTitle ? line.substr(0, line.size() - 1) : "", {}});
      if (isTitle) continue;
    }
    if (sections.empty()) sections.emplace_back();
    std::vector<std::string>& lines = sections.back().lines;
    if (isFirst && !lines.empty()) lines.emplace_back();
    lines.push_back(line.starts_with("  ") ? line.substr(2) : line);
  }
  return sections;
}

Command CommandOf(const CLI::App& app) {
  return {app.get_name(), app.get_description(), ParametersOf(app), SectionsOf(app)};
}

}  // namespace

CommandLine CommandLineOf(const CLI::App& program) {
  CommandLine line{CommandOf(program), program.version(), {}};
  for (const CLI::App* const command : program.get_subcommands({})) {
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
