// SPDX-License-Identifier: Apache-2.0
#include "support/Settings.h"

#include <atomic>
#include <cstdio>

namespace {

std::string NameOf(std::int64_t index) {
  char name[32];
  std::snprintf(name, sizeof name, "VideoSetting%04d", static_cast<int>(index));
  return name;
}

std::string ValueOf(std::int64_t index) {
  switch (index % 4) {
    case 0:
      return std::to_string(index * 7919 % 100'000);
    case 1:
      return index % 8 == 1 ? "1" : "0";
    case 2:
      return "text " + std::to_string(index);
    default:
      return "a longer text for setting " + std::to_string(index);
  }
}

std::atomic<std::uint32_t> g_calls{1000};

}  // namespace

Call::Call() : m_id(g_calls++) {
  kalStore::CreateKalConfig(m_id, &m_store);
}

Call::~Call() {
  kalStore::ReleaseKalConfig(m_store);
  kalStore::CleanUpKalConfig(m_id);
}

std::vector<std::string> NamesOf(std::int64_t count) {
  std::vector<std::string> names;
  for (std::int64_t i = 0; i < count; ++i) names.push_back(NameOf(i));
  return names;
}

std::string SettingsDocument(std::int64_t entries) {
  std::string text = "{";
  std::int64_t next = 0;
  for (int group = 0; group < kalStore::KAL_CONFIG_GROUP_LAST; ++group) {
    const std::int64_t end = entries * (group + 1) / kalStore::KAL_CONFIG_GROUP_LAST;
    text += (group == 0 ? "\"" : ",\"") +
            KalConfigGroup2GroupName(static_cast<kalStore::KalConfigGroup>(group)) + "\":[";
    for (const std::int64_t first = next; next < end; ++next) {
      if (next != first) text += ',';
      text += R"({"key":")" + NameOf(next) + R"(","value":")" + ValueOf(next) + "\"}";
    }
    text += ']';
  }
  return text + "}";
}
