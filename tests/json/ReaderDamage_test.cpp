// SPDX-License-Identifier: Apache-2.0
// A damaged document is read or refused, but nothing else happens: no crash, no container of half its
// members.

#include <gtest/gtest.h>

#include "tessel/json.h"

namespace {

const std::string kDocument =
    R"( {"Audio" : [{"key":"Bit\u0052ate","value":"32\\000\n"}, {"key":"b","value":-12.5e+3}],)"
    R"( "Video":[true,FALSE,null,3000000000,[[]],{}], "":{"a":{"b":[0]}}} )";

// What was read writes a text that reads back to the same text.
void ExpectSettled(const std::string& text) {
  json::ParseError error;
  const json::Value value = json::Deserialize(text, error);
  if (error.reason) {
    EXPECT_EQ(value.GetType(), json::NullVal) << text;
    EXPECT_LE(error.offset, text.size()) << text;
    return;
  }
  const std::string written = json::SerializeValue(value);
  EXPECT_EQ(json::SerializeValue(json::Deserialize(written)), written) << text;
}

TEST(ReaderDamage, TheDocumentItselfIsWellFormed) {
  const json::Value value = json::Deserialize(kDocument);
  ASSERT_EQ(value.GetType(), json::ObjectVal);
  EXPECT_EQ(value["Audio"][0]["key"].ToString(), "BitRate");
}

TEST(ReaderDamage, EveryTruncationIsRefused) {
  for (std::size_t size = 0; size + 1 < kDocument.size(); ++size) {
    json::ParseError error;
    EXPECT_EQ(json::Deserialize(kDocument.substr(0, size), error).GetType(), json::NullVal) << size;
    EXPECT_EQ(error.offset, size);
  }
}

TEST(ReaderDamage, EveryChangedByteIsReadOrRefused) {
  for (std::size_t at = 0; at < kDocument.size(); ++at) {
    for (int byte = 0; byte <= 0xff; ++byte) {
      std::string damaged = kDocument;
      damaged[at] = static_cast<char>(byte);
      ExpectSettled(damaged);
    }
  }
}

TEST(ReaderDamage, EveryByteLeftOutOrDoubledIsReadOrRefused) {
  for (std::size_t at = 0; at < kDocument.size(); ++at) {
    std::string shorter = kDocument;
    shorter.erase(at, 1);
    ExpectSettled(shorter);
    std::string longer = kDocument;
    longer.insert(at, 1, kDocument[at]);
    ExpectSettled(longer);
  }
}

TEST(ReaderDamage, EveryShortTextOfTokensIsReadOrRefused) {
  const std::vector<std::string> tokens = {"{",     "}", "[",    "]", ",",  ":",
                                           "\"a\"", "1", "null", " ", "\\", "-"};
  std::vector<std::string> texts = {""};
  for (int length = 0; length < 4; ++length) {
    std::vector<std::string> longer;
    for (const std::string& text : texts) {
      for (const std::string& token : tokens) longer.push_back(text + token);
    }
    for (const std::string& text : longer) ExpectSettled(text);
    texts = std::move(longer);
  }
}

}  // namespace
