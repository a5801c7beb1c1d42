// SPDX-License-Identifier: Apache-2.0
#include "StandardOutput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "Program.h"
#include "Recordings.h"

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

// What is opened next is what would have been opened next with all of them.
TEST(StandardStreams, ThatAreClosedAreReservedAndNoMore) {
  for (int closed = 0; closed < 8; ++closed) {
    const pid_t child = ::fork();
    if (child == 0) {
      const int next = ::open("/", O_PATH);
      ::close(next);
      for (int descriptor = 0; descriptor < 3; ++descriptor) {
        if ((closed >> descriptor & 1) != 0) ::close(descriptor);
      }
      ReserveStandardDescriptors();
      bool isReserved = ::open("/", O_PATH) == next;
      for (int descriptor = 0; descriptor < 3; ++descriptor) {
        isReserved = isReserved && ::fcntl(descriptor, F_GETFD) != -1;
        if ((closed >> descriptor & 1) != 0) isReserved = isReserved && ::write(descriptor, "x", 1) == -1;
      }
      ::_exit(isReserved ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << closed;
  }
}

TEST(StandardStreams, ThatAreClosedAreNotReadAsARecording) {
  Program program;
  program.File("a.tessel", Recording("call"));
  const Finished run = program.Without(0).Run({"log", "a.tessel", "-"});
  EXPECT_EQ(run.err, "<stdin>: cannot be read: Bad file descriptor\n");
  EXPECT_EQ(run.status, 2);
}

TEST(StandardOutput, ThatTakesNothingMakesTheRunFail) {
  const Finished run =
      Program().Input(kText).To(Program::Output::kFullDevice).Run({"apply", "-", "--dump", "all"});
  EXPECT_EQ(run.err,
            std::string(kSkipped) + "tessel: standard output cannot be written: No space left on device\n");
  EXPECT_EQ(run.status, 2);
}
