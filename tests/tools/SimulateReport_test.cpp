// SPDX-License-Identifier: Apache-2.0
// The page that `tessel simulate --report` writes. What a page shows is tested on recordings that are there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Program.h"
#include "Recordings.h"
#include "report/Page.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// Without dygraphs there is no page.
class SimulateReport : public testing::Test {
 protected:
  void SetUp() override {
    if (PageBegin().empty()) GTEST_SKIP() << "libjs-dygraphs is not installed";
  }

  std::string Page() const { return program.Contents("report.html"); }

  Program program;
};

}  // namespace

TEST_F(SimulateReport, IsAPageWithARecordingOfTheRun) {
  program.File("<i>&.json", R"({"Common":[{"key":"</script>","value":"<img>"}]})")
      .File("report.html", "earlier");
  const Finished run =
      program.Run({"simulate", "--seconds", "0.2", "--settings", "<i>&.json", "--report", "report.html"});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, StartsWith("2 calls, 14 components, "));
  EXPECT_THAT(Page(), StartsWith(std::string(PageBegin())));
  EXPECT_THAT(Page(), EndsWith(std::string(PageEnd())));

  EXPECT_THAT(Page(), HasSubstr("data-recording=\"0\" data-name=\"simulation.tessel\""));
  EXPECT_THAT(Page(), HasSubstr("\"\\u003c/script>\",\"\\u003cimg>\""));
  EXPECT_THAT(Page(), HasSubstr("\"document\":\"\\u003ci>&.json\""));
  EXPECT_THAT(Page(), HasSubstr("\"statistics\""));
}

TEST_F(SimulateReport, IsMadeOfTheRecordingThatIsKept) {
  const Finished run =
      program.Run({"simulate", "--seconds", "0.05", "--record", "a.tessel", "--report", "report.html"});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(program.Contents("a.tessel"), EndsWith("\"event\":\"ended\"}\n"));
  program.Run({"report", "a.tessel", "-o", "again.html"});
  EXPECT_EQ(Page(), program.Contents("again.html"));
}

TEST_F(SimulateReport, LeavesNoRecordingThatNobodyAskedFor) {
  const std::string folder = program.Path("temporary files");
  std::filesystem::create_directory(folder);
  program.Environment("TMPDIR=" + folder);
  for (const std::string page : {"report.html", "/dev/full"}) {
    program.Run({"simulate", "--seconds", "0.05", "--report", page});
    EXPECT_TRUE(std::filesystem::is_empty(folder)) << page;
  }
  EXPECT_THAT(Page(), HasSubstr("data-name=\"simulation.tessel\""));
}

TEST_F(SimulateReport, SaysBeforeTheRunThatThereIsNoFolderForTemporaryFiles) {
  const Finished run =
      program.Environment("TMPDIR=missing").Run({"simulate", "--seconds", "3600", "--report", "report.html"});
  EXPECT_THAT(run.err, StartsWith("TMPDIR: no temporary file can be made: "));
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.status, 2);
  EXPECT_FALSE(std::filesystem::exists(program.Path("report.html")));
}

TEST_F(SimulateReport, IsWrittenWhenTheRunIsInterrupted) {
  const Finished run = program.InterruptOnceItMakes("report.html")
                           .Run({"simulate", "--seconds", "3600", "--report", "report.html"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(Page(), EndsWith(std::string(PageEnd())));
}

TEST_F(SimulateReport, IsKnownBeforeTheRunToHaveNoPlace) {
  const Finished run = program.Run({"simulate", "--seconds", "3600", "--report", "missing/report.html"});
  EXPECT_EQ(run.err, "missing/report.html: cannot be written: No such file or directory\n");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.status, 2);
}

TEST_F(SimulateReport, NeverReplacesADocument) {
  const Finished run =
      program.File("a.json", "{}").Run({"simulate", "--settings", "a.json", "--report", "./a.json"});
  EXPECT_EQ(run.err, "tessel: --report \"./a.json\": is a document that is read\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(program.Contents("a.json"), "{}");
}

TEST_F(SimulateReport, NeverReplacesItsRecording) {
  program.File("there.tessel", kRecordingBegin);
  for (const std::string name : {"there.tessel", "new.tessel"}) {
    const Finished run = program.Run({"simulate", "--record", name, "--report", "./" + name});
    EXPECT_EQ(run.err, "tessel: --report \"./" + name + "\": is the recording\n");
    EXPECT_EQ(run.status, 2);
  }
  EXPECT_EQ(program.Contents("there.tessel"), kRecordingBegin);
  EXPECT_FALSE(std::filesystem::exists(program.Path("new.tessel")));
}

TEST_F(SimulateReport, NeedsARecordingThatCanBeReadAgain) {
  const Finished run = program.Run({"simulate", "--record", "/dev/full", "--report", "report.html"});
  EXPECT_EQ(run.err, "tessel: --record \"/dev/full\": is no regular file, which a report is made of\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_FALSE(std::filesystem::exists(program.Path("report.html")));
}

TEST_F(SimulateReport, IsNotSummedUpWhenItsFileIsFull) {
  const Finished run = program.Run({"simulate", "--seconds", "0.05", "--report", "/dev/full"});
  EXPECT_EQ(run.err, "/dev/full: cannot be written: No space left on device\n");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.status, 2);
}

TEST_F(SimulateReport, IsWrittenWhenStandardOutputIsFull) {
  program.To(Program::Output::kFullDevice);
  EXPECT_EQ(program.Run({"simulate", "--seconds", "0.05", "--report", "report.html"}).status, 2);
  EXPECT_THAT(Page(), EndsWith(std::string(PageEnd())));
}

TEST_F(SimulateReport, StaysAsItWasWhenNothingRuns) {
  program.File("report.html", "earlier")
      .Run({"simulate", "--report", "report.html", "--settings", "missing"});
  EXPECT_EQ(Page(), "earlier");
}

TEST(ProgramWithoutDygraphs, SaysWhatItsPageLacksBeforeItDoesAnything) {
  Program program;
  program.Build(TESSEL_PROGRAM_WITHOUT_DYGRAPHS).File("a.tessel", kRecordingBegin);
  const std::vector<std::string> commandLines[] = {
      {"report", "a.tessel", "-o", "report.html"},
      {"simulate", "--seconds", "3600", "--report", "report.html"},
      {"live", "a.tessel"},
  };
  for (const std::vector<std::string>& arguments : commandLines) {
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.err,
              "tessel: this program was built without dygraphs, which draws the page: install libjs-dygraphs "
              "and build it again\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2) << arguments.front();
  }
  EXPECT_FALSE(std::filesystem::exists(program.Path("report.html")));
  EXPECT_EQ(program.Run({"simulate", "--seconds", "0.05"}).status, 0);
}
