// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingParts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>
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

bool IsPart(const RecordingEvent& begin, const std::string& wall, std::uint64_t part) {
  return begin.IsBegin() && begin.wall == wall && begin.part == part;
}

std::string PartName(const std::string& name, std::uint64_t part) {
  return name + "." + std::to_string(part);
}

}  // namespace

RecordingParts::RecordingParts(const std::string& name) : m_name(name), m_file(name) {
  if (name == kStandardInput) {
    m_stream = Stream(stdin);
    return;
  }
  // The other files of a set are beside the file itself.
  std::error_code fault;
  if (std::filesystem::is_symlink(name, fault)) {
    const std::filesystem::path file = std::filesystem::canonical(name, fault);
    if (!fault) m_name = file.string();
  }
  m_stream = openLast();
  openOldest();
}

void RecordingParts::openOldest() {
  struct stat status{};
  if (!IsOpen() || ::fstat(Descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) return;
  const RecordingEvent begin = BeginOf(m_stream.get());
  if (!begin.IsBegin()) return;
  m_wall = begin.wall.value_or("");
  m_oldest = m_latest = begin.part.value_or(0);
  while (m_oldest > 1) {
    Stream older = openPart(m_oldest - 1);
    if (older == nullptr) break;
    m_stream = std::move(older);
    m_file = PartName(m_name, --m_oldest);
  }
  m_part = m_oldest;
}

bool RecordingParts::Has(const std::string& file) const {
  std::error_code none;
  if (std::filesystem::equivalent(file, m_name, none)) return true;
  if (m_oldest == 0) return false;
  const Stream other = openRegular(file);
  return other != nullptr && BeginOf(other.get()).wall == m_wall;
}

bool RecordingParts::IsOfSetOf(const RecordingParts& other) const {
  return m_oldest != 0 && other.m_oldest != 0 && m_wall == other.m_wall;
}

void RecordingParts::Join(RecordingParts&& other) {
  if (other.m_oldest < m_oldest) std::swap(*this, other);
  m_latest = std::max(m_latest, other.m_latest);
  m_others.merge(other.m_others);
  m_others.emplace(other.m_oldest, std::move(other.m_name));
}

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
  m_part = event.part.value_or(0);
  const std::uint64_t next = event.next.value_or(0), expected = std::exchange(m_next, 0);
  if (m_part == 0 || expected == 0 || next <= expected) return "";
  return R"({"type":"lost","t":)" + ShortNumber(event.time) +
         ",\"count\":" + std::to_string(next - expected) + "}";
}

// Of files that were full when the first one was opened, nothing more is expected, whatever their ends are.
RecordingParts::Next RecordingParts::OpenNext() {
  struct stat status{};
  if (::fstat(Descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) return Next::kNone;
  // Emptied for another recording, or without the lines that found no room.
  if (!IsTheSame() || ::lseek(Descriptor(), 0, SEEK_CUR) > status.st_size) return Next::kNone;
  if (!m_isFull && m_part >= m_latest) return Next::kNotYet;
  for (;;) {
    const Next next = openBehind();
    if (next == Next::kOpened || m_others.empty()) return next;
    m_name = m_others.extract(m_others.begin()).mapped();
  }
}

// The file that has the recording's name is the last one, and open before others are looked for: what is
// rotated meanwhile can still be read. The others have their numbers, as far as they are still there: from
// some one on, all of them.
RecordingParts::Next RecordingParts::openBehind() {
  if (m_name.ends_with(PartName("", m_part))) return Next::kNone;  // It is named as the part that it is.
  Stream last = openLast();
  if (last == nullptr) return Next::kNotYet;  // It is about to take the name.
  const RecordingEvent begin = BeginOf(last.get());
  const std::uint64_t lastPart = begin.part.value_or(0);
  if (!IsPart(begin, m_wall, lastPart) || lastPart < m_part) return Next::kNone;
  if (lastPart == m_part) return Next::kNotYet;
  std::uint64_t part = m_part + 1;
  Stream next = part < lastPart ? openPart(part) : nullptr;
  if (next == nullptr) {
    next = std::move(last);
    for (part = lastPart; part > m_part + 1; --part) {
      Stream older = openPart(part - 1);
      if (older == nullptr) break;
      next = std::move(older);
    }
  }
  m_stream = std::move(next);
  m_file = part == lastPart ? m_name : PartName(m_name, part);
  m_part = part;
  return Next::kOpened;
}

RecordingParts::Stream RecordingParts::openPart(std::uint64_t part) const {
  Stream stream = openRegular(PartName(m_name, part));
  return stream != nullptr && IsPart(BeginOf(stream.get()), m_wall, part) ? std::move(stream) : nullptr;
}

// Where a file cannot have two names, the set has no last one for a moment, or since a crash: it is there,
// and about to get the name.
RecordingParts::Stream RecordingParts::openLast() const {
  Stream last = open(m_name);
  if (last != nullptr || errno != ENOENT) return last;
  Stream next = openRegular(m_name + ".next");
  if (next != nullptr && BeginOf(next.get()).part) return next;
  return open(m_name);
}

// Nobody may be about to write to a pipe: to open it would wait for that.
RecordingParts::Stream RecordingParts::openRegular(const std::string& name) {
  std::error_code none;
  return std::filesystem::is_regular_file(name, none) ? open(name) : nullptr;
}

RecordingParts::Stream RecordingParts::open(const std::string& name) {
  return Stream(std::fopen(name.c_str(), "rbe"));
}
