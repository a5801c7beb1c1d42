// SPDX-License-Identifier: Apache-2.0
#include "tessel/Binding.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "TypedTest.h"
#include "support/TraceLog.h"

namespace {

constexpr ConfigKey<int> kLoad{KAL_CONFIG_GROUP_METRICS, "Load", 30};
constexpr ConfigKey<std::string> kName{KAL_CONFIG_GROUP_METRICS, "Name", "none"};
constexpr ConfigKey<std::chrono::milliseconds> kDelay{KAL_CONFIG_GROUP_METRICS, "Delay",
                                                      std::chrono::seconds(1)};

class Bindings : public TypedTest {
 protected:
  CallStore m_call{kCall};
  KalConfigHelper m_facade{kCall};
  const ConfigRef m_refs[2] = {*m_call, m_facade};
};

}  // namespace

TEST_F(Bindings, ComputeTheValueUntilTheirEnd) {
  for (const ConfigRef ref : m_refs) {
    int computed = 1;
    {
      const Binding binding = kLoad.Bind(ref, [&] { return computed; });
      EXPECT_TRUE(binding);
      EXPECT_EQ(binding.RefusalReason(), kResultOk);
      computed = 2;
      for (const ConfigRef reader : m_refs) {
        EXPECT_EQ(kLoad.GetDynamic(reader), 2);
        EXPECT_EQ(kLoad.GetDynamic(reader, 5), 2);
        EXPECT_EQ(kLoad.Get(reader), 30) << "nothing is stored";
      }
    }
    EXPECT_EQ(kLoad.GetDynamic(ref), 30);
    EXPECT_EQ(kLoad.GetDynamic(ref, 5), 5);
  }
}

TEST_F(Bindings, ComputeWhatSetTakes) {
  const Binding name = kName.Bind(m_facade, [] { return "headset"; });
  EXPECT_EQ(kName.GetDynamic(m_facade), "headset");
  EXPECT_EQ(kName.GetDynamic(m_facade, "other"), "headset");
  const Binding delay = kDelay.Bind(m_facade, [] { return std::chrono::seconds(2); });
  EXPECT_EQ(kDelay.GetDynamic(m_facade), std::chrono::milliseconds(2000));
}

TEST_F(Bindings, GiveTheCallersDefaultWhenTheirValueIsRefused) {
  const Binding binding(m_facade, kLoad.Group(), kLoad.Name(),
                        [](const KalConfigEvent&) { return ConfigData("much"); });
  EXPECT_EQ(kLoad.GetDynamic(m_facade, 5), 5);
  const TraceLog silent;
  KalConfigHelper unbound;
  EXPECT_EQ(kLoad.GetDynamic(unbound, 6), 6);
  EXPECT_EQ(kName.GetDynamic(unbound, "nobody"), "nobody");
}

TEST_F(Bindings, AreHandedTheReadersDefault) {
  const Binding binding(m_facade, kLoad.Group(), kLoad.Name(), [](const KalConfigEvent& read) {
    return ConfigData(read.m_defaultValue.ToInt() + 1);
  });
  EXPECT_EQ(kLoad.GetDynamic(*m_call, 41), 42);
}

TEST_F(Bindings, SayWhyTheyWereRefused) {
  const TraceLog silent;
  const fnConfigInvokeCallBack fn = [](const KalConfigEvent&) { return ConfigData(1); };
  for (const ConfigRef ref : m_refs) {
    EXPECT_EQ(Binding(ref, KAL_CONFIG_GROUP_LAST, "A", fn).RefusalReason(), kResultBadArgument);
    EXPECT_EQ(Binding(ref, KAL_CONFIG_GROUP_AUDIO, "", fn).RefusalReason(), kResultBadArgument);
    EXPECT_EQ(Binding(ref, KAL_CONFIG_GROUP_AUDIO, nullptr, fn).RefusalReason(), kResultBadArgument);
    EXPECT_EQ(Binding(ref, KAL_CONFIG_GROUP_AUDIO, "A", nullptr).RefusalReason(), kResultBadArgument);
  }
  EXPECT_EQ(Binding(m_facade, KAL_CONFIG_GROUP_DEFAULT, "A", fn).RefusalReason(), kResultNotFound);
  EXPECT_EQ(Binding().RefusalReason(), kResultOk);
  EXPECT_FALSE(Binding());

  const Binding first = kLoad.Bind(*m_call, [] { return 1; });
  for (const ConfigRef ref : m_refs) {
    const Binding second = kLoad.Bind(ref, [] { return 2; });
    EXPECT_FALSE(second);
    EXPECT_EQ(second.RefusalReason(), kResultNoSuchOrExists);
  }
  EXPECT_EQ(kLoad.GetDynamic(m_facade), 1);
  const auto subscription = kDelay.Subscribe(m_facade, [](const auto&) {});
  EXPECT_EQ(kDelay.Bind(m_facade, [] { return std::chrono::seconds(1); }).RefusalReason(),
            kResultNoSuchOrExists);
}

