// SPDX-License-Identifier: Apache-2.0
#include "DeclareCommand.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "CommandError.h"
#include "DeclarationFiles.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "OutputFile.h"
#include "Printable.h"
#include "TextFile.h"
#include "declare/CppHeader.h"
#include "declare/JsonSchema.h"
#include "declare/MarkdownTables.h"

namespace {

struct DeclareOptions {
  std::vector<std::string> files;
  std::string output;
  bool header = false;
  bool jsonSchema = false;
  bool markdown = false;
};

void RefuseOutput(const DeclareOptions& options) {
  if (options.output == kStandardInput) throw UsageError("--output -: standard output needs no option");
  for (const std::string& file : options.files) {
    std::error_code isNoFile;
    if (std::filesystem::equivalent(options.output, file, isNoFile)) {
      throw UsageError("--output " + Quoted(options.output) + ": is a file of declarations");
    }
  }
}

std::string TextOfDeclared(const DeclareOptions& options) {
  const std::vector<kalStore::SettingDeclaration> settings = ReadDeclarationFiles(options.files);
  if (options.header) return declare::CppHeader(settings, options.files);
  return options.markdown ? declare::MarkdownTables(settings) : declare::JsonSchema(settings);
}

int Declare(const DeclareOptions& options) {
  RefuseRepeatedInput(options.files);
  if (!options.header && !options.jsonSchema && !options.markdown) {
    throw UsageError(
        "one of --header, --json-schema and --markdown is missing (tessel declare --help tells more)");
  }
  if (!options.output.empty()) RefuseOutput(options);
  const std::string text = TextOfDeclared(options);
  if (options.output.empty()) {
    std::cout << text;
  } else {
    OutputFile(options.output).Write(text);
  }
  return kExitFine;
}

}  // namespace

void AddDeclareCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<DeclareOptions>();
  CLI::App* const command =
      app.add_subcommand("declare", "Make a C++ header, a JSON Schema or tables of declared settings");
  SetFile(*command->add_option("FILE", options->files, "Declarations of settings; - is standard input")
               ->required());
  CLI::Option* const header =
      command->add_flag("--header", options->header, "Write a C++ header: a ConfigKey for each setting");
  CLI::Option* const schema = command->add_flag(
      "--json-schema", options->jsonSchema, "Write a JSON Schema, by which editors check settings documents");
  CLI::Option* const markdown =
      command->add_flag("--markdown", options->markdown, "Write tables in Markdown, for people");
  schema->excludes(header);
  markdown->excludes(header)->excludes(schema);
  SetFile(
      *command->add_option("-o,--output", options->output, "Write to this file instead of standard output"));
  command->footer(
      "Each setting is declared once: its group, name, type and default, what it may be, and what it is for. "
      "The\n"
      "files make one list. What is wrong in them is reported with its place on standard error, and nothing "
      "is\n"
      "written then.\n\n"
      "Declarations:\n"
      "  {\"namespace\": \"video::settings\",\n"
      "   \"settings\": [{\"group\": \"Video\", \"name\": \"MaxFps\", \"type\": \"int\",\n"
      "                 \"default\": 30, \"minimum\": 1, \"maximum\": 120}]}\n"
      "  Types: bool, int, uint, int64, double, string, enum, duration.\n"
      "  Further members: values, unit, description, since, deprecated,\n"
      "  identifier.\n\n" +
      ExitStatusHelp("done") +
      "\n\n"
      "Examples:\n"
      "  tessel declare settings.json --header -o settings.h\n"
      "  tessel declare audio.json video.json --json-schema -o schema.json\n"
      "  tessel declare settings.json --markdown");
  command->callback([options, &exitStatus] { exitStatus = Declare(*options); });
}
