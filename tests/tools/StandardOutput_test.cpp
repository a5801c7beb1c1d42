// SPDX-License-Identifier: Apache-2.0
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

TEST(StandardOutput, ThatIsClosedMakesTheRunFail) {
  const Finished run =
      Program().Input(kText).Without(1).Run({"apply", "-", "--dump", "all", "--watch", "Audio/*"});
  EXPECT_EQ(run.err,
            std::string(kSkipped) + "tessel: standard output cannot be written: Bad file descriptor\n");
  EXPECT_EQ(run.status, 2);
  for (const char* option : {"--help", "--version"}) EXPECT_EQ(Program().Without(1).Run({option}).status, 2);
}

TEST(StandardOutput, MayBeClosedWhenThereIsNothingToWrite) {
  const Finished run = Program().Input("{}").Without(1).Run({"lint", "-"});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(StandardOutput, MayHaveLostItsReaderForHelpAndVersion) {
  for (const char* option : {"--help", "--version"}) {
    const Finished run = Program().To(Program::Output::kNoReader).Run({option});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
  }
}

TEST(StandardInput, ThatIsClosedCannotBeRead) {
  const Finished run = Program().Without(0).Run({"lint", "-"});
  EXPECT_EQ(run.err, "<stdin>: cannot be read: Bad file descriptor\n");
  EXPECT_EQ(run.status, 2);
}

TEST(StandardStreams, ThatAreClosedAreNotReplacedByTheFilesOfTheRun) {
  Program program;
  program.File("a.json", R"({"Nowhere":[]})").Without(0).Without(1).Without(2);
  EXPECT_EQ(program.Run({"lint", "a.json", "-"}).status, 2) << "standard input is not a.json";
  EXPECT_EQ(
      program.Run({"simulate", "--seconds", "0.05", "--settings", "a.json", "--record", "a.tessel"}).status,
      2);
  EXPECT_TRUE(program.Contents("a.tessel").ends_with("\"event\":\"ended\"}\n"))
      << "no summary is written into it";
  EXPECT_EQ(program.Contents("a.json"), R"({"Nowhere":[]})");
}

TEST(StandardOutput, ThatTakesNothingMakesTheRunFail) {
  const Finished run =
      Program().Input(kText).To(Program::Output::kFullDevice).Run({"apply", "-", "--dump", "all"});
  EXPECT_EQ(run.err,
            std::string(kSkipped) + "tessel: standard output cannot be written: No space left on device\n");
  EXPECT_EQ(run.status, 2);
}
