// SPDX-License-Identifier: Apache-2.0
#include <new>

#include "JournalTest.h"
#include "support/AllocationCount.h"

namespace kalStore {
namespace {

class JournalReaders : public JournalTest {
 protected:
  static constexpr int kCapacity = 16;

  JournalReaders() {
    StopJournal();
    StartJournal(kCapacity);
    m_reader = JournalReader();
  }

  void Set(int from, int to) {
    for (int value = from; value <= to; ++value) m_store.SetKalConfig(kVideo, "Key", value, true, false);
  }

  KalConfig m_store{kCall};
};

TEST(JournalEvent, HasNothingUntilItIsRead) {
  const JournalEvent event;
  for (const std::uint64_t number : {event.number, event.missed, event.id, event.cause})
    EXPECT_EQ(number, 0u);
  for (const std::int64_t ns : {event.timeNs, event.waitedNs, event.ranNs}) EXPECT_EQ(ns, 0);
  for (const std::uint32_t number : {event.callId, event.count, event.line, event.column}) {
    EXPECT_EQ(number, 0u);
  }
  for (const JournalString* const string : {&event.name, &event.label, &event.document}) {
    EXPECT_EQ(string->text, "");
    EXPECT_FALSE(string->isCut);
  }
  for (const auto* const string : {&event.oldValue, &event.newValue, &event.thrown}) EXPECT_FALSE(*string);
  EXPECT_EQ(event.kind, JournalKind::kSet);
  EXPECT_EQ(event.threadId, 0u);
  EXPECT_EQ(event.group, KAL_CONFIG_GROUP_DEFAULT);
  EXPECT_EQ(event.entityType, -1);
  EXPECT_EQ(event.result, kResultOk);
  EXPECT_EQ(event.way, JournalWay::kNone);
  EXPECT_EQ(event.caller, nullptr);
  EXPECT_EQ(CodePlace().offset, 0u);
}

TEST_F(JournalReaders, GetEverythingThatFitsInTheRing) {
  Set(1, kCapacity);
  int expected = 1;
  for (const JournalEvent& event : Events()) {
    EXPECT_EQ(event.newValue->text, std::to_string(expected++));
    EXPECT_EQ(event.missed, 0u);
  }
  EXPECT_EQ(expected, kCapacity + 1);
}

TEST_F(JournalReaders, CountWhatTheyMissed) {
  Set(1, kCapacity * 2 + 5);
  const auto events = Events();
  ASSERT_EQ(events.size(), static_cast<std::size_t>(kCapacity));
  EXPECT_EQ(events.front().missed, static_cast<std::uint64_t>(kCapacity + 5));
  EXPECT_EQ(events.front().newValue->text, std::to_string(kCapacity + 6));
  for (std::size_t i = 1; i < events.size(); ++i) {
    EXPECT_EQ(events[i].missed, 0u);
    EXPECT_EQ(events[i].number, events[i - 1].number + 1);
  }
  EXPECT_EQ(m_reader.Missed(), 0u);
}

TEST_F(JournalReaders, DoNotTakeEventsFromEachOther) {
  Set(1, 3);
  JournalReader other;
  EXPECT_EQ(Events().size(), 3u);
  JournalEvent event;
  for (int value = 1; value <= 3; ++value) {
    ASSERT_TRUE(other.Next(event));
    EXPECT_EQ(event.newValue->text, std::to_string(value));
  }
  EXPECT_FALSE(other.Next(event));
  EXPECT_EQ(event.newValue->text, "3") << "is unchanged";
}

TEST_F(JournalReaders, ReadAnEventAgainWhoseCopyRanOutOfMemory) {
  m_store.SubscribeConfig(
      kVideo, "A name that is longer than a string without an allocation", [](const KalConfigEvent&) {},
      nullptr, false);
  m_store.SetKalConfig(kVideo, "A name that is longer than a string without an allocation",
                       "as is this value of it", false, false);
  const JournalReader begin = m_reader;
  const std::size_t count = Events().size();
  ASSERT_EQ(count, 3u);
  for (std::size_t n = 1;; ++n) {
    m_reader = begin;
    JournalEvent event;
    std::size_t read = 0;
    std::uint64_t last = 0;
    bool hasFired = false;
    {
      const FailAllocation nth(n);
      for (bool isThere = true; isThere;) {
        try {
          isThere = m_reader.Next(event);
          if (isThere) ++read;
          last = event.number;
        } catch (const std::bad_alloc&) {
          EXPECT_EQ(event.number, last) << "is unchanged";
        }
      }
      hasFired = nth.Fired();
    }
    EXPECT_EQ(read, count);
    EXPECT_EQ(event.missed + m_reader.Missed(), 0u);
    if (!hasFired) break;
  }
}

TEST_F(JournalReaders, BeginWithTheNumberGiven) {
  Set(1, 3);
  JournalReader reader(NextJournalNumber() - 1);
  JournalEvent event;
  ASSERT_TRUE(reader.Next(event));
  EXPECT_EQ(event.newValue->text, "3");
  EXPECT_EQ(event.missed, 0u);

  JournalReader future(NextJournalNumber() + 2);
  Set(4, 6);
  ASSERT_TRUE(future.Next(event));
  EXPECT_EQ(event.newValue->text, "6");

  const std::uint64_t end = NextJournalNumber();
  JournalReader all(0);
  std::uint64_t seen = 0;
  while (all.Next(event)) seen += 1 + event.missed;
  EXPECT_EQ(seen + all.Missed(), end - 1) << "every number is given or counted";
}

TEST_F(JournalReaders, GoOnAfterAStopAndAStartOfTheSameCapacity) {
  Set(1, 2);
  StopJournal();
  Set(3, 4);
  StartJournal(kCapacity);
  Set(5, 6);
  std::vector<std::string> values;
  for (const JournalEvent& event : Events()) values.push_back(event.newValue->text);
  EXPECT_THAT(values, ::testing::ElementsAre("1", "2", "5", "6"));
  JournalReader fresh;
  JournalEvent event;
  ASSERT_TRUE(fresh.Next(event));
  EXPECT_EQ(event.newValue->text, "5");
}

TEST_F(JournalReaders, MissTheEventsOfAnotherCapacity) {
  Set(1, 2);
  StopJournal();
  StartJournal(kCapacity * 2);
  Set(3, 3);
  const auto events = Events();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].newValue->text, "3");
  EXPECT_EQ(events[0].missed, 2u);
}

TEST_F(JournalReaders, FindNoOldEventsInARingThatIsUsedAgain) {
  Set(1, kCapacity);
  StopJournal();
  StartJournal(kCapacity * 2);
  Set(101, 103);
  StopJournal();
  StartJournal(kCapacity);
  const std::uint64_t missed = static_cast<std::uint64_t>(kCapacity) + 3;
  EXPECT_TRUE(Events().empty());
  Set(201, 201);
  const auto events = Events();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].newValue->text, "201");
  EXPECT_EQ(events[0].missed + m_reader.Missed(), missed);
}

}  // namespace
}  // namespace kalStore
