// SPDX-License-Identifier: Apache-2.0
#include "tessel/settings_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "support/AllocationCount.h"
#include "tessel/KalConfigGroup.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/KalFeatureToggleID.h"
#include "tessel/json_text.h"
#include "tessel/settings_declaration.h"

using namespace std::string_literals;
using kalStore::CheckSettings;
using kalStore::SettingsFinding;
using Problem = kalStore::SettingsProblem;
using Effect = kalStore::SettingsEffect;

namespace {

// What tests compare: a finding on one line.
std::string Line(const SettingsFinding& finding) {
  return std::to_string(finding.line) + ":" + std::to_string(finding.column) + " " + finding.path + ": " +
         finding.reason;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  for (const SettingsFinding& finding : CheckSettings(text)) lines.push_back(Line(finding));
  return lines;
}

std::vector<Problem> Problems(const std::string& text) {
  std::vector<Problem> problems;
  for (const SettingsFinding& finding : CheckSettings(text)) problems.push_back(finding.problem);
  return problems;
}

using Expected = std::vector<std::string>;

}  // namespace

TEST(SettingsFinding, IsNowhereUntilItIsMade) {
  const SettingsFinding finding;
  EXPECT_EQ(finding.problem, Problem::kNoJson);
  for (const std::size_t number : {finding.offset, finding.line, finding.column}) EXPECT_EQ(number, 0U);
  EXPECT_TRUE(kalStore::SettingsEntry().stays);
}

TEST(SettingsCheck, FindsNothingInADocumentThatIsFine) {
  EXPECT_EQ(Lines("{}"), Expected());
  EXPECT_EQ(Lines(" {\"Audio\":[]}\n"), Expected());
  EXPECT_EQ(Lines(R"({"Audio":[{"key":"A","value":"1","note":[1,{"key":2}]},{"value":"","key":"B"}],
                      "Video":[{"key":"A","value":"1"}],
                      "Feature":[{"key":"EnableMusicDetection","value":"0"}]})"),
            Expected());
}

TEST(SettingsCheck, FindsWhereATextIsNoJson) {
  const std::pair<std::string, std::string> rows[] = {
      {"", "1:1 : expected a value"},
      {"  \n ", "2:2 : expected a value"},
      {"{\"Audio\":[]", "1:12 : expected ',' or '}'"},
      {"{\n  \"Audio\": [\n    {\"key\": \"X\" \"value\": \"1\"}\n  ]\n}", "3:17 : expected ',' or '}'"},
      {std::string(1001, '['), "1:1001 : nested deeper than 1000 levels"},
  };
  for (const auto& [text, line] : rows) {
    EXPECT_EQ(Lines(text), Expected{line}) << text;
    EXPECT_EQ(Problems(text), std::vector{Problem::kNoJson}) << text;
  }
}

TEST(SettingsCheck, FindsThatADocumentIsNoObject) {
  const std::pair<std::string, std::string> rows[] = {
      {"[1]", "1:1 : expected an object of groups, found an array"},
      {"\n  \"x\"\n", "2:3 : expected an object of groups, found a string"},
      {"null", "1:1 : expected an object of groups, found null"},
      {"TRUE", "1:1 : expected an object of groups, found true or false"},
      {"false", "1:1 : expected an object of groups, found true or false"},
      {"-1.5", "1:1 : expected an object of groups, found a number"},
  };
  for (const auto& [text, line] : rows) {
    EXPECT_EQ(Lines(text), Expected{line}) << text;
    EXPECT_EQ(Problems(text), std::vector{Problem::kNoObject}) << text;
  }
}

TEST(SettingsCheck, FindsTheZeroByteThatImportStopsAt) {
  const std::pair<std::string, std::string> rows[] = {
      {"{\"Audio\":\n[\"a\0b\", 1]}"s, "2:4 : a zero byte ends the document"},
      {"{\"Audio\":[\"a\0b\" 1]}"s, "1:13 : a zero byte ends the document"},
      {"{\"Audio\":[]\0}"s, "1:12 : a zero byte ends the document"},
      {"\0{}"s, "1:1 : a zero byte ends the document"},
      {"[\0"s, "1:2 : a zero byte ends the document"},
  };
  for (const auto& [text, line] : rows) {
    EXPECT_EQ(Lines(text), Expected{line}) << text;
    EXPECT_EQ(Problems(text), std::vector{Problem::kZeroByte}) << text;
    EXPECT_TRUE(kalStore::ReadSettings(text).entries.empty());
  }
}

