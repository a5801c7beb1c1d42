// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Program.h"
#include "tessel/json.h"

namespace {

constexpr const char* kOdd = R"({"Audoi":[],
"Video":[{"key":"MaxFps","value":30},
  {"key":"MaxWidth","value":"1"}],
"Feature":[{"key":"EnableMusicDetecton","value":"1"}]})";

std::string Entry(const std::string& name) {
  return "{\"key\":\"" + name + "\",\"value\":\"1\"}";
}

}  // namespace

TEST(LintCommand, IsSilentAboutCleanDocuments) {
  const Finished run = Program()
                           .File("a.json", "{}")
                           .File("b.json", "{\"Audio\":[" + Entry("A") + "]}")
                           .Run({"lint", "a.json", "b.json"});
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(LintCommand, PrintsThePlaceAndReasonOfEveryFinding) {
  const Finished run = Program().File("a.json", kOdd).Input("{\"Common\":7}").Run({"lint", "a.json", "-"});
  EXPECT_EQ(run.out,
            "a.json:1:2: Audoi: unknown group (did you mean \"Audio\"?)\n"
            "a.json:2:34: Video[0].value: expected a string, found a number\n"
            "a.json:4:19: Feature[0].key: no feature toggle has this name (did you mean "
            "\"EnableMusicDetection\"?)\n"
            "<stdin>:1:11: Common: expected an array of entries, found a number\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 1);
}

TEST(LintCommand, PrintsTheFirstFaultOfAMalformedDocument) {
  const Finished run = Program()
                           .File("a.json", "{\n  \"Audio\": [,]\n}")
                           .File("b.json", "[]")
                           .Run({"lint", "a.json", "b.json"});
  EXPECT_EQ(run.out,
            "a.json:2:13: expected a value\n"
            "b.json:1:1: expected an object of groups, found an array\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 1);
}

TEST(LintCommand, WritesAnObjectPerFindingAsJson) {
  const std::string expected =
      R"-({"file":"a.json","line":1,"column":2,"problem":"unknown-group","effect":"skipped","path":"Audoi","name":"Audoi","nearest":"Audio","reason":"unknown group (did you mean \"Audio\"?)"}
{"file":"a.json","line":2,"column":34,"problem":"no-text","effect":"skipped","path":"Video[0].value","name":"","nearest":"","reason":"expected a string, found a number"}
{"file":"a.json","line":4,"column":19,"problem":"unknown-toggle","effect":"imported","path":"Feature[0].key","name":"EnableMusicDetecton","nearest":"EnableMusicDetection","reason":"no feature toggle has this name (did you mean \"EnableMusicDetection\"?)"}
)-";
  Program program;
  program.File("a.json", kOdd);
  EXPECT_EQ(program.Run({"lint", "a.json", "--json"}).out, expected);
  const Finished run = program.Run({"lint", "--format", "json", "a.json"});
  EXPECT_EQ(run.out, expected);
  EXPECT_EQ(run.status, 1);
}

TEST(LintCommand, NamesEveryProblemInJson) {
  const std::pair<std::string, std::string> rows[] = {
      {"{", "no-json"},
      {"7", "no-object"},
      {std::string("{\"\0\":7}", 7), "zero-byte"},
      {R"({"X":[]})", "unknown-group"},
      {R"({"Audio":7})", "no-array"},
      {R"({"Audio":[7]})", "no-entry"},
      {R"({"Audio":[{}]})", "no-member"},
      {R"({"Audio":[{"key":7,"value":""}]})", "no-text"},
      {R"({"Audio":[{"key":"","value":""}]})", "empty-name"},
      {R"({"Audio":[],"Audio":[]})", "repeated-group"},
      {"{\"Audio\":[" + Entry("A") + "," + Entry("A") + "]}", "repeated-name"},
      {R"({"Audio":[{"key":"A","key":"A","value":""}]})", "repeated-member"},
      {"{\"Feature\":[" + Entry("A") + "]}", "unknown-toggle"},
      {"{\"Video\":[" + Entry("A") + "]}", "unknown-name"},
  };
  for (const auto& [text, problem] : rows) {
    const Finished run = Program()
                             .File("names.json", R"({"Video":[]})")
                             .Input(text)
                             .Run({"lint", "-", "--json", "--names", "names.json"});
    const json::Value finding = json::Deserialize(run.out);
    ASSERT_EQ(finding.GetType(), json::ObjectVal) << run.out;
    EXPECT_EQ(finding["problem"].ToString(), problem);
    EXPECT_EQ(finding["file"].ToString(), "<stdin>");
  }
}

TEST(LintCommand, AnnotatesLinesForGithub) {
  const Finished run = Program().File("a,b:%.json", kOdd).Run({"lint", "--github", "a,b:%.json"});
  EXPECT_EQ(run.out,
            "::error file=a%2Cb%3A%25.json,line=1,col=2::Audoi: unknown group (did you mean \"Audio\"?)\n"
            "::error file=a%2Cb%3A%25.json,line=2,col=34::Video[0].value: expected a string, found a number\n"
            "::warning file=a%2Cb%3A%25.json,line=4,col=19::Feature[0].key: no feature toggle has this name "
            "(did you mean \"EnableMusicDetection\"?)\n");
  EXPECT_EQ(run.status, 1);
}

TEST(LintCommand, ReportsTheNamesThatAListDoesNotHave) {
  const Finished run =
      Program()
          .File("video.json", R"({"Video":["MaxFps","MaxHeight"]})")
          .File("more.json",
                R"({"Video":[{"key":"MaxWidth","value":"1"}],"Feature":["OurOwn"],"Metrics":[]})")
          .File("a.json", "{\"Video\":[" + Entry("MaxFps") + ",\n" + Entry("maxwidth") + ",\n" +
                              Entry("MaxWidht") + ",\n" + Entry("Other") + "],\n\"Audio\":[" +
                              Entry("Anything") + "],\n\"Metrics\":[" + Entry("A") + "],\n\"Feature\":[" +
                              Entry("OurOwn") + "," + Entry("EnableMusicMode") + "," + Entry("OurOwm") + "]}")
          .Run({"lint", "--names", "video.json", "a.json", "--names", "more.json"});
  EXPECT_EQ(run.out,
            "a.json:2:8: Video[1].key: unknown name (did you mean \"MaxWidth\"?)\n"
            "a.json:3:8: Video[2].key: unknown name (did you mean \"MaxWidth\"?)\n"
            "a.json:4:8: Video[3].key: unknown name\n"
            "a.json:6:19: Metrics[0].key: unknown name\n"
            "a.json:7:86: Feature[2].key: no feature toggle has this name (did you mean \"OurOwn\"?)\n");
  EXPECT_EQ(run.status, 1);
}

TEST(LintCommand, TakesADumpForAListOfNames) {
  Program program;
  program.File("a.json", kOdd);
  program.Input(program.Run({"apply", "a.json", "-q", "--dump", "0x20"}).out);
  EXPECT_EQ(program.File("b.json", "{\"Video\":[" + Entry("MaxWidth") + "," + Entry("MaxFps") + "]}")
                .Run({"lint", "b.json", "--names", "-"})
                .out,
            "b.json:1:49: Video[1].key: unknown name\n");
}

TEST(LintCommand, RefusesAListThatIsNone) {
  const std::pair<std::string, std::string> rows[] = {
      {"{\n7}", "names.json:2:1: expected a key in double quotes\n"},
      {"[]", "names.json: a list of names is an object of groups\n"},
      {R"({"video":[]})", "names.json: unknown group \"video\" (did you mean \"Video\"?)\n"},
      {R"({"Video":{}})", "names.json: Video is no array of names\n"},
      {R"({"Video":["A",{"value":"1"}]})", "names.json: Video has an element that is no name\n"},
      {R"({"Video":[7]})", "names.json: Video has an element that is no name\n"},
      {R"({"Video":[{"key":1}]})", "names.json: Video has an element that is no name\n"},
  };
  for (const auto& [list, message] : rows) {
    const Finished run = Program()
                             .File("names.json", list)
                             .File("a.json", kOdd)
                             .Run({"lint", "a.json", "--names", "names.json"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 2);
  }
}

TEST(LintCommand, ChecksValuesAgainstDeclarations) {
  Program program;
  program
      .File("video.json", R"({"settings":[
{"group":"Video","name":"MaxFps","type":"int","default":30,"maximum":120},
{"group":"Video","name":"Fps","type":"int","default":30,"deprecated":{"replacedBy":"Video/MaxFps"}}]})")
      .File(
          "audio.json",
          R"({"settings":[{"group":"Audio","name":"Codec","type":"enum","default":"a","values":["a","b"]}]})")
      .File("a.json", R"({"Video":[
{"key":"MaxFps","value":"fast"},
{"key":"MaxFps","value":"121"},
{"key":"Fps","value":"15"},
{"key":"MaxFsp","value":"15"}],
"Audio":[
{"key":"Codec","value":"c d e"}],
"Common":[{"key":"Any","value":""}]})");
  const std::vector<std::string> declared = {"lint",       "--declared", "video.json",
                                             "--declared", "audio.json", "a.json"};
  const Finished run = program.Run(declared);
  EXPECT_EQ(run.out,
            "a.json:2:8: Video[0].key: the name is repeated in Video[1]; the last value stays\n"
            "a.json:2:25: Video[0].value: expected a whole number from -2147483648 to 2147483647\n"
            "a.json:3:25: Video[1].value: out of range: expected 120 or less\n"
            "a.json:4:8: Video[2].key: deprecated: use Video/MaxFps\n"
            "a.json:5:8: Video[3].key: unknown name (did you mean \"MaxFps\"?)\n"
            "a.json:7:24: Audio[0].value: not one of the values allowed: \"a\", \"b\"\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 1);

  std::vector<std::string> arguments = declared;
  arguments.push_back("--json");
  const std::string json = program.Run(arguments).out;
  for (const char* problem :
       {"wrong-type", "out-of-range", "deprecated-name", "unknown-name", "not-allowed"}) {
    EXPECT_NE(json.find(std::string("\"problem\":\"") + problem + "\",\"effect\":\"imported\""),
              std::string::npos)
        << json;
  }
  arguments.back() = "--github";
  EXPECT_NE(
      program.Run(arguments).out.find("::warning file=a.json,line=3,col=25::Video[1].value: out of range"),
      std::string::npos);
}

