// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "Program.h"

using namespace std::string_literals;

TEST(SettingsDocument, IsReadFromStandardInput) {
  const Finished run = Program().Input(R"({"Audio":[{"key":"X","value":"1"}]})").Run({"apply", "-"});
  EXPECT_EQ(run.out, "<stdin>\n  new      Audio/X: \"1\"\n  1 new\n");
  EXPECT_EQ(run.status, 0);
}

TEST(SettingsDocument, IsReadFromStandardInputOnceOnly) {
  const Finished run = Program().Input("{}").Run({"apply", "-", "-"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "tessel: standard input can be read once only\n");
  EXPECT_EQ(run.status, 2);
}

TEST(SettingsDocument, MustBeReadable) {
  const std::tuple<const char*, const char*> refusals[] = {
      {"missing.json", "missing.json: cannot be read: No such file or directory\n"},
      {".", ".: cannot be read: Is a directory\n"},
      {"new\nline", "new\\nline: cannot be read: No such file or directory\n"},
  };
  for (const auto& [file, message] : refusals) {
    const Finished run = Program().File("good.json", "{}").Run({"apply", "good.json", file});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 2);
  }
}

TEST(SettingsDocument, MayHaveAnyName) {
  for (const std::string name : {"apply", "a b", "list[1].json", "caf\xc3\xa9.json"}) {
    const Finished run = Program().File(name, "{}").Run({"apply", name});
    EXPECT_EQ(run.out, name + "\n  no entries\n");
    EXPECT_EQ(run.status, 0);
  }
  EXPECT_EQ(Program().File("-x", "{}").Run({"apply", "--", "-x"}).out, "-x\n  no entries\n");
}

TEST(SettingsDocument, IsRefusedAtItsFirstFault) {
  const std::tuple<std::string, std::string> refusals[] = {
      {"  \n ", "1:1: the file is empty"},
      {"{", "1:2: expected a key in double quotes"},
      {"{\"Audio\":[]", "1:12: expected ',' or '}'"},
      {"{\"Audio\":[]}\n\nx", "3:1: nothing but white space may follow the document"},
      {"{\n  \"Audio\": [\n    {\"key\": \"X\" \"value\": \"1\"}\n  ]\n}", "3:17: expected ',' or '}'"},
      {"[1]", "1:1: expected an object of groups, found an array"},
      {"\n  \"x\"", "2:3: expected an object of groups, found a string"},
      {"null", "1:1: expected an object of groups, found null"},
      {"TRUE", "1:1: expected an object of groups, found true or false"},
      {"1.5", "1:1: expected an object of groups, found a number"},
      {"{\"Audio\":\n[\"a\0b\"]}"s, "2:4: a zero byte ends the document"},
      {"{\"Audio\":[\"\\q\"]}", "1:13: unknown escape in a string"},
  };
  for (const auto& [text, reason] : refusals) {
    const Finished run = Program().File("a.json", text).Run({"apply", "a.json", "--dump", "all"});
    EXPECT_EQ(run.out, "") << text;
    EXPECT_EQ(run.err, "a.json:" + reason + "\n") << text;
    EXPECT_EQ(run.status, 2) << text;
  }
}

TEST(SettingsDocument, EndsAtAZeroByteLikeAnImport) {
  EXPECT_EQ(Program().File("a.json", "{}\0more"s).Run({"apply", "a.json"}).out, "a.json\n  no entries\n");
}

TEST(SettingsDocument, MayNestAThousandLevelsDeep) {
  const auto nested = [](std::size_t levels) {
    return "{\"Audio\":" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
  };
  EXPECT_EQ(Program().Input(nested(1000)).Run({"apply", "-"}).status, 0);
  const Finished run = Program().Input(nested(1001)).Run({"apply", "-"});
  EXPECT_EQ(run.err, "<stdin>:1:1009: nested deeper than 1000 levels\n");
  EXPECT_EQ(run.status, 2);
}

TEST(SettingsDocument, IsRefusedWhenItIsAnEndlessOpening) {
  const Finished run = Program().Input(std::string(10'000'000, '[')).Run({"apply", "-"});
  EXPECT_EQ(run.err, "<stdin>:1:1001: nested deeper than 1000 levels\n");
  EXPECT_EQ(run.status, 2);
}

