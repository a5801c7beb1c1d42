// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Program.h"
#include "Recordings.h"
#include "recording/RecordingParts.h"

namespace {

Finished Log(std::vector<std::string> options, const std::string& fixture = "call") {
  options.insert(options.begin(), {"log", "a.tessel"});
  return Program().File("a.tessel", Recording(fixture)).Run(options);
}

// The line that was printed for an event of the type.
std::string LineOf(const std::string& out, const std::string& type, int which = 0) {
  std::size_t begin = 0;
  for (std::size_t end; (end = out.find('\n', begin)) != std::string::npos; begin = end + 1) {
    if (out.compare(begin + 14, type.size() + 1, type + " ") != 0) continue;
    if (which-- == 0) return out.substr(begin, end - begin);
  }
  return "";
}

// Of a set that is another recording's.
std::string PartOfAnother(int part) {
  std::string text = RecordingPart(part);
  return text.replace(text.find("09:00"), 5, "10:00");
}

constexpr const char* kBegin =
    "    0.000000  recording             version 1, began 2026-11-22T08:42:05.123456Z\n";
constexpr const char* kSet =
    "    1.204117  set          call 7   Video/MaxFps: \"30\" -> \"15\", notified 1; by \"bandwidth "
    "controller\", AdaptRate in libvideo.so\n";
constexpr const char* kLost = "    2.100000  lost                  12 events\n";
constexpr const char* kEnd = "    3.000000  recording             ended\n";

}  // namespace

