// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

#include "Program.h"

namespace {

constexpr const char* kFirst =
    R"({"Audio":[{"key":"A","value":"1"},{"key":"A","value":"2"},{"key":"B","value":"3"}],"Video":[{"key":"A","value":"4"}]})";
constexpr const char* kSecond = R"({"Audio":[{"key":"A","value":"2"},{"key":"B","value":"5"}]})";

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) ++count;
  return count;
}

Program& Documents(Program& program) {
  return program.File("1.json", kFirst).File("2.json", kSecond);
}

}  // namespace

TEST(Watcher, PrintsEachChangeOfANameAsItArrivesOnTheMainThread) {
  Program program;
  const Finished run = Documents(program).Run({"apply", "1.json", "2.json", "--watch", "Audio/A"});
  EXPECT_EQ(run.out,
            "1.json\n"
            "  event    Audio/A: none -> \"1\" (on main)\n"
            "  event    Audio/A: \"1\" -> \"2\" (on main)\n"
            "  new      Audio/A: \"2\"\n"
            "  new      Audio/B: \"3\"\n"
            "  new      Video/A: \"4\"\n"
            "  3 new\n"
            "2.json\n"
            "  changed  Audio/B: \"3\" -> \"5\"\n"
            "  1 changed, 1 unchanged\n");
  EXPECT_EQ(run.status, 0);
}

TEST(Watcher, GetsTheEventsOfAllNamesOfAGroupOnceEach) {
  Program program;
  const Finished run =
      Documents(program).Run({"apply", "1.json", "2.json", "--quiet", "--set", "Audio/C=6", "--watch",
                              "Audio/*", "--watch", "Audio/A", "--watch", "Audio/A", "--watch", "Audio/*"});
  EXPECT_EQ(run.out,
            "  event    Audio/A: none -> \"1\" (on main)\n"
            "  event    Audio/A: \"1\" -> \"2\" (on main)\n"
            "  event    Audio/B: none -> \"3\" (on main)\n"
            "  event    Audio/B: \"3\" -> \"5\" (on main)\n"
            "  event    Audio/C: none -> \"6\" (on main)\n");
}

TEST(Watcher, WatchesTheNamesThatFitAWildcardInAnyLetterCase) {
  Program program;
  program.File("a.json", R"({"Audio":[{"key":"MinBitrate","value":"1"},{"key":"Bitrate","value":"2"},
{"key":"BitrateMode","value":"3"}],"Video":[{"key":"Bitrate","value":"4"}]})");
  const std::string minimum = "  event    Audio/MinBitrate: none -> \"1\" (on main)\n";
  const std::string bitrate = "  event    Audio/Bitrate: none -> \"2\" (on main)\n";
  const std::string mode = "  event    Audio/BitrateMode: none -> \"3\" (on main)\n";
  const std::pair<std::string, std::string> patterns[] = {
      {"Audio/*bitrate", minimum + bitrate}, {"Audio/B*", bitrate + mode}, {"Audio/???bitrate", minimum},
      {"Audio/*", minimum + bitrate + mode}, {"Audio/bitrate", ""},        {"Audio/?", ""}};
  for (const auto& [pattern, events] : patterns) {
    EXPECT_EQ(program.Run({"apply", "a.json", "-q", "--watch", pattern}).out, events) << pattern;
  }
}

TEST(Watcher, GetsNoEventOfASetThatChangesNothing) {
  Program program;
  const Finished run = Documents(program).Run(
      {"apply", "2.json", "--quiet", "--set", "Audio/A=2", "--set", "Audio/B=6", "--watch", "Audio/*"});
  EXPECT_EQ(run.out,
            "  event    Audio/A: none -> \"2\" (on main)\n"
            "  event    Audio/B: none -> \"5\" (on main)\n"
            "  event    Audio/B: \"5\" -> \"6\" (on main)\n");
}

TEST(Watcher, GetsPostedEventsOnTheWorkerInOrder) {
  Program program;
  const Finished run = Documents(program).Run(
      {"apply", "1.json", "2.json", "--async", "--watch", "Audio/*", "--set", "Audio/A=9"});
  EXPECT_EQ(run.out,
            "1.json\n"
            "  event    Audio/A: none -> \"1\" (on worker)\n"
            "  event    Audio/A: \"1\" -> \"2\" (on worker)\n"
            "  event    Audio/B: none -> \"3\" (on worker)\n"
            "  new      Audio/A: \"2\"\n"
            "  new      Audio/B: \"3\"\n"
            "  new      Video/A: \"4\"\n"
            "  3 new\n"
            "2.json\n"
            "  event    Audio/B: \"3\" -> \"5\" (on worker)\n"
            "  changed  Audio/B: \"3\" -> \"5\"\n"
            "  1 changed, 1 unchanged\n"
            "--set\n"
            "  event    Audio/A: \"2\" -> \"9\" (on worker)\n"
            "  changed  Audio/A: \"2\" -> \"9\"\n"
            "  1 changed\n");
  EXPECT_EQ(run.status, 0);
}

TEST(Watcher, GetsNoEventOfANameThatIsNotSet) {
  Program program;
  const Finished run = Documents(program).Run({"apply", "2.json", "--quiet", "--watch", "Audio/Nothing",
                                               "--watch", "Common/*", "--watch", "Video/B"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(Watcher, LosesNoEventOfThousands) {
  constexpr std::size_t kEntries = 20000;
  std::string text = "{\"Metrics\":[";
  for (std::size_t number = 0; number < kEntries; ++number) {
    text += (number == 0 ? "" : ",") + ("{\"key\":\"N" + std::to_string(number % 100)) + "\",\"value\":\"" +
            std::to_string(number) + "\"}";
  }
  text += "]}";
  for (const std::string delivery : {"main", "worker"}) {
    Program program;
    program.Input(text);
    const Finished run = delivery == "main"
                             ? program.Run({"apply", "-", "-q", "--watch", "Metrics/*"})
                             : program.Run({"apply", "-", "-q", "--watch", "Metrics/*", "--async"});
    EXPECT_EQ(Count(run.out, "(on " + delivery + ")\n"), kEntries);
    EXPECT_EQ(Count(run.out, "\n"), kEntries);
    EXPECT_EQ(run.status, 0);
  }
}

TEST(Watcher, RefusesToPostWithoutAWatch) {
  const Finished run = Program().Input("{}").Run({"apply", "-", "--async"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "tessel: --async requires --watch (tessel apply --help tells more)\n");
  EXPECT_EQ(run.status, 2);
}
