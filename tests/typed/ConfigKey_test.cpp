// SPDX-License-Identifier: Apache-2.0
#include "tessel/ConfigKey.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "TypedTest.h"
#include "support/TraceLog.h"
#include "tessel/post.h"

namespace {

enum class Codec { kNone, kH264, kVp8 };

}  // namespace

template <>
struct kalStore::ConfigEnum<Codec> {
  static constexpr ConfigEnumName<Codec> kNames[] = {{Codec::kH264, "h264"}, {Codec::kVp8, "vp8"}};
};

namespace {

constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
constexpr ConfigKey<bool> kDtx{KAL_CONFIG_GROUP_AUDIO, "Dtx", true};
constexpr ConfigKey<double> kGain{KAL_CONFIG_GROUP_AUDIO, "Gain", -18.5};
constexpr ConfigKey<double> kPastFloats{KAL_CONFIG_GROUP_AUDIO, "PastFloats", 1e300};
constexpr ConfigKey<std::uint64_t> kBytes{KAL_CONFIG_GROUP_METRICS, "Bytes", 1};
constexpr ConfigKey<std::string> kDevice{KAL_CONFIG_GROUP_AUDIO, "Device", "default"};
constexpr ConfigKey<float> kRatio{KAL_CONFIG_GROUP_AUDIO, "Ratio", 0.1};
constexpr double kGreatestFloat = std::numeric_limits<float>::max();
constexpr ConfigKey<float> kGreatest{KAL_CONFIG_GROUP_AUDIO, "Greatest", kGreatestFloat};
constexpr ConfigKey<float> kLowest{KAL_CONFIG_GROUP_AUDIO, "Lowest", -kGreatestFloat};
constexpr ConfigKey<Codec> kCodec{KAL_CONFIG_GROUP_VIDEO, "Codec", Codec::kH264};
constexpr ConfigKey<std::chrono::milliseconds> kTimeout{KAL_CONFIG_GROUP_COMMON, "Timeout",
                                                        std::chrono::seconds(3)};
constexpr ConfigKey<long long> kFirstByte{KAL_CONFIG_GROUP_METRICS, "FirstByte", -1};
constexpr ConfigKey<std::int64_t> kLastByte{KAL_CONFIG_GROUP_METRICS, "LastByte", std::int64_t{1} << 40};
constexpr ConfigKey<int> kBitrate{KAL_CONFIG_GROUP_DEFAULT, "Bitrate", 64000};

// Both ways to a call's settings.
class Key : public TypedTest {
 protected:
  CallStore m_call{kCall};
  KalConfigHelper m_facade{kCall};
  const ConfigRef m_refs[2] = {*m_call, m_facade};
};

}  // namespace

TEST_F(Key, GivesItsDefaultWhileNothingIsStored) {
  for (const ConfigRef ref : m_refs) {
    EXPECT_EQ(kMaxFps.Get(ref), 30);
    EXPECT_TRUE(kDtx.Get(ref));
    EXPECT_EQ(kGain.Get(ref), -18.5);
    EXPECT_EQ(kPastFloats.Get(ref), 1e300);
    EXPECT_EQ(kGreatest.Get(ref), kGreatestFloat);
    EXPECT_EQ(kLowest.Get(ref), -kGreatestFloat);
    EXPECT_EQ(kBytes.Get(ref), 1U);
    EXPECT_EQ(kDevice.Get(ref), "default");

    const ConfigReading<int> reading = kMaxFps.Read(ref);
    EXPECT_EQ(reading.value, 30);
    EXPECT_FALSE(reading.fromStore);
    EXPECT_FALSE(reading.stored.IsValid());
    EXPECT_FALSE(reading.IsRefused());
  }
}

TEST_F(Key, OfAReferenceIsNotifiedOfAnEqualValueOnlyWhenThatIsForced) {
  for (const ConfigRef ref : m_refs) {
    ref.Set(KAL_CONFIG_GROUP_AUDIO, "untyped", 1);
    EXPECT_EQ(ref.Set(KAL_CONFIG_GROUP_AUDIO, "untyped", 1), kResultUnchanged);
    EXPECT_EQ(ref.Set(KAL_CONFIG_GROUP_AUDIO, "untyped", 1, true), kResultNobody);
  }
}

