// SPDX-License-Identifier: Apache-2.0
#include "tessel/ConfigKey.h"

#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "TypedTest.h"
#include "support/TraceLog.h"

namespace {

constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
constexpr ConfigKey<bool> kDtx{KAL_CONFIG_GROUP_AUDIO, "Dtx", true};
constexpr ConfigKey<double> kGain{KAL_CONFIG_GROUP_AUDIO, "Gain", -18.5};
constexpr ConfigKey<unsigned long> kBytes{KAL_CONFIG_GROUP_METRICS, "Bytes", 1};
constexpr ConfigKey<std::string> kDevice{KAL_CONFIG_GROUP_AUDIO, "Device", "default"};
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
    EXPECT_EQ(kBytes.Get(ref), 1U);
    EXPECT_EQ(kDevice.Get(ref), "default");

    const ConfigReading<int> reading = kMaxFps.Read(ref);
    EXPECT_EQ(reading.value, 30);
    EXPECT_FALSE(reading.fromStore);
    EXPECT_FALSE(reading.stored.IsValid());
    EXPECT_FALSE(reading.IsRefused());
  }
}

TEST_F(Key, GivesWhatItSet) {
  for (const ConfigRef ref : m_refs) {
    kMaxFps.Set(ref, -15);
    kDtx.Set(ref, false);
    kGain.Set(ref, 0.25);
    kBytes.Set(ref, 18446744073709551615UL);
    kDevice.Set(ref, std::string("headset"));
    EXPECT_EQ(kMaxFps.Get(ref), -15);
    EXPECT_FALSE(kDtx.Get(ref));
    EXPECT_EQ(kGain.Get(ref), 0.25);
    EXPECT_EQ(kBytes.Get(ref), 18446744073709551615UL);
    EXPECT_EQ(kDevice.Get(ref), "headset");
    kDevice.Set(ref, "");
    EXPECT_EQ(kDevice.Get(ref), "");
    EXPECT_TRUE(kDevice.Read(ref).fromStore);

    EXPECT_EQ(kDevice.Remove(ref), kResultOk);
    EXPECT_EQ(kDevice.Get(ref), "default");
  }
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
    EXPECT_EQ(kMaxFps.Set(ref, 15), kResultNobody);
    EXPECT_EQ(kMaxFps.Set(ref, 15), kResultUnchanged);
    const auto subscription = kMaxFps.Subscribe(ref, [](const ConfigReading<int>&) {});
    EXPECT_EQ(kMaxFps.Set(ref, 16), kResultOk);
    EXPECT_EQ(kMaxFps.Set(ref, 16, true), kResultOk);
    EXPECT_EQ(kDevice.Set(ref, static_cast<const char*>(nullptr)), kResultBadArgument);
    EXPECT_FALSE(kDevice.Read(ref).fromStore);
  }
  EXPECT_TRUE(IsStored(kResultOk));
  EXPECT_TRUE(IsStored(kResultNobody));
  EXPECT_TRUE(IsStored(kResultUnchanged));
  EXPECT_FALSE(IsStored(kResultBadArgument));
  EXPECT_FALSE(IsStored(kResultNotFound));
}

TEST_F(Key, CanBeInAFacadesDefaultGroup) {
  {
    const TraceLog silent;
    EXPECT_EQ(kBitrate.Set(m_facade, 1), kResultNotFound);
    EXPECT_EQ(kBitrate.Get(m_facade), 64000);
  }
  m_facade.SetKalSessionType(kal::KAL_SESSION_AUDIO);
  kBitrate.Set(m_facade, 32000);
  EXPECT_EQ(kBitrate.Get(m_facade), 32000);
  EXPECT_STREQ(m_facade.GetKalConfig("Bitrate", KAL_CONFIG_GROUP_AUDIO).ToCstr(), "32000");

  EXPECT_EQ(kBitrate.Get(*m_call), 64000);  // A store has no default group.
  const TraceLog silent;
  EXPECT_EQ(kBitrate.Set(*m_call, 1), kResultBadArgument);
}

TEST_F(Key, GivesItsDefaultWhenTheFacadeIsNotBound) {
  const TraceLog silent;
  KalConfigHelper unbound;
  EXPECT_EQ(kMaxFps.Get(unbound), 30);
  EXPECT_FALSE(kMaxFps.Read(unbound).IsRefused());
  EXPECT_EQ(kMaxFps.Set(unbound, 15), kResultBadArgument);
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

TEST_F(Key, ServesManyThreadsAtOnce) {
  const auto use = [this](int ours) {
    for (int i = 0; i < 500; ++i) {
      EXPECT_TRUE(IsStored(kMaxFps.Set(m_facade, ours)));
      const ConfigReading<int> reading = kMaxFps.Read(*m_call);
      EXPECT_TRUE(reading.fromStore);
      EXPECT_TRUE(reading.value == 15 || reading.value == 60) << reading.value;
    }
  };
  std::thread other(use, 15);
  use(60);
  other.join();
}
