// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Program.h"
#include "recording/RecordedSettings.h"
#include "tessel/CallStore.h"
#include "tessel/record.h"
#include "tessel/tessel.h"

using testing::HasSubstr;

namespace {

const std::string kLab = R"({"Video":[{"key":"MaxFps","value":"15"},{"key":"Codec","value":"AV1"}]})";

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

TEST(CommandRecording, OfApplyHasWhatItDid) {
  Program program;
  program.File("lab.json", kLab);
  const Finished run = program.Run(
      {"apply", "lab.json", "--set", "Video/MaxFps=7", "--quiet", "--dump", "all", "--record", "a.tessel"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  const std::string log = program.Run({"log", "a.tessel", "--type", "set"}).out;
  EXPECT_THAT(log, HasSubstr("Video/Codec: \"AV1\", nobody notified; by lab.json:1:"));
  EXPECT_THAT(log, HasSubstr("Video/MaxFps: \"15\" -> \"7\", nobody notified; by \"--set\""));
  // Its store ends with the command; before that, it is what the command shows.
  const std::string last = program.Run({"log", "a.tessel", "--type", "set", "--json"}).out;
  const std::size_t at = last.rfind("\"t\":") + 4;
  const std::string time = last.substr(at, last.find(',', at) - at);
  EXPECT_EQ(program.Run({"dump", "a.tessel", "--at", time}).out, run.out);
}

TEST(CommandRecording, OfApplyHasItsWatchesAndHowTheyWereNotified) {
  for (const bool isPosted : {false, true}) {
    Program program;
    program.File("lab.json", kLab);
    std::vector<std::string> arguments = {"apply",       "lab.json", "--watch",
                                          "Video/Codec", "--record", "a.tessel"};
    if (isPosted) arguments.emplace_back("--async");
    EXPECT_EQ(program.Run(arguments).status, 0);
    EXPECT_THAT(program.Run({"log", "a.tessel", "--type", "deliver"}).out,
                HasSubstr(isPosted ? ", posted, " : ", direct, "));
    EXPECT_THAT(program.Run({"log", "a.tessel", "--type", "unsubscribe"}).out, HasSubstr("Video/Codec, id "));
  }
}

TEST(CommandRecording, OfSimulateHasAllDeliveries) {
  Program program;
  program.File("lab.json", kLab);
  const Finished run = program.Run({"simulate", "--seconds", "0.3", "--components", "3", "--settings",
                                    "lab.json", "--json", "--record", "a.tessel"});
  EXPECT_EQ(run.status, 0);
  const Finished log = program.Run({"log", "a.tessel"});
  EXPECT_EQ(log.status, 0);
  EXPECT_EQ(log.err, "");
  EXPECT_EQ(CountOf(log.out, "  lost  "), 0u);
  EXPECT_EQ(CountOf(log.out, "  apply  "), 2u);  // Once in each call.
  const std::string deliveries = std::to_string(CountOf(log.out, "  deliver  "));
  EXPECT_THAT(run.out, HasSubstr("\"deliveries\":{\"expected\":" + deliveries + ",\"lost\":0,"));
  EXPECT_NE(log.out.find("; by \"bandwidth controller\", tessel"), std::string::npos);
  EXPECT_NE(log.out.find("; by lab.json:1:"), std::string::npos);
}

TEST(CommandRecording, NeedsAFileOfItsOwn) {
  Program program;
  program.File("lab.json", kLab);
  ASSERT_EQ(::mkfifo(program.Path("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"apply", "lab.json", "--record", "-"}, "tessel: --record -: a recording needs a file of its own\n"},
      {{"apply", "lab.json", "--record", "./lab.json"},
       "tessel: --record \"./lab.json\": is a document that is read\n"},
      {{"simulate", "--settings", "lab.json", "--record", "lab.json"},
       "tessel: --record \"lab.json\": is a document that is read\n"},
      {{"simulate", "--record", "missing/a.tessel"},
       "missing/a.tessel: cannot be written: No such file or directory\n"},
      {{"apply", "lab.json", "--record", "pipe"}, "pipe: cannot be written: it is no regular file\n"},
      {{"apply", "lab.json", "--record", "."}, ".: cannot be written: it is no regular file\n"},
      {{"apply", "lab.json", "--record", "/dev/stdout"},
       "tessel: --record \"/dev/stdout\": is standard output\n"},
  };
  for (const auto& [arguments, message] : rows) {
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.out, "");
  }
  EXPECT_EQ(program.Contents("lab.json"), kLab);
}

TEST(CommandRecording, TakesThePlaceOfAFileThatIsThere) {
  Program program;
  program.File("lab.json", kLab).File("a.tessel", std::string(100000, 'x'));
  EXPECT_EQ(program.Run({"apply", "lab.json", "--quiet", "--record", "a.tessel"}).err, "");
  const Finished log = program.Run({"log", "a.tessel", "--type", "apply"});
  EXPECT_THAT(log.out, HasSubstr("call 1   2 sets, ran "));
  EXPECT_EQ(log.status, 0);
}

TEST(CommandRecording, MayBeOfADevice) {
  Program program;
  program.File("lab.json", kLab);
  const Finished run = program.Run({"apply", "lab.json", "--quiet", "--record", "/dev/null"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
}

TEST(CommandRecording, ThatIsNotWholeIsReportedAndTheCommandGoesOn) {
  Program program;
  program.File("lab.json", kLab);
  const Finished run =
      program.Run({"apply", "lab.json", "--quiet", "--dump", "Video", "--record", "/dev/full"});
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.err,
              HasSubstr("kalStore::Recording, ended, file=/dev/full, reason=No space left on device"));
  EXPECT_THAT(run.out, HasSubstr("AV1"));
}

// Whatever is set and removed, before and after the recording began, also by two threads at once: its
// settings at the end are the store's.
TEST(CommandRecording, GivesTheSettingsThatTheStoreHad) {
  using namespace kalStore;
  std::string name = (std::filesystem::temp_directory_path() / "recording-XXXXXX").string();
  const std::string folder = ::mkdtemp(name.data()), file = folder + "/a.tessel";
  const std::string kKeys[] = {"Key", "\xff\"", "\xc3\xa9\n", "\xed\xa0\x80@*"};
  for (unsigned int seed = 1; seed <= 20; ++seed) {
    CallStore store(7, CallStore::kEndsCall);
    const auto change = [&](std::mt19937& random) {
      const auto choose = [&](unsigned int count) { return random() % count; };
      const auto group = static_cast<KalConfigGroup>(choose(3));
      const std::string key = kKeys[choose(4)];
      switch (choose(10)) {
        case 0:
          return store->RemoveKalConfigByGroup(group);
        case 1:
        case 2:
          return store->RemoveKalConfig(group, key.c_str());
        case 3:
          return store->SetKalConfig(group, key.c_str(), 1, false, true);
        case 4:
          return store->ApplyKalConfigs(
              R"({"Common":[{"key":"Key","value":"\u00ff\n"},{"key":"\u00ff\"","value":"\u0000"}]})");
        default:
          return store->SetKalConfig(group, key.c_str(), static_cast<int>(choose(3)), choose(2) == 0, false);
      }
    };
    const auto changeOften = [&](unsigned int ownSeed, int count) {
      std::mt19937 random(ownSeed);
      for (int i = 0; i < count; ++i) change(random);
    };
    changeOften(seed, 20);
    std::string document;
    {
      kalStore::Recording recording(file, {.largestFile = 3000, .files = 2});
      std::thread other(changeOften, 100 + seed, 100);
      changeOften(200 + seed, 100);
      other.join();
      ASSERT_EQ(recording.Flush(), kResultOk);
      document = store->DumpKalConfigs(kAllConfigGroups);
    }
    const SettingsAtMoment settings = ReadSettingsAt({file, std::nullopt}, 7);
    EXPECT_EQ(settings.document, document) << "seed " << seed;
    EXPECT_EQ(settings.exitStatus, 0);
  }
  std::filesystem::remove_all(folder);
}

// What a callback captured may set in a store that is ending.
TEST(CommandRecording, HasNoCallBecauseOfASetAfterItsEnd) {
  RecordedSettings settings;
  const auto take = [&](const std::string& line) {
    RecordingEvent event;
    ASSERT_EQ(ReadRecordingLine(line, event), "");
    settings.Take(event);
  };
  const std::string set =
      R"({"type":"set","t":1,"call":7,"group":"Video","name":"MaxFps","new":"15","result":"nobody"})";
  take(R"({"type":"call","t":0,"call":7,"event":"made","references":2})");
  take(set);
  EXPECT_EQ(settings.Calls().size(), 1u);
  take(R"({"type":"call","t":1,"call":7,"event":"ended","references":0})");
  take(set);
  EXPECT_TRUE(settings.Calls().empty());
  take(R"({"type":"call","t":2,"call":7,"event":"made","references":2})");
  take(set);
  EXPECT_THAT(settings.Calls().at(7).Document(), HasSubstr("MaxFps"));
  take(R"({"type":"call","t":3,"call":7,"event":"ended","references":0})");
  // The line of the next store may be among those that were lost.
  take(R"({"type":"lost","t":1,"count":1})");
  take(set);
  EXPECT_EQ(settings.Calls().size(), 1u);
}
