// SPDX-License-Identifier: Apache-2.0
#include <new>
#include <thread>

#include "StoreFixture.h"
#include "support/AllocationCount.h"
#include "tessel/KalConfigRegistry.h"

namespace kalStore {
namespace {

const std::string kName(40, 'n');
const std::string kOther(40, 'o');
const std::string kOld(40, 'a');
const std::string kNew(40, 'b');

class StoreFailedAllocations : public ::testing::Test {
 protected:
  StoreFailedAllocations() {
    set_util_trace_sink([](void*, int, const char*, const char*, unsigned int) {}, nullptr);
    set_external_trace_mask(2);
  }
  ~StoreFailedAllocations() override {
    set_external_trace_mask(0);
    set_util_trace_sink(nullptr, nullptr);
  }

  /// Runs the operation on a fresh store with its first allocation failing, then its second, until none
  /// fails; after each run `check(store, failed)`. Another thread uses the store then, so that a lock still
  /// held shows.
  template <class Prepare, class Operation, class Check>
  static void FailEach(Prepare prepare, Operation operation, Check check) {
    for (std::size_t n = 1;; ++n) {
      KalConfig store(5);
      prepare(store);
      bool failed = false;
      bool fired = false;
      {
        const FailAllocation nth(n);
        try {
          operation(store);
        } catch (const std::bad_alloc&) {
          failed = true;
        }
        fired = nth.Fired();
      }
      SCOPED_TRACE("allocation " + std::to_string(n));
      EXPECT_EQ(fired, failed);
      std::thread([&] {
        check(store, failed);
        for (int group = 0; group < 13; ++group) {
          const auto other = static_cast<KalConfigGroup>(group);
          EXPECT_EQ(kResultNobody, store.SetKalConfig(other, "later", "1", false, false));
          const SubscribeId_t id =
              store.SubscribeConfig(other, "later", [](const KalConfigEvent&) {}, nullptr, false);
          EXPECT_NE(0U, id);
          EXPECT_EQ(kResultOk, store.SetKalConfig(other, "later", "2", false, false));
          EXPECT_EQ(kResultOk, store.UnsubscribeConfig(id));
        }
      }).join();
      if (!fired) break;
      ASSERT_LT(n, 1000U);
    }
  }