TEST(LogCommand, ShowsALinePerEventInAlignedColumns) {
  const Finished run = Log({});
  EXPECT_EQ(
      run.out,
      std::string(kBegin) +
          R"(    0.000000  call         call 7   2 references, there at the start
    0.000000  set          call 7   Video/MaxFps: "30", there at the start; by Session::Start() in libsession.so
    0.000000  set          call 7   Audio/Codec: "opus", there at the start
    0.000000  subscribe    call 7   Video/MaxFps, id 3, there at the start
    0.000000  bind         call 7   Metrics/Load, binding 4, there at the start
    0.000000  statistics   call 7   video, common.bitrate=500000, common.codec="AV1", layer0.targetFps=30, there at the start
    0.250000  call         call 8   made, 1 reference; by libsession.so
)" + kSet +
          R"(    1.204131  deliver      call 7   Video/MaxFps: "30" -> "15", to subscription 3, posted, waited 14 us, ran 4.5 us
    1.500000  set          call 7   Feature/Sharp\u001b[1m: "\"yes\"", nobody notified; by lab.json:2:18
    1.500000  set          call 7   Audio/Codec: "opus" -> "opus", unchanged; by lab.json:3:18
    1.500000  apply        call 7   2 sets; by lab.json
    1.600000  set          call 7   Video/Key: (hidden), refused
    1.750000  set          call 8   Common/Layout: "0123456789"..., nobody notified; by "layout of a window that has a lon"
    1.800000  set          call 8   Common/Ping: "1", transient, nobody notified
    1.900000  bind         call 7   Metrics/Load: answered "0.5", binding 4, ran 2 us
    2.000000  statistics   call 7   video, common.bitrate=350000
)" + kLost +
          R"(    2.200000  deliver      call 8   an overwritten change, to subscription 5, dropped, waited 3 us
    2.250000  deliver      call 8   Common/Layout: "x", to subscription 6, initial, handed over, waited 0 us, ran 100 us, threw "no window"
    2.300000  remove       call 7   Audio/Codec: "opus", 1 removed
    2.350000  set          call 7   Video/Codec: "AV1", nobody notified
    2.400000  remove       call 7   Video/*, 2 removed
    2.450000  later                 a type that this program does not know
    2.500000  unsubscribe  call 7   Video/MaxFps, id 3
    2.500000  subscribe    call 7   Audio/Codec, id 9
    2.500000  bind         call 7   Metrics/Load, binding 10
    2.600000  statistics   call 7   video, released, 1 reference
    2.750000  statistics   call 7   video, common.bitrate=400000, layer0.targetFps=15
    2.800000  statistics   call 7   video, ended
    2.900000  call         call 8   ended, 0 references
)" + kEnd);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(LogCommand, ShowsWhatItKnowsOfALineThatLacksSomething) {
  const std::pair<const char*, const char*> rows[] = {
      {R"({"type":"call","t":1,"call":1234,"event":"made"})", "call         call 1234 made"},
      {R"({"type":"thirteenwords","t":1})", "thirteenwords          a type that this program does not know"},
      {R"({"type":"set","t":1,"call":7,"group":"Audio","name":"A","new":"1","result":"told"})",
       "set          call 7   Audio/A: \"1\", notified 0"},
      {R"({"type":"deliver","t":1,"call":7,"id":1,"cause":2,"way":"direct","name":"A","new":"1"})",
       "deliver      call 7   an overwritten change, to subscription 1, direct"},
      {R"({"type":"deliver","t":1,"call":7,"id":1,"cause":2,"way":"direct","group":"Audio","new":"1"})",
       "deliver      call 7   an overwritten change, to subscription 1, direct"},
      {R"({"type":"deliver","t":1,"call":7,"id":1,"cause":2,"way":"direct","group":"Audio","hidden":["name","new"]})",
       "deliver      call 7   Audio/(hidden): (hidden), to subscription 1, direct"},
  };
  for (const auto& [line, shown] : rows) {
    const Finished run = Program()
                             .File("a.tessel", kRecordingBegin + std::string(line))
                             .Run({"log", "a.tessel", "--since", "1"});
    EXPECT_TRUE(run.out.ends_with("\n    1.000000  " + std::string(shown) + "\n")) << run.out << run.err;
  }
}

TEST(LogCommand, ShowsWhomAChangeNotifiedBeforeWhatElseCameOfIt) {
  const std::string lines =
      R"({"type":"remove","t":1,"call":7,"group":"Audio","name":"Codec","old":"opus","count":1,"result":"told",)"
      R"("told":2})"
      "\n"
      R"({"type":"apply","t":2,"call":7,"count":1,"result":"refused","run_us":3})";
  const Finished run = Program()
                           .File("a.tessel", kRecordingBegin + lines)
                           .Run({"log", "a.tessel", "--type", "remove", "--type", "apply"});
  EXPECT_EQ(run.out,
            "    1.000000  remove       call 7   Audio/Codec: \"opus\", notified 2, 1 removed\n"
            "    2.000000  apply        call 7   1 set, refused, ran 3 us\n");
}

TEST(LogCommand, WritesTheLinesAsTheRecordingHasThem) {
  const Finished run = Log({"--json"});
  EXPECT_EQ(run.out, Recording("call"));
  EXPECT_EQ(run.status, 0);
}

TEST(LogCommand, WritesASelectionThatIsARecordingItself) {
  Program program;
  program.File("a.tessel", Recording("call"));
  const std::string selected =
      program.Run({"log", "a.tessel", "--call", "8", "--name", "lay*", "--json"}).out;
  const Finished again = program.File("b.tessel", selected).Run({"log", "b.tessel"});
  EXPECT_EQ(
      again.out,
      std::string(kBegin) +
          "    1.750000  set          call 8   Common/Layout: \"0123456789\"..., nobody notified; by "
          "\"layout of a window that has a lon\"\n" +
          kLost +
          "    2.250000  deliver      call 8   Common/Layout: \"x\", to subscription 6, initial, handed "
          "over, waited 0 us, ran 100 us, threw \"no window\"\n" +
          kEnd);
  EXPECT_EQ(again.err, "");
  EXPECT_EQ(again.status, 0);
}

TEST(LogCommand, SelectsByGroupTimeAndOrigin) {
  const std::string framed = std::string(kBegin) + kSet + kEnd;
  EXPECT_EQ(Log({"--group", "Video", "--since", "1.204117", "--until", "1.21", "--origin", "*band*"}).out,
            framed);
  for (const char* const origin :
       {"adaptrate", "libvideo.so", "/opt/*/libvideo.so", "bandwidth controller"}) {
    EXPECT_EQ(Log({"--origin", origin, "--until", "2"}).out, framed) << origin;
  }
  EXPECT_EQ(Log({"--origin", "lab.json", "--type", "apply"}).out,
            "    1.500000  apply        call 7   2 sets; by lab.json\n");
  EXPECT_EQ(Log({"--origin", "video", "--until", "2"}).out, std::string(kBegin) + kEnd);
  EXPECT_EQ(Log({"--since", "2.95"}).out, std::string(kBegin) + kEnd);
  EXPECT_EQ(
      Log({"--group", "Audio", "--since", "2.3", "--until", "2.4"}).out,
      std::string(kBegin) + "    2.300000  remove       call 7   Audio/Codec: \"opus\", 1 removed\n" + kEnd);
}