TEST_F(Bindings, WaitForAFacadeToBeBoundAndMayBeRefusedThen) {
  KalConfigHelper late;
  {
    const Binding binding = kLoad.Bind(late, [] { return 7; });
    EXPECT_TRUE(binding);
    late.SetCallId(kCall);
    EXPECT_EQ(kLoad.GetDynamic(m_facade), 7);
  }
  EXPECT_EQ(kLoad.GetDynamic(m_facade), 30);

  const Binding taken = kLoad.Bind(m_facade, [] { return 1; });
  KalConfigHelper later;
  const Binding refused = kLoad.Bind(later, [] { return 2; });
  EXPECT_TRUE(refused);
  later.SetCallId(kCall);
  EXPECT_FALSE(refused);
  EXPECT_EQ(refused.RefusalReason(), kResultNoSuchOrExists);

  KalConfigHelper unbound;
  kLoad.Bind(unbound, [] { return 3; }).Remove();
  EXPECT_TRUE(kLoad.Bind(unbound, [] { return 4; })) << "the name is free again";
}

TEST_F(Bindings, MoveWithoutBeingRemoved) {
  Binding first = kLoad.Bind(m_facade, [] { return 1; });
  Binding second = std::move(first);
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): empty, as documented
  EXPECT_EQ(kLoad.GetDynamic(m_facade), 1);
  first = std::move(second);
  EXPECT_EQ(kLoad.GetDynamic(m_facade), 1);
  Binding& itself = first;
  first = std::move(itself);
  EXPECT_EQ(kLoad.GetDynamic(m_facade), 1);
  first = {};
  EXPECT_EQ(kLoad.GetDynamic(m_facade), 30);
}

TEST_F(Bindings, CanBelongToTheirOwnCallbackAndEndWithTheStoreOrFacade) {
  const TraceLog log(0);
  const auto ownedByItsCallback = [](ConfigRef ref) {
    const auto owner = std::make_shared<Binding>();
    *owner = kLoad.Bind(ref, [owner] { return 1; });
    return std::weak_ptr<Binding>(owner);
  };
  for (const ConfigRef ref : m_refs) {
    const std::weak_ptr<Binding> binding = ownedByItsCallback(ref);
    binding.lock().get()->Remove();
    EXPECT_TRUE(binding.expired());
  }
  std::weak_ptr<Binding> binding;
  {
    const Binding taken = kLoad.Bind(m_facade, [] { return 2; });
    for (const ConfigRef ref : m_refs) {
      binding = ownedByItsCallback(ref);
      EXPECT_TRUE(binding.expired()) << "what is refused keeps nothing";
    }
  }
  {
    const CallStore call(kCall + 1, CallStore::kEndsCall);
    binding = ownedByItsCallback(*call);
  }
  EXPECT_TRUE(binding.expired());
  for (const std::uint32_t callId : {kCall, kNoCallId}) {
    {
      KalConfigHelper facade(callId);
      binding = ownedByItsCallback(facade);
    }
    EXPECT_TRUE(binding.expired()) << callId;
  }
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(Bindings, LetTheReaderHaveWhatTheyThrow) {
  const Binding binding = kLoad.Bind(m_facade, []() -> int { throw std::runtime_error("no"); });
  EXPECT_THROW(kLoad.GetDynamic(m_facade), std::runtime_error);
}

TEST_F(Bindings, AreRefusedByAFacadeThatEndsWhatACallbackOwned) {
  struct Owned {
    KalConfigHelper& facade;
    std::int32_t& reason;
    ~Owned() {
      reason = kLoad.Bind(facade, [] { return 1; }).RefusalReason();
    }
  };
  const TraceLog silent(-1);
  std::int32_t reason = kResultOk;
  {
    KalConfigHelper facade;
    const auto owned = std::shared_ptr<Owned>(new Owned{facade, reason});
    facade.SubscribeConfig("A", [owned](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_AUDIO);
  }
  EXPECT_EQ(reason, kResultBadArgument);
}
