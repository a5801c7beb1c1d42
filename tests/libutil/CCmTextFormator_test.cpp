// SPDX-License-Identifier: Apache-2.0
#include "util/CCmTextFormator.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <locale>
#include <string>
#include <vector>

namespace {

using Writer = std::function<void(CCmTextFormator&)>;

std::string TextOf(const Writer& write) {
  char buffer[1024];
  CCmTextFormator formator(buffer, sizeof buffer);
  write(formator);
  EXPECT_EQ(formator.tell(), std::strlen(formator));
  return static_cast<char*>(formator);
}

template <class Value>
std::string Hexadecimal(Value value) {
  return TextOf([=](CCmTextFormator& f) { f << CM_ORDIX_HEX << value; });
}

template <class Value>
std::string Decimal(Value value) {
  return TextOf([=](CCmTextFormator& f) { f << value; });
}

}  // namespace

TEST(TextFormator, StartsEmpty) {
  char buffer[8] = "garbage";
  CCmTextFormator formator(buffer, sizeof buffer);
  EXPECT_EQ(static_cast<char*>(formator), buffer);
  EXPECT_STREQ(formator, "");
  EXPECT_EQ(formator.tell(), 0u);
}

TEST(TextFormator, JoinsStringsAndNumbers) {
  EXPECT_EQ(TextOf([](CCmTextFormator& f) { f << "a=" << 3 << ", b=" << CCmString("x") << ", c=" << -4L; }),
            "a=3, b=x, c=-4");
}

TEST(TextFormator, WritesNothingForANullString) {
  EXPECT_EQ(TextOf([](CCmTextFormator& f) { f << "a" << static_cast<const char*>(nullptr) << "b"; }), "ab");
}

TEST(TextFormator, EndsAStringAtItsFirstNul) {
  EXPECT_EQ(TextOf([](CCmTextFormator& f) { f << CCmString("ab\0cd", 5) << "."; }), "ab.");
}

TEST(TextFormator, WritesTheBoundsOfEachType) {
  constexpr bool kIs64 = sizeof(long) == 8;
  EXPECT_EQ(Decimal(0), "0");
  EXPECT_EQ(Decimal(std::numeric_limits<int>::min()), "-2147483648");
  EXPECT_EQ(Decimal(std::numeric_limits<int>::max()), "2147483647");
  EXPECT_EQ(Decimal(std::numeric_limits<unsigned int>::max()), "4294967295");
  EXPECT_EQ(Decimal(std::numeric_limits<long>::min()), kIs64 ? "-9223372036854775808" : "-2147483648");
  EXPECT_EQ(Decimal(std::numeric_limits<long>::max()), kIs64 ? "9223372036854775807" : "2147483647");
  EXPECT_EQ(Decimal(std::numeric_limits<unsigned long>::max()),
            kIs64 ? "18446744073709551615" : "4294967295");
  EXPECT_EQ(Hexadecimal(0), "0");
  EXPECT_EQ(Hexadecimal(-1), "ffffffff");
  EXPECT_EQ(Hexadecimal(-1L), kIs64 ? "ffffffffffffffff" : "ffffffff");
  EXPECT_EQ(Hexadecimal(255u), "ff");
  EXPECT_EQ(Hexadecimal(std::numeric_limits<unsigned long>::max()), kIs64 ? "ffffffffffffffff" : "ffffffff");
}

TEST(TextFormator, KeepsTheRadixUntilAnotherIsChosen) {
  EXPECT_EQ(TextOf([](CCmTextFormator& f) {
              f << 16 << " " << CM_ORDIX_HEX << 16 << " " << 17 << " " << CM_ORDIX_DEC << 16;
            }),
            "16 10 11 16");
}

TEST(TextFormator, WritesPointersInHexadecimalWhateverTheRadix) {
  void* pointer = reinterpret_cast<void*>(static_cast<std::uintptr_t>(0xabcdef01));
  EXPECT_EQ(Decimal(pointer), "0xabcdef01");
  EXPECT_EQ(Hexadecimal(pointer), "0xabcdef01");
  EXPECT_EQ(Decimal(static_cast<void*>(nullptr)), "0x0");
  EXPECT_EQ(TextOf([=](CCmTextFormator& f) { f << pointer << " " << 16; }), "0xabcdef01 16");
}

TEST(TextFormator, CutsOffAtEveryBufferSize) {
  const std::vector<Writer> writers{
      [](CCmTextFormator& f) {
        f << "hello"
          << " world";
      },
      [](CCmTextFormator& f) { f << CCmString("hello"); },
      [](CCmTextFormator& f) {
        f << std::numeric_limits<long>::min() << std::numeric_limits<unsigned long>::max();
      },
      [](CCmTextFormator& f) { f << -17 << CM_ORDIX_HEX << -1 << CM_ORDIX_DEC << 5u; },
      [](CCmTextFormator& f) { f << reinterpret_cast<void*>(static_cast<std::uintptr_t>(0x123456)); },
      [](CCmTextFormator&) {},
  };
  for (const Writer& write : writers) {
    const std::string whole = TextOf(write);
    for (unsigned int size = 0; size <= whole.size() + 2; ++size) {
      std::vector<char> bytes(size + 16u, '#');
      CCmTextFormator formator(bytes.data() + 8, size);
      write(formator);
      const std::string expected = size == 0 ? "" : whole.substr(0, size - 1);
      EXPECT_EQ(std::string(static_cast<char*>(formator)), expected) << size;
      EXPECT_EQ(formator.tell(), expected.size()) << size;
      for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(bytes[i], '#') << "before, size " << size;
        EXPECT_EQ(bytes[8 + size + i], '#') << "behind, size " << size;
      }
    }
  }
}

TEST(TextFormator, WritesNothingOnceFull) {
  char buffer[4];
  CCmTextFormator formator(buffer, sizeof buffer);
  for (int i = 0; i < 100; ++i) formator << "ab" << 7;
  EXPECT_STREQ(formator, "ab7");
  EXPECT_EQ(formator.tell(), 3u);
}

TEST(TextFormator, ToleratesHavingNoBuffer) {
  CCmTextFormator formator(nullptr, 100);
  formator << "text" << 5;
  EXPECT_STREQ(formator, "");
  EXPECT_EQ(formator.tell(), 0u);
}

TEST(TextFormator, IgnoresTheLocale) {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  EXPECT_EQ(Decimal(1234567), "1234567");
  std::locale::global(previous);
}
