// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <optional>
#include <thread>

#include "JournalTest.h"
#include "support/AllocationCount.h"

// In which order the numbers of events are, between threads and where something runs in the middle of an
// operation.

namespace kalStore {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

class JournalOrder : public JournalStoreTest {
 protected:
  JournalOrder() {
    StopJournal();
    StartJournal(kCapacity);
    Events();
  }

  static std::vector<std::string> ChangesOf(const std::vector<JournalEvent>& events) {
    std::vector<std::string> changes;
    for (const JournalEvent& event : events) changes.push_back(ChangeOf(event));
    return changes;
  }
  /// Every event of a value begins with what the one before it left. Returns what the last one left.
  std::string FollowTheValue() {
    std::string value = "-";
    for (const JournalEvent& event : Events()) {
      EXPECT_EQ(event.missed, 0u);
      const bool isStored = event.kind == JournalKind::kSet;
      if (event.kind == JournalKind::kGroupRemoved) {
        EXPECT_EQ(event.count, value == "-" ? 0u : 1u) << event.number;
      } else {
        EXPECT_EQ(event.oldValue ? event.oldValue->text : "-", value) << event.number;
      }
      value = isStored ? event.newValue->text : "-";
    }
    return value;
  }

  static constexpr std::size_t kCapacity = std::size_t{1} << 16;
  std::uint64_t m_first = 0;
};

TEST_F(JournalOrder, IsThatOfTheChangesOfAValue) {
  constexpr int kRounds = 20000;
  std::thread threads[2];
  for (int own = 0; own < 2; ++own) {
    threads[own] = std::thread([this, own] {
      for (int i = 0; i < kRounds; ++i) {
        switch (i % 8) {
          case 5:
            m_store.RemoveKalConfig(kVideo, "Key");
            break;
          case 6:
            m_store.RemoveKalConfigByGroup(kVideo);
            break;
          default:
            m_store.SetKalConfig(kVideo, "Key", 2 * i + own, false, i % 8 == 3);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  const std::string last = FollowTheValue();
  ConfigData value;
  const bool isStored = m_store.GetKalConfig(kVideo, "Key", value) == kResultOk;
  EXPECT_EQ(last, isStored ? value.ToString() : "-");
}

TEST_F(JournalOrder, HasASetBeforeThoseOfTheTraceSinkWithinIt) {
  {
    const InTraceLine within("fireEvents", [this] {
      set_external_trace_mask(0);
      m_store.SetKalConfig(kVideo, "Key", 2, false, false);
      m_store.RemoveKalConfig(kVideo, "Key");
    });
    m_store.SetKalConfig(kVideo, "Key", 1, false, false);
  }
  const auto events = Events();
  EXPECT_THAT(ChangesOf(events), ElementsAre("- -> 1", "1 -> 2", "2 -> -"));
}

TEST_F(JournalOrder, LetsReadersWaitForASetThatIsNotWrittenYet) {
  // In the smallest ring nothing newer is missed for it.
  StopJournal();
  StartJournal(1);
  m_reader = JournalReader(NextJournalNumber());
  {
    const InTraceLine within("fireEvents", [this] {
      EXPECT_EQ(NextJournalNumber(), m_first + 1);
      EXPECT_TRUE(Events().empty());
      EXPECT_EQ(m_reader.Missed(), 0u);
    });
    m_first = NextJournalNumber();
    m_store.SetKalConfig(kVideo, "Key", 1, false, false);
  }
  const auto events = Events();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].number, m_first);
}

TEST_F(JournalOrder, LetsReadersWaitForHalfARingAndCountsWhatIsStillNotWrittenThen) {
  StopJournal();
  StartJournal(16);
  m_reader = JournalReader(NextJournalNumber());
  {
    const InTraceLine within("fireEvents", [this] {
      set_external_trace_mask(0);
      for (int i = 1; i < 8; ++i) m_store.SetKalConfig(kVideo, "Other", i, false, false);
      EXPECT_TRUE(Events().empty());
      EXPECT_EQ(m_reader.Missed(), 0u);
      m_store.SetKalConfig(kVideo, "Other", 8, false, false);
      const auto events = Events();
      ASSERT_EQ(events.size(), 8u);
      EXPECT_EQ(events[0].missed, 1u);
      EXPECT_EQ(events[0].newValue->text, "1");
    });
    m_store.SetKalConfig(kVideo, "Key", 1, false, false);
  }
  EXPECT_TRUE(Events().empty());
}

TEST_F(JournalOrder, HasTheSetThatFailedOnceItsValueWasStored) {
  const std::string name(100, 'n');
  for (const bool isFirst : {true, false}) {
    for (std::size_t n = 1;; ++n) {
      if (isFirst) m_store.RemoveKalConfig(kVideo, name.c_str());
      // Two, whose list the first delivery after a change of it allocates.
      const SubscribeId_t ids[] = {
          m_store.SubscribeConfig(
              kVideo, name.c_str(), [](const KalConfigEvent&) {}, nullptr, false),
          m_store.SubscribeConfig(kVideo, name.c_str(), [](const KalConfigEvent&) {}, nullptr, false)};
      Events();
      const std::string number = std::to_string(n);
      ConfigData set(number + std::string(30, 'v'));
      bool hasFired = false;
      {
        const FailAllocation nth(n);
        try {
          m_store.SetKalConfig(kVideo, name.c_str(), set, true, false);
        } catch (const std::bad_alloc&) {
        }
        hasFired = nth.Fired();
      }
      ConfigData stored;
      m_store.GetKalConfig(kVideo, name.c_str(), stored);
      const auto events = Events();
      ASSERT_EQ(events.empty(), !(stored == set)) << n;
      if (!events.empty()) {
        EXPECT_EQ(events[0].kind, JournalKind::kSet);
        EXPECT_EQ(events[0].newValue->text, set.ToString());
        EXPECT_EQ(events[0].missed, 0u);
        EXPECT_EQ(events[0].thrown.has_value(), hasFired) << n;
        EXPECT_EQ(events[0].count, hasFired ? 0u : 2u);
        EXPECT_EQ(events.size(), hasFired ? 1u : 3u);
      }
      for (const SubscribeId_t id : ids) m_store.UnsubscribeConfig(id);
      if (!hasFired) break;
    }
  }
}

// Registers, and lets another thread act as soon as the registration is visible: the entry of its id is
// allocated then, after the handler itself and an entry in a list, which is smaller.
void RegisterBeside(const std::function<void()>& attempt, const std::function<void()>& act) {
  std::optional<AtAllocation> idEntry;
  const AtAllocation handler(20 * sizeof(void*),
                             [&] { idEntry.emplace(6 * sizeof(void*), [&] { std::thread(act).join(); }); });
  attempt();
  EXPECT_TRUE(handler.Fired());
  EXPECT_TRUE(idEntry && idEntry->Fired());
}

TEST_F(JournalOrder, HasASubscriptionBeforeItsDeliveriesOnOtherThreads) {
  const auto subscribe = [this] {
    return m_store.SubscribeConfig(kVideo, "Key", [](const KalConfigEvent&) {}, nullptr, false);
  };
  m_store.UnsubscribeConfig(subscribe());  // The name is known from here on.
  Events();
  RegisterBeside(subscribe, [this] { m_store.SetKalConfig(kVideo, "Key", 1, false, true); });
  EXPECT_THAT(KindsOf(Events()),
              ElementsAre(JournalKind::kSubscribed, JournalKind::kTransientSet, JournalKind::kDelivered));
}

TEST_F(JournalOrder, HasABindingBeforeWhatOtherThreadsAskIt) {
  const auto bind = [this] {
    return m_store.BindConfig(kVideo, "Key", [](const KalConfigEvent&) { return ConfigData(1); });
  };
  m_store.UnsubscribeConfig(bind());
  Events();
  RegisterBeside(bind, [this] {
    ConfigData value;
    EXPECT_EQ(m_store.GetDynamicConfig(kVideo, "Key", value, 0), kResultOk);
  });
  EXPECT_THAT(KindsOf(Events()), ElementsAre(JournalKind::kBound, JournalKind::kAsked));
}

TEST_F(JournalOrder, HasARegistrationThatWasTakenBackWithItsEnd) {
  const std::string name(100, 'n');
  const fnConfigChangedCallBack changed = [](const KalConfigEvent&) {};
  const fnConfigInvokeCallBack asked = [](const KalConfigEvent&) { return ConfigData(1); };
  const auto expectBothOrNone = [&](JournalKind made, const std::function<SubscribeId_t()>& attempt) {
    m_store.UnsubscribeConfig(attempt());  // The name is known from here on.
    Events();
    std::size_t takenBack = 0;
    for (std::size_t n = 1;; ++n) {
      SubscribeId_t id = 0;
      bool hasFired = false;
      {
        const FailAllocation nth(n);
        try {
          id = attempt();
        } catch (const std::bad_alloc&) {
        }
        hasFired = nth.Fired();
      }
      if (id != 0) m_store.UnsubscribeConfig(id);
      const auto events = Events();
      if (!events.empty()) {
        EXPECT_THAT(KindsOf(events), ElementsAre(made, JournalKind::kEnded));
        if (id == 0) ++takenBack;
      }
      if (!hasFired) break;
    }
    EXPECT_GT(takenBack, 0u);
  };
  expectBothOrNone(JournalKind::kSubscribed,
                   [&] { return m_store.SubscribeConfig(kVideo, name.c_str(), changed, nullptr, false); });
  expectBothOrNone(JournalKind::kBound, [&] { return m_store.BindConfig(kVideo, name.c_str(), asked); });
}

constexpr std::initializer_list<JournalKind> kOfStatistics = {
    JournalKind::kStatisticsMade, JournalKind::kStatisticsReleased, JournalKind::kStatisticsEnded};

TEST_F(JournalTest, HasTheLastReleaseOfAStatisticsObjectBeforeItsEnd) {
  void* entity = nullptr;
  createTesselEntity(KAL_TESSEL_AUDIO, kCall, &entity);
  EXPECT_EQ(releaseTesselEntity(KAL_TESSEL_AUDIO, kCall, entity), 0);
  const auto events = Events();
  EXPECT_THAT(KindsOf(events), ElementsAreArray(kOfStatistics));
  EXPECT_EQ(events[1].count, 0u);
}

TEST_F(JournalTest, HasTheEndOfAStatisticsObjectBeforeItsSuccessorIsMade) {
  void* entity = nullptr;
  createTesselEntity(KAL_TESSEL_AUDIO, kCall, &entity);
  void* successor = nullptr;
  void* other = nullptr;
  std::thread ending;
  unsigned long endingId = 0;
  {
    // The sink holds the registry's lock, for which the object's end waits.
    const InTraceLine within("createOrGetTesselEntity", [&] {
      ending = std::thread([&] {
        endingId = GetThreadSelfId();
        static_cast<KalAudioStatisticInfo*>(static_cast<IKalAudioInfo*>(entity))->Release();
      });
      while (kalTesselInstant.isTesselEntityExisted(KAL_TESSEL_AUDIO, kCall)) std::this_thread::yield();
      createTesselEntity(KAL_TESSEL_AUDIO, kCall, &successor);
    });
    createTesselEntity(KAL_TESSEL_VIDEO, kCall, &other);
  }
  ending.join();
  releaseTesselEntity(KAL_TESSEL_AUDIO, kCall, successor);
  std::vector<JournalKind> kinds;
  for (const JournalEvent& event : Events(kOfStatistics)) {
    if (event.entityType != KAL_TESSEL_AUDIO) continue;
    if (kinds.size() == 1) {
      EXPECT_EQ(event.threadId, endingId);
    }
    kinds.push_back(event.kind);
  }
  EXPECT_THAT(kinds, ElementsAre(JournalKind::kStatisticsMade, JournalKind::kStatisticsEnded,
                                 JournalKind::kStatisticsMade, JournalKind::kStatisticsReleased,
                                 JournalKind::kStatisticsEnded));
  releaseTesselEntity(KAL_TESSEL_VIDEO, kCall, other);
}

TEST_F(JournalTest, HasTheEndOfAStatisticsObjectWhoseRegistryIsGone) {
  void* entity = nullptr;
  {
    CKalTessel registry;
    entity = registry.createOrGetTesselEntity(KAL_TESSEL_VIDEO, kCall);
  }
  const auto made = Events();
  EXPECT_THAT(KindsOf(made), ElementsAre(JournalKind::kStatisticsMade));
  EXPECT_EQ(made[0].count, 1U);
  static_cast<KalVideoStatisticInfo*>(static_cast<IKalVideoInfo*>(entity))->Release();
  const auto events = Events();
  EXPECT_THAT(KindsOf(events), ElementsAre(JournalKind::kStatisticsEnded));
  EXPECT_EQ(events[0].callId, kCall);
  // One that was never registered has no life in the journal.
  auto* const own = new KalVideoStatisticInfo(kCall);
  own->AddRef();
  own->Release();
  EXPECT_TRUE(Events().empty());
}

TEST_F(JournalTest, EveryStatisticsObjectOfAKeyEndsBeforeTheNextIsMade) {
  constexpr int kThreads = 3;
  constexpr int kRounds = 2000;
  StopJournal();
  StartJournal(std::size_t{1} << 15);
  Events();
  std::thread threads[kThreads];
  for (std::thread& thread : threads) {
    thread = std::thread([] {
      for (int i = 0; i < kRounds; ++i) {
        void* entity = nullptr;
        createTesselEntity(KAL_TESSEL_AUDIO, kCall, &entity);
        static_cast<KalAudioStatisticInfo*>(static_cast<IKalAudioInfo*>(entity))->Release();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  JournalKind expected = JournalKind::kStatisticsMade;
  for (const JournalEvent& event : Events()) {
    ASSERT_EQ(event.kind, expected) << event.number;
    EXPECT_EQ(event.missed, 0u);
    expected = expected == JournalKind::kStatisticsMade ? JournalKind::kStatisticsEnded
                                                        : JournalKind::kStatisticsMade;
  }
  EXPECT_EQ(expected, JournalKind::kStatisticsMade);
}

}  // namespace
}  // namespace kalStore