TEST(LintCommand, ChecksTogglesWithoutBeingAsked) {
  const Finished run =
      Program()
          .File("a.json", "{\"Feature\":[\n {\"key\":\"EnableMusicDetection\",\"value\":\"off\"}]}")
          .Run({"lint", "a.json"});
  EXPECT_EQ(run.out, "a.json:2:40: Feature[0].value: expected true or false; this value counts as on\n");
  EXPECT_EQ(run.status, 1);
}

TEST(LintCommand, RefusesDeclarationsThatAreWrong) {
  Program program;
  program.File("a.json", "{\"X\":[]}").File("wrong.json", R"({"settings":[{"name":"A"},7]})");
  const Finished run = program.Run({"lint", "a.json", "--declared", "wrong.json"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err.substr(0, run.err.find('\n')), "wrong.json:1:14: settings[0]: \"group\" is missing");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(program.Run({"lint", "a.json", "--declared", "missing.json"}).err,
            "missing.json: cannot be read: No such file or directory\n");
  EXPECT_EQ(program.Run({"lint", "-", "--declared", "-"}).status, 2);
  EXPECT_EQ(program.Run({"lint", "a.json", "--declared"}).status, 2);
}

TEST(LintCommand, ChecksTheOtherFilesWhenOneCannotBeRead) {
  const Finished run = Program().File("a.json", "{\"X\":[]}").Run({"lint", "missing.json", "a.json", "."});
  EXPECT_EQ(run.out, "a.json:1:2: X: unknown group\n");
  EXPECT_EQ(run.err,
            "missing.json: cannot be read: No such file or directory\n.: cannot be read: Is a directory\n");
  EXPECT_EQ(run.status, 2);
}

TEST(LintCommand, RefusesAnUnusableCommandLineInOneLine) {
  for (const auto& arguments : {std::vector<std::string>{"lint"},
                                {"lint", "a.json", "--format", "xml"},
                                {"lint", "a.json", "--json", "--github"},
                                {"lint", "a.json", "--format", "text", "--json"},
                                {"lint", "-", "a.json", "-"},
                                {"lint", "-", "--names", "-"},
                                {"lint", "-", "--declared", "-"},
                                {"lint", "a.json", "--names", "-", "--declared", "-"}}) {
    const Finished run = Program().File("a.json", "{}").Run(arguments);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.rfind("tessel: ", 0), 0U) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_EQ(run.status, 2) << run.err;
  }
}

