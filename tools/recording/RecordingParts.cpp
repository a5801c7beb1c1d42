// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingParts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "TextFile.h"
#include "recording/EventText.h"

namespace {

// The first line of a file that is open; no begin when it is of no recording.
RecordingEvent BeginOf(std::FILE* stream) {
  std::array<char, 4096> bytes;
  const ssize_t size = ::pread(::fileno(stream), bytes.data(), bytes.size(), 0);
  const std::string_view text(bytes.data(), static_cast<std::size_t>(size > 0 ? size : 0));
  RecordingEvent event;
  if (!ReadRecordingLine(std::string(text.substr(0, text.find('\n'))), event).empty()) return {};
  return event;
}

}  // namespace

RecordingParts::RecordingParts(std::string name)
    : m_name(std::move(name)), m_stream(m_name == kStandardInput ? Stream(stdin) : open(m_name)) {}

bool RecordingParts::IsTheSame() const {
  struct stat status{};
  return m_first.empty() || ::fstat(Descriptor(), &status) != 0 || !S_ISREG(status.st_mode) ||
         BeginOf(m_stream.get()).wall == m_first;
}

std::string RecordingParts::Take(const RecordingEvent& event) {
  m_isFull = event.GoesOn();
  if (event.IsEnd()) m_next = event.next.value_or(0);
  if (!event.IsBegin()) return "";
  m_wall = event.wall.value_or("");
  if (m_first.empty()) m_first = m_wall;
  const bool isFirst = std::exchange(m_part, event.part.value_or(0)) == 0;
  const std::uint64_t next = event.next.value_or(0);
  if (isFirst || next <= m_next) return "";
  return R"({"type":"lost","t":)" + ShortNumber(event.time) + ",\"count\":" + std::to_string(next - m_next) +
         "}";
}

// The file that has the recording's name is the last one, and open before others are looked for: what is
// rotated meanwhile can still be read. The others have their numbers, as far as they are still there.
RecordingParts::Next RecordingParts::OpenNext() {
  struct stat status{};
  if (::fstat(Descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) return Next::kNone;
  // Emptied for another recording, or without the lines that found no room.
  if (!IsTheSame() || ::lseek(Descriptor(), 0, SEEK_CUR) > status.st_size) return Next::kNone;
  if (!m_isFull) return Next::kNotYet;

  const auto isPart = [&](const RecordingEvent& begin, std::uint64_t part) {
    return begin.IsBegin() && begin.wall == m_wall && begin.part == part;
  };
  Stream last = open(m_name);
  if (last == nullptr) return Next::kNotYet;  // It is about to take the name.
  const RecordingEvent begin = BeginOf(last.get());
  const std::uint64_t lastPart = begin.part.value_or(0);
  if (!isPart(begin, lastPart) || lastPart < m_part) return Next::kNone;
  if (lastPart == m_part) return Next::kNotYet;
  for (std::uint64_t part = m_part + 1; part < lastPart; ++part) {
    Stream other = open(m_name + "." + std::to_string(part));
    if (other == nullptr || !isPart(BeginOf(other.get()), part)) continue;
    m_stream = std::move(other);
    return Next::kOpened;
  }
  m_stream = std::move(last);
  return Next::kOpened;
}

RecordingParts::Stream RecordingParts::open(const std::string& name) {
  return Stream(std::fopen(name.c_str(), "rbe"));
}