TEST(SettingsCheck, FindsAFaultBeforeTheFirstZeroByteWhereImportStops) {
  EXPECT_EQ(Lines("{\"Audio\":[1 2\0]}"s), Expected{"1:13 : expected ',' or ']'"});
  EXPECT_EQ(Problems("{} x\0"s), std::vector{Problem::kNoJson});
  EXPECT_EQ(Problems("[1]\0"s), std::vector{Problem::kNoObject});
}

TEST(SettingsCheck, ReadsNothingBehindTheFirstZeroByte) {
  for (const std::string& rest : {""s, "\0"s, "garbage"s, "{\"Audoi\":[]}"s}) {
    const std::string text = "{\"Audio\":[{\"key\":\"A\",\"value\":\"1\"}]} \0"s + rest;
    EXPECT_EQ(Lines(text), Expected()) << text;
    EXPECT_EQ(kalStore::ReadSettings(text).entries.size(), 1U) << text;
  }
}

TEST(SettingsCheck, FindsEveryPartThatImportSkips) {
  const std::string text = R"({
  "Audoi": [{"key":"A","value":"1"}],
  "LastGroup": [],
  "video": [],
  "Video": {"key":"A","value":"1"},
  "Common": [
    1,
    {"value":"1"},
    {"key":"A"},
    {"key": 7,"value":"1"},
    {"key":"A", "value": null},
    {"key":"","value":"1"},
    {"key":"\u0000A","value":"1"},
    {"key":"Good","value":"1"},
    [],
    {}
  ]
})";
  EXPECT_EQ(Lines(text), (Expected{
                             "2:3 Audoi: unknown group (did you mean \"Audio\"?)",
                             "3:3 LastGroup: unknown group",
                             "4:3 video: unknown group (did you mean \"Video\"?)",
                             "5:12 Video: expected an array of entries, found an object",
                             "7:5 Common[0]: expected an object with \"key\" and \"value\", found a number",
                             "8:5 Common[1]: \"key\" is missing",
                             "9:5 Common[2]: \"value\" is missing",
                             "10:13 Common[3].key: expected a string, found a number",
                             "11:26 Common[4].value: expected a string, found null",
                             "12:12 Common[5].key: the name is empty",
                             "13:12 Common[6].key: the name is empty",
                             "15:5 Common[8]: expected an object with \"key\" and \"value\", found an array",
                             "16:5 Common[9]: \"key\" is missing",
                         }));
  for (const SettingsFinding& finding : CheckSettings(text)) {
    EXPECT_EQ(kalStore::EffectOf(finding.problem), Effect::kSkipped);
  }
}

// Of two that are as near, as one letter replaced is as near as two that changed places.
TEST(SettingsCheck, SuggestsTheNameWithTheSameLetters) {
  const kalStore::SettingsNames known = {{kalStore::KAL_CONFIG_GROUP_AUDIO, {"abce", "abdc", "abcf"}}};
  const auto findings = CheckSettings(R"({"Audio":[{"key":"abcd","value":"1"}]})", known);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].nearest, "abdc");
}

TEST(SettingsCheck, GivesOffsetsInBytes) {
  const std::string text = "{\"caf\xc3\xa9\":[],\"Audoi\":[]}";
  const auto findings = CheckSettings(text);
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].name, "caf\xc3\xa9");
  EXPECT_EQ(findings[0].nearest, "");
  EXPECT_EQ(findings[1].offset, text.find("\"Audoi"));
  EXPECT_EQ(findings[1].column, findings[1].offset + 1);
  EXPECT_EQ(findings[1].name, "Audoi");
  EXPECT_EQ(findings[1].nearest, "Audio");
}

TEST(SettingsCheck, FindsTheEarlierOfTwoEqualNames) {
  const std::string text = R"({"Audio":[
{"key":"A","value":"1"},
{"key":"B","value":"1"},
{"key":"\u0041\u0000x","value":"2"},
{"key":"A","value":3},
{"key":"A","value":"4"}],
"Video":[{"key":"A","value":"1"}]})";
  EXPECT_EQ(Lines(text), (Expected{
                             "2:8 Audio[0].key: the name is repeated in Audio[2]; the last value stays",
                             "4:8 Audio[2].key: the name is repeated in Audio[4]; the last value stays",
                             "5:20 Audio[3].value: expected a string, found a number",
                         }));
  EXPECT_EQ(CheckSettings(text)[0].name, "A");
  EXPECT_EQ(CheckSettings(text)[0].problem, Problem::kRepeatedName);
}