TEST(LintCommand, ShowsNamesOfAnyBytes) {
  Program program;
  program.File("\xff.json", "{\"\x1b[1m\xff\":[]}");
  EXPECT_EQ(program.Run({"lint", "\xff.json"}).out, "\\u00ff.json:1:2: \\u001b[1m\\u00ff: unknown group\n");
  const json::Value finding = json::Deserialize(program.Run({"lint", "\xff.json", "--json"}).out);
  ASSERT_EQ(finding.GetType(), json::ObjectVal);
  EXPECT_EQ(finding["file"].ToString(), "\xff.json");
  EXPECT_EQ(finding["name"].ToString(), "\x1b[1m\xff");
}

TEST(LintCommand, MarksPlacesOnATerminal) {
  Program program;
  program.Input("{\"X\":[]}").To(Program::Output::kTerminal);
  EXPECT_EQ(program.Run({"lint", "-"}).out, "\033[1m<stdin>:1:2:\033[0m X: unknown group\r\n");
  EXPECT_EQ(program.Environment("NO_COLOR=1").Run({"lint", "-"}).out, "<stdin>:1:2: X: unknown group\r\n");
}

TEST(LintCommand, ChecksAHugeDocument) {
  std::string text = "{\"Feature\":[";
  for (int number = 0; number < 50000; ++number) {
    text += Entry("EnableMusicDetecton" + std::to_string(number)) + ",\n";
  }
  text += Entry("EnableMusicMode") + "]}";
  Program program;
  program.Input(text);
  const Finished run = program.Run({"lint", "-"});
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 50000);
  EXPECT_EQ(run.out.substr(0, run.out.find('\n')),
            "<stdin>:1:20: Feature[0].key: no feature toggle has this name (did you mean "
            "\"EnableMusicDetection\"?)");
  EXPECT_EQ(run.status, 1);

  const Finished unread = program.To(Program::Output::kNoReader).Run({"lint", "-"});
  EXPECT_EQ(unread.err, "");
  EXPECT_EQ(unread.status, 1);
  EXPECT_EQ(program.To(Program::Output::kFullDevice).Run({"lint", "-"}).status, 2);
}

