// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "Program.h"

namespace {

constexpr const char* kBase =
    R"({"Video":[{"key":"MaxFps","value":"30"}],"Audio":[{"key":"Bitrate","value":"32000"},{"key":"Dtx","value":"1"}]})";
constexpr const char* kLow =
    R"({"Audio":[{"key":"Bitrate","value":"16000"},{"key":"Dtx","value":"1"},{"key":"FrameMs","value":"60"}]})";

std::string Line(const std::string& key, const std::string& value) {
  return R"({"key":")" + key + R"(","value":")" + value + "\"}";
}

}  // namespace

TEST(Apply, PrintsTheValuesOfAFirstDocumentAsNew) {
  const Finished run = Program().File("base.json", kBase).Run({"apply", "base.json"});
  EXPECT_EQ(run.out,
            "base.json\n"
            "  new      Audio/Bitrate: \"32000\"\n"
            "  new      Audio/Dtx: \"1\"\n"
            "  new      Video/MaxFps: \"30\"\n"
            "  3 new\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(Apply, DistinguishesNewChangedAndUnchangedValuesOfALaterDocument) {
  const Finished run =
      Program().File("base.json", kBase).File("low.json", kLow).Run({"apply", "base.json", "low.json"});
  EXPECT_EQ(run.out.substr(run.out.find("low.json")),
            "low.json\n"
            "  changed  Audio/Bitrate: \"32000\" -> \"16000\"\n"
            "  new      Audio/FrameMs: \"60\"\n"
            "  1 new, 1 changed, 1 unchanged\n");
  EXPECT_EQ(run.status, 0);
}

TEST(Apply, CountsWhatIsSkippedLast) {
  const Finished run = Program()
                           .Input(R"({"Audio":[1,{"key":"A","value":"1"},{"key":"B","value":"1"}]})")
                           .File("a.json", R"({"Audio":[{"key":"A","value":"1"}]})")
                           .Run({"apply", "a.json", "-"});
  EXPECT_TRUE(run.out.ends_with("  1 new, 1 unchanged, 1 skipped\n")) << run.out;
}

TEST(Apply, AppliesTheDocumentsInTheirOrder) {
  Program program;
  program.File("base.json", kBase).File("low.json", kLow);
  EXPECT_NE(
      program.Run({"apply", "low.json", "base.json", "--dump", "0x8"}).out.find(Line("Bitrate", "32000")),
      std::string::npos);
  EXPECT_NE(
      program.Run({"apply", "base.json", "low.json", "--dump", "0x8"}).out.find(Line("Bitrate", "16000")),
      std::string::npos);
}

TEST(Apply, ReportsANameThatADocumentSetsTwiceOnceWithWhatStays) {
  const Finished run = Program()
                           .File("a.json", "{\"Audio\":[" + Line("X", "1") + "," + Line("X", "2") + "]}")
                           .File("b.json", "{\"Audio\":[" + Line("X", "3") + "," + Line("X", "2") + "]}")
                           .Run({"apply", "a.json", "b.json"});
  EXPECT_EQ(run.out,
            "a.json\n"
            "  new      Audio/X: \"2\"\n"
            "  1 new\n"
            "b.json\n"
            "  1 unchanged\n");
}

TEST(Apply, KeepsEqualNamesOfTwoGroupsApart) {
  const Finished run =
      Program()
          .File("a.json", "{\"Audio\":[" + Line("X", "1") + "],\"Video\":[" + Line("X", "2") + "]}")
          .Run({"apply", "a.json"});
  EXPECT_EQ(run.out,
            "a.json\n"
            "  new      Audio/X: \"1\"\n"
            "  new      Video/X: \"2\"\n"
            "  2 new\n");
}

TEST(Apply, SaysThatAnEmptyDocumentHasNoEntries) {
  const Finished run = Program().File("a.json", " {} \n").Run({"apply", "a.json"});
  EXPECT_EQ(run.out, "a.json\n  no entries\n");
  EXPECT_EQ(run.status, 0);
}

TEST(Apply, SetsTheGivenValuesAfterTheDocuments) {
  const Finished run = Program()
                           .File("base.json", kBase)
                           .Run({"apply", "--set", "Video/MaxFps=15", "base.json", "--set", "Audio/a/b=c=d",
                                 "--set", "Common/Empty=", "--set", "Video/MaxFps=20"});
  EXPECT_EQ(run.out.substr(run.out.find("--set")),
            "--set\n"
            "  new      Audio/a/b: \"c=d\"\n"
            "  new      Common/Empty: \"\"\n"
            "  changed  Video/MaxFps: \"30\" -> \"20\"\n"
            "  2 new, 1 changed\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(Apply, TakesValuesOfAnyFormFromTheCommandLine) {
  const Finished run =
      Program().Input("{}").Run({"apply", "-", "--set", "Audio/List=[1,2]", "--set", "Audio/Quoted=\"a b\"",
                                 "--set", "Audio/Set={}", "--set=Audio/N=-1"});
  EXPECT_EQ(run.out,
            "<stdin>\n"
            "  no entries\n"
            "--set\n"
            "  new      Audio/List: \"[1,2]\"\n"
            "  new      Audio/Quoted: \"\\\"a b\\\"\"\n"
            "  new      Audio/Set: \"{}\"\n"
            "  new      Audio/N: \"-1\"\n"
            "  4 new\n");
}

TEST(Apply, DumpsTheStoreLastOnOneLine) {
  const Finished run = Program()
                           .File("base.json", kBase)
                           .Run({"apply", "base.json", "--dump", "all", "--set", "UnitTest/A=1"});
  const std::string dump =
      R"({"Application":[],"Audio":[{"key":"Bitrate","value":"32000"},{"key":"Dtx","value":"1"}],"AudioSi":[],)"
      R"("AudioSlide":[],"Common":[],"Feature":[],"Gamestate":[],"Metrics":[],"TAOnly":[],"Transmission":[],)"
      R"("UnitTest":[{"key":"A","value":"1"}],"Video":[{"key":"MaxFps","value":"30"}],"VideoSlide":[]})";
  EXPECT_TRUE(run.out.ends_with("  1 new\n" + dump + "\n")) << run.out;
}

TEST(Apply, PrintsNothingButTheDumpWhenQuiet) {
  const Finished run = Program().File("base.json", kBase).Run({"apply", "-q", "base.json", "--dump", "0x20"});
  EXPECT_EQ(run.out, "{\"Video\":[{\"key\":\"MaxFps\",\"value\":\"30\"}]}\n");
  EXPECT_EQ(run.err, "");
}

TEST(Apply, WritesAnObjectPerChangeAndEventAsJson) {
  const Finished run = Program()
                           .File("base.json", kBase)
                           .File("low.json", kLow)
                           .Run({"apply", "base.json", "low.json", "--json", "--set", "Video/X=1", "--watch",
                                 "Audio/Bitrate", "--dump", "0x1000"});
  EXPECT_EQ(run.out,
            R"({"thread":"main","change":"new","group":"Audio","name":"Bitrate","before":null,"after":"32000"}
{"document":"base.json","change":"new","group":"Audio","name":"Bitrate","before":null,"after":"32000"}
{"document":"base.json","change":"new","group":"Audio","name":"Dtx","before":null,"after":"1"}
{"document":"base.json","change":"new","group":"Video","name":"MaxFps","before":null,"after":"30"}
{"thread":"main","change":"changed","group":"Audio","name":"Bitrate","before":"32000","after":"16000"}
{"document":"low.json","change":"changed","group":"Audio","name":"Bitrate","before":"32000","after":"16000"}
{"document":"low.json","change":"new","group":"Audio","name":"FrameMs","before":null,"after":"60"}
{"document":"--set","change":"new","group":"Video","name":"X","before":null,"after":"1"}
{"UnitTest":[]}
)");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(Apply, ReadsDumpMasks) {
  const std::tuple<const char*, const char*> masks[] = {
      {"0", "{}\n"},
      {"1", "{\"Common\":[]}\n"},
      {"5", "{\"Common\":[],\"Metrics\":[]}\n"},
      {"0x1000", "{\"UnitTest\":[]}\n"},
      {"0X2", "{\"Feature\":[]}\n"},
      {"0xFFFFE001", "{\"Common\":[]}\n"},
      {"4294959105", "{\"Common\":[]}\n"},
      {"Audio", "{\"Audio\":[]}\n"},
      {"Video,Audio,Video", "{\"Audio\":[],\"Video\":[]}\n"},
  };
  for (const auto& [mask, dump] : masks) {
    const Finished run = Program().Input("{}").Run({"apply", "-", "--quiet", "--dump", mask});
    EXPECT_EQ(run.out, dump) << mask;
    EXPECT_EQ(run.status, 0) << mask;
  }
}

TEST(Apply, RefusesWhatIsNeitherADumpMaskNorNamesOfGroups) {
  for (const std::string mask : {"x", "0x", "0xg", "08a", "9a", "1 ", " 1", "+1", "-1", "ALL", "Audio,",
                                 "Audio Video", "Audio,8", "0x1ffffffff", "4294967296", "LastGroup"}) {
    const Finished run = Program().Input("{}").Run({"apply", "-", "--dump=" + mask});
    EXPECT_EQ(run.out, "") << mask;
    EXPECT_EQ(run.status, 2) << mask;
    const bool isNumber = mask.front() >= '0' && mask.front() <= '9';
    const std::string why = isNumber ? "no 32-bit mask; " : "unknown group \"";
    EXPECT_TRUE(run.err.starts_with("tessel: --dump \"" + mask + "\": " + why)) << run.err;
    EXPECT_TRUE(
        run.err.ends_with("expected \"all\", names of groups with commas between, or a 32-bit mask, "
                          "decimal or 0x and hexadecimal\n"))
        << run.err;
  }
  EXPECT_EQ(Program().Input("{}").Run({"apply", "-", "--dump="}).status, 2);
  EXPECT_EQ(Program().Input("{}").Run({"apply", "-", "--dump", ""}).status, 2);
  EXPECT_NE(Program().Input("{}").Run({"apply", "-", "--dump", "8,Audio"}).err.find("unknown group \"8\""),
            std::string::npos);
  EXPECT_NE(Program()
                .Input("{}")
                .Run({"apply", "-", "--dump", "Audio,Vido"})
                .err.find("unknown group \"Vido\" (did you mean \"Video\"?)"),
            std::string::npos);
}

TEST(Apply, ChangesNothingWithItsOwnDump) {
  Program program;
  program.File("base.json", kBase).File("low.json", kLow);
  const std::string dump = program.Run({"apply", "base.json", "low.json", "-q", "--dump", "all"}).out;
  const Finished run = program.Input(dump).Run({"apply", "base.json", "low.json", "-"});
  EXPECT_TRUE(run.out.ends_with("<stdin>\n  4 unchanged\n")) << run.out;
  EXPECT_EQ(program.Run({"apply", "-", "-q", "--dump", "all"}).out, dump);
}

TEST(Apply, RefusesUnusablePathsBeforeItReadsADocument) {
  const std::tuple<std::string, std::string, std::string> refusals[] = {
      {"--set", "Vidoe/MaxFps=1", "\"Vidoe/MaxFps\": unknown group \"Vidoe\" (did you mean \"Video\"?)"},
      {"--set", "audio/X=1", "\"audio/X\": unknown group \"audio\" (did you mean \"Audio\"?)"},
      {"--set", "Transmision/X=1",
       "\"Transmision/X\": unknown group \"Transmision\" (did you mean \"Transmission\"?)"},
      {"--set", "Hardware/X=1", "\"Hardware/X\": unknown group \"Hardware\""},
      {"--set", "LastGroup/X=1", "\"LastGroup/X\": unknown group \"LastGroup\""},
      {"--set", "/X=1", "\"/X\": unknown group \"\""},
      {"--set", "Audio/X", "\"Audio/X\": expected GROUP/NAME=VALUE"},
      {"--set", "Audio=1", "\"Audio\": expected GROUP/NAME"},
      {"--set", "Audio/=1", "\"Audio/\": the name is empty"},
      {"--set", "A\n\xff/X=1", "\"A\\n\\u00ff/X\": unknown group \"A\\n\\u00ff\""},
      {"--watch", "Video", "\"Video\": expected GROUP/NAME"},
      {"--watch", "Video/", "\"Video/\": the name is empty"},
      {"--watch", "Vdeo/*", "\"Vdeo/*\": unknown group \"Vdeo\" (did you mean \"Video\"?)"},
  };
  for (const auto& [option, text, reason] : refusals) {
    const Finished run = Program().Run({"apply", "no such file", option, text});
    EXPECT_EQ(run.err, "tessel: " + option + " " + reason + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
  }
}

TEST(Apply, DoesNothingWhenALaterDocumentIsBroken) {
  const Finished run = Program()
                           .File("base.json", kBase)
                           .File("odd.json", R"({"Nowhere":[]})")
                           .File("broken.json", "{\n  \"Audio\": [,]\n}")
                           .Run({"apply", "base.json", "odd.json", "broken.json", "--dump", "all"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "broken.json:2:13: expected a value\n");
  EXPECT_EQ(run.status, 2);
}

TEST(Apply, TracesTheLibraryOnRequest) {
  Program program;
  program.File("base.json", kBase);
  EXPECT_EQ(program.Run({"apply", "base.json", "--trace", "0"}).err, "");
  const Finished run = program.Run({"apply", "base.json", "--trace", "2"});
  EXPECT_NE(run.err.find("[UTIL 2] kalStore::CreateKalConfig [cid=1]\n"), std::string::npos) << run.err;
  EXPECT_EQ(run.out, program.Run({"apply", "base.json"}).out);
}

TEST(Apply, TracesALineForALineWhateverAValueHolds) {
  const Finished run =
      Program()
          .Input(R"({"Audio":[{"key":"A","value":"\n[UTIL 0] forged\u001b]0;title\u0007"}]})")
          .Run({"apply", "-", "--trace", "2"});
  EXPECT_EQ(run.err.find("\n[UTIL 0] forged"), std::string::npos) << run.err;
  EXPECT_EQ(run.err.find('\033'), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("\\n[UTIL 0] forged"), std::string::npos) << run.err;
}

TEST(Apply, RefusesATraceLevelThatThereIsNot) {
  for (const std::string level : {"9", "3", "-1", "loud", "", "1.5", "0x1", " 1"}) {
    const Finished run = Program().Input("{}").Run({"apply", "-", "--trace", level});
    EXPECT_EQ(run.err, "tessel: --trace: expected a whole number from 0 to 2, not \"" + level +
                           "\" (tessel apply --help tells more)\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
  }
}

TEST(Apply, AppliesAHugeDocument) {
  constexpr int kEntries = 20000;
  std::string text = "{\"Metrics\":[";
  for (int number = 0; number < kEntries; ++number) {
    text += (number == 0 ? "" : ",") + Line("Name" + std::to_string(number), std::to_string(number));
  }
  text += "]}";
  Program program;
  program.File("huge.json", text);
  const Finished first = program.Run({"apply", "huge.json", "--watch", "Metrics/Name19999"});
  EXPECT_TRUE(first.out.ends_with("  new      Metrics/Name19999: \"19999\"\n  20000 new\n"));
  const Finished dumped = program.Run({"apply", "huge.json", "--quiet", "--dump", "4"});
  EXPECT_EQ(dumped.out.size(), text.size() + 1);
  EXPECT_EQ(program.Input(dumped.out).Run({"apply", "-", "-q", "--dump", "4"}).out, dumped.out);
}
