// SPDX-License-Identifier: Apache-2.0
#include "report/MemberUnits.h"

#include "Printable.h"
#include "tessel/statistics_members.h"

namespace {

// As JSON, by the members' names in recordings.
std::string UnitsOf(const kalStore::StatisticsKind& kind) {
  std::string json = "{";
  for (const kalStore::StatisticsSection& section : kind.sections) {
    for (const kalStore::StatisticsMember& member : *section.members) {
      if (*member.unit == '\0') continue;
      if (json.size() > 1) json += ',';
      json += PageJson(section.title + '.' + member.name) + ':' + PageJson(member.unit);
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
    json +=
        PageJson(kind.name) + ':' + units + ',' + PageJson(std::string("content ") + kind.name) + ':' + units;
  }
  return "<script type=\"application/json\" id=\"units\">" + json + "}</script>\n";
}
