// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tessel/KalFeatureToggleID.h"
#include "tessel/settings_declaration.h"

using namespace kalStore;

namespace {

using Expected = std::vector<std::string>;

std::vector<std::string> LinesOf(const std::vector<std::string>& texts) {
  std::vector<std::string> lines;
  for (const DeclarationFinding& finding : ReadDeclarations(texts).findings) {
    lines.push_back((finding.document == 0 ? "" : "#" + std::to_string(finding.document) + " ") +
                    std::to_string(finding.line) + ":" + std::to_string(finding.column) + " " + finding.path +
                    ": " + finding.reason);
  }
  return lines;
}

// A document of one setting on the second line, which begins with R"({"group":"Video","name":"A",)" unless
// the members say something else.
std::string One(const std::string& members) {
  return "{\"settings\":[\n{" + members + "}]}";
}

std::string VideoA(const std::string& members) {
  return One(R"("group":"Video","name":"A",)" + members);
}

// What ReadDeclarations() makes of the one setting.
SettingDeclaration Read(const std::string& text) {
  const SettingsDeclarations read = ReadDeclarations({text});
  for (const std::string& line : LinesOf({text})) ADD_FAILURE() << line;
  return read.settings.empty() ? SettingDeclaration() : read.settings.front();
}

}  // namespace

TEST(SettingsDeclarations, ReadEveryMember) {
  const SettingDeclaration setting = Read(R"({"$schema":"x","namespace":"media::audio","settings":[{
    "group":"Audio","name":"FrameMs","type":"int","default":20,"minimum":10,"maximum":60,
    "values":[10,20,60],"unit":"ms","description":"Length of a frame","since":"1.1",
    "deprecated":{"since":"1.2","replacedBy":"Feature/AudioFrameLengthMs"},"identifier":"FrameLength"}]})");
  EXPECT_EQ(setting.group, KAL_CONFIG_GROUP_AUDIO);
  EXPECT_EQ(setting.name, "FrameMs");
  EXPECT_EQ(setting.type, SettingType::kInt);
  EXPECT_EQ(setting.defaultValue, ConfigData(20));
  EXPECT_EQ(setting.minimum, ConfigData(10));
  EXPECT_EQ(setting.maximum, ConfigData(60));
  EXPECT_EQ(setting.values, (Expected{"10", "20", "60"}));
  EXPECT_EQ(setting.unit, "ms");
  EXPECT_EQ(setting.description, "Length of a frame");
  EXPECT_EQ(setting.since, "1.1");
  ASSERT_TRUE(setting.deprecated.has_value());
  EXPECT_EQ(setting.deprecated->since, "1.2");
  EXPECT_EQ(setting.deprecated->replacedBy, "Feature/AudioFrameLengthMs");
  EXPECT_EQ(setting.nameSpace, "media::audio");
  EXPECT_EQ(setting.identifier, "FrameLength");
}

TEST(SettingsDeclarations, LeaveOutWhatIsNotGiven) {
  const SettingDeclaration setting = Read(VideoA(R"("type":"string","default":"")"));
  EXPECT_EQ(setting.defaultValue, ConfigData(""));
  EXPECT_TRUE(setting.defaultValue.IsValid());
  EXPECT_FALSE(setting.minimum.IsValid());
  EXPECT_FALSE(setting.maximum.IsValid());
  EXPECT_FALSE(setting.deprecated.has_value());
  EXPECT_EQ(setting.values, Expected());
  EXPECT_EQ(setting.unit + setting.description + setting.since, "");
  EXPECT_EQ(setting.nameSpace, "settings");
  EXPECT_EQ(setting.identifier, "VideoA");
}

TEST(SettingsDeclarations, MayBeNone) {
  const SettingsDeclarations read = ReadDeclarations({R"({"settings":[]})"});
  EXPECT_TRUE(read.findings.empty());
  EXPECT_TRUE(read.settings.empty());
  EXPECT_TRUE(ReadDeclarations({}).findings.empty());
}

TEST(DeclarationFinding, IsNowhereUntilItIsMade) {
  const DeclarationFinding finding;
  for (const std::size_t number : {finding.document, finding.offset, finding.line, finding.column})
    EXPECT_EQ(number, 0U);
}

