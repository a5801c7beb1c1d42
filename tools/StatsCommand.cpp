// SPDX-License-Identifier: Apache-2.0
#include "StatsCommand.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "CommandError.h"
#include "ExitStatus.h"
#include "OptionChecks.h"
#include "OutputFormat.h"
#include "StatisticsOutput.h"
#include "TextFile.h"

namespace {

using kalStore::StatisticsKind;
using kalStore::StatisticsKinds;

struct StatsOptions {
  std::string file;
  std::string kind;
  std::string format;
};

// "2064 bytes (video) or 260 bytes (audio)"
std::string BlockSizes(const std::vector<const StatisticsKind*>& kinds) {
  std::string sizes;
  for (const StatisticsKind* kind : kinds) {
    if (!sizes.empty()) sizes += " or ";
    sizes += std::to_string(kind->blockSize) + " bytes (" + kind->name + ")";
  }
  return sizes;
}

// The kind that blocks of `size` bytes in all are of. `kinds` are those that they may be of.
const StatisticsKind& KindOf(const std::string& title, std::size_t size,
                             const std::vector<const StatisticsKind*>& kinds) {
  std::vector<const StatisticsKind*> fitting;
  for (const StatisticsKind* kind : kinds) {
    if (size != 0 && size % kind->blockSize == 0) fitting.push_back(kind);
  }
  const std::string found = title + ": " + std::to_string(size) + " bytes are ";
  if (fitting.empty())
    throw CommandError(found + "no whole number of blocks: a block has " + BlockSizes(kinds));
  if (fitting.size() > 1) {
    throw CommandError(found + "whole blocks of " + BlockSizes(fitting) + ": choose with --kind");
  }
  return *fitting.front();
}

int ShowStats(const StatsOptions& options) {
  std::vector<const StatisticsKind*> kinds;
  for (const StatisticsKind& kind : StatisticsKinds()) {
    if (options.kind.empty() || options.kind == kind.name) kinds.push_back(&kind);
  }
  const std::string blocks = ReadFile(options.file);
  const StatisticsKind& kind = KindOf(FileTitle(options.file), blocks.size(), kinds);
  const auto format = options.format == "csv"    ? StatisticsFormat::kCsv
                      : options.format == "json" ? StatisticsFormat::kJson
                                                 : StatisticsFormat::kText;
  PrintStatistics(std::cout, kind, blocks, format);
  return kExitFine;
}

}  // namespace

void AddStatsCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<StatsOptions>();
  CLI::App* command = app.add_subcommand("stats", "Print raw statistics blocks with names and units");
  SetFile(*command
               ->add_option("FILE", options->file,
                            "Blocks in a row, as the library hands them out; - is standard input")
               ->required());
  std::vector<std::string> names;
  for (const StatisticsKind& kind : StatisticsKinds()) names.emplace_back(kind.name);
  SetChoices(*command->add_option("--kind", options->kind,
                                  "The kind of the blocks; found from their size without it"),
             names);
  AddFormatOption(*command, options->format, {"text", "csv", "json"});
  command->footer(
      "A video block has 2064 bytes, an audio block, sent or received, 260. As text, a layer that is "
      "all\n"
      "zero bytes is named only.\n\n"
      "Formats:\n"
      "  text  a table per block\n"
      "  csv   a line of names, then a line per block\n"
      "  json  an object per block, each on a line\n\n" +
      ExitStatusHelp("done") +
      "\n\n"
      "Examples:\n"
      "  tessel stats blocks.bin --csv\n"
      "  tessel stats --kind audio - < blocks.bin");
  command->callback([options, &exitStatus] { exitStatus = ShowStats(*options); });
}
