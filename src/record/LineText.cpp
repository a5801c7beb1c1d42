// SPDX-License-Identifier: Apache-2.0
#include "record/LineText.h"

#include <algorithm>
#include <charconv>

namespace kalStore::internal {

namespace {

void AppendNumber(std::string& out, std::uint64_t number) {
  char digits[20];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

// The number divided by ten to the power of `decimals`, exact and as short as possible.
void AppendDecimal(std::string& out, std::int64_t number, unsigned int decimals) {
  const auto positive = static_cast<std::uint64_t>(std::max<std::int64_t>(number, 0));
  std::uint64_t unit = 1;
  for (unsigned int i = 0; i < decimals; ++i) unit *= 10;
  AppendNumber(out, positive / unit);
  const std::uint64_t rest = positive % unit;
  if (rest == 0) return;
  // A digit in front keeps the zeros that follow it, and gives its place to the point.
  const std::size_t point = out.size();
  AppendNumber(out, unit + rest);
  out[point] = '.';
  out.resize(out.find_last_not_of('0') + 1);
}

void AppendEscaped(std::string& out, char byte) {
  constexpr std::string_view kLetters = "\bb\ff\nn\rr\tt\"\"\\\\";
  constexpr std::string_view kHex = "0123456789abcdef";
  out += '\\';
  for (std::size_t i = 0; i < kLetters.size(); i += 2) {
    if (kLetters[i] == byte) {
      out += kLetters[i + 1];
      return;
    }
  }
  const auto code = static_cast<unsigned char>(byte);
  out += "u00";
  out += kHex[code >> 4];
  out += kHex[code & 0xF];
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

void AppendJsonString(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    // What needs no escape is appended at once.
    std::size_t plain = 0;
    while (plain < text.size()) {
      const auto byte = static_cast<unsigned char>(text[plain]);
      if (byte < 0x20 || byte == '"' || byte == '\\') break;
      const std::size_t size = byte < 0x80 ? 1 : CharacterSize(text.substr(plain));
      if (size == 0) break;
      plain += size;
    }
    out += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    AppendEscaped(out, text.front());
    text.remove_prefix(1);
  }
  out += '"';
}

LineText::LineText(std::string& out, std::string_view type, std::int64_t timeNs) : m_out(out) {
  m_out += "{\"type\":\"";
  m_out += type;
  m_out += "\",\"t\":";
  AppendDecimal(m_out, timeNs, 9);
}

LineText& LineText::Number(std::string_view member, std::uint64_t number) {
  name(member);
  AppendNumber(m_out, number);
  return *this;
}

LineText& LineText::String(std::string_view member, std::string_view text) {
  name(member);
  AppendJsonString(m_out, text);
  return *this;
}

LineText& LineText::Microseconds(std::string_view member, std::int64_t ns) {
  name(member);
  AppendDecimal(m_out, ns, 3);
  return *this;
}

LineText& LineText::True(std::string_view member) {
  return Raw(member, "true");
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

LineText& LineText::Raw(std::string_view member, std::string_view json) {
  name(member);
  m_out += json;
  return *this;
}

void LineText::End() {
  m_out += "}\n";
}

void LineText::name(std::string_view member) {
  m_out += ",\"";
  m_out += member;
  m_out += "\":";
}

}  // namespace kalStore::internal
