// SPDX-License-Identifier: Apache-2.0
#include "report/AppendedLines.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace {

// A longer line is damaged in any case: it is given in pieces.
constexpr std::size_t kLongestLine = std::size_t{1} << 20;

}  // namespace

AppendedLines::AppendedLines(const std::string& file) : m_stream(std::fopen(file.c_str(), "rbe")) {}

std::string AppendedLines::Next() {
  std::array<char, 65536> chunk;
  // A stream would remember that the file had ended.
  const ssize_t count = ::read(::fileno(m_stream.get()), chunk.data(), chunk.size());
  if (count <= 0) return "";
  // What ends a line of an event is no part of a line of JSON.
  std::replace(chunk.data(), chunk.data() + count, '\r', ' ');
  m_rest.append(chunk.data(), static_cast<std::size_t>(count));
  std::size_t end = m_rest.rfind('\n');
  if (end == std::string::npos) {
    if (m_rest.size() <= kLongestLine) return "";
    end = m_rest.size();
  }
  std::string event;
  for (std::string_view lines(m_rest.data(), end); !lines.empty();) {
    const std::size_t size = std::min(lines.find('\n'), lines.size());
    event += "data: ";
    event += lines.substr(0, size);
    event += '\n';
    lines.remove_prefix(std::min(size + 1, lines.size()));
  }
  event += '\n';
  m_rest.erase(0, end + 1);
  return event;
}
