// SPDX-License-Identifier: Apache-2.0
#include "trace/TraceLine.h"

#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <thread>

#include "support/AllocationCount.h"
#include "support/TraceLog.h"

namespace kalStore::internal {
namespace {

using ::testing::ElementsAre;

struct Reporter {
  void Report(int level) { TESSEL_TRACE(level, "sample::Reporter::Report", ", size=" << 3); }
  void ReportAll(std::uint32_t callId, const void* self) {
    TESSEL_TRACE(2, "sample::Reporter::ReportAll", "Text" << Cid{callId} << This{self});
  }
};

/// The job of the calling thread while it lives.
class PoolJob {
 public:
  PoolJob(unsigned int id, const char* name) { cm_set_current_threadpool_job(id, name); }
  ~PoolJob() { cm_set_current_threadpool_job(0, nullptr); }
};

std::vector<std::string> TextsOf(const TraceLog& log) {
  return log.Matching("");
}

TEST(TraceLine, OpensWithTheLabelUnderTheModuleUtil) {
  TraceLog log;
  Reporter().Report(1);
  ASSERT_EQ(1U, log.Lines().size());
  EXPECT_EQ(1, log.Lines()[0].level);
  EXPECT_EQ("UTIL", log.Lines()[0].module);
  EXPECT_EQ("sample::Reporter::Report, size=3", log.Lines()[0].text);
}

TEST(TraceLine, PrintsCallAndObjectAsSuffixes) {
  TraceLog log;
  Reporter().ReportAll(4294967295U, reinterpret_cast<const void*>(0xabcUL));
  EXPECT_THAT(TextsOf(log), ElementsAre("sample::Reporter::ReportAllText [cid=4294967295] [this=0xabc]"));
}

TEST(TraceLine, GoesBackToDecimalAfterTheObject) {
  TraceLog log;
  TESSEL_TRACE_TEXT(2, This{reinterpret_cast<const void*>(0xffUL)} << 255);
  EXPECT_THAT(TextsOf(log), ElementsAre(" [this=0xff]255"));
}

TEST(TraceLine, PutsTheJobBeforeTheLabel) {
  TraceLog log;
  {
    const PoolJob job(17, "encode");
    Reporter().Report(0);
    TESSEL_TRACE_TEXT(0, "text");
  }
  {
    const PoolJob job(18, nullptr);
    TESSEL_TRACE_TEXT(0, "id only");
  }
  {
    const PoolJob job(19, "");
    TESSEL_TRACE_TEXT(0, "empty name");
  }
  {
    const PoolJob job(0, "name only");
    TESSEL_TRACE_TEXT(0, "!");
  }
  Reporter().Report(0);
  EXPECT_THAT(TextsOf(log),
              ElementsAre("[JobId=17] [Job=encode] sample::Reporter::Report, size=3",
                          "[JobId=17] [Job=encode] text", "[JobId=18] id only", "[JobId=19] empty name",
                          "[Job=name only] !", "sample::Reporter::Report, size=3"));
}

TEST(TraceLine, TakesTheJobOfTheCallingThreadAlone) {
  TraceLog log;
  const PoolJob job(17, "encode");
  std::thread([] { TESSEL_TRACE_TEXT(2, "elsewhere"); }).join();
  EXPECT_THAT(TextsOf(log), ElementsAre("elsewhere"));
}

TEST(TraceLine, IsWrittenWhenTheMaskIsAtLeastItsLevel) {
  for (int mask = -1; mask <= 4; ++mask) {
    TraceLog log(mask);
    for (int level = 0; level <= 2; ++level) Reporter().Report(level);
    EXPECT_EQ(static_cast<std::size_t>(std::min(mask, 2) + 1), log.Lines().size()) << "mask " << mask;
    for (int level = 0; level <= 2; ++level) EXPECT_EQ(level <= mask ? 1U : 0U, log.CountLevel(level));
  }
}

TEST(TraceLine, ReadsTheMaskAfreshForEachLine) {
  TraceLog log(2);
  Reporter().Report(2);
  set_external_trace_mask(1);
  Reporter().Report(2);
  set_external_trace_mask(2);
  Reporter().Report(2);
  EXPECT_EQ(2U, log.Lines().size());
}

TEST(TraceLine, IsCutAtTheEndOfItsBuffer) {
  TraceLog log;
  TESSEL_TRACE_TEXT(2, std::string(1023, 'x'));
  TESSEL_TRACE_TEXT(2, std::string(1024, 'y') << "never seen");
  ASSERT_EQ(2U, log.Lines().size());
  EXPECT_EQ(std::string(1023, 'x'), log.Lines()[0].text);
  EXPECT_EQ(std::string(1023, 'y'), log.Lines()[1].text);
}

TEST(TraceLine, CutsALabelThatIsLongerThanTheBuffer) {
  TraceLog log;
  TraceLine line(2, std::string(2000, 'l').c_str());
  line.Text() << "!";
  line.Emit();
  EXPECT_THAT(TextsOf(log), ElementsAre(std::string(1023, 'l')));
}

TEST(TraceLine, EvaluatesAndAllocatesNothingWhenItIsNotWanted) {
  TraceLog log(1);
  int evaluated = 0;
  const AllocationCount allocations;
  for (int i = 0; i < 10; ++i) TESSEL_TRACE(2, "label", std::string(100, 'x') << ++evaluated);
  EXPECT_EQ(0U, allocations.Count());
  EXPECT_EQ(0, evaluated);
  EXPECT_TRUE(log.Lines().empty());
}

TEST(TraceLine, IsComposedWithoutAllocation) {
  set_util_trace_sink([](void*, int, const char*, const char*, unsigned int) {}, nullptr);
  set_external_trace_mask(2);
  const PoolJob job(17, "encode");
  Reporter reporter;
  const AllocationCount allocations;
  reporter.ReportAll(5, &reporter);
  EXPECT_EQ(0U, allocations.Count());
  set_external_trace_mask(0);
  set_util_trace_sink(nullptr, nullptr);
}

void Discard(const std::string& text, const char* ends) {
  if (text.size() > 4)
    TESSEL_TRACE_TEXT(2, ends);
  else
    TESSEL_TRACE_TEXT(2, text);
}

TEST(TraceLine, MacroIsOneStatement) {
  TraceLog log;
  Discard("short", "long");
  Discard("abc", "long");
  EXPECT_THAT(TextsOf(log), ElementsAre("long", "abc"));
}

TEST(TraceLine, HandsTheTerminatedTextAndItsLengthToTheSink) {
  static unsigned int length;
  static std::string text;
  set_util_trace_sink(
      [](void*, int, const char*, const char* given, unsigned int size) {
        length = size;
        text = given;
      },
      nullptr);
  TESSEL_TRACE_TEXT(0, "12345");
  set_util_trace_sink(nullptr, nullptr);
  EXPECT_EQ(5U, length);
  EXPECT_EQ("12345", text);
}

}  // namespace

}  // namespace kalStore::internal
