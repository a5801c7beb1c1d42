// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Program.h"

namespace {

constexpr auto kLong = std::chrono::milliseconds(1400);
constexpr const char* kSettings = R"({"Audio":[]})";
constexpr const char* kLine = "\r\033[Ktessel: reading <stdin>, ";

}  // namespace

TEST(Progress, IsShownOnATerminalAndRemovedInTheEnd) {
  const Finished run = Program().InputOnceShown(kSettings, kLine).ErrorsToTerminal().Run({"lint", "-"});
  EXPECT_TRUE(run.err.starts_with(kLine)) << run.err;
  EXPECT_TRUE(run.err.ends_with("\r\033[K")) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.status, 0);
}

// Reading is the one activity of the command, and fails.
TEST(Progress, IsShownOnceForEachSecondAndRemovedBeforeAnythingElse) {
  const Finished run = Program().InputOnceShown(kSettings, kLine).ErrorsToTerminal().Run({"stats", "-"});
  std::string_view left = run.err;
  for (int before = 0; left.starts_with(kLine);) {
    left.remove_prefix(std::string_view(kLine).size());
    const int seconds = std::atoi(left.data());
    EXPECT_GT(seconds, before);
    before = seconds;
    left.remove_prefix(std::to_string(seconds).size());
    EXPECT_TRUE(left.starts_with(" s\r\033[K")) << run.err;
    left.remove_prefix(2);
  }
  EXPECT_TRUE(left.starts_with("\r\033[K<stdin>: 12 bytes are no whole number of blocks")) << run.err;
}

TEST(Progress, IsNotShownWithinTheFirstSecond) {
  const Finished run = Program().InputOnceShown(kSettings, kLine).ErrorsToTerminal().Run({"lint", "-"});
  EXPECT_THAT(run.err.substr(std::string(kLine).size()), testing::ContainsRegex("^[1-9][0-9]* s"));
  // Nothing at all, unless the machine took more than a second for it.
  const std::string shown = Program().Input(kSettings).ErrorsToTerminal().Run({"apply", "-"}).err;
  EXPECT_EQ(shown.find(", 0 s"), std::string::npos);
  EXPECT_TRUE(shown.empty() || shown.find(" s") != std::string::npos);
}

TEST(Progress, IsShownOnACapableTerminalOnly) {
  EXPECT_EQ(Program().LateInput(kSettings, kLong).Run({"lint", "-"}).err, "");
  EXPECT_EQ(
      Program(Program::Terminal::kDumb).LateInput(kSettings, kLong).ErrorsToTerminal().Run({"lint", "-"}).err,
      "");
}

TEST(Progress, IsNotShownWhileAUserTypes) {
  const Finished run = Program()
                           .InputFromTerminal()
                           .LateInput(std::string(kSettings) + "\n\x04", kLong)
                           .ErrorsToTerminal()
                           .Run({"lint", "-"});
  // What was typed, up to a Ctrl-D: checking it may take long.
  EXPECT_TRUE(run.err.starts_with(std::string(kSettings) + "\r\n")) << run.err;
  EXPECT_EQ(run.status, 0);
}

// Where it would be shown, applying takes long after reading did.
TEST(Progress, IsNotShownBesideEventsOrTraceLines) {
  std::string settings = R"({"Audio":[{"key":"A0","value":"0"})";
  for (int i = 1; i < 20000; ++i) settings += R"(,{"key":"A)" + std::to_string(i) + R"(","value":"0"})";
  for (const auto& option : {std::pair{"--watch", "Audio/B"}, {"--trace", "0"}}) {
    const Finished run = Program()
                             .InputOnceShown(settings + "]}", kLine)
                             .ErrorsToTerminal()
                             .Run({"apply", "-", option.first, option.second});
    EXPECT_EQ(run.err.find("applying"), std::string::npos) << run.err;
    EXPECT_EQ(run.status, 0);
  }
}
