// SPDX-License-Identifier: Apache-2.0
#include "recording/StatisticsTables.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "CommandError.h"
#include "CsvText.h"
#include "Printable.h"
#include "recording/EventText.h"

namespace {

std::string CsvField(const json::Value& value) {
  return value.GetType() == json::StringVal ? CsvText(value.ToString()) : ShortNumber(value.ToDouble());
}

// "call-7-content-video.csv"
std::string TableName(std::uint64_t call, std::string entity) {
  std::ranges::replace(entity, ' ', '-');
  return "call-" + std::to_string(call) + "-" + entity + ".csv";
}

}  // namespace

void StatisticsTables::Learn(const RecordingEvent& event) {
  if (event.type != "statistics" || event.members.empty()) return;
  Table& table = m_tables[{*event.call, *event.entity}];
  for (const auto& [name, value] : event.members) table.values[name];
}

std::vector<std::string> StatisticsTables::Files(const std::string& folder) const {
  std::vector<std::string> files;
  for (const auto& [key, table] : m_tables) files.push_back(folder + "/" + TableName(key.first, key.second));
  return files;
}

void StatisticsTables::Begin(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw CommandError(Printable(folder) + ": cannot be made: " + error.message());
  const std::vector<std::string> files = Files(folder);
  for (auto file = files.begin(); auto& [key, table] : m_tables) {
    table.file.emplace(*file++);
    std::string line = "t";
    for (const auto& [name, value] : table.values) line += ',' + CsvText(name);
    table.file->Append(line + '\n');
  }
}

void StatisticsTables::Write(const RecordingEvent& event) {
  if (event.IsBegin()) {
    for (auto& [key, table] : m_tables) forget(table);
  }
  if (event.type != "statistics") return;
  const auto found = m_tables.find({*event.call, *event.entity});
  if (found == m_tables.end()) return;
  Table& table = found->second;
  if (event.event == "made" || event.event == "ended") forget(table);
  if (event.members.empty()) return;
  for (const auto& [name, value] : event.members) {
    // Another one was recorded after the table had begun.
    if (const auto place = table.values.find(name); place != table.values.end())
      place->second = CsvField(value);
  }
  std::string line = ShortNumber(event.time);
  for (const auto& [name, value] : table.values) line += ',' + value;
  table.file->Append(line + '\n');
}

void StatisticsTables::Finish() {
  for (auto& [key, table] : m_tables) table.file->Finish();
}

void StatisticsTables::forget(Table& table) {
  for (auto& [name, value] : table.values) value.clear();
}