TEST(LogCommand, LeavesOutWhatIsOfNoChosenType) {
  EXPECT_EQ(Log({"--type", "lost"}).out, kLost);
  EXPECT_EQ(Log({"--type", "lost", "--type", "recording"}).out, std::string(kBegin) + kLost + kEnd);
}

TEST(LogCommand, ShowsWhatWasLostWhateverElseIsChosen) {
  EXPECT_NE(Log({"--call", "99", "--name", "none", "--group", "Audio"}).out.find(kLost), std::string::npos);
  EXPECT_EQ(Log({"--since", "2.2"}).out.find(kLost), std::string::npos);
}

TEST(LogCommand, NamesEachDamagedLineAndShowsTheOthers) {
  const Finished run = Log({}, "damaged");
  EXPECT_EQ(run.out, std::string(kBegin) +
                         "    0.000000  call         call 7   2 references, there at the start\n" + kSet +
                         kEnd);
  EXPECT_EQ(run.err,
            "a.tessel:3: group: unknown\n"
            "a.tessel:4: expected a value\n"
            "a.tessel:5: count: expected a whole number, 0 or more\n");
  EXPECT_EQ(run.status, 2);
}

TEST(LogCommand, ReadsUpToAnEndThatIsCutOff) {
  const Finished run = Log({"--type", "recording", "--type", "deliver"}, "cut_off");
  EXPECT_EQ(run.out, kBegin);
  EXPECT_EQ(run.err, "a.tessel:10: the recording ends within this line\n");
  EXPECT_EQ(run.status, 0);
}

TEST(LogCommand, ReadsALastLineThatLacksNothingButItsEnd) {
  std::string text = Recording("call");
  text.pop_back();
  const Finished run = Program().File("a.tessel", text).Run({"log", "a.tessel"});
  EXPECT_EQ(LineOf(run.out, "recording", 1) + "\n", kEnd);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

// Of a set, a file that is known by its first line is opened once.
TEST(LogCommand, ShowsAFirstLineThatLacksItsEndOnce) {
  std::string begin = RecordingPart(2);
  begin.erase(begin.find('\n'));
  Program program;
  program.File("a.tessel", begin).File("b.tessel.1", RecordingPart(1) + RecordingPartEnd(1));
  EXPECT_EQ(program.Run({"log", "a.tessel", "--json"}).out, begin + "\n");
  program.File("b.tessel", begin);
  EXPECT_EQ(program.Run({"log", "b.tessel", "--json"}).out,
            RecordingPart(1) + RecordingPartEnd(1) + begin + "\n");
}

TEST(LogCommand, ReadsEveryBeginningOfARecordingButThatOfItsFirstLine) {
  Program program;
  const std::string text = Recording("cut_off");
  const std::size_t first = text.find('\n');
  for (std::size_t size = 0; size < text.size(); size += 37) {
    const Finished run = program.File("a.tessel", text.substr(0, size)).Run({"log", "a.tessel"});
    EXPECT_EQ(run.status, size < first ? 2 : 0) << size;
    EXPECT_EQ(run.out.starts_with(kBegin), size >= first) << size;
  }
}

TEST(LogCommand, RefusesFilesThatAreNoRecordingsOfThisVersion) {
  const std::pair<const char*, const char*> rows[] = {
      {"newer", "a.tessel:1: version 2 of the format: only version 1 can be read\n"},
      {"foreign", "a.tessel:1: no recording: the first line is not of type \"recording\", with a version\n"},
      {"empty", "a.tessel:1: the file is empty\n"},
  };
  for (const auto& [fixture, message] : rows) {
    const Finished run = Log({}, fixture);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 2);
  }
}

TEST(LogCommand, ShowsTheFilesThatAreWholeBesideOneThatIsNot) {
  Program program;
  program.File("empty.tessel", "").File("a.tessel", Recording("call"));
  const Finished run = program.Run({"log", "empty.tessel", "a.tessel", "--type", "lost"});
  EXPECT_EQ(run.out, kLost);
  EXPECT_EQ(run.err, "empty.tessel:1: the file is empty\n");
  EXPECT_EQ(run.status, 2);
}

TEST(LogCommand, OpensEveryFileBeforeItShowsAny) {
  Program program;
  const Finished missing =
      program.File("a.tessel", Recording("call")).Run({"log", "a.tessel", "none.tessel"});
  EXPECT_EQ(missing.out, "");
  EXPECT_EQ(missing.err, "none.tessel: cannot be read: No such file or directory\n");
  EXPECT_EQ(missing.status, 2);
  const Finished folder = program.Run({"log", "a.tessel", "."});
  EXPECT_EQ(folder.out, "");
  EXPECT_EQ(folder.err, ".: cannot be read: Is a directory\n");
  EXPECT_EQ(folder.status, 2);
}