TEST(LintCommand, SaysWhatATextIsThatIsNoDocumentInUtf8) {
  using namespace std::string_literals;
  const std::string utf16 = " is in UTF-16: save it as UTF-8";
  const std::string utf32 = " is in UTF-32: save it as UTF-8";
  const std::pair<std::string, std::string> rows[] = {
      {"", " the file is empty"},
      {" \n\t", " the file is empty"},
      {"\0"s, " the file is empty"},
      {"{\"type\":\"recording\",\"t\":0}\n{\"type\":\"call\",\"t\":0}\n",
       " is a recording: tessel dump makes a settings document of a moment"},
      {"\xEF\xBB\xBF{}", " begins with a byte order mark: save it as UTF-8 without one"},
      {"\xFF\xFE{\0}\0"s, utf16},
      {"\xFE\xFF\0{\0}"s, utf16},
      {"{\0}\0"s, utf16},
      {"\0{\0}"s, utf16},
      {"\xFF\xFE\0\0{\0\0\0"s, utf32},
      {"\0\0\xFE\xFF\0\0\0{"s, utf32},
      {"{\0\0\0}\0\0\0"s, utf32},
  };
  for (const auto& [text, reason] : rows) {
    Program program;
    program.File("a.json", text);
    EXPECT_EQ(program.Run({"lint", "a.json"}).out, "a.json:1:1:" + reason + "\n");
    EXPECT_EQ(
        program.Run({"lint", "a.json", "--json"}).out,
        R"({"file":"a.json","line":1,"column":1,"problem":"no-json","effect":"refused","path":"","name":"",)"
        R"("nearest":"","reason":")" +
            reason.substr(1) + "\"}\n");
    const Finished applied = program.Run({"apply", "a.json"});
    EXPECT_EQ(applied.err, "a.json:1:1:" + reason + "\n");
    EXPECT_EQ(applied.status, 2);
    EXPECT_EQ(program.Input("{}").Run({"lint", "-", "--names", "a.json"}).err, "a.json:" + reason + "\n");
  }
}
