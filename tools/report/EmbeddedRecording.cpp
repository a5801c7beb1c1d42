// SPDX-License-Identifier: Apache-2.0
#include "report/EmbeddedRecording.h"

#include <utility>

namespace {

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

}  // namespace

EmbeddedRecording::EmbeddedRecording(std::string& out, std::size_t number, const std::string& name)
    : m_out(out),
      m_tag("<script type=\"application/json\" data-recording=\"" + std::to_string(number) +
            "\" data-name=\"" + AttributeText(name) + "\">") {}

EmbeddedRecording::~EmbeddedRecording() {
  endPart();
}

void EmbeddedRecording::Add(const RecordingEvent& event) {
  if (m_events.IsFull()) endPart();
  m_events.Add(event);
}

void EmbeddedRecording::endPart() {
  m_out += m_tag + m_events.Json() + "</script>\n";
  m_events = EventColumns();
}
