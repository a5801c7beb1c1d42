// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingFile.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
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

// A pipe that has ended does not go on.
bool CanGrow(int descriptor) {
  struct stat status{};
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

// Shows what there is and lets some time pass. False when nobody reads standard output any more.
bool WaitForMore() {
  std::cout << std::flush;
  pollfd output{STDOUT_FILENO, 0, 0};  // A reader that leaves is reported without being asked for.
  return ::poll(&output, 1, kPauseMs) <= 0;
}

}  // namespace

RecordingFile::RecordingFile(std::string name)
    : m_name(std::move(name)),
      m_stream(m_name == kStandardInput ? stdin : std::fopen(m_name.c_str(), "rbe")) {
  if (m_stream == nullptr) throw UnreadableRecording(m_name);
}

bool RecordingFile::Read(const OnEvent& onEvent, End end, Faults faults) {
  bool isFine = true;
  const auto report = [&](RecordingReader::Fault fault, std::size_t line, const std::string& reason) {
    isFine = isFine && fault == RecordingReader::Fault::kCutOff;
    if (faults == Faults::kSilent) return;
    std::cout << std::flush;  // The lines of both in their order, where they lead to one terminal.
    std::cerr << FileTitle(m_name) << ':' << line << ": " << Printable(reason) << '\n';
  };
  std::optional<RecordingReader> reader(std::in_place, RecordingReader::Sink{onEvent, report});
  std::array<char, 65536> chunk;
  for (;;) {
    const int descriptor = ::fileno(m_stream.get());  // A stream would wait until its buffer is full.
    const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
    if (count < 0) {
      if (errno == EINTR) continue;
      throw UnreadableRecording(m_name);
    }
    if (!reader->Feed({chunk.data(), static_cast<std::size_t>(count)})) return false;
    if (count > 0) continue;
    if (end == End::kOfFile || reader->HasEnded() || !CanGrow(descriptor)) break;
    if (reader->GoesOn() && openNext()) {
      reader.emplace(RecordingReader::Sink{onEvent, report});
    } else if (!WaitForMore()) {
      break;
    }
  }
  reader->Finish();
  return isFine;
}

// False while the name is the full file's still, or nobody's.
bool RecordingFile::openNext() {
  Stream next(std::fopen(m_name.c_str(), "rbe"));
  struct stat full{}, other{};
  if (next == nullptr || ::fstat(::fileno(m_stream.get()), &full) != 0 ||
      ::fstat(::fileno(next.get()), &other) != 0 || full.st_ino == other.st_ino)
    return false;
  m_stream = std::move(next);
  return true;
}
