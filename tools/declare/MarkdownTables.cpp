// SPDX-License-Identifier: Apache-2.0
#include "declare/MarkdownTables.h"

#include <cstdint>
#include <string_view>

#include "Printable.h"
#include "declare/Words.h"

namespace declare {
namespace {

using kalStore::KalConfigGroup;
using kalStore::SettingDeclaration;
using kalStore::SettingType;

// Words in a cell of a table: nothing in them is markup, and they stay in the cell. Printable() has doubled
// the backslashes.
std::string Cell(std::string_view text) {
  constexpr std::string_view kMarkup = "`*_[]<>|&~#";
  std::string cell;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    for (const char c : Printable(text.substr(0, end))) {
      if (kMarkup.find(c) != std::string_view::npos) cell += '\\';
      cell += c;
    }
    if (end == std::string_view::npos) break;
    cell += "<br>";
    text.remove_prefix(end + 1);
  }
  return cell;
}

std::string Allowed(const SettingDeclaration& setting) {
  if (setting.values.empty()) return Cell(Range(setting));
  std::vector<std::string> cells;
  for (const std::string& value : setting.values) cells.push_back(Cell(value));
  return Joined(cells, ", ");
}

std::string Meaning(const SettingDeclaration& setting) {
  std::string meaning = Cell(setting.description);
  const auto add = [&meaning](const std::string& part) { meaning += (meaning.empty() ? "" : "<br>") + part; };
  if (setting.deprecated) add(Cell(Deprecation(*setting.deprecated)));
  if (!setting.since.empty()) add("since " + Cell(setting.since));
  return meaning;
}

std::string Row(const SettingDeclaration& setting) {
  std::string row = "|";
  for (const std::string& cell :
       {Cell(setting.name), std::string(SettingTypeName(setting.type)), Cell(Default(setting)),
        Cell(setting.unit), Allowed(setting), Meaning(setting)}) {
    row += cell.empty() ? " |" : " " + cell + " |";
  }
  return row + "\n";
}

}  // namespace

std::string MarkdownTables(const std::vector<SettingDeclaration>& settings) {
  std::string text = "# Settings\n";
  for (std::int32_t id = 0; id < kalStore::KAL_CONFIG_GROUP_LAST; ++id) {
    const auto group = static_cast<KalConfigGroup>(id);
    std::string rows;
    for (const SettingDeclaration& setting : settings) {
      if (setting.group == group) rows += Row(setting);
    }
    if (rows.empty()) continue;
    text += "\n## " + KalConfigGroup2GroupName(group) +
            "\n\n| name | type | default | unit | allowed | meaning |\n|---|---|---|---|---|---|\n" + rows;
  }
  return text;
}

}  // namespace declare
