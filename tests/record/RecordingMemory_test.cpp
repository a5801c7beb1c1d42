// SPDX-License-Identifier: Apache-2.0
#include <new>
#include <optional>
#include <thread>

#include "RecordingTest.h"
#include "support/AllocationCount.h"
#include "support/Gate.h"
#include "support/TraceLog.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

constexpr std::uint64_t kLargestPart = 2000;
constexpr int kSetsOfMemory = 12;

class RecordingMemory : public RecordingTest {
 protected:
  // Records sets into a set of files, and lets the n-th allocation of its thread fail after the first one.
  void RecordWithout(std::size_t n) {
    const CallStore store(7, CallStore::kEndsCall);
    Gate goesOn;
    std::optional<FailAllocation> nth;  // Begins and fails on the recording's thread.
    Recording recording(
        File(),
        {.journalCapacity = 1024, .largestFile = kLargestPart, .files = 100, .filter = [&](auto, auto, auto) {
           goesOn.Wait();
           if (!nth) nth.emplace(n);
           return RecordingShows::kAll;
         }});
    m_begin = NextJournalNumber();
    for (int i = 0; i < kSetsOfMemory; ++i) {
      const std::string value = std::string(70, 'x') + std::to_string(i);  // Which the journal cuts.
      store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Layout", ConfigData(value), false, false);
    }
    goesOn.Open();
    recording.Flush();
    m_end = NextJournalNumber();
  }

  // Every event is in the files or counted. Removes the files.
  void ExpectNothingMissing() {
    std::uint64_t next = m_begin, lost = 0;
    const std::string last = File();
    ASSERT_TRUE(std::filesystem::exists(last));
    const std::size_t parts = std::stoul(Lines(last).front().Get("part"));
    for (std::size_t part = 1; part <= parts; ++part) {
      const std::string file = part == parts ? last : last + "." + std::to_string(part);
      const std::vector<RecordedLine> lines = Lines(file);
      EXPECT_EQ(lines.front().Get("part"), std::to_string(part));
      EXPECT_EQ(lines.front().Get("next"), std::to_string(next));
      for (const RecordedLine& line : lines) {
        if (line.Get("type") == "lost") lost += std::stoull(line.Get("count"));
        if (!line.Has("number")) continue;
        EXPECT_EQ(line.Get("number"), std::to_string(next));
        EXPECT_EQ(lost, 0u);
        ++next;
      }
      if (part == parts) {
        m_reason = lines.back().Get("reason");
        EXPECT_EQ(lines.back().Get("event"), "ended");
      }
      std::filesystem::remove(file);
    }
    EXPECT_EQ(next + lost, m_end);
    EXPECT_FALSE(std::filesystem::exists(last + ".next"));
  }

  std::uint64_t m_begin = 0, m_end = 0;
  std::string m_reason;
};

TEST_F(RecordingMemory, ThatRunsOutLeavesWholeFilesAndCountsWhatIsMissing) {
  const TraceLog trace(0);
  std::size_t failed = 0;
  for (;; ++failed) {
    SCOPED_TRACE(failed + 1);
    RecordWithout(failed + 1);
    ExpectNothingMissing();
    if (m_reason != "std::bad_alloc" || HasFailure()) break;
  }
  EXPECT_GT(failed, 20u);
  EXPECT_EQ(m_reason, "");
  EXPECT_EQ(trace.Count("reason=std::bad_alloc"), failed);
}

TEST_F(RecordingMemory, ThatRunsOutBeforeTheBeginningLeavesNothing) {
  const CallStore store(7, CallStore::kEndsCall);
  store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 15, false, false);
  std::size_t failed = 0;
  for (bool hasFailed = true; hasFailed; failed += hasFailed ? 1 : 0) {
    hasFailed = false;
    try {
      const FailAllocation nth(failed + 1);
      // The journal keeps its memory: of this size, no other test has a journal.
      const Recording recording(File(), {.journalCapacity = 4096});
    } catch (const std::bad_alloc&) {
      hasFailed = true;
    }
    EXPECT_FALSE(IsJournalOn()) << failed;
    EXPECT_EQ(std::filesystem::exists(File()), !hasFailed) << failed;
  }
  EXPECT_GT(failed, 5u);
}

TEST_F(RecordingMemory, ThatRunsOutCountsWhatHappenedUntilThen) {
  const TraceLog trace(0);
  const CallStore store(7, CallStore::kEndsCall);
  const auto set = [&](int fps) { store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", fps, false, false); };
  {
    Gate asked, goesOn;
    std::optional<FailAllocation> first;  // Begins and fails on the recording's thread.
    const Recording recording(File(), {.filter = [&](auto, auto, auto) {
                                asked.Open();
                                goesOn.Wait();
                                first.emplace(1);
                                return RecordingShows::kAll;
                              }});
    set(0);
    asked.Wait();
    for (int fps = 1; fps < kSetsOfMemory; ++fps) set(fps);
    goesOn.Open();
    while (recording.IsOn()) std::this_thread::yield();
  }
  const std::vector<RecordedLine> lost = OfType("lost");
  ASSERT_EQ(lost.size(), 1u);
  EXPECT_EQ(lost[0].Get("count"), std::to_string(kSetsOfMemory));
}

// The first line that is not whole is that of the large value.
TEST_F(RecordingMemory, ThatRunsOutInThePictureLeavesTheReasonAlone) {
  const TraceLog trace(0);
  const CallStore store(7, CallStore::kEndsCall);
  store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Large", ConfigData(std::string(100'000, 'x')), false, false);
  {
    std::optional<FailAllocation> first;  // Begins and fails on the recording's thread.
    const Recording recording(File(), {.filter = [&](auto, auto, auto) {
                                if (!first) first.emplace(1);
                                return RecordingShows::kAll;
                              }});
    while (recording.IsOn()) std::this_thread::yield();
  }
  const std::vector<RecordedLine> lines = Lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].Get("event"), "ended");
  EXPECT_EQ(lines[0].Get("reason"), "std::bad_alloc");
}

}  // namespace
}  // namespace kalStore