TEST(SettingsCheck, FindsTheEarlierOfTwoEqualGroups) {
  const std::string text = R"({"Audio":[7],
"Video":[],
"Aud\u0069o":[{"key":"A","value":"2"}],
"Other":[], "Other":[]})";
  EXPECT_EQ(Lines(text), (Expected{
                             "1:2 Audio: the group is repeated below; only the last one is read",
                             "4:1 Other: unknown group",
                             "4:13 Other: unknown group",
                         }));
  EXPECT_EQ(Problems(text)[0], Problem::kRepeatedGroup);
  EXPECT_EQ(CheckSettings(text)[0].name, "Audio");
}

TEST(SettingsCheck, FindsNothingInTheEntriesOfTheEarlierOfTwoEqualGroups) {
  EXPECT_EQ(Lines(R"({"Audio":[{"key":"","value":"1"},{"key":"A","value":"1"}],
"Audio":[7,
{"key":"","value":"2"},
{"key":"A","value":"3"}]})"),
            (Expected{
                "1:2 Audio: the group is repeated below; only the last one is read",
                "2:10 Audio[0]: expected an object with \"key\" and \"value\", found a number",
                "3:8 Audio[1].key: the name is empty",
            }));
}

TEST(SettingsCheck, FindsTheEarlierOfTwoEqualMembers) {
  const std::string text = R"({"Audio":[{"key":7,"value":"1","\u006bey":"A","value":"2","x":1,"x":2}]})";
  EXPECT_EQ(Lines(text), (Expected{
                             "1:12 Audio[0].key: \"key\" is repeated in the entry; the last one counts",
                             "1:20 Audio[0].value: \"value\" is repeated in the entry; the last one counts",
                         }));
  EXPECT_EQ(Problems(text), (std::vector{Problem::kRepeatedMember, Problem::kRepeatedMember}));
}

TEST(SettingsCheck, FindsNamesThatAreNoToggle) {
  const std::string text = R"({"Feature":[
{"key":"EnableMusicDetecton","value":"1"},
{"key":"enablemusicdetection","value":"1"},
{"key":"Something else","value":"1"},
{"key":"KAL_FT_Unknow","value":"1"}],
"Audio":[{"key":"EnableMusicDetecton","value":"1"}]})";
  EXPECT_EQ(
      Lines(text),
      (Expected{
          "2:8 Feature[0].key: no feature toggle has this name (did you mean \"EnableMusicDetection\"?)",
          "3:8 Feature[1].key: no feature toggle has this name (did you mean \"EnableMusicDetection\"?)",
          "4:8 Feature[2].key: no feature toggle has this name",
          "5:8 Feature[3].key: no feature toggle has this name",
      }));
  EXPECT_EQ(CheckSettings(text)[0].name, "EnableMusicDetecton");
  EXPECT_EQ(CheckSettings(text)[0].nearest, "EnableMusicDetection");
}

TEST(SettingsCheck, KnowsEveryToggle) {
  std::string text = "{\"Feature\":[";
#define KAL_FT(id, name, key, kind, meaning) \
  if (id != kalStore::KAL_FT_Unknow) text += "{\"key\":\"" key "\",\"value\":\"1\"},";
#include "tessel/KalFeatureToggles.def"
#undef KAL_FT
  text.back() = ']';
  EXPECT_EQ(Lines(text + "}"), Expected());
}

