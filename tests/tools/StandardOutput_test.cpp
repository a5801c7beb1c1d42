#include <gtest/gtest.h>

#include <string>

#include "Program.h"

namespace {
constexpr const char* kText = R"({"Audio":[{"key":"A","value":"1"}],"Nowhere":[]})";
constexpr const char* kSkipped = "<stdin>:1:36: Nowhere: unknown group\n";
}  // namespace

TEST(StandardOutput, MayHaveLostItsReader) {
  const Finished run = Program()
                           .Input(kText)
                           .To(Program::Output::kNoReader)
                           .Run({"apply", "-", "--dump", "all", "--watch", "Audio/*", "--async"});
  EXPECT_EQ(run.err, kSkipped);
  EXPECT_EQ(run.status, 0);
}

TEST(StandardOutput, MayBeClosed) {
  const Finished run = Program()
                           .Input(kText)
                           .To(Program::Output::kClosed)
                           .Run({"apply", "-", "--dump", "all", "--watch", "Audio/*", "--strict"});
  EXPECT_EQ(run.err, kSkipped);
  EXPECT_EQ(run.status, 1);
}

TEST(StandardOutput, MayBeClosedForHelpAndVersion) {
  for (const char* option : {"--help", "--version"}) {
    for (const Program::Output output : {Program::Output::kNoReader, Program::Output::kClosed}) {
      const Finished run = Program().To(output).Run({option});
      EXPECT_EQ(run.err, "");
      EXPECT_EQ(run.status, 0);
    }
  }
}

TEST(StandardOutput, ThatTakesNothingMakesTheRunFail) {
  const Finished run =
      Program().Input(kText).To(Program::Output::kFullDevice).Run({"apply", "-", "--dump", "all"});
  EXPECT_EQ(run.err,
            std::string(kSkipped) + "tessel: standard output cannot be written: No space left on device\n");
  EXPECT_EQ(run.status, 2);
}
