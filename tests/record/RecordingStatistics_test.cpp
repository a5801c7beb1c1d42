// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <thread>

#include "RecordingTest.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using ::testing::ElementsAre;
using ::testing::StartsWith;

class RecordingStatistics : public RecordingTest {
 protected:
  // The members of each line, one after the other.
  std::vector<std::string> Members() const {
    std::vector<std::string> members;
    for (const RecordedLine& line : OfType("statistics")) {
      if (line.Has("members")) members.push_back(line.Get("entity") + " " + line.Get("members"));
    }
    return members;
  }
};

TEST_F(RecordingStatistics, HasTheMembersThatChanged) {
  {
    const StatsRef<VideoStats> video(7);
    const StatsRef<ContentAudioStats> audio(8);
    Recording recording(File(), {.statisticsInterval = hours(1)});
    video->UpdateVideoCapturedFrameCnt(250);
    EXPECT_EQ(recording.Flush(), kResultOk);
    video->UpdateVideoCapturedFrameCnt(500);
    audio->updateTxBitRate(32000);
    audio->updateRxBitRate(19, 24000);
    kal::_tagSyncStatistics sync{};
    sync.value[29] = 5;
    audio->updateAVSyncStatistics(2, sync);
    EXPECT_EQ(recording.Flush(), kResultOk);
    EXPECT_EQ(recording.Flush(), kResultOk);
    video->UpdateVideoCapturedFrameCnt(0);
  }
  EXPECT_THAT(
      Members(),
      ElementsAre(R"(video {"call.noiseLevel":-1})", StartsWith("content audio {\"sent.noiseLevel[0]\":-100"),
                  R"(video {"call.capturedFrames":250})", R"(video {"call.capturedFrames":500})",
                  R"(content audio {"avSync2.value[29]":5,"received19.bitrate":24000,"sent.bitrate":32000})",
                  R"(video {"call.capturedFrames":0})"));
}

// Those of each stream and of no other one.
TEST_F(RecordingStatistics, HasTheMembersOfEachStream) {
  std::map<std::string, std::string> expected;
  {
    const StatsRef<AudioStats> audio(7);
    Recording recording(File(), {.statisticsInterval = hours(1)});
    ASSERT_EQ(recording.Flush(), kResultOk);
    for (std::int32_t stream = 0; stream < 20; ++stream) {
      const std::string number = std::to_string(stream);
      audio->updateRxBitRate(stream, 24000);
      expected["received" + number + ".bitrate"] = "24000";
      audio->updateE2EDelayInfo(stream, 30, 40, 50);
      for (const int i : {0, 1, 2})
        expected["received" + number + ".e2eDelay[" + std::to_string(i) + "]"] = std::to_string(30 + 10 * i);
      kal::_tagSyncStatistics sync{};
      for (std::size_t i = 0; i < std::size(sync.value); ++i) {
        sync.value[i] = static_cast<std::uint32_t>(100 + i);
        expected["avSync" + number + ".value[" + std::to_string(i) + "]"] = std::to_string(100 + i);
      }
      audio->updateAVSyncStatistics(stream, sync);
    }
  }
  const json::Value members = json::Deserialize(OfType("statistics").at(1).Get("members"));
  std::map<std::string, std::string> shown;
  for (const auto& [name, value] : members.ToObject()) shown[name] = json::SerializeValue(value);
  EXPECT_EQ(shown, expected);
}

// Nobody asks for them: they come by themselves.
TEST_F(RecordingStatistics, ComeAfterTheirInterval) {
  const StatsRef<VideoStats> video(7);
  const Recording recording(File(), {.statisticsInterval = milliseconds(1)});
  for (unsigned int frames = 1; Members().size() < 4; ++frames) {
    video->UpdateVideoCapturedFrameCnt(frames);
    std::this_thread::sleep_for(milliseconds(1));
  }
}

// A look begins an interval after the one before, and its line is later than that: of three lines, the last
// one comes an interval after the first one, however slow the machine is.
TEST_F(RecordingStatistics, ComeNoMoreOftenThanTheirInterval) {
  constexpr milliseconds kInterval(100);
  const StatsRef<VideoStats> video(7);
  const CallStore store(7, CallStore::kEndsCall);
  {
    // Of so few events, each one makes a look at the journal due.
    const Recording recording(File(), {.journalCapacity = 4, .statisticsInterval = kInterval});
    const auto end = std::chrono::steady_clock::now() + 5 * kInterval;
    for (int i = 1; std::chrono::steady_clock::now() < end; ++i) {
      video->UpdateVideoCapturedFrameCnt(static_cast<unsigned int>(i));
      store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", i, false, false);
      std::this_thread::sleep_for(milliseconds(1));
    }
  }
  std::vector<double> times;
  for (const RecordedLine& line : OfType("statistics")) {
    if (line.Has("members") && !line.Has("picture")) times.push_back(line.Number("t"));
  }
  ASSERT_FALSE(times.empty());
  times.pop_back();  // The end asks for the last look.
  constexpr double kError = 1e-9;
  for (std::size_t i = 2; i < times.size(); ++i)
    EXPECT_GE(times[i] - times[i - 2] + kError, std::chrono::duration<double>(kInterval).count());
}

