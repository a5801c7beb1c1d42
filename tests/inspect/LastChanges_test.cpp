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

  void setBy(const char* label, int value) {
    const JournalOrigin origin(label);
    m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", value, false, false);
  }
  // Who gave the value, of a copy that was made when the next event had the number.
  static std::string labelOf(int value, std::uint64_t number) {
    std::vector<InspectedSetting> settings{{KAL_CONFIG_GROUP_VIDEO, "MaxFps", value, std::nullopt}};
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
  EXPECT_EQ(labelOf(1, NextJournalNumber()), "after again");
  EXPECT_EQ(labelOf(2, number), "nothing");
}

}  // namespace
}  // namespace kalStore::internal