TEST(SettingsCheck, FindsNamesThatAreNotKnown) {
  const std::string text = R"({"Audio":[{"key":"Bitrate","value":"1"},
{"key":"Bitrat","value":"1"},{"key":"\u0042itrate\u0000x","value":"1"}],
"Common":[{"key":"Anything","value":"1"}],
"Metrics":[{"key":"Anything","value":"1"}],
"Feature":[{"key":"EnableMusicMode","value":"1"},
{"key":"OurOwn","value":"1"},
{"key":"OurOwm","value":"1"}]})";
  const kalStore::SettingsNames known = {{kalStore::KAL_CONFIG_GROUP_AUDIO, {"Dtx", "Bitrate", "Bitrate"}},
                                         {kalStore::KAL_CONFIG_GROUP_METRICS, {}},
                                         {kalStore::KAL_CONFIG_GROUP_FEATURE, {"OurOwn"}}};
  std::vector<std::string> lines;
  for (const SettingsFinding& finding : CheckSettings(text, known)) lines.push_back(Line(finding));
  EXPECT_EQ(lines, (Expected{
                       "1:18 Audio[0].key: the name is repeated in Audio[2]; the last value stays",
                       "2:8 Audio[1].key: unknown name (did you mean \"Bitrate\"?)",
                       "4:19 Metrics[0].key: unknown name",
                       "7:8 Feature[2].key: no feature toggle has this name (did you mean \"OurOwn\"?)",
                   }));
  const SettingsFinding finding = CheckSettings(text, known)[1];
  EXPECT_EQ(finding.problem, Problem::kUnknownName);
  EXPECT_EQ(finding.name, "Bitrat");
  EXPECT_EQ(finding.nearest, "Bitrate");
}

TEST(SettingsCheck, TakesTwoLettersThatChangedPlacesForOneWrongLetter) {
  const kalStore::SettingsNames known = {{kalStore::KAL_CONFIG_GROUP_AUDIO, {"Dtxy"}}};
  for (const char* name : {"tDxy", "Dxty", "Dtyx", "TDxy"}) {
    const auto findings =
        CheckSettings(R"({"Audio":[{"key":")" + std::string(name) + R"(","value":"1"}]})", known);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].nearest, "Dtxy") << name;
  }
}

// A letter may have changed its place with the one before it, and a value ends before the name begins.
TEST(SettingsCheck, SuggestsTheNearestNameWhateverComesBeforeIt) {
  const kalStore::SettingsNames known = {
      {kalStore::KAL_CONFIG_GROUP_AUDIO, {"Known", "zzpqcdefg", "pcdxyg"}}};
  for (const char last : {'q', 'r'}) {
    const auto findings = CheckSettings(
        std::string(R"({"Audio":[{"key":"Known","value":")") + last + R"("},{"key":"pcdefg","value":"1"}]})",
        known);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].nearest, "pcdxyg") << last;
  }
}

TEST(SettingsCheck, SuggestsANameWhoseLettersHaveAnotherCase) {
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    const std::string known(4, letter), written(4, static_cast<char>(letter - 'a' + 'A'));
    const auto findings = CheckSettings(R"({"Audio":[{"key":")" + written + R"(","value":"1"}]})",
                                        {{kalStore::KAL_CONFIG_GROUP_AUDIO, {known}}});
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].nearest, known);
  }
}

TEST(SettingsCheck, FindsValuesThatAToggleCannotHave) {
  const std::string text = R"({"Feature":[
{"key":"EnableMusicDetection","value":"off"},
{"key":"EnableMusicMode","value":""},
{"key":"EnableDigitalAgc","value":"FALSE"},
{"key":"NoiseSuppressionLevel","value":"5"},
{"key":"NoiseSuppressionLevel","value":"0"},
{"key":"AutoFramingSpeed","value":"1.01"},
{"key":"VideoStrategyMinFps","value":"15.5"},
{"key":"VideoStrategyLadder","value":"off"}],
"Audio":[{"key":"EnableMusicDetection","value":"off"}]})";
  EXPECT_EQ(Lines(text), (Expected{
                             "2:39 Feature[0].value: expected true or false; this value counts as on",
                             "3:34 Feature[1].value: expected true or false; this value counts as off",
                             "5:8 Feature[3].key: the name is repeated in Feature[4]; the last value stays",
                             "5:40 Feature[3].value: out of range: expected from 0 to 4",
                             "7:35 Feature[5].value: out of range: expected from 0 to 1",
                             "8:38 Feature[6].value: expected a whole number from -2147483648 to 2147483647",
                         }));
  EXPECT_EQ(Problems(text), (std::vector{Problem::kWrongType, Problem::kWrongType, Problem::kRepeatedName,
                                         Problem::kOutOfRange, Problem::kOutOfRange, Problem::kWrongType}));
  EXPECT_EQ(CheckSettings(text)[0].name, "EnableMusicDetection");
  EXPECT_EQ(kalStore::ReadSettings(text).findings.size(), 6U);
}

