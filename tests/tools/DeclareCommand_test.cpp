// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "Program.h"
#include "tessel/json.h"

namespace {

constexpr const char* kVideo = R"({"namespace":"video","settings":[
{"group":"Video","name":"MaxFps","type":"int","default":30,"minimum":1,"maximum":120,"unit":"frames/s",
 "description":"Highest frame rate","since":"1.0"},
{"group":"Video","name":"Codec","type":"enum","default":"h264","values":["h264","low-latency"],
 "deprecated":{"since":"2.0","replacedBy":"Audio/Codec"}}]})";
constexpr const char* kAudio =
    R"({"settings":[{"group":"Audio","name":"Codec","type":"string","default":"a\"b"}]})";

}  // namespace

TEST(DeclareCommand, WrapsDescriptionsAt100Characters) {
  const auto header = [](std::size_t length, std::size_t before = 49) {
    return Program()
        .File("a.json",
              R"({"settings":[{"group":"Audio","name":"A","type":"int","default":1,"description":")" +
                  std::string(before, 'a') + ' ' + std::string(length, 'b') + "\"}]}")
        .Run({"declare", "a.json", "--header"})
        .out;
  };
  EXPECT_NE(header(50).find("// " + std::string(49, 'a') + ' ' + std::string(50, 'b') + "\n//\n"),
            std::string::npos);
  EXPECT_NE(header(40, 60).find("// " + std::string(60, 'a') + "\n// " + std::string(40, 'b') + "\n//\n"),
            std::string::npos);
  EXPECT_NE(header(51).find("// " + std::string(49, 'a') + "\n// " + std::string(51, 'b') + "\n//\n"),
            std::string::npos);
}

TEST(DeclareCommand, WritesAHeaderOfKeys) {
  const Finished run = Program()
                           .File("video.json", kVideo)
                           .File("audio.json", kAudio)
                           .Run({"declare", "video.json", "audio.json", "--header"});
  EXPECT_EQ(run.out, R"(// Made by tessel declare from video.json, audio.json. Changes to this file are lost.
#pragma once

#include <tessel/ConfigEnum.h>
#include <tessel/ConfigKey.h>
#include <tessel/KalConfigGroup.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>

namespace video {

// The values of kVideoCodec.
enum class VideoCodec {
  kH264,
  kLowLatency,
};

}  // namespace video

template <>
struct kalStore::ConfigEnum<::video::VideoCodec> {
  static constexpr ConfigEnumName<::video::VideoCodec> kNames[] = {
      {::video::VideoCodec::kH264, "h264"},
      {::video::VideoCodec::kLowLatency, "low-latency"},
  };
};

namespace video {

// Highest frame rate
//
// Default: 30 frames/s; 1 to 120; since 1.0.
inline constexpr kalStore::ConfigKey<int> kVideoMaxFps{
    kalStore::KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};

// Default: h264; one of h264, low-latency.
[[deprecated("deprecated since 2.0: use Audio/Codec")]]
inline constexpr kalStore::ConfigKey<VideoCodec> kVideoCodec{
    kalStore::KAL_CONFIG_GROUP_VIDEO, "Codec", VideoCodec::kH264};

}  // namespace video

namespace settings {

// Default: a"b.
inline constexpr kalStore::ConfigKey<std::string> kAudioCodec{
    kalStore::KAL_CONFIG_GROUP_AUDIO, "Codec", "a\"b"};

}  // namespace settings
)");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(DeclareCommand, WritesOddTextsAndNumbersAsAHeaderNeedsThem) {
  const std::pair<const char*, const char*> rows[] = {
      {R"("type":"string","default":"a\"\\?~ \n\u007f1\u00e4")", R"("a\"\\\?~ \012\1771\344"})"},
      {R"("type":"string","default":"a\nb")", "\n// Default: a b.\n"},
      {R"("type":"bool","default":true,"description":"one\n\n two \nx\\\\")",
       "\n// one\n//\n// two\n// x&#92;\n//\n// Default: true.\n"},
      {R"("type":"bool","default":false,"description":"y ??/")",
       "\n// y \?\?&#47;\n//\n// Default: false.\n"},
      {R"("type":"int","default":0,"deprecated":{"since":"2 \" ? \\"})",
       "[[deprecated(\"deprecated since 2 ' ' //\")]]\n"},
      {R"("type":"int","default":0,"minimum":-5)", "\n// Default: 0; -5 or more.\n"},
      {R"("type":"int","default":0,"maximum":5)", "\n// Default: 0; 5 or less.\n"},
      {R"("type":"double","default":3)", ", 3.0}"},
      {R"("type":"double","default":0.5)", ", 0.5}"},
      {R"("type":"double","default":1e300)", ", 1e+300}"},
      {R"("type":"uint","default":7)",
       "<unsigned int> kAudioA{\n    kalStore::KAL_CONFIG_GROUP_AUDIO, \"A\", 7U}"},
      {R"("type":"int64","default":-9223372036854775808)", ", std::numeric_limits<std::int64_t>::min()}"},
      {R"("type":"duration","unit":"ns","default":1)", ", std::chrono::nanoseconds(1)}"},
      {R"("type":"duration","unit":"us","default":1)", ", std::chrono::microseconds(1)}"},
      {R"("type":"duration","unit":"ms","default":1)", ", std::chrono::milliseconds(1)}"},
      {R"("type":"duration","unit":"s","default":1)", ", std::chrono::seconds(1)}"},
      {R"("type":"duration","unit":"min","default":1)", ", std::chrono::minutes(1)}"},
      {R"("type":"duration","unit":"h","default":1)", ", std::chrono::hours(1)}"},
  };
  for (const auto& [members, text] : rows) {
    const Finished run =
        Program()
            .Input(R"({"settings":[{"group":"Audio","name":"A",)" + std::string(members) + "}]}")
            .Run({"declare", "-", "--header"});
    EXPECT_NE(run.out.find(text), std::string::npos) << text << run.out << run.err;
  }
}

