// SPDX-License-Identifier: Apache-2.0
// A trace sink that calls in, from lines that are traced in the middle of an operation. It may even wait
// there for another thread that uses the store: no lock of a store is held.

#include <thread>

#include "StoreFixture.h"
#include "support/CallingSink.h"
#include "tessel/KalConfigRegistry.h"

namespace kalStore {
namespace {

class StoreCallingSink : public StoreTest {
 protected:
  /// Uses the store in every way that needs the locks of the group, on this thread and on another.
  void UseTheStore() {
    const auto use = [this] {
      Set("other", "1", true);
      const SubscribeId_t id = Subscribe("name", [](const KalConfigEvent&) {});
      EXPECT_NE(0U, id);
      EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
      EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(999));
      const SubscribeId_t bound = Bind("other", [](const KalConfigEvent&) { return ConfigValue("1"); });
      ConfigData value;
      EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "other", value, {}));
      EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(bound));
      m_store.DumpKalConfigs(kAllConfigGroups);
      m_store.RemoveKalConfigByGroup(kVideo);
    };
    use();
    std::thread(use).join();
  }
};

TEST_F(StoreCallingSink, MayUseTheStoreFromEveryLineOfItsOperations) {
  for (const char* part : {"SetKalConfig", "GetDynamicConfig", "RemoveKalConfig,", "RemoveKalConfigByGroup",
                           "fireEvents, name", "nObservers", "invokeEvent", "subscribeConfig, Audio",
                           "bindConfig", "UnsubscribeConfig", "unsubscribeConfig, Audio"}) {
    SCOPED_TRACE(part);
    const CallingSink sink(part, [this] { UseTheStore(); });
    Recorder recorder;
    Set(nullptr, "1");
    Set("name", "1", true);
    const SubscribeId_t id = Subscribe("name", recorder.Callback());
    EXPECT_EQ(1U, recorder.Count());
    EXPECT_EQ(kResultOk, Set("name", "2", true));
    EXPECT_EQ(2U, recorder.Count());
    const SubscribeId_t bound = Bind("bound", [](const KalConfigEvent&) { return ConfigValue("1"); });
    ConfigData value;
    EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "bound", value, {}));
    EXPECT_EQ(kResultBadArgument, m_store.GetDynamicConfig(kAudio, nullptr, value, {}));
    EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(bound));
    EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
    EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(id));
    EXPECT_EQ(kResultOk, m_store.RemoveKalConfig(kAudio, "name"));
    EXPECT_EQ(kResultOk, m_store.RemoveKalConfigByGroup(kAudio));
    EXPECT_GT(sink.Calls(), 0);
  }
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreCallingSink, MayUseTheStoreFromALineAboutOverlappingDeliveries) {
  Recorder recorder;
  const SubscribeId_t id = Subscribe("name", [&](const KalConfigEvent& event) {
    recorder.Add(event);
    if (event.m_newValue.ToInt() == 1) Set("name", "2");
  });
  Bind("bound", [this, isFirst = true](const KalConfigEvent&) mutable {
    ConfigData value;
    if (std::exchange(isFirst, false)) m_store.GetDynamicConfig(kAudio, "bound", value, {});
    return value;
  });
  const CallingSink sink("Multiple notification", [this] { UseTheStore(); });
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(2U, recorder.Count());
  ConfigData value;
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "bound", value, {}));
  EXPECT_EQ(2, sink.Calls());
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
}

TEST_F(StoreCallingSink, MayUseTheStoreFromALineAboutARemovalDuringADelivery) {
  Gate inside;
  Gate go;
  const SubscribeId_t id = Subscribe("name", [&](const KalConfigEvent&) {
    inside.Open();
    go.Wait();
  });
  std::thread setter([&] { Set("name", "1"); });
  inside.Wait();
  {
    const CallingSink sink("remove itself", [&] {
      EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(id));
      EXPECT_EQ(kResultNobody, Set("name", "2"));
      UseTheStore();
      go.Open();
    });
    EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
    EXPECT_EQ(1, sink.Calls());
  }
  setter.join();
}

