// SPDX-License-Identifier: Apache-2.0
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <memory>
#include <thread>

#include "RecordingTest.h"
#include "support/Gate.h"
#include "support/TraceLog.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

/// No thread can start as long as this lives: none has room for the stack that it would get.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&m_before);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::numeric_limits<std::size_t>::max() / 4 * 3);
    EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
    pthread_attr_destroy(&attributes);
  }
  ~NoThreads() { pthread_setattr_default_np(&m_before); }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t m_before{};
};

class RecordingFaults : public RecordingTest {
 protected:
  // Sets until the recording has ended, and reports whether the store noticed.
  static void SetUntilItEnds(Recording& recording) {
    CallStore store(7, CallStore::kEndsCall);
    for (int i = 0; recording.Flush() == kResultOk; ++i) {
      EXPECT_EQ(store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", i, false, false), kResultNobody);
    }
    EXPECT_FALSE(recording.IsOn());
    EXPECT_FALSE(IsJournalOn());
    EXPECT_EQ(store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", -1, false, false), kResultNobody);
  }
  // The recording of a file ends so.
  void ExpectEnd(const std::string& file, const std::string& reason) {
    const TraceLog trace(2);
    {
      Recording recording(file);
      SetUntilItEnds(recording);
    }
    EXPECT_EQ(trace.Matching("kalStore::Recording"),
              std::vector{"kalStore::Recording, ended, file=" + file + ", reason=" + reason});
    EXPECT_EQ(trace.CountLevel(0), 1u);
  }
};

TEST_F(RecordingFaults, AFullDiskEndsIt) {
  ExpectEnd("/dev/full", "No space left on device");
}

TEST_F(RecordingFaults, AFolderThatIsNotThereEndsIt) {
  ExpectEnd(File("none") + "/call.tessel", "No such file or directory");
}

TEST_F(RecordingFaults, AFolderInItsPlaceEndsIt) {
  std::filesystem::create_directory(File());
  ExpectEnd(File(), "Is a directory");
}

TEST_F(RecordingFaults, AThreadThatCannotStartEndsIt) {
  const NoThreads none;
  ExpectEnd(File(), "Resource temporarily unavailable");
}

TEST_F(RecordingFaults, AZeroByteInItsNameIsNotTheEndOfTheName) {
  const TraceLog trace(0);
  std::ofstream(File()) << "something else\n";
  EXPECT_EQ(Recording(File() + '\0' + ".1").Flush(), kResultNotFound);
  EXPECT_EQ(trace.Count("kalStore::Recording, ended, file=" + File() + ", reason=its name has a zero byte"),
            1u);
  EXPECT_EQ(Text(File()), "something else\n");
}

TEST_F(RecordingFaults, APipeIsRefusedAndNotWaitedFor) {
  ASSERT_EQ(::mkfifo(File().c_str(), S_IRUSR | S_IWUSR), 0);
  ExpectEnd(File(), "it is no regular file");
}

TEST_F(RecordingFaults, ARemovedFolderEndsIt) {
  const std::string folder = File("folder");
  std::filesystem::create_directory(folder);
  const TraceLog trace(0);
  {
    Recording recording(folder + "/call.tessel");
    ASSERT_EQ(recording.Flush(), kResultOk);
    std::filesystem::remove_all(folder);
    SetUntilItEnds(recording);
  }
  EXPECT_EQ(trace.Count("reason=the file was removed"), 1u);
  EXPECT_EQ(trace.Lines().size(), 1u);
  EXPECT_FALSE(std::filesystem::exists(folder));
}

// Also where its folder is a link.
TEST_F(RecordingFaults, AreTracedWithTheNameThatWasGiven) {
  std::filesystem::create_directory(File("folder"));
  std::filesystem::create_directory_symlink("folder", File("link"));
  const TraceLog trace(0);
  {
    Recording recording(File("link/call.tessel"));
    ASSERT_EQ(recording.Flush(), kResultOk);
    std::filesystem::remove(File("folder/call.tessel"));
    SetUntilItEnds(recording);
  }
  EXPECT_EQ(trace.Count("ended, file=" + File("link/call.tessel") + ", reason=the file was removed"), 1u);
}

TEST_F(RecordingFaults, ARemovedFolderEndsARotatedSet) {
  const std::string folder = File("folder");
  std::filesystem::create_directory(folder);
  const TraceLog trace(0);
  {
    Recording recording(folder + "/call.tessel", {.largestFile = 2000, .files = 3});
    ASSERT_EQ(recording.Flush(), kResultOk);
    std::filesystem::remove_all(folder);
    SetUntilItEnds(recording);
  }
  EXPECT_EQ(trace.Lines().size(), 1u);
}

// The signal that comes with it would end the process.
TEST_F(RecordingFaults, TheProcessesLimitOfFilesEndsItWithWholeLines) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit small = before;
  small.rlim_cur = 5000;
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  {
    Recording recording(File());
    SetUntilItEnds(recording);
  }
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  const auto sets = OfType("set");
  EXPECT_GT(sets.size(), 10u);
  EXPECT_LE(Text(File()).size(), 5000u);
}

TEST_F(RecordingFaults, WhatCouldNotBeWrittenIsCounted) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit small = before;
  small.rlim_cur = 2000;
  const CallStore store(7, CallStore::kEndsCall);
  {
    Gate asked, goesOn;
    Recording recording(File(), {.filter = [&](auto, auto, auto) {
                          asked.Open();
                          goesOn.Wait();
                          return RecordingShows::kAll;
                        }});
    store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 0, false, false);
    asked.Wait();
    for (int i = 1; i <= 40; ++i) store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", i, false, false);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    goesOn.Open();
    while (recording.IsOn()) std::this_thread::yield();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  }
  const auto lost = OfType("lost");
  ASSERT_EQ(lost.size(), 1u);
  EXPECT_EQ(lost[0].Get("count"), "40");
  EXPECT_EQ(OfType("set").size(), 1u);
  EXPECT_EQ(Lines().back().Get("reason"), "File too large");
}

