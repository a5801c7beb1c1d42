// SPDX-License-Identifier: Apache-2.0
#include "OutputFormat.h"

#include <iterator>

#include "OptionChecks.h"

void AddFormatOption(CLI::App& command, std::string& format, const std::vector<std::string>& names) {
  format = names.front();
  CLI::Option* const option =
      command.add_option("--format", format, "What is written, " + names.front() + " by default");
  SetChoices(*option, names);
  std::vector<CLI::Option*> others = {option};
  for (auto name = std::next(names.begin()); name != names.end(); ++name) {
    CLI::Option* const flag = command.add_flag_callback(
        "--" + *name, [&format, chosen = *name] { format = chosen; }, "Short for --format " + *name);
    for (CLI::Option* const other : others) flag->excludes(other);
    others.push_back(flag);
  }
}
