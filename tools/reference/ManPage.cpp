#include "ManPage.h"

#include <algorithm>
#include <string>
#include <vector>

#include "CommandLine.h"

namespace {

std::string Upper(std::string text) {
  std::ranges::transform(text, text.begin(), [](char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
  });
  return text;
}

// A text that troff prints as it is, wherever it stands.
std::string Literal(const std::string& text) {
  std::string out;
  for (const char letter : text) {
    if (letter == '\\') {
      out += "\\e";
    } else if (letter == '-') {
      out += "\\-";
    } else if (letter == '\'') {
      out += "\\(aq";
    } else if (letter == '.' && out.empty()) {
      out += "\\&.";
    } else {
      out += letter;
    }
  }
  return out;
}

std::string Bold(const std::string& text) {
  return "\\fB" + Literal(text) + "\\fR";
}

std::string Italic(const std::string& text) {
  return "\\fI" + Literal(text) + "\\fR";
}

void WriteHead(std::ostream& out, const std::string& page, const CLI::App& program, const CLI::App& command) {
  out << ".\\\" Made from the definition of the command line.\n.TH " << Literal(Upper(page)) << " 1 \"\" \""
      << Literal(program.version()) << "\" \"User Commands\"\n"
      << ".SH NAME\n"
      << Literal(page) << " \\- " << Literal(command.get_description()) << '\n';
}

void WriteSynopsis(std::ostream& out, const std::string& words, const CLI::App& command) {
  out << ".SH SYNOPSIS\n" << Bold(words) << " [" << Italic("OPTION") << "]...";
  for (const Parameter& parameter : ParametersOf(command)) {
    if (!parameter.isArgument) continue;
    const std::string shown = Italic(parameter.names.front()) + (parameter.isRepeatable ? "..." : "");
    out << ' ' << (parameter.isRequired ? shown : "[" + shown + "]");
  }
  out << '\n';
}

void WriteRunningText(std::ostream& out, const CLI::App& command) {
  out << ".SH DESCRIPTION\n" << Literal(command.get_description()) << ".\n";
  for (const HelpSection& section : SectionsOf(command)) {
    if (!section.title.empty()) continue;
    out << ".PP\n";
    for (const std::string& line : section.lines) out << Literal(line) << '\n';
  }
}

void WriteParameters(std::ostream& out, const CLI::App& command, bool arguments) {
  const char* title = arguments ? ".SH ARGUMENTS\n" : ".SH OPTIONS\n";
  for (const Parameter& parameter : ParametersOf(command)) {
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

void WriteTitledSections(std::ostream& out, const CLI::App& command) {
  for (const HelpSection& section : SectionsOf(command)) {
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

std::vector<std::string> PagesOf(const CLI::App& program) {
  std::vector<std::string> pages;
  for (const CLI::App* const command : CommandsOf(program)) {
    pages.push_back(program.get_name() + "-" + command->get_name());
  }
  return pages;
}

}  // namespace

void WriteManPage(std::ostream& out, const CLI::App& program) {
  WriteHead(out, program.get_name(), program, program);
  out << ".SH SYNOPSIS\n" << Bold(program.get_name()) << ' ' << Italic("COMMAND") << " ...\n";
  WriteRunningText(out, program);
  out << ".SH COMMANDS\n";
  for (const CLI::App* const command : CommandsOf(program)) {
    out << ".TP\n" << Bold(command->get_name()) << '\n' << Literal(command->get_description()) << '\n';
  }
  WriteParameters(out, program, false);
  WriteTitledSections(out, program);
  WriteSeeAlso(out, PagesOf(program));
}

void WriteManPage(std::ostream& out, const CLI::App& program, const CLI::App& command) {
  const std::string page = program.get_name() + "-" + command.get_name();
  WriteHead(out, page, program, command);
  WriteSynopsis(out, program.get_name() + " " + command.get_name(), command);
  WriteRunningText(out, command);
  WriteParameters(out, command, true);
  WriteParameters(out, command, false);
  WriteTitledSections(out, command);
  std::vector<std::string> pages = PagesOf(program);
  std::erase(pages, page);
  pages.insert(pages.begin(), program.get_name());
  WriteSeeAlso(out, pages);
}
