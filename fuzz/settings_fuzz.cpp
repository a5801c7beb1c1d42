// SPDX-License-Identifier: Apache-2.0
// Settings documents, separated by NUL bytes, are applied to a store one after the other. The store must hold
// what a model of the import holds, notify its subscribers of exactly the changes, and write a document that
// restores it.

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "Check.h"
#include "SettingsModel.h"
#include "TraceCheck.h"
#include "tessel/KalConfig.h"

namespace {

using fuzz::SettingsValues;
using kalStore::KalConfig;
using kalStore::KalConfigGroup;

constexpr std::size_t kMostDocuments = 8;

/// Group, name, old and new string; a value that was not there has no old one.
using Change = std::tuple<std::uint32_t, std::string, std::string, bool, std::string>;

/// What a document says; none when it is not read at all.
using Entries = std::optional<std::vector<fuzz::SettingsEntry>>;

std::vector<std::string> Split(std::string_view text) {
  std::vector<std::string> documents;
  while (documents.size() < kMostDocuments) {
    const std::size_t end = text.find('\0');
    documents.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return documents;
}

/// A store, what it must hold, and the changes that it notified of.
class Subject {
 public:
  Subject() : m_store(1) {}

  void Subscribe(std::uint32_t group, const std::string& name) {
    const auto log = [this](const kalStore::KalConfigEvent& event) {
      FUZZ_CHECK(event.m_newValue.IsValid());
      FUZZ_CHECK(!event.m_defaultValue.IsValid());
      m_notified.emplace_back(static_cast<std::uint32_t>(event.m_group), event.m_name,
                              event.m_oldValue.ToString(), event.m_oldValue.IsValid(),
                              event.m_newValue.ToString());
    };
    FUZZ_CHECK(
        m_store.SubscribeConfig(static_cast<KalConfigGroup>(group), name.c_str(), log, nullptr, false) != 0);
  }

  void Apply(const std::string& document, const Entries& entries) {
    std::vector<Change> changes;
    if (entries) {
      for (const auto& [group, name, value] : *entries) {
        const auto [place, isNew] = m_model[group].try_emplace(name, value);
        if (!isNew && place->second == value) continue;
        changes.emplace_back(group, name, isNew ? "" : place->second, !isNew, value);
        place->second = value;
      }
    }
    m_notified.clear();
    FUZZ_EQUAL(m_store.ApplyKalConfigs(document.c_str()), entries ? 0 : kalStore::kResultNotFound);
    if (m_isWatched) FUZZ_CHECK(m_notified == changes);
    CheckValues();
  }

  std::string Dump(std::uint32_t mask) {
    const std::string text = m_store.DumpKalConfigs(mask);
    FUZZ_EQUAL(text, fuzz::DocumentOf(m_model, mask));
    return text;
  }

  /// Every name that can change has a subscription.
  void SetWatched() { m_isWatched = true; }
  bool WasNotified() const { return !m_notified.empty(); }

  /// A document carries strings up to their first NUL only.
  bool HoldsNul() const {
    for (const auto& group : m_model) {
      for (const auto& [name, value] : group) {
        if (value.find('\0') != std::string::npos) return true;
      }
    }
    return false;
  }

 private:
  void CheckValues() {
    for (std::uint32_t group = 0; group < fuzz::kGroups; ++group) {
      for (const auto& [name, value] : m_model[group]) {
        ConfigData stored;
        FUZZ_EQUAL(m_store.GetKalConfig(static_cast<KalConfigGroup>(group), name.c_str(), stored), 0);
        FUZZ_EQUAL(stored.ToString(), value);
      }
    }
  }

  KalConfig m_store;
  SettingsValues m_model;
  std::vector<Change> m_notified;
  bool m_isWatched = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::CheckTraceLines();
  const std::vector<std::string> documents = Split({reinterpret_cast<const char*>(data), size});

  std::vector<Entries> contents;
  std::set<std::pair<std::uint32_t, std::string>> names;
  for (const std::string& document : documents) {
    const Entries& entries = contents.emplace_back(fuzz::EntriesOf(document));
    if (!entries) continue;
    for (const auto& entry : *entries) names.emplace(entry.group, entry.name);
  }
  Subject subject;
  for (const auto& [group, name] : names) subject.Subscribe(group, name);
  subject.SetWatched();
  for (std::size_t i = 0; i < documents.size(); ++i) subject.Apply(documents[i], contents[i]);

  for (const std::uint32_t mask :
       {0U, 1U << 3, 0xFFFFE000U, static_cast<std::uint32_t>(size) * 2654435761U}) {
    subject.Dump(mask);
  }
  const std::string dump = subject.Dump(0xFFFFFFFF);
  FUZZ_EQUAL(subject.Dump(kalStore::kAllConfigGroups), dump);

  Subject copy;
  const Entries restored = fuzz::EntriesOf(dump);
  copy.Apply(dump, restored);
  FUZZ_EQUAL(copy.Dump(kalStore::kAllConfigGroups), dump);

  const bool isWhole = !subject.HoldsNul();
  subject.Apply(dump, restored);
  if (isWhole) FUZZ_CHECK(!subject.WasNotified());
  FUZZ_EQUAL(subject.Dump(kalStore::kAllConfigGroups), dump);
  return 0;
}
