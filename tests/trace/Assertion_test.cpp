// SPDX-License-Identifier: Apache-2.0
#include "trace/Assertion.h"

#include <gmock/gmock.h>

#include <string>

#include "support/AllocationCount.h"
#include "support/CallingSink.h"
#include "support/TraceLog.h"

namespace {

using ::testing::ElementsAre;

TEST(Assertion, ThatHoldsDoesNothing) {
  TraceLog log;
  const unsigned long reports = cm_assertion_report_count();
  const AllocationCount allocations;
  KAL_ASSERT(1 + 1 == 2);
  KAL_ASSERT_AT("KalConfig", 557, true);
  EXPECT_EQ(0U, allocations.Count());
  EXPECT_EQ(reports, cm_assertion_report_count());
  EXPECT_TRUE(log.Lines().empty());
}

TEST(Assertion, ThatFailsWritesFileLineAndConditionAndReports) {
  TraceLog log(0);
  const unsigned long reports = cm_assertion_report_count();
  const void* m_pIKalConfig = nullptr;
  KAL_ASSERT((m_pIKalConfig != NULL));
  const int line = __LINE__ - 1;
  ASSERT_EQ(1U, log.Lines().size());
  EXPECT_EQ(0, log.Lines()[0].level);
  EXPECT_EQ("UTIL", log.Lines()[0].module);
  EXPECT_EQ(
      "[KAL_ASSERT] Assertion_test.cpp:" + std::to_string(line) + " Assert failed: (m_pIKalConfig != NULL)",
      log.Lines()[0].text);
  EXPECT_EQ(reports + 1, cm_assertion_report_count());
}

TEST(Assertion, IsReportedAfterItsLine) {
  const unsigned long reports = cm_assertion_report_count();
  unsigned long atItsLine = 0;
  {
    const CallingSink sink("[KAL_ASSERT]", [&] { atItsLine = cm_assertion_report_count(); });
    KAL_ASSERT(false);
  }
  EXPECT_EQ(reports, atItsLine);
  EXPECT_EQ(reports + 1, cm_assertion_report_count());
}

TEST(Assertion, KeepsAGivenSourceNameAndLine) {
  TraceLog log;
  bool found = true;
  KAL_ASSERT_AT("KalConfig", 557, !found);
  EXPECT_THAT(log.Matching(""), ElementsAre("[KAL_ASSERT] KalConfig:557 Assert failed: !found"));
}

TEST(Assertion, IsReportedWithoutALineWhenTracingIsOff) {
  TraceLog log(-1);
  const unsigned long reports = cm_assertion_report_count();
  KAL_ASSERT(false);
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_EQ(reports + 1, cm_assertion_report_count());
}

TEST(Assertion, PutsTheJobBeforeItsText) {
  TraceLog log;
  cm_set_current_threadpool_job(3, "mix");
  KAL_ASSERT_AT("F", 1, false);
  cm_set_current_threadpool_job(0, nullptr);
  EXPECT_THAT(log.Matching(""), ElementsAre("[JobId=3] [Job=mix] [KAL_ASSERT] F:1 Assert failed: false"));
}

TEST(Assertion, GoesOnAfterwardsAndEvaluatesItsConditionOnce) {
  TraceLog log;
  int evaluated = 0;
  KAL_ASSERT(++evaluated == 2);
  EXPECT_EQ(1, evaluated);
}

}  // namespace
