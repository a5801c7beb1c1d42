// SPDX-License-Identifier: Apache-2.0
// A facade: its binding beside what uses it, its end beside deliveries.
#include <atomic>
#include <memory>
#include <thread>

#include "scenarios/Registry.h"
#include "tessel/CallStore.h"
#include "tessel/KalConfigHelper.h"

using namespace kalStore;
using model::Check;

namespace {

constexpr KalConfigGroup kFacadeGroup = KAL_CONFIG_GROUP_VIDEO;
constexpr const char* kFacadeName = "MaxFps";

int SetIn(IKalConfig& store, int value) {
  return store.SetKalConfig(kFacadeGroup, kFacadeName, value, false, false);
}

}  // namespace

MODEL_SCENARIO(FacadeBindsBesideASubscription) {
  const CallStore call(7, CallStore::kEndsCall);
  KalConfigHelper settings;
  std::thread binder([&] { settings.SetCallId(7); });
  int notified = 0;
  settings.SubscribeConfig(kFacadeName, [&](const KalConfigEvent&) { ++notified; }, kFacadeGroup);
  binder.join();
  SetIn(*call, 30);
  Check(notified == 1, "the subscription is registered, once");
}

// The binder makes the store that the other thread then registers with.
MODEL_SCENARIO(FacadeMakesItsStoreBesideASubscription) {
  {
    KalConfigHelper settings;
    std::thread binder([&] { settings.SetCallId(7); });
    int notified = 0;
    settings.SubscribeConfig(kFacadeName, [&](const KalConfigEvent&) { ++notified; }, kFacadeGroup);
    binder.join();
    settings.SetKalConfig(kFacadeName, 30, kFacadeGroup);
    Check(notified == 1, "the subscription is registered, once");
  }
  CleanUpKalConfig(7);
}

MODEL_SCENARIO(FacadeTakesOneOfTwoSubscriptions) {
  const CallStore call(7, CallStore::kEndsCall);
  KalConfigHelper settings(7);
  int notified = 0;
  SubscribeId_t ids[2] = {};
  const auto subscribe = [&](SubscribeId_t& id) {
    id = settings.SubscribeConfig(kFacadeName, [&](const KalConfigEvent&) { ++notified; }, kFacadeGroup);
  };
  std::thread other([&] { subscribe(ids[0]); });
  subscribe(ids[1]);
  other.join();
  Check((ids[0] == 0) != (ids[1] == 0), "one of the two has the name");
  SetIn(*call, 30);
  Check(notified == 1, "that one is notified");
}

// Its callback's data end right after it.
MODEL_SCENARIO(FacadeEndsBesideASet) {
  const CallStore call(7, CallStore::kEndsCall);
  auto used = std::make_unique<int>(0);
  auto settings = std::make_unique<KalConfigHelper>(7);
  settings->SubscribeConfig(kFacadeName, [&](const KalConfigEvent&) { ++*used; }, kFacadeGroup);
  std::thread setter([&] { SetIn(*call, 30); });
  settings.reset();
  used.reset();
  setter.join();
}

MODEL_SCENARIO(FacadeEndsBesideAPostedDelivery) {
  const CallStore call(7, CallStore::kEndsCall);
  auto used = std::make_unique<int>(0);
  ACmThread thread;
  thread.Start();
  auto settings = std::make_unique<KalConfigHelper>(7);
  settings->SubscribeConfig(
      kFacadeName, [&](const KalConfigEvent&) { ++*used; }, kFacadeGroup, &thread, true);
  SetIn(*call, 30);
  settings.reset();
  used.reset();
}

MODEL_SCENARIO(FacadeRemovesOnceForTwo) {
  const CallStore call(7, CallStore::kEndsCall);
  KalConfigHelper settings(7);
  int notified = 0;
  const SubscribeId_t id =
      settings.SubscribeConfig(kFacadeName, [&](const KalConfigEvent&) { ++notified; }, kFacadeGroup);
  std::int32_t results[2] = {};
  std::thread other([&] { results[0] = settings.UnsubscribeConfig(id); });
  results[1] = settings.UnsubscribeConfig(id);
  other.join();
  Check((results[0] == kResultOk) != (results[1] == kResultOk), "one of the two removes it");
  SetIn(*call, 30);
  Check(notified == 0, "it is removed");
}

// A name that is removed by one thread and subscribed again by another has one subscription at most.
MODEL_SCENARIO(FacadeSubscribesAgainBesideARemoval) {
  const CallStore call(7, CallStore::kEndsCall);
  KalConfigHelper settings(7);
  int notified = 0;
  const auto subscribe = [&] {
    return settings.SubscribeConfig(kFacadeName, [&](const KalConfigEvent&) { ++notified; }, kFacadeGroup);
  };
  const SubscribeId_t first = subscribe();
  std::thread remover([&] { settings.UnsubscribeConfig(first); });
  const SubscribeId_t second = subscribe();
  remover.join();
  SetIn(*call, 30);
  Check(notified == (second == 0 ? 0 : 1), "the second one is registered or refused");
}

MODEL_SCENARIO(FacadeBindsBesideItsUses) {
  const CallStore call(7, CallStore::kEndsCall);
  KalConfigHelper settings;
  std::thread binder([&] { settings.SetCallId(7); });
  settings.SetDefaultGroup(kFacadeGroup);
  const std::int32_t result = settings.SetKalConfig(kFacadeName, 30);
  binder.join();
  ConfigData value;
  const bool isStored = call->GetKalConfig(kFacadeGroup, kFacadeName, value) == kResultOk;
  Check(isStored == (result == kResultOk || result == kResultNobody), "what it took is stored");
}

// The delivery of what is stored already goes to the callback once, by whichever thread registers it.
MODEL_SCENARIO(FacadeDeliversWhatIsStored) {
  const CallStore call(7, CallStore::kEndsCall);
  SetIn(*call, 30);
  KalConfigHelper settings;
  std::atomic<int> notified{0};
  std::thread binder([&] { settings.SetCallId(7); });
  settings.SubscribeConfig(kFacadeName, [&](const KalConfigEvent&) { ++notified; }, kFacadeGroup);
  binder.join();
  Check(notified == 1, "the stored value is delivered once");
}
