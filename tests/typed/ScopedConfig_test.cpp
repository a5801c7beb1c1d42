// SPDX-License-Identifier: Apache-2.0
#include "tessel/ScopedConfig.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "TypedTest.h"
#include "support/TraceLog.h"

namespace {

constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};

class Scope : public TypedTest {
 protected:
  CallStore m_call{kCall};
  KalConfigHelper m_facade{kCall};
  const ConfigRef m_refs[2] = {*m_call, m_facade};
};

}  // namespace

TEST_F(Scope, RestoresThePreviousValue) {
  for (const ConfigRef ref : m_refs) {
    m_facade.SetKalConfig("MaxFps", "fast", KAL_CONFIG_GROUP_VIDEO);
    {
      const ScopedConfig scope(ref, kMaxFps, 5);
      EXPECT_TRUE(scope.IsInPlace());
      EXPECT_EQ(kMaxFps.Get(ref), 5);
    }
    EXPECT_EQ(m_facade.GetKalConfig("MaxFps", KAL_CONFIG_GROUP_VIDEO), ConfigData("fast"));
  }
}

TEST_F(Scope, RemovesAgainWhatWasAbsent) {
  for (const ConfigRef ref : m_refs) {
    {
      const ScopedConfig scope(ref, KAL_CONFIG_GROUP_AUDIO, "Device", "headset");
      EXPECT_STREQ(m_facade.GetKalConfig("Device", KAL_CONFIG_GROUP_AUDIO).ToCstr(), "headset");
    }
    EXPECT_FALSE(m_facade.HaveKalConfig("Device", KAL_CONFIG_GROUP_AUDIO));
  }
}

TEST_F(Scope, RestoresAnEmptyString) {
  m_facade.SetKalConfig("Device", "", KAL_CONFIG_GROUP_AUDIO);
  {
    const ScopedConfig scope(m_facade, KAL_CONFIG_GROUP_AUDIO, "Device", "headset");
  }
  EXPECT_TRUE(m_facade.HaveKalConfig("Device", KAL_CONFIG_GROUP_AUDIO));
}

TEST_F(Scope, Nests) {
  const ScopedConfig outer(*m_call, kMaxFps, 20);
  {
    const ScopedConfig inner(m_facade, kMaxFps, 10);
    {
      const ScopedConfig innermost(*m_call, kMaxFps, 5);
    }
    EXPECT_EQ(kMaxFps.Get(*m_call), 10);
  }
  EXPECT_EQ(kMaxFps.Get(*m_call), 20);
}

TEST_F(Scope, NotifiesSubscribersOfBothSetsButNotOfARemoval) {
  std::vector<int> notified;
  const auto subscription = kMaxFps.Subscribe(
      *m_call, [&](const ConfigReading<int>& reading) { notified.push_back(reading.value); });
  {
    const ScopedConfig scope(*m_call, kMaxFps, 5);
  }
  EXPECT_EQ(notified, std::vector<int>({5}));
  kMaxFps.Set(*m_call, 15);
  {
    const ScopedConfig scope(*m_call, kMaxFps, 6);
  }
  EXPECT_EQ(notified, std::vector<int>({5, 15, 6, 15}));
}

TEST_F(Scope, DoesNothingWhenTheValueIsRefused) {
  const TraceLog silent;
  {
    const ScopedConfig scope(*m_call, KAL_CONFIG_GROUP_LAST, "A", 1);
    EXPECT_FALSE(scope.IsInPlace());
  }
  kMaxFps.Set(*m_call, 15);
  {
    const ScopedConfig scope(*m_call, KAL_CONFIG_GROUP_VIDEO, "MaxFps", ConfigData());
    EXPECT_FALSE(scope.IsInPlace());
    kMaxFps.Set(*m_call, 16);
  }
  EXPECT_EQ(kMaxFps.Get(*m_call), 16);
  EXPECT_FALSE(ScopedConfig(*m_call, KAL_CONFIG_GROUP_VIDEO, nullptr, 1).IsInPlace());
}

TEST_F(Scope, RestoresThePreviousValueWhenACallbackThrows) {
  kMaxFps.Set(*m_call, 15);
  const auto subscription = kMaxFps.Subscribe(*m_call, [](const ConfigReading<int>& reading) {
    if (reading.value == 5) throw std::runtime_error("too slow");
  });
  EXPECT_THROW(const ScopedConfig scope(*m_call, kMaxFps, 5), std::runtime_error);
  EXPECT_EQ(kMaxFps.Get(*m_call), 15);
}

TEST_F(Scope, DropsWhatACallbackThrowsAtItsEnd) {
  kMaxFps.Set(*m_call, 15);
  bool armed = false;
  const auto subscription = kMaxFps.Subscribe(*m_call, [&](const ConfigReading<int>&) {
    if (armed) throw std::runtime_error("no");
  });
  {
    const ScopedConfig scope(*m_call, kMaxFps, 5);
    armed = true;
  }
  EXPECT_EQ(kMaxFps.Get(*m_call), 15);
}

TEST_F(Scope, MayEndOnAnotherThread) {
  for (const ConfigRef ref : m_refs) {
    kMaxFps.Set(ref, 60);
    std::thread([scope = std::make_unique<ScopedConfig>(ref, kMaxFps, 5), ref]() mutable {
      EXPECT_EQ(kMaxFps.Get(ref), 5);
      scope.reset();
    }).join();
    EXPECT_EQ(kMaxFps.Get(ref), 60);
  }
}
