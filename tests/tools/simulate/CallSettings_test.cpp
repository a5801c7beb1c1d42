// SPDX-License-Identifier: Apache-2.0
#include "simulate/CallSettings.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tessel/CallStore.h"
#include "tessel/post.h"

namespace {

using kalStore::ConfigKey;
using simulate::CallSettings;
using simulate::Ledger;
using simulate::Recorder;
using simulate::SettingKey;

constexpr std::uint32_t kCallId = 4711;
constexpr ConfigKey<int> kAudioBitrate{kalStore::KAL_CONFIG_GROUP_AUDIO, "Bitrate", 32000};
constexpr ConfigKey<double> kDelay{kalStore::KAL_CONFIG_GROUP_AUDIO, "Delay", 60.0};

struct TemporaryFile {
  explicit TemporaryFile(const char* text) { std::ofstream(name) << text; }
  ~TemporaryFile() { std::remove(name.c_str()); }
  const std::string name = testing::TempDir() + "tessel_CallSettings_test_" + std::to_string(::getpid());
};

struct CallSettingsTest : testing::Test {
  CallSettingsTest() { thread.Start(); }
  void Drain() {
    kalStore::Send(thread, [] {});
  }

  const kalStore::CallStore store{kCallId, kalStore::CallStore::kEndsCall};
  Recorder recorder;
  Ledger ledger{recorder};
  ACmThread thread{"component"};
  std::vector<int> seen;
  CallSettings settings{ledger, recorder, &thread};
};

TEST_F(CallSettingsTest, ExpectsTheValuesOfTheStoreOnJoining) {
  store->SetKalConfig(kAudioBitrate.Group(), kAudioBitrate.Name(), 16000, false, false);
  settings.Subscribe<int>(kAudioBitrate, Way::kDirect, [&](int value) { seen.push_back(value); });
  settings.Join(kCallId);
  EXPECT_EQ(seen, std::vector<int>{16000});
  EXPECT_EQ(recorder.initialDeliveries, 1U);
  EXPECT_EQ(recorder.unexpectedDeliveries, 0U);
  EXPECT_EQ(ledger.Missing(), 0U);
}

struct CallSettingsByWayTest : CallSettingsTest, testing::WithParamInterface<Way> {};

TEST_P(CallSettingsByWayTest, DeliversEachSetOnceWhereItBelongs) {
  std::atomic<unsigned long> where{0};
  settings.Subscribe<int>(kAudioBitrate, GetParam(), [&](int) { where = GetThreadSelfId(); });
  settings.Join(kCallId);
  CallSettings setter(ledger, recorder);
  setter.Join(kCallId);
  setter.Set(kAudioBitrate, 1000);
  Drain();
  EXPECT_EQ(where, GetParam() == Way::kDirect ? GetThreadSelfId() : thread.GetThreadId());
  EXPECT_EQ(recorder.Latencies(GetParam()).Count(), 1U);
  EXPECT_EQ(recorder.unexpectedDeliveries, 0U);
  EXPECT_EQ(ledger.Missing(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Ways, CallSettingsByWayTest, testing::ValuesIn(kWays));

TEST_F(CallSettingsTest, CountsASetOfTheSameValueAsUnchanged) {
  settings.Subscribe<int>(kAudioBitrate, Way::kDirect, [&](int value) { seen.push_back(value); });
  settings.Join(kCallId);
  settings.Set(kAudioBitrate, 5);
  settings.Set(kAudioBitrate, 5);
  EXPECT_EQ(seen, std::vector<int>{5});
  EXPECT_EQ(recorder.setsNotified, 1U);
  EXPECT_EQ(recorder.setsUnchanged, 1U);
  EXPECT_EQ(ledger.Missing(), 0U);
}

TEST_F(CallSettingsTest, GivesTheDefaultWhereTheStringIsNoSuchValue) {
  settings.Subscribe<int>(kAudioBitrate, Way::kDirect, [&](int value) { seen.push_back(value); });
  settings.Join(kCallId);
  store->SetKalConfig(kAudioBitrate.Group(), kAudioBitrate.Name(), "soon", false, false);
  EXPECT_EQ(seen, std::vector<int>{32000});
  EXPECT_EQ(recorder.unexpectedDeliveries, 1U) << "a set that is not in the books";
}

TEST_F(CallSettingsTest, ReadsAndCountsIt) {
  settings.Join(kCallId);
  EXPECT_EQ(settings.Read(kAudioBitrate), 32000);
  settings.Set(kAudioBitrate, 8000);
  EXPECT_EQ(settings.Read(kAudioBitrate), 8000);
  EXPECT_TRUE(settings.IsOn(kalStore::KAL_FT_EnableMusicDetection));
  EXPECT_EQ(recorder.reads, 3U);
}

TEST_F(CallSettingsTest, ComputesABoundValueWhenItIsRead) {
  settings.Bind(kDelay, [] { return 12.5; });
  settings.Join(kCallId);
  EXPECT_EQ(settings.ReadComputed(kDelay), 12.5);
  EXPECT_EQ(recorder.reads, 1U);
}

TEST_F(CallSettingsTest, FollowsAValue) {
  std::atomic<int> bitrate{0};
  settings.Follow(kAudioBitrate, Way::kHandedOver, bitrate);
  settings.Join(kCallId);
  CallSettings setter(ledger, recorder);
  setter.Join(kCallId);
  setter.Set(kAudioBitrate, 24000);
  EXPECT_EQ(bitrate, 24000);
}

TEST_F(CallSettingsTest, KnowsWhatADocumentChangesAlsoBesideAnotherSetter) {
  constexpr ConfigKey<int> kTarget{kalStore::KAL_CONFIG_GROUP_AUDIO, "TargetBitrate", 0};
  const TemporaryFile file(
      R"({"Audio":[{"key":"Bitrate","value":"1"},{"key":"TargetBitrate","value":"2"}]})");
  const SettingsDocument document = SettingsDocument::Load(file.name);
  CallSettings setter(ledger, recorder);
  setter.Join(kCallId);
  setter.Set(kTarget, 2);
  std::atomic<bool> hasSet{false};
  std::thread other;
  settings.Subscribe<int>(kTarget, Way::kDirect, [&](int value) { seen.push_back(value); });
  settings.Subscribe<int>(kAudioBitrate, Way::kDirect, [&](int) {
    other = std::thread([&] {
      setter.Set(kTarget, 3);
      hasSet = true;
    });
    // The other one must wait, which nothing shows; but it had time not to.
    for (int yields = 0; yields < 1000 && !hasSet; ++yields) std::this_thread::yield();
  });
  settings.Join(kCallId);
  settings.Apply(document);
  other.join();
  EXPECT_EQ(seen, (std::vector<int>{2, 3}));
  EXPECT_EQ(ledger.Missing(), 0U);
  EXPECT_EQ(recorder.unexpectedDeliveries, 0U);
}

TEST_F(CallSettingsTest, EntersWhatADocumentChangesIntoTheBooks) {
  const TemporaryFile file(R"({"Audio":[{"key":"Bitrate","value":"1"},{"key":"Bitrate","value":"1"},
{"key":"Bitrate","value":"2"},{"key":"Other","value":"x"}]})");
  const SettingsDocument document = SettingsDocument::Load(file.name);
  settings.Subscribe<int>(kAudioBitrate, Way::kDirect, [&](int value) { seen.push_back(value); });
  settings.Join(kCallId);
  settings.Apply(document);
  EXPECT_EQ(seen, (std::vector<int>{1, 2}));
  EXPECT_EQ(recorder.setsNotified, 2U);
  EXPECT_EQ(recorder.setsWithoutSubscribers, 1U);
  EXPECT_EQ(recorder.setsUnchanged, 1U);
  settings.Apply(document);
  EXPECT_EQ(seen, (std::vector<int>{1, 2, 1, 2}));
  EXPECT_EQ(ledger.Missing(), 0U);
  EXPECT_EQ(recorder.unexpectedDeliveries, 0U);
}

}  // namespace
