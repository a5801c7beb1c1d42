// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <chrono>
#include <ctime>
#include <stdexcept>
#include <thread>

#include "RecordingTest.h"
#include "journal/component.h"
#include "support/Gate.h"
#include "support/TraceLog.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

constexpr std::uint32_t kCall = 7;
constexpr KalConfigGroup kVideo = KAL_CONFIG_GROUP_VIDEO;

class RecordedEvents : public RecordingTest {
 protected:
  // The lines between the first picture and the end: "type call group/name old new ...", without what differs
  // from run to run.
  std::vector<std::string> Events() const {
    std::vector<std::string> events;
    for (const RecordedLine& line : Lines()) {
      if (line.Has("picture") || line.Get("type") == "recording") continue;
      std::string text = line.Get("type");
      for (const char* const member :
           {"event", "entity", "call", "group", "name", "old", "new", "transient", "result", "told", "count",
            "references", "id", "way", "dropped", "threw", "cut"}) {
        if (line.Has(member)) text += std::string(" ") + member + "=" + line.Get(member);
      }
      events.push_back(text);
    }
    return events;
  }
};

TEST(RecordingOptions, HaveOneFileWithoutALimitUnlessChosen) {
  const RecordingOptions options;
  EXPECT_EQ(options.journalCapacity, 16384u);
  EXPECT_EQ(options.statisticsInterval, std::chrono::seconds(1));
  EXPECT_EQ(options.largestFile, 0u);
  EXPECT_EQ(options.files, 1u);
  EXPECT_FALSE(options.filter);
}

TEST_F(RecordedEvents, AreWhatTheCallDid) {
  {
    const Recording recording(File());
    IKalConfig* store = nullptr;
    ASSERT_EQ(CreateKalConfig(kCall, &store), kResultOk);
    const auto id = store->SubscribeConfig(
        kVideo, "MaxFps", [](const KalConfigEvent&) { throw std::runtime_error("no camera"); }, nullptr,
        false);
    EXPECT_THROW(store->SetKalConfig(kVideo, "MaxFps", 15, false, false), std::runtime_error);
    store->SetKalConfig(kVideo, "MaxFps", 15, false, false);
    store->SetKalConfig(kVideo, "Quiet", 1, false, false);
    EXPECT_THROW(store->SetKalConfig(kVideo, "MaxFps", 30, false, true), std::runtime_error);
    store->UnsubscribeConfig(id);
    store->RemoveKalConfig(kVideo, "MaxFps");
    store->SetKalConfig(kVideo, "MaxWidth", 640, false, false);
    store->RemoveKalConfig(kVideo, "MaxWidth");
    store->RemoveKalConfigByGroup(kVideo);
    store->BindConfig(KAL_CONFIG_GROUP_METRICS, "Load",
                      [](const KalConfigEvent&) { return ConfigData(0.5); });
    ConfigData load;
    store->GetDynamicConfig(KAL_CONFIG_GROUP_METRICS, "Load", load, {});
    store->ApplyKalConfigs("{\"Audio\":[{\"key\":\"Codec\",\"value\":\"opus\"}]}");
    store->ApplyKalConfigs("no document");
    {
      const StatsRef<VideoStats> statistics(kCall);
    }
    ReleaseKalConfig(store);
    CleanUpKalConfig(kCall);
  }
  EXPECT_THAT(
      Events(),
      ElementsAre(
          "call event=made call=7 references=2", "subscribe call=7 group=Video name=MaxFps id=1",
          "set call=7 group=Video name=MaxFps new=15 result=told told=1",
          "deliver call=7 group=Video name=MaxFps new=15 id=1 way=direct threw=no camera",
          "set call=7 group=Video name=MaxFps old=15 new=15 result=unchanged told=0",
          "set call=7 group=Video name=Quiet new=1 result=nobody told=0",
          "set call=7 group=Video name=MaxFps old=15 new=30 transient=true result=told told=1",
          "deliver call=7 group=Video name=MaxFps old=15 new=30 id=1 way=direct threw=no camera",
          "unsubscribe call=7 group=Video name=MaxFps id=1", "remove call=7 group=Video name=MaxFps count=0",
          "set call=7 group=Video name=MaxWidth new=640 result=nobody told=0",
          "remove call=7 group=Video name=MaxWidth old=640 count=1", "remove call=7 group=Video count=1",
          "bind event=bound call=7 group=Metrics name=Load id=2",
          "bind event=asked call=7 group=Metrics name=Load new=0.5",
          "set call=7 group=Audio name=Codec new=opus result=nobody told=0", "apply call=7 count=1",
          "apply call=7 result=refused count=0", "statistics event=made entity=video call=7 references=1",
          "statistics event=released entity=video call=7 references=0",
          "statistics event=ended entity=video call=7 references=0",
          "call event=cleaned up call=7 references=0", "call event=ended call=7 references=0",
          "unsubscribe call=7 group=Metrics name=Load id=2"));
}

