// SPDX-License-Identifier: Apache-2.0
#include "Printable.h"

#include <cstddef>
#include <cstdint>

namespace {

// Control characters, the separators of lines and paragraphs, and the characters that change the reading
// direction, marks included, by which a line can look like another one.
bool IsControl(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code <= 0x9F) || code == 0x061C || code == 0x200E ||
         code == 0x200F || (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

// The well-formed UTF-8 sequence that a string begins with; its length is 0 when there is none.
struct Sequence {
  std::size_t length;
  std::uint32_t code;
};

Sequence FirstOf(std::string_view text) {
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {1, lead};

  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {};
  std::uint32_t code = lead & (0x7FU >> length);
  for (std::size_t index = 1; index < length; ++index) {
    if ((byte(index) & 0xC0) != 0x80) return {};
    code = code << 6 | (byte(index) & 0x3FU);
  }
  const std::uint32_t smallest = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < smallest || code > 0x10FFFF || surrogate ? Sequence{} : Sequence{length, code};
}

// The length of the sequence that `text` begins with, 0 when there is none, and 0 for a control character.
std::size_t ShownLength(std::string_view text) {
  const auto [length, code] = FirstOf(text);
  return IsControl(code) ? 0 : length;
}

void AppendHex(std::string& out, std::uint32_t code) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) out += kDigits[code >> shift & 0xF];
}

void AppendEscape(std::string& out, char byte) {
  switch (byte) {
    case '\b':
      out += "\\b";
      return;
    case '\f':
      out += "\\f";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default:
      AppendHex(out, static_cast<unsigned char>(byte));
  }
}

// The string, in which a backslash comes before each of the `special` characters.
std::string Shown(std::string_view text, std::string_view special) {
  std::string out;
  out.reserve(text.size() + 2);
  while (!text.empty()) {
    const std::size_t length = ShownLength(text);
    if (length == 0) {
      AppendEscape(out, text.front());
    } else {
      if (special.find(text.front()) != std::string_view::npos) out += '\\';
      out += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return out;
}

}  // namespace

std::string Printable(std::string_view text) {
  return Shown(text, "\\");
}

std::string Quoted(std::string_view text) {
  return '"' + Shown(text, "\"\\") + '"';
}

std::string PrintableJson(std::string_view json) {
  return Shown(json, "");
}

std::string StandardJson(std::string_view json) {
  std::string out;
  while (!json.empty()) {
    const auto [length, code] = FirstOf(json);
    if (length == 0 || IsControl(code)) {
      AppendHex(out, length == 0 ? static_cast<unsigned char>(json.front()) : code);
    } else {
      out += json.substr(0, length);
    }
    json.remove_prefix(length == 0 ? 1 : length);
  }
  return out;
}

std::string PageJson(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const auto [length, code] = FirstOf(text);
    if (length == 0 || code < 0x20 || code == '<') {
      AppendEscape(out, text.front());
    } else {
      if (code == '"' || code == '\\') out += '\\';
      out += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return out + '"';
}
