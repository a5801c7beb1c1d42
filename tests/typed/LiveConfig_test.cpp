// SPDX-License-Identifier: Apache-2.0
#include "tessel/LiveConfig.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ForeignStore.h"
#include "TypedTest.h"
#include "support/AllocationCount.h"
#include "support/CallingSink.h"
#include "support/TraceLog.h"
#include "tessel/KalConfig.h"

namespace {

enum class Codec { kH264, kVp8 };

}  // namespace

template <>
struct kalStore::ConfigEnum<Codec> {
  static constexpr ConfigEnumName<Codec> kNames[] = {{Codec::kH264, "h264"}, {Codec::kVp8, "vp8"}};
};

namespace {

using std::chrono::milliseconds;

constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
constexpr ConfigKey<int> kMinFps{KAL_CONFIG_GROUP_VIDEO, "MinFps", 5};
constexpr ConfigKey<bool> kDtx{KAL_CONFIG_GROUP_AUDIO, "Dtx", true};
constexpr ConfigKey<unsigned int> kPort{KAL_CONFIG_GROUP_TRANSMISSION, "Port", 5004U};
constexpr ConfigKey<std::int64_t> kBytes{KAL_CONFIG_GROUP_METRICS, "Bytes", -1};
constexpr ConfigKey<double> kGain{KAL_CONFIG_GROUP_AUDIO, "Gain", -18.5};
constexpr ConfigKey<float> kVolume{KAL_CONFIG_GROUP_AUDIO, "Volume", 0.5F};
constexpr ConfigKey<Codec> kCodec{KAL_CONFIG_GROUP_VIDEO, "Codec", Codec::kH264};
constexpr ConfigKey<milliseconds> kDelay{KAL_CONFIG_GROUP_AUDIO, "Delay", milliseconds(40)};
constexpr ConfigKey<int> kBitrate{KAL_CONFIG_GROUP_DEFAULT, "Bitrate", 64000};

class Live : public TypedTest {
 protected:
  CallStore m_call{kCall};
  KalConfigHelper m_facade{kCall};
  const ConfigRef m_refs[2] = {*m_call, m_facade};
};

using LiveEnd = TypedTest;

}  // namespace

TEST_F(Live, GivesTheDefaultAndThenWhatIsSetForEachType) {
  for (const ConfigRef ref : m_refs) {
    const LiveConfig<int> maxFps(ref, kMaxFps);
    const LiveConfig<bool> dtx(ref, kDtx);
    const LiveConfig<unsigned int> port(ref, kPort);
    const LiveConfig<std::int64_t> bytes(ref, kBytes);
    const LiveConfig<double> gain(ref, kGain);
    const LiveConfig<float> volume(ref, kVolume);
    const LiveConfig<Codec> codec(ref, kCodec);
    const LiveConfig<milliseconds> delay(ref, kDelay);
    EXPECT_TRUE(maxFps && dtx && port && bytes && gain && volume && codec && delay);
    EXPECT_EQ(30, maxFps.Get());
    EXPECT_TRUE(dtx.Get());
    EXPECT_EQ(5004U, port.Get());
    EXPECT_EQ(-1, bytes.Get());
    EXPECT_EQ(-18.5, gain.Get());
    EXPECT_EQ(0.5F, volume.Get());
    EXPECT_EQ(Codec::kH264, codec.Get());
    EXPECT_EQ(milliseconds(40), delay.Get());

    kMaxFps.Set(ref, -2147483647 - 1);
    kDtx.Set(ref, false);
    kPort.Set(ref, 4294967295U);
    kBytes.Set(ref, std::int64_t{9223372036854775807});
    kGain.Set(ref, 1e-300);
    kVolume.Set(ref, 0.1F);
    kCodec.Set(ref, Codec::kVp8);
    kDelay.Set(ref, std::chrono::seconds(3));
    EXPECT_EQ(-2147483647 - 1, maxFps.Get());
    EXPECT_FALSE(dtx.Get());
    EXPECT_EQ(4294967295U, port.Get());
    EXPECT_EQ(9223372036854775807, bytes.Get());
    EXPECT_EQ(1e-300, gain.Get());
    EXPECT_EQ(0.1F, volume.Get());
    EXPECT_EQ(Codec::kVp8, codec.Get());
    EXPECT_EQ(milliseconds(3000), delay.Get());
    m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Codec", "av1", false, false);
    EXPECT_EQ(Codec::kH264, codec.Get());
    for (int group = 0; group < KAL_CONFIG_GROUP_LAST; ++group) {
      m_call->RemoveKalConfigByGroup(static_cast<KalConfigGroup>(group));
    }
  }
}