TEST(SettingsCheck, SaysHowAValueCountsOfTogglesOnly) {
  const auto declared = kalStore::ReadDeclarations({R"({"settings":[
{"group":"Feature","name":"MyFlag","type":"bool","default":false},
{"group":"Feature","name":"EnableMusicMode","type":"bool","default":false}]})"});
  const std::string text =
      R"({"Feature":[{"key":"MyFlag","value":"off"},{"key":"EnableMusicMode","value":"off"}]})";
  const auto findings = CheckSettings(text, {}, declared.settings);
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].reason, "expected true or false");
  EXPECT_EQ(findings[1].reason, "expected true or false; this value counts as on");
}

TEST(SettingsCheck, FindsWhatDoesNotFitDeclarations) {
  const auto declared = kalStore::ReadDeclarations({R"({"settings":[
{"group":"Video","name":"MaxFps","type":"int","default":30,"minimum":1,"maximum":120},
{"group":"Video","name":"Codec","type":"enum","default":"h264","values":["h264","vp8"]},
{"group":"Video","name":"Layers","type":"uint","default":1,"values":[1,3]},
{"group":"Video","name":"Old","type":"bool","default":true,"deprecated":{"since":"2.0","replacedBy":"Video/MaxFps"}},
{"group":"Video","name":"Older","type":"string","default":"","deprecated":{}},
{"group":"Video","name":"Ratio","type":"double","default":1,"minimum":0},
{"group":"Video","name":"Delay","type":"duration","unit":"ms","default":1,"maximum":50},
{"group":"Feature","name":"OurOwn","type":"bool","default":true},
{"group":"Feature","name":"EnableMusicMode","type":"enum","default":"on","values":["on","off"]}]})"});
  ASSERT_TRUE(declared.findings.empty());
  const std::string text = R"({"Video":[
{"key":"MaxFps","value":"fast"},
{"key":"MaxFsp","value":"1"},
{"key":"Codec","value":"h265"},
{"value":"2","key":"Layers"},
{"key":"Old","value":"maybe"},
{"key":"Older","value":"x"},
{"key":"Ratio","value":"nan"},
{"key":"Delay","value":"51"},
{"key":"Known","value":"any"}],
"Feature":[
{"key":"OurOwn","value":"x"},
{"key":"EnableMusicMode","value":"off"},
{"key":"OurOwm","value":"1"}],
"Audio":[{"key":"MaxFps","value":"fast"}]})";
  std::vector<std::string> lines;
  std::vector<Problem> problems;
  const kalStore::SettingsNames known = {{kalStore::KAL_CONFIG_GROUP_VIDEO, {"Known"}}};
  const std::vector<SettingsFinding> findings = CheckSettings(text, known, declared.settings);
  for (const SettingsFinding& finding : findings) {
    lines.push_back(Line(finding));
    problems.push_back(finding.problem);
  }
  EXPECT_EQ(
      lines,
      (Expected{
          "2:25 Video[0].value: expected a whole number from -2147483648 to 2147483647",
          "3:8 Video[1].key: unknown name (did you mean \"MaxFps\"?)",
          "4:24 Video[2].value: not one of the values allowed: \"h264\", \"vp8\" (did you mean \"h264\"?)",
          "5:10 Video[3].value: not one of the values allowed: \"1\", \"3\"",
          "6:8 Video[4].key: deprecated since 2.0: use Video/MaxFps",
          "6:22 Video[4].value: expected true or false",
          "7:8 Video[5].key: deprecated",
          "8:24 Video[6].value: out of range: expected 0 or more",
          "9:24 Video[7].value: out of range: expected 50 or less",
          "12:25 Feature[0].value: expected true or false",
          "14:8 Feature[2].key: no feature toggle has this name (did you mean \"OurOwn\"?)",
      }));
  EXPECT_EQ(problems, (std::vector{Problem::kWrongType, Problem::kUnknownName, Problem::kNotAllowed,
                                   Problem::kNotAllowed, Problem::kDeprecatedName, Problem::kWrongType,
                                   Problem::kDeprecatedName, Problem::kOutOfRange, Problem::kOutOfRange,
                                   Problem::kWrongType, Problem::kUnknownToggle}));
  EXPECT_EQ(findings[2].nearest, "h264");
}