TEST_F(Key, GivesWhatItSet) {
  for (const ConfigRef ref : m_refs) {
    kMaxFps.Set(ref, -15);
    kDtx.Set(ref, false);
    kGain.Set(ref, 0.25);
    kBytes.Set(ref, std::uint64_t{18446744073709551615U});
    kDevice.Set(ref, std::string("headset"));
    EXPECT_EQ(kMaxFps.Get(ref), -15);
    EXPECT_FALSE(kDtx.Get(ref));
    EXPECT_EQ(kGain.Get(ref), 0.25);
    EXPECT_EQ(kBytes.Get(ref), std::uint64_t{18446744073709551615U});
    EXPECT_EQ(kDevice.Get(ref), "headset");
    kDevice.Set(ref, "");
    EXPECT_EQ(kDevice.Get(ref), "");
    EXPECT_TRUE(kDevice.Read(ref).fromStore);

    EXPECT_EQ(kDevice.Remove(ref), kResultOk);
    EXPECT_EQ(kDevice.Get(ref), "default");
  }
}

TEST_F(Key, CanBeOfEveryTypeThatSettingsHave) {
  const auto expectRoundTrip = [this]<class T>(const ConfigKey<T>& key, T defaultValue, T value,
                                               const char* text) {
    for (const ConfigRef ref : m_refs) {
      key.Remove(ref);
      EXPECT_EQ(key.Default(), defaultValue);
      EXPECT_EQ(key.Get(ref), defaultValue);
      std::vector<T> notified;
      const auto subscription =
          key.Subscribe(ref, [&](const ConfigReading<T>& reading) { notified.push_back(reading.value); });
      EXPECT_TRUE(key.Set(ref, value).IsStored());
      EXPECT_EQ(m_facade.GetKalConfig(key.Name(), key.Group()).ToString(), text);
      EXPECT_TRUE(key.Read(ref).fromStore);
      EXPECT_EQ(key.Get(ref), value);
      {
        const ScopedConfig scope(ref, key, defaultValue);
        EXPECT_EQ(key.Get(ref), defaultValue);
      }
      EXPECT_EQ(notified, (std::vector<T>{value, defaultValue, value}));
    }
  };
  using std::chrono::milliseconds;
  expectRoundTrip(kRatio, 0.1F, 0.3F, "0.3");
  expectRoundTrip(kCodec, Codec::kH264, Codec::kVp8, "vp8");
  expectRoundTrip(kTimeout, milliseconds(3000), milliseconds(40), "40");
  expectRoundTrip(kFirstByte, -1LL, 1LL << 62, "4611686018427387904");
  expectRoundTrip(kLastByte, std::int64_t{1} << 40, std::int64_t{7}, "7");
}

TEST_F(Key, TakesADurationOfALargerUnit) {
  kTimeout.Set(m_facade, std::chrono::seconds(5));
  EXPECT_EQ(kTimeout.Get(m_facade), std::chrono::milliseconds(5000));
  const ScopedConfig scope(m_facade, kTimeout, std::chrono::minutes(1));
  EXPECT_EQ(m_facade.GetKalConfig("Timeout", KAL_CONFIG_GROUP_COMMON).ToString(), "60000");
}

TEST_F(Key, RefusesAnUnknownNameAndAValueWithoutOne) {
  kCodec.Set(m_facade, Codec::kVp8);
  const TraceLog silent;
  EXPECT_EQ(kCodec.Set(m_facade, Codec::kNone).Code(), kResultBadArgument);
  EXPECT_EQ(kCodec.Get(m_facade), Codec::kVp8);
  EXPECT_FALSE(ScopedConfig(m_facade, kCodec, Codec::kNone).IsInPlace());
  m_facade.SetKalConfig("Codec", "av1", KAL_CONFIG_GROUP_VIDEO);
  EXPECT_EQ(kCodec.Get(m_facade), Codec::kH264);
  EXPECT_TRUE(kCodec.Read(m_facade).IsRefused());
}

TEST_F(Key, ReadsAndWritesTheValueThatOthersSee) {
  kMaxFps.Set(*m_call, 15);
  EXPECT_STREQ(m_facade.GetKalConfig("MaxFps", KAL_CONFIG_GROUP_VIDEO).ToCstr(), "15");
  kDtx.Set(m_facade, true);
  EXPECT_STREQ(m_facade.GetKalConfig("Dtx", KAL_CONFIG_GROUP_AUDIO).ToCstr(), "1");
  m_facade.SetKalConfig("Gain", "2", KAL_CONFIG_GROUP_AUDIO);
  EXPECT_EQ(kGain.Get(*m_call), 2.0);
}

