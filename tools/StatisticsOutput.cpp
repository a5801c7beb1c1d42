// SPDX-License-Identifier: Apache-2.0
#include "StatisticsOutput.h"

#include <algorithm>
#include <iomanip>
#include <string>

#include "CsvText.h"
#include "JsonObject.h"
#include "Printable.h"

namespace {

using kalStore::StatisticsKind;
using kalStore::StatisticsMember;
using kalStore::StatisticsSection;

std::string Value(const StatisticsSection& section, const StatisticsMember& member, std::string_view block) {
  return member.shown(block.data() + section.offset + member.offset);
}

bool IsEmptyLayer(const StatisticsSection& section, std::string_view block) {
  return section.isLayer && block.substr(section.offset, section.size).find_first_not_of('\0') == block.npos;
}

int NameWidth(const StatisticsKind& kind) {
  std::size_t width = 0;
  for (const StatisticsSection& section : kind.sections) {
    for (const StatisticsMember& member : *section.members) width = std::max(width, member.name.size());
  }
  return static_cast<int>(width);
}

void PrintTable(std::ostream& out, const StatisticsKind& kind, std::size_t number, std::string_view block) {
  const int width = NameWidth(kind);
  out << (number == 0 ? "" : "\n") << "block " << number << " (" << kind.name << ")\n";
  for (const StatisticsSection& section : kind.sections) {
    if (IsEmptyLayer(section, block)) {
      out << "  " << section.title << ": empty\n";
      continue;
    }
    out << "  " << section.title << '\n';
    for (const StatisticsMember& member : *section.members) {
      const std::string value = Value(section, member, block);
      out << "    " << std::left << std::setw(width) << member.name << "  "
          << (member.isText ? Quoted(value) : value);
      if (*member.unit != '\0') out << ' ' << member.unit;
      out << '\n';
    }
  }
}

void PrintCsvHeader(std::ostream& out, const StatisticsKind& kind) {
  out << "block,kind";
  for (const StatisticsSection& section : kind.sections) {
    for (const StatisticsMember& member : *section.members) {
      out << ',' << section.title << '.' << member.name;
      if (*member.unit != '\0') out << " (" << member.unit << ')';
    }
  }
  out << '\n';
}

void PrintCsv(std::ostream& out, const StatisticsKind& kind, std::size_t number, std::string_view block) {
  out << number << ',' << kind.name;
  for (const StatisticsSection& section : kind.sections) {
    for (const StatisticsMember& member : *section.members) {
      const std::string value = Value(section, member, block);
      out << ',' << (member.isText ? CsvText(value) : value);
    }
  }
  out << '\n';
}

// JSON knows neither infinities nor NaN.
std::string JsonNumber(const std::string& value) {
  return value.find('n') == value.npos ? value : "null";
}

void PrintJson(std::ostream& out, const StatisticsKind& kind, std::size_t number, std::string_view block) {
  JsonObject line(out);
  line.Member("block", number).Member("kind", kind.name);
  for (const StatisticsSection& section : kind.sections) {
    line.Member(section.title, [&](JsonObject& members) {
      for (const StatisticsMember& member : *section.members) {
        const std::string value = Value(section, member, block);
        members.Raw(member.name, member.isText ? Quoted(value) : JsonNumber(value));
      }
    });
  }
}

}  // namespace

void PrintStatistics(std::ostream& out, const kalStore::StatisticsKind& kind, std::string_view blocks,
                     StatisticsFormat format) {
  if (format == StatisticsFormat::kCsv) PrintCsvHeader(out, kind);
  for (std::size_t number = 0; number < blocks.size() / kind.blockSize; ++number) {
    const std::string_view block = blocks.substr(number * kind.blockSize, kind.blockSize);
    switch (format) {
      case StatisticsFormat::kText:
        PrintTable(out, kind, number, block);
        break;
      case StatisticsFormat::kCsv:
        PrintCsv(out, kind, number, block);
        break;
      case StatisticsFormat::kJson:
        PrintJson(out, kind, number, block);
        break;
    }
  }
}
