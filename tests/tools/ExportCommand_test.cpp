// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Program.h"
#include "Recordings.h"
#include "recording/BufferedFile.h"
#include "recording/StatisticsTables.h"
#include "tessel/json.h"

namespace {

// A line with statistics of call 1.
std::string Statistics(const std::string& entity, const std::string& members) {
  return R"({"type":"statistics","t":0.5,"call":1,"entity":")" + entity + "\"," + members + "}\n";
}

}  // namespace

TEST(ExportCommand, WritesATableOfStatisticsPerCallAndKind) {
  Program program;
  const Finished run =
      program.File("a.tessel", Recording("call")).Run({"export", "a.tessel", "--csv", "in/tables"});
  EXPECT_EQ(program.Contents("in/tables/call-7-video.csv"),
            "t,\"common.bitrate\",\"common.codec\",\"layer0.targetFps\"\n"
            "0,500000,\"AV1\",30\n"
            "2,350000,\"AV1\",30\n"
            "2.75,400000,\"AV1\",15\n");
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(ExportCommand, LeavesEmptyWhatAnObjectHasNotRecordedYet) {
  Program program;
  program.File("a.tessel", kRecordingBegin + Statistics("audio", R"("members":{"b":1e-7})") +
                               Statistics("content audio", R"("members":{"x":"\"1\","})") +
                               Statistics("audio", R"("members":{"a\"":-2})") +
                               Statistics("audio", R"("event":"ended")") +
                               Statistics("audio", R"("event":"made")") +
                               Statistics("video", R"("event":"made")") +
                               Statistics("audio", R"("members":{"b":9007199254740991})"));
  EXPECT_EQ(program.Run({"export", "a.tessel", "--csv", "."}).status, 0);
  EXPECT_EQ(program.Contents("call-1-audio.csv"),
            "t,\"a\"\"\",\"b\"\n"
            "0.5,,0.0000001\n"
            "0.5,-2,0.0000001\n"
            "0.5,,9007199254740991\n");
  EXPECT_EQ(program.Contents("call-1-content-audio.csv"), "t,\"x\"\n0.5,\"\"\"1\"\",\"\n");
  EXPECT_FALSE(std::filesystem::exists(program.Path("call-1-video.csv")));
}