TEST_F(Key, RefusesAStoredValueThatIsNotAWholeOneOfItsType) {
  for (const ConfigRef ref : m_refs) {
    for (const char* text : {"fast", "15.0", "15 ", "", "2147483648"}) {
      m_facade.SetKalConfig("MaxFps", text, KAL_CONFIG_GROUP_VIDEO);
      EXPECT_EQ(kMaxFps.Get(ref), 30) << text;
      const ConfigReading<int> reading = kMaxFps.Read(ref);
      EXPECT_EQ(reading.value, 30);
      EXPECT_FALSE(reading.fromStore);
      EXPECT_TRUE(reading.IsRefused());
      EXPECT_EQ(reading.stored, ConfigData(text));
    }
  }
}

TEST_F(Key, SaysWhetherASetStoredItsValue) {
  for (const ConfigRef ref : m_refs) {
    kMaxFps.Remove(ref);
    EXPECT_EQ(kMaxFps.Set(ref, 15).Code(), kResultNobody);
    EXPECT_EQ(kMaxFps.Set(ref, 15).Code(), kResultUnchanged);
    const auto subscription = kMaxFps.Subscribe(ref, [](const ConfigReading<int>&) {});
    EXPECT_EQ(kMaxFps.Set(ref, 16).Code(), kResultOk);
    EXPECT_EQ(kMaxFps.Set(ref, 16, true).Code(), kResultOk);
    EXPECT_EQ(kDevice.Set(ref, static_cast<const char*>(nullptr)).Code(), kResultBadArgument);
    EXPECT_FALSE(kDevice.Read(ref).fromStore);
  }
  EXPECT_TRUE(IsStored(kResultOk));
  EXPECT_TRUE(IsStored(kResultNobody));
  EXPECT_TRUE(IsStored(kResultUnchanged));
  EXPECT_FALSE(IsStored(kResultBadArgument));
  EXPECT_FALSE(IsStored(kResultNotFound));
}

TEST_F(Key, SaysWhetherASetNotifiedSomebody) {
  for (const ConfigRef ref : m_refs) {
    kMaxFps.Remove(ref);
    EXPECT_TRUE(kMaxFps.Set(ref, 15).IsStored());
    EXPECT_FALSE(kMaxFps.Set(ref, 16).WasTold());
    EXPECT_TRUE(kMaxFps.Set(ref, 16).IsStored()) << "unchanged";
    const auto subscription = kMaxFps.Subscribe(ref, [](const ConfigReading<int>&) {});
    EXPECT_TRUE(kMaxFps.Set(ref, 17).WasTold());
    EXPECT_FALSE(kMaxFps.Set(ref, 17).WasTold());
  }
  const TraceLog silent;
  EXPECT_FALSE(kDevice.Set(m_facade, static_cast<const char*>(nullptr)).IsStored());
  EXPECT_FALSE(kDevice.Set(m_facade, static_cast<const char*>(nullptr)).WasTold());
}

TEST_F(Key, NeedNotBeAConstantOfTheProgram) {
  const auto defaultOf = [](ConfigKey<int> key) { return key.Default(); };
  const ConfigKey<int> local{KAL_CONFIG_GROUP_VIDEO, "Local", 15};
  for (const ConfigRef ref : m_refs) {
    EXPECT_EQ(local.Get(ref), 15);
    EXPECT_EQ(defaultOf({KAL_CONFIG_GROUP_VIDEO, "Argument", 20}), 20);
    EXPECT_EQ(ConfigKey<int>(KAL_CONFIG_GROUP_VIDEO, "Temporary", 25).Get(ref), 25);
    ConfigKey<bool>(KAL_CONFIG_GROUP_AUDIO, "Temporary", false).Set(ref, true);
    EXPECT_TRUE(ConfigKey<bool>(KAL_CONFIG_GROUP_AUDIO, "Temporary", false).Get(ref));
  }
}