TEST(DeclareCommand, WritesATableForEachGroup) {
  const Finished run = Program()
                           .File("video.json", kVideo)
                           .File("audio.json", kAudio)
                           .Input(R"({"settings":[{"group":"Common","name":"A","type":"int","default":0},)"
                                  R"({"group":"UnitTest","name":"B","type":"int","default":1}]})")
                           .Run({"declare", "video.json", "audio.json", "-", "--markdown"});
  EXPECT_EQ(run.out, R"(# Settings

## Common

| name | type | default | unit | allowed | meaning |
|---|---|---|---|---|---|
| A | int | 0 | | | |

## Audio

| name | type | default | unit | allowed | meaning |
|---|---|---|---|---|---|
| Codec | string | a"b | | | |

## Video

| name | type | default | unit | allowed | meaning |
|---|---|---|---|---|---|
| MaxFps | int | 30 | frames/s | 1 to 120 | Highest frame rate<br>since 1.0 |
| Codec | enum | h264 | | h264, low-latency | deprecated since 2.0: use Audio/Codec |

## UnitTest

| name | type | default | unit | allowed | meaning |
|---|---|---|---|---|---|
| B | int | 1 | | | |
)");
  EXPECT_EQ(run.status, 0);
}

TEST(DeclareCommand, EscapesWhatIsMarkupInATable) {
  const Finished run =
      Program()
          .Input(R"({"settings":[{"group":"Audio","name":"a|b_c","type":"bool","default":false,
"description":"`x` | <b>\n*y* \\ [z](u)\u0007 &amp; ~"}]})")
          .Run({"declare", "-", "--markdown"});
  EXPECT_NE(run.out.find("| a\\|b\\_c | bool | false | | | "
                         "\\`x\\` \\| \\<b\\><br>\\*y\\* \\\\ \\[z\\](u)\\u0007 \\&amp; \\~ |\n"),
            std::string::npos)
      << run.out;
}

