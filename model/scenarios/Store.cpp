// SPDX-License-Identifier: Apache-2.0
// A store: sets against removals, in whatever way a change is delivered.
#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "scenarios/Registry.h"
#include "tessel/KalConfig.h"
#include "util/ACmThread.h"

using namespace kalStore;
using model::Check;

namespace {

constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_VIDEO;
constexpr const char* kName = "MaxFps";

int Set(KalConfig& store, int value, const char* name = kName) {
  return store.SetKalConfig(kGroup, name, value, false, false);
}

}  // namespace

// What a callback uses ends right after the removal.
MODEL_SCENARIO(SetAgainstRemoval) {
  KalConfig store(7);
  auto used = std::make_unique<int>(0);
  const SubscribeId_t id =
      store.SubscribeConfig(kGroup, kName, [&](const KalConfigEvent&) { ++*used; }, nullptr, false);
  std::thread setter([&] { Set(store, 30); });
  Check(store.UnsubscribeConfig(id) == kResultOk, "it is removed");
  used.reset();
  setter.join();
}

// The same with deliveries of two threads, one after the other or at once.
MODEL_SCENARIO(SetsOfTwoAgainstRemoval) {
  KalConfig store(7);
  auto used = std::make_unique<std::array<int, 2>>();
  const SubscribeId_t id = store.SubscribeConfig(
      kGroup, kName, [&](const KalConfigEvent& event) { ++(*used)[event.m_newValue.ToInt() == 30]; }, nullptr,
      false);
  std::thread first([&] { Set(store, 30); });
  std::thread second([&] { Set(store, 15); });
  Check(store.UnsubscribeConfig(id) == kResultOk, "it is removed");
  used.reset();
  first.join();
  second.join();
}

MODEL_SCENARIO(HandOverAgainstRemoval) {
  KalConfig store(7);
  ACmThread thread;
  thread.Start();
  auto used = std::make_unique<int>(0);
  const SubscribeId_t id =
      store.SubscribeConfig(kGroup, kName, [&](const KalConfigEvent&) { ++*used; }, &thread, false);
  std::thread setter([&] { Set(store, 30); });
  store.UnsubscribeConfig(id);
  used.reset();
  setter.join();
}

MODEL_SCENARIO(SetsOfTwo) {
  KalConfig store(7);
  std::atomic<int> sum{0};
  store.SubscribeConfig(
      kGroup, kName,
      [&](const KalConfigEvent& event) { sum += event.m_newValue.ToInt() - event.m_oldValue.ToInt(); },
      nullptr, false);
  std::thread setter([&] { Set(store, 30); });
  Set(store, 15);
  setter.join();
  ConfigData stored;
  store.GetKalConfig(kGroup, kName, stored);
  Check(sum == stored.ToInt(), "each change is notified once, from its old value to its new one");
}

MODEL_SCENARIO(SetAgainstSubscribing) {
  KalConfig store(7);
  bool isSeen = false;
  std::thread setter([&] { Set(store, 30); });
  std::atomic<int> seen{0};
  store.SubscribeConfig(
      kGroup, kName, [&](const KalConfigEvent& event) { seen = event.m_newValue.ToInt(); }, nullptr, false);
  setter.join();
  isSeen = seen == 30;
  Check(isSeen, "the change is notified, or in the initial delivery");
}

MODEL_SCENARIO(SelfRemoval) {
  KalConfig store(7);
  SubscribeId_t id = 0;
  int notified = 0;
  id = store.SubscribeConfig(
      kGroup, kName,
      [&](const KalConfigEvent&) {
        ++notified;
        store.UnsubscribeConfig(id);
      },
      nullptr, false);
  std::thread setter([&] { Set(store, 30, "Other"); });
  Set(store, 30);
  Check(Set(store, 15) == kResultNobody && notified == 1, "it is removed");
  setter.join();
}

MODEL_SCENARIO(RemovalInAnothersCallback) {
  KalConfig store(7);
  auto used = std::make_unique<std::atomic<int>>(0);
  const SubscribeId_t id =
      store.SubscribeConfig(kGroup, kName, [&](const KalConfigEvent&) { ++*used; }, nullptr, false);
  store.SubscribeConfig(
      kGroup, "Other",
      [&](const KalConfigEvent&) {
        store.UnsubscribeConfig(id);
        used.reset();
      },
      nullptr, false);
  std::thread setter([&] { Set(store, 30); });
  Set(store, 1, "Other");
  setter.join();
}

MODEL_SCENARIO(BindingAgainstRemoval) {
  KalConfig store(7);
  auto used = std::make_unique<int>(30);
  const SubscribeId_t id =
      store.BindConfig(kGroup, kName, [&](const KalConfigEvent&) { return ConfigData(*used); });
  std::thread reader([&] {
    ConfigData value;
    if (store.GetDynamicConfig(kGroup, kName, value, {}) == kResultOk) {
      Check(value.ToInt() == 30, "the binding's value");
    }
  });
  store.UnsubscribeConfig(id);
  used.reset();
  reader.join();
}

// Two reads ask with defaults of their own, one after the other or at once; one asks again in the callback.
MODEL_SCENARIO(BindingAskedByTwo) {
  KalConfig store(7);
  const std::string name = "a name that does not fit into the string itself";
  const auto ask = [&](int given) {
    ConfigData value;
    const std::int32_t result = store.GetDynamicConfig(kGroup, name.c_str(), value, given);
    Check(result == kResultNobody || value.ToInt() == given, "its own default");
  };
  const SubscribeId_t id = store.BindConfig(kGroup, name.c_str(), [&](const KalConfigEvent& event) {
    if (event.m_defaultValue.ToInt() == 1) ask(3);
    Check(event.m_name == name, "the name");
    return event.m_defaultValue;
  });
  std::thread first([&] { ask(1); });
  std::thread second([&] { ask(2); });
  store.UnsubscribeConfig(id);
  first.join();
  second.join();
}

// Reads, removals and exports beside a set: each sees the value whole.
MODEL_SCENARIO(SetAgainstReads) {
  KalConfig store(7);
  const std::string text = "a value that does not fit into the string itself";
  store.SetKalConfig(kGroup, kName, text, false, false);
  std::thread setter([&] { store.SetKalConfig(kGroup, kName, text + text, false, false); });
  std::thread remover([&] { store.RemoveKalConfigByGroup(kGroup); });
  ConfigData value;
  if (store.GetKalConfig(kGroup, kName, value) == kResultOk) {
    Check(value.ToString() == text || value.ToString() == text + text, "one of its values");
  }
  setter.join();
  remover.join();
}