TEST(ExportCommand, TakesMembersOfStatisticsAlone) {
  Program program;
  program.File("a.tessel",
               std::string(kRecordingBegin) + R"({"type":"lost","t":1,"count":1,"members":{"a":1}})");
  EXPECT_EQ(program.Run({"export", "a.tessel", "--csv", "tables"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(program.Path("tables")));
}

TEST(ExportCommand, WritesWholeTablesOfALongRecording) {
  std::string text = kRecordingBegin, table = "t,\"a\"\n";
  for (int value = 0; value < 20000; ++value) {
    text += Statistics("audio", R"("members":{"a":)" + std::to_string(value) + "}");
    table += "0.5," + std::to_string(value) + "\n";
  }
  Program program;
  program.File("a.tessel", text)
      .File("call-1-audio.csv", "an earlier one")
      .Run({"export", "a.tessel", "--csv", "."});
  EXPECT_EQ(program.Contents("call-1-audio.csv"), table);
}

TEST(ExportCommand, WritesDeliveriesAndSetsOnTheirThreadsForPerfetto) {
  Program program;
  const Finished run =
      program.File("a.tessel", Recording("call")).Run({"export", "a.tessel", "--perfetto", "a.json"});
  EXPECT_EQ(program.Contents("a.json"), R"({"traceEvents":[
{"name":"thread_name","ph":"M","pid":1,"tid":1,"args":{"name":"thread 1201"}}
,{"name":"Video/MaxFps","cat":"set","ph":"i","ts":1204117,"s":"t","pid":1,"tid":1,"args":{"call":7,"old":"30","new":"15","result":"told","told":1,"origin":"bandwidth controller"}}
,{"name":"thread_name","ph":"M","pid":1,"tid":2,"args":{"name":"thread 1202"}}
,{"name":"Video/MaxFps","cat":"deliver","ph":"X","ts":1204131,"dur":4.5,"pid":1,"tid":2,"args":{"call":7,"old":"30","new":"15","id":3,"way":"posted","wait_us":14}}
,{"name":"Feature/Sharp\\u001b[1m","cat":"set","ph":"i","ts":1500000,"s":"t","pid":1,"tid":1,"args":{"call":7,"new":"\"yes\"","result":"nobody","told":0}}
,{"name":"Audio/Codec","cat":"set","ph":"i","ts":1500000,"s":"t","pid":1,"tid":1,"args":{"call":7,"old":"opus","new":"opus","result":"unchanged","told":0}}
,{"name":"Video/Key","cat":"set","ph":"i","ts":1600000,"s":"t","pid":1,"tid":1,"args":{"call":7,"result":"refused"}}
,{"name":"Common/Layout","cat":"set","ph":"i","ts":1750000,"s":"t","pid":1,"tid":2,"args":{"call":8,"new":"0123456789","result":"nobody","told":0,"origin":"layout of a window that has a lon"}}
,{"name":"Common/Ping","cat":"set","ph":"i","ts":1800000,"s":"t","pid":1,"tid":2,"args":{"call":8,"new":"1","result":"nobody","told":0}}
,{"name":"Common/Layout","cat":"deliver","ph":"X","ts":2250000,"dur":100,"pid":1,"tid":2,"args":{"call":8,"new":"x","id":6,"way":"handed over","wait_us":0,"threw":"no window"}}
,{"name":"Video/Codec","cat":"set","ph":"i","ts":2350000,"s":"t","pid":1,"tid":1,"args":{"call":7,"new":"AV1","result":"nobody","told":0}}
]}
)");
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(ExportCommand, TakesNoThreadForThreadZeroAndNoTimeForNone) {
  Program program;
  program.File("a.tessel",
               std::string(kRecordingBegin) +
                   R"({"type":"deliver","t":1,"call":7,"id":3,"way":"direct","group":"Audio"})"
                   "\n"
                   R"({"type":"deliver","t":2,"call":7,"id":3,"way":"direct","group":"Audio","thread":0})"
                   "\n");
  EXPECT_EQ(program.Run({"export", "a.tessel", "--perfetto", "a.json"}).status, 0);
  EXPECT_EQ(program.Contents("a.json"), R"({"traceEvents":[
{"name":"thread_name","ph":"M","pid":1,"tid":1,"args":{"name":"thread 0"}}
,{"name":"Audio/*","cat":"deliver","ph":"X","ts":1000000,"dur":0,"pid":1,"tid":1,"args":{"call":7,"id":3,"way":"direct"}}
,{"name":"Audio/*","cat":"deliver","ph":"X","ts":2000000,"dur":0,"pid":1,"tid":1,"args":{"call":7,"id":3,"way":"direct"}}
]}
)");
}

TEST(ExportCommand, WritesJsonHoweverLargeATimeIs) {
  Program program;
  program.File("a.tessel", std::string(kRecordingBegin) +
                               R"({"type":"set","t":1e308,"call":7,"group":"Audio","result":"nobody"})"
                               "\n");
  EXPECT_EQ(program.Run({"export", "a.tessel", "--perfetto", "a.json"}).status, 0);
  json::ParseError error;
  json::Deserialize(program.Contents("a.json"), error);
  EXPECT_EQ(error.reason, nullptr);
}

TEST(ExportCommand, WritesWhatADamagedRecordingHasAndReportsItsLinesOnce) {
  Program program;
  const Finished run =
      program.File("a.tessel", Recording("damaged")).Run({"export", "a.tessel", "--perfetto", "a.json"});
  EXPECT_NE(program.Contents("a.json").find("\"ts\":1204117,"), std::string::npos);
  EXPECT_EQ(run.err,
            "a.tessel:3: group: unknown\n"
            "a.tessel:4: expected a value\n"
            "a.tessel:5: count: expected a whole number, 0 or more\n");
  EXPECT_EQ(run.status, 2);
}

