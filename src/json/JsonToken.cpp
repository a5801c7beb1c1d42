// SPDX-License-Identifier: Apache-2.0
#include "json/JsonToken.h"

#include <algorithm>

#include "json/HexDigit.h"

namespace kalStore::internal {

void JsonString::appendDecoded(std::string& out) const {
  const char* at = m_contents.data();
  const char* const end = at + m_contents.size();
  for (;;) {
    const char* const escape = std::find(at, end, '\\');
    out.append(at, escape);
    if (escape == end) return;
    at = escape + 2;
    switch (escape[1]) {
      case 'b':
        out += '\b';
        break;
      case 'f':
        out += '\f';
        break;
      case 'n':
        out += '\n';
        break;
      case 'r':
        out += '\r';
        break;
      case 't':
        out += '\t';
        break;
      case 'u':
        // A byte, not a code point: strings carry any bytes this way. The first two digits do not count.
        out += static_cast<char>(HexDigit(at[2]) * 16 + HexDigit(at[3]));
        at += 4;
        break;
      default:  // A quote, a backslash or a slash.
        out += escape[1];
    }
  }
}

}  // namespace kalStore::internal
