// SPDX-License-Identifier: Apache-2.0
#include "util/CCmUtilFuncTracer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/AllocationCount.h"
#include "support/TraceLog.h"

TEST(FuncTracer, TracesThatAFunctionIsEnteredAndLeft) {
  TraceLog log(2);
  {
    CCmUtilFuncTracer tracer(2, "CreateCall");
    ASSERT_EQ(log.Lines().size(), 1u);
    EXPECT_EQ(log.Lines()[0].text, "CreateCall enter");
  }
  const std::vector<TraceLog::Line> lines = log.Lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[1].text, "CreateCall leave");
  for (const TraceLog::Line& line : lines) {
    EXPECT_EQ(line.level, 2);
    EXPECT_EQ(line.module, "UTIL");
  }
}

TEST(FuncTracer, CopiesItsString) {
  TraceLog log(2);
  {
    std::string text = "first";
    CCmUtilFuncTracer tracer(2, text.c_str());
    text = "other";
  }
  EXPECT_EQ(log.Count("first leave"), 1u);
}

TEST(FuncTracer, IsSilentWhenTheMaskIsBelowItsLevelOnEntry) {
  TraceLog log(1);
  {
    CCmUtilFuncTracer tracer(2, "quiet");
    set_external_trace_mask(2);
  }
  EXPECT_TRUE(log.Lines().empty());
}

TEST(FuncTracer, WritesNoSecondLineWhenTheMaskIsBelowItsLevelByThen) {
  TraceLog log(2);
  {
    CCmUtilFuncTracer tracer(2, "half");
    set_external_trace_mask(1);
  }
  ASSERT_EQ(log.Lines().size(), 1u);
  EXPECT_EQ(log.Lines()[0].text, "half enter");
}

// Destructors trace with it.
TEST(FuncTracer, AllocatesNothing) {
  set_util_trace_sink([](void*, int, const char*, const char*, unsigned int) {}, nullptr);
  set_external_trace_mask(2);
  const std::string text(500, 'x');
  const AllocationCount allocations;
  {
    const CCmUtilFuncTracer tracer(2, text.c_str());
  }
  EXPECT_EQ(allocations.Count(), 0U);
  set_external_trace_mask(0);
  set_util_trace_sink(nullptr, nullptr);
}

TEST(FuncTracer, CutsTheEndOfALineThatBarelyFits) {
  TraceLog log(2);
  const std::string text(1020, 'x');
  {
    CCmUtilFuncTracer tracer(2, text.c_str());
  }
  ASSERT_EQ(log.Lines().size(), 2u);
  EXPECT_EQ(log.Lines()[0].text, text + " en");
  EXPECT_EQ(log.Lines()[1].text, text + " le");
}

TEST(FuncTracer, ToleratesANullString) {
  TraceLog log(2);
  {
    CCmUtilFuncTracer tracer(0, nullptr);
  }
  ASSERT_EQ(log.Lines().size(), 2u);
  EXPECT_EQ(log.Lines()[0].text, " enter");
}

TEST(FuncTracer, CutsALongStringAtTheEndOfALine) {
  TraceLog log(2);
  {
    CCmUtilFuncTracer tracer(2, std::string(5000, 'x').c_str());
  }
  ASSERT_EQ(log.Lines().size(), 2u);
  EXPECT_EQ(log.Lines()[0].text, std::string(1023, 'x'));
}