TEST_F(Live, ReadsAtOnceWhatIsStoredAlready) {
  kMaxFps.Set(m_facade, 15);
  for (const ConfigRef ref : m_refs) EXPECT_EQ(15, LiveConfig(ref, kMaxFps).Get());
}

TEST_F(Live, SeesWhatAnyoneSetsByWhateverWay) {
  const LiveConfig maxFps(m_facade, kMaxFps);
  KalConfigHelper other(kCall);
  other.SetKalConfig("MaxFps", 24, KAL_CONFIG_GROUP_VIDEO);
  EXPECT_EQ(24, maxFps.Get());
  other.SetKalConfig(kal::KAL_SESSION_VIDEO, "MaxFps", 25);
  EXPECT_EQ(25, maxFps.Get());
  m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", "12", true, false);
  EXPECT_EQ(12, maxFps.Get());
  m_call->ApplyKalConfigs(R"({"Video":[{"key":"MaxFps","value":"7"},{"key":"Codec","value":"h"}]})");
  EXPECT_EQ(7, maxFps.Get());
  {
    const ScopedConfig scope(*m_call, kMaxFps, 3);
    EXPECT_EQ(3, maxFps.Get());
  }
  EXPECT_EQ(7, maxFps.Get());
}

TEST_F(Live, LeavesOtherNamesGroupsAndCallsAlone) {
  const LiveConfig maxFps(*m_call, kMaxFps);
  const LiveConfig minFps(*m_call, kMinFps);
  kMaxFps.Set(*m_call, 15);
  EXPECT_EQ(5, minFps.Get());
  m_call->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "MaxFps", 1, false, false);
  m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFp", 1, false, false);
  m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFpsX", 1, false, false);
  m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "maxfps", 1, false, false);
  const CallStore other(kCall + 1, CallStore::kEndsCall);
  kMaxFps.Set(*other, 1);
  EXPECT_EQ(15, maxFps.Get());
}

TEST_F(Live, GivesTheDefaultForWhatIsNotAWholeValueOfItsType) {
  const LiveConfig maxFps(*m_call, kMaxFps);
  const LiveConfig dtx(*m_call, kDtx);
  for (const char* text : {"fast", "15.0", "15 ", " 15", "", "2147483648", "+1"}) {
    kMaxFps.Set(*m_call, 1);
    m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", text, false, false);
    EXPECT_EQ(30, maxFps.Get()) << text;
    EXPECT_EQ(30, LiveConfig(*m_call, kMaxFps).Get()) << text;
  }
  kDtx.Set(*m_call, false);
  m_call->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "Dtx", "off", false, false);
  EXPECT_TRUE(dtx.Get());
  m_call->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "Dtx", "FALSE", false, false);
  EXPECT_FALSE(dtx.Get());
}

TEST_F(Live, SeesEveryRemoval) {
  for (const ConfigRef ref : m_refs) {
    const LiveConfig maxFps(ref, kMaxFps);
    const LiveConfig minFps(ref, kMinFps);
    const LiveConfig dtx(ref, kDtx);
    const auto set = [&] {
      kMaxFps.Set(ref, 15);
      kMinFps.Set(ref, 1);
      kDtx.Set(ref, false);
    };
    set();
    kMaxFps.Remove(ref);
    EXPECT_EQ(30, maxFps.Get());
    EXPECT_EQ(1, minFps.Get());
    set();
    m_call->RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps");
    EXPECT_EQ(30, maxFps.Get());
    m_call->RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps");  // it is gone already
    EXPECT_EQ(30, maxFps.Get());
    set();
    m_call->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_VIDEO);
    EXPECT_EQ(30, maxFps.Get());
    EXPECT_EQ(5, minFps.Get());
    EXPECT_FALSE(dtx.Get());
    set();
    EXPECT_EQ(15, maxFps.Get());
  }
}

