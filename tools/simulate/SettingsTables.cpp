// SPDX-License-Identifier: Apache-2.0
#include "simulate/SettingsTables.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ConfigPath.h"
#include "ToggleCatalogue.h"
#include "simulate/Html.h"
#include "simulate/Numbers.h"

namespace simulate {

namespace {

constexpr const char* kAllCalls = "all";

// A setting's end in one call.
struct Ending {
  std::string calls;
  ConfigData value;
  const Ledger::Setting* setting;
};

bool SameEnd(const Ending& left, const Ending& right) {
  return left.value == right.value && left.setting->changedBy == right.setting->changedBy;
}

std::map<SettingKey, std::vector<Ending>> Endings(const Simulation& simulation, std::size_t shownCalls) {
  std::map<SettingKey, std::vector<Ending>> endings;
  for (const Call& call : simulation.Calls()) {
    if (shownCalls-- == 0) break;
    for (const auto& [key, setting] : call.Books().Settings()) {
      ConfigData value = call.Value(key);
      if (value.IsValid()) endings[key].push_back({std::to_string(call.Id()), std::move(value), &setting});
    }
  }
  return endings;
}

void Row(std::ostream& out, const std::string& name, const Ending& ending) {
  out << "<tr><th scope=\"row\">" << name << "</th><td><code>" << HtmlText(ending.value.ToString())
      << "</code></td>" << (ending.calls == kAllCalls ? "<td class=\"every call\">" : "<td class=\"call\">")
      << ending.calls << "</td><td>" << HtmlText(ending.setting->changedBy) << "</td><td class=\"number\">"
      << Fixed(Seconds(ending.setting->lastChange), 2) << "\u00a0s</td></tr>\n";
}

bool IsOffOrSet(const ToggleInfo& toggle, const ConfigData& value) {
  return value.IsValid() && !(toggle.kind == "bool" && value);
}

}  // namespace

void WriteSettingsTable(std::ostream& out, const Simulation& simulation, std::size_t shownCalls) {
  const auto endings = Endings(simulation, shownCalls);
  out << "<div class=\"card\"><table class=\"settings\"><thead><tr><th scope=\"col\">setting</th><th "
         "scope=\"col\">value</th><th scope=\"col\">call</th><th scope=\"col\">last changed by</th><th "
         "scope=\"col\" class=\"number\">at</th></tr></thead>\n";
  auto group = kalStore::KAL_CONFIG_GROUP_DEFAULT;
  for (const auto& [key, ends] : endings) {
    if (key.first != group) {
      if (group != kalStore::KAL_CONFIG_GROUP_DEFAULT) out << "</tbody>\n";
      group = key.first;
      out << "<tbody><tr class=\"group\"><th colspan=\"5\" scope=\"rowgroup\">"
          << HtmlText(GroupNames()[static_cast<std::size_t>(group)]) << "</th></tr>\n";
    }
    bool isSame = true;
    for (const Ending& end : ends) isSame = isSame && SameEnd(end, ends.front());
    if (isSame) {
      Ending all = ends.front();
      if (ends.size() > 1) all.calls = kAllCalls;
      Row(out, HtmlText(key.second), all);
    } else {
      std::string name = HtmlText(key.second);
      for (const Ending& end : ends) {
        Row(out, name, end);
        name.clear();
      }
    }
  }
  if (!endings.empty()) out << "</tbody>\n";
  out << "</table></div>\n";
}

void WriteTogglesTable(std::ostream& out, const Simulation& simulation) {
  const Call& call = simulation.Calls().front();
  std::string rows;
  for (const ToggleInfo& toggle : ToggleCatalogue()) {
    const SettingKey key(kalStore::KAL_CONFIG_GROUP_FEATURE, toggle.key);
    const ConfigData value = call.Value(key);
    if (!IsOffOrSet(toggle, value)) continue;
    rows += "<tr><th scope=\"row\">" + HtmlText(toggle.key) + "</th><td>" +
            (toggle.kind == "bool" ? "off" : "<code>" + HtmlText(value.ToString()) + "</code>") +
            "</td><td>" + HtmlText(toggle.meaning) + "</td><td>" +
            HtmlText(call.Books().Settings().at(key).changedBy) + "</td></tr>\n";
  }
  if (rows.empty()) {
    out << "<p>None: every toggle is on, and none has a value.</p>\n";
    return;
  }
  out << "<div class=\"card\"><table class=\"toggles\"><thead><tr><th scope=\"col\">toggle</th><th "
         "scope=\"col\">is</th><th scope=\"col\">meaning</th><th scope=\"col\">last changed "
         "by</th></tr></thead>"
         "<tbody>\n"
      << rows << "</tbody></table></div>\n";
}

}  // namespace simulate