TEST(LogCommand, LeavesOutALineThatIsTooLong) {
  std::string text = Recording("call");
  text.insert(text.find('\n') + 1,
              R"({"type":"lost","t":0,"count":1,"x":")" + std::string(1 << 20, 'x') + "\"}\n");
  const Finished run = Program().File("a.tessel", text).Run({"log", "a.tessel", "--type", "lost"});
  EXPECT_EQ(run.out, kLost);
  EXPECT_EQ(run.err, "a.tessel:2: the line is longer than 1 MiB\n");
  EXPECT_EQ(run.status, 2);
}

TEST(LogCommand, ReadsALineOfTheGreatestLength) {
  std::string line = R"({"type":"lost","t":0,"count":1,"x":")";
  line += std::string((1 << 20) - line.size() - 2, 'x') + "\"}";
  const Finished run =
      Program().File("a.tessel", kRecordingBegin + line + "\n").Run({"log", "a.tessel", "--type", "lost"});
  EXPECT_EQ(run.out, "    0.000000  lost                  1 event\n");
  EXPECT_EQ(run.err, "");
}

TEST(LogCommand, ColoursTheTypesOnATerminal) {
  Program program;
  program.File("a.tessel", Recording("call")).To(Program::Output::kTerminal);
  const std::string out = program.Run({"log", "a.tessel", "--type", "lost"}).out;
  EXPECT_EQ(out, "    2.100000  \033[31mlost\033[0m                  12 events\r\n");
  const std::string all = program.Run({"log", "a.tessel"}).out;
  const std::pair<const char*, const char*> rows[] = {
      {"recording", "1"},  {"call", "1"},         {"set", "33"},  {"remove", "31"},  {"apply", "33"},
      {"subscribe", "32"}, {"unsubscribe", "32"}, {"bind", "32"}, {"deliver", "36"}, {"statistics", "1"},
  };
  for (const auto& [type, colour] : rows) {
    EXPECT_NE(all.find("\033[" + std::string(colour) + "m" + type + "\033[0m"), std::string::npos) << type;
  }
}

TEST(LogCommand, HandsNoControlCharacterToATerminal) {
  const std::string line = "{\"type\":\"a\x1b[1m\",\"t\":1,\"x\":\"\x1b\xff\"\t\r}\n";
  std::string text = Recording("call");
  text.insert(text.find('\n') + 1, line);
  Program program;
  program.File("a.tessel", text);
  for (const auto& options : {std::vector<std::string>{}, {"--json"}}) {
    std::vector<std::string> arguments = {"log", "a.tessel", "--until", "1"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const std::string out = program.Run(arguments).out;
    EXPECT_EQ(out.find_first_of("\x1b\xff\t\r"), std::string::npos) << out;
    EXPECT_NE(out.find("a\\u001b[1m"), std::string::npos) << out;
  }
  const Finished again =
      program.File("b.tessel", program.Run({"log", "a.tessel", "--json"}).out).Run({"log", "b.tessel"});
  EXPECT_EQ(again.status, 0) << again.err;
}

TEST(LogCommand, RefusesWhatItCannotDo) {
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"--group", "Vidio"}, "--group: unknown group \"Vidio\" (did you mean \"Video\"?)"},
      {{"b.tessel", "--follow"}, "--follow: expected one FILE"},
      {{"--type", "sets"},
       "--type: expected recording or call or set or remove or apply or subscribe or unsubscribe or bind or "
       "deliver or "
       "statistics or lost, not \"sets\" (did you mean \"set\"?) (tessel log --help tells more)"},
      {{"--since", "x"},
       "--since: expected a number from 0 to 1e+09, not \"x\" (tessel log --help tells more)"},
      {{"-", "-"}, "standard input can be read once only"},
  };
  for (const auto& [options, message] : rows) {
    const Finished run = Log(options);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "tessel: " + message + "\n");
    EXPECT_EQ(run.status, 2);
  }
}