TEST_F(RecordingFaults, AFileThatIsLargerThanALongIsOverwritten) {
  {
    std::ofstream large(File());
    large.seekp(std::streamoff{3} << 30);  // Nothing is stored up to there.
    large.put('\n');
    ASSERT_TRUE(large.flush());
  }
  Recording recording(File());
  EXPECT_EQ(recording.Flush(), kResultOk);
  EXPECT_EQ(Lines().size(), 1u);
}

TEST_F(RecordingFaults, AFileOfAnotherRecordingIsLeftAlone) {
  const TraceLog trace(0);
  Recording first(File());
  ASSERT_EQ(first.Flush(), kResultOk);
  {
    Recording second(File());
    EXPECT_EQ(second.Flush(), kResultNotFound);
  }
  EXPECT_EQ(trace.Count("reason=another recording writes it"), 1u);
  EXPECT_EQ(first.Flush(), kResultOk);
  EXPECT_TRUE(IsJournalOn());
  EXPECT_EQ(Lines().size(), 1u);
}

TEST_F(RecordingFaults, LeaveTheFileToTheNextRecording) {
  Recording ended(File());
  ASSERT_EQ(ended.Flush(), kResultOk);
  StopJournal();
  while (ended.Flush() == kResultOk) {
  }
  Recording next(File());
  EXPECT_EQ(next.Flush(), kResultOk);
}

TEST_F(RecordingFaults, AFileThatAForkedProcessStillHasIsFree) {
  auto ended = std::make_unique<Recording>(File());
  ASSERT_EQ(ended->Flush(), kResultOk);
  const ::pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    for (;;) ::pause();
  }
  ended.reset();
  {
    Recording next(File());
    EXPECT_EQ(next.Flush(), kResultOk);
  }
  ASSERT_EQ(::kill(child, SIGKILL), 0);
  ASSERT_EQ(::waitpid(child, nullptr, 0), child);
}

// Trace lines would be in it.
TEST_F(RecordingFaults, AClosedStandardErrorIsNotTheFile) {
  for (const std::vector<int>& closed : {std::vector{STDERR_FILENO}, {STDIN_FILENO, STDERR_FILENO}}) {
    std::vector<int> before;
    for (const int stream : closed) before.push_back(::dup(stream));
    for (const int stream : closed) ::close(stream);
    std::int32_t result = kResultNotFound;
    {
      Recording recording(File());
      result = recording.Flush();
      util_adapter_trace(0, "UTIL", "a line", 6);
    }
    for (std::size_t i = 0; i < closed.size(); ++i) {
      ::dup2(before[i], closed[i]);
      ::close(before[i]);
    }
    EXPECT_EQ(result, kResultOk);
    EXPECT_EQ(Text(File()).find("a line"), std::string::npos) << closed.size();
  }
}

// It would be renamed. Here only its link would.
TEST_F(RecordingFaults, ARotatedSetOfADeviceIsRefused) {
  std::filesystem::create_symlink("/dev/null", File());
  const TraceLog trace(0);
  {
    Recording recording(File(), {.largestFile = 2000, .files = 2});
    EXPECT_EQ(recording.Flush(), kResultNotFound);
  }
  EXPECT_EQ(trace.Count("reason=it is no regular file"), 1u);
  Recording single(File());
  EXPECT_EQ(single.Flush(), kResultOk);
}

TEST_F(RecordingFaults, AreNotTracedWhenNothingIs) {
  const TraceLog trace(-1);
  {
    const Recording recording("/dev/full");
  }
  EXPECT_TRUE(trace.Lines().empty());
}

// What a sink does with a recording on its own thread, and on others.
struct CallingSink {
  static void Receive(void* context, int, const char*, const char*, unsigned int) {
    auto& self = *static_cast<CallingSink*>(context);
    if (self.isInside.exchange(true)) return;
    EXPECT_FALSE(self.ended->IsOn());
    EXPECT_EQ(self.ended->Flush(), kResultNotFound);
    EXPECT_EQ(self.other->Flush(), kResultOk);
    const CallStore store(9, CallStore::kEndsCall);
    store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 1, false, false);
    self.ended.reset();
    self.isDone = true;
  }

  std::unique_ptr<Recording> ended, other;
  std::atomic<bool> isInside{false}, isDone{false};
};

TEST_F(RecordingFaults, MayBeTracedToASinkThatCallsIn) {
  CallingSink sink;
  sink.other = std::make_unique<Recording>(File());
  sink.ended = std::make_unique<Recording>(File("removed"));
  ASSERT_EQ(sink.ended->Flush(), kResultOk);
  set_util_trace_sink(&CallingSink::Receive, &sink);
  std::filesystem::remove(File("removed"));
  while (!sink.isDone) std::this_thread::yield();
  set_util_trace_sink(nullptr, nullptr);
  EXPECT_EQ(sink.ended, nullptr);
  EXPECT_TRUE(IsJournalOn());
  sink.other.reset();
  EXPECT_EQ(OfType("set").size(), 1u);
}

}  // namespace
}  // namespace kalStore
