// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <string_view>

#include "Completion.h"

namespace {

// With a backslash before each of these letters.
std::string Escaped(const std::string& text, std::string_view letters) {
  std::string out;
  for (const char letter : text) {
    if (letters.find(letter) != std::string_view::npos) out += '\\';
    out += letter;
  }
  return out;
}

// What stands for the letters themselves in a description of _arguments and in what _describe takes.
std::string Description(const std::string& text) {
  return Escaped(text, ":[]\\");
}

// In what _arguments shows above the values, a backslash is one, but before a colon.
std::string Message(const std::string& text) {
  return Escaped(text, ":");
}

std::string Action(const Parameter& parameter) {
  const Values values = ValuesOf(parameter);
  if (values.areFiles) return "_files";
  if (values.words.empty()) return " ";
  const std::string words = Joined(values.words);
  return values.areBeginnings ? " compadd -S \"\" -- " + words : "(" + words + ")";
}

void WriteParameter(std::ostream& out, const Parameter& parameter) {
  if (parameter.isArgument) {
    out << " \\\n        "
        << ShellQuoted((parameter.isRepeatable ? "*:"
                        : parameter.isRequired ? ":"
                                               : "::") +
                       Message(parameter.names.front()) + ":" + Action(parameter));
    return;
  }
  const std::string prefix = parameter.isRepeatable ? "*" : "(" + Joined(parameter.names) + ")";
  std::string rest = "[" + Description(parameter.description) + "]";
  if (!parameter.value.empty()) rest += ":" + Message(parameter.value) + ":" + Action(parameter);
  for (const std::string& name : parameter.names) {
    const bool mayBeJoined = !parameter.value.empty() && name.starts_with("--");
    std::string argument = prefix + name;
    argument += mayBeJoined ? "=" + rest : rest;
    out << " \\\n        " << ShellQuoted(argument);
  }
}

}  // namespace

void WriteZshCompletion(std::ostream& out, const CommandLine& line) {
  const std::string function = "_" + line.program.name;
  out << "#compdef " << line.program.name << "\n# Made from the definition of the command line.\n\n"
      << function << "() {\n"
      << "  local curcontext=\"$curcontext\" state line\n"
      << "  local -a commands=(\n";
  for (const Command& command : line.commands) {
    out << "    " << ShellQuoted(Description(command.name) + ":" + Description(command.description)) << '\n';
  }
  out << "  )\n  _arguments -C";
  for (const Parameter& parameter : line.program.parameters) WriteParameter(out, parameter);
  out << " \\\n        '1:command:->command' '*::argument:->argument'\n"
      << "  case $state in\n"
      << "    command) _describe command commands ;;\n"
      << "    argument)\n"
      << "      case $words[1] in\n";
  for (const Command& command : line.commands) {
    out << "      " << command.name << ") _arguments";
    for (const Parameter& parameter : command.parameters) WriteParameter(out, parameter);
    out << " ;;\n";
  }
  out << "      esac\n      ;;\n  esac\n}\n\n" << function << " \"$@\"\n";
}
