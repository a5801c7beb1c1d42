// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>

#include "RecordingTest.h"
#include "support/TraceLog.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

// When not null, a file that gets another name before a recording locks it, and one that takes its place.
struct Replaced {
  std::string file, name, other;
};
std::atomic<const Replaced*> replacedBeforeLock{nullptr};

// Whether a file may have two names.
std::atomic<bool> mayBeTwo{true};
// When not null, a file that is removed when a recording gives another one its second name.
std::atomic<const char*> removedAtLink{nullptr};

// Recordings whose files have names that others write, or would write.
class RecordingNames : public RecordingTest {
 protected:
  // Sets until a recording of a set has gone on in several files, or has ended.
  static void SetOften(Recording& recording) {
    CallStore store(7, CallStore::kEndsCall);
    for (int i = 1; i <= 200 && recording.IsOn(); ++i) {
      store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", i, false, false);
      if (i % 7 == 0) recording.Flush();
    }
  }

  const RecordingOptions m_set{.largestFile = 4000, .files = 2};
};

TEST_F(RecordingNames, OfFullFilesReplaceNoFileThatAnotherRecordingWrites) {
  const TraceLog trace(0);
  Recording other(File("call.tessel.1"));
  ASSERT_EQ(other.Flush(), kResultOk);
  {
    Recording recording(File(), m_set);
    SetOften(recording);
  }
  EXPECT_EQ(trace.Matching("kalStore::Recording"),
            std::vector{"kalStore::Recording, ended, file=" + File() +
                        ", reason=another recording writes its next part"});
  EXPECT_EQ(Lines().back().Get("reason"), "another recording writes its next part");
  EXPECT_EQ(other.Flush(), kResultOk);
}

TEST_F(RecordingNames, LikeThoseOfPartsAreLeftToARecordingThatWritesThem) {
  Recording other(File("call.tessel.1"), m_set);
  ASSERT_EQ(other.Flush(), kResultOk);
  Recording recording(File());
  ASSERT_EQ(recording.Flush(), kResultOk);
  EXPECT_EQ(other.Flush(), kResultOk);
  EXPECT_TRUE(std::filesystem::exists(File("call.tessel.1")));
}

TEST_F(RecordingNames, ThatAnotherFileHasTakenMeanwhileAreLeftToIt) {
  const TraceLog trace(0);
  auto recording = std::make_unique<Recording>(File(), m_set);
  ASSERT_EQ(recording->Flush(), kResultOk);
  std::filesystem::rename(File(), File("moved"));
  Recording other(File());
  ASSERT_EQ(other.Flush(), kResultOk);
  SetOften(*recording);
  recording.reset();
  EXPECT_EQ(trace.Count("reason=another file has its name"), 1u);
  EXPECT_EQ(Lines(File("moved")).back().Get("reason"), "another file has its name");
  EXPECT_EQ(other.Flush(), kResultOk);
  EXPECT_FALSE(std::filesystem::exists(File("call.tessel.1")));
}

TEST_F(RecordingNames, OfFilesThatBecomePartsBeforeTheyAreLockedAreRefused) {
  const TraceLog trace(0);
  std::ofstream(File()) << "full\n";
  std::ofstream(File("next")) << "next\n";
  const Replaced replaced{File(), File("call.tessel.1"), File("next")};
  replacedBeforeLock = &replaced;
  {
    Recording recording(File());
    EXPECT_EQ(recording.Flush(), kResultNotFound);
  }
  EXPECT_EQ(trace.Count("reason=another recording writes it"), 1u);
  EXPECT_EQ(Text(File("call.tessel.1")), "full\n");
  EXPECT_EQ(Text(File()), "next\n");
}

TEST_F(RecordingNames, MayBeOneForEachFile) {
  mayBeTwo = false;
  {
    Recording recording(File(), m_set);
    SetOften(recording);
    EXPECT_TRUE(recording.IsOn());
  }
  mayBeTwo = true;
  const std::size_t part = std::stoul(Lines().front().Get("part"));
  ASSERT_GT(part, 2u);
  EXPECT_EQ(Lines(File("call.tessel." + std::to_string(part - 1))).back().Get("reason"),
            "goes on in the next file");
}

TEST_F(RecordingNames, AreThoseOfBeforeWhenTheNextFileIsGone) {
  const std::string next = File("call.tessel.next");
  for (const bool isPossible : {true, false}) {
    mayBeTwo = isPossible;
    removedAtLink = next.c_str();
    const TraceLog trace(0);
    {
      Recording recording(File(), m_set);
      SetOften(recording);
      EXPECT_FALSE(recording.IsOn());
    }
    mayBeTwo = true;
    EXPECT_EQ(Lines().front().Get("part"), "1");
    EXPECT_EQ(Lines().back().Get("reason"), "No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(File("call.tessel.1"))) << isPossible;
  }
}

}  // namespace
}  // namespace kalStore

// The recording's library calls these, for the program comes first where they are looked up.
extern "C" __attribute__((visibility("default"))) int link(const char* file, const char* name) {
  if (const char* const removed = kalStore::removedAtLink.exchange(nullptr)) std::filesystem::remove(removed);
  if (kalStore::mayBeTwo) return static_cast<int>(::syscall(SYS_linkat, AT_FDCWD, file, AT_FDCWD, name, 0));
  errno = EPERM;
  return -1;
}
extern "C" __attribute__((visibility("default"))) int flock(int descriptor, int operation) {
  if (const auto* const replaced = kalStore::replacedBeforeLock.exchange(nullptr)) {
    std::filesystem::rename(replaced->file, replaced->name);
    std::filesystem::rename(replaced->other, replaced->file);
  }
  return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}
