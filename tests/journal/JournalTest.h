// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#include "tessel/journal.h"
#include "tessel/tessel.h"
#include "tessel/typed.h"

namespace kalStore {

/// A journal that is on, and a reader of what is written from the test's beginning on.
class JournalTest : public ::testing::Test {
 protected:
  static constexpr std::uint32_t kCall = 4711;
  static constexpr KalConfigGroup kVideo = KAL_CONFIG_GROUP_VIDEO;

  JournalTest() {
    // Also where the program itself has it on already, at another capacity.
    StopJournal();
    EXPECT_EQ(StartJournal(1024), kResultOk);
    m_reader = JournalReader(NextJournalNumber());
  }
  ~JournalTest() override { StopJournal(); }

  /// What was written since the last look.
  std::vector<JournalEvent> Events() {
    std::vector<JournalEvent> events;
    for (JournalEvent event; m_reader.Next(event);) events.push_back(event);
    return events;
  }
  /// The same, only of these kinds.
  std::vector<JournalEvent> Events(std::initializer_list<JournalKind> kinds) {
    std::vector<JournalEvent> wanted;
    for (JournalEvent& event : Events()) {
      if (std::find(kinds.begin(), kinds.end(), event.kind) != kinds.end())
        wanted.push_back(std::move(event));
    }
    return wanted;
  }
  static std::vector<JournalKind> KindsOf(const std::vector<JournalEvent>& events) {
    std::vector<JournalKind> kinds;
    for (const JournalEvent& event : events) kinds.push_back(event.kind);
    return kinds;
  }

  /// "old -> new", with "-" for none.
  static std::string ChangeOf(const JournalEvent& event) {
    const auto text = [](const std::optional<JournalString>& value) { return value ? value->text : "-"; };
    return text(event.oldValue) + " -> " + text(event.newValue);
  }

  JournalReader m_reader;
};

/// The same with a call's store; what its making wrote is read.
class JournalStoreTest : public JournalTest {
 protected:
  JournalStoreTest() { Events(); }

  CallStore m_call{kCall, CallStore::kEndsCall};
  IKalConfig& m_store = *m_call;
};

}  // namespace kalStore
