// SPDX-License-Identifier: Apache-2.0
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <optional>
#include <thread>

#include "RecordingTest.h"
#include "support/AllocationCount.h"
#include "support/TraceLog.h"
#include "tessel/inspect.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

constexpr std::uint64_t kLargest = 4000;

class RecordingRotation : public RecordingTest {
 protected:
  static void SetOften(Recording& recording, int count) {
    CallStore store(7, CallStore::kEndsCall);
    for (int i = 1; i <= count; ++i) {
      store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", i, false, false);
      if (i % 7 == 0) recording.Flush();
    }
  }
  std::string Part(std::size_t part) const { return File() + "." + std::to_string(part); }
};

TEST_F(RecordingRotation, IsOfOneFileWithoutALimitUnlessAskedFor) {
  const RecordingOptions options;
  EXPECT_EQ(options.files, 1u);
  EXPECT_EQ(options.largestFile, 0u);
  EXPECT_EQ(options.journalCapacity, 16384u);
  EXPECT_EQ(options.statisticsInterval, std::chrono::seconds(1));
}

TEST_F(RecordingRotation, EndsARecordingOfOneFile) {
  const TraceLog trace(0);
  {
    Recording recording(File(), {.largestFile = kLargest});
    SetOften(recording, 200);
    EXPECT_FALSE(recording.IsOn());
    EXPECT_FALSE(IsJournalOn());
  }
  EXPECT_LE(Text(File()).size(), kLargest);
  EXPECT_GT(Text(File()).size(), kLargest - 600);
  EXPECT_EQ(Lines().back().Get("reason"), "it has reached its largest size");
  EXPECT_EQ(
      trace.Count("kalStore::Recording, ended, file=" + File() + ", reason=it has reached its largest size"),
      1u);
  EXPECT_EQ(trace.Lines().size(), 1u);
}

TEST_F(RecordingRotation, HasTheLastFilesOfThatSizeWithNothingMissing) {
  const TraceLog trace(0);
  constexpr int kSets = 300;
  {
    Recording recording(File(), {.largestFile = kLargest, .files = 3});
    SetOften(recording, kSets);
    EXPECT_TRUE(recording.IsOn());
  }
  EXPECT_TRUE(trace.Lines().empty());
  const auto last = Lines();
  const std::string part = last.front().Get("part");
  const auto number = static_cast<std::size_t>(std::stoul(part));
  ASSERT_GT(number, 3u);
  EXPECT_TRUE(std::filesystem::exists(Part(number - 1)));
  EXPECT_TRUE(std::filesystem::exists(Part(number - 2)));
  for (std::size_t old = 1; old <= number - 3; ++old) EXPECT_FALSE(std::filesystem::exists(Part(old))) << old;
  EXPECT_FALSE(std::filesystem::exists(Part(number)));

  std::uint64_t next = 0;
  double time = 0;
  std::string value;
  for (const std::string& file : {Part(number - 2), Part(number - 1), File()}) {
    EXPECT_LE(Text(file).size(), kLargest);
    const auto lines = Lines(file);
    EXPECT_EQ(lines.front().Get("type"), "recording");
    EXPECT_EQ(lines.front().Get("wall"), last.front().Get("wall"));
    EXPECT_EQ(lines.back().Get("reason"), file == File() ? "" : "goes on in the next file");
    for (const RecordedLine& line : lines) {
      EXPECT_GE(line.Number("t"), time);
      time = line.Number("t");
      if (line.Get("type") == "set") value = line.Get("new");
      if (!line.Has("number")) continue;
      if (next != 0) {
        EXPECT_EQ(line.Get("number"), std::to_string(next));
      }
      next = std::stoull(line.Get("number")) + 1;
    }
  }
  EXPECT_EQ(value, std::to_string(kSets));
}

