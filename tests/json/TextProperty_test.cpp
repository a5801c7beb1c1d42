// SPDX-License-Identifier: Apache-2.0
// What holds for every document: it is written so that it reads back to the same, and its text is settled
// after one reading.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstring>

#include "tessel/json.h"

namespace {

using json::Value;

rc::Gen<std::string> AnyBytes() {
  return rc::gen::container<std::string>(rc::gen::arbitrary<char>());
}

rc::Gen<double> AnyFinite() {
  return rc::gen::map(rc::gen::arbitrary<std::uint64_t>(), [](std::uint64_t bits) {
    double number;
    std::memcpy(&number, &bits, sizeof number);
    return std::isfinite(number) ? number : 0.5;
  });
}

Value AnyValue(int depth) {
  switch (*rc::gen::inRange(0, depth > 0 ? 10 : 8)) {
    case 0:
      return {};
    case 1:
      return *AnyBytes();
    case 2:
      return *rc::gen::arbitrary<int>();
    case 3:
      return *rc::gen::arbitrary<long>();
    case 4:
      return static_cast<float>(*rc::gen::arbitrary<int>()) / 64;
    case 5:
      return *AnyFinite();
    case 6:
      return *rc::gen::arbitrary<bool>();
    case 7:
      return *rc::gen::arbitrary<unsigned int>();
    case 8: {
      json::Object object;
      const int count = *rc::gen::inRange(0, 5);
      for (int i = 0; i < count; ++i) object.insert_or_assign(*AnyBytes(), AnyValue(depth - 1));
      return object;
    }
    default: {
      json::Array array;
      const int count = *rc::gen::inRange(0, 5);
      for (int i = 0; i < count; ++i) array.push_back(AnyValue(depth - 1));
      return array;
    }
  }
}

TEST(TextProperty, AnyStringReadsBackToTheSameBytes) {
  EXPECT_TRUE(rc::check("string", [] {
    const std::string text = *AnyBytes();
    RC_ASSERT(json::Deserialize(json::SerializeValue(text)).ToString() == text);
  }));
}

TEST(TextProperty, AnyKeyReadsBackToTheSameBytes) {
  EXPECT_TRUE(rc::check("key", [] {
    const std::string key = *AnyBytes();
    Value object = json::Object();
    object[key] = 1;
    const Value read = json::Deserialize(json::Serialize(object));
    RC_ASSERT(read.size() == 1u);
    RC_ASSERT(read.HasKey(key));
  }));
}

TEST(TextProperty, AnyIntegerOf32BitsReadsBackToTheSameNumber) {
  EXPECT_TRUE(rc::check("int", [](int number) {
    const Value read = json::Deserialize(json::SerializeValue(number));
    RC_ASSERT(read.GetType() == json::IntVal);
    RC_ASSERT(read.ToInt() == number);
  }));
  EXPECT_TRUE(rc::check("unsigned int", [](unsigned int number) {
    RC_ASSERT(json::Deserialize(json::SerializeValue(number)).ToUnsignedInt() == number);
  }));
}

TEST(TextProperty, ADocumentsTextNoLongerChangesAfterOneReading) {
  EXPECT_TRUE(rc::check("document", [] {
    json::Array document;
    document.push_back(AnyValue(3));
    const Value read = json::Deserialize(json::Serialize(document));
    RC_ASSERT(read.GetType() == json::ArrayVal);
    const std::string settled = json::Serialize(read);
    RC_ASSERT(json::Serialize(json::Deserialize(settled)) == settled);
  }));
}

TEST(TextProperty, AnyBytesAreReadOrRefused) {
  EXPECT_TRUE(rc::check("bytes", [] {
    const std::string text = *rc::gen::container<std::string>(rc::gen::oneOf(
        rc::gen::arbitrary<char>(), rc::gen::elementOf(std::string("{}[],:\"\\u0019.eE+- tfn"))));
    json::ParseError error;
    const Value value = json::Deserialize(text, error);
    RC_ASSERT(error.offset <= text.size());
    if (error.reason) RC_ASSERT(value.GetType() == json::NullVal);
  }));
}

}  // namespace
