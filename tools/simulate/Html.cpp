// SPDX-License-Identifier: Apache-2.0
#include "simulate/Html.h"

#include <cstddef>

#include "Printable.h"

namespace simulate {

namespace {

constexpr std::size_t kMaxBytes = 400;

// Not in the middle of a character, as far as there are any.
std::string_view Cut(std::string_view text) {
  std::size_t end = kMaxBytes;
  while (end > kMaxBytes - 4 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

}  // namespace

std::string HtmlText(std::string_view text) {
  if (text.size() > kMaxBytes) {
    return HtmlText(Cut(text)) + "\u2026 (" + std::to_string(text.size()) + " bytes)";
  }
  std::string html;
  for (const char letter : Printable(text)) {
    switch (letter) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html += letter;
    }
  }
  return html;
}

}  // namespace simulate
