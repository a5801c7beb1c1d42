// SPDX-License-Identifier: Apache-2.0
#include "simulate/Ledger.h"

#include <gtest/gtest.h>

namespace {

using simulate::Ledger;
using simulate::Recorder;
using simulate::SettingKey;
using simulate::Subscriber;

const SettingKey kBitrate(kalStore::KAL_CONFIG_GROUP_AUDIO, "Bitrate");
const SettingKey kMaxFps(kalStore::KAL_CONFIG_GROUP_VIDEO, "MaxFps");

struct LedgerTest : testing::Test {
  const Ledger::Setting& Setting(const SettingKey& key) { return ledger.Settings().at(key); }

  Recorder recorder;
  Ledger ledger{recorder};
};

TEST_F(LedgerTest, ExpectsEachSetOnceAtEverySubscriberOfItsSetting) {
  Subscriber& first = ledger.Add(kBitrate, Way::kDirect);
  Subscriber& second = ledger.Add(kBitrate, Way::kPosted);
  Subscriber& other = ledger.Add(kMaxFps, Way::kDirect);
  ledger.Announce(kBitrate, 64000);
  EXPECT_EQ(recorder.expectedDeliveries, 2U);
  EXPECT_EQ(ledger.Missing(), 2U);
  first.Arrive(64000);
  EXPECT_EQ(ledger.Missing(), 1U);
  second.Arrive(64000);
  EXPECT_EQ(ledger.Missing(), 0U);
  EXPECT_EQ(other.Arrived(), 0U);
  EXPECT_EQ(recorder.unexpectedDeliveries, 0U);
}

TEST_F(LedgerTest, NumbersSetsFromAboveTheInitialDelivery) {
  const std::uint64_t first = ledger.Announce(kBitrate, 1);
  EXPECT_GT(first, Subscriber::kInitial);
  EXPECT_GT(ledger.Announce(kMaxFps, 1), first);
}

TEST_F(LedgerTest, CountsSetsWithAndWithoutSubscribersApart) {
  ledger.Add(kBitrate, Way::kDirect);
  ledger.Announce(kBitrate, 1);
  ledger.Keep(kBitrate);
  ledger.Announce(kMaxFps, 1);
  ledger.Keep(kMaxFps);
  EXPECT_EQ(recorder.setsNotified, 1U);
  EXPECT_EQ(recorder.setsWithoutSubscribers, 1U);
  EXPECT_EQ(Setting(kBitrate).notifiedChanges, 1U);
  EXPECT_EQ(Setting(kMaxFps).notifiedChanges, 0U);
}

TEST_F(LedgerTest, ExpectsNothingOfASetThatChangedNothing) {
  ledger.Add(kBitrate, Way::kDirect);
  const std::uint64_t set = ledger.Announce(kBitrate, 1);
  ledger.Withdraw(kBitrate, set);
  EXPECT_EQ(recorder.setsUnchanged, 1U);
  EXPECT_EQ(recorder.expectedDeliveries, 0U);
  EXPECT_EQ(ledger.Missing(), 0U);
  EXPECT_EQ(Setting(kBitrate).notifiedChanges, 0U);
}

TEST_F(LedgerTest, WithdrawsThatSetAlone) {
  ledger.Add(kBitrate, Way::kDirect);
  ledger.Announce(kBitrate, 1);
  ledger.Withdraw(kBitrate, ledger.Announce(kBitrate, 1));
  EXPECT_EQ(ledger.Missing(), 1U);
}

}  // namespace
