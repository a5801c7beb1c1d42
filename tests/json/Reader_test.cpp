// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tessel/json.h"

namespace {

using json::Deserialize;
using json::Value;

std::string ReadString(const std::string& text) {
  const Value value = Deserialize(text);
  return value.GetType() == json::StringVal ? value.ToString() : "(malformed)";
}

TEST(ParseError, IsNoneUntilThereIsOne) {
  const json::ParseError error;
  for (const std::size_t number : {error.offset, error.line, error.column}) EXPECT_EQ(number, 0u);
  EXPECT_EQ(error.reason, nullptr);
}

TEST(Reader, ReadsNestedObjectsAndArrays) {
  const Value value = Deserialize(R"({"a":[1,{"b":"c"},[]],"d":{}})");
  ASSERT_EQ(value.GetType(), json::ObjectVal);
  EXPECT_EQ(value["a"].size(), 3u);
  EXPECT_EQ(value["a"][1]["b"].ToString(), "c");
  EXPECT_EQ(value["a"][2].GetType(), json::ArrayVal);
  EXPECT_EQ(value["d"].GetType(), json::ObjectVal);
  EXPECT_EQ(value["d"].size(), 0u);
}

TEST(Reader, SkipsWhiteSpaceBetweenTokens) {
  const Value value = Deserialize(" \t\n\v\f\r{ \n\"a\" \t: [ 1 ,\r2 ] , \"b\":null } \v");
  EXPECT_EQ(json::Serialize(value), R"({"a":[1,2],"b":null})");
  EXPECT_EQ(json::Serialize(Deserialize(" [ ] ")), "[]");
  EXPECT_EQ(json::Serialize(Deserialize(" { } ")), "{}");
}

TEST(Reader, WhiteSpaceIsThatOfTheCLocale) {
  for (int c = -128; c <= 255; ++c) {
    EXPECT_EQ(json::json_isspace(c), c == ' ' || (c >= 9 && c <= 13)) << c;
  }
}

TEST(Reader, AcceptsScalarsAtTheTopLevel) {
  EXPECT_EQ(Deserialize(" 5 ").ToInt(), 5);
  EXPECT_EQ(Deserialize("\"text\"").ToString(), "text");
  EXPECT_TRUE(Deserialize("true").ToBool());
}

TEST(Reader, RecognisesLiteralsInAnyLetterCase) {
  for (const char* text : {"true", "True", "TRUE", "tRuE"}) {
    EXPECT_EQ(Deserialize(text).GetType(), json::BoolVal) << text;
    EXPECT_TRUE(Deserialize(text).ToBool()) << text;
  }
  for (const char* text : {"false", "False", "FALSE"}) {
    EXPECT_EQ(Deserialize(text).GetType(), json::BoolVal) << text;
    EXPECT_FALSE(Deserialize(text).ToBool()) << text;
  }
  for (const char* text : {"null", "Null", "NULL"}) {
    json::ParseError error;
    EXPECT_EQ(Deserialize(text, error).GetType(), json::NullVal) << text;
    EXPECT_EQ(error.reason, nullptr) << text;
  }
  EXPECT_EQ(json::Serialize(Deserialize("[NULL,True,FALSE]")), "[null,true,false]");
}

TEST(Reader, UnderstandsTheEscapes) {
  EXPECT_EQ(ReadString(R"("\"\\\/\b\f\n\r\t")"), "\"\\/\b\f\n\r\t");
}

TEST(Reader, AnEscapedBackslashDoesNotEscapeTheQuote) {
  EXPECT_EQ(ReadString(R"("a\\")"), "a\\");
  EXPECT_EQ(ReadString(R"("a\\\"b")"), "a\\\"b");
  EXPECT_EQ(json::Serialize(Deserialize(R"(["a\\","b"])")), R"(["a\\","b"])");
}

TEST(Reader, AUnicodeEscapeGivesItsLowByte) {
  EXPECT_EQ(ReadString(R"("\u0041")"), "A");
  EXPECT_EQ(ReadString(R"("\u20aC")"), "\xac");
  EXPECT_EQ(ReadString(R"("\uFFfF\u00e9x")"), "\xff\xe9x");
  EXPECT_EQ(ReadString(R"("\u0000")"), std::string(1, '\0'));
  EXPECT_EQ(ReadString(R"("\u00410")"), "A0");
}

TEST(Reader, RefusesOtherEscapes) {
  for (const char* text : {R"("\x41")", R"("\a")", R"("\0")", R"("\'")", R"("\U0041")", R"("\ ")",
                           R"("\u004")", R"("\u00g0")", R"("\u+041")", R"("\u 041")", R"("\u0x41")"}) {
    EXPECT_EQ(ReadString(text), "(malformed)") << text;
  }
}

TEST(Reader, StringsMayHoldAnyRawByte) {
  std::string bytes;
  for (int byte = 0; byte <= 0xff; ++byte) {
    if (byte != '"' && byte != '\\') bytes += static_cast<char>(byte);
  }
  EXPECT_EQ(ReadString('"' + bytes + '"'), bytes);
  const Value object = Deserialize("{\"" + bytes + "\":1}");
  EXPECT_TRUE(object.HasKey(bytes));
}

TEST(Reader, KeysUnderstandTheEscapesToo) {
  EXPECT_TRUE(Deserialize(R"({"\u0041\n":1})").HasKey("A\n"));
  EXPECT_TRUE(Deserialize(R"({"":1})").HasKey(""));
}

TEST(Reader, TheLastOfTwoEqualKeysCounts) {
  EXPECT_EQ(json::Serialize(Deserialize(R"({"a":{"x":1},"b":2,"a":[3]})")), R"({"a":[3],"b":2})");
  EXPECT_EQ(json::Serialize(Deserialize(R"({"a":1,"\u0061":2})")), R"({"a":2})");
  EXPECT_EQ(json::Serialize(Deserialize(R"({"a":{"x":1},"a":{"y":2}})")), R"({"a":{"y":2}})");
}

TEST(Reader, RefusesMalformedTexts) {
  const char* texts[] = {"", " ", "{", "[", "}", "]", "[1", "{\"a\":1", "[}", "{]", "[1}", "{\"a\":1]",
                         // commas and colons
                         "[1,]", "[,1]", "[,]", "[1,,2]", "[1 2]", "{\"a\":1,}", "{,}", "{\"a\":1 \"b\":2}",
                         "{\"a\"}", "{\"a\" 1}", "{\"a\":}", "{\"a\"::1}", "[1:2]", "{\"a\",1}",
                         // keys
                         "{1:2}", "{a:1}", "{'a':1}", "{null:1}",
                         // comments and anything after the document
                         "// x\n[]", "[/* x */]", "[] []", "[]x", "{}}", "[]]", "1 2", "null,",
                         // literals and strings
                         "nul", "nulll", "tru", "falsy", "yes", "undefined", "NaN", "Infinity", "\"", "\"a",
                         "\"a\\\"", "'a'", "\"a\"\"b\""};
  for (const char* text : texts) {
    json::ParseError error;
    EXPECT_EQ(Deserialize(text, error).GetType(), json::NullVal) << text;
    EXPECT_NE(error.reason, nullptr) << text;
    EXPECT_EQ(Deserialize(text).GetType(), json::NullVal) << text;
  }
}

TEST(Reader, AByteOfZeroIsNoEndAndNoWhiteSpace) {
  EXPECT_EQ(Deserialize(std::string("[1]\0", 4)).GetType(), json::NullVal);
  EXPECT_EQ(Deserialize(std::string("[1\0]", 4)).GetType(), json::NullVal);
}

TEST(Reader, NothingOfAMalformedTextIsReturned) {
  EXPECT_EQ(json::SerializeValue(Deserialize(R"({"a":1,"b":[1,2)")), "null");
}

std::string Nested(std::size_t levels, const std::string& opening, const std::string& closing) {
  std::string text;
  for (std::size_t i = 0; i < levels; ++i) text += opening;
  text += "1";
  for (std::size_t i = 0; i < levels; ++i) text += closing;
  return text;
}

TEST(Reader, NestingIsBoundedAt1000Levels) {
  EXPECT_EQ(Deserialize(Nested(1000, "[", "]")).GetType(), json::ArrayVal);
  EXPECT_EQ(Deserialize(Nested(1001, "[", "]")).GetType(), json::NullVal);
  EXPECT_EQ(Deserialize(Nested(1000, "{\"a\":", "}")).GetType(), json::ObjectVal);
  EXPECT_EQ(Deserialize(Nested(1001, "{\"a\":", "}")).GetType(), json::NullVal);
  EXPECT_EQ(Deserialize(Nested(500, "[{\"a\":", "}]")).GetType(), json::ArrayVal);
}

TEST(Reader, TheDeepestDocumentCanBeUsed) {
  const std::string text = Nested(1000, "[", "]");
  const Value value = Deserialize(text);
  EXPECT_EQ(json::Serialize(value), text);
  const Value copy = value;
  EXPECT_EQ(copy, value);
}

TEST(Reader, WidthIsNotBounded) {
  std::string text = "[[]";
  for (int i = 0; i < 5000; ++i) text += ",[{}]";
  EXPECT_EQ(Deserialize(text + "]").size(), 5001u);
}

TEST(Reader, RefusesAHugeNestingAtOnce) {
  json::ParseError error;
  EXPECT_EQ(Deserialize(std::string(100'000'000, '['), error).GetType(), json::NullVal);
  EXPECT_EQ(error.offset, 1000u);
}

}  // namespace
