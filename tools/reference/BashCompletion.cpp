// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <vector>

#include "Completion.h"

namespace {

// Comes before the tables of the command line.
constexpr const char* kHead = R"(# Made from the definition of the command line.
_NAME_offer() {
  mapfile -t COMPREPLY < <(compgen "$@" -- "$current")
}

_NAME() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=
  [ "$COMP_CWORD" -gt 1 ] && command=${COMP_WORDS[1]}
  # A word such as --format=json is in three parts.
  if [ "$current" = = ]; then
    current=
  elif [ "$previous" = = ]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
)";

std::string Offer(const std::string& program, const Parameter& parameter) {
  const Values values = ValuesOf(parameter);
  if (values.areFiles) return "compopt -o filenames 2>/dev/null; _" + program + "_offer -f";
  if (values.words.empty()) return ":";
  const std::string offer = "_" + program + "_offer -W " + ShellQuoted(Joined(values.words));
  return values.areBeginnings ? "compopt -o nospace 2>/dev/null; " + offer : offer;
}

// The words after an option that takes a value.
void WriteValues(std::ostream& out, const std::string& program, const Command& command) {
  for (const Parameter& parameter : command.parameters) {
    if (parameter.isArgument || parameter.value.empty()) continue;
    const char* separator = "    ";
    for (const std::string& name : parameter.names) {
      out << separator << ShellQuoted(command.name + " " + name);
      separator = " | ";
    }
    out << ")\n      " << Offer(program, parameter) << "\n      return 0\n      ;;\n";
  }
}

// The words elsewhere: options, or an argument.
void WriteWords(std::ostream& out, const std::string& program, const Command& command) {
  std::vector<std::string> options;
  std::string argument = ":";
  for (const Parameter& parameter : command.parameters) {
    if (parameter.isArgument) {
      argument = Offer(program, parameter);
    } else {
      options.insert(options.end(), parameter.names.begin(), parameter.names.end());
    }
  }
  out << "    " << ShellQuoted(command.name + " -") << "*)\n      _" << program << "_offer -W "
      << ShellQuoted(Joined(options)) << "\n      ;;\n"
      << "    " << ShellQuoted(command.name + " ") << "*)\n      " << argument << "\n      ;;\n";
}

}  // namespace

void WriteBashCompletion(std::ostream& out, const CommandLine& line) {
  const std::string& name = line.program.name;
  std::string head = kHead;
  for (std::size_t at = 0; (at = head.find("NAME", at)) != std::string::npos;) head.replace(at, 4, name);
  out << head << "  case \"$command $previous\" in\n";
  for (const Command& command : line.commands) WriteValues(out, name, command);
  out << "  esac\n  case \"$command $current\" in\n";
  std::vector<std::string> words;
  for (const Command& command : line.commands) {
    WriteWords(out, name, command);
    words.push_back(command.name);
  }
  for (const Parameter& parameter : line.program.parameters) {
    words.insert(words.end(), parameter.names.begin(), parameter.names.end());
  }
  out << "    ' '*)\n      _" << name << "_offer -W " << ShellQuoted(Joined(words)) << "\n      ;;\n"
      << "  esac\n}\n\ncomplete -F _" << name << ' ' << name << '\n';
}
