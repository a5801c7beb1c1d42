// SPDX-License-Identifier: Apache-2.0
// Documents are exchanged between processes: their numbers must not follow what a process has set as its
// locale.

#include <gtest/gtest.h>

#include <clocale>
#include <locale>

#include "tessel/json.h"

namespace {

class CommaDecimals : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

class Locale : public testing::Test {
 protected:
  Locale() : m_previous(std::locale::global(std::locale(std::locale(), new CommaDecimals))) {
    // A comma-decimal locale of the C library as well, where the machine has one.
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8"}) {
      if (std::setlocale(LC_ALL, name)) break;
    }
  }
  ~Locale() override {
    std::locale::global(m_previous);
    std::setlocale(LC_ALL, "C");
  }

 private:
  const std::locale m_previous;
};

TEST_F(Locale, DoesNotChangeHowNumbersAreWritten) {
  json::Array numbers;
  for (const json::Value& number : {json::Value(1234567), json::Value(1234567.5), json::Value(0.5F)}) {
    numbers.push_back(number);
  }
  EXPECT_EQ(json::Serialize(numbers), "[1234567,1234567.500000,0.500000]");
}

TEST_F(Locale, DoesNotChangeHowNumbersAreRead) {
  const json::Value numbers = json::Deserialize("[1.5,1234567]");
  EXPECT_EQ(numbers[0].ToDouble(), 1.5);
  EXPECT_EQ(numbers[1].ToInt(), 1234567);
  EXPECT_EQ(json::Deserialize("[1,5]").size(), 2u);
  EXPECT_EQ(json::Deserialize("1.234.567").GetType(), json::NullVal);
}

}  // namespace
