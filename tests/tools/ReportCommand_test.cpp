// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "Program.h"
#include "Recordings.h"
#include "report/EmbeddedRecording.h"
#include "report/Page.h"

namespace {

std::size_t CountOf(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

std::string Embedded(const std::string& name, const std::string& line) {
  std::string page;
  {
    EmbeddedRecording(page, 0, name).Add(line);
  }
  return page;
}

// Without dygraphs there is no page to look at.
class ReportCommand : public testing::Test {
 protected:
  void SetUp() override {
    if (PageBegin().empty()) GTEST_SKIP() << "libjs-dygraphs is not installed";
  }
};

}  // namespace

TEST_F(ReportCommand, WritesOnePageWithTheLinesOfAllRecordings) {
  Program program;
  const Finished run = program.File("a.tessel", Recording("call"))
                           .File("b.tessel", kRecordingBegin)
                           .Run({"report", "a.tessel", "b.tessel", "-o", "page.html"});
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(run.status, 0);
  const std::string page = program.Contents("page.html");
  EXPECT_TRUE(page.starts_with(PageBegin()));
  EXPECT_TRUE(page.ends_with(PageEnd()));
  EXPECT_EQ(CountOf(page, "<script type=\"text/plain\" data-recording=\"0\" data-name=\"a.tessel\">"), 1U);
  EXPECT_EQ(CountOf(page, "<script type=\"text/plain\" data-recording=\"1\" data-name=\"b.tessel\">"), 1U);
  EXPECT_NE(page.find(Recording("call")), std::string::npos);
}

TEST_F(ReportCommand, NamesItsOwnScriptsAndStylesAloneInThePolicy) {
  const std::string page(PageBegin());
  const std::size_t begin = page.find("Content-Security-Policy");
  const std::string policy = page.substr(begin, page.find('>', begin) - begin);
  EXPECT_NE(policy.find("default-src 'none'"), std::string::npos);
  EXPECT_EQ(CountOf(policy, "'sha256-"), 3U);
  EXPECT_EQ(policy.find("unsafe"), std::string::npos);
  EXPECT_EQ(policy.find("http:"), std::string::npos);
}

TEST_F(ReportCommand, ReportsDamagedLinesAndLeavesThemOut) {
  Program program;
  const Finished run =
      program.File("a.tessel", Recording("damaged")).Run({"report", "a.tessel", "-o", "page.html"});
  EXPECT_NE(run.err.find("a.tessel:4: "), std::string::npos);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(CountOf(program.Contents("page.html"), "garbage"), 0U);
}

TEST_F(ReportCommand, ReadsStandardInput) {
  Program program;
  EXPECT_EQ(program.Input(kRecordingBegin).Run({"report", "-", "-o", "page.html"}).status, 0);
  EXPECT_EQ(CountOf(program.Contents("page.html"), "data-name=\"&lt;stdin>\""), 1U);
}

TEST_F(ReportCommand, RefusesToWriteOverARecording) {
  Program program;
  const Finished run =
      program.File("a.tessel", kRecordingBegin).Run({"report", "a.tessel", "-o", "./a.tessel"});
  EXPECT_EQ(run.err, "tessel: --output \"./a.tessel\": is one of the recordings\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(program.Contents("a.tessel"), kRecordingBegin);
}

TEST_F(ReportCommand, LeavesThePageAsItWasWhenARecordingCannotBeOpened) {
  Program program;
  EXPECT_EQ(program.File("page.html", "before").Run({"report", "none.tessel", "-o", "page.html"}).status, 2);
  EXPECT_EQ(program.Contents("page.html"), "before");
}

TEST(EmbeddedRecording, HasNoMarkupOfLines) {
  EXPECT_EQ(Embedded("a", R"({"a":"</script><!--<b>"})"),
            "<script type=\"text/plain\" data-recording=\"0\" data-name=\"a\">"
            "{\"a\":\"\\u003c/script>\\u003c!--\\u003cb>\"}\n</script>\n");
}

TEST(EmbeddedRecording, HasNoMarkupOfNames) {
  EXPECT_EQ(Embedded("\"><script>&", "{}"),
            "<script type=\"text/plain\" data-recording=\"0\" "
            "data-name=\"&quot;>&lt;script>&amp;\">{}\n</script>\n");
}

TEST(EmbeddedRecording, WritesControlCharactersAsJsonDoes) {
  EXPECT_NE(Embedded("a", "{\"a\":\r\"b\"}").find("{\"a\":\"b\"}\n"), std::string::npos);
}

TEST(EmbeddedRecording, WritesALongRecordingInParts) {
  std::string page;
  {
    EmbeddedRecording recording(page, 3, "a");
    for (int i = 0; i < 30; ++i) recording.Add('"' + std::string(100000, 'x') + '"');
  }
  EXPECT_EQ(CountOf(page, "<script type=\"text/plain\" data-recording=\"3\""), 3U);
  EXPECT_EQ(CountOf(page, "</script>\n"), 3U);
  EXPECT_EQ(std::ranges::count(page, 'x'), 30 * 100000 + 3);  // "text" has one, too.
}
