// SPDX-License-Identifier: Apache-2.0
// The end of every store, beside those that hold none; and ends that come from inside a callback.
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "scenarios/Registry.h"
#include "tessel/KalConfig.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/inspect.h"
#include "tessel/json.h"
#include "tessel/typed.h"
#include "util/ACmThread.h"
#include "util/CCmMutexThread.h"
#include "util/CCmReferenceControlT.h"
#include "util/util_trace.h"

using namespace kalStore;
using model::Check;

namespace {

constexpr std::uint32_t kEndingCall = 7, kOtherCall = 8;
constexpr ConfigKey<int> kKey{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 0};
constexpr ConfigKey<int> kOtherKey{KAL_CONFIG_GROUP_VIDEO, "MinFps", 0};

// Held by the registry alone.
IKalConfig& MakeCall(std::uint32_t callId = kEndingCall) {
  IKalConfig* store = nullptr;
  CreateKalConfig(callId, &store);
  kKey.Set(*store, 30);
  return *store;
}

// Calls a function when the last callback that captured it ends.
std::shared_ptr<void> AtEndOf(std::function<void()> function) {
  return {new int, [function = std::move(function)](const int* token) {
            delete token;
            function();
          }};
}

}  // namespace

MODEL_SCENARIO(StoresEndBesideLooks) {
  MakeCall();
  std::thread looking([] {
    for (const InspectedCall& call : InspectCalls()) Check(call.callId == kEndingCall, "the call, or none");
    for (const InspectedSetting& setting : InspectSettings(kEndingCall))
      Check(setting.name == kKey.Name(), "its setting, or none");
    Check(GetKalConfigSizeForUT() <= 1, "its store, or none");
  });
  DestroyKalConfig();
  Check(GetKalConfigSizeForUT() == 0, "no store is left");
  looking.join();
}

MODEL_SCENARIO(StoresEndForTwo) {
  IKalConfig& other = MakeCall(kOtherCall);
  int ends = 0;
  MakeCall().SubscribeConfig(
      kKey.Group(), "Held", [end = AtEndOf([&] {
                               Check(kKey.Get(other) == 30, "every store is there");
                               ++ends;
                             })](const KalConfigEvent&) {},
      nullptr, false);
  std::thread second([] { DestroyKalConfig(); });
  DestroyKalConfig();
  Check(GetKalConfigSizeForUT() == 0, "no store is left");
  second.join();
  Check(ends == 1, "what a callback held has ended, once");
}

MODEL_SCENARIO(StoresEndBesideTheEndOfALiveValue) {
  std::optional<LiveConfig<int>> live(std::in_place, MakeCall(), kKey);
  std::thread owner([&] {
    Check(live->Get() == 30, "the last value");
    live.reset();
  });
  DestroyKalConfig();
  owner.join();
}

// The run thread has a copy of the callback. What that captured calls in when the last copy ends: there, or
// with the store.
MODEL_SCENARIO(StoresEndBesideAPostedDelivery) {
  int notified = 0, ends = 0;
  {
    ACmThread thread;
    thread.Start();
    IKalConfig& store = MakeCall();
    store.SubscribeConfig(
        kOtherKey.Group(), kOtherKey.Name(), [&notified, end = AtEndOf([&ends] {
                                                           ends += GetKalConfigSizeForUT() == 0 ? 1 : 2;
                                                         })](const KalConfigEvent&) { ++notified; },
        &thread, true);
    kOtherKey.Set(store, 1);
    DestroyKalConfig();
  }
  Check(notified == 1 && ends == 1, "what was posted is delivered, and what its callback captured has ended");
}

// Who holds the store last is open: the end of one holder, in a callback of the other one's set.
MODEL_SCENARIO(CallEndsInACallbackBesideItsOtherHolder) {
  {
    std::optional<CallStore> mine(std::in_place, kEndingCall, CallStore::kEndsCall);
    IKalConfig& store = **mine;
    std::thread other([] { const CallStore shared(kEndingCall, CallStore::kEndsCall); });
    store.SubscribeConfig(
        kKey.Group(), kKey.Name(), [&](const KalConfigEvent&) { mine.reset(); }, nullptr, false);
    Check(kKey.Set(store, 1).WasTold(), "the subscriber is notified");
    other.join();
  }
  Check(GetKalConfigSizeForUT() == 0, "no store is left");
}

// It waits for its own callback, which another thread runs.
MODEL_SCENARIO(FacadeEndsInAnothersCallbackBesideASet) {
  const CallStore call(kEndingCall, CallStore::kEndsCall);
  auto used = std::make_unique<int>(0);
  auto facade = std::make_unique<KalConfigHelper>(kEndingCall);
  facade->SubscribeConfig(kOtherKey.Name(), [&](const KalConfigEvent&) { ++*used; }, kOtherKey.Group());
  call->SubscribeConfig(
      kKey.Group(), kKey.Name(),
      [&](const KalConfigEvent&) {
        facade.reset();
        used.reset();
      },
      nullptr, false);
  std::thread setter([&] { kOtherKey.Set(*call, 1); });
  kKey.Set(*call, 1);
  Check(facade == nullptr, "it has ended");
  setter.join();
  Check(!kOtherKey.Set(*call, 2).WasTold(), "nobody is subscribed");
}

