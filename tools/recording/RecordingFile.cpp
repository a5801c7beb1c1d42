// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingFile.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <iostream>
#include <optional>
#include <system_error>
#include <utility>

#include "CommandError.h"
#include "Printable.h"
#include "TextFile.h"
#include "recording/RecordingReader.h"

namespace {

constexpr int kPauseMs = 50;

CommandError UnreadableRecording(const std::string& name) {
  return CommandError(FileTitle(name) + ": cannot be read: " + std::generic_category().message(errno));
}

// Shows what there is and lets some time pass. False when nobody reads standard output any more.
bool WaitForMore() {
  std::cout << std::flush;
  pollfd output{STDOUT_FILENO, 0, 0};  // A reader that leaves is reported without being asked for.
  return ::poll(&output, 1, kPauseMs) <= 0;
}

}  // namespace

RecordingFile::RecordingFile(std::string name) : m_name(std::move(name)), m_parts(m_name) {
  // A directory can be opened, and not be read.
  if (!m_parts.IsOpen() || ::read(m_parts.Descriptor(), nullptr, 0) < 0) throw UnreadableRecording(m_name);
}

bool RecordingFile::Read(const OnEvent& onEvent, End end, Faults faults) {
  bool isFine = true;
  std::string file = m_parts.FileName();
  const auto take = [&](const RecordingEvent& event, const std::string& line) {
    if (const std::string lost = m_parts.Take(event); !lost.empty()) {
      RecordingEvent before;
      ReadRecordingLine(lost, before);
      onEvent(before, lost);
    }
    onEvent(event, line);
  };
  const auto report = [&](RecordingReader::Fault fault, std::size_t line, const std::string& reason) {
    isFine = isFine && fault == RecordingReader::Fault::kCutOff;
    if (faults == Faults::kSilent) return;
    std::cout << std::flush;  // The lines of both in their order, where they lead to one terminal.
    std::cerr << FileTitle(file) << ':' << line << ": " << Printable(reason) << '\n';
  };
  std::optional<RecordingReader> reader(std::in_place, RecordingReader::Sink{take, report});
  std::array<char, 65536> chunk;
  for (;;) {
    const ssize_t count = ::read(m_parts.Descriptor(), chunk.data(), chunk.size());
    if (count < 0) {
      if (errno == EINTR) continue;
      throw UnreadableRecording(m_name);
    }
    if (end == End::kOfRecording && !m_parts.IsTheSame()) break;
    if (!reader->Feed({chunk.data(), static_cast<std::size_t>(count)})) return false;
    if (count > 0) continue;
    if (reader->HasEnded()) break;
    const RecordingParts::Next next = m_parts.OpenNext();
    if (next == RecordingParts::Next::kOpened) {
      reader->Finish();
      reader.emplace(RecordingReader::Sink{take, report});
      file = m_parts.FileName();
    } else if (end == End::kOfFile || next == RecordingParts::Next::kNone || !WaitForMore()) {
      break;
    }
  }
  reader->Finish();
  return isFine;
}

std::vector<RecordingFile> OpenRecordings(const std::vector<std::string>& names) {
  std::vector<RecordingFile> files;
  for (const std::string& name : names) {
    RecordingFile file(name);
    const auto same =
        std::ranges::find_if(files, [&](const RecordingFile& other) { return other.IsOfSetOf(file); });
    if (same == files.end()) {
      files.push_back(std::move(file));
    } else {
      same->Join(std::move(file));
    }
  }
  return files;
}
