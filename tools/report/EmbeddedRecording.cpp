// SPDX-License-Identifier: Apache-2.0
#include "report/EmbeddedRecording.h"

#include <string_view>

#include "tessel/json.h"

namespace {

constexpr std::size_t kPartSize = std::size_t{1} << 20;
constexpr std::string_view kPartEnd = "</script>\n";

std::string AttributeText(const std::string& text) {
  std::string escaped;
  for (const char letter : text) {
    switch (letter) {
      case '&':
        escaped += "&amp;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      default:
        escaped += letter;
    }
  }
  return escaped;
}

// Markup begins with one letter; within JSON that letter is in strings alone, where it can be written so.
void AppendWithoutMarkup(std::string& out, std::string_view line) {
  for (std::size_t at; (at = line.find('<')) != std::string_view::npos; line.remove_prefix(at + 1)) {
    out += line.substr(0, at);
    out += "\\u003c";
  }
  out += line;
}

}  // namespace

EmbeddedRecording::EmbeddedRecording(std::string& out, std::size_t number, const std::string& name)
    : m_out(out),
      m_tag("<script type=\"text/plain\" data-recording=\"" + std::to_string(number) + "\" data-name=\"" +
            AttributeText(name) + "\">") {
  begin();
}

EmbeddedRecording::~EmbeddedRecording() {
  m_out += kPartEnd;
}

void EmbeddedRecording::Add(const std::string& line) {
  if (m_out.size() - m_partBegin > kPartSize) {
    m_out += kPartEnd;
    begin();
  }
  // A browser takes some control characters of a page for others; as JSON, they are written as \uXXXX.
  const bool isPlain = line.find_first_of(std::string_view("\0\t\v\f\r", 5)) == std::string::npos;
  AppendWithoutMarkup(m_out, isPlain ? line : json::Serialize(json::Deserialize(line)));
  m_out += '\n';
}

void EmbeddedRecording::begin() {
  m_out += m_tag;
  m_partBegin = m_out.size();
}