// The test appends each piece once the program has shown the one before.
TEST(LogCommand, FollowsARecordingUntilItEnds) {
  const std::string text = Recording("call");
  const std::size_t lost = text.find("{\"type\":\"lost\""), inLost = lost + 20, end = text.rfind("{\"type\"");
  Program program;
  program.File("a.tessel", text.substr(0, inLost));
  std::future<Finished> run = std::async(std::launch::async, [&] {
    return program.Run({"log", "a.tessel", "--follow", "--type", "statistics", "--type", "lost"});
  });
  const auto append = [&](const std::string& shown, std::size_t from, std::size_t to) {
    while (program.Contents(".out").find(shown) == std::string::npos) std::this_thread::yield();
    std::ofstream(program.Path("a.tessel"), std::ios::binary | std::ios::app) << text.substr(from, to - from);
  };
  append("common.bitrate=350000\n", inLost, end);
  append("video, ended\n", end, text.size());
  const Finished finished = run.get();
  EXPECT_EQ(finished.out, Log({"--type", "statistics", "--type", "lost"}).out);
  EXPECT_EQ(finished.err, "");
  EXPECT_EQ(finished.status, 0);
}

// Makes place for the next file, twice before anybody looks; the second time, the file between is gone.
TEST(LogCommand, FollowsARotatedSetUntilTheRecordingEnds) {
  for (const bool isGone : {false, true}) {
    Program program;
    program.File("a.tessel", RecordingPart(1) + RecordingPartEnd(1))
        .File("other", RecordingPart(2) + RecordingPartEnd(2));
    program.File("last", RecordingPart(3) + kLastPartEnd);
    std::future<Finished> run = std::async(
        std::launch::async, [&] { return program.Run({"log", "a.tessel", "--follow", "--json"}); });
    while (program.Contents(".out").find("goes on in the next file") == std::string::npos)
      std::this_thread::yield();
    std::filesystem::rename(program.Path("a.tessel"), program.Path("a.tessel.1"));
    if (!isGone) std::filesystem::rename(program.Path("other"), program.Path("a.tessel.2"));
    std::filesystem::rename(program.Path("last"), program.Path("a.tessel"));
    const Finished finished = run.get();
    EXPECT_EQ(finished.out, RecordingPart(1) + RecordingPartEnd(1) +
                                (isGone ? kLostPart : RecordingPart(2) + RecordingPartEnd(2)) +
                                RecordingPart(3) + kLastPartEnd);
    EXPECT_EQ(finished.err, "");
    EXPECT_EQ(finished.status, 0);
  }
}

namespace {

// The files of a set in a folder of their own, and what it is when it is read.
Program& MakeSet(Program& program) {
  std::filesystem::create_directory(program.Path("set"));
  return program.File("set/a.tessel.1", RecordingPart(1) + RecordingPartEnd(1))
      .File("set/a.tessel.2", RecordingPart(2) + RecordingPartEnd(2))
      .File("set/a.tessel", RecordingPart(3) + kLastPartEnd);
}
const std::string kSetInOneFile = RecordingPart(1) + RecordingPartEnd(1) + RecordingPart(2) +
                                  RecordingPartEnd(2) + RecordingPart(3) + kLastPartEnd;

}  // namespace

TEST(LogCommand, ReadsAllFilesOfASetByItsName) {
  Program program;
  MakeSet(program);
  std::filesystem::create_symlink("set/a.tessel", program.Path("link"));
  for (const char* const name : {"set/a.tessel", "link"}) {
    for (const auto& options : {std::vector<std::string>{"--json"}, {"--json", "--follow"}}) {
      std::vector<std::string> arguments = {"log", name};
      arguments.insert(arguments.end(), options.begin(), options.end());
      const Finished run = program.Run(arguments);
      EXPECT_EQ(run.out, kSetInOneFile) << name;
      EXPECT_EQ(run.err, "");
      EXPECT_EQ(run.status, 0);
    }
  }
}

TEST(LogCommand, ReadsTheFilesOfASetOnceWhicheverAreNamed) {
  Program program;
  MakeSet(program);
  const std::string first = "set/a.tessel.1", second = "set/a.tessel.2", last = "set/a.tessel";
  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{last, first, second}, kSetInOneFile},
      {{second, first, last}, kSetInOneFile},
      {{second, first}, RecordingPart(1) + RecordingPartEnd(1) + RecordingPart(2) + RecordingPartEnd(2)},
      {{second}, RecordingPart(2) + RecordingPartEnd(2)},
      {{second, "b.tessel"}, RecordingPart(2) + RecordingPartEnd(2) + kRecordingBegin},
      {{"b.tessel", "b.tessel"}, std::string(kRecordingBegin) + kRecordingBegin},
  };
  program.File("b.tessel", kRecordingBegin);
  for (const auto& [files, lines] : rows) {
    std::vector<std::string> arguments = {"log", "--json"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.out, lines) << files.front();
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
  }
}

