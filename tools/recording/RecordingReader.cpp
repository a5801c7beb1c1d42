// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingReader.h"

#include <utility>

RecordingReader::RecordingReader(Sink sink) : m_sink(std::move(sink)) {}

bool RecordingReader::Feed(std::string_view bytes) {
  while (!m_isRefused && !bytes.empty()) {
    const std::size_t end = bytes.find('\n');
    append(bytes.substr(0, end));
    if (end == std::string_view::npos) break;
    endLine();
    bytes.remove_prefix(end + 1);
  }
  return !m_isRefused;
}

// A whole object needs no line feed behind it: its brace shows that nothing is missing.
void RecordingReader::Finish() {
  if (m_isRefused) return;
  if (m_line.empty() && !m_isTooLong) {
    if (m_number == 1) refuse("the file is empty");
    return;
  }
  json::ParseError error;
  json::Deserialize(m_line, error);
  if (m_number > 1 && error.reason != nullptr && error.offset == m_line.size()) {
    m_sink.fault(Fault::kCutOff, m_number, "the recording ends within this line");
  } else {
    endLine();
  }
}

void RecordingReader::append(std::string_view bytes) {
  if (m_isTooLong) return;
  m_isTooLong = bytes.size() > kLongestLine - m_line.size();
  if (m_isTooLong) {
    m_line.clear();
  } else {
    m_line += bytes;
  }
}

void RecordingReader::endLine() {
  const std::string fault =
      m_isTooLong ? "the line is longer than 1 MiB" : ReadRecordingLine(m_line, m_event);
  if (m_isTooLong) m_event = RecordingEvent();
  const bool isVersion = m_event.version && m_event.type == "recording";
  if (isVersion && *m_event.version != kVersion) {
    refuse("version " + std::to_string(*m_event.version) + " of the format: only version " +
           std::to_string(kVersion) + " can be read");
  } else if (m_number == 1 && !isVersion) {
    refuse("no recording: the first line is not of type \"recording\", with a version");
  } else if (!fault.empty()) {
    m_sink.fault(Fault::kDamaged, m_number, fault);
  } else {
    m_hasEnded = m_event.IsEnd() && !m_event.GoesOn();
    m_sink.event(m_event, m_line);
  }
  m_line.clear();
  m_isTooLong = false;
  ++m_number;
}

void RecordingReader::refuse(const std::string& reason) {
  m_isRefused = true;
  m_sink.fault(Fault::kRefused, m_number, reason);
}
