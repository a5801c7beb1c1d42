// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

/// A structure as its raw bytes, so that a test can name members by their place alone.
template <std::size_t size>
struct alignas(8) Bytes : std::array<unsigned char, size> {
  /// Bytes that differ from place to place, and with `salt`. Every 32-bit member is positive.
  static Bytes Pattern(unsigned int salt = 0) {
    Bytes bytes;
    for (std::size_t i = 0; i < size; ++i) {
      bytes[i] = static_cast<unsigned char>(((i * 37 + i / 4 * 11 + salt * 53) % 113) + 1);
    }
    return bytes;
  }

  template <class T>
  Bytes& Put(std::size_t offset, T value) {
    std::memcpy(this->data() + offset, &value, sizeof value);
    return *this;
  }

  Bytes& Copy(std::size_t offset, const unsigned char* from, std::size_t count) {
    std::memcpy(this->data() + offset, from, count);
    return *this;
  }

  /// A 64-bit number as its halves, the low one first.
  Bytes& PutHalves(std::size_t offset, std::uint64_t number) {
    Put(offset, static_cast<std::uint32_t>(number));
    return Put(offset + 4, static_cast<std::uint32_t>(number >> 32));
  }

  Bytes& Zero(std::size_t offset, std::size_t count) {
    std::memset(this->data() + offset, 0, count);
    return *this;
  }

  template <class T>
  T Take(std::size_t offset) const {
    T value;
    std::memcpy(&value, this->data() + offset, sizeof value);
    return value;
  }
};

using VideoBytes = Bytes<2064>;
using AudioBytes = Bytes<260>;
using SyncBytes = Bytes<120>;

/// Passes when both are the same; names the first byte that differs otherwise.
template <std::size_t size>
::testing::AssertionResult Same(const Bytes<size>& actual, const Bytes<size>& expected) {
  for (std::size_t i = 0; i < size; ++i) {
    if (actual[i] != expected[i]) {
      return ::testing::AssertionFailure()
             << "byte " << i << " is " << +actual[i] << " instead of " << +expected[i];
    }
  }
  return ::testing::AssertionSuccess();
}