TEST(ExportCommand, LeavesTheFilesAloneWhenThereIsNoRecording) {
  Program program;
  program.File("a.tessel", Recording("foreign")).File("a.json", "before");
  EXPECT_EQ(program.Run({"export", "a.tessel", "--perfetto", "a.json", "--csv", "tables"}).status, 2);
  EXPECT_EQ(program.Contents("a.json"), "before");
  EXPECT_FALSE(std::filesystem::exists(program.Path("tables")));
}

TEST(ExportCommand, NeverWritesOverTheRecording) {
  Program program;
  program.File("a.tessel.1", RecordingPart(1) + RecordingPartEnd(1)).File("a.tessel", RecordingPart(2));
  std::filesystem::create_symlink("a.tessel.1", program.Path("link"));
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"a.tessel", "--perfetto", "./a.tessel"}, "--perfetto \"./a.tessel\": is the recording"},
      {{"a.tessel", "--perfetto", "link"}, "--perfetto \"link\": is the recording"},
      {{"call-7-video.csv", "--csv", "."}, "--csv: \"./call-7-video.csv\" is the recording"},
  };
  program.File("call-7-video.csv", Recording("call"));
  for (auto [arguments, message] : rows) {
    arguments.insert(arguments.begin(), "export");
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.err, "tessel: " + message + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
  }
  EXPECT_EQ(program.Contents("a.tessel"), RecordingPart(2));
  EXPECT_EQ(program.Contents("a.tessel.1"), RecordingPart(1) + RecordingPartEnd(1));
  EXPECT_EQ(program.Contents("call-7-video.csv"), Recording("call"));
}

// A recording may grow between the two readings.
TEST(StatisticsTables, LeaveOutMembersThatWereRecordedAfterTheirLineOfNames) {
  const Program program;
  const auto statistics = [](const std::string& members) {
    RecordingEvent event;
    const std::string line =
        R"({"type":"statistics","t":1,"call":7,"entity":"audio","members":)" + members + "}";
    EXPECT_EQ(ReadRecordingLine(line, event), "");
    return event;
  };
  StatisticsTables tables;
  tables.Learn(statistics(R"({"b":1})"));
  tables.Begin(program.Path("tables"));
  tables.Write(statistics(R"({"b":1})"));
  tables.Write(statistics(R"({"a":2,"b":3})"));
  tables.Finish();
  EXPECT_EQ(program.Contents("tables/call-7-audio.csv"), "t,\"b\"\n1,1\n1,3\n");
}

// There may be more tables than files that a process can have open.
TEST(BufferedFile, IsNotOpenBetweenItsPieces) {
  const Program program;
  const auto before = OpenFiles();
  BufferedFile file(program.Path("a"));
  EXPECT_EQ(OpenFiles(), before);
  file.Append(std::string(100000, 'x'));
  EXPECT_EQ(OpenFiles(), before);
  EXPECT_EQ(program.Contents("a"), std::string(100000, 'x'));
}

TEST(ExportCommand, RefusesWhatItCannotReadOrWrite) {
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"a.tessel"}, "tessel: --csv or --perfetto is required\n"},
      {{"/dev/null", "--csv", "."}, "tessel: FILE: it is read twice, which a pipe or a device cannot be\n"},
      {{"-", "--csv", "."}, "tessel: FILE: it is read twice, which standard input cannot be\n"},
      {{"none.tessel", "--csv", "."}, "none.tessel: cannot be read: No such file or directory\n"},
      {{"a.tessel", "--csv", "a.tessel/x"}, "a.tessel/x: cannot be made: Not a directory\n"},
      {{"a.tessel", "--perfetto", "none/a.json"},
       "none/a.json: cannot be written: No such file or directory\n"},
      {{"a.tessel", "--perfetto", "/dev/full"}, "/dev/full: cannot be written: No space left on device\n"},
  };
  for (auto [arguments, message] : rows) {
    arguments.insert(arguments.begin(), "export");
    const Finished run = Program().File("a.tessel", Recording("call")).Run(arguments);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 2);
  }
}

TEST(ExportCommand, MayReplaceACopyOfTheRecording) {
  Program program;
  const std::string text = Recording("call");
  const Finished run = program.File("a.tessel", text)
                           .File("b.tessel", text)
                           .Run({"export", "a.tessel", "--perfetto", "b.tessel"});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(program.Contents("b.tessel"), text);
}