class RegistryCallingSink : public ::testing::Test {
 protected:
  RegistryCallingSink() { DestroyKalConfig(); }
  ~RegistryCallingSink() override { DestroyKalConfig(); }

  static IKalConfig* Create(std::uint32_t callId) {
    IKalConfig* store = nullptr;
    EXPECT_EQ(kResultOk, CreateKalConfig(callId, &store));
    return store;
  }
};

TEST_F(RegistryCallingSink, MayCreateTheStoreThatIsBeingConstructed) {
  IKalConfig* inner = nullptr;
  IKalConfig* outer = nullptr;
  {
    const CallingSink sink("KalConfig::KalConfig [cid=5]", [&] { inner = Create(5); });
    outer = Create(5);
    EXPECT_EQ(1, sink.Calls());
  }
  EXPECT_EQ(inner, outer);
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_EQ(kResultOk, CleanUpKalConfig(5));
  EXPECT_EQ(kResultOk, ReleaseKalConfig(inner));
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_EQ(kResultNobody, outer->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", "1", false, false));
  EXPECT_EQ(kResultOk, ReleaseKalConfig(outer));
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST_F(RegistryCallingSink, MayWaitForAnotherCallFromTheLineOfACreation) {
  {
    const CallingSink sink("CreateKalConfig [cid=5]", [&] { std::thread([&] { Create(6); }).join(); });
    Create(5);
    EXPECT_EQ(1, sink.Calls());
  }
  EXPECT_EQ(2U, GetKalConfigSizeForUT());
  DestroyKalConfig();
}

TEST_F(RegistryCallingSink, MayEndTheStoreThatWasSharedMeanwhile) {
  // The surplus store ends when the outer call has counted its reference: its line releases the inner one.
  IKalConfig* inner = nullptr;
  bool isFirst = true;
  IKalConfig* outer = nullptr;
  {
    const CallingSink sink("[cid=5]", [&] {
      if (std::exchange(isFirst, false)) return;
      if (inner == nullptr) {
        inner = Create(5);
        CleanUpKalConfig(5);
      } else {
        EXPECT_EQ(kResultOk, ReleaseKalConfig(std::exchange(inner, nullptr)));
      }
    });
    outer = Create(5);
    EXPECT_EQ(3, sink.Calls());
  }
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_EQ(kResultOk, ReleaseKalConfig(outer));
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST_F(RegistryCallingSink, MayChangeTheRegistryWhileEveryStoreIsListed) {
  for (std::uint32_t callId = 1; callId <= 5; ++callId) Create(callId);
  int lines = 0;
  {
    const CallingSink sink("DestroyKalConfig, ", [&] {
      ++lines;
      IKalConfig* const next = Create(static_cast<std::uint32_t>(lines + 1));
      ReleaseKalConfig(next);
      ReleaseKalConfig(next);
      CleanUpKalConfig(static_cast<std::uint32_t>(lines));
      CleanUpKalConfig(static_cast<std::uint32_t>(lines + 1));
      if (lines == 1) Create(9);
    });
    DestroyKalConfig();
  }
  EXPECT_GT(lines, 1);
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST_F(RegistryCallingSink, MayCallInFromEveryLineOfARelease) {
  for (const char* part : {"ReleaseKalConfig", "CleanUpKalConfig", "~KalConfig"}) {
    SCOPED_TRACE(part);
    IKalConfig* again = nullptr;
    {
      const CallingSink sink(part, [&] { again = Create(5); });
      IKalConfig* const store = Create(5);
      EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
      EXPECT_EQ(kResultOk, CleanUpKalConfig(5));
      ASSERT_GT(sink.Calls(), 0);
    }
    DestroyKalConfig();
  }
}

}  // namespace
}  // namespace kalStore
