// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <future>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "Program.h"
#include "Recordings.h"
#include "report/EmbeddedRecording.h"
#include "report/MemberUnits.h"
#include "report/PackedColumn.h"
#include "report/Page.h"
#include "tessel/json.h"

namespace {

std::size_t CountOf(std::string_view text, std::string_view part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

RecordingEvent SetTo(const std::string& value) {
  RecordingEvent event;
  event.type = "set";
  event.newValue = value;
  return event;
}

std::string Embedded(const std::string& name, const std::string& value) {
  std::string page;
  {
    EmbeddedRecording(page, 0, name).Add(SetTo(value));
  }
  return page;
}

std::vector<std::string> PartsOf(const std::string& page) {
  constexpr std::string_view kBegin = "<script type=\"application/json\" data-recording=";
  std::vector<std::string> parts;
  for (std::size_t at = 0; (at = page.find(kBegin, at)) != std::string::npos;) {
    const std::size_t end = page.find("</script>", at);
    at = page.find('>', at) + 1;
    parts.push_back(page.substr(at, end - at));
  }
  return parts;
}

// Columns of one number each, as JSON.
std::string OneRow(const std::vector<const char*>& names, const std::vector<double>& numbers) {
  std::string json;
  for (std::size_t i = 0; i < names.size(); ++i)
    json += (json.empty() ? "{\"" : ",\"") + std::string(names[i]) + "\":" + PackedColumn({numbers[i]});
  return json + '}';
}

// Without dygraphs there is no page to look at.
class ReportCommand : public testing::Test {
 protected:
  void SetUp() override {
    if (PageBegin().empty()) GTEST_SKIP() << "libjs-dygraphs is not installed";
  }
};

}  // namespace

TEST_F(ReportCommand, WritesOnePageWithTheEventsOfAllRecordings) {
  Program program;
  const Finished run = program.File("a.tessel", Recording("call"))
                           .File("b.tessel", kRecordingBegin)
                           .Run({"report", "a.tessel", "b.tessel", "-o", "page.html"});
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(run.status, 0);
  const std::string page = program.Contents("page.html");
  EXPECT_TRUE(page.starts_with(PageBegin()));
  EXPECT_TRUE(page.ends_with(PageEnd()));
  EXPECT_EQ(CountOf(page, "<script type=\"application/json\" data-recording=\"0\" data-name=\"a.tessel\">"),
            1U);
  EXPECT_EQ(CountOf(page, "<script type=\"application/json\" data-recording=\"1\" data-name=\"b.tessel\">"),
            1U);
  EXPECT_NE(page.find("\"bandwidth controller\""), std::string::npos);
}

TEST_F(ReportCommand, JoinsTheFilesOfASetAndComparesOthers) {
  Program program;
  program.File("a.tessel.1", RecordingPart(1) + RecordingPartEnd(1)).File("a.tessel", RecordingPart(2));
  program.File("b.tessel", kRecordingBegin);
  const Finished run = program.Run({"report", "a.tessel", "a.tessel.1", "b.tessel", "-o", "page.html"});
  EXPECT_EQ(run.out + run.err, "");
  const std::string page = program.Contents("page.html");
  EXPECT_EQ(program.Run({"report", "a.tessel", "-o", "a.tessel.1"}).err,
            "tessel: --output \"a.tessel.1\": is one of the recordings\n");
  EXPECT_EQ(program.Contents("a.tessel.1"), RecordingPart(1) + RecordingPartEnd(1));
  EXPECT_EQ(program.Run({"report", "a.tessel", "-o", "page.html"}).err, "");
  EXPECT_EQ(program.Run({"report", "a.tessel", "-o", "b.tessel"}).err, "");
  EXPECT_NE(page.find("data-recording=\"0\" data-name=\"a.tessel\">"), std::string::npos);
  EXPECT_NE(page.find("data-recording=\"1\" data-name=\"b.tessel\">"), std::string::npos);
  EXPECT_EQ(page.find("data-recording=\"2\""), std::string::npos);
}

TEST_F(ReportCommand, WritesToAPipeAsToAFile) {
  Program program;
  program.File("a.tessel", kRecordingBegin);
  ASSERT_EQ(::mkfifo(program.Path("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
  std::future<std::string> page = std::async(std::launch::async, [&] { return program.Contents("pipe"); });
  EXPECT_EQ(program.Run({"report", "a.tessel", "-o", "pipe"}).err, "");
  EXPECT_TRUE(page.get().ends_with(PageEnd()));
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
  const std::string page = program.Contents("page.html");
  EXPECT_TRUE(page.ends_with(PageEnd()));
  EXPECT_EQ(CountOf(page, "garbage"), 0U);
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
  EXPECT_EQ(program.Run({"report", ".", "-o", "other.html"}).status, 2);
  EXPECT_FALSE(std::filesystem::exists(program.Path("other.html")));
}

TEST_F(ReportCommand, LeavesThePageAsItWasWhenNothingIsARecording) {
  Program program;
  program.File("page.html", "before").File("a.json", R"({"Video":[]})").File("b.txt", "notes\n");
  const Finished run = program.Run({"report", "a.json", "b.txt", "-o", "page.html"});
  EXPECT_NE(run.err, "");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(program.Contents("page.html"), "before");
}

TEST(MemberUnits, AreThoseOfTheStatisticsTable) {
  const std::string part = MemberUnits();
  const std::string begin = "<script type=\"application/json\" id=\"units\">";
  ASSERT_TRUE(part.starts_with(begin) && part.ends_with("</script>\n"));
  const json::Value units = json::Deserialize(part.substr(begin.size(), part.rfind("</") - begin.size()));
  const auto unitOf = [&](const char* entity, const char* member) {
    const json::Object& own = units.ToObject().find(entity)->second.ToObject();
    return own.HasKey(member) ? own.find(member)->second.ToString() : "";
  };
  for (const std::string content : {"", "content "}) {
    const std::string video = content + "video", audio = content + "audio";
    EXPECT_EQ(unitOf(video.c_str(), "call.encoderBitrate"), "bit/s");
    EXPECT_EQ(unitOf(video.c_str(), "layer5.targetFps"), "fps");
    EXPECT_EQ(unitOf(video.c_str(), "call.noiseLevel"), "");
    EXPECT_EQ(unitOf(audio.c_str(), "sent.bitrate"), "bit/s");
    EXPECT_EQ(unitOf(audio.c_str(), "sent.noiseLevel[2]"), "dB");
    EXPECT_EQ(unitOf(audio.c_str(), "received19.bitrate"), "bit/s");
    EXPECT_EQ(unitOf(audio.c_str(), "received20.bitrate"), "");
    EXPECT_EQ(unitOf(audio.c_str(), "received0.e2eDelay[0]"), "ms");
    EXPECT_EQ(unitOf(audio.c_str(), "sent.e2eDelay[0]"), "");
  }
}

TEST(EmbeddedRecording, HasNoMarkupOfValues) {
  const std::string page = Embedded("a", "</script><!--<b>");
  EXPECT_NE(page.find(R"("\u003c/script>\u003c!--\u003cb>")"), std::string::npos);
  EXPECT_EQ(CountOf(page, "<"), 2U);
}

TEST(EmbeddedRecording, HasNoMarkupOfNames) {
  EXPECT_TRUE(Embedded("\"><script>&", "")
                  .starts_with("<script type=\"application/json\" data-recording=\"0\" "
                               "data-name=\"&quot;>&lt;script>&amp;\">{"));
}

TEST(EmbeddedRecording, WritesControlCharactersAndBytesThatAreNoUtf8AsJson) {
  EXPECT_NE(Embedded("a", "\r\1\xE9\"\\é").find(R"("\r\u0001\u00e9\"\\é")"), std::string::npos);
}

TEST(EmbeddedRecording, HasAColumnForEachMember) {
  std::string page;
  {
    EmbeddedRecording recording(page, 0, "a");
    for (const char* const line :
         {R"({"type":"statistics","t":1,"number":2,"cause":3,"call":4,"id":5,"told":6,"count":7,"wait_us":8,)"
          R"("run_us":9,"group":"Video","name":"n","old":"o","new":"w","result":"told","way":"direct",)"
          R"("threw":"x","entity":"audio","event":"ended","wall":"l","reason":"r","transient":true,)"
          R"("dropped":true,"picture":true,"cut":["old","new"],"hidden":["name"],)"
          R"("origin":{"module":"m","symbol":"s","label":"b","document":"d","line":10,"column":11},)"
          R"("members":{"p":12,"q":"t"}})",
          R"({"type":"deliver","t":13,"number":14,"call":15,"id":16,"way":"posted","old":"y","new":"z"})"}) {
      RecordingEvent event;
      ASSERT_EQ(ReadRecordingLine(line, event), "");
      recording.Add(event);
    }
  }
  // Values are places in the list, and the members are in columns of their own.
  EXPECT_EQ(
      PartsOf(page),
      std::vector<std::string>{
          R"({"list":["statistics","Video","n","o","w","told","direct","x","audio","ended","l","r",true,)"
          R"(["old","new"],["name"],)"
          R"({"module":"m","symbol":"s","label":"b","document":"d","line":10,"column":11},)"
          R"("p","q","t","deliver","posted"],"order":)" +
          PackedColumn({0, 1}) + R"(,"tables":[{"numbers":)" +
          OneRow({"t", "number", "cause", "call", "id", "told", "count", "wait_us", "run_us", "sizes"},
                 {1, 2, 3, 4, 5, 6, 7, 8, 9, 2}) +
          ",\"values\":" +
          OneRow({"type", "group", "name", "old", "new", "result", "way", "threw", "entity", "event", "wall",
                  "reason", "transient", "dropped", "picture", "cut", "hidden", "origin"},
                 {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 12, 12, 13, 14, 15}) +
          ",\"names\":" + PackedColumn({16, 17}) + ",\"areTexts\":" + PackedColumn({0, 1}) + ",\"members\":" +
          PackedColumn({12, 18}) + R"(},{"numbers":)" + OneRow({"t", "call", "id"}, {13, 15, 16}) +
          ",\"values\":" + OneRow({"type", "way"}, {19, 20}) + ",\"names\":" + PackedColumn({}) +
          ",\"areTexts\":" + PackedColumn({}) + ",\"members\":" + PackedColumn({}) + "}]}"});
}

TEST(EmbeddedRecording, HasEachOriginOnce) {
  std::string page;
  {
    EmbeddedRecording recording(page, 0, "a");
    for (const char* const origin :
         {R"({"label":"a"})", R"({"label":"b"})", R"({"symbol":"a"})", R"({"label":"a"})", R"({"line":1})",
          R"({"column":1})", R"({"label":"a","line":1})", R"({"symbol":"a","label":"b"})",
          R"({"symbol":"b","label":"a"})"}) {
      RecordingEvent event;
      ASSERT_EQ(
          ReadRecordingLine(R"({"type":"lost","t":0,"count":1,"origin":)" + std::string(origin) + "}", event),
          "");
      recording.Add(event);
    }
  }
  EXPECT_NE(page.find(R"({"list":["lost",{"label":"a"},{"label":"b"},{"symbol":"a"},{"line":1},{"column":1},)"
                      R"({"label":"a","line":1},{"symbol":"a","label":"b"},{"symbol":"b","label":"a"}])"),
            std::string::npos)
      << page;
}

TEST(EmbeddedRecording, WritesALongRecordingInParts) {
  std::string page;
  {
    EmbeddedRecording recording(page, 3, "a");
    for (int i = 0; i < 30; ++i) recording.Add(SetTo(std::to_string(i) + std::string(400'000, 'x')));
  }
  const std::vector<std::string> parts = PartsOf(page);
  EXPECT_EQ(parts.size(), 3U);
  for (const std::string& part : parts) {
    json::ParseError error;
    json::Deserialize(part, error);
    EXPECT_EQ(error.reason, nullptr);
  }
  EXPECT_EQ(CountOf(page, "xxx\""), 30U);
}

TEST(EmbeddedRecording, IsOnePartWithoutAnyEvent) {
  std::string page;
  {
    const EmbeddedRecording none(page, 0, "a");
  }
  EXPECT_EQ(PartsOf(page),
            std::vector<std::string>{
                R"({"list":[],"order":{"length":0,"base":0,"scale":1,"bytes":0,"data":""},"tables":[]})"});
}

TEST(PackedColumn, HasAsFewBytesAsTheNumbersNeed) {
  const auto bytesOf = [](const std::vector<double>& numbers) {
    const std::string column = PackedColumn(numbers);
    return column.substr(column.find("\"scale\""));
  };
  EXPECT_EQ(bytesOf({5, 5, 5}), R"("scale":1,"bytes":0,"data":""})");
  EXPECT_EQ(bytesOf({1e12, 1e12 + 255}), R"("scale":1,"bytes":1,"data":"AP8="})");
  EXPECT_EQ(bytesOf({0, 256, 1}), R"("scale":1,"bytes":2,"data":"AAAAAQEA"})");
  EXPECT_EQ(bytesOf({0.5, 1}), R"("scale":1000,"bytes":2,"data":"AAD0AQ=="})");
  EXPECT_EQ(bytesOf({0, 65535, 1}), R"("scale":1,"bytes":2,"data":"AAD//wEA"})");
  EXPECT_EQ(bytesOf({0, 65536}), R"("scale":1,"bytes":4,"data":"AAAAAAAAAQA="})");
  EXPECT_EQ(bytesOf({0, 4294967295.0}), R"("scale":1,"bytes":4,"data":"AAAAAP////8="})");
  EXPECT_EQ(PackedColumn({5, 4294967301.0}),
            R"({"length":2,"base":0,"scale":1,"bytes":8,"data":"AAAAAAAAFEAAAFAAAADwQQ=="})");
  EXPECT_EQ(bytesOf({9007199254740991.0}), R"("scale":1,"bytes":0,"data":""})");
  EXPECT_EQ(bytesOf({9007199254740992.0}), R"("scale":1,"bytes":8,"data":"AAAAAAAAQEM="})");
  for (const double number : {-0.0, 1e300, 1.0 / 3, std::numeric_limits<double>::infinity(), 4294967296.0})
    EXPECT_NE(bytesOf({0.5, number}).find("\"bytes\":8"), std::string::npos) << number;
}
