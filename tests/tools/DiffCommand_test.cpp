// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Program.h"
#include "Recordings.h"

namespace {

constexpr const char* kA = R"({
  "Video":[{"key":"MaxFps","value":"30"},{"key":"Codec","value":"x"}],
  "Audio":[{"key":"Bitrate","value":"32000"},{"key":"Dtx","value":"1"},{"key":"Gone","value":""}]})";
constexpr const char* kB = R"({
  "Audio":[{"key":"FrameMs","value":"9"},{"key":"Dtx","value":"1"},{"key":"Bitrate","value":"16000"},
           {"key":"FrameMs","value":"60"}],
  "Common":[{"key":"MaxFps","value":"30"}]})";

Finished Diff(std::vector<std::string> options = {}) {
  options.insert(options.begin(), {"diff", "a.json", "b.json"});
  return Program().File("a.json", kA).File("b.json", kB).Run(options);
}

constexpr const char* kRepeated =
    "b.json:2:19: Audio[0].key: the name is repeated in Audio[3]; the last value stays\n";

std::string Numbered(const std::string& value) {
  std::string text = "{\"Metrics\":[";
  for (int number = 0; number < 50000; ++number) {
    text += (number == 0 ? "" : ",") + ("{\"key\":\"Name" + std::to_string(number)) + "\",\"value\":\"" +
            (number == 7 ? value : "1") + "\"}";
  }
  return text + "]}";
}

}  // namespace

TEST(DiffCommand, ShowsByGroupWhatTheSecondDocumentChangesInTheStore) {
  const Finished run = Diff();
  EXPECT_EQ(run.out,
            "Audio: 1 new, 1 changed\n"
            "  changed  Audio/Bitrate: \"32000\" -> \"16000\"\n"
            "  new      Audio/FrameMs: \"60\"\n"
            "Common: 1 new\n"
            "  new      Common/MaxFps: \"30\"\n");
  EXPECT_EQ(run.err, kRepeated);
  EXPECT_EQ(run.status, 1);
}

TEST(DiffCommand, ReportsWhatImportSkipsOfBothDocuments) {
  const Finished run = Program()
                           .File("a.json", R"({"Vidio":[]})")
                           .File("b.json", R"({"Audoi":[]})")
                           .Run({"diff", "a.json", "b.json"});
  EXPECT_EQ(run.err,
            "a.json:1:2: Vidio: unknown group (did you mean \"Video\"?)\n"
            "b.json:1:2: Audoi: unknown group (did you mean \"Audio\"?)\n");
  EXPECT_EQ(run.status, 0);
}

TEST(DiffCommand, ShowsAlsoWhatIsRemovedBetweenTwoDocumentsAsTheyAre) {
  const Finished run = Diff({"--exact"});
  EXPECT_EQ(run.out,
            "Audio: 1 new, 1 changed, 1 removed\n"
            "  changed  Audio/Bitrate: \"32000\" -> \"16000\"\n"
            "  new      Audio/FrameMs: \"60\"\n"
            "  removed  Audio/Gone: \"\"\n"
            "Common: 1 new\n"
            "  new      Common/MaxFps: \"30\"\n"
            "Video: 2 removed\n"
            "  removed  Video/MaxFps: \"30\"\n"
            "  removed  Video/Codec: \"x\"\n");
  EXPECT_EQ(run.status, 1);
}

TEST(DiffCommand, WritesAnObjectPerChangeAsJson) {
  EXPECT_EQ(Diff({"--json", "--exact"}).out,
            R"({"change":"changed","group":"Audio","name":"Bitrate","before":"32000","after":"16000"}
{"change":"new","group":"Audio","name":"FrameMs","before":null,"after":"60"}
{"change":"removed","group":"Audio","name":"Gone","before":"","after":null}
{"change":"new","group":"Common","name":"MaxFps","before":null,"after":"30"}
{"change":"removed","group":"Video","name":"MaxFps","before":"30","after":null}
{"change":"removed","group":"Video","name":"Codec","before":"x","after":null}
)");
}