TEST(DeclareCommand, WritesASchemaThatIsJson) {
  const Finished run = Program()
                           .File("video.json", kVideo)
                           .File("audio.json", kAudio)
                           .Run({"declare", "--json-schema", "video.json", "audio.json"});
  json::ParseError error;
  const json::Value schema = json::Deserialize(run.out, error);
  ASSERT_EQ(error.reason, nullptr) << run.out;
  EXPECT_TRUE(run.out.starts_with(R"({
  "$schema": "https://json-schema.org/draft/2020-12/schema",
  "additionalProperties": false,
  "properties": {
    "Application": {
      "items": {
        "properties": {
          "key": {
            "minLength": 1,
            "type": "string"
          },
          "value": {
            "type": "string"
          }
        },
        "required": [
          "key",
          "value"
        ],
        "type": "object"
      },
      "type": "array"
    },
    "Audio": {
)")) << run.out;
  EXPECT_NE(run.out.find("\"value\": {}\n"), std::string::npos);
  EXPECT_TRUE(run.out.ends_with("\n  },\n  \"title\": \"Settings document\",\n  \"type\": \"object\"\n}\n"));
  EXPECT_EQ(schema["properties"].ToObject().size(), 13U);
  EXPECT_EQ(
      json::Serialize(schema["properties"]["Video"]),
      R"({"items":{"allOf":[)"
      R"({"if":{"properties":{"key":{"const":"MaxFps"}},"required":["key"]},)"
      R"("then":{"properties":{"value":{"default":"30",)"
      R"("pattern":"^(0*[1-9]|0*[1-9][0-9]|0*1[0-1][0-9]|0*120)$"}}}},)"
      R"({"if":{"properties":{"key":{"const":"Codec"}},"required":["key"]},)"
      R"("then":{"properties":{"value":{"default":"h264","enum":["h264","low-latency"]}}}}],)"
      R"("properties":{"key":{"anyOf":[)"
      R"({"const":"MaxFps","description":"Highest frame rate\nRange: 1 to 120\nUnit: frames/s\nSince: 1.0"},)"
      R"({"const":"Codec","deprecated":true,"description":"deprecated since 2.0: use Audio/Codec"}]},)"
      R"("value":{"type":"string"}},"required":["key","value"],"type":"object"},"type":"array"})");
  EXPECT_EQ(json::Serialize(schema["properties"]["Common"]),
            R"({"items":{"properties":{"key":{"minLength":1,"type":"string"},"value":{"type":"string"}},)"
            R"("required":["key","value"],"type":"object"},"type":"array"})");
  EXPECT_EQ(run.status, 0);
}

TEST(DeclareCommand, WritesWhatAValueOfEachTypeMayBe) {
  const std::string number = "-?([0-9]+([.][0-9]*)?|[.][0-9]+)([eE][-+]?[0-9]+)?";
  const std::pair<const char*, std::string> rows[] = {
      {R"("type":"bool","default":true)",
       R"({"anyOf":[{"enum":["true","false"]},{"pattern":"^([Tt][Rr][Uu][Ee]|[Ff][Aa][Ll][Ss][Ee]|)" +
           number + R"()$"}],"default":"true"})"},
      {R"("type":"int","default":0,"minimum":0,"maximum":9)",
       R"({"default":"0","pattern":"^(-0*0|0*[0-9])$"})"},
      {R"("type":"uint","default":12,"values":[0,12])", R"({"default":"12","pattern":"^(0*0)$|^(0*12)$"})"},
      {R"("type":"int64","default":-1,"maximum":-1,"minimum":-3)",
       R"({"default":"-1","pattern":"^(-0*[1-3])$"})"},
      {R"("type":"double","default":0.5)", R"({"default":"0.5","pattern":"^)" + number + R"($"})"},
      {R"("type":"duration","unit":"ms","default":7,"minimum":7,"maximum":7)",
       R"({"default":"7","pattern":"^(0*7)$"})"},
      {R"("type":"string","default":"a")", R"({"default":"a"})"},
      {R"("type":"string","default":"a","values":["a","b"])", R"({"default":"a","enum":["a","b"]})"},
  };
  for (const auto& [declaration, expected] : rows) {
    const Finished run =
        Program()
            .Input(R"({"settings":[{"group":"Audio","name":"A",)" + std::string(declaration) + "}]}")
            .Run({"declare", "-", "--json-schema"});
    json::ParseError error;
    const json::Value schema = json::Deserialize(run.out, error);
    ASSERT_EQ(error.reason, nullptr) << run.out << run.err;
    EXPECT_EQ(
        json::Serialize(schema["properties"]["Audio"]["items"]["allOf"][0]["then"]["properties"]["value"]),
        expected);
  }
}