  static std::string Get(KalConfig& store, const std::string& name) {
    ConfigData value;
    return store.GetKalConfig(KAL_CONFIG_GROUP_AUDIO, name.c_str(), value) == kResultOk ? value.ToCstr()
                                                                                        : "(none)";
  }
  static std::int32_t Set(KalConfig& store, const std::string& name, const std::string& text) {
    return store.SetKalConfig(KAL_CONFIG_GROUP_AUDIO, name.c_str(), text, false, false);
  }
  static void StoreOld(KalConfig& store) {
    Set(store, kName, kOld);
    Set(store, kOther, kOld);
  }
};

TEST_F(StoreFailedAllocations, OfASetLeaveTheOldOrTheNewValue) {
  int notified = 0;
  FailEach(
      [&](KalConfig& store) {
        StoreOld(store);
        // More than one delivery holds without an allocation of its own.
        for (int i = 0; i < 20; ++i) {
          store.SubscribeConfig(
              KAL_CONFIG_GROUP_AUDIO, kName.c_str(), [&](const KalConfigEvent&) { ++notified; }, nullptr,
              false);
        }
        notified = 0;
      },
      [](KalConfig& store) { Set(store, kName, kNew); },
      [&](KalConfig& store, bool failed) {
        EXPECT_EQ(kOld, Get(store, kOther));
        const std::string value = Get(store, kName);
        EXPECT_TRUE(value == kNew || (failed && value == kOld)) << value;
        EXPECT_EQ(failed ? 0 : 20, notified);
        EXPECT_EQ(kResultOk, Set(store, kName, "again"));
        for (SubscribeId_t id = 1; id <= 20; ++id) EXPECT_EQ(kResultOk, store.UnsubscribeConfig(id));
      });
}

TEST_F(StoreFailedAllocations, OfAFirstSetStoreAllOrNothing) {
  FailEach([](KalConfig&) {}, [](KalConfig& store) { Set(store, kName, kNew); },
           [](KalConfig& store, bool failed) {
             const std::string value = Get(store, kName);
             EXPECT_TRUE(value == kNew || (failed && value == "(none)")) << value;
           });
}

TEST_F(StoreFailedAllocations, OfASubscribeLeaveNothingBehind) {
  const auto captured = std::make_shared<int>(1);
  int notified = 0;
  FailEach(
      StoreOld,
      [&](KalConfig& store) {
        store.SubscribeConfig(
            KAL_CONFIG_GROUP_AUDIO, kName.c_str(),
            [&notified, captured](const KalConfigEvent&) { ++notified; }, nullptr, false);
      },
      [&](KalConfig& store, bool failed) {
        EXPECT_EQ(failed ? 1 : 2, captured.use_count());
        notified = 0;
        EXPECT_EQ(failed ? kResultNobody : kResultOk, Set(store, kName, kNew));
        EXPECT_EQ(failed ? 0 : 1, notified);
        EXPECT_EQ(failed ? kResultNotFound : kResultOk, store.UnsubscribeConfig(1));
        EXPECT_EQ(1, captured.use_count());
      });
}

TEST_F(StoreFailedAllocations, OfABindLeaveTheNameFree) {
  const auto captured = std::make_shared<int>(1);
  const auto bind = [&](KalConfig& store) {
    return store.BindConfig(KAL_CONFIG_GROUP_AUDIO, kName.c_str(),
                            [captured](const KalConfigEvent&) { return ConfigValue(kNew); });
  };
  FailEach(StoreOld, bind, [&](KalConfig& store, bool failed) {
    EXPECT_EQ(failed ? 1 : 2, captured.use_count());
    EXPECT_EQ(failed, bind(store) != 0);
    ConfigData value;
    EXPECT_EQ(kResultOk, store.GetDynamicConfig(KAL_CONFIG_GROUP_AUDIO, kName.c_str(), value, {}));
  });
}

TEST_F(StoreFailedAllocations, OfADynamicReadLeaveTheOutputAlone) {
  ConfigData value;
  FailEach(
      [&](KalConfig& store) {
        value = "before";
        store.BindConfig(KAL_CONFIG_GROUP_AUDIO, kName.c_str(),
                         [](const KalConfigEvent&) { return ConfigValue(kNew); });
      },
      [&](KalConfig& store) {
        store.GetDynamicConfig(KAL_CONFIG_GROUP_AUDIO, kName.c_str(), value, kOld.c_str());
      },
      [&](KalConfig& store, bool failed) {
        EXPECT_EQ(failed ? "before" : kNew, value.ToCstr());
        EXPECT_EQ(kResultOk, store.UnsubscribeConfig(1));
      });
}

TEST_F(StoreFailedAllocations, OfAnImportKeepEarlierValues) {
  const std::string text = "{\"Audio\":[{\"key\":\"" + kName + "\",\"value\":\"" + kNew + "\"},{\"key\":\"" +
                           std::string(40, 'p') + "\",\"value\":\"" + kNew + "\"}]}";
  FailEach(
      StoreOld, [&](KalConfig& store) { store.ApplyKalConfigs(text.c_str()); },
      [&](KalConfig& store, bool failed) {
        EXPECT_EQ(kOld, Get(store, kOther));
        const std::string value = Get(store, kName);
        EXPECT_TRUE(value == kNew || (failed && value == kOld)) << value;
        EXPECT_EQ(kResultOk, store.ApplyKalConfigs(text.c_str()));
        EXPECT_EQ(kNew, Get(store, std::string(40, 'p')));
      });
}

TEST_F(StoreFailedAllocations, OfADumpKeepTheTextOfTheOneBefore) {
  const char* before = nullptr;
  std::string expected;
  FailEach(
      [&](KalConfig& store) {
        StoreOld(store);
        before = store.DumpKalConfigs(1U << KAL_CONFIG_GROUP_AUDIO);
        expected = before;
      },
      [&](KalConfig& store) { store.DumpKalConfigs(kAllConfigGroups); },
      [&](KalConfig& store, bool failed) {
        if (failed) {
          EXPECT_EQ(expected, before);
        }
        EXPECT_EQ(expected, store.DumpKalConfigs(1U << KAL_CONFIG_GROUP_AUDIO));
      });
}

TEST_F(StoreFailedAllocations, OfAPostLoseThatDeliveryAlone) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  FailEach(
      [&](KalConfig& store) {
        store.SubscribeConfig(
            KAL_CONFIG_GROUP_AUDIO, kName.c_str(), [](const KalConfigEvent&) {}, &thread, true);
        store.SubscribeConfig(
            KAL_CONFIG_GROUP_AUDIO, kName.c_str(), [](const KalConfigEvent&) {}, &thread, false);
      },
      [](KalConfig& store) { Set(store, kName, kNew); },
      [](KalConfig& store, bool) {
        EXPECT_EQ(kResultOk, store.UnsubscribeConfig(1));
        EXPECT_EQ(kResultOk, store.UnsubscribeConfig(2));
      });
}

TEST_F(StoreFailedAllocations, OfACreateLeaveTheRegistryAsItWas) {
  DestroyKalConfig();
  for (std::size_t n = 1;; ++n) {
    IKalConfig* store = nullptr;
    bool failed = false;
    bool fired = false;
    {
      const FailAllocation nth(n);
      try {
        CreateKalConfig(5, &store);
      } catch (const std::bad_alloc&) {
        failed = true;
      }
      fired = nth.Fired();
    }
    EXPECT_EQ(fired, failed);
    EXPECT_EQ(failed, store == nullptr);
    std::thread([&] { EXPECT_EQ(failed ? 0U : 1U, GetKalConfigSizeForUT()); }).join();
    if (!fired) break;
  }
  DestroyKalConfig();
}

}  // namespace
}  // namespace kalStore
