// SPDX-License-Identifier: Apache-2.0
#include "ManPage.h"

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

std::string Upper(std::string text) {
  std::ranges::transform(text, text.begin(), [](char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
  });
  return text;
}

// A string that troff prints as it is, wherever it is.
std::string Literal(const std::string& text) {
  static const std::map<char, std::string> kEscapes = {{'\\', "\\e"},  {'-', "\\-"},   {'\'', "\\(aq"},
                                                       {'"', "\\(dq"}, {'`', "\\(ga"}, {'^', "\\(ha"},
                                                       {'~', "\\(ti"}};
  std::string out = text.starts_with('.') ? "\\&" : "";  // Otherwise a line could be a request.
  for (const char letter : text) {
    const auto escape = kEscapes.find(letter);
    out += escape == kEscapes.end() ? std::string(1, letter) : escape->second;
  }
  return out;
}

std::string Bold(const std::string& text) {
  return "\\fB" + Literal(text) + "\\fR";
}

std::string Italic(const std::string& text) {
  return "\\fI" + Literal(text) + "\\fR";
}

void WriteHead(std::ostream& out, const std::string& page, const std::string& version,
               const Command& command) {
  out << ".\\\" Made from the definition of the command line.\n.TH " << Literal(Upper(page)) << " 1 \"\" \""
      << Literal(version) << "\" \"User Commands\"\n"
      << ".SH NAME\n"
      << Literal(page) << " \\- " << Literal(command.description) << '\n';
}

void WriteSynopsis(std::ostream& out, const std::string& words, const Command& command) {
  out << ".SH SYNOPSIS\n" << Bold(words) << " [" << Italic("OPTION") << "]...";
  for (const Parameter& parameter : command.parameters) {
    if (!parameter.isArgument) continue;
    const std::string shown = Italic(parameter.names.front()) + (parameter.isRepeatable ? "..." : "");
    out << ' ' << (parameter.isRequired ? shown : "[" + shown + "]");
  }
  out << '\n';
}

void WriteRunningText(std::ostream& out, const Command& command) {
  out << ".SH DESCRIPTION\n" << Literal(command.description) << ".\n";
  for (const HelpSection& section : command.sections) {
    if (!section.title.empty()) continue;
    out << ".PP\n";
    for (const std::string& line : section.lines) out << Literal(line) << '\n';
  }
}

void WriteParameters(std::ostream& out, const Command& command, bool arguments) {
  const char* title = arguments ? ".SH ARGUMENTS\n" : ".SH OPTIONS\n";
  for (const Parameter& parameter : command.parameters) {
    if (parameter.isArgument != arguments) continue;
    out << title << ".TP\n";
    title = "";
    const char* separator = "";
    for (const std::string& name : parameter.names) {
      out << separator << (arguments ? Italic(name) : Bold(name));
      separator = ", ";
    }
    if (!arguments && !parameter.value.empty()) out << ' ' << Italic(parameter.value);
    out << '\n' << Literal(parameter.description) << '\n';
  }
}

void WriteTitledSections(std::ostream& out, const Command& command) {
  for (const HelpSection& section : command.sections) {
    if (section.title.empty()) continue;
    out << ".SH " << Literal(Upper(section.title)) << "\n.nf\n";
    for (const std::string& line : section.lines) out << Literal(line) << '\n';
    out << ".fi\n";
  }
}

void WriteSeeAlso(std::ostream& out, const std::vector<std::string>& pages) {
  out << ".SH SEE ALSO\n";
  for (std::size_t index = 0; index < pages.size(); ++index) {
    out << ".BR " << Literal(pages[index]) << " (1)" << (index + 1 < pages.size() ? "," : "") << '\n';
  }
}

std::string PageOf(const CommandLine& line, const Command& command) {
  return line.program.name + "-" + command.name;
}

}  // namespace

void WriteManPage(std::ostream& out, const CommandLine& line) {
  const Command& program = line.program;
  WriteHead(out, program.name, line.version, program);
  out << ".SH SYNOPSIS\n" << Bold(program.name) << ' ' << Italic("COMMAND") << " ...\n";
  WriteRunningText(out, program);
  out << ".SH COMMANDS\n";
  std::vector<std::string> pages;
  for (const Command& command : line.commands) {
    out << ".TP\n" << Bold(command.name) << '\n' << Literal(command.description) << '\n';
    pages.push_back(PageOf(line, command));
  }
  WriteParameters(out, program, false);
  WriteTitledSections(out, program);
  WriteSeeAlso(out, pages);
}

void WriteManPage(std::ostream& out, const CommandLine& line, const Command& command) {
  WriteHead(out, PageOf(line, command), line.version, command);
  WriteSynopsis(out, line.program.name + " " + command.name, command);
  WriteRunningText(out, command);
  WriteParameters(out, command, true);
  WriteParameters(out, command, false);
  WriteTitledSections(out, command);
  std::vector<std::string> pages = {line.program.name};
  for (const Command& other : line.commands) {
    if (&other != &command) pages.push_back(PageOf(line, other));
  }
  WriteSeeAlso(out, pages);
}
