// SPDX-License-Identifier: Apache-2.0
#include "report/AppendedLines.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace {

// A longer line is damaged in any case, whatever it is.
constexpr std::size_t kLongestLine = std::size_t{1} << 20;

}  // namespace

AppendedLines::AppendedLines(const std::string& file) : m_parts(file) {}

std::string AppendedLines::Next() {
  std::array<char, 65536> chunk;
  ssize_t count = 0;
  do {
    count = ::read(m_parts.Descriptor(), chunk.data(), chunk.size());
  } while (count == 0 && openNext());
  if (count <= 0 || !m_parts.IsTheSame()) return "";
  // What ends a line of an event is no part of a line of JSON.
  std::replace(chunk.data(), chunk.data() + count, '\r', ' ');
  m_rest.append(chunk.data(), static_cast<std::size_t>(count));
  const std::size_t end = m_rest.rfind('\n') + 1;  // 0 when there is none.
  if (end == 0) {
    // As much as shows that it is too long: the page says so, and counts one line.
    m_rest.resize(std::min(m_rest.size(), kLongestLine + 1));
    return "";
  }
  std::string event = eventOf(std::string_view(m_rest).substr(0, end));
  m_rest.erase(0, end);
  return event;
}

// An end that is cut off is a line of its own.
bool AppendedLines::openNext() {
  if (m_parts.OpenNext() != RecordingParts::Next::kOpened) return false;
  if (!m_rest.empty()) m_rest += '\n';
  return true;
}

std::string AppendedLines::eventOf(std::string_view lines) {
  std::string event;
  const auto add = [&](std::string_view line) {
    event += "data: ";
    event += line;
    event += '\n';
  };
  while (!lines.empty()) {
    const std::string_view line = lines.substr(0, lines.find('\n'));
    // Of the others, nothing has to be known here. Another program may have written the members in its order.
    if (line.find(R"("recording")") != std::string_view::npos) {
      RecordingEvent parsed;
      ReadRecordingLine(std::string(line), parsed);
      if (const std::string lost = m_parts.Take(parsed); !lost.empty()) add(lost);
    }
    add(line);
    lines.remove_prefix(line.size() + 1);
  }
  event += '\n';
  return event;
}
