// SPDX-License-Identifier: Apache-2.0
// The handles of the typed layer: Subscription in each way of delivery, Binding, CallStore, StatsRef,
// ScopedConfig.
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "scenarios/Registry.h"
#include "statistics/Growth.h"
#include "tessel/IKalUnknown.h"
#include "tessel/KalConfig.h"
#include "tessel/typed.h"
#include "util/ACmThread.h"

using namespace kalStore;
using model::Check;

namespace {

constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 0};

// Ends an object of audio, whose last reference it releases.
std::thread Releasing(void* object) {
  return std::thread(
      [object] { dynamic_cast<kal::IKalUnknown&>(*static_cast<IKalAudioInfo*>(object)).Release(); });
}

}  // namespace

MODEL_SCENARIO(SubscriptionEndsBesideADirectDelivery) {
  KalConfig store(7);
  auto used = std::make_unique<int>(0);
  std::optional<Subscription> subscription(std::in_place, store, kMaxFps.Group(), kMaxFps.Name(),
                                           [&](const KalConfigEvent&) { ++*used; });
  std::thread setter([&] { kMaxFps.Set(store, 30); });
  subscription->Remove();
  used.reset();
  setter.join();
}

MODEL_SCENARIO(SubscriptionEndsBesideAPostedDelivery) {
  ACmThread thread;
  thread.Start();
  KalConfig store(7);
  auto used = std::make_unique<int>(0);
  std::optional<Subscription> subscription(
      std::in_place, store, kMaxFps.Group(), kMaxFps.Name(), [&](const KalConfigEvent&) { ++*used; }, &thread,
      true);
  kMaxFps.Set(store, 30);
  subscription->Remove();
  used.reset();
}

MODEL_SCENARIO(SubscriptionEndsBesideAnExecutor) {
  KalConfig store(7);
  auto used = std::make_unique<int>(0);
  std::function<void()> task;
  std::optional<Subscription> subscription(
      std::in_place, store, kMaxFps.Group(), kMaxFps.Name(), [&](const KalConfigEvent&) { ++*used; },
      ConfigExecutor([&](std::function<void()> given) { task = std::move(given); }));
  kMaxFps.Set(store, 30);
  std::thread loop([&] { task(); });
  subscription->Remove();
  used.reset();
  loop.join();
}

MODEL_SCENARIO(SubscriptionOfAFacadeEndsBesideItsBinding) {
  const CallStore call(7, CallStore::kEndsCall);
  kMaxFps.Set(*call, 30);
  KalConfigHelper settings;
  auto used = std::make_unique<int>(0);
  std::optional<Subscription> subscription(std::in_place, settings, kMaxFps.Group(), kMaxFps.Name(),
                                           [&](const KalConfigEvent&) { ++*used; });
  std::thread binder([&] { settings.SetCallId(7); });
  subscription->Remove();
  used.reset();
  binder.join();
}

// It is paused from its own callback and from another thread; what is set after that, on that thread, is not
// notified.
MODEL_SCENARIO(SubscriptionIsPausedBesideASet) {
  KalConfig store(7);
  std::atomic<int> last{0};
  Subscription subscription(store, kMaxFps.Group(), kMaxFps.Name(),
                            [&](const KalConfigEvent& event) { last = event.m_newValue.ToInt(); });
  std::thread setter([&] { kMaxFps.Set(store, 1); });
  subscription.Pause();
  kMaxFps.Set(store, 2);
  Check(last != 2 && subscription.IsPaused(), "a paused subscription is not notified");
  subscription.Resume();
  setter.join();
  kMaxFps.Set(store, 3);
  Check(last == 3, "it is notified again");
}

MODEL_SCENARIO(BindingEndsBesideARead) {
  KalConfig store(7);
  auto used = std::make_unique<int>(30);
  std::optional<Binding> binding(std::in_place, store, kMaxFps.Group(), kMaxFps.Name(),
                                 [&](const KalConfigEvent&) { return ConfigData(*used); });
  std::thread reader([&] {
    ConfigData value;
    const std::int32_t result = store.GetDynamicConfig(kMaxFps.Group(), kMaxFps.Name(), value, {});
    Check(result == kResultNobody || value.ToInt() == 30, "its value, or nobody's");
  });
  binding->Remove();
  used.reset();
  reader.join();
}

MODEL_SCENARIO(CallsAreSharedAndEnd) {
  {
    std::thread other([] {
      const CallStore call(7, CallStore::kEndsCall);
      kMaxFps.Set(*call, 1);
    });
    const CallStore call(7, CallStore::kEndsCall);
    kMaxFps.Set(*call, 2);
    const int value = kMaxFps.Get(*call);
    Check(value == 1 || value == 2, "the holder's store lives");
    other.join();
  }
  Check(GetKalConfigSizeForUT() == 0, "no store is left");
}

