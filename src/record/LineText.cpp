// SPDX-License-Identifier: Apache-2.0
#include "record/LineText.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>

namespace kalStore::internal {

namespace {

constexpr std::size_t kMostDigits = std::numeric_limits<std::uint64_t>::digits10 + 1;
constexpr std::size_t kLongestEscape = 6;
constexpr std::uint64_t kSpaces = 0x2020202020202020;

bool IsPlain(unsigned char byte) {
  return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
}

// The same of eight bytes at once. A byte is found by the highest bit of its difference; one that borrows
// from the next is found itself.
bool ArePlain(std::uint64_t bytes) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  constexpr std::uint64_t kHighest = kOnes << 7;
  const std::uint64_t quotes = (bytes ^ (kOnes * '"')) - kOnes;
  const std::uint64_t backslashes = (bytes ^ (kOnes * '\\')) - kOnes;
  return ((bytes | (bytes - kOnes * 0x20) | quotes | backslashes) & kHighest) == 0;
}

char* PutEscaped(char* out, char byte) {
  constexpr std::string_view kLetters = "\bb\ff\nn\rr\tt\"\"\\\\";
  constexpr std::string_view kHex = "0123456789abcdef";
  *out++ = '\\';
  for (std::size_t i = 0; i < kLetters.size(); i += 2) {
    if (kLetters[i] == byte) {
      *out++ = kLetters[i + 1];
      return out;
    }
  }
  const auto code = static_cast<unsigned char>(byte);
  out += std::string_view("u00").copy(out, 3);
  *out++ = kHex[code >> 4];
  *out++ = kHex[code & 0xF];
  return out;
}

}  // namespace

std::size_t CharacterSize(std::string_view text) {
  const auto byteAt = [&](std::size_t index) {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
  };
  const auto isTail = [&](std::size_t index) { return (byteAt(index) & 0xC0) == 0x80; };
  const unsigned int first = byteAt(0), second = byteAt(1);
  if (text.empty()) return 0;
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  if (first < 0xE0) return isTail(1) ? 2 : 0;
  // These second bytes would begin a form that is too long, a surrogate, or what is beyond the last
  // character.
  const unsigned int least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
  const unsigned int most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
  if (second < least || second > most || !isTail(2)) return 0;
  if (first < 0xF0) return 3;
  return isTail(3) ? 4 : 0;
}

void AppendNumber(LineBuffer& out, std::uint64_t number) {
  char* const room = out.Room(kMostDigits);
  out.Use(std::to_chars(room, room + kMostDigits, number).ptr);
}

void AppendJsonString(LineBuffer& out, std::string_view text) {
  // The last bytes are written with some behind them.
  char* room = out.Room(kLongestEscape * text.size() + 2 + sizeof(std::uint64_t));
  *room++ = '"';
  for (std::size_t at = 0; at < text.size();) {
    std::uint64_t bytes = kSpaces;
    const std::size_t count = std::min(text.size() - at, sizeof bytes);
    if (count == sizeof bytes) {  // Of a known size, it is inlined.
      std::memcpy(&bytes, text.data() + at, sizeof bytes);
    } else {
      std::memcpy(&bytes, text.data() + at, count);
    }
    if (ArePlain(bytes)) {
      std::memcpy(room, &bytes, sizeof bytes);
      room += count;
      at += count;
      continue;
    }
    const char byte = text[at];
    const std::size_t size = IsPlain(static_cast<unsigned char>(byte)) ? 1
                             : static_cast<unsigned char>(byte) < 0x80 ? 0
                                                                       : CharacterSize(text.substr(at));
    if (size == 0) {
      room = PutEscaped(room, byte);
      ++at;
    } else {
      for (const std::size_t end = at + size; at < end; ++at) *room++ = text[at];
    }
  }
  *room++ = '"';
  out.Use(room);
}

void AppendDecimal(LineBuffer& out, std::int64_t number, unsigned int decimals) {
  const auto positive = static_cast<std::uint64_t>(std::max<std::int64_t>(number, 0));
  std::uint64_t unit = 1;
  for (unsigned int i = 0; i < decimals; ++i) unit *= 10;
  AppendNumber(out, positive / unit);
  const std::uint64_t rest = positive % unit;
  if (rest == 0) return;
  // A digit in front keeps the zeros that follow it, and gives its place to the point.
  char* const room = out.Room(kMostDigits);
  const char* end = std::to_chars(room, room + kMostDigits, unit + rest).ptr;
  *room = '.';
  while (end[-1] == '0') --end;
  out.Use(end);
}

LineText& LineText::Strings(std::string_view member, std::span<const char* const> texts) {
  name(member);
  const char* separator = "[";
  for (const char* const text : texts) {
    m_out += separator;
    AppendJsonString(m_out, text);
    separator = ",";
  }
  m_out += ']';
  return *this;
}

}  // namespace kalStore::internal
