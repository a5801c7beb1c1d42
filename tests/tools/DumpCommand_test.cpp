// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Program.h"
#include "Recordings.h"

namespace {

Finished Dump(const std::string& recording, std::vector<std::string> options) {
  options.insert(options.begin(), {"dump", "a.tessel"});
  return Program().File("a.tessel", recording).Run(options);
}

// The document with the entries of three groups; the others are empty.
std::string Document(const std::string& audio, const std::string& feature, const std::string& video) {
  return R"({"Application":[],"Audio":[)" + audio +
         R"(],"AudioSi":[],"AudioSlide":[],"Common":[],"Feature":[)" + feature +
         R"(],"Gamestate":[],"Metrics":[],"TAOnly":[],"Transmission":[],"UnitTest":[],"Video":[)" + video +
         "],\"VideoSlide\":[]}\n";
}

std::string Entry(const std::string& key, const std::string& value) {
  return R"({"key":")" + key + R"(","value":")" + value + "\"}";
}

// A set of Video/A in call 1.
std::string Set(const std::string& members) {
  return R"({"type":"set","t":1,"call":1,"group":"Video","name":"A",)" + members + "}\n";
}

const std::string kEmpty = Document("", "", "");

}  // namespace

TEST(DumpCommand, PrintsTheSettingsOfAMoment) {
  const std::string opus = Entry("Codec", "opus"), sharp = Entry("Sharp\\u001b[1m", "\\\"yes\\\"");
  const std::pair<std::string, std::string> rows[] = {
      {"0", Document(opus, "", Entry("MaxFps", "30"))},
      {"1.204116", Document(opus, "", Entry("MaxFps", "30"))},
      {"1.204117", Document(opus, "", Entry("MaxFps", "15"))},
      {"2", Document(opus, sharp, Entry("MaxFps", "15"))},
  };
  for (const auto& [at, document] : rows) {
    const Finished run = Dump(Recording("call"), {"--at", at, "--call", "7"});
    EXPECT_EQ(run.out, document) << at;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
  }
}

TEST(DumpCommand, PrintsADocumentThatGivesTheStateToAnEmptyStore) {
  Program program;
  program.File("a.tessel", Recording("call"));
  const std::string document = program.Run({"dump", "a.tessel", "--at", "2", "--call", "7"}).out;
  program.File("a.json", document);
  EXPECT_EQ(program.Run({"apply", "a.json", "--quiet", "--dump", "all"}).out, document);
}

TEST(DumpCommand, SaysThatEventsWereLostBefore) {
  const Finished run = Dump(Recording("call"), {"--at", "2.37", "--call", "7"});
  EXPECT_EQ(run.out, Document("", Entry("Sharp\\u001b[1m", "\\\"yes\\\""),
                              Entry("Codec", "AV1") + "," + Entry("MaxFps", "15")));
  EXPECT_EQ(run.err, "a.tessel: 12 events were lost before, values may be others\n");
  EXPECT_EQ(run.status, 1);
}

TEST(DumpCommand, TakesTheEndAndTheOnlyCallByDefault) {
  EXPECT_EQ(Dump(Recording("call"), {}).out, Document("", Entry("Sharp\\u001b[1m", "\\\"yes\\\""), ""));
}

TEST(DumpCommand, LeavesOutWhatTheRecordingDoesNotHaveWhole) {
  const std::string cut = "a.tessel: Video/A: left out, the recording does not have all of the value\n";
  const std::string names = "a.tessel: values are left out, the recording does not have all of their names\n";
  const std::pair<std::string, std::string> rows[] = {
      {R"("new":"x","cut":["new"],"result":"nobody")", cut},
      {R"("result":"told","hidden":["old","new"])", cut},
      {R"("new":"x","cut":["name"],"result":"nobody")", names},
  };
  for (const auto& [members, message] : rows) {
    const Finished run = Dump(kRecordingBegin + Set(members), {});
    EXPECT_EQ(run.out, kEmpty);
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 1);
  }
}