TEST(DiffCommand, IsSilentAboutDocumentsThatSayTheSame) {
  Program program;
  program.File("a.json", kA).Input(kA);
  for (const auto& options : {std::vector<std::string>{}, {"--exact"}, {"--json"}, {"--exact", "--json"}}) {
    std::vector<std::string> arguments = {"diff", "a.json", "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.status, 0);
  }
}

TEST(DiffCommand, FindsTheSameInADumpHoweverItsDocumentIsOrdered) {
  Program program;
  program.File("a.json", kA);
  program.File("dump.json", program.Run({"apply", "a.json", "-q", "--dump", "all"}).out);
  EXPECT_EQ(program.Run({"diff", "--exact", "a.json", "dump.json"}).status, 0);
}

TEST(DiffCommand, ColoursATerminalUnlessNoColorIsSet) {
  Program program;
  program.File("a.json", kA)
      .File("b.json", R"({"Audio":[{"key":"Dtx","value":"0"},{"key":"X","value":"1"}]})");
  program.To(Program::Output::kTerminal);
  const Finished run = program.Run({"diff", "--exact", "a.json", "b.json"});
  EXPECT_EQ(run.out,
            "\033[1mAudio\033[0m: 1 new, 1 changed, 2 removed\r\n"
            "  \033[33mchanged\033[0m  Audio/Dtx: \"1\" -> \"0\"\r\n"
            "  \033[32mnew\033[0m      Audio/X: \"1\"\r\n"
            "  \033[31mremoved\033[0m  Audio/Bitrate: \"32000\"\r\n"
            "  \033[31mremoved\033[0m  Audio/Gone: \"\"\r\n"
            "\033[1mVideo\033[0m: 2 removed\r\n"
            "  \033[31mremoved\033[0m  Video/MaxFps: \"30\"\r\n"
            "  \033[31mremoved\033[0m  Video/Codec: \"x\"\r\n");
  const Finished plain = program.Environment("NO_COLOR=1").Run({"diff", "--exact", "a.json", "b.json"});
  EXPECT_EQ(plain.out.find('\033'), std::string::npos);
  EXPECT_EQ(plain.status, 1);
}

TEST(DiffCommand, ShowsNamesOfAnyBytes) {
  const Finished run = Program()
                           .File("a.json", "{}")
                           .File("b.json", "{\"Audio\":[{\"key\":\"\xff\x1b[1m\",\"value\":\"\xc3\"}]}")
                           .Run({"diff", "a.json", "b.json", "--json"});
  EXPECT_EQ(run.out,
            R"({"change":"new","group":"Audio","name":"\u00ff\u001b[1m","before":null,"after":"\u00c3"})"
            "\n");
}

TEST(DiffCommand, RefusesWhatItCannotCompare) {
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"diff", "a.json", "missing.json"}, "missing.json: cannot be read: No such file or directory\n"},
      {{"diff", "a.json", "bad.json"}, "bad.json:1:2: expected a key in double quotes\n"},
      {{"diff", "-", "-"}, "tessel: standard input can be read once only\n"},
      {{"diff", "a.json"}, "tessel: B is required (tessel diff --help tells more)\n"},
  };
  for (const auto& [arguments, message] : rows) {
    const Finished run = Program().File("a.json", kA).File("bad.json", "{").Run(arguments);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 2);
  }
}

TEST(DiffCommand, ComparesHugeDocuments) {
  Program program;
  program.File("a.json", Numbered("1")).File("b.json", Numbered("2"));
  for (const auto& arguments :
       {std::vector<std::string>{"diff", "a.json", "b.json"}, {"diff", "--exact", "a.json", "b.json"}}) {
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.out, "Metrics: 1 changed\n  changed  Metrics/Name7: \"1\" -> \"2\"\n");
    EXPECT_EQ(run.status, 1);
  }
}

TEST(DiffCommand, KeepsItsStatusWhenNobodyReads) {
  const Finished run = Program()
                           .File("a.json", "{}")
                           .File("b.json", Numbered("1"))
                           .To(Program::Output::kNoReader)
                           .Run({"diff", "a.json", "b.json"});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 1);
}

TEST(DiffCommand, ComparesMomentsOfARecording) {
  Program program;
  program.File("a.tessel", Recording("call")).File("b.json", R"({"Video":[{"key":"MaxFps","value":"15"}]})");
  const Finished moments = program.Run({"diff", "--exact", "a.tessel@0", "a.tessel@2", "--call", "7"});
  EXPECT_EQ(moments.out,
            "Feature: 1 new\n"
            "  new      Feature/Sharp\\u001b[1m: \"\\\"yes\\\"\"\n"
            "Video: 1 changed\n"
            "  changed  Video/MaxFps: \"30\" -> \"15\"\n");
  EXPECT_EQ(moments.err, "");
  EXPECT_EQ(moments.status, 1);
  const Finished document = program.Run({"diff", "a.tessel@1", "b.json", "--call", "7"});
  EXPECT_EQ(document.out, "Video: 1 changed\n  changed  Video/MaxFps: \"30\" -> \"15\"\n");
  const Finished same = program.Run({"diff", "b.json", "a.tessel@1.3", "--call", "7"});
  EXPECT_EQ(same.out, "Audio: 1 new\n  new      Audio/Codec: \"opus\"\n");
}

TEST(DiffCommand, TakesWhatIsNoMomentForAFile) {
  for (const std::string side : {"a.tessel@1x", "a.tessel@", "a.tessel@-1", "a.tessel@nan", "@1"}) {
    const Finished run = Program().File("a.tessel", Recording("call")).Run({"diff", side, side});
    EXPECT_EQ(run.err, side + ": cannot be read: No such file or directory\n");
    EXPECT_EQ(run.status, 2);
  }
}

TEST(DiffCommand, FindsNoDifferenceOnlyWhereTheRecordingIsWhole) {
  Program program;
  program.File("a.tessel", Recording("call")).File("b.tessel", Recording("damaged"));
  EXPECT_EQ(program.Run({"diff", "a.tessel@0", "a.tessel@1", "--call", "7"}).status, 0);
  const Finished lost = program.Run({"diff", "a.tessel@2.1", "a.tessel@2.2", "--call", "7"});
  EXPECT_EQ(lost.out, "");
  EXPECT_NE(lost.err.find("12 events were lost before"), std::string::npos);
  EXPECT_EQ(lost.status, 1);
  EXPECT_EQ(program.Run({"diff", "b.tessel@2", "b.tessel@2", "--call", "7"}).status, 2);
}

TEST(DiffCommand, TakesAFileForAFileWhateverItsName) {
  const Finished run = Program().File("a@1", kA).File("b.json", kA).Run({"diff", "a@1", "b.json"});
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(Program().Run({"diff", "--", "-@1", "-@2"}).err,
            "tessel: standard input can be read once only\n");
}