TEST_F(RecordedEvents, AreAlsoWhatComesToNothing) {
  {
    const Recording recording(File());
    const CallStore store(kCall, CallStore::kEndsCall);
    const CallStore shared(kCall);
    store->SubscribeConfig(kVideo, "MaxFps", [](const KalConfigEvent&) {}, nullptr, false);
    ConfigData value;
    store->GetDynamicConfig(kVideo, "MaxFps", value, {});
    store->RemoveKalConfig(kVideo, "MaxFps");
    store->RemoveKalConfigByGroup(kVideo);
    store->ApplyKalConfigs("{}");
  }
  EXPECT_THAT(
      Events(),
      ElementsAre("call event=made call=7 references=2", "call event=shared call=7 references=3",
                  "subscribe call=7 group=Video name=MaxFps id=1",
                  "bind event=asked call=7 group=Video name=MaxFps result=refused",
                  "remove call=7 group=Video name=MaxFps count=0", "remove call=7 group=Video count=0",
                  "apply call=7 count=0", "call event=cleaned up call=7 references=1",
                  "call event=ended call=7 references=0", "unsubscribe call=7 group=Video name=MaxFps id=1"));
}

TEST_F(RecordedEvents, HaveTheNumbersTimesAndThreadsOfTheJournal) {
  std::vector<JournalEvent> events;
  {
    const Recording recording(File());
    JournalReader reader;
    CallStore store(kCall, CallStore::kEndsCall);
    store->SubscribeConfig(
        kVideo, "MaxFps",
        [](const KalConfigEvent&) { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }, nullptr,
        false);
    std::thread([&] { store->SetKalConfig(kVideo, "MaxFps", 15, false, false); }).join();
    for (JournalEvent event; reader.Next(event);) events.push_back(event);
  }
  ASSERT_EQ(events.size(), 4u);
  ASSERT_GT(events[3].ranNs, 0);
  const auto lines = Lines();
  double last = 0;
  for (std::size_t i = 0; i < events.size(); ++i) {
    const RecordedLine& line = lines.at(i + 1);
    EXPECT_EQ(line.Get("number"), std::to_string(events[i].number));
    EXPECT_EQ(line.Number("thread"), static_cast<double>(events[i].threadId));
    if (i > 0) {
      constexpr double kSecond = 1e9, kError = 1e-6;
      EXPECT_NEAR(line.Number("t") - lines[1].Number("t"),
                  static_cast<double>(events[i].timeNs - events[0].timeNs) / kSecond, kError);
    }
    EXPECT_EQ(line.Has("wait_us"), i == 3);
    EXPECT_EQ(line.Has("run_us"), events[i].ranNs != 0);
    EXPECT_GE(line.Number("t"), last);
    if (line.Get("type") != "deliver") last = line.Number("t");
  }
  EXPECT_EQ(lines.at(4).Get("cause"), std::to_string(events[2].number));
  constexpr double kNsOfUs = 1000;
  EXPECT_DOUBLE_EQ(lines[4].Number("wait_us"), static_cast<double>(events[3].waitedNs) / kNsOfUs);
  EXPECT_DOUBLE_EQ(lines[4].Number("run_us"), static_cast<double>(events[3].ranNs) / kNsOfUs);
}