TEST(LogCommand, ReadsTheFilesOfASetThatAreThereInTheirOrder) {
  const auto lost = [](int part, int count) {
    return R"({"type":"lost","t":)" + std::to_string(part - 1) + ",\"count\":" + std::to_string(count) +
           "}\n";
  };
  const auto whole = [](int part) { return RecordingPart(part) + RecordingPartEnd(part); };
  Program program;
  program.File("a", RecordingPart(5) + kLastPartEnd).File("a.3", whole(3)).File("a.1", whole(1));
  const std::string three = whole(1) + lost(3, 10) + whole(3) + lost(5, 10) + RecordingPart(5) + kLastPartEnd;
  EXPECT_EQ(program.Run({"log", "a", "a.3", "a.1", "--json"}).out, three);
  EXPECT_EQ(program.Run({"log", "a.1", "a", "a.3", "--json"}).out, three);
  program.File("a.4", whole(4));
  EXPECT_EQ(program.Run({"log", "a.1", "a", "--json"}).out,
            whole(1) + lost(3, 10) + whole(3) + whole(4) + RecordingPart(5) + kLastPartEnd);
  // One that a crash has left without an end.
  program.File("a.4", RecordingPart(4));
  const std::string cut = RecordingPart(4) + RecordingPart(5) + kLastPartEnd;
  EXPECT_EQ(program.Run({"log", "a.3", "a", "--json"}).out, whole(3) + cut);
  program.File("b.4", RecordingPart(4)).File("b", RecordingPart(5) + kLastPartEnd);
  EXPECT_EQ(program.Run({"log", "b.4", "b", "--json"}).out, cut);
  EXPECT_EQ(program.Run({"log", "b", "b.4", "--json"}).out, cut);
}

TEST(LogCommand, ReadsTheOlderFilesOfASetUpToOneThatIsMissingOrOfAnother) {
  Program program;
  MakeSet(program);
  std::filesystem::remove(program.Path("set/a.tessel.2"));
  EXPECT_EQ(program.Run({"log", "set/a.tessel", "--json"}).out, RecordingPart(3) + kLastPartEnd);
  for (const std::string& second : {Recording("call"), PartOfAnother(2), RecordingPart(1)}) {
    program.File("set/a.tessel.2", second);
    EXPECT_EQ(program.Run({"log", "set/a.tessel", "--json"}).out, RecordingPart(3) + kLastPartEnd);
  }
  // The one that is missing between two that are named is counted.
  EXPECT_EQ(program.Run({"log", "set/a.tessel", "set/a.tessel.1", "--json"}).out,
            RecordingPart(1) + RecordingPartEnd(1) + kLostPart + RecordingPart(3) + kLastPartEnd);
  EXPECT_EQ(program.Run({"log", "set/a.tessel", "set/a.tessel.1", "--type", "lost"}).out,
            "    2.000000  lost                  10 events\n");
}

// Each counts its own events.
TEST(LogCommand, MissesNoEventsBehindAnEndThatHasNoNumber) {
  const std::string text = RecordingPart(1) + kLastPartEnd + RecordingPart(2);
  EXPECT_EQ(Program().File("a.tessel", text).Run({"log", "a.tessel", "--json"}).out, text);
}

TEST(LogCommand, ReportsEachFileThatIsNoRecording) {
  Program program;
  program.File("a", "").File("b", "");
  EXPECT_EQ(program.Run({"log", "a", "b"}).err, "a:1: the file is empty\nb:1: the file is empty\n");
}

TEST(LogCommand, SaysWhyReadingFails) {
  const Finished run = Program().Run({"log", "/proc/self/mem"});
  EXPECT_EQ(run.err, "/proc/self/mem: cannot be read: Input/output error\n");
  EXPECT_EQ(run.status, 2);
}