TEST_F(RecordingStatistics, LeavesAReportersIntervalAlone) {
  Recording recording(File(), {.statisticsInterval = hours(1)});
  const StatsRef<VideoStats> video(7);
  const StatsRef<AudioStats> audio(7);
  video->UpdateNoiseLevel(3);
  audio->updateSpeechLevel(-30, -35, -28);
  recording.Flush();
  recording.Flush();
  st_KalVideoTxBlock videoBlock{};
  video->GetTxMediaInfo(&videoBlock, true);
  EXPECT_EQ(videoBlock.noiseLevel, 3);
  st_KalAudioBlock audioBlock{};
  audio->GetTxMediaInfo(&audioBlock, true);
  EXPECT_EQ(audioBlock.speechLevel[2], -28);
}

TEST_F(RecordingStatistics, TakesNoReferenceAndWritesNoEvent) {
  {
    Recording recording(File(), {.statisticsInterval = hours(1)});
    {
      const StatsRef<VideoStats> video(7);
      video->UpdateVideoCapturedFrameCnt(250);
      recording.Flush();
      recording.Flush();
    }
    EXPECT_FALSE(kalTesselInstant.isTesselEntityExisted(KAL_TESSEL_VIDEO, 7));
  }
  std::string events;
  for (const RecordedLine& line : OfType("statistics"))
    events += line.Get("event") + line.Get("references") + " ";
  EXPECT_EQ(events, "made1  released0 ended0 ");
}

TEST_F(RecordingStatistics, BeginsAnewWithAnObjectThatIsMadeAnew) {
  {
    Recording recording(File(), {.statisticsInterval = hours(1)});
    for (int i = 0; i < 2; ++i) {
      const StatsRef<VideoStats> video(7);
      video->UpdateVideoCapturedFrameCnt(250);
      recording.Flush();
    }
  }
  ASSERT_EQ(Members().size(), 2u);
  EXPECT_EQ(Members()[0], Members()[1]);
}

TEST_F(RecordingStatistics, GoesOnWithAnObjectOfWhichAReferenceIsReleased) {
  const StatsRef<VideoStats> video(7);
  {
    Recording recording(File(), {.statisticsInterval = hours(1)});
    const StatsRef<VideoStats> another(7);
    video->UpdateVideoCapturedFrameCnt(250);
    recording.Flush();
  }
  EXPECT_THAT(Members(),
              ElementsAre(R"(video {"call.noiseLevel":-1})", R"(video {"call.capturedFrames":250})"));
}

TEST_F(RecordingStatistics, WritesWhatIsNoNumberInJsonAsAString) {
  {
    const StatsRef<AudioStats> audio(7);
    const Recording recording(File(), {.statisticsInterval = hours(1)});
    audio->updateAECLevel(-std::numeric_limits<float>::infinity(), std::nanf(""), -2.5F);
  }
  EXPECT_EQ(Members().back(),
            R"(audio {"sent.aecLevel[0]":"-inf","sent.aecLevel[1]":"nan","sent.aecLevel[2]":-2.500000})");
}

TEST_F(RecordingStatistics, WritesTextAsAStringAlsoWhenItLooksLikeANumber) {
  {
    const StatsRef<VideoStats> video(7);
    Recording recording(File(), {.statisticsInterval = hours(1)});
    ASSERT_EQ(recording.Flush(), kResultOk);
    video->UpdateAV1Metrics(9, "10", "-1");
  }
  EXPECT_EQ(Members().back(), R"(video {"call.av1Metric":9,"call.av1Name1":"10","call.av1Name2":"-1"})");
}

TEST_F(RecordingStatistics, NameTheKindOfTheirObject) {
  {
    const StatsRef<AudioStats> audio(7);
    const StatsRef<VideoStats> video(7);
    const StatsRef<ContentVideoStats> contentVideo(7);
    const StatsRef<ContentAudioStats> contentAudio(7);
    const Recording recording(File(), {.statisticsInterval = hours(1)});
  }
  std::string kinds;
  for (const RecordedLine& line : OfType("statistics")) kinds += line.Get("entity") + "; ";
  EXPECT_EQ(kinds, "audio; video; content video; content audio; ");
}

TEST_F(RecordingStatistics, MayNeverComeByThemselves) {
  const StatsRef<VideoStats> video(7);
  {
    Recording recording(File(), {.statisticsInterval = milliseconds::max()});
    EXPECT_EQ(recording.Flush(), kResultOk);
    video->UpdateVideoCapturedFrameCnt(250);
  }
  EXPECT_EQ(Members().back(), R"(video {"call.capturedFrames":250})");
}

TEST_F(RecordingStatistics, LooksAtNothingWithoutAnInterval) {
  const StatsRef<VideoStats> video(7);
  for (const milliseconds none : {milliseconds(0), milliseconds(-1), milliseconds::min()}) {
    {
      Recording recording(File(), {.statisticsInterval = none});
      video->UpdateVideoCapturedFrameCnt(250);
      recording.Flush();
    }
    for (const RecordedLine& line : OfType("statistics")) EXPECT_TRUE(line.Has("picture"));
  }
}

}  // namespace
}  // namespace kalStore