TEST_F(RecordedEvents, SayOnWhatWayAChangeWasDelivered) {
  {
    const Recording recording(File());
    const CallStore store(kCall, CallStore::kEndsCall);
    ACmThread worker("worker"), notStarted("not started");
    worker.Start();
    const auto subscribe = [&](ACmThread* thread, bool isPosted) {
      store->SubscribeConfig(kVideo, "MaxFps", [](const KalConfigEvent&) {}, thread, isPosted);
    };
    subscribe(nullptr, false);
    subscribe(&worker, false);
    subscribe(&notStarted, true);
    subscribe(&worker, true);
    const TraceLog noQueue(0);
    store->SetKalConfig(kVideo, "MaxFps", 15, false, false);
    worker.Stop();
  }
  std::string ways;
  for (const RecordedLine& line : OfType("deliver"))
    ways += line.Get("id") + " " + line.Get("way") + (line.Get("dropped") == "true" ? "dropped" : "") + "; ";
  EXPECT_EQ(ways, "1 direct; 2 handed over; 3 dropped; 4 posted; ");
}

// The recording keeps the origins of some labels, and none of a document's place.
TEST_F(RecordedEvents, SayWhoDidThemForManyLabelsAndPlaces) {
  constexpr int kLabels = 20;
  {
    const Recording recording(File());
    const CallStore store(kCall, CallStore::kEndsCall);
    for (int i = 0; i < 2 * kLabels; ++i) {
      const std::string label = "controller " + std::to_string(i % kLabels);
      const JournalOrigin origin(label.c_str());
      store->SetKalConfig(kVideo, "MaxFps", i, false, false);
    }
    for (int i = 0; i < 2; ++i) {
      store->ApplyKalConfigs(
          "{\"Audio\":[{\"key\":\"A\",\"value\":\"1\"},{\"key\":\"B\",\"value\":\"2\"},\n"
          "{\"key\":\"C\",\"value\":\"3\"}]}");
    }
  }
  for (const RecordedLine& line : OfType("apply")) EXPECT_EQ(line.Origin("line"), "");
  const auto sets = OfType("set");
  ASSERT_EQ(sets.size(), 2u * kLabels + 6);
  for (int i = 0; i < 2 * kLabels; ++i) {
    EXPECT_EQ(sets[i].Origin("label"), "controller " + std::to_string(i % kLabels));
    EXPECT_EQ(sets[i].Origin("line"), "");
  }
  const char* const places[][2] = {{"1", "18"}, {"1", "42"}, {"2", "8"}};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(sets[2 * kLabels + i].Origin("line"), places[i % 3][0]);
    EXPECT_EQ(sets[2 * kLabels + i].Origin("column"), places[i % 3][1]);
    EXPECT_EQ(sets[2 * kLabels + i].Origin("document"), "");
  }
}

// Also where all are of one caller, and of one look at the journal.
TEST_F(RecordedEvents, OfAnImportSayWhereItsDocumentHasThem) {
  {
    Gate asked, goesOn;
    const Recording recording(File(), {.filter = [&](auto, auto, auto) {
                                asked.Open();
                                goesOn.Wait();
                                return RecordingShows::kAll;
                              }});
    KalConfigHelper facade(kCall);
    component::SetInFacade(facade, 15);
    asked.Wait();
    for (int i = 0; i < 2; ++i) component::Apply(facade, R"({"Video":[{"key":"MaxFps","value":"20"}]})");
    goesOn.Open();
  }
  const auto sets = OfType("set");
  ASSERT_EQ(sets.size(), 3u);
  EXPECT_THAT(sets[0].Origin("symbol"), StartsWith("component::SetInFacade("));
  for (const std::size_t i : {1u, 2u}) {
    EXPECT_THAT(sets[i].Origin("symbol"), StartsWith("component::Apply("));
    EXPECT_EQ(sets[i].Origin("line"), "1");
  }
}

TEST_F(RecordedEvents, SayWhatAnImportThrew) {
  {
    const Recording recording(File());
    const CallStore store(kCall, CallStore::kEndsCall);
    store->SubscribeConfig(
        kVideo, "MaxFps", [](const KalConfigEvent&) { throw std::runtime_error("no camera"); }, nullptr,
        false);
    EXPECT_ANY_THROW(store->ApplyKalConfigs(R"({"Video":[{"key":"MaxFps","value":"15"}]})"));
  }
  EXPECT_EQ(OfType("apply").at(0).Get("threw"), "no camera");
}