// A byte, and once it is read, the rest.
TEST(LogCommand, FollowsAPipeHoweverItsBytesArrive) {
  Program program;
  ASSERT_EQ(::mkfifo(program.Path("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
  std::future<Finished> run =
      std::async(std::launch::async, [&] { return program.Run({"log", "pipe", "--follow", "--json"}); });
  const int pipe = ::open(program.Path("pipe").c_str(), O_WRONLY | O_CLOEXEC);
  const std::string text = Recording("call"), begin = text.substr(0, text.find('\n') + 1);
  for (const std::string& part : {begin, text.substr(begin.size(), 1), text.substr(begin.size() + 1)}) {
    EXPECT_EQ(::write(pipe, part.data(), part.size()), static_cast<ssize_t>(part.size()));
    for (int left = 1; left != 0; std::this_thread::yield()) ASSERT_EQ(::ioctl(pipe, FIONREAD, &left), 0);
  }
  ::close(pipe);
  EXPECT_EQ(run.get().out, text);
}

TEST(LogCommand, MissesNoEventsBetweenTwoRecordingsThatAreNoSet) {
  const auto begin = [](const char* next) {
    return R"({"type":"recording","t":0,"version":1,"wall":"2026-11-22T09:00:00Z","next":)" +
           std::string(next) + "}\n";
  };
  const std::string text = begin("1") + R"({"type":"recording","t":1,"next":9,"event":"ended"})" + "\n" +
                           begin("50") + R"({"type":"recording","t":1,"next":51,"event":"ended"})" + "\n";
  const Finished run = Program().File("a.tessel", text).Run({"log", "a.tessel", "--json"});
  EXPECT_EQ(run.out, text);
  EXPECT_EQ(run.status, 0);
}

TEST(LogCommand, ShowsTheWholeTimeOfALineHoweverLargeItIs) {
  const Finished run =
      Program()
          .File("a.tessel", kRecordingBegin + std::string(R"({"type":"lost","t":1e100,"count":1})") + "\n")
          .Run({"log", "a.tessel", "--type", "lost"});
  EXPECT_TRUE(run.out.ends_with(".000000  lost                  1 event\n")) << run.out;
}

TEST(LogCommand, LooksForNoMoreFilesOfASetThanThereAre) {
  Program program;
  const std::string far = R"({"type":"recording","t":9,"version":1,"wall":"2026-11-22T09:00:00Z","next":99,)"
                          R"("part":9007199254740992})"
                          "\n";
  program.File("a.tessel.1", RecordingPart(1) + RecordingPartEnd(1)).File("a.tessel", far);
  EXPECT_EQ(program.Run({"log", "a.tessel.1", "a.tessel", "--json"}).out,
            RecordingPart(1) + RecordingPartEnd(1) + R"({"type":"lost","t":9,"count":79})" + "\n" + far);
}

TEST(LogCommand, NamesTheFileOfASetThatIsDamagedAndReadsTheNext) {
  Program program;
  MakeSet(program)
      .File("set/a.tessel.1", RecordingPart(1) + "{}\n" + RecordingPart(1).substr(0, 20))
      .File("set/a.tessel.2", RecordingPart(2) + "[]\n" + RecordingPartEnd(2));
  const Finished run = program.Run({"log", "set/a.tessel", "--json"});
  EXPECT_EQ(run.out,
            RecordingPart(1) + RecordingPart(2) + RecordingPartEnd(2) + RecordingPart(3) + kLastPartEnd);
  EXPECT_EQ(run.err,
            "set/a.tessel.1:3: type: missing\n"
            "set/a.tessel.1:4: the recording ends within this line\n"
            "set/a.tessel.2:3: expected an object\n");
  EXPECT_EQ(run.status, 2);
}

// Between the two names that a rotation gives where a file cannot have both.
TEST(LogCommand, ReadsTheFileThatIsAboutToTakeTheNameOfItsSet) {
  Program program;
  MakeSet(program);
  std::filesystem::rename(program.Path("set/a.tessel"), program.Path("set/a.tessel.next"));
  EXPECT_EQ(program.Run({"log", "set/a.tessel", "--json"}).out, kSetInOneFile);
  program.File("b.tessel.next", kRecordingBegin);
  const Finished foreign = program.Run({"log", "b.tessel"});
  EXPECT_EQ(foreign.err, "b.tessel: cannot be read: No such file or directory\n");
  EXPECT_EQ(foreign.status, 2);
}

// It would wait until somebody writes to it.
TEST(LogCommand, OpensNoPipeThatIsNamedAsAFileOfItsSet) {
  Program program;
  program.File("a.tessel", RecordingPart(2));
  for (const char* const name : {"a.tessel.1", "b.tessel.next"}) {
    const std::string pipe = program.Path(name);
    ASSERT_EQ(::mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
    std::atomic<bool> isOver{false}, wasOpened{false};
    std::thread writer([&] {
      for (; !isOver; std::this_thread::yield()) {
        const int opened = ::open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (opened == -1) continue;
        wasOpened = true;
        ::close(opened);
      }
    });
    program.Run({"log", std::string(name).substr(0, 8)});
    isOver = true;
    writer.join();
    EXPECT_FALSE(wasOpened) << name;
  }
}

// Files of a set are counted from 1.
TEST(LogCommand, ReadsNoFileOfASetBeforeTheFirst) {
  Program program;
  MakeSet(program).File("set/a.tessel.0",
                        R"({"type":"recording","t":0,"version":1,"wall":"2026-11-22T09:00:00Z","part":0})");
  EXPECT_EQ(program.Run({"log", "set/a.tessel", "--json"}).out, kSetInOneFile);
}

TEST(RecordingParts, ExpectMoreOfAFileThatIsEmptyYet) {
  Program program;
  const auto before = OpenFiles();
  {
    RecordingParts parts(program.File("a.tessel", "").Path("a.tessel"));
    EXPECT_EQ(parts.OpenNext(), RecordingParts::Next::kNotYet);
  }
  EXPECT_EQ(OpenFiles(), before);
}

TEST(LogCommand, FollowsAFullFileOfASetThatIsNamedToItsEnd) {
  Program program;
  const Finished run = MakeSet(program).Run({"log", "set/a.tessel.2", "--follow", "--json"});
  EXPECT_EQ(run.out, RecordingPart(2) + RecordingPartEnd(2));
  EXPECT_EQ(run.status, 0);
}

TEST(LogCommand, FollowsNoRecordingThatOnlyHasTheName) {
  for (const std::string& other :
       {std::string(), Recording("call"), PartOfAnother(3) + kLastPartEnd, RecordingPart(1) + kLastPartEnd}) {
    Program program;
    program.File("a.tessel", RecordingPart(2) + RecordingPartEnd(2)).File("a.tessel.3", Recording("call"));
    program.File("other", other);
    std::future<Finished> run = std::async(
        std::launch::async, [&] { return program.Run({"log", "a.tessel", "--follow", "--json"}); });
    while (program.Contents(".out").find("goes on in the next file") == std::string::npos)
      std::this_thread::yield();
    if (other.empty()) {  // In its place, so that it is the same file.
      std::filesystem::resize_file(program.Path("a.tessel"), 0);
    } else {
      std::filesystem::rename(program.Path("other"), program.Path("a.tessel"));
    }
    EXPECT_EQ(run.get().out, RecordingPart(2) + RecordingPartEnd(2));
  }
}

// As where the lines at its end found no room.
TEST(LogCommand, FollowsNoRecordingThatLosesItsEnd) {
  Program program;
  const std::string text = kRecordingBegin + RecordingPart(1).substr(RecordingPart(1).find('\n') + 1);
  program.File("a.tessel", text);
  std::future<Finished> run =
      std::async(std::launch::async, [&] { return program.Run({"log", "a.tessel", "--follow", "--json"}); });
  while (program.Contents(".out") != text) std::this_thread::yield();
  std::filesystem::resize_file(program.Path("a.tessel"), std::string_view(kRecordingBegin).size());
  EXPECT_EQ(run.get().out, text);
}

// The other one is longer from its first moment on.
TEST(LogCommand, FollowsNoRecordingThatTakesTheFileOfAnother) {
  Program program;
  program.File("a.tessel", RecordingPart(1));
  std::future<Finished> run =
      std::async(std::launch::async, [&] { return program.Run({"log", "a.tessel", "--follow", "--json"}); });
  while (program.Contents(".out") != RecordingPart(1)) std::this_thread::yield();
  std::ofstream(program.Path("a.tessel"), std::ios::binary | std::ios::in) << Recording("call");
  const Finished finished = run.get();
  EXPECT_EQ(finished.out, RecordingPart(1));
  EXPECT_EQ(finished.err, "");
}

TEST(LogCommand, FollowsNoLongerWhenNobodyReads) {
  const Finished run = Program()
                           .File("a.tessel", Recording("cut_off"))
                           .To(Program::Output::kNoReader)
                           .Run({"log", "a.tessel", "--follow"});
  EXPECT_EQ(run.status, 0);
}

TEST(LogCommand, ReadsStandardInput) {
  const Finished run = Program().Input(Recording("call")).Run({"log", "-", "--type", "lost", "--follow"});
  EXPECT_EQ(run.out, kLost);
  EXPECT_EQ(run.status, 0);
}

TEST(LogCommand, FollowsAPipeToItsEnd) {
  const Finished run = Program()
                           .LateInput(Recording("cut_off"), std::chrono::milliseconds(1))
                           .Run({"log", "-", "--type", "recording", "--follow"});
  EXPECT_EQ(run.out, kBegin);
  EXPECT_EQ(run.err, "<stdin>:10: the recording ends within this line\n");
  EXPECT_EQ(run.status, 0);
}
