// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "Program.h"
#include "tessel/json.h"

namespace {

constexpr const char* kDocument = R"({"Feature":[
  {"key":"EnableMusicDetection","value":"false"},
  {"key":"EnableMusicMode","value":"yes"},
  {"key":"MusicModeBitrate","value":"0"}]})";

TEST(TogglesCommand, PrintsTheWholeCatalogue) {
  const Finished run = Program().Run({"toggles"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 352) << "a heading and 351 toggles";
  EXPECT_NE(run.out.find("\n  5  EnableMusicDetection "), std::string::npos);
  EXPECT_EQ(run.out.find("Unknow"), std::string::npos) << "the end mark";
}

TEST(TogglesCommand, ShowsTheRangeOfAToggle) {
  EXPECT_EQ(Program().Run({"toggles", "NoiseSuppressionLevel"}).out,
            " id  key                    kind    meaning\n"
            " 40  NoiseSuppressionLevel  int     Strength of noise suppression, 0 to 4\n");
  EXPECT_EQ(Program().Run({"toggles", "AutoFramingSpeed", "--json"}).out,
            "{\"id\":112,\"key\":\"AutoFramingSpeed\",\"kind\":\"double\",\"meaning\":\"How fast the crop "
            "follows\",\"minimum\":0,\"maximum\":1}\n");
}

TEST(TogglesCommand, FindsAPartOfTheKeyInAnyLetterCase) {
  const Finished run = Program().Run({"toggles", "MUSICD"});
  EXPECT_EQ(run.out,
            " id  key                   kind    meaning\n"
            "  5  EnableMusicDetection  bool    Detect music and leave it out of noise suppression\n");
  EXPECT_EQ(run.status, 0);
}

TEST(TogglesCommand, FitsAGlobToTheWholeKey) {
  const Finished run = Program().Run({"toggles", "media-packet-*-RECORDING-?*?-session"});
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 3);
  EXPECT_EQ(Program().Run({"toggles", "MusicDetection*"}).status, 1) << "not the whole key";
  EXPECT_EQ(Program().Run({"toggles", "*MusicDetection"}).status, 0);
  EXPECT_EQ(Program().Run({"toggles", "EnableMusicDetection?"}).status, 1);
  const Finished all = Program().Run({"toggles", "*"});
  EXPECT_EQ(std::count(all.out.begin(), all.out.end(), '\n'), 352);
}

TEST(TogglesCommand, ShowsWhatADocumentSets) {
  const Finished run = Program().File("a.json", kDocument).Run({"toggles", "music", "--from", "a.json"});
  EXPECT_EQ(
      run.out,
      " id  key                   kind    value    state  meaning\n"
      "  5  EnableMusicDetection  bool    \"false\"  off    Detect music and leave it out of noise "
      "suppression\n"
      " 71  EnableMusicMode       bool    \"yes\"    on     Offer high fidelity without voice processing\n"
      " 72  MusicModeBitrate      int     \"0\"      off    Bit rate of music mode, in bit/s\n");
  EXPECT_EQ(run.err, "a.json:3:36: Feature[1].value: expected true or false; this value counts as on\n");
  EXPECT_EQ(run.status, 0);
}

TEST(TogglesCommand, CountsAToggleThatIsNotSetAsOn) {
  const Finished run = Program().File("a.json", "{}").Run({"toggles", "MusicDetection", "--from", "a.json"});
  EXPECT_NE(run.out.find("bool    -      on     Detect"), std::string::npos) << run.out;
}

TEST(TogglesCommand, KeepsTheValueOfTheLastDocument) {
  const Finished run = Program()
                           .File("a.json", kDocument)
                           .File("b.json", R"({"Feature":[{"key":"EnableMusicDetection","value":"1"}]})")
                           .Run({"toggles", "MusicDetection", "--json", "--from", "a.json", "b.json"});
  json::Value toggle = json::Deserialize(run.out);
  ASSERT_EQ(toggle.GetType(), json::ObjectVal) << run.out;
  EXPECT_EQ(toggle["id"].ToInt(), 5);
  EXPECT_EQ(toggle["key"].ToString(), "EnableMusicDetection");
  EXPECT_EQ(toggle["kind"].ToString(), "bool");
  EXPECT_FALSE(toggle["meaning"].ToString().empty());
  EXPECT_EQ(toggle["value"].ToString(), "1");
  EXPECT_TRUE(toggle["on"].ToBool());
}

