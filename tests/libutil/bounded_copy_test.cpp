// SPDX-License-Identifier: Apache-2.0
#include "util/bounded_copy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kLargest = 12;
constexpr char kCanary = '#';

/// A destination of `size` bytes between canaries.
class Guarded {
 public:
  explicit Guarded(std::size_t size) : m_size(size), m_bytes(size + 16, kCanary) {}
  char* Data() { return m_bytes.data() + 8; }
  std::string Text() const {
    return {m_bytes.begin() + 8, m_bytes.begin() + 8 + static_cast<std::ptrdiff_t>(m_size)};
  }
  bool IsIntact() const {
    const auto isCanary = [](char c) { return c == kCanary; };
    return std::all_of(m_bytes.begin(), m_bytes.begin() + 8, isCanary) &&
           std::all_of(m_bytes.end() - 8, m_bytes.end(), isCanary);
  }

 private:
  std::size_t m_size;
  std::vector<char> m_bytes;
};

}  // namespace

TEST(BoundedCopy, CopiesBytesThatFitAndZeroesOtherwise) {
  const std::string source = "abcdefghijklmno";
  for (std::size_t size = 0; size <= kLargest; ++size) {
    for (std::size_t count = 0; count <= kLargest + 2; ++count) {
      Guarded destination(size);
      const bool fits = count <= size;
      EXPECT_EQ(memcpy_s(destination.Data(), size, source.data(), count), fits ? 0 : ERANGE);
      const std::string expected =
          fits ? source.substr(0, count) + std::string(size - count, kCanary) : std::string(size, '\0');
      EXPECT_EQ(destination.Text(), expected) << size << " " << count;
      EXPECT_TRUE(destination.IsIntact()) << size << " " << count;
    }
  }
}

TEST(BoundedCopy, ZeroesTheDestinationOfANullSource) {
  Guarded destination(4);
  EXPECT_EQ(memcpy_s(destination.Data(), 4, nullptr, 2), EINVAL);
  EXPECT_EQ(destination.Text(), std::string(4, '\0'));
  EXPECT_EQ(memcpy_s(nullptr, 4, "abcd", 4), EINVAL);
  EXPECT_EQ(memcpy_s(nullptr, 0, nullptr, 0), EINVAL);
  EXPECT_TRUE(destination.IsIntact());
}

TEST(BoundedSet, SetsNoMoreThanTheDestination) {
  for (std::size_t size = 0; size <= kLargest; ++size) {
    for (std::size_t count = 0; count <= kLargest + 2; ++count) {
      Guarded destination(size);
      const bool fits = count <= size;
      EXPECT_EQ(memset_s(destination.Data(), size, 'x', count), fits ? 0 : ERANGE);
      const std::size_t set = std::min(size, count);
      EXPECT_EQ(destination.Text(), std::string(set, 'x') + std::string(size - set, kCanary));
      EXPECT_TRUE(destination.IsIntact()) << size << " " << count;
    }
  }
  EXPECT_EQ(memset_s(nullptr, 1, 0, 1), EINVAL);
}

TEST(BoundedString, CopiesStringsThatFitAndEmptiesOtherwise) {
  for (std::size_t length = 0; length <= kLargest; ++length) {
    const std::string source = std::string("abcdefghijklmno").substr(0, length);
    for (std::size_t size = 0; size <= kLargest + 1; ++size) {
      for (std::size_t count = 0; count <= kLargest + 2; ++count) {
        Guarded destination(size);
        const std::string copied = source.substr(0, count);
        const bool fits = copied.size() < size;
        EXPECT_EQ(strncpy_s(destination.Data(), size, source.c_str(), count), fits ? 0 : ERANGE);
        if (size != 0) {
          EXPECT_STREQ(destination.Data(), fits ? copied.c_str() : "");
        }
        EXPECT_TRUE(destination.IsIntact()) << length << " " << size << " " << count;
      }
    }
  }
}

TEST(BoundedString, ReadsNoFurtherThanTheCount) {
  const std::vector<char> unterminated{'a', 'b', 'c'};
  char destination[8];
  EXPECT_EQ(strncpy_s(destination, sizeof destination, unterminated.data(), unterminated.size()), 0);
  EXPECT_STREQ(destination, "abc");
}

TEST(BoundedString, EmptiesTheDestinationOfANullSource) {
  char destination[4] = "xyz";
  EXPECT_EQ(strncpy_s(destination, sizeof destination, nullptr, 3), EINVAL);
  EXPECT_STREQ(destination, "");
  EXPECT_EQ(strncpy_s(destination, 0, nullptr, 3), EINVAL);
  EXPECT_EQ(strncpy_s(nullptr, 4, "abc", 3), EINVAL);
}

TEST(BoundedLength, StopsAtTheLimit) {
  EXPECT_EQ(strnlen_s(nullptr, 5), 0u);
  EXPECT_EQ(strnlen_s("", 5), 0u);
  EXPECT_EQ(strnlen_s("abc", 0), 0u);
  EXPECT_EQ(strnlen_s("abc", 2), 2u);
  EXPECT_EQ(strnlen_s("abc", 3), 3u);
  EXPECT_EQ(strnlen_s("abc", 100), 3u);
  const std::vector<char> unterminated{'a', 'b', 'c'};
  EXPECT_EQ(strnlen_s(unterminated.data(), unterminated.size()), 3u);
}
