// SPDX-License-Identifier: Apache-2.0
#include "FacadeTest.h"

namespace kalStore {
namespace {

using KalConfigValueReadersTest = FacadeTest;

TEST_F(KalConfigValueReadersTest, ReadOneValueOfACall) {
  KalConfigHelper facade(kCall);
  facade.SetKalConfig("a", "x", KAL_CONFIG_GROUP_VIDEO);
  ConfigData value;
  EXPECT_EQ(GetKalConfigValue(kal::KAL_SESSION_VIDEO, "a", value, kCall), kResultOk);
  EXPECT_EQ(value, ConfigData("x"));
  value.SetInvalid();
  EXPECT_EQ(GetKalConfigValueEx(KAL_CONFIG_GROUP_VIDEO, "a", value, kCall), kResultOk);
  EXPECT_EQ(value, ConfigData("x"));
  EXPECT_EQ(GetKalConfigValue(kal::KAL_SESSION_AUDIO, "a", value, kCall), kResultNotFound);
  EXPECT_FALSE(value.IsValid());
}

TEST_F(KalConfigValueReadersTest, RefuseNoCallAndCreateNothing) {
  ConfigData value("kept");
  const unsigned long reports = cm_assertion_report_count();
  const TraceLog log;
  EXPECT_EQ(GetKalConfigValue(kal::KAL_SESSION_VIDEO, "a", value, kNoCallId), kResultBadArgument);
  EXPECT_EQ(GetKalConfigValueEx(KAL_CONFIG_GROUP_VIDEO, "a", value, kNoCallId), kResultBadArgument);
  EXPECT_EQ(value, ConfigData("kept"));
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore);
  EXPECT_EQ(cm_assertion_report_count(), reports);
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(KalConfigValueReadersTest, LeaveAnEmptyStoreBehindForAnUnknownCall) {
  ConfigData value("old");
  EXPECT_EQ(GetKalConfigValueEx(KAL_CONFIG_GROUP_VIDEO, "a", value, kCall), kResultNotFound);
  EXPECT_FALSE(value.IsValid());
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore + 1);
  EXPECT_EQ(GetKalConfigValue(kal::KAL_SESSION_VIDEO, "a", value, kCall), kResultNotFound);
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore + 1);
  // The registry's own reference is the only one.
  EXPECT_EQ(CleanUpKalConfig(kCall), kResultOk);
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore);
}

TEST_F(KalConfigValueReadersTest, ReturnTheFacadesResults) {
  ConfigData value;
  EXPECT_EQ(GetKalConfigValue(Session(6), "a", value, kCall), kResultNotFound) << "no default group";
  EXPECT_EQ(GetKalConfigValueEx(KAL_CONFIG_GROUP_DEFAULT, "a", value, kCall), kResultNotFound);
  EXPECT_EQ(GetKalConfigValueEx(Group(13), "a", value, kCall), kResultBadArgument);
  EXPECT_EQ(GetKalConfigValueEx(KAL_CONFIG_GROUP_VIDEO, "", value, kCall), kResultBadArgument);
  EXPECT_EQ(GetKalConfigValueEx(KAL_CONFIG_GROUP_VIDEO, nullptr, value, kCall), kResultBadArgument);
  EXPECT_EQ(GetKalConfigValue(kal::KAL_SESSION_VIDEO, nullptr, value, kCall), kResultBadArgument);
}

}  // namespace
}  // namespace kalStore