TEST(TogglesCommand, WritesAnObjectPerLineAsJson) {
  const Finished plain = Program().Run({"toggles", "MusicDetection", "--json"});
  EXPECT_EQ(plain.out,
            "{\"id\":5,\"key\":\"EnableMusicDetection\",\"kind\":\"bool\","
            "\"meaning\":\"Detect music and leave it out of noise suppression\"}\n");
  const Finished unset = Program().Input("{}").Run({"toggles", "MusicDetection", "--json", "--from", "-"});
  EXPECT_NE(unset.out.find(",\"value\":null,\"on\":true}\n"), std::string::npos) << unset.out;
}

TEST(TogglesCommand, SuggestsKeysForAPatternThatMatchesNothing) {
  const Finished part = Program().Run({"toggles", "MusikDetecton"});
  EXPECT_EQ(part.err,
            "tessel: no toggle matches \"MusikDetecton\" (did you mean \"EnableMusicDetection\"?)\n");
  EXPECT_EQ(part.out, "");
  EXPECT_EQ(part.status, 1);
  const Finished whole = Program().Run({"toggles", "EnableClipVolumeCtl"});
  EXPECT_EQ(whole.err,
            "tessel: no toggle matches \"EnableClipVolumeCtl\" (did you mean \"EnablClipVolumeCtl\"?)\n");
  const Finished nothing = Program().Run({"toggles", "qqqqqqqq"});
  EXPECT_EQ(nothing.err, "tessel: no toggle matches \"qqqqqqqq\"\n");
  EXPECT_EQ(nothing.status, 1);
}

TEST(TogglesCommand, SuggestsTheNearestThreeKeysWhereAThirdOfTheLettersDiffers) {
  const std::pair<const char*, const char*> rows[] = {
      {"Clqpqo", " (did you mean \"EnablClipVolumeCtl\"?)"},
      {"*Clqpqo?", " (did you mean \"EnablClipVolumeCtl\"?)"},
      {"ClqpqoX", ""},
      {"jitterqqq",
       " (did you mean \"AudioJitterBufferFeatures\", \"AudioJitterMinDelayMs\", "
       "\"AudioJitterMaxDelayMs\"?)"},
      {"jitteqqqq", ""},
      {"jitxter",
       " (did you mean \"AudioJitterBufferFeatures\", \"AudioJitterMinDelayMs\", "
       "\"AudioJitterMaxDelayMs\"?)"},
      {"EnableHowlingDetektion", " (did you mean \"EnableHowlingDetection\"?)"},
  };
  for (const auto& [pattern, suggestion] : rows) {
    EXPECT_EQ(Program().Run({"toggles", pattern}).err,
              "tessel: no toggle matches \"" + std::string(pattern) + "\"" + suggestion + "\n");
  }
}

TEST(TogglesCommand, RefusesADocumentThatCannotBeUsed) {
  const Finished missing = Program().Run({"toggles", "--from", "missing.json"});
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.out, "");
  EXPECT_NE(missing.err.find("missing.json"), std::string::npos);
  EXPECT_EQ(std::count(missing.err.begin(), missing.err.end(), '\n'), 1);
  const Finished malformed =
      Program().File("a.json", "{\n  \"Feature\" []}").Run({"toggles", "--from", "a.json"});
  EXPECT_EQ(malformed.status, 2);
  EXPECT_EQ(malformed.err.substr(0, 12), "a.json:2:13:") << malformed.err;
  EXPECT_EQ(std::count(malformed.err.begin(), malformed.err.end(), '\n'), 1);
  const Finished array = Program().File("a.json", "[]").Run({"toggles", "--from", "a.json"});
  EXPECT_EQ(array.status, 2);
  EXPECT_EQ(array.err.substr(0, 11), "a.json:1:1:") << array.err;
}

TEST(TogglesCommand, SaysWhereThePatternGoesWhenItIsTakenForADocument) {
  Program program;
  program.File("a.json", "{}");
  const Finished run = program.Run({"toggles", "--from", "a.json", "music"});
  EXPECT_EQ(
      run.err,
      "tessel: --from takes all files that follow it, and there is no file \"music\": a pattern goes before "
      "--from\n");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(program.Run({"toggles", "music", "--from", "a.json", "missing.json"}).err,
            "missing.json: cannot be read: No such file or directory\n");
  EXPECT_EQ(program.Run({"toggles", "--from", "a.json", "a.json"}).status, 0);
  EXPECT_EQ(program.Input("{}").Run({"toggles", "--from", "a.json", "-"}).status, 0);
}

TEST(TogglesCommand, ReportsWhatImportSkips) {
  const Finished run =
      Program().File("a.json", R"({"feature":[]})").Run({"toggles", "MusicDetection", "--from", "a.json"});
  EXPECT_EQ(run.err, "a.json:1:2: feature: unknown group (did you mean \"Feature\"?)\n");
  EXPECT_EQ(run.status, 0);
}

}  // namespace