TEST(SettingsDeclarations, GiveDefaultsTheFormOfAStore) {
  const std::pair<std::string, std::string> rows[] = {
      {R"("type":"bool","default":true)", "1"},
      {R"("type":"bool","default":FALSE)", "0"},
      {R"("type":"int","default":-2147483648)", "-2147483648"},
      {R"("type":"int","default":-0)", "0"},
      {R"("type":"uint","default":4294967295)", "4294967295"},
      {R"("type":"int64","default":9223372036854775807)", "9223372036854775807"},
      {R"("type":"double","default":5.0e-1)", "0.5"},
      {R"("type":"double","default":30)", "30"},
      {R"("type":"string","default":"a\n\"b\"")", "a\n\"b\""},
      {R"("type":"enum","default":"vp8","values":["h264","vp8"])", "vp8"},
      {R"("type":"duration","default":40,"unit":"ms")", "40"},
  };
  for (const auto& [members, value] : rows) {
    EXPECT_EQ(Read(VideoA(members)).defaultValue.ToString(), value) << members;
  }
}

TEST(SettingsDeclarations, MayHaveARangeOfOneValue) {
  for (const char* type : {"int", "uint", "int64", "double"}) {
    const std::string members = R"("default":7,"minimum":7,"maximum":7)";
    EXPECT_EQ(Read(VideoA("\"type\":\"" + std::string(type) + "\"," + members)).defaultValue.ToString(), "7");
  }
}

