// SPDX-License-Identifier: Apache-2.0
#include "report/MemberUnits.h"

#include <string_view>
#include <vector>

#include "Printable.h"
#include "tessel/StatisticsBlocks.h"
#include "tessel/statistics_members.h"

namespace {

// The parts of an object that have a section's members, as recordings name them.
std::vector<std::string> PartsWith(std::string_view section) {
  const bool isBoth = section == "both";
  if (!isBoth && section != "received") return {std::string(section)};
  std::vector<std::string> parts;
  if (isBoth) parts.emplace_back("sent");
  for (int i = 0; i < kalStore::kAudioStreamCount; ++i) parts.push_back("received" + std::to_string(i));
  return parts;
}

// As JSON, by the members' names in recordings.
std::string UnitsOf(const kalStore::StatisticsKind& kind) {
  std::string json = "{";
  for (const kalStore::StatisticsSection& section : kind.sections) {
    for (const kalStore::StatisticsMember& member : *section.members) {
      if (*member.unit == '\0') continue;
      for (const std::string& part : PartsWith(section.title)) {
        if (json.size() > 1) json += ',';
        json += PageJson(part + '.' + member.name) + ':' + PageJson(member.unit);
      }
    }
  }
  return json + '}';
}

}  // namespace

std::string MemberUnits() {
  std::string json;
  for (const kalStore::StatisticsKind& kind : kalStore::StatisticsKinds()) {
    const std::string units = UnitsOf(kind);
    json += json.empty() ? "{" : ",";
    json += PageJson(kind.name) + ':' + units;
    json += ',' + PageJson(std::string("content ") + kind.name) + ':' + units;
  }
  return "<script type=\"application/json\" id=\"units\">" + json + "}</script>\n";
}
