// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tessel/CallStore.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/StatsRef.h"
#include "tessel/journal.h"
#include "tessel/json.h"
#include "tessel/record.h"

/// A line of a recording.
class RecordedLine {
 public:
  explicit RecordedLine(const std::string& text) {
    json::ParseError error;
    m_members = json::Deserialize(text, error).ToObject();
    EXPECT_EQ(error.reason, nullptr) << text;
  }

  bool Has(const char* member) const { return m_members.find(member) != m_members.end(); }
  /// A string as it is, any other value as JSON; "" when there is none.
  std::string Get(const char* member) const { return textOf(m_members, member); }
  /// A member of the origin.
  std::string Origin(const char* member) const {
    const auto origin = m_members.find("origin");
    return origin == m_members.end() ? "" : textOf(origin->second.ToObject(), member);
  }
  double Number(const char* member) const {
    const auto found = m_members.find(member);
    return found == m_members.end() ? -1 : found->second.ToDouble();
  }

 private:
  static std::string textOf(const json::Object& object, const char* member) {
    const auto found = object.find(member);
    if (found == object.end()) return "";
    const json::Value& value = found->second;
    return value.GetType() == json::StringVal ? value.ToString() : json::SerializeValue(value);
  }

  json::Object m_members;
};

/// Tests of recordings have a folder of their own, and find the journal off.
class RecordingTest : public testing::Test {
 protected:
  RecordingTest() {
    std::string name = (std::filesystem::temp_directory_path() / "recording-XXXXXX").string();
    m_folder = ::mkdtemp(name.data());
    EXPECT_FALSE(kalStore::IsJournalOn());
  }
  ~RecordingTest() override {
    EXPECT_FALSE(kalStore::IsJournalOn());
    kalStore::DestroyKalConfig();
    std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all, m_ignored);
    std::filesystem::remove_all(m_folder, m_ignored);
  }

  std::string File(const std::string& name = "call.tessel") const { return (m_folder / name).string(); }

  static std::string Text(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
  }
  /// The lines of a file, each of which is whole.
  static std::vector<RecordedLine> Lines(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<RecordedLine> lines;
    for (std::string line; std::getline(stream, line); lines.emplace_back(line)) {
      EXPECT_FALSE(stream.eof()) << "not whole: " << line;
    }
    return lines;
  }
  std::vector<RecordedLine> Lines() const { return Lines(File()); }
  static std::vector<RecordedLine> OfType(const std::vector<RecordedLine>& lines, const std::string& type) {
    std::vector<RecordedLine> found;
    for (const RecordedLine& line : lines) {
      if (line.Get("type") == type) found.push_back(line);
    }
    return found;
  }
  std::vector<RecordedLine> OfType(const std::string& type) const { return OfType(Lines(), type); }

 private:
  std::filesystem::path m_folder;
  std::error_code m_ignored;
};