TEST_F(Key, CanBeInAFacadesDefaultGroup) {
  {
    const TraceLog silent;
    EXPECT_EQ(kBitrate.Set(m_facade, 1).Code(), kResultNotFound);
    EXPECT_EQ(kBitrate.Get(m_facade), 64000);
  }
  m_facade.SetKalSessionType(kal::KAL_SESSION_AUDIO);
  kBitrate.Set(m_facade, 32000);
  EXPECT_EQ(kBitrate.Get(m_facade), 32000);
  EXPECT_STREQ(m_facade.GetKalConfig("Bitrate", KAL_CONFIG_GROUP_AUDIO).ToCstr(), "32000");

  EXPECT_EQ(kBitrate.Get(*m_call), 64000);  // A store has no default group.
  const TraceLog silent;
  EXPECT_EQ(kBitrate.Set(*m_call, 1).Code(), kResultBadArgument);
}

TEST_F(Key, GivesItsDefaultWhenTheFacadeIsNotBound) {
  const TraceLog silent;
  KalConfigHelper unbound;
  EXPECT_EQ(kMaxFps.Get(unbound), 30);
  EXPECT_FALSE(kMaxFps.Read(unbound).IsRefused());
  EXPECT_EQ(kMaxFps.Set(unbound, 15).Code(), kResultBadArgument);
}

TEST_F(Key, NotifiesOfChangesInItsOwnType) {
  for (const ConfigRef ref : m_refs) {
    kMaxFps.Set(ref, 10);
    std::vector<std::tuple<int, bool, std::string>> notified;
    {
      const auto subscription = kMaxFps.Subscribe(ref, [&](const ConfigReading<int>& reading) {
        notified.emplace_back(reading.value, reading.IsRefused(), reading.stored.ToString());
      });
      EXPECT_TRUE(subscription);
      kMaxFps.Set(ref, 15);
      m_facade.SetKalConfig("MaxFps", "fast", KAL_CONFIG_GROUP_VIDEO);
    }
    kMaxFps.Set(ref, 20);
    const std::vector<std::tuple<int, bool, std::string>> expected = {
        {10, false, "10"}, {15, false, "15"}, {30, true, "fast"}};
    EXPECT_EQ(notified, expected);
  }
}

TEST_F(Key, NotifiesAFunctionOfAnyConstReading) {
  int notified = 0;
  const auto notify = [&](auto& reading) { notified += reading.value; };
  const auto direct = kMaxFps.Subscribe(*m_call, notify);
  const auto run = kMaxFps.Subscribe(m_facade, notify, [](const std::function<void()>& task) { task(); });
  kMaxFps.Set(m_facade, 15);
  EXPECT_EQ(notified, 30);
}

TEST_F(Key, IgnoresWhatASubscriberOrAnExecutorReturns) {
  enum class [[nodiscard]] Status { kFine };
  int notified = 0;
  const auto notify = [&](const ConfigReading<int>& reading) {
    notified += reading.value;
    return Status::kFine;
  };
  const auto run = [](const std::function<void()>& task) {
    task();
    return Status::kFine;
  };
  const auto direct = kMaxFps.Subscribe(*m_call, notify);
  const auto executed = kMaxFps.Subscribe(m_facade, notify, run);
  kMaxFps.Set(m_facade, 15);
  EXPECT_EQ(notified, 30);
}

TEST_F(Key, HandsChangesOverUnlessSaidOtherwise) {
  ACmThread worker;
  worker.Start();
  for (const ConfigRef ref : m_refs) {
    int notified = 0;
    const auto subscription =
        kMaxFps.Subscribe(ref, [&](const ConfigReading<int>& reading) { notified = reading.value; }, &worker);
    Send(worker, [&] {
      kMaxFps.Set(ref, 15);
      EXPECT_EQ(notified, 15);  // Posted, it would come after this.
    });
    kMaxFps.Remove(ref);
  }
}

TEST_F(Key, ServesManyThreadsAtOnce) {
  const auto use = [this](int ours) {
    for (int i = 0; i < 500; ++i) {
      EXPECT_TRUE(kMaxFps.Set(m_facade, ours).IsStored());
      const ConfigReading<int> reading = kMaxFps.Read(*m_call);
      EXPECT_TRUE(reading.fromStore);
      EXPECT_TRUE(reading.value == 15 || reading.value == 60) << reading.value;
    }
  };
  std::thread other(use, 15);
  use(60);
  other.join();
}