TEST_F(RecordedEvents, SayWhoDidThem) {
  {
    const Recording recording(File());
    CallStore store(kCall, CallStore::kEndsCall);
    const JournalOrigin origin("bandwidth controller");
    store->SetKalConfig(kVideo, "MaxFps", 15, false, false);
    const JournalDocument document("lab.json");
    store->ApplyKalConfigs("{\n \"Video\":[{\"key\":\"MaxFps\",\"value\":\"20\"}]}");
  }
  const auto sets = OfType("set");
  ASSERT_EQ(sets.size(), 2u);
  EXPECT_EQ(sets[0].Origin("label"), "bandwidth controller");
  EXPECT_NE(sets[0].Origin("module"), "");
  EXPECT_EQ(sets[0].Origin("document"), "");
  EXPECT_EQ(sets[1].Origin("document"), "lab.json");
  EXPECT_EQ(sets[1].Origin("line"), "2");
  EXPECT_EQ(sets[1].Origin("column"), "18");
}

TEST_F(RecordedEvents, SayWhatOfThemIsCut) {
  const std::string name(kJournalLongestValue + 1, 'n'), value(kJournalLongestValue + 1, 'v');
  const std::string label(kJournalLongestLabel + 1, 'l'), file(kJournalLongestDetail + 1, 'd');
  {
    const Recording recording(File());
    CallStore store(kCall, CallStore::kEndsCall);
    const JournalOrigin origin(label.c_str());
    store->SetKalConfig(kVideo, name.c_str(), ConfigData(value), false, false);
    const JournalDocument document(file.c_str());
    store->RemoveKalConfig(kVideo, name.c_str());
    store->ApplyKalConfigs("{\"Audio\":[{\"key\":\"A\",\"value\":\"1\"}]}");
  }
  const auto sets = OfType("set");
  ASSERT_EQ(sets.size(), 2u);
  EXPECT_EQ(sets[0].Get("cut"), R"(["name","new","label"])");
  EXPECT_EQ(sets[0].Get("new"), value.substr(1));
  EXPECT_EQ(OfType("remove").at(0).Get("cut"), R"(["name","old","label"])");
  EXPECT_EQ(sets[1].Get("cut"), R"(["label","document"])");
}

TEST_F(RecordedEvents, OfAGroupThatIsNoneHaveNoGroup) {
  {
    const Recording recording(File());
    CallStore store(kCall, CallStore::kEndsCall);
    store->SetKalConfig(static_cast<KalConfigGroup>(13), "MaxFps", 15, false, false);
    store->SetKalConfig(kVideo, "", 15, false, false);
  }
  EXPECT_THAT(Events(), ElementsAre("call event=made call=7 references=2",
                                    "set call=7 name=MaxFps new=15 result=refused told=0",
                                    "set call=7 group=Video name= new=15 result=refused told=0",
                                    "call event=cleaned up call=7 references=1",
                                    "call event=ended call=7 references=0"));
}

TEST_F(RecordedEvents, OfBytesThatAreNoTextReadBackToThem) {
  const std::string name = "a\"\\\xFF\n\xC3\xA9\x01", value("\0\x80z", 3);
  {
    const Recording recording(File());
    CallStore store(kCall, CallStore::kEndsCall);
    store->SetKalConfig(kVideo, name.c_str(), ConfigData(value), false, false);
  }
  const auto sets = OfType("set");
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0].Get("name"), name);
  EXPECT_EQ(sets[0].Get("new"), value);
}

TEST_F(RecordedEvents, BeginWithTheVersionAndTheTimeOfDayAndEndWithTheEnd) {
  {
    const Recording recording(File());
  }
  const auto lines = Lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].Get("type"), "recording");
  EXPECT_EQ(lines[0].Get("t"), "0");
  EXPECT_EQ(lines[0].Get("version"), "1");
  EXPECT_THAT(lines[0].Get("wall"),
              MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6}Z"));
  EXPECT_FALSE(lines[0].Has("part"));
  EXPECT_EQ(lines[1].Get("event"), "ended");
  EXPECT_FALSE(lines[1].Has("reason"));
}