TEST(SettingsCheck, FindsNothingInValuesThatFitDeclarations) {
  const auto declared = kalStore::ReadDeclarations({R"({"settings":[
{"group":"Video","name":"MaxFps","type":"int","default":30,"minimum":1,"maximum":120,"values":[30,60]},
{"group":"Video","name":"Codec","type":"enum","default":"h264","values":["h264","vp8"]},
{"group":"Video","name":"Title","type":"string","default":""},
{"group":"Video","name":"Ratio","type":"double","default":1,"minimum":-1}]})"});
  ASSERT_TRUE(declared.findings.empty());
  EXPECT_TRUE(CheckSettings(R"({"Video":[{"key":"MaxFps","value":"060"},{"key":"Codec","value":"vp8"},
{"key":"Title","value":"\u0000"},{"key":"Ratio","value":"-.5e0"}],"Audio":[{"key":"Any","value":""}]})",
                            {}, declared.settings)
                  .empty());
}

// One letter of each name is left out, doubled or swapped with the next one.
TEST(SettingsCheck, FindsTheNearestOfThousandsOfNames) {
  constexpr const char* kWords[] = {"Audio", "Bitrate", "Maximum", "Jitter",
                                    "Frame", "Delay",   "Codec",   "Level"};
  kalStore::SettingsNames known;
  std::vector<std::string>& names = known[kalStore::KAL_CONFIG_GROUP_AUDIO];
  for (const char* first : kWords) {
    for (const char* second : kWords) {
      for (const char* third : kWords) {
        for (const char* last : kWords) names.push_back(std::string(first) + second + third + last);
      }
    }
  }
  for (std::size_t at = 0; at < names.size(); at += 97) {
    std::string name = names[at];
    const std::size_t letter = 1 + at % (name.size() - 2);
    if (at % 3 == 0) {
      name.erase(letter, 1);
    } else if (at % 3 == 1) {
      name.insert(letter, 1, name[letter]);
    } else {
      std::swap(name[letter], name[letter + 1]);
    }
    const auto findings = CheckSettings(R"({"Audio":[{"key":")" + name + R"(","value":"1"}]})", known);
    if (findings.empty()) continue;  // Two equal letters were swapped.
    EXPECT_EQ(findings[0].nearest, names[at]) << name;
  }
}

TEST(SettingsCheck, ReadsTheEntriesInTheOrderOfImport) {
  const kalStore::SettingsContents contents = kalStore::ReadSettings(R"({
"Video":[{"key":"B","value":"1"},{"key":"A","value":"\"\u0000\u00ff"}],
"Nowhere":[{"key":"A","value":"1"}],
"Audio":[{"key":"A","value":"1"},7,{"key":"A\u0000x","value":"2"},{"key":"","value":"3"}]})");
  std::vector<std::string> entries;
  for (const kalStore::SettingsEntry& entry : contents.entries) {
    entries.push_back(kalStore::KalConfigGroup2GroupName(entry.group) + "/" + entry.name + "=" + entry.value +
                      (entry.stays ? "" : " for a while"));
  }
  EXPECT_EQ(entries, (Expected{"Audio/A=1 for a while", "Audio/A=2", "Video/B=1", "Video/A=\"\0\xff"s}));
  EXPECT_EQ(contents.findings.size(), 4U);
  EXPECT_TRUE(kalStore::ReadSettings("{\"Audio\":").entries.empty());
}

TEST(SettingsCheck, GivesEveryProblemItsEffect) {
  const std::pair<Problem, Effect> rows[] = {
      {Problem::kNoJson, Effect::kRefused},          {Problem::kNoObject, Effect::kRefused},
      {Problem::kZeroByte, Effect::kRefused},        {Problem::kUnknownGroup, Effect::kSkipped},
      {Problem::kNoArray, Effect::kSkipped},         {Problem::kNoEntry, Effect::kSkipped},
      {Problem::kNoMember, Effect::kSkipped},        {Problem::kNoText, Effect::kSkipped},
      {Problem::kEmptyName, Effect::kSkipped},       {Problem::kRepeatedGroup, Effect::kSkipped},
      {Problem::kRepeatedName, Effect::kImported},   {Problem::kRepeatedMember, Effect::kImported},
      {Problem::kUnknownToggle, Effect::kImported},  {Problem::kUnknownName, Effect::kImported},
      {Problem::kDeprecatedName, Effect::kImported}, {Problem::kWrongType, Effect::kImported},
      {Problem::kOutOfRange, Effect::kImported},     {Problem::kNotAllowed, Effect::kImported},
  };
  for (const auto& [problem, effect] : rows) EXPECT_EQ(kalStore::EffectOf(problem), effect);
}

