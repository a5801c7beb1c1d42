// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "Program.h"

namespace {

constexpr const char* kFirst = R"({"Audio":[{"key":"A","value":"1"}]})";
constexpr const char* kSecond = R"({"Audio":[{"key":"A","value":"2"}]})";

Finished RunOn(Program::Output output, const char* variable) {
  return Program()
      .File("1.json", kFirst)
      .File("2.json", kSecond)
      .To(output)
      .Environment(variable)
      .Run({"apply", "1.json", "2.json", "--watch", "Audio/*"});
}

bool HasColour(const Finished& run) {
  return run.out.find('\033') != std::string::npos;
}

}  // namespace

TEST(Colour, MarksWhatIsNewOrChangedOnATerminal) {
  EXPECT_EQ(RunOn(Program::Output::kTerminal, "UNUSED=1").out,
            "\033[1m1.json\033[0m\r\n"
            "  \033[36mevent\033[0m    Audio/A: none -> \"1\" (on main)\r\n"
            "  \033[32mnew\033[0m      Audio/A: \"1\"\r\n"
            "  1 new\r\n"
            "\033[1m2.json\033[0m\r\n"
            "  \033[36mevent\033[0m    Audio/A: \"1\" -> \"2\" (on main)\r\n"
            "  \033[33mchanged\033[0m  Audio/A: \"1\" -> \"2\"\r\n"
            "  1 changed\r\n");
}

TEST(Colour, IsLeftOutWhereItIsNotWanted) {
  EXPECT_TRUE(HasColour(RunOn(Program::Output::kTerminal, "NO_COLOR=")));
  EXPECT_FALSE(HasColour(RunOn(Program::Output::kTerminal, "NO_COLOR=1")));
  EXPECT_FALSE(HasColour(RunOn(Program::Output::kFile, "UNUSED=1")));
}

TEST(Colour, IsLeftOutOnATerminalThatHasNone) {
  const Finished run = Program(Program::Terminal::kDumb)
                           .File("1.json", kFirst)
                           .To(Program::Output::kTerminal)
                           .Run({"apply", "1.json"});
  EXPECT_EQ(run.out, "1.json\r\n  new      Audio/A: \"1\"\r\n  1 new\r\n");
}
