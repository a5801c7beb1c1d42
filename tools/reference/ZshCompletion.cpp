#include <string>

#include "CommandLine.h"
#include "Completion.h"

namespace {

// A text inside a specification, where colons and brackets part it.
std::string Escaped(const std::string& text) {
  std::string out;
  for (const char letter : text) {
    if (letter == ':' || letter == '[' || letter == ']' || letter == '\\') out += '\\';
    out += letter;
  }
  return out;
}

std::string Action(const Parameter& parameter) {
  const Values values = ValuesOf(parameter);
  if (values.areFiles) return "_files";
  if (values.words.empty()) return " ";
  const std::string words = CLI::detail::join(values.words, " ");
  return values.areBeginnings ? " compadd -S \"\" -- " + words : "(" + words + ")";
}

void WriteParameter(std::ostream& out, const Parameter& parameter) {
  if (parameter.isArgument) {
    out << " \\\n        "
        << ShellQuoted((parameter.isRepeatable ? "*:"
                        : parameter.isRequired ? ":"
                                               : "::") +
                       Escaped(parameter.names.front()) + ":" + Action(parameter));
    return;
  }
  const std::string value =
      parameter.value.empty() ? "" : ":" + Escaped(parameter.value) + ":" + Action(parameter);
  for (const std::string& name : parameter.names) {
    const std::string ending = !parameter.value.empty() && name.starts_with("--") ? "=" : "";
    const std::string others = "(" + CLI::detail::join(parameter.names, " ") + ")";
    out << " \\\n        "
        << ShellQuoted((parameter.isRepeatable ? "*" : others) + name + ending + "[" +
                       Escaped(parameter.description) + "]" + value);
  }
}

}  // namespace

void WriteZshCompletion(std::ostream& out, const CLI::App& program) {
  const std::string function = "_" + program.get_name();
  out << "#compdef " << program.get_name() << "\n# Made from the definition of the command line.\n\n"
      << function << "() {\n"
      << "  local curcontext=\"$curcontext\" state line\n"
      << "  local -a commands=(\n";
  for (const CLI::App* const command : CommandsOf(program)) {
    out << "    " << ShellQuoted(Escaped(command->get_name()) + ":" + command->get_description()) << '\n';
  }
  out << "  )\n  _arguments -C";
  for (const Parameter& parameter : ParametersOf(program)) WriteParameter(out, parameter);
  out << " \\\n        '1:command:->command' '*::argument:->argument'\n"
      << "  case $state in\n"
      << "    command) _describe command commands ;;\n"
      << "    argument)\n"
      << "      case $words[1] in\n";
  for (const CLI::App* const command : CommandsOf(program)) {
    out << "      " << command->get_name() << ") _arguments";
    for (const Parameter& parameter : ParametersOf(*command)) WriteParameter(out, parameter);
    out << " ;;\n";
  }
  out << "      esac\n      ;;\n  esac\n}\n\n" << function << " \"$@\"\n";
}