TEST_F(Live, GivesTheDefaultOnceATransientSetHasRemovedWhatWasStored) {
  const LiveConfig maxFps(*m_call, kMaxFps);
  kMaxFps.Set(*m_call, 15);
  int inside = 0;
  const Subscription subscription(*m_call, KAL_CONFIG_GROUP_VIDEO, "MaxFps",
                                  [&](const KalConfigEvent&) { inside = maxFps.Get(); });
  m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 12, false, true);
  EXPECT_EQ(30, inside);
  EXPECT_EQ(30, maxFps.Get());
  m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 13, false, true);
  EXPECT_EQ(30, maxFps.Get());
}

TEST_F(Live, KeepsItsValueWhenASetIsRefused) {
  const LiveConfig maxFps(*m_call, kMaxFps);
  kMaxFps.Set(*m_call, 15);
  EXPECT_EQ(kResultBadArgument,
            m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", ConfigData(), false, false));
  EXPECT_EQ(kResultBadArgument,
            m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", ConfigData(), false, true));
  EXPECT_EQ(15, maxFps.Get());
}

TEST_F(Live, ChangesNoResultAndNoTraceLineOfASet) {
  const auto sets = [this] {
    std::vector<std::int32_t> results;
    for (const bool isTransient : {false, true}) {
      for (const bool isForced : {false, true}) {
        for (const char* text : {"15", "15", "16"}) {
          results.push_back(
              m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", text, isForced, isTransient));
        }
      }
    }
    results.push_back(m_call->RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps"));
    results.push_back(m_call->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_VIDEO));
    return results;
  };
  const auto traced = [&](std::vector<std::int32_t>& results) {
    const TraceLog log;
    results = sets();
    std::vector<std::string> texts;
    for (const TraceLog::Line& line : log.Lines()) texts.push_back(line.text);
    return texts;
  };
  std::vector<std::int32_t> before;
  std::vector<std::int32_t> with;
  const std::vector<std::string> textsBefore = traced(before);
  const LiveConfig first(m_facade, kMaxFps);
  const LiveConfig second(*m_call, kMaxFps);
  EXPECT_EQ(textsBefore, traced(with));
  EXPECT_EQ(before, with);
}

TEST_F(Live, WorksBesideSubscriptionsAndOthersOfTheNameThroughOneFacade) {
  const LiveConfig before(m_facade, kMaxFps);
  int notified = 0;
  const Subscription subscription =
      kMaxFps.Subscribe(m_facade, [&](const auto& reading) { notified = reading.value; });
  const LiveConfig after(m_facade, kMaxFps);
  EXPECT_TRUE(before && subscription && after);
  kMaxFps.Set(m_facade, 15);
  EXPECT_EQ(15, before.Get());
  EXPECT_EQ(15, after.Get());
  EXPECT_EQ(15, notified);
  EXPECT_EQ(kResultOk, m_facade.UnsubscribeConfig("MaxFps", KAL_CONFIG_GROUP_VIDEO));
  kMaxFps.Set(m_facade, 16);
  EXPECT_EQ(16, before.Get());
  EXPECT_EQ(16, after.Get());
  EXPECT_EQ(15, notified);
}

TEST_F(Live, IsNoBindingAndReadsNone) {
  EXPECT_NE(0U, m_facade.BindConfig(
                    "MaxFps", [](const KalConfigEvent&) { return ConfigData(99); }, KAL_CONFIG_GROUP_VIDEO));
  const LiveConfig maxFps(m_facade, kMaxFps);
  EXPECT_EQ(kMaxFps.Get(m_facade), maxFps.Get());
  kMaxFps.Set(m_facade, 15);
  EXPECT_EQ(15, maxFps.Get());
}

TEST_F(Live, HasTheNewValueBeforeTheFirstSubscriberIsNotified) {
  std::vector<int> seen;
  std::optional<LiveConfig<int>> maxFps;
  const Subscription subscription(*m_call, KAL_CONFIG_GROUP_VIDEO, "MaxFps",
                                  [&](const KalConfigEvent&) { seen.push_back(maxFps->Get()); });
  maxFps.emplace(*m_call, kMaxFps);
  kMaxFps.Set(*m_call, 15);
  kMaxFps.Set(*m_call, 16);
  EXPECT_EQ((std::vector<int>{15, 16}), seen);
}

TEST_F(Live, HasTheValueThatASubscriberThrewFor) {
  const Subscription throws(*m_call, KAL_CONFIG_GROUP_VIDEO, "MaxFps",
                            [](const KalConfigEvent&) { throw std::runtime_error("no"); });
  const LiveConfig maxFps(m_facade, kMaxFps);
  EXPECT_THROW(kMaxFps.Set(m_facade, 15), std::runtime_error);
  EXPECT_EQ(15, maxFps.Get());
}

TEST_F(Live, HasTheValueOfTheLastSetThatACallbackMade) {
  const LiveConfig maxFps(*m_call, kMaxFps);
  const Subscription clamps(*m_call, KAL_CONFIG_GROUP_VIDEO, "MaxFps", [&](const KalConfigEvent& event) {
    if (event.m_newValue.ToInt() > 30) kMaxFps.Set(*m_call, 30);
  });
  kMaxFps.Set(*m_call, 60);
  EXPECT_EQ(30, maxFps.Get());
}

TEST_F(Live, EndsAndIsMadeInsideCallbacks) {
  auto ends = std::make_unique<LiveConfig<int>>(m_facade, kMaxFps);
  std::optional<LiveConfig<int>> made;
  const Subscription subscription(*m_call, KAL_CONFIG_GROUP_VIDEO, "MaxFps", [&](const KalConfigEvent&) {
    ends.reset();
    made.emplace(m_facade, kMaxFps);
  });
  kMaxFps.Set(m_facade, 15);
  EXPECT_EQ(15, made->Get());
  kMaxFps.Set(m_facade, 16);
  EXPECT_EQ(16, made->Get());
}

TEST_F(Live, IsReadMadeAndEndedByATraceSink) {
  const LiveConfig kept(*m_call, kMaxFps);
  std::vector<int> seen;
  const CallingSink sink("", [&] {
    seen.push_back(kept.Get());
    seen.push_back(LiveConfig(*m_call, kMaxFps).Get());
  });
  kMaxFps.Set(*m_call, 15);
  kMaxFps.Remove(*m_call);
  EXPECT_EQ((std::vector<int>{15, 15, 30, 30}), seen);
}

TEST_F(Live, CopiesShareOneValueUntilTheLastEnds) {
  std::optional<LiveConfig<int>> first(std::in_place, *m_call, kMaxFps);
  LiveConfig<int> copy = *first;
  LiveConfig<int> moved = std::move(*first);
  EXPECT_TRUE(*first);
  EXPECT_EQ(30, first->Get());
  first.reset();
  kMaxFps.Set(*m_call, 15);
  EXPECT_EQ(15, copy.Get());
  EXPECT_EQ(15, moved.Get());

  const LiveConfig<int> other(*m_call, kMinFps);
  copy = other;
  kMinFps.Set(*m_call, 1);
  EXPECT_EQ(1, copy.Get());
  copy = static_cast<const LiveConfig<int>&>(copy);
  EXPECT_EQ(1, copy.Get());
}

TEST_F(Live, RefusesAStoreThatIsNotTheLibrarysOwn) {
  ForeignStore<true> store;
  for (IKalConfig* const foreign : {static_cast<IKalConfig*>(&store), StoreWithoutRtti()}) {
    const LiveConfig maxFps(*foreign, kMaxFps);
    EXPECT_FALSE(maxFps);
    EXPECT_EQ(30, maxFps.Get());
  }
}

TEST_F(Live, RefusesTheDefaultGroupOfAStore) {
  const LiveConfig bitrate(*m_call, kBitrate);
  EXPECT_FALSE(bitrate);
  EXPECT_EQ(64000, bitrate.Get());
}

// Before and after the facade binds.

TEST_F(Live, IsMadeBeforeTheFacadeBindsAndFollowsFromThen) {
  kMaxFps.Set(*m_call, 15);
  KalConfigHelper late;
  const LiveConfig maxFps(late, kMaxFps);
  const LiveConfig twin(late, kMaxFps);
  EXPECT_TRUE(maxFps);
  EXPECT_EQ(30, maxFps.Get());
  kMaxFps.Set(*m_call, 16);
  EXPECT_EQ(30, maxFps.Get());
  EXPECT_EQ(kResultOk, late.SetCallId(kCall));
  EXPECT_EQ(16, maxFps.Get());
  EXPECT_EQ(16, twin.Get());
  kMaxFps.Set(*m_call, 17);
  EXPECT_EQ(17, maxFps.Get());
  EXPECT_EQ(17, twin.Get());
  EXPECT_EQ(17, LiveConfig(late, kMaxFps).Get());
}

TEST_F(Live, HasItsValueInTheCallbacksOfAFacadeThatBinds) {
  kMaxFps.Set(*m_call, 15);
  KalConfigHelper late;
  const LiveConfig maxFps(late, kMaxFps);
  int inside = 0;
  std::optional<LiveConfig<int>> made;
  const Subscription subscription(late, KAL_CONFIG_GROUP_VIDEO, "MaxFps", [&](const KalConfigEvent&) {
    inside = maxFps.Get();
    made.emplace(late, kMaxFps);
  });
  late.SetCallId(kCall);
  EXPECT_EQ(15, inside);
  kMaxFps.Set(*m_call, 16);
  EXPECT_EQ(16, made->Get());
}

TEST_F(Live, IsBoundByAFacadeWhoseRecordedSubscriberThrows) {
  kMaxFps.Set(*m_call, 15);
  KalConfigHelper late;
  const Subscription throws(late, KAL_CONFIG_GROUP_VIDEO, "MaxFps",
                            [](const KalConfigEvent&) { throw std::runtime_error("no"); });
  const LiveConfig maxFps(late, kMaxFps);
  EXPECT_THROW(late.SetCallId(kCall), std::runtime_error);
  EXPECT_EQ(15, maxFps.Get());
}

TEST_F(Live, WaitsForTheDefaultGroupOfItsFacade) {
  m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Bitrate", 1, false, false);
  m_call->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "Bitrate", 2, false, false);
  {
    KalConfigHelper late;
    const LiveConfig bitrate(late, kBitrate);
    EXPECT_TRUE(bitrate);
    EXPECT_EQ(kResultOk, late.InitKalConfig(kCall, kal::KAL_SESSION_VIDEO));
    EXPECT_EQ(1, bitrate.Get());
    EXPECT_EQ(kResultNotFound, late.SetKalSessionType(kal::KAL_SESSION_AUDIO));
    EXPECT_EQ(1, bitrate.Get());
  }
  {
    KalConfigHelper late;
    const LiveConfig bitrate(late, kBitrate);
    const LiveConfig maxFps(late, kMaxFps);
    EXPECT_EQ(kResultOk, late.SetDefaultGroup(KAL_CONFIG_GROUP_AUDIO));
    EXPECT_EQ(64000, bitrate.Get());
    EXPECT_EQ(kResultOk, late.SetCallId(kCall));
    EXPECT_EQ(2, bitrate.Get());
    EXPECT_EQ(2, LiveConfig(late, kBitrate).Get());
  }
  const LiveConfig bitrate(m_facade, kBitrate);  // bound, without a default group
  EXPECT_EQ(64000, bitrate.Get());
  EXPECT_EQ(kResultNotFound, m_facade.SetKalSessionType(kal::KAL_SESSION_NONE));
  EXPECT_EQ(kResultNotFound, m_facade.SetDefaultGroup(KAL_CONFIG_GROUP_LAST));
  EXPECT_EQ(64000, bitrate.Get());
  EXPECT_EQ(kResultOk, m_facade.SetDefaultGroup(KAL_CONFIG_GROUP_AUDIO));
  EXPECT_EQ(2, bitrate.Get());
  EXPECT_EQ(kResultNotFound, m_facade.SetDefaultGroup(KAL_CONFIG_GROUP_VIDEO));
  EXPECT_EQ(2, bitrate.Get());
}

TEST_F(Live, LeavesNothingWhenItEndsBeforeTheFacadeBinds) {
  const auto run = [this] {
    KalConfigHelper late;
    {
      const LiveConfig gone(late, kMaxFps);
    }
    const LiveConfig kept(late, kMinFps);
    {
      const LiveConfig gone(late, kBitrate);
    }
    late.SetCallId(kCall);
    late.SetDefaultGroup(KAL_CONFIG_GROUP_VIDEO);
    kMaxFps.Set(*m_call, 15);
    kMinFps.Set(*m_call, 1);
    EXPECT_EQ(1, kept.Get());
  };
  run();
  const long before = LiveAllocations();
  run();
  EXPECT_EQ(before, LiveAllocations());
}

TEST_F(Live, OutlivesAFacadeThatHasNotBound) {
  auto facade = std::make_unique<KalConfigHelper>();
  const LiveConfig maxFps(*facade, kMaxFps);
  facade.reset();
  kMaxFps.Set(*m_call, 15);
  EXPECT_EQ(30, maxFps.Get());
}

TEST_F(Live, IsRefusedByAFacadeThatEndsWhatACallbackOwned) {
  struct Owned {
    KalConfigHelper& facade;
    std::vector<LiveConfig<int>>& made;
    ~Owned() { made.emplace_back(facade, kMaxFps); }
  };
  std::vector<LiveConfig<int>> made;
  {
    KalConfigHelper facade;
    const auto owned = std::shared_ptr<Owned>(new Owned{facade, made});
    facade.SubscribeConfig("MaxFps", [owned](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_VIDEO);
  }
  ASSERT_EQ(1U, made.size());
  EXPECT_FALSE(made.front());
  EXPECT_EQ(30, made.front().Get());
}

TEST_F(Live, FollowsTheStoreWhenItsFacadeHasEnded) {
  auto facade = std::make_unique<KalConfigHelper>(kCall);
  const LiveConfig maxFps(*facade, kMaxFps);
  facade.reset();
  kMaxFps.Set(*m_call, 15);
  EXPECT_EQ(15, maxFps.Get());
}

// The end of the store.

TEST_F(Live, KeepsTheLastValueWhenTheStoreHasEnded) {
  std::optional<CallStore> call(std::in_place, kCall + 1, CallStore::kEndsCall);
  std::optional<KalConfigHelper> facade(std::in_place, kCall + 1);
  const LiveConfig maxFps(**call, kMaxFps);
  const LiveConfig dtx(*facade, kDtx);
  kMaxFps.Set(**call, 15);
  kDtx.Set(**call, false);
  facade.reset();
  call.reset();
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_EQ(15, maxFps.Get());
  EXPECT_FALSE(dtx.Get());

  const CallStore again(kCall + 1, CallStore::kEndsCall);
  kMaxFps.Set(*again, 7);
  EXPECT_EQ(15, maxFps.Get());
}

TEST_F(LiveEnd, OutlivesDestroyKalConfig) {
  IKalConfig* store = nullptr;
  CreateKalConfig(kCall, &store);
  const LiveConfig maxFps(*store, kMaxFps);
  kMaxFps.Set(*store, 15);
  DestroyKalConfig();
  EXPECT_EQ(15, maxFps.Get());
}

// Of the stores that end together, the one of the highest id ends first.
TEST_F(LiveEnd, KeepsTheLastValueWhenWhatAnotherStoreOwnedSetsAfterTheEnd) {
  struct AtEnd {
    std::function<void()> call;
    ~AtEnd() { call(); }
  };
  const auto subscribe = [](IKalConfig& store, std::function<void()> atEnd) {
    const auto owned = std::shared_ptr<AtEnd>(new AtEnd{std::move(atEnd)});
    store.SubscribeConfig(
        KAL_CONFIG_GROUP_VIDEO, "MinFps", [owned](const KalConfigEvent&) {}, nullptr, false);
  };
  IKalConfig* later = nullptr;
  IKalConfig* earlier = nullptr;
  CreateKalConfig(kCall, &later);
  CreateKalConfig(kCall + 1, &earlier);
  constexpr ConfigKey<int> kKeys[] = {
      kMaxFps, {KAL_CONFIG_GROUP_COMMON, "First", 0}, {KAL_CONFIG_GROUP_UNIT_TEST, "Last", 0}};
  std::vector<LiveConfig<int>> values;
  for (const ConfigKey<int>& key : kKeys) {
    values.emplace_back(*earlier, key);
    key.Set(*earlier, 15);
  }
  bool hasSet = false;
  subscribe(*earlier, [&] {
    subscribe(*later, [&] {
      for (const ConfigKey<int>& key : kKeys) key.Set(*earlier, 60);
      hasSet = true;
    });
  });
  DestroyKalConfig();
  EXPECT_TRUE(hasSet);
  for (const LiveConfig<int>& value : values) EXPECT_EQ(15, value.Get());
}

TEST_F(LiveEnd, FollowsAStoreThatWasCleanedUpAndIsStillHeld) {
  const CallStore call(kCall);
  const LiveConfig maxFps(*call, kMaxFps);
  CleanUpKalConfig(kCall);
  kMaxFps.Set(*call, 15);
  EXPECT_EQ(15, maxFps.Get());
}

TEST_F(LiveEnd, EndsAndIsMadeByWhatACallbackOwnsWhenItEndsWithTheStore) {
  struct Owned {
    IKalConfig& store;
    std::vector<LiveConfig<int>>& made;
    LiveConfig<int> own{store, kMaxFps};
    ~Owned() { made.emplace_back(store, kMinFps); }
  };
  std::vector<LiveConfig<int>> made;
  {
    KalConfig store(1);
    kMinFps.Set(store, 1);
    const auto owned = std::shared_ptr<Owned>(new Owned{store, made});
    store.SubscribeConfig(
        KAL_CONFIG_GROUP_VIDEO, "MaxFps", [owned](const KalConfigEvent&) {}, nullptr, false);
  }
  ASSERT_EQ(1U, made.size());
  EXPECT_EQ(1, made.front().Get());
}

// Memory.

TEST_F(Live, AllocatesNothingToBeReadOrWritten) {
  const LiveConfig maxFps(m_facade, kMaxFps);
  const LiveConfig gain(m_facade, kGain);
  const LiveConfig codec(m_facade, kCodec);
  const LiveConfig delay(m_facade, kDelay);
  kMaxFps.Set(m_facade, 1);
  kGain.Set(m_facade, 1.0);
  kCodec.Set(m_facade, Codec::kVp8);
  kDelay.Set(m_facade, milliseconds(1));
  const AllocationCount count;
  for (int i = 0; i < 100; ++i) {
    kMaxFps.Set(m_facade, i);
    kGain.Set(m_facade, 0.5 * i);
    EXPECT_EQ(i, maxFps.Get());
    EXPECT_EQ(0.5 * i, gain.Get());
    kCodec.Set(m_facade, i % 2 == 0 ? Codec::kH264 : Codec::kVp8);
    kDelay.Set(m_facade, milliseconds(i));
    EXPECT_EQ(i % 2 == 0 ? Codec::kH264 : Codec::kVp8, codec.Get());
    EXPECT_EQ(milliseconds(i), delay.Get());
  }
  EXPECT_EQ(0U, count.Count());
}

TEST_F(Live, LeavesNothingOfAConstructionThatFindsNoMemory) {
  KalConfigHelper late;
  for (const ConfigRef ref : {ConfigRef(*m_call), ConfigRef(m_facade), ConfigRef(late)}) {
    (void)LiveConfig(ref, kMinFps);  // what stays in the store or facade for the next one
    const long before = LiveAllocations();
    for (std::size_t n = 1;; ++n) {
      bool failed = false;
      bool fired = false;
      {
        const FailAllocation nth(n);
        try {
          const LiveConfig maxFps(ref, kMaxFps);
        } catch (const std::bad_alloc&) {
          failed = true;
        }
        fired = nth.Fired();
      }
      EXPECT_EQ(fired, failed);
      EXPECT_EQ(before, LiveAllocations()) << n;
      if (!fired) break;
      ASSERT_LT(n, 100U);
    }
  }
  const LiveConfig maxFps(late, kMaxFps);
  kMaxFps.Set(*m_call, 15);
  late.SetCallId(kCall);
  EXPECT_EQ(15, maxFps.Get());
}

TEST_F(Live, IsBoundWithoutAnAllocation) {
  const auto allocationsOfBinding = [](std::uint32_t callId, int liveConfigs) {
    const CallStore call(callId, CallStore::kEndsCall);
    KalConfigHelper late;
    late.SetDefaultGroup(KAL_CONFIG_GROUP_VIDEO);
    std::vector<LiveConfig<int>> made;
    for (int i = 0; i < liveConfigs; ++i) made.emplace_back(late, i % 2 == 0 ? kMaxFps : kBitrate);
    const AllocationCount count;
    late.SetCallId(callId);
    return count.Count();
  };
  EXPECT_EQ(allocationsOfBinding(kCall + 1, 0), allocationsOfBinding(kCall + 2, 20));
}

TEST_F(Live, KeepsItsValueWhenASetFindsNoMemory) {
  const std::string tooLongToBeInPlace(40, '1');
  const LiveConfig maxFps(*m_call, kMaxFps);
  const LiveConfig minFps(*m_call, kMinFps);
  kMaxFps.Set(*m_call, 15);
  for (std::size_t n = 1;; ++n) {
    bool fired = false;
    {
      ConfigData value(tooLongToBeInPlace);
      ConfigData other(1);
      const FailAllocation nth(n);
      try {
        m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", std::move(value), false, false);
        m_call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MinFps", std::move(other), false, false);
      } catch (const std::bad_alloc&) {
      }
      fired = nth.Fired();
    }
    EXPECT_EQ(kMaxFps.Get(*m_call), maxFps.Get());
    EXPECT_EQ(kMinFps.Get(*m_call), minFps.Get());
    if (!fired) break;
    ASSERT_LT(n, 100U);
  }
}

// Every operation in random order: at each moment the live value is the key's.

TEST_F(Live, GivesWhatItsKeyReadsAfterEveryOperation) {
  const char* const texts[] = {"0", "1", "15", "-7", "fast", "", "15.5", "99999999999"};
  const char* const names[] = {"MaxFps", "MinFps", "Bitrate", "Other"};
  const KalConfigGroup groups[] = {KAL_CONFIG_GROUP_VIDEO, KAL_CONFIG_GROUP_AUDIO};
  const ConfigKey<int> keys[] = {kMaxFps, kMinFps, kBitrate};
  for (unsigned int seed = 0; seed < 300; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto pick = [&](std::size_t count) { return random() % count; };
    const CallStore call(kCall + 1, CallStore::kEndsCall);
    KalConfigHelper facade;
    struct Pair {
      ConfigRef ref;
      ConfigKey<int> key;
      LiveConfig<int> live;
    };
    std::vector<Pair> pairs;
    const TraceLog silent(0);  // reads of an unbound facade report it
    for (int step = 0; step < 60; ++step) {
      const char* const name = names[pick(std::size(names))];
      const KalConfigGroup group = groups[pick(std::size(groups))];
      const char* const text = texts[pick(std::size(texts))];
      switch (pick(9)) {
        case 0:
        case 1:
          call->SetKalConfig(group, name, text, pick(2) == 0, false);
          break;
        case 2:
          call->SetKalConfig(group, name, text, false, true);
          break;
        case 3:
          call->RemoveKalConfig(group, name);
          break;
        case 4:
          if (pick(4) == 0) call->RemoveKalConfigByGroup(group);
          break;
        case 5:
          call->ApplyKalConfigs((R"({"Video":[{"key":")" + std::string(name) + R"(","value":")" + text +
                                 R"("}],"Audio":[{"key":"Bitrate","value":"3"}]})")
                                    .c_str());
          break;
        case 6: {
          const ConfigRef ref = pick(2) == 0 ? ConfigRef(*call) : ConfigRef(facade);
          const ConfigKey<int>& key = keys[pick(std::size(keys))];
          pairs.push_back({ref, key, LiveConfig(ref, key)});
          break;
        }
        case 7:
          if (!pairs.empty()) pairs.erase(pairs.begin() + static_cast<std::ptrdiff_t>(pick(pairs.size())));
          break;
        default:
          if (pick(4) == 0) facade.SetCallId(kCall + 1);
          if (pick(4) == 0) facade.SetDefaultGroup(group);
      }
      for (const Pair& pair : pairs) {
        ASSERT_EQ(pair.key.Get(pair.ref), pair.live.Get()) << pair.key.Name() << " at step " << step;
      }
    }
  }
}