TEST(SettingsCheck, ChecksAHugeDocumentQuickly) {
  std::string text = "{\"Feature\":[";
  for (int i = 0; i < 5000; ++i) text += "{\"key\":\"Enable" + std::to_string(i) + "\",\"value\":\"1\"},\n";
  text += "0]}";
  const auto findings = CheckSettings(text);
  ASSERT_EQ(findings.size(), 5001U);
  EXPECT_EQ(findings.back().line, 5001U);
}

TEST(SettingsCheck, GivesTheNearestNameForTheFirstOfVeryManyOnly) {
  std::string text = "{\"Feature\":[";
  for (int i = 0; i < 100'000; ++i) {
    text += "{\"key\":\"EnableMusicDetecton" + std::to_string(i) + "\",\"value\":\"1\"},\n";
  }
  text += "0]}";
  const auto findings = CheckSettings(text);
  ASSERT_EQ(findings.size(), 100'001U);
  EXPECT_EQ(findings[0].nearest, "EnableMusicDetection");
  EXPECT_EQ(findings[1000].nearest, "EnableMusicDetection");
  EXPECT_EQ(findings[99'999].nearest, "");
  EXPECT_EQ(findings[99'999].reason, "no feature toggle has this name");
}

// Every text one byte away from a document, and every beginning of it; the sanitizers see a read past its
// end.
TEST(SettingsCheck, StaysWithinTheTextWhateverItIs) {
  const std::string text =
      " {\"Audio\" : [{\"key\":\"\\u0041\\\\\",\"value\":\"\\\"\"} , null, [1.5e3,{}]],\n\"Feature\":[{}]} ";
  const auto check = [](const std::string& changed) {
    json::ParseError error;
    json::Deserialize(changed.c_str(), error);
    const auto findings = CheckSettings(changed);
    const bool endsAtZero = !findings.empty() && findings[0].problem == Problem::kZeroByte;
    const bool isJson = findings.empty() || (findings[0].problem != Problem::kNoJson && !endsAtZero);
    ASSERT_EQ(isJson, error.reason == nullptr) << changed;
    if (endsAtZero) {
      EXPECT_EQ(findings[0].offset, changed.find('\0')) << changed;
      EXPECT_EQ(findings[0].offset, error.offset) << changed;
    } else if (!isJson) {
      EXPECT_EQ(findings[0].reason, error.reason) << changed;
      EXPECT_EQ(findings[0].offset, error.offset) << changed;
    }
    for (const SettingsFinding& finding : CheckSettings(changed)) {
      EXPECT_LE(finding.offset, changed.size()) << changed;
      const auto before = changed.begin() + static_cast<std::ptrdiff_t>(finding.offset);
      EXPECT_EQ(finding.line, 1 + static_cast<std::size_t>(std::count(changed.begin(), before, '\n')));
    }
  };
  for (std::size_t at = 0; at <= text.size(); ++at) {
    check(text.substr(0, at));
    for (const char byte : "\"\\{}[],:0 \nk\xff"s + '\0') {
      std::string changed = text;
      if (at < text.size()) changed[at] = byte;
      check(changed);
      check(text.substr(0, at) + byte + text.substr(at));
    }
  }
}

TEST(SettingsCheck, LeavesNothingBehindWhenAnAllocationFails) {
  const std::string text =
      R"({"Audoi":[],"Audio":[],"Audio":[{"key":"A","value":"1"},{"key":"A","value":"1"}],"Feature":[{"key":"EnableMusicDetecton","value":"1"}]})";
  const std::vector<std::string> expected = Lines(text);
  const long before = LiveAllocations();
  for (std::size_t n = 1;; ++n) {
    FailAllocation nth(n);
    try {
      (void)kalStore::ReadSettings(text);
    } catch (const std::bad_alloc&) {
    }
    if (!nth.Fired()) break;
    EXPECT_EQ(LiveAllocations(), before);
  }
  EXPECT_EQ(Lines(text), expected);
}

TEST(SettingsCheck, SuggestsTheGroupWithTheFewestWrongLettersThenTheFewestInTheWrongCase) {
  const std::pair<const char*, const char*> rows[] = {
      {"AUDIO", "Audio"},
      {"Vdeo", "Video"},
      {"Vidoe", "Video"},
      {"Videos", "Video"},
      {"Transmision", "Transmission"},
      {"", ""},
      {"Hardware", ""},
      {"LastGroup", ""},
      {"videoslide", "VideoSlide"},
      {"Transxxxssion", "Transmission"},
      {"Transxxxxxxx", ""},
      {"tRANSMISSIOM", "Transmission"},
      {"tRANSMISSxxxxx", ""},
  };
  for (const auto& [name, nearest] : rows) {
    EXPECT_EQ(CheckSettings("{\"" + std::string(name) + "\":[]}").at(0).nearest, nearest) << name;
  }
}

namespace {

// The dump of an empty store after a change to it.
template <class Function>
std::string DumpAfter(Function change) {
  kalStore::IKalConfig* store = nullptr;
  kalStore::CreateKalConfig(1, &store);
  change(*store);
  const std::string dump = store->DumpKalConfigs(kalStore::kAllConfigGroups);
  kalStore::ReleaseKalConfig(store);
  kalStore::CleanUpKalConfig(1);
  return dump;
}

// How often subscribers are notified when a document is imported into an empty store.
std::size_t Imported(const std::string& text) {
  kalStore::IKalConfig* store = nullptr;
  kalStore::CreateKalConfig(1, &store);
  std::size_t notified = 0;
  for (const auto group : {kalStore::KAL_CONFIG_GROUP_AUDIO, kalStore::KAL_CONFIG_GROUP_VIDEO}) {
    for (const char* name : {"A", "B", "C", "D", "E"}) {
      store->SubscribeConfig(
          group, name, [&](const kalStore::KalConfigEvent&) { ++notified; }, nullptr, false);
    }
  }
  EXPECT_EQ(store->ApplyKalConfigs(text.c_str()), kalStore::kResultOk);
  kalStore::ReleaseKalConfig(store);
  kalStore::CleanUpKalConfig(1);
  return notified;
}

}  // namespace

// Every document of two groups with two entries each, all of these forms: what is not found to be skipped is
// imported, and nothing else. A form always gives a name the same value, so repeated ones notify once.
TEST(SettingsCheck, AgreesWithImport) {
  const std::string forms[] = {
      R"({"key":"A","value":"1"})",
      R"({"value":"2","key":"B"})",
      R"({"key":"A","value":2})",
      R"({"key":"","value":"1"})",
      R"({"key":"A"})",
      R"({"key":"\u0000","value":"1"})",
      R"(["key"])",
      R"({"key":"C","value":"[{\"}","x":{"a":[]}})",
      R"(null)",
      R"({"key":1,"key":"D","value":"1"})",
      R"("}")",
      R"({"key":"E\u0000","value":"\\"})",
  };
  const std::pair<std::string, std::string> groupPairs[] = {
      {"Audio", "Video"}, {"Video", "audio"}, {"Audio", "Audio"}};
  const auto check = [](const std::string& text) {
    std::size_t expected = 4;
    for (const SettingsFinding& finding : CheckSettings(text)) {
      const bool isImported = kalStore::EffectOf(finding.problem) == Effect::kImported;
      if (isImported && finding.problem != Problem::kRepeatedName) continue;
      const bool isGroup = finding.path.find('[') == std::string::npos;
      expected -= isGroup ? 2U : 1U;
    }
    EXPECT_EQ(Imported(text), expected) << text;
    EXPECT_EQ(DumpAfter([&](kalStore::IKalConfig& store) {
                for (const auto& entry : kalStore::ReadSettings(text).entries) {
                  store.SetKalConfig(entry.group, entry.name.c_str(), ConfigData(entry.value), false, false);
                }
              }),
              DumpAfter([&](kalStore::IKalConfig& store) { store.ApplyKalConfigs(text.c_str()); }))
        << text;
  };
  constexpr std::size_t kForms = std::size(forms);
  for (const auto& [first, second] : groupPairs) {
    // All threes where they share a group. Elsewhere all twos: one third for each two.
    const std::size_t thirds = first == second ? kForms : 1;
    for (std::size_t a = 0; a < kForms; ++a) {
      for (std::size_t b = 0; b < kForms; ++b) {
        for (std::size_t third = 0; third < thirds; ++third) {
          const std::string& c = forms[(a + b + third) % kForms];
          check("{\"" + first + "\" : [" + forms[a] + "," + forms[b] + " ] , \"" + second + "\":\n[" + c +
                "," + forms[a] + "]}");
        }
      }
    }
  }
}
