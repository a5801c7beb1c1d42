#include <gtest/gtest.h>

#include <chrono>

#include "Program.h"

namespace {

constexpr auto kLong = std::chrono::milliseconds(1400);
constexpr const char* kText = R"({"Audio":[]})";

}  // namespace

TEST(Progress, IsToldOnATerminalAfterASecondAndTakenAway) {
  const Finished run = Program().LateInput(kText, kLong).ErrorsToTerminal().Run({"lint", "-"});
  EXPECT_EQ(run.err.rfind("\r\033[Ktessel: reading <stdin>, 1 s", 0), 0U) << run.err;
  EXPECT_TRUE(run.err.ends_with("\r\033[K")) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.status, 0);
}

TEST(Progress, IsNotToldOfWhatIsSoonDone) {
  EXPECT_EQ(Program().Input(kText).ErrorsToTerminal().Run({"apply", "-"}).err, "");
}

TEST(Progress, IsNotToldWhereNobodyLooks) {
  EXPECT_EQ(Program().LateInput(kText, kLong).Run({"lint", "-"}).err, "");
  EXPECT_EQ(
      Program(Program::Terminal::kDumb).LateInput(kText, kLong).ErrorsToTerminal().Run({"lint", "-"}).err,
      "");
}
