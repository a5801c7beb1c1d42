// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include "FailEachAllocation.h"
#include "StoreProbe.h"
#include "Watchdog.h"
#include "support/TraceLog.h"

using namespace kalStore;

namespace {

constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;
constexpr KalConfigGroup kOtherGroup = KAL_CONFIG_GROUP_TRANSMISSION;

// A store with one old value, and what its callbacks captured.
struct Stage {
  KalConfig store{7};
  std::shared_ptr<int> notified = std::make_shared<int>(0);
  SubscribeId_t id = 0;

  Stage() { store.SetKalConfig(kGroup, kLongName.c_str(), kOldText, false, false); }

  SubscribeId_t Subscribe(const std::string& name = kLongName) {
    return store.SubscribeConfig(
        kGroup, name.c_str(), [notified = notified](const KalConfigEvent&) { ++*notified; }, nullptr, false);
  }
  SubscribeId_t Bind() {
    return store.BindConfig(kGroup, kLongName.c_str(),
                            [notified = notified](const KalConfigEvent&) { return ConfigData(++*notified); });
  }
};

class StoreAllocationFailure : public testing::Test {
 private:
  const Watchdog m_watchdog{kDeadlockLimit};
};

TEST_F(StoreAllocationFailure, AFailedCopyOfAValueKeepsBoth) {
  struct Values {
    ConfigData source = kNewText;
    ConfigData target = kOldText;
    ConfigData empty;
  };
  const std::size_t failed = FailEachAllocation([] { return Values{}; },
                                                [](Values& values) {
                                                  values.target = values.source;
                                                  values.empty = values.source;
                                                },
                                                [](const Values& values, bool done) {
                                                  EXPECT_EQ(values.source.ToString(), kNewText);
                                                  EXPECT_EQ(values.empty.IsValid(), done);
                                                  if (values.target == values.source) return;
                                                  EXPECT_EQ(values.target.ToString(), kOldText);
                                                });
  EXPECT_GT(failed, 0U);  // Into an empty value; over another, if the text has no room there.
}

TEST_F(StoreAllocationFailure, SettingStoresTheNewValueOrKeepsTheOld) {
  const std::size_t failed = FailEachAllocation(
      [] {
        auto stage = std::make_unique<Stage>();
        for (int i = 0; i < 10; ++i) stage->Subscribe();
        stage->store.SetKalConfig(kOtherGroup, "untouched", kOldText, false, false);
        *stage->notified = 0;
        return stage;
      },
      [](auto& stage) {
        stage->store.SetKalConfig(kGroup, kLongName.c_str(), kNewText.c_str(), false, false);
      },
      [](auto& stage, bool done) {
        const std::string text = StoredText(stage->store, kGroup, kLongName);
        EXPECT_TRUE(text == kNewText || (!done && text == kOldText)) << text;
        EXPECT_EQ(*stage->notified, done ? 10 : 0);
        EXPECT_EQ(StoredText(stage->store, kOtherGroup, "untouched"), kOldText);
        EXPECT_EQ(TotalObservers(stage->store), 10U);
        UseFromAnotherThread(stage->store);
        EXPECT_EQ(stage->store.SetKalConfig(kGroup, kLongName.c_str(), 1, false, false), kResultOk);
        EXPECT_EQ(*stage->notified, done ? 20 : 10);
      });
  EXPECT_GT(failed, 3U);
}

TEST_F(StoreAllocationFailure, SettingANewNameStoresItWholeOrNotAtAll) {
  const std::size_t failed = FailEachAllocation(
      [] { return std::make_unique<KalConfig>(7); },
      [](auto& store) { store->SetKalConfig(kGroup, kLongName.c_str(), kNewText.c_str(), false, false); },
      [](auto& store, bool done) {
        ConfigData value;
        const std::int32_t result = store->GetKalConfig(kGroup, kLongName.c_str(), value);
        EXPECT_TRUE(result == kResultOk || !done);
        EXPECT_EQ(value.ToString(), result == kResultOk ? kNewText : "");
        UseFromAnotherThread(*store);
      });
  EXPECT_GT(failed, 2U);
}

TEST_F(StoreAllocationFailure, ReadingLeavesTheStoreAndTheOutputWhole) {
  struct Read : Stage {
    ConfigData value = 1;
  };
  const std::size_t failed =
      FailEachAllocation([] { return std::make_unique<Read>(); },
                         [](auto& read) { read->store.GetKalConfig(kGroup, kLongName.c_str(), read->value); },
                         [](auto& read, bool done) {
                           EXPECT_EQ(read->value.ToString(), done ? kOldText : "1");
                           UseFromAnotherThread(read->store);
                         });
  EXPECT_EQ(failed, 1U);
}

TEST_F(StoreAllocationFailure, SubscribingIsMadeWholeOrNotAtAll) {
  const std::size_t failed = FailEachAllocation(
      [] { return std::make_unique<Stage>(); }, [](auto& stage) { stage->id = stage->Subscribe(); },
      [](auto& stage, bool done) {
        EXPECT_EQ(stage->id != 0, done);
        EXPECT_EQ(*stage->notified, done ? 1 : 0);
        EXPECT_EQ(TotalObservers(stage->store), done ? 1U : 0U);
        EXPECT_EQ(stage->notified.use_count() > 1, done);
        EXPECT_EQ(stage->store.SetKalConfig(kGroup, kLongName.c_str(), 1, true, false),
                  done ? kResultOk : kResultNobody);
        EXPECT_EQ(stage->store.UnsubscribeConfig(1), done ? kResultOk : kResultNotFound);
        UseFromAnotherThread(stage->store);
        EXPECT_NE(stage->Subscribe(), 0U);
      });
  EXPECT_GT(failed, 5U);
}

TEST_F(StoreAllocationFailure, BindingIsMadeWholeOrNotAtAll) {
  const std::size_t failed = FailEachAllocation(
      [] { return std::make_unique<Stage>(); }, [](auto& stage) { stage->id = stage->Bind(); },
      [](auto& stage, bool done) {
        EXPECT_EQ(stage->id != 0, done);
        EXPECT_EQ(TotalObservers(stage->store), done ? 1U : 0U);
        EXPECT_EQ(stage->notified.use_count() > 1, done);
        ConfigData value;
        EXPECT_EQ(stage->store.GetDynamicConfig(kGroup, kLongName.c_str(), value, {}),
                  done ? kResultOk : kResultNobody);
        UseFromAnotherThread(stage->store);
        EXPECT_EQ(stage->Bind() != 0, !done);
      });
  EXPECT_GT(failed, 4U);
}

TEST_F(StoreAllocationFailure, AskingABindingEndsItsDelivery) {
  struct Read : Stage {
    ConfigData value = 1;
  };
  const std::size_t failed = FailEachAllocation(
      [] {
        auto read = std::make_unique<Read>();
        read->id = read->store.BindConfig(kGroup, kLongName.c_str(),
                                          [](const KalConfigEvent& event) { return event.m_defaultValue; });
        return read;
      },
      [](auto& read) {
        read->store.GetDynamicConfig(kGroup, kLongName.c_str(), read->value, kNewText.c_str());
      },
      [](auto& read, bool done) {
        EXPECT_EQ(read->value.ToString(), done ? kNewText : "1");
        UseFromAnotherThread(read->store);
        {
          const TraceLog log(1);
          EXPECT_EQ(read->store.UnsubscribeConfig(read->id), kResultOk);
          EXPECT_TRUE(log.Lines().empty());
        }
      });
  EXPECT_GT(failed, 1U);
}

TEST_F(StoreAllocationFailure, AskingABindingInItsCallbackEndsThatReadAlone) {
  struct Read : Stage {
    ConfigData value = 1;
    bool isInner = false;
    bool hasFailed = false;
  };
  const std::size_t failed = FailEachAllocation(
      [] {
        auto read = std::make_unique<Read>();
        Read& stage = *read;
        stage.id = stage.store.BindConfig(kGroup, kLongName.c_str(), [&stage](const KalConfigEvent& event) {
          if (std::exchange(stage.isInner, true)) return ConfigValue(3);
          ConfigData inner;
          try {
            stage.store.GetDynamicConfig(kGroup, kLongName.c_str(), inner, {});
          } catch (const std::bad_alloc&) {
            stage.hasFailed = true;
          }
          EXPECT_EQ(event.m_name, kLongName);
          return ConfigValue(2);
        });
        return read;
      },
      [](auto& read) {
        read->store.GetDynamicConfig(kGroup, kLongName.c_str(), read->value, {});
        if (read->hasFailed) throw std::bad_alloc();
      },
      [](auto& read, bool) {
        EXPECT_EQ(read->value.ToString(), "2");
        ConfigData value;
        EXPECT_EQ(read->store.GetDynamicConfig(kGroup, kLongName.c_str(), value, {}), kResultOk);
        EXPECT_EQ(value.ToString(), "3");
        UseFromAnotherThread(read->store);
        const TraceLog log(1);
        EXPECT_EQ(read->store.UnsubscribeConfig(read->id), kResultOk);
        EXPECT_TRUE(log.Lines().empty());
      });
  EXPECT_GT(failed, 0U);
}

TEST_F(StoreAllocationFailure, RemovingAllocatesNothing) {
  const std::size_t failed = FailEachAllocation(
      [] {
        auto stage = std::make_unique<Stage>();
        stage->id = stage->Subscribe();
        return stage;
      },
      [](auto& stage) {
        stage->store.UnsubscribeConfig(stage->id);
        stage->store.RemoveKalConfig(kGroup, kLongName.c_str());
        stage->store.RemoveKalConfigByGroup(kGroup);
      },
      [](auto& stage, bool done) {
        EXPECT_TRUE(done);
        EXPECT_EQ(TotalObservers(stage->store), 0U);
        EXPECT_EQ(StoredText(stage->store, kGroup, kLongName), "");
      });
  EXPECT_EQ(failed, 0U);
}

TEST_F(StoreAllocationFailure, ApplyingSetsWholeEntries) {
  const std::string document = R"({"Audio":[{"key":")" + kLongName + R"(","value":")" + kNewText +
                               R"("},{"key":"second","value":")" + kNewText + R"("}],"Video":[]})";
  const std::size_t failed = FailEachAllocation(
      [] {
        auto stage = std::make_unique<Stage>();
        stage->Subscribe();
        return stage;
      },
      [&](auto& stage) { stage->store.ApplyKalConfigs(document.c_str()); },
      [&](auto& stage, bool done) {
        const std::string first = StoredText(stage->store, kGroup, kLongName);
        const std::string second = StoredText(stage->store, kGroup, "second");
        EXPECT_TRUE(first == kNewText || (!done && first == kOldText)) << first;
        EXPECT_TRUE(second == kNewText || (!done && second.empty())) << second;
        UseFromAnotherThread(stage->store);
        EXPECT_EQ(stage->store.ApplyKalConfigs(document.c_str()), kResultOk);
        EXPECT_EQ(StoredText(stage->store, kGroup, "second"), kNewText);
      });
  EXPECT_GT(failed, 10U);
}