TEST_F(RecordingRotation, HasFilesThatOnlyTheirOwnerMayReadAndWrite) {
  {
    Recording recording(File(), {.largestFile = kLargest, .files = 2});
    SetOften(recording, 100);
  }
  using std::filesystem::perms;
  for (const std::string& file : {File(), Part(std::stoul(Lines().front().Get("part")) - 1)}) {
    EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);
  }
}

TEST_F(RecordingRotation, BeginsEachFileWithAPicture) {
  {
    CallStore store(8, CallStore::kEndsCall);
    store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "Codec", "opus", false, false);
    const StatsRef<VideoStats> statistics(8);
    statistics->UpdateVideoCapturedFrameCnt(250);
    Recording recording(File(), {.largestFile = kLargest, .files = 2});
    SetOften(recording, 100);
  }
  for (const std::string& file : {File(), Part(std::stoul(Lines().front().Get("part")) - 1)}) {
    std::string picture;
    for (const RecordedLine& line : Lines(file)) {
      if (!line.Has("picture")) continue;
      picture += line.Get("type") + line.Get("call") + line.Get("name") + line.Get("new") +
                 line.Get("members") + " ";
    }
    EXPECT_NE(picture.find("call8 set8Codecopus "), std::string::npos) << picture;
    EXPECT_NE(picture.find(R"(statistics8{"call.capturedFrames":250,"call.noiseLevel":-1} )"),
              std::string::npos)
        << picture;
  }
}

TEST_F(RecordingRotation, GoesOnInItsFolderWhenTheProcessLeavesIt) {
  const std::filesystem::path folder = std::filesystem::current_path();
  std::filesystem::current_path(std::filesystem::path(File()).parent_path());
  {
    Recording recording("call.tessel", {.largestFile = kLargest, .files = 2});
    std::filesystem::current_path(folder);
    SetOften(recording, 100);
    EXPECT_TRUE(recording.IsOn());
  }
  EXPECT_TRUE(std::filesystem::exists(Part(std::stoul(Lines().front().Get("part")) - 1)));
}

// Whatever name the next file cannot have.
TEST_F(RecordingRotation, LeavesTheFullFileItsNameWhenThereIsNoNextOne) {
  for (const char* const name : {"call.tessel.next", "call.tessel.1"}) {
    const TraceLog trace(0);
    std::filesystem::create_directory(File(name));
    {
      Recording recording(File(), {.largestFile = kLargest, .files = 3});
      SetOften(recording, 100);
      EXPECT_FALSE(recording.IsOn());
    }
    const auto lines = Lines();
    EXPECT_EQ(lines.front().Get("part"), "1");
    EXPECT_EQ(lines.back().Get("reason"), "Is a directory");
    EXPECT_EQ(lines[lines.size() - 2].Get("type"), "lost");
    EXPECT_EQ(OfType(lines, "recording").size(), 2u) << "it ends once";
    EXPECT_EQ(trace.Lines().size(), 1u);
    std::filesystem::remove(File(name));
    EXPECT_FALSE(std::filesystem::exists(File("call.tessel.next")));
  }
}

TEST_F(RecordingRotation, RemovesThePartsOfAnEarlierSetAndNothingElse) {
  {
    Recording recording(File(), {.largestFile = kLargest, .files = 4});
    SetOften(recording, 300);
  }
  const std::size_t last = std::stoul(Lines().front().Get("part"));
  ASSERT_TRUE(std::filesystem::exists(Part(last - 3)));
  const std::vector<std::string> others = {"call.tessel.0", "call.tessel.2025", "call.tessel.1x",
                                           "other.tessel.1"};
  std::ofstream(File(others[0])) << "something else\n";
  std::filesystem::copy_file(Part(last - 1), File("call.tessel.next"));  // Which a crash may leave.
  for (std::size_t i = 1; i < others.size(); ++i) std::filesystem::copy_file(Part(last - 1), File(others[i]));
  {
    const Recording recording(File());
  }
  for (std::size_t part = 1; part <= last; ++part) EXPECT_FALSE(std::filesystem::exists(Part(part))) << part;
  EXPECT_FALSE(std::filesystem::exists(File("call.tessel.next")));
  for (const std::string& other : others) EXPECT_TRUE(std::filesystem::exists(File(other))) << other;
}