TEST_F(RecordedEvents, BeginAtTheirTimeOfDay) {
  using std::chrono::microseconds, std::chrono::system_clock;
  const auto now = [] { return std::chrono::floor<microseconds>(system_clock::now()); };
  const auto before = now();
  {
    const Recording recording(File());
  }
  const auto after = now();
  const std::string wall = Lines().at(0).Get("wall");
  std::tm parts{};
  const char* const point = ::strptime(wall.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  ASSERT_NE(point, nullptr) << wall;
  const auto time = system_clock::from_time_t(::timegm(&parts)) + microseconds(std::stol(point + 1));
  EXPECT_LE(before, time) << wall;
  EXPECT_GE(after, time) << wall;
}

TEST_F(RecordedEvents, AreInTheFileAfterAFlush) {
  Recording recording(File());
  CallStore store(kCall, CallStore::kEndsCall);
  for (int fps = 1; fps <= 100; ++fps) {
    store->SetKalConfig(kVideo, "MaxFps", fps, false, false);
    if (fps % 10 != 0) continue;
    ASSERT_EQ(recording.Flush(), kResultOk);
    const auto sets = OfType("set");
    ASSERT_EQ(sets.size(), static_cast<std::size_t>(fps));
    EXPECT_EQ(sets.back().Get("new"), std::to_string(fps));
  }
}

// The recording is held up while the journal's ring is overwritten.
TEST_F(RecordedEvents, ThatWereOverwrittenAreCountedAsLost) {
  Gate asked, goesOn;
  RecordingOptions options;
  options.journalCapacity = 16;
  options.filter = [&](std::uint32_t, KalConfigGroup, std::string_view name) {
    if (name == "Hold") {
      asked.Open();
      goesOn.Wait();
    }
    return RecordingShows::kAll;
  };
  constexpr int kSets = 500;
  const std::uint64_t first = NextJournalNumber();
  std::uint64_t end = 0;
  {
    const Recording recording(File(), options);
    CallStore store(kCall, CallStore::kEndsCall);
    store->SetKalConfig(kVideo, "Hold", 1, false, false);
    asked.Wait();
    for (int i = 1; i <= kSets; ++i) store->SetKalConfig(kVideo, "MaxFps", i, false, false);
    end = NextJournalNumber();
    goesOn.Open();
  }
  double lost = 0, events = 0;
  std::uint64_t number = first;
  for (const RecordedLine& line : Lines()) {
    if (line.Get("type") == "lost") {
      lost += line.Number("count");
      number += static_cast<std::uint64_t>(line.Number("count"));
    } else if (line.Has("number")) {
      EXPECT_EQ(line.Get("number"), std::to_string(number++));
      ++events;
    }
  }
  EXPECT_GE(lost, kSets - 16);
  EXPECT_GE(lost + events, static_cast<double>(end - first));
  EXPECT_EQ(OfType("set").back().Get("new"), std::to_string(kSets));
}

TEST_F(RecordedEvents, OfManyThreadsAreAllThere) {
  constexpr int kThreads = 4, kSets = 500;
  {
    Recording recording(File());
    CallStore store(kCall, CallStore::kEndsCall);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&store, &recording, t] {
        const std::string name = "Setting" + std::to_string(t);
        for (int i = 1; i <= kSets; ++i) {
          store->SetKalConfig(kVideo, name.c_str(), i, false, false);
          if (i % 100 == 0) {
            EXPECT_EQ(recording.Flush(), kResultOk);
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  std::map<std::string, int> last;
  for (const RecordedLine& line : OfType("set")) {
    EXPECT_EQ(line.Get("new"), std::to_string(++last[line.Get("name")]));
  }
  EXPECT_EQ(last.size(), static_cast<std::size_t>(kThreads));
  for (const auto& [name, count] : last) EXPECT_EQ(count, kSets) << name;
  EXPECT_TRUE(OfType("lost").empty());
}

}  // namespace
}  // namespace kalStore
