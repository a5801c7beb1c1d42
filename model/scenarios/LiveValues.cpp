// SPDX-License-Identifier: Apache-2.0
// LiveConfig: its reads, its end, and that of what it follows.
#include <memory>
#include <optional>
#include <thread>

#include "scenarios/Registry.h"
#include "tessel/KalConfig.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/LiveConfig.h"

using namespace kalStore;
using model::Check;

namespace {

constexpr ConfigKey<int> kFirst{KAL_CONFIG_GROUP_AUDIO, "First", 0};
constexpr ConfigKey<int> kSecond{KAL_CONFIG_GROUP_VIDEO, "Second", 0};
constexpr ConfigKey<int> kOfDefaultGroup{KAL_CONFIG_GROUP_DEFAULT, "Third", 0};

}  // namespace

// Who sees the later of two settings sees the earlier one.
MODEL_SCENARIO(LiveValuesKeepTheOrderOfSets) {
  KalConfig store(7);
  const LiveConfig first(store, kFirst);
  const LiveConfig second(store, kSecond);
  std::thread setter([&] {
    kFirst.Set(store, 1);
    kSecond.Set(store, 1);
  });
  if (second.Get() == 1) Check(first.Get() == 1, "the earlier set is seen");
  setter.join();
  Check(first.Get() == 1 && second.Get() == 1, "a set that has returned is seen");
}

MODEL_SCENARIO(LiveValueOfTwoSetters) {
  KalConfig store(7);
  const LiveConfig live(store, kFirst);
  std::thread setter([&] { kFirst.Set(store, 1); });
  kFirst.Remove(store);
  setter.join();
  Check(live.Get() == kFirst.Get(store), "it has what the store has");
}

MODEL_SCENARIO(LiveValueBeginsAndEndsBesideASet) {
  KalConfig store(7);
  std::thread setter([&] {
    kFirst.Set(store, 1);
    kFirst.Set(store, 2);
  });
  {
    const LiveConfig live(store, kFirst);
    const int seen = live.Get();
    Check(seen >= 0 && seen <= 2, "one of its values");
    Check(kFirst.Get(store) >= seen, "the store is never behind");
  }
  setter.join();
}

MODEL_SCENARIO(LiveValueAgainstTheEndOfItsStore) {
  auto store = std::make_unique<KalConfig>(7);
  kFirst.Set(*store, 1);
  std::optional<LiveConfig<int>> live(std::in_place, *store, kFirst);
  std::thread owner([&] { live.reset(); });
  store.reset();
  owner.join();
}

MODEL_SCENARIO(LiveValueAgainstTheEndOfAFacadeWithoutAStore) {
  auto settings = std::make_unique<KalConfigHelper>();
  std::optional<LiveConfig<int>> live(std::in_place, *settings, kFirst);
  std::thread owner([&] { live.reset(); });
  settings.reset();
  owner.join();
}

MODEL_SCENARIO(LiveValueAgainstTheBindingOfItsFacade) {
  KalConfigHelper settings;
  std::thread binder([&] { settings.SetCallId(7); });
  const LiveConfig live(settings, kFirst);
  binder.join();
  kFirst.Set(settings, 1);
  Check(live.Get() == 1, "it follows the facade's store");
  CleanUpKalConfig(7);
}

// Who finds the facade with its group finds the live value with it.
MODEL_SCENARIO(LiveValueAgainstTheDefaultGroupOfItsFacade) {
  {
    KalConfigHelper settings(7);
    const LiveConfig live(settings, kOfDefaultGroup);
    std::thread owner([&] { settings.SetDefaultGroup(KAL_CONFIG_GROUP_AUDIO); });
    const std::int32_t result = settings.SetKalConfig(kOfDefaultGroup.Name(), 1);
    if (result == kResultNobody) Check(live.Get() == 1, "it follows the group's setting");
    owner.join();
  }
  CleanUpKalConfig(7);
}