TEST_F(StoreAllocationFailure, AFailedDumpKeepsTheTextOfTheLastOne) {
  struct Dumped : Stage {
    const char* before = store.DumpKalConfigs(1U << kGroup);
    const std::string beforeText = before;
    const char* after = nullptr;
  };
  const std::size_t failed = FailEachAllocation(
      [] {
        auto dumped = std::make_unique<Dumped>();
        dumped->store.SetKalConfig(kGroup, "second", kNewText, false, false);
        return dumped;
      },
      [](auto& dumped) { dumped->after = dumped->store.DumpKalConfigs(kAllConfigGroups); },
      [](auto& dumped, bool done) {
        EXPECT_EQ(dumped->after != nullptr, done);
        if (done) {
          EXPECT_NE(std::string(dumped->after).find(kNewText), std::string::npos);
        } else {
          EXPECT_EQ(dumped->before, dumped->beforeText);
        }
        UseFromAnotherThread(dumped->store);
      });
  EXPECT_GT(failed, 3U);
}

TEST_F(StoreAllocationFailure, ARegistryEntryIsMadeWholeOrNotAtAll) {
  struct Slot {
    IKalConfig* store = nullptr;
    ~Slot() {
      ReleaseKalConfig(store);
      CleanUpKalConfig(7);
    }
  };
  const std::size_t failed = FailEachAllocation([] { return std::make_unique<Slot>(); },
                                                [](auto& slot) { CreateKalConfig(7, &slot->store); },
                                                [](auto& slot, bool done) {
                                                  EXPECT_EQ(slot->store != nullptr, done);
                                                  EXPECT_EQ(GetKalConfigSizeForUT(), done ? 1U : 0U);
                                                  std::thread([] {
                                                    IKalConfig* other = nullptr;
                                                    EXPECT_EQ(CreateKalConfig(8, &other), kResultOk);
                                                    EXPECT_EQ(ReleaseKalConfig(other), kResultOk);
                                                    EXPECT_EQ(CleanUpKalConfig(8), kResultOk);
                                                  }).join();
                                                  slot->store = nullptr;
                                                  EXPECT_EQ(CreateKalConfig(7, &slot->store), kResultOk);
                                                  EXPECT_EQ(GetKalConfigSizeForUT(), 1U);
                                                  if (done) ReleaseKalConfig(slot->store);
                                                });
  EXPECT_EQ(failed, 2U);
  EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
}

}  // namespace