MODEL_SCENARIO(SubscriptionEndsInItsCallbackBesideASet) {
  KalConfig store(kEndingCall);
  auto used = std::make_unique<std::atomic<int>>(0);
  std::optional<Subscription> own;
  own.emplace(store, kKey.Group(), kKey.Name(), [&](const KalConfigEvent&) {
    ++*used;
    own.reset();
  });
  kKey.Set(store, 1);
  std::thread setter([&] { kKey.Set(store, 2); });
  Check(!own && !kKey.Set(store, 3).WasTold(), "nobody is subscribed");
  used.reset();
  setter.join();
}

// The callback of each ends the other. Neither waits for ever, nor ends what the other one still runs.
MODEL_SCENARIO(SubscriptionsEndEachOther) {
  KalConfig store(kEndingCall);
  std::optional<Subscription> first, second;
  first.emplace(store, kKey.Group(), kKey.Name(), [&](const KalConfigEvent&) { second->Remove(); });
  second.emplace(store, kOtherKey.Group(), kOtherKey.Name(), [&](const KalConfigEvent&) { first->Remove(); });
  std::thread setter([&] { kKey.Set(store, 1); });
  kOtherKey.Set(store, 1);
  setter.join();
  Check(!*first || !*second, "one of them is removed");
}

// A callback owns the handle of another one, which ends with it.
MODEL_SCENARIO(CallbackOwnsASubscriptionBesideASet) {
  KalConfig store(kEndingCall);
  auto used = std::make_unique<int>(0);
  auto owned = std::make_shared<Subscription>(store, kKey.Group(), kKey.Name(),
                                              [&](const KalConfigEvent&) { ++*used; });
  std::optional<Subscription> owner(std::in_place, store, kOtherKey.Group(), kOtherKey.Name(),
                                    [owned = std::move(owned)](const KalConfigEvent&) {});
  std::thread setter([&] {
    kKey.Set(store, 1);
    kOtherKey.Set(store, 1);
  });
  owner.reset();
  used.reset();
  setter.join();
}

MODEL_SCENARIO(CallbackOwnsALiveValueBesideASet) {
  KalConfig store(kEndingCall);
  const SubscribeId_t id = store.SubscribeConfig(
      kKey.Group(), kKey.Name(),
      [live = LiveConfig(store, kKey)](const KalConfigEvent& event) {
        Check(live.Get() == event.m_newValue.ToInt(), "it has what is set");
      },
      nullptr, false);
  std::thread setter([&] { kKey.Set(store, 1); });
  store.UnsubscribeConfig(id);
  setter.join();
}

MODEL_SCENARIO(LiveValueEndsInACallbackBesideASet) {
  KalConfig store(kEndingCall);
  std::optional<LiveConfig<int>> live(std::in_place, store, kKey);
  store.SubscribeConfig(
      kOtherKey.Group(), kOtherKey.Name(), [&](const KalConfigEvent&) { live.reset(); }, nullptr, false);
  std::thread setter([&] { kKey.Set(store, 1); });
  kOtherKey.Set(store, 1);
  Check(!live, "it has ended");
  setter.join();
}

MODEL_SCENARIO(BindingEndsInItsCallbackBesideARead) {
  KalConfig store(kEndingCall);
  std::optional<Binding> binding;
  std::atomic<int> reads{0};
  binding.emplace(store, kKey.Group(), kKey.Name(), [&](const KalConfigEvent&) {
    if (reads++ == 0) binding->Remove();
    return ConfigData(30);
  });
  const auto read = [&] {
    ConfigData value;
    const std::int32_t result = store.GetDynamicConfig(kKey.Group(), kKey.Name(), value, {});
    Check(result == kResultNobody || value.ToInt() == 30, "its value, or nobody's");
  };
  std::thread reader(read);
  read();
  reader.join();
  Check(reads >= 1, "it is asked");
}

// The sink removes what the line is about, on the thread that delivers or beside it.
MODEL_SCENARIO(SinkRemovesASubscriptionBesideASet) {
  static KalConfig* store = nullptr;
  static SubscribeId_t id = 0;
  KalConfig own(kEndingCall);
  store = &own;
  auto used = std::make_unique<std::atomic<int>>(0);
  id =
      own.SubscribeConfig(kKey.Group(), kKey.Name(), [&](const KalConfigEvent&) { ++*used; }, nullptr, false);
  set_util_trace_sink(
      [](void*, int, const char*, const char*, unsigned int) {
        set_external_trace_mask(-1);
        store->UnsubscribeConfig(id);
      },
      nullptr);
  std::thread setter([&] { kKey.Set(own, 1); });
  set_external_trace_mask(2);
  kOtherKey.Set(own, 1);
  setter.join();
  Check(!kKey.Set(own, 2).WasTold(), "it is removed");
  used.reset();
}

// Each thread's last use of the object happens before its end, whichever thread ends it.
MODEL_SCENARIO(ObjectEndsWithItsLastReference) {
  struct Counted : CCmReferenceControlT<CCmMutexThread> {
    int uses[2] = {};
  };
  auto* const object = new Counted;
  object->AddReference();
  object->AddReference();
  std::thread other([&] {
    ++object->uses[0];
    object->ReleaseReference();
  });
  ++object->uses[1];
  object->ReleaseReference();
  other.join();
}

// The same of a block of a document's nodes, whichever part ends last.
MODEL_SCENARIO(DocumentEndsWithItsLastPart) {
  json::Value document = json::Deserialize(R"({"first":{"inner":1},"second":2})");
  std::thread other([part = std::move(document["first"].ToObject())]() mutable { part.Clear(); });
  document.Clear();
  other.join();
}