MODEL_SCENARIO(StatisticsAreSharedAndEnd) {
  std::thread other([] {
    const StatsRef<VideoStats> measuring(7);
    measuring->UpdateVideoCapturedFrameCnt(1);
  });
  const StatsRef<VideoStats> measuring(7);
  measuring->UpdateVideoCapturedFrameCnt(1);
  st_KalVideoTxBlock block;
  measuring->GetTxMediaInfo(&block, false);
  Check(block.capturedFrames == 1, "what this thread has written, or the other");
  other.join();
}

MODEL_SCENARIO(StatisticsEndByTheirOwnReleaseBesideOthers) {
  constexpr KalTesselEntityType kType = KAL_TESSEL_VIDEO;
  void* ending = nullptr;
  createTesselEntity(kType, 7, &ending);
  std::thread holder(
      [&] { dynamic_cast<kal::IKalUnknown&>(*static_cast<IKalVideoInfo*>(ending)).Release(); });
  kalTesselInstant.isTesselEntityExisted(kType, 7);
  void* other = nullptr;
  createTesselEntity(kType, 8, &other);
  holder.join();
  Check(!kalTesselInstant.isTesselEntityExisted(kType, 7), "its last reference is gone");
  Check(releaseTesselEntity(kType, 8, other) == 0, "the other had one reference");
}

MODEL_SCENARIO(RegistryOfStatisticsEndsBesideAnObject) {
  auto registry = std::make_unique<CKalTessel>();
  std::thread holder = Releasing(registry->createOrGetTesselEntity(KAL_TESSEL_AUDIO, 7));
  registry.reset();
  holder.join();
}

MODEL_SCENARIO(RegistryOfStatisticsEndsBesideTwoObjects) {
  auto registry = std::make_unique<CKalTessel>();
  std::thread first = Releasing(registry->createOrGetTesselEntity(KAL_TESSEL_AUDIO, 7));
  std::thread second = Releasing(registry->createOrGetTesselEntity(KAL_TESSEL_AUDIO, 8));
  registry.reset();
  first.join();
  second.join();
}

// The object may be ending when its key is asked for: the registry then makes another one, and ends first.
MODEL_SCENARIO(RegistryOfStatisticsReplacesAnObjectAndEnds) {
  auto registry = std::make_unique<CKalTessel>();
  std::thread holder = Releasing(registry->createOrGetTesselEntity(KAL_TESSEL_AUDIO, 7));
  std::thread other = Releasing(registry->createOrGetTesselEntity(KAL_TESSEL_AUDIO, 7));
  registry.reset();
  holder.join();
  other.join();
}

// Of two reports at once, one has a growth, and none has less than nothing.
MODEL_SCENARIO(StatisticsGrowForOneOfTwo) {
  std::uint32_t reported = 0, counter = 0;
  const auto take = [&] {
    std::uint32_t total = 0;
    return internal::TakeGrowth(reported, counter, total);
  };
  std::thread counting([&] {
    for (std::uint32_t count = 1; count <= 3; ++count) internal::relaxed::Store(counter, count);
  });
  std::uint32_t other = 0;
  std::thread reporting([&] { other = take() + take(); });
  const std::uint32_t mine = take();
  reporting.join();
  counting.join();
  Check(mine <= 3 && other <= 3 && mine + other + take() == 3, "each growth is reported once");
}

// The same of whole reports.
MODEL_SCENARIO(StatisticsGrowForOneOfTwoReports) {
  const StatsRef<VideoStats> measuring(7);
  st_KalVideoStreamStatInfo stream{};
  measuring->UpdateStreamsInfo(&stream, 1);
  const auto report = [&] {
    st_KalVideoTxBlock block;
    measuring->GetTxMediaInfo(&block, true);
    return block.layer[0].idrRequestsDelta;
  };
  std::thread counting([&] {
    for (stream.idrRequests = 1; stream.idrRequests <= 2; ++stream.idrRequests)
      measuring->UpdateVideoEncIdrReqNum(stream.idrRequests, &stream, 0, false);
  });
  std::uint32_t other = 0;
  std::thread reporting([&] { other = report(); });
  const std::uint32_t mine = report();
  reporting.join();
  counting.join();
  Check(mine <= 2 && other <= 2 && mine + other + report() == 2, "each growth is reported once");
}

MODEL_SCENARIO(ScopesBesideASet) {
  KalConfig store(7);
  std::thread setter([&] { kMaxFps.Set(store, 1); });
  {
    const ScopedConfig scope(store, kMaxFps, 2);
    const int value = kMaxFps.Get(store);
    Check(value == 1 || value == 2, "one of the two sets");
  }
  setter.join();
  Check(kMaxFps.Get(store) != 2, "the scope has ended");
}
