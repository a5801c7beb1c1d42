// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tessel/journal.h"
#include "tessel/tessel.h"
#include "tessel/typed.h"
#include "util/util_trace.h"

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

/// Calls a function in the first trace line that contains a text: a place in the middle of an operation. One
/// at a time.
class InTraceLine {
 public:
  InTraceLine(std::string_view part, std::function<void()> call) : m_part(part), m_call(std::move(call)) {
    set_external_trace_mask(2);
    set_util_trace_sink(&sink, this);
  }
  ~InTraceLine() {
    set_util_trace_sink(nullptr, nullptr);
    set_external_trace_mask(m_mask);
    EXPECT_FALSE(m_call) << "no line had \"" << m_part << '"';
  }
  InTraceLine(const InTraceLine&) = delete;
  InTraceLine& operator=(const InTraceLine&) = delete;

 private:
  static void sink(void* context, int, const char*, const char* text, unsigned int length) {
    auto& self = *static_cast<InTraceLine*>(context);
    if (!self.m_call || std::string_view(text, length).find(self.m_part) == std::string_view::npos) return;
    std::exchange(self.m_call, nullptr)();
  }

  const int m_mask = get_external_trace_mask();
  const std::string m_part;
  std::function<void()> m_call;
};

}  // namespace kalStore
