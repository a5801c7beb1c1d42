// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

/// An option or argument, as a reader knows it.
struct Parameter {
  std::vector<std::string> names;  ///< -q, --quiet; of an argument, its placeholder.
  std::string value;               ///< The placeholder of the value; "" where there is none.
  std::string description;
  bool isArgument;
  bool isRequired;
  bool isRepeatable;
};

/// A part of a command's help below its options. Without a title it is running text, with one its lines are
/// kept as they are.
struct HelpSection {
  std::string title;
  std::vector<std::string> lines;
};

struct Command {
  std::string name;
  std::string description;
  std::vector<Parameter> parameters;
  std::vector<HelpSection> sections;
};

/// The program: what it takes itself, and its commands.
struct CommandLine {
  Command program;
  std::string version;
  std::vector<Command> commands;
};

/// What the definitions say that a program parses by.
CommandLine CommandLineOf(const CLI::App& program);

/// What the value of a parameter may be, as far as it is known beforehand.
struct Values {
  bool areFiles = false;
  bool areBeginnings = false;  ///< The words are beginnings of values.
  std::vector<std::string> words;
};

Values ValuesOf(const Parameter& parameter);

std::string Joined(const std::vector<std::string>& words);

/// The string inside single quotes, as a shell reads it back.
std::string ShellQuoted(const std::string& text);