TEST(SettingsDocument, ReportsEveryPartThatImportSkips) {
  const std::string text = R"({
    "Audoi": [{"key":"A","value":"1"}],
    "LastGroup": [],
    "video": [],
    "Video": {"key":"A","value":"1"},
    "Common": [
      1,
      {"value":"1"},
      {"key":"A"},
      {"key":7,"value":"1"},
      {"key":"A","value":null},
      {"key":"","value":"1"},
      {"key":"\u0000A","value":"1"},
      {"key":"Good","value":"1"},
      []
    ]
  })";
  const std::string reasons =
      "a.json:2:5: Audoi: unknown group (did you mean \"Audio\"?)\n"
      "a.json:3:5: LastGroup: unknown group\n"
      "a.json:4:5: video: unknown group (did you mean \"Video\"?)\n"
      "a.json:5:14: Video: expected an array of entries, found an object\n"
      "a.json:7:7: Common[0]: expected an object with \"key\" and \"value\", found a number\n"
      "a.json:8:7: Common[1]: \"key\" is missing\n"
      "a.json:9:7: Common[2]: \"value\" is missing\n"
      "a.json:10:14: Common[3].key: expected a string, found a number\n"
      "a.json:11:26: Common[4].value: expected a string, found null\n"
      "a.json:12:14: Common[5].key: the name is empty\n"
      "a.json:13:14: Common[6].key: the name is empty\n"
      "a.json:15:7: Common[8]: expected an object with \"key\" and \"value\", found an array\n";
  Program program;
  program.File("a.json", text);

  const Finished run = program.Run({"apply", "a.json", "--dump", "0x29"});
  EXPECT_EQ(run.out,
            "a.json\n  new      Common/Good: \"1\"\n  1 new, 12 skipped\n"
            "{\"Audio\":[],\"Common\":[{\"key\":\"Good\",\"value\":\"1\"}],\"Video\":[]}\n");
  EXPECT_EQ(run.err, reasons);
  EXPECT_EQ(run.status, 0);

  const Finished strict = program.Run({"apply", "a.json", "--dump", "0x29", "--strict"});
  EXPECT_EQ(strict.out, run.out);
  EXPECT_EQ(strict.err, reasons);
  EXPECT_EQ(strict.status, 1);

  const Finished quiet = program.Run({"apply", "a.json", "--quiet", "--strict"});
  EXPECT_EQ(quiet.out, "");
  EXPECT_EQ(quiet.err, reasons);
  EXPECT_EQ(quiet.status, 1);
}

TEST(SettingsDocument, IsFineWithStrictWhenNothingIsSkipped) {
  EXPECT_EQ(Program()
                .Input(R"({"Audio":[{"key":"A","value":"1","note":"kept out"}]})")
                .Run({"apply", "-", "--strict"})
                .status,
            0);
}

TEST(SettingsDocument, NamesAValueAsTheStoreDoesUpToAZeroByte) {
  const Finished run =
      Program().Input(R"({"Audio":[{"key":"A\u0000B","value":"1\u00002"}]})").Run({"apply", "-"});
  EXPECT_EQ(run.out, "<stdin>\n  new      Audio/A: \"1\\u00002\"\n  1 new\n");
}

TEST(SettingsDocument, ReportsWhatIsMostLikelyAMistakeWithoutCountingItAsSkipped) {
  const Finished run = Program()
                           .Input(R"({"Audio":[{"key":"A","value":"1"},{"key":"A","value":"2"}],)"
                                  "\n"
                                  R"("Feature":[{"key":"EnableMusicDetecton","value":"1"}]})")
                           .Run({"apply", "-", "--quiet", "--strict"});
  EXPECT_EQ(run.err,
            "<stdin>:1:18: Audio[0].key: the name is repeated in Audio[1]; the last value stays\n"
            "<stdin>:2:19: Feature[0].key: no feature toggle has this name (did you mean "
            "\"EnableMusicDetection\"?)\n");
  EXPECT_EQ(run.status, 0);
}

TEST(SettingsDocument, ReportsThatOnlyTheLastOfTwoEqualGroupsIsRead) {
  const Finished run = Program()
                           .Input("{\"Audio\":[{\"key\":\"A\",\"value\":\"1\"}],\n\"Audio\":[]}")
                           .Run({"apply", "-", "--strict"});
  EXPECT_EQ(run.out, "<stdin>\n  1 skipped\n");
  EXPECT_EQ(run.err, "<stdin>:1:2: Audio: the group is repeated below; only the last one is read\n");
  EXPECT_EQ(run.status, 1);
}

TEST(SettingsDocument, ShowsAnUnknownGroupAsItCanBeShown) {
  const Finished run = Program().Input("{\"\x1b[1m\xff\":[]}").Run({"apply", "-", "--quiet"});
  EXPECT_EQ(run.err, "<stdin>:1:2: \\u001b[1m\\u00ff: unknown group\n");
}