TEST(DeclareCommand, WritesNothingButHeadingsForAnEmptyList) {
  Program program;
  program.File("none.json", R"({"settings":[]})");
  EXPECT_EQ(program.Run({"declare", "none.json", "--markdown"}).out, "# Settings\n");
  const Finished header = program.Run({"declare", "none.json", "--header"});
  EXPECT_EQ(header.status, 0);
  EXPECT_EQ(header.out.find("namespace"), std::string::npos);
}

TEST(DeclareCommand, WritesToAFile) {
  Program program;
  program.File("video.json", kVideo)
      .File("audio.json", kAudio)
      .File("old.h", "old and longer than the new one");
  const std::string expected = program.Run({"declare", "video.json", "audio.json", "--header"}).out;
  for (const std::string name : {"old.h", "new.h"}) {
    const Finished run = program.Run({"declare", "video.json", "audio.json", "--header", "-o", name});
    EXPECT_EQ(run.out + run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(program.Contents(name), expected);
  }
}

TEST(DeclareCommand, ReportsEveryMistakeAndWritesNothing) {
  Program program;
  program
      .File("a.json",
            "{\"settings\":[{\"group\":\"Vidoe\",\n\"name\":\"A\",\"type\":\"int\",\"default\":\"x\"}]}")
      .File("b.json", "[\n}")
      .File("out.h", "as it was");
  const Finished run = program.Run({"declare", "a.json", "b.json", "--header", "-o", "out.h"});
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(
      run.err,
      "a.json:1:23: settings[0].group: unknown group \"Vidoe\" (did you mean \"Video\"?)\n"
      "a.json:2:35: settings[0].default: expected a whole number from -2147483648 to 2147483647, found a "
      "string\n"
      "b.json:2:1: expected a value\n");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(program.Contents("out.h"), "as it was");
}

TEST(DeclareCommand, ShowsNamesOfAnyBytesAsTheyCanBeShown) {
  const Finished run =
      Program().File("\x1b.json", "{\"\x1b[1m\":1}").Run({"declare", "\x1b.json", "--header"});
  EXPECT_EQ(run.err.find('\x1b'), std::string::npos);
  EXPECT_NE(run.err.find("\\u001b.json:1:2: unknown member \"\\u001b[1m\""), std::string::npos) << run.err;
}

TEST(DeclareCommand, RefusesAFileThatCannotBeUsed) {
  const std::pair<std::string, std::string> rows[] = {
      {"missing.json", "missing.json: cannot be read: No such file or directory\n"},
      {".", ".: cannot be read: Is a directory\n"},
      {"empty.json", "empty.json:1:1: the file is empty\n"},
      {"utf16.json", "utf16.json:1:1: is in UTF-16: save it as UTF-8\n"},
  };
  for (const auto& [file, message] : rows) {
    const Finished run = Program()
                             .File("empty.json", "")
                             .File("utf16.json", std::string("{\0}\0", 4))
                             .Run({"declare", file, "--header"});
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, message);
    EXPECT_EQ(run.status, 2);
  }
}

TEST(DeclareCommand, RefusesAnUnusableCommandLineInOneLine) {
  for (const auto& arguments : {std::vector<std::string>{"declare"},
                                {"declare", "a.json"},
                                {"declare", "--header"},
                                {"declare", "a.json", "--header", "--markdown"},
                                {"declare", "a.json", "--json-schema", "--header"},
                                {"declare", "a.json", "--json"},
                                {"declare", "-", "a.json", "-", "--header"},
                                {"declare", "-", "-", "--markdown"},
                                {"declare", "a.json", "--header", "-o", "-"},
                                {"declare", "a.json", "--header", "-o", ""},
                                {"declare", "a.json", "--header", "-o", "./a.json"},
                                {"declare", "a.json", "--header", "-o", "nowhere/a.h"}}) {
    Program program;
    program.File("a.json", R"({"settings":[]})");
    const Finished run = program.Run(arguments);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_EQ(run.status, 2) << run.err;
    EXPECT_EQ(program.Contents("a.json"), R"({"settings":[]})");
  }
}

TEST(DeclareCommand, FailsWhenStandardOutputIsFull) {
  Program program;
  program.File("a.json", kAudio);
  EXPECT_EQ(program.To(Program::Output::kFullDevice).Run({"declare", "a.json", "--header"}).status, 2);
}