// The name of the next file may be a link to a file of somebody else.
TEST_F(RecordingRotation, WritesThroughNoLink) {
  const auto link = [&](bool isSymbolic) {
    if (isSymbolic) {
      std::filesystem::create_symlink("foreign", File("call.tessel.next"));
    } else {
      std::filesystem::create_hard_link(File("foreign"), File("call.tessel.next"));
    }
  };
  for (const bool isSymbolic : {true, false}) {
    std::ofstream(File("foreign"), std::ios::trunc) << "something else\n";
    Recording recording(File(), {.largestFile = kLargest, .files = 3});
    ASSERT_EQ(recording.Flush(), kResultOk);
    link(isSymbolic);
    SetOften(recording, 100);
    EXPECT_TRUE(recording.IsOn());
    EXPECT_EQ(Text(File("foreign")), "something else\n");
    EXPECT_FALSE(std::filesystem::is_symlink(File()));
    EXPECT_FALSE(std::filesystem::exists(File("call.tessel.next")));
    EXPECT_GT(std::stoul(Lines().front().Get("part")), 1u);
  }
}

// What has the name of the next file is not opened for what it leads to, nor waited for.
TEST_F(RecordingRotation, ReplacesALinkToAnotherRecordingAndAPipe) {
  Recording other(File("foreign"));
  ASSERT_EQ(other.Flush(), kResultOk);
  for (const bool isLink : {true, false}) {
    Recording recording(File(), {.largestFile = kLargest, .files = 3});
    ASSERT_EQ(recording.Flush(), kResultOk);
    if (isLink) {
      std::filesystem::create_symlink("foreign", File("call.tessel.next"));
    } else {
      ASSERT_EQ(::mkfifo(File("call.tessel.next").c_str(), S_IRUSR | S_IWUSR), 0);
    }
    SetOften(recording, 100);
    EXPECT_TRUE(recording.IsOn());
    EXPECT_GT(std::stoul(Lines().front().Get("part")), 1u);
  }
  EXPECT_TRUE(other.IsOn());
}

// Who looks meanwhile, or begins a recording of the name, finds the full file or the next one.
TEST_F(RecordingRotation, AlwaysHasAFileOfItsName) {
  std::atomic<bool> isOver{false};
  std::uint64_t missed = 0, taken = 0;
  {
    const TraceLog trace(0);
    Recording recording(File(), {.largestFile = kLargest, .files = 2});
    ASSERT_EQ(recording.Flush(), kResultOk);
    std::thread looking([&] {
      while (!isOver) missed += std::filesystem::exists(File()) ? 0 : 1;
    });
    std::thread beginning([&] {
      while (!isOver) {
        Recording other(File());
        taken += other.Flush() == kResultOk ? 1 : 0;
      }
    });
    SetOften(recording, 3000);
    isOver = true;
    looking.join();
    beginning.join();
    EXPECT_TRUE(recording.IsOn());
  }
  EXPECT_EQ(missed, 0u);
  EXPECT_EQ(taken, 0u);
  EXPECT_GT(std::stoul(Lines().front().Get("part")), 50u);
}

TEST_F(RecordingRotation, IsWhereTheFileIsThatALinkNames) {
  const std::string link = File("links/call");
  for (int i = 0; i < 2; ++i) {
    std::filesystem::create_directory(File("links"));
    std::filesystem::create_symlink("../call.tessel", link);
    Recording recording(link, {.largestFile = kLargest, .files = 2});
    EXPECT_EQ(recording.Flush(), kResultOk);
    std::filesystem::remove_all(File("links"));
    SetOften(recording, 100);
    EXPECT_TRUE(recording.IsOn());
  }
  EXPECT_TRUE(std::filesystem::exists(Part(std::stoul(Lines().front().Get("part")) - 1)));
}