TEST(DumpCommand, KeepsAWholeValueThatIsSetAgainAndCut) {
  const Finished run = Dump(kRecordingBegin + Set(R"("new":"xyz","picture":true)") +
                                Set(R"("new":"x","cut":["new"],"result":"unchanged")"),
                            {});
  EXPECT_EQ(run.out, Document("", "", Entry("A", "xyz")));
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(DumpCommand, HasAValueThatIsKnownFromASetThatChangedNothing) {
  const Finished run = Dump(kRecordingBegin + Set(R"("old":"xyz","new":"xyz","result":"unchanged")"), {});
  EXPECT_EQ(run.out, Document("", "", Entry("A", "xyz")));
  EXPECT_EQ(run.status, 0);
}

TEST(DumpCommand, HasACutValueThatFollowsWhole) {
  const std::string cut =
      R"({"type":"set","t":1,"number":5,"call":7,"group":"Common","name":"Layout","new":"wide","cut":["new"],)"
      R"("result":"nobody"})";
  const std::string other =
      R"({"type":"set","t":2,"number":6,"call":7,"group":"Common","name":"Ping","new":"1","result":"nobody"})";
  const std::string whole =
      R"({"type":"set","t":1,"cause":5,"call":7,"picture":true,"group":"Common","name":"Layout","new":"wide, dark"})";
  const Finished run = Dump(kRecordingBegin + cut + "\n" + other + "\n" + whole + "\n", {"--at", "1"});
  EXPECT_NE(run.out.find("\"wide, dark\""), std::string::npos) << run.out;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(DumpCommand, PassesOverSetsThatAreRefused) {
  const Finished run = Dump(
      kRecordingBegin + Set(R"("new":"1","result":"told")") + Set(R"("new":"2","result":"refused")"), {});
  EXPECT_EQ(run.out, Document("", "", Entry("A", "1")));
}

TEST(DumpCommand, HasNoValueAfterATransientSet) {
  const Finished run = Dump(kRecordingBegin + Set(R"("new":"1","result":"told")") +
                                Set(R"("new":"3","result":"told","transient":true)"),
                            {});
  EXPECT_EQ(run.out, kEmpty);
}

TEST(DumpCommand, BeginsAgainWithAnotherPicture) {
  const Finished run = Dump(kRecordingBegin + Set(R"("new":"1","result":"told")") +
                                "{\"type\":\"lost\",\"t\":1,\"count\":1}\n" + kRecordingBegin +
                                "{\"type\":\"call\",\"t\":2,\"call\":5,\"references\":1,\"picture\":true}\n",
                            {});
  EXPECT_EQ(run.out, kEmpty);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(DumpCommand, ShowsWhatADamagedRecordingHas) {
  const Finished run = Dump(Recording("damaged"), {"--call", "7"});
  EXPECT_EQ(run.out, Document("", "", Entry("MaxFps", "15")));
  EXPECT_EQ(run.err.rfind("a.tessel:3: group: unknown\n", 0), 0U) << run.err;
  EXPECT_EQ(run.status, 2);
}

// The value that follows whole has the time of its set, which is in the file before.
TEST(DumpCommand, RefusesAMomentBeforeAFileOfASetBegins) {
  const std::string part =
      RecordingPart(3) +
      R"({"type":"set","t":1.9,"cause":29,"call":7,"picture":true,"group":"Video","name":"MaxFps","new":"15"})";
  const Finished before = Dump(part, {"--at", "1.95"});
  EXPECT_EQ(before.out, "");
  EXPECT_EQ(before.err, "a.tessel: begins at 2 s; what was before is in an earlier file of its set\n");
  EXPECT_EQ(before.status, 2);
  const Finished begin = Dump(part, {"--at", "2"});
  EXPECT_EQ(begin.out, Document("", "", Entry("MaxFps", "15")));
  EXPECT_EQ(begin.status, 0);
}

TEST(DumpCommand, FindsAMomentInAnOlderFileOfASet) {
  Program program;
  program.File("a.tessel.1", RecordingPart(1) + R"({"type":"set","t":0.5,"call":7,"group":"Video",)" +
                                 R"("name":"MaxFps","new":"15","result":"nobody"})" + "\n" +
                                 RecordingPartEnd(1));
  program.File("a.tessel", RecordingPart(2));
  std::filesystem::create_directory(program.Path("links"));
  std::filesystem::create_symlink("../a.tessel", program.Path("links/b.tessel"));
  for (const char* const name : {"a.tessel", "links/b.tessel"}) {
    const Finished run = program.Run({"dump", name, "--at", "0.5"});
    EXPECT_EQ(run.out, Document("", "", Entry("MaxFps", "15")));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
  }
}

TEST(DumpCommand, RefusesACallThatIsNotThere) {
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"--at", "1"}, "a.tessel at 1 s: calls 7, 8 are there: choose with --call\n"},
      {{"--at", "0.2", "--call", "8"}, "a.tessel at 0.2 s: call 8 is not there; there is 7\n"},
      {{"--call", "8"}, "a.tessel at the end: call 8 is not there; there is 7\n"},
      {{"--at", "-1"},
       "tessel: --at: expected a number from 0 to 1e+09, not \"-1\" (tessel dump --help tells more)\n"},
  };
  for (const auto& [options, message] : rows) {
    const Finished run = Dump(Recording("call"), options);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 2);
  }
  EXPECT_EQ(Dump(kRecordingBegin, {}).err, "a.tessel at the end: no call is there\n");
}

TEST(DumpCommand, SaysNoMoreThanWhyAFileIsNoRecording) {
  const std::pair<const char*, const char*> rows[] = {
      {"empty", "a.tessel:1: the file is empty\n"},
      {"newer", "a.tessel:1: version 2 of the format: only version 1 can be read\n"},
      {"foreign", "a.tessel:1: no recording: the first line is not of type \"recording\", with a version\n"},
  };
  for (const auto& [fixture, message] : rows) {
    const Finished run = Dump(Recording(fixture), {"--at", "1"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 2);
    const Finished diff =
        Program().File("a.tessel", Recording(fixture)).Run({"diff", "a.tessel@1", "a.tessel@2"});
    EXPECT_EQ(diff.out, "");
    EXPECT_EQ(diff.err, message);
    EXPECT_EQ(diff.status, 2);
  }
}
