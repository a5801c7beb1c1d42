// SPDX-License-Identifier: Apache-2.0
#include "inspect/LastChanges.h"

#include <gmock/gmock.h>

#include "tessel/CallStore.h"

// What was written beside a copy: the copies are made by hand, as of a moment between two events.

namespace kalStore::internal {
namespace {

class LastChanges : public ::testing::Test {
 protected:
  LastChanges() { StartJournal(64); }
  ~LastChanges() override { StopJournal(); }

  void setBy(const char* label, const ConfigData& value, const char* name = "MaxFps") {
    const JournalOrigin origin(label);
    m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name, value, false, false);
  }
  // Who gave the value, of a copy that was made when the next event had the number.
  static std::string labelOf(const ConfigData& value, std::uint64_t number = NextJournalNumber(),
                             const char* name = "MaxFps") {
    std::vector<InspectedSetting> settings{{KAL_CONFIG_GROUP_VIDEO, name, value, std::nullopt}};
    CopyNumbers numbers{};
    numbers.fill(number);
    FindLastChanges(7, numbers, settings);
    return settings[0].lastChange ? settings[0].lastChange->label.text : "nothing";
  }

  CallStore m_store{7, CallStore::kEndsCall};
};

TEST_F(LastChanges, AreNotThoseAfterTheCopy) {
  setBy("before", 1);
  const std::uint64_t number = NextJournalNumber();
  setBy("after", 2);
  setBy("after again", 1);
  EXPECT_EQ(labelOf(1, number), "before");
  EXPECT_EQ(labelOf(1), "after again");
  EXPECT_EQ(labelOf(2, number), "nothing");
}

TEST_F(LastChanges, AreNotThoseOfAnotherNameWithTheSameValue) {
  setBy("own", 1, "MinFps");
  setBy("of another name", 1, "MaxFps");
  EXPECT_EQ(labelOf(1, NextJournalNumber(), "MinFps"), "own");
  EXPECT_EQ(labelOf(1, NextJournalNumber(), "MaxFps"), "of another name");
}

TEST_F(LastChanges, AreThoseBeforeASubscriptionAndItsEnd) {
  setBy("before", 1);
  const SubscribeId_t id = m_store->SubscribeConfig(
      KAL_CONFIG_GROUP_VIDEO, "MaxFps", [](const KalConfigEvent&) {}, nullptr, false);
  EXPECT_EQ(labelOf(1), "before");
  m_store->UnsubscribeConfig(id);
  EXPECT_EQ(labelOf(1), "before");
}

// The set that gave the value is still to be written.
TEST_F(LastChanges, AreNothingOfAValueFromBeforeARemovalOrATransientSet) {
  setBy("before", 1);
  m_store->RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "Other");
  m_store->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_AUDIO);
  EXPECT_EQ(labelOf(1), "before");
  m_store->RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps");
  EXPECT_EQ(labelOf(1), "nothing");
  setBy("before", 1);
  m_store->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_VIDEO);
  EXPECT_EQ(labelOf(1), "nothing");
  setBy("before", 1);
  m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 1, false, true);
  EXPECT_EQ(labelOf(1), "nothing");
}

TEST_F(LastChanges, AreKnownOfALongValueByItsBeginning) {
  const std::string beginning(kJournalLongestValue, 'v');
  setBy("long", ConfigData(beginning + "w"));
  EXPECT_EQ(labelOf(ConfigData(beginning + "w")), "long");
  EXPECT_EQ(labelOf(ConfigData(beginning)), "nothing");
  EXPECT_EQ(labelOf(ConfigData("w" + beginning)), "nothing");
}

}  // namespace
}  // namespace kalStore::internal
