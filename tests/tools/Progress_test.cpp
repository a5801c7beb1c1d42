// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

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

TEST(Progress, IsNotShownWithinTheFirstSecond) {
  const Finished run = Program().InputOnceShown(kSettings, kLine).ErrorsToTerminal().Run({"lint", "-"});
  EXPECT_THAT(run.err.substr(std::string(kLine).size()), testing::ContainsRegex("^[1-9][0-9]* s"));
  // Nothing at all, unless the machine took more than a second for it.
  EXPECT_EQ(Program().Input(kSettings).ErrorsToTerminal().Run({"apply", "-"}).err.find(", 0 s"),
            std::string::npos);
}

TEST(Progress, IsShownOnACapableTerminalOnly) {
  EXPECT_EQ(Program().LateInput(kSettings, kLong).Run({"lint", "-"}).err, "");
  EXPECT_EQ(
      Program(Program::Terminal::kDumb).LateInput(kSettings, kLong).ErrorsToTerminal().Run({"lint", "-"}).err,
      "");
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
