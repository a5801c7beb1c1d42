// SPDX-License-Identifier: Apache-2.0
#include "TogglesCommand.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "CommandError.h"
#include "ExitStatus.h"
#include "JsonObject.h"
#include "OptionChecks.h"
#include "Printable.h"
#include "SettingsDocument.h"
#include "TextFile.h"
#include "ToggleCatalogue.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"

namespace {

struct TogglesOptions {
  std::string pattern;
  std::vector<std::string> files;
  bool json = false;
};

// A toggle as it is printed; what documents make of it only where there are some.
struct Row {
  const ToggleInfo* toggle;
  ConfigData value = {};
  bool isOn = true;
};

// The settings of one call, from the first document to the last.
class Settings {
 public:
  Settings() : m_facade(kCallId) {}
  ~Settings() { kalStore::CleanUpKalConfig(kCallId); }
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;

  void Apply(const SettingsDocument& document) {
    document.PrintFindings(std::cerr);
    m_facade.ApplyKalConfigs(document.Text().c_str());
  }

  void Read(Row& row) {
    row.value = m_facade.GetFeatureToggle(row.toggle->id);
    row.isOn = m_facade.IsFeatureToggleDefaultOn(row.toggle->id);
  }

 private:
  static constexpr std::uint32_t kCallId = 1;
  kalStore::KalConfigHelper m_facade;
};

std::vector<Row> MatchingRows(const std::string& pattern) {
  std::vector<Row> rows;
  for (const ToggleInfo& toggle : ToggleCatalogue()) {
    if (MatchesToggle(pattern, toggle.key)) rows.push_back({&toggle});
  }
  return rows;
}

std::string NoMatch(const std::string& pattern) {
  std::string line = "tessel: no toggle matches " + Quoted(pattern);
  std::string suggestions;
  for (const std::string_view key : NearestToggles(pattern)) {
    suggestions += (suggestions.empty() ? "" : ", ") + Quoted(key);
  }
  return suggestions.empty() ? line : line + " (did you mean " + suggestions + "?)";
}

std::string ValueColumn(const ConfigData& value) {
  return value.IsValid() ? Quoted(value.ToString()) : "-";
}

std::string MeaningColumn(const ToggleInfo& toggle) {
  if (!toggle.minimum.IsValid()) return toggle.meaning;
  return toggle.meaning + ", " + toggle.minimum.ToString() + " to " + toggle.maximum.ToString();
}

void PrintToggles(const std::vector<Row>& rows, bool withValues) {
  std::size_t keyWidth = 3, valueWidth = 5;
  for (const Row& row : rows) {
    keyWidth = std::max(keyWidth, row.toggle->key.size());
    valueWidth = std::max(valueWidth, ValueColumn(row.value).size());
  }
  const auto print = [&](const auto& id, std::string_view key, std::string_view kind, std::string_view value,
                         std::string_view state, std::string_view meaning) {
    std::cout << std::right << std::setw(3) << id << "  " << std::left
              << std::setw(static_cast<int>(keyWidth)) << key << "  " << std::setw(6) << kind << "  ";
    if (withValues) {
      std::cout << std::setw(static_cast<int>(valueWidth)) << value << "  " << std::setw(5) << state << "  ";
    }
    std::cout << meaning << '\n';
  };
  print("id", "key", "kind", "value", "state", "meaning");
  for (const Row& row : rows) {
    print(row.toggle->id, row.toggle->key, row.toggle->kind, ValueColumn(row.value), row.isOn ? "on" : "off",
          MeaningColumn(*row.toggle));
  }
}

void PrintTogglesAsJson(const std::vector<Row>& rows, bool withValues) {
  for (const Row& row : rows) {
    JsonObject line(std::cout);
    line.Member("id", static_cast<std::uint32_t>(row.toggle->id))
        .Member("key", row.toggle->key)
        .Member("kind", row.toggle->kind)
        .Member("meaning", row.toggle->meaning);
    if (row.toggle->minimum.IsValid()) {
      line.Raw("minimum", row.toggle->minimum.ToString()).Raw("maximum", row.toggle->maximum.ToString());
    }
    if (withValues) line.Member("value", row.value).Member("on", row.isOn);
  }
}

// All arguments after --from are its documents; one of them may have been meant as the pattern.
void RefuseLatePattern(const TogglesOptions& options) {
  if (!options.pattern.empty() || options.files.size() < 2) return;
  const std::string& last = options.files.back();
  if (last == kStandardInput || ::access(last.c_str(), F_OK) == 0) return;
  throw UsageError("--from takes all files that follow it, and there is no file " + Quoted(last) +
                   ": a pattern goes before --from");
}

int ListToggles(const TogglesOptions& options) {
  RefuseLatePattern(options);
  const std::vector<SettingsDocument> documents = LoadDocuments(options.files);
  std::vector<Row> rows = MatchingRows(options.pattern);
  if (rows.empty()) {
    std::cerr << NoMatch(options.pattern) << '\n';
    return kExitFindings;
  }
  const bool withValues = !documents.empty();
  if (withValues) {
    Settings settings;
    for (const SettingsDocument& document : documents) settings.Apply(document);
    for (Row& row : rows) settings.Read(row);
  }
  (options.json ? PrintTogglesAsJson : PrintToggles)(rows, withValues);
  return kExitFine;
}

}  // namespace

void AddTogglesCommand(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<TogglesOptions>();
  CLI::App* const command =
      app.add_subcommand("toggles", "Print the feature toggles, and what settings documents make of them");
  command->add_option(
      "PATTERN", options->pattern,
      "A part of the key, or all of it with * and ?, in any letter case; all toggles without it");
  SetFile(*command->add_option(
      "--from", options->files,
      "Settings documents, applied in this order: adds the value set, and whether the toggle is on"));
  command->add_flag("--json", options->json, "A JSON object per toggle, each on a line");
  command->footer("A toggle that no document sets has no value, and is on.\n\n" +
                  ExitStatusHelp("done", "no toggle matches") +
                  "\n\n"
                  "Examples:\n"
                  "  tessel toggles music\n"
                  "  tessel toggles '*-recording' --json\n"
                  "  tessel toggles jitter --from base.json lab.json\n"
                  "      Which of the jitter buffer's toggles are on after both documents?");
  command->callback([options, &exitStatus] { exitStatus = ListToggles(*options); });
}