TEST(SettingsDeclarations, NameEnumeratorsAndConstantsInCamelCase) {
  const SettingDeclaration setting = Read(One(
      R"("group":"Video","name":"2nd max_fps","type":"enum","default":"a","values":["a","low-latency","1080p"])"));
  EXPECT_EQ(setting.identifier, "Video2ndMaxFps");
  EXPECT_EQ(setting.enumerators, (Expected{"A", "LowLatency", "1080p"}));
  EXPECT_EQ(Read(One(R"("group":"Video","name":"az ~zA[09`9Z","type":"int","default":1)")).identifier,
            "VideoAzZA099Z");
}

TEST(SettingsDeclarations, AreOneListAcrossDocuments) {
  const std::string first = VideoA(R"("type":"int","default":1,"deprecated":{"replacedBy":"Audio/B"})");
  const std::string second = One(R"("group":"Audio","name":"B","type":"int","default":1)");
  EXPECT_EQ(LinesOf({first, second}), Expected());
  const SettingsDeclarations read = ReadDeclarations({first, second});
  ASSERT_EQ(read.settings.size(), 2U);
  EXPECT_EQ(read.settings[0].name, "A");
  EXPECT_EQ(read.settings[1].name, "B");
  EXPECT_EQ(LinesOf({second, first, second}),
            (Expected{"#2 2:25 settings[0].name: \"Audio/B\" is declared twice"}));
}

TEST(SettingsDeclarations, MayDeclareAToggleThatAComponentReads) {
  EXPECT_EQ(LinesOf({One(R"("group":"Feature","name":"EnableMusicMode","type":"bool","default":true)")}),
            Expected());
}

TEST(SettingsDeclarations, SayWhereADocumentIsNone) {
  const std::pair<std::string, std::string> rows[] = {
      {"", "1:1 : expected a value"},
      {"{\"settings\":\n[,]}", "2:2 : expected a value"},
      {"[]", "1:1 : expected an object with \"settings\", found an array"},
      {"{}", "1:1 : \"settings\" is missing"},
      {R"({"settings":{}})", "1:13 settings: expected an array of declarations, found an object"},
      {R"({"settings":[7]})",
       R"(1:14 settings[0]: expected an object with "group", "name", "type" and "default", found a number)"},
      {R"({"setings":[],"settings":[]})", "1:2 : unknown member \"setings\" (did you mean \"settings\"?)"},
      {R"({"settings":[],"settings":[]})", "1:16 : \"settings\" is repeated"},
      {R"({"settings":[],"$schema":7})", "1:26 $schema: expected a string, found a number"},
      {R"({"settings":[],"namespace":7})", "1:28 namespace: expected a string, found a number"},
      {R"({"settings":[],"namespace":"a:b"})",
       "1:28 namespace: \"a:b\" cannot name a C++ namespace of a component"},
  };
  for (const auto& [text, line] : rows) EXPECT_EQ(LinesOf({text}), Expected{line}) << text;
}

TEST(SettingsDeclarations, TakeOnlyNamespacesThatAComponentMayHave) {
  for (const char* name : {"a", "a::b2::c_d", "Media", "Az09", "zA::Za", "A_a"}) {
    EXPECT_EQ(LinesOf({std::string(R"({"settings":[],"namespace":")") + name + "\"}"}), Expected()) << name;
  }
  for (const char* name :
       {"",         "::a",    "a::",      "a::::b", "2a",     "_a",     "a__b",   "a-b",
        "std",      "std::a", "kalStore", "a::kal", "class",  "a::int", "xor_eq", "alignas",
        "\xc3\xa4", "assert", "errno",    "linux",  "stdout", "unix",   "EOF",    "a::NULL",
        "a@",       "a[",     "a`",       "a{",     "a/",     "a;b",    "@a",     "{a"}) {
    EXPECT_EQ(LinesOf({std::string(R"({"settings":[],"namespace":")") + name + "\"}"}).size(), 1U) << name;
  }
}

TEST(SettingsDeclarations, SayWhatIsWrongWithASetting) {
  const std::pair<std::string, std::string> rows[] = {
      // Members.
      {R"("name":"A","type":"int","default":1)", "2:1 settings[0]: \"group\" is missing"},
      {R"("group":"Video","type":"int","default":1)", "2:1 settings[0]: \"name\" is missing"},
      {R"("group":"Video","name":"A","default":1)", "2:1 settings[0]: \"type\" is missing"},
      {R"("group":"Video","name":"A","type":"int")", "2:1 settings[0]: \"default\" is missing"},
      {R"("group":"Vidoe","name":"A","type":"int","default":1)",
       "2:10 settings[0].group: unknown group \"Vidoe\" (did you mean \"Video\"?)"},
      {R"("group":"Video\u0000","name":"A","type":"int","default":1)",
       "2:10 settings[0].group: the string has a zero byte"},
      {R"("group":7,"name":"A","type":"int","default":1)",
       "2:10 settings[0].group: expected a string, found a number"},
      {R"("group":"Video","name":null,"type":"int","default":1)",
       "2:25 settings[0].name: expected a string, found null"},
      {R"("group":"Video","name":"","type":"int","default":1)", "2:25 settings[0].name: the name is empty"},
      {R"("group":"Video","name":"A\u0000","type":"int","default":1)",
       "2:25 settings[0].name: the string has a zero byte"},
      {R"("group":"Video","name":"A","type":"flag","default":1)",
       "2:36 settings[0].type: unknown type \"flag\": expected bool, int, uint, int64, double, string, enum "
       "or "
       "duration"},
      {R"("group":"Video","name":"A","type":"boolean","default":1)",
       "2:36 settings[0].type: unknown type \"boolean\": expected bool, int, uint, int64, double, string, "
       "enum or "
       "duration"},
      {R"("group":"Video","name":"A","type":"itn","default":1)",
       "2:36 settings[0].type: unknown type \"itn\" (did you mean \"int\"?): expected bool, int, uint, "
       "int64, double, "
       "string, enum or duration"},
      {R"("group":"Video","name":"A","type":"int","default":1,"Minimum":0)",
       "2:54 settings[0]: unknown member \"Minimum\" (did you mean \"minimum\"?)"},
      {R"("group":"Video","name":"A","type":"int","default":1,"minimuM":0)",
       "2:54 settings[0]: unknown member \"minimuM\" (did you mean \"minimum\"?)"},
      {R"("group":"Video","name":"A","type":"int","default":1,"default":2)",
       "2:54 settings[0]: \"default\" is repeated"},
      {R"("group":"Video","name":"A","type":"int","default":1,"description":["x"])",
       "2:68 settings[0].description: expected a string, found an array"},
      {R"("group":"Video","name":"A","type":"int","default":1,"since":1.2)",
       "2:62 settings[0].since: expected a string, found a number"},
      {R"("group":"Video","name":"A","type":"int","default":1,"unit":true)",
       "2:61 settings[0].unit: expected a string, found true or false"},
  };
  for (const auto& [members, line] : rows) EXPECT_EQ(LinesOf({One(members)}), Expected{line}) << members;
}

TEST(SettingsDeclarations, SayWhatIsWrongWithAValue) {
  const std::pair<std::string, std::string> rows[] = {
      {R"("type":"bool","default":1)", "default: expected true or false, found a number"},
      {R"("type":"bool","default":"true")", "default: expected true or false, found a string"},
      {R"("type":"int","default":"1")",
       "default: expected a whole number from -2147483648 to 2147483647, found a string"},
      {R"("type":"int","default":1.0)", "default: expected a whole number from -2147483648 to 2147483647"},
      {R"("type":"int","default":2147483648)",
       "default: expected a whole number from -2147483648 to 2147483647"},
      {R"("type":"uint","default":-1)", "default: expected a whole number from 0 to 4294967295"},
      {R"("type":"int64","default":9223372036854775808)",
       "default: expected a whole number from -9223372036854775808 to 9223372036854775807"},
      {R"("type":"double","default":1e999)", "default: expected a number within the range of a double"},
      {R"("type":"double","default":null)",
       "default: expected a number within the range of a double, found null"},
      {R"("type":"string","default":7)", "default: expected a string, found a number"},
      {R"("type":"string","default":"a\u0000b")", "default: the string has a zero byte"},
      {R"("type":"string","default":"c","values":["a","b"])", "default: \"c\" is not among the values"},
      {R"("type":"int","default":0,"minimum":1)", "default: 0 is out of range: 1 or more"},
      {R"("type":"int","default":2,"maximum":1)", "default: 2 is out of range: 1 or less"},
      {R"("type":"double","default":2,"minimum":0,"maximum":1)", "default: 2 is out of range: from 0 to 1"},
      {R"("type":"int","default":3,"values":[1,2])", "default: \"3\" is not among the values"},
      {R"("type":"int","default":1,"minimum":2,"maximum":1)",
       "minimum: the minimum 2 is above the maximum 1"},
      {R"("type":"double","default":1,"minimum":0.2,"maximum":0.1)",
       "minimum: the minimum 0.2 is above the maximum 0.1"},
      {R"("type":"int","default":1,"minimum":"0")",
       "minimum: expected a whole number from -2147483648 to 2147483647, found a string"},
      {R"("type":"bool","default":true,"minimum":0)", "minimum: the type bool has no range"},
      {R"("type":"string","default":"","maximum":0)", "maximum: the type string has no range"},
      {R"("type":"enum","default":"a","values":["a"],"maximum":0)", "maximum: the type enum has no range"},
      {R"("type":"bool","default":true,"values":[true])",
       "values: the type bool has no other values than true and false"},
      {R"("type":"int","default":1,"values":1)", "values: expected an array of one value or more"},
      {R"("type":"int","default":1,"values":[])", "values: expected an array of one value or more"},
      {R"("type":"int","default":1,"values":[1,1])", "values[1]: the value is repeated"},
      {R"("type":"double","default":1,"values":[1,1.0])", "values[1]: the value is repeated"},
      {R"("type":"int","default":1,"maximum":2,"values":[1,3])", "values[1]: 3 is out of range: 2 or less"},
      {R"("type":"string","default":"a","values":["a",7])", "values[1]: expected a string, found a number"},
      {R"("type":"enum","default":"a")", ": \"values\" is missing"},
      {R"("type":"enum","default":"b","values":["a"])", "default: \"b\" is not among the values"},
      {R"("type":"enum","default":"a","values":["a","a"])", "values[1]: the value is repeated"},
      {R"("type":"enum","default":"a","values":["a","A"])",
       "values[1]: another value gives its C++ enumerator the same name, kA"},
      {R"("type":"enum","default":"a","values":["a","+"])",
       "values[1]: \"+\" gives no C++ enumerator a name"},
      {R"("type":"enum","default":"a","values":["a",""])", "values[1]: \"\" gives no C++ enumerator a name"},
      {R"("type":"duration","default":1)", ": \"unit\" is missing"},
      {R"("type":"duration","default":1,"unit":"sec")",
       "unit: unknown unit \"sec\" of a duration: expected ns, us, ms, s, min or h"},
      {R"("type":"duration","default":1.5,"unit":"s")",
       "default: expected a whole number from -9223372036854775808 to 9223372036854775807"},
      {R"("type":"int","default":1,"deprecated":true)",
       "deprecated: expected an object with \"since\" and \"replacedBy\", found true or false"},
      {R"("type":"int","default":1,"deprecated":{"replacedby":"x"})",
       "deprecated: unknown member \"replacedby\" (did you mean \"replacedBy\"?)"},
      {R"("type":"int","default":1,"deprecated":{"since":2})",
       "deprecated.since: expected a string, found a number"},
      {R"("type":"int","default":1,"deprecated":{"replacedBy":"Video/B"})",
       "deprecated.replacedBy: no setting \"Video/B\" is declared (did you mean \"Video/A\"?)"},
      {R"("type":"int","default":1,"deprecated":{"replacedBy":"Video/A"})",
       "deprecated.replacedBy: \"Video/A\" is deprecated, too"},
      {R"("type":"int","default":1,"identifier":"max")",
       "identifier: \"max\" is no C++ identifier that begins with a capital letter"},
      {R"("type":"int","default":1,"identifier":"Max-Fps")",
       "identifier: \"Max-Fps\" is no C++ identifier that begins with a capital letter"},
      {R"("type":"enum","values":["a"],"default":"a","identifier":"EOF")",
       "identifier: \"EOF\" may be a macro: the name of an enum has a lower-case letter"},
  };
  for (const auto& [members, line] : rows) {
    const std::vector<std::string> lines = LinesOf({VideoA(members)});
    ASSERT_EQ(lines.size(), 1U) << members << '\n' << (lines.empty() ? "" : lines[1]);
    const std::size_t path = lines[0].find("settings[0]") + std::string("settings[0]").size();
    EXPECT_EQ(lines[0].substr(lines[0][path] == '.' ? path + 1 : path), line) << members;
  }
}

TEST(SettingsDeclarations, LackTheirMembersInTheOrderOfTheGuide) {
  EXPECT_EQ(LinesOf({One("")}),
            (Expected{"2:1 settings[0]: \"group\" is missing", "2:1 settings[0]: \"name\" is missing",
                      "2:1 settings[0]: \"type\" is missing"}));
}

TEST(SettingsDeclarations, RefuseNamesThatGiveNoIdentifierOrOneTwice) {
  const std::string rest = R"(,"type":"int","default":1)";
  EXPECT_EQ(
      LinesOf({One(R"("group":"Video","name":"+-")" + rest)}),
      (Expected{
          "2:25 settings[0].name: \"+-\" gives no C++ constant a name: give it one as \"identifier\""}));
  for (const char* name : {"\xc3\xa4", "Gr\xc3\xb6sse", "Gr\\tsse"}) {
    EXPECT_EQ(LinesOf({One("\"group\":\"Video\",\"name\":\"" + std::string(name) + "\"" + rest)}).size(), 1U);
  }
  EXPECT_EQ(LinesOf({One(R"("group":"Video","name":"+-","identifier":"PlusMinus")" + rest)}), Expected());
  EXPECT_EQ(LinesOf({One(R"("group":"Video","name":"+-","identifier":"EOF")" + rest)}), Expected());

  const std::string list = "{\"settings\":[\n{" + (R"("group":"Video","name":"SlideGain")" + rest) + "},\n{" +
                           (R"("group":"VideoSlide","name":"Gain")" + rest) + "}]}";
  EXPECT_EQ(LinesOf({list}),
            (Expected{"3:30 settings[1].name: \"VideoSlide/Gain\" is called kVideoSlideGain in C++, as is "
                      "\"Video/SlideGain\": give one another \"identifier\""}));
  EXPECT_EQ(
      LinesOf({One(R"("group":"Video","name":"Slide_Gain")" + rest),
               R"({"namespace":"other","settings":[{"group":"VideoSlide","name":"Gain")" + rest + "}]}"}),
      Expected());
}

TEST(SettingsDeclarations, RefuseTheNameOfANamespaceForAnEnumOrAKey) {
  const std::string codec =
      R"({"namespace":"media","settings":[{"group":"Video","name":"Codec","type":"enum",)"
      R"("default":"vp8","values":["vp8"]}]})";
  const auto in = [](const std::string& nameSpace) {
    return "{\"namespace\":\"" + nameSpace +
           R"(","settings":[{"group":"Video","name":"Fps","type":"int","default":1}]})";
  };
  const std::string place = "1:58 settings[0].name: \"Video/Codec\" is called ";
  const std::string reason = " in C++, as is a namespace: give it another \"identifier\"";
  EXPECT_EQ(LinesOf({codec, in("media::VideoCodec")}), Expected({place + "VideoCodec" + reason}));
  EXPECT_EQ(LinesOf({codec, in("media::VideoCodec::more")}), Expected({place + "VideoCodec" + reason}));
  EXPECT_EQ(LinesOf({codec, in("media::kVideoCodec")}), Expected({place + "kVideoCodec" + reason}));
  EXPECT_EQ(LinesOf({codec, in("media::video")}), Expected());
  EXPECT_EQ(LinesOf({codec, in("VideoCodec")}), Expected());
}

TEST(SettingsDeclarations, ReportEveryMistakeInTheOrderOfTheText) {
  EXPECT_EQ(
      LinesOf({R"({"settings":[
{"name":"A","type":"int","default":"x","extra":1},
{"group":"Video","name":"B","type":"int","default":1},
{"group":"Video","name":"B","type":"int","default":1}]})"}),
      (Expected{"2:1 settings[0]: \"group\" is missing",
                "2:36 settings[0].default: expected a whole number from -2147483648 to 2147483647, found a "
                "string",
                "2:40 settings[0]: unknown member \"extra\"",
                "4:25 settings[2].name: \"Video/B\" is declared twice"}));
}

TEST(SettingsDeclarations, DoNotMissAReplacementThatIsWrongItself) {
  EXPECT_EQ(LinesOf({R"({"settings":[
{"group":"Video","name":"A","type":"int","default":1,"deprecated":{"replacedBy":"Video/B"}},
{"group":"Video","name":"B","type":"int","default":"1"}]})"})
                .size(),
            1U);
}

TEST(SettingsDeclarations, HaveNoSettingsWhereThereAreFindings) {
  EXPECT_TRUE(ReadDeclarations({VideoA(R"("type":"int","default":1)"), "7"}).settings.empty());
}

TEST(FeatureToggleDeclarations, AreTheCatalogueWithoutItsEndMark) {
  const std::vector<SettingDeclaration> toggles = FeatureToggleDeclarations();
  ASSERT_EQ(toggles.size(), static_cast<std::size_t>(KAL_FT_Unknow));
  std::set<std::string> identifiers;
  for (const SettingDeclaration& toggle : toggles) {
    EXPECT_EQ(toggle.group, KAL_CONFIG_GROUP_FEATURE);
    EXPECT_EQ(toggle.nameSpace, "settings");
    EXPECT_FALSE(toggle.defaultValue.IsValid());
    EXPECT_FALSE(toggle.description.empty());
    EXPECT_TRUE(identifiers.insert(toggle.identifier).second) << toggle.identifier;
    EXPECT_TRUE(toggle.identifier.starts_with("Feature")) << toggle.identifier;
    EXPECT_EQ(toggle.minimum.IsValid(), toggle.maximum.IsValid());
    EXPECT_EQ(toggle.description.find(" 0 to "), std::string::npos) << "a range in words";
  }
  EXPECT_EQ(toggles[5].name, "EnableMusicDetection");
  EXPECT_EQ(toggles[KAL_FT_VideoStrategyLadder].type, SettingType::kString);
  EXPECT_EQ(toggles[KAL_FT_AutoFramingSpeed].type, SettingType::kDouble);
  EXPECT_EQ(toggles[KAL_FT_AudioDscpValue].maximum, ConfigData(63));
}