TEST_F(RecordingRotation, RemovesTheNameOfAPartThatACrashLeftToTheFile) {
  {
    const Recording recording(File());
  }
  std::filesystem::create_hard_link(File(), Part(2));
  {
    Recording recording(File(), {.largestFile = kLargest, .files = 5});
    EXPECT_EQ(recording.Flush(), kResultOk);
    EXPECT_FALSE(std::filesystem::exists(Part(2)));
    SetOften(recording, 200);
    EXPECT_TRUE(recording.IsOn());
  }
}

// In whichever file: the members of a picture are those of an object that was made before.
TEST_F(RecordingRotation, HasTheMembersOfEachObjectAfterTheLineThatItWasMade) {
  constexpr int kObjects = 200;
  {
    Recording recording(
        File(),
        {.statisticsInterval = std::chrono::hours(1), .largestFile = kLargest, .files = 10 * kObjects});
    for (int i = 0; i < kObjects; ++i) {
      const StatsRef<VideoStats> statistics(7);
      statistics->UpdateVideoCapturedFrameCnt(250);
      ASSERT_EQ(recording.Flush(), kResultOk);
    }
  }
  const std::size_t last = std::stoul(Lines().front().Get("part"));
  ASSERT_GT(last, 20u);
  int made = 0;
  bool isMissing = false;
  for (std::size_t part = 1; part <= last; ++part) {
    for (const RecordedLine& line : OfType(Lines(part == last ? File() : Part(part)), "statistics")) {
      if (line.Has("members")) isMissing = false;
      if (line.Get("event") == "made") isMissing = ++made != 0;
      if (line.Get("event") != "ended") continue;
      EXPECT_FALSE(isMissing) << "object " << made << ", part " << part;
    }
  }
  EXPECT_EQ(made, kObjects);
}

// The picture of the next file is newer than the look whose lines found no room.
TEST_F(RecordingRotation, EndsWithTheLastMembersWhereTheyChangeBeforeTheNextFile) {
  const StatsRef<AudioStats> statistics(7);
  const CallStore store(7, CallStore::kEndsCall);
  unsigned int bitrate = 0;
  std::atomic<bool> isSet{false};
  std::optional<AtAllocation> copied;  // Begins and fires on the recording's thread, in the look after a set.
  Recording recording(File(), {.statisticsInterval = std::chrono::hours(1),
                               .largestFile = kLargest,
                               .files = 2,
                               .filter = [&](auto, auto, auto) {
                                 if (!isSet.exchange(false)) return RecordingShows::kAll;
                                 copied.reset();
                                 copied.emplace(sizeof(InspectedAudio),
                                                [&] { statistics->updateTxBitRate(++bitrate); });
                                 return RecordingShows::kAll;
                               }});
  for (int i = 1; i <= 200; ++i) {
    isSet = true;
    store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", i, false, false);
    ASSERT_EQ(recording.Flush(), kResultOk);
    ASSERT_EQ(recording.Flush(), kResultOk);  // What changed after the look.
    std::string shown;
    for (const RecordedLine& line : OfType("statistics")) shown = line.Get("members");
    EXPECT_NE(shown.find("\"sent.bitrate\":" + std::to_string(bitrate)), std::string::npos) << shown;
    statistics->updateTxBitRate(++bitrate);
  }
  EXPECT_GT(std::stoul(Lines().front().Get("part")), 5u);
}

// A part begins after the lines of the one before, of whatever type.
TEST_F(RecordingRotation, GoesOnInTimeAfterStatistics) {
  const StatsRef<VideoStats> statistics(7);
  {
    Recording recording(
        File(), {.statisticsInterval = std::chrono::hours(1), .largestFile = kLargest, .files = 1000});
    for (unsigned int i = 1; i <= 200; ++i) {
      statistics->UpdateVideoCapturedFrameCnt(i);
      ASSERT_EQ(recording.Flush(), kResultOk);
    }
  }
  const std::size_t last = std::stoul(Lines().front().Get("part"));
  ASSERT_GT(last, 2u);
  double time = 0;
  for (std::size_t part = 1; part <= last; ++part) {
    for (const RecordedLine& line : Lines(part == last ? File() : Part(part))) {
      EXPECT_GE(line.Number("t"), time) << "part " << part;
      time = line.Number("t");
    }
  }
}

TEST_F(RecordingRotation, DoesNotEndInFilesOfAPictureAlone) {
  CallStore store(8, CallStore::kEndsCall);
  const std::string large(2 * kLargest, 'x');
  store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "Large", ConfigData(large), false, false);
  {
    Recording recording(File(), {.largestFile = kLargest, .files = 100000});
    SetOften(recording, 5);
  }
  EXPECT_GT(std::stoul(Lines().front().Get("part")), 5u);
  EXPECT_LT(std::stoul(Lines().front().Get("part")), 20u);
}

// What the journal cuts is written whole afterwards.
TEST_F(RecordingRotation, HasFilesOfThatSizeAlsoOfLongValues) {
  CallStore store(7, CallStore::kEndsCall);
  {
    // A look at statistics would find the file full.
    Recording recording(
        File(), {.statisticsInterval = std::chrono::hours(0), .largestFile = kLargest, .files = 1000});
    for (std::size_t i = 1; i <= 100; ++i) {
      const std::string value(500 + i, 'v');
      store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Layout", ConfigData(value), false, false);
      ASSERT_EQ(recording.Flush(), kResultOk);
    }
  }
  const std::size_t last = std::stoul(Lines().front().Get("part"));
  ASSERT_GT(last, 10u);
  for (std::size_t part = 1; part <= last; ++part)
    EXPECT_LE(Text(part == last ? File() : Part(part)).size(), kLargest) << "part " << part;
}

TEST_F(RecordingRotation, HasFilesOfThatSizeAlsoOfManyMembers) {
  const StatsRef<AudioStats> statistics(7);
  {
    Recording recording(
        File(), {.statisticsInterval = std::chrono::hours(1), .largestFile = kLargest, .files = 1000});
    for (std::int32_t i = 1; i <= 60; ++i) {
      for (std::int32_t stream = 0; stream < i % 20; ++stream)
        statistics->updateRxBitRate(stream, static_cast<std::uint32_t>(i));
      ASSERT_EQ(recording.Flush(), kResultOk);
    }
  }
  const std::size_t last = std::stoul(Lines().front().Get("part"));
  ASSERT_GT(last, 5u);
  for (std::size_t part = 1; part <= last; ++part)
    EXPECT_LE(Text(part == last ? File() : Part(part)).size(), kLargest) << "part " << part;
}

// A look that finds no room leaves what it found to the next file's picture, and the next lines go there.
TEST_F(RecordingRotation, HasLinesBesideThePictureInEachFileOfStatistics) {
  CallStore store(8, CallStore::kEndsCall);
  const std::string large(2 * kLargest, 'x');
  store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "Large", ConfigData(large), false, false);
  const StatsRef<VideoStats> statistics(7);
  {
    Recording recording(
        File(), {.statisticsInterval = std::chrono::hours(1), .largestFile = kLargest, .files = 1000});
    for (unsigned int i = 1; i <= 10; ++i) {
      statistics->UpdateVideoCapturedFrameCnt(i);
      ASSERT_EQ(recording.Flush(), kResultOk);
    }
  }
  const std::size_t last = std::stoul(Lines().front().Get("part"));
  ASSERT_GT(last, 2u);
  for (std::size_t part = 1; part < last; ++part) {
    const auto lines = OfType(Lines(Part(part)), "statistics");
    EXPECT_FALSE(lines.back().Has("picture")) << "part " << part;
  }
}

}  // namespace
}  // namespace kalStore
