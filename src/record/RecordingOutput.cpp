// SPDX-License-Identifier: Apache-2.0
#include "record/RecordingOutput.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "record/RecordingFault.h"

namespace kalStore::internal {

namespace {

[[noreturn]] void ThrowSystemFault() {
  throw RecordingFault(std::generic_category().message(errno));
}

}  // namespace

RecordingOutput::RecordingOutput(std::string file, std::uint64_t largest, std::size_t files)
    : m_file(std::move(file)), m_largest(largest), m_files(files) {}

// Still open in a forked process alone: unlocking it there would unlock it for the parent.
RecordingOutput::~RecordingOutput() {
  if (m_descriptor >= 0) ::close(m_descriptor);
}

// It is emptied only once it is known to be nobody else's. A pipe is refused: its reader could hold up the
// recording, and end the process by leaving.
void RecordingOutput::Open() {
  constexpr mode_t kOwner = S_IRUSR | S_IWUSR;
  m_descriptor = ::open(m_file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kOwner);
  if (m_descriptor < 0) ThrowSystemFault();
  struct stat status{};
  if (::fstat(m_descriptor, &status) != 0) ThrowSystemFault();
  m_size = 0;
  if (S_ISCHR(status.st_mode) && !IsRotated()) return;  // Which is nothing to rename.
  if (!S_ISREG(status.st_mode)) throw RecordingFault("it is no regular file");
  // Where files cannot be locked, nobody is found.
  if (::flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
    throw RecordingFault("another recording writes it");
  if (::ftruncate(m_descriptor, 0) != 0) ThrowSystemFault();
}

void RecordingOutput::Rotate() {
  if (std::rename(m_file.c_str(), nameOf(m_part).c_str()) != 0) ThrowSystemFault();
  Close();
  ++m_part;
  // With this one they are as many as there may be.
  if (m_part > m_files && ::unlink(nameOf(m_part - m_files).c_str()) != 0 && errno != ENOENT)
    ThrowSystemFault();
  Open();
}

void RecordingOutput::Write(std::string_view lines) {
  std::size_t written = 0;
  while (written < lines.size()) {
    const ssize_t count = ::write(m_descriptor, lines.data() + written, lines.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      const int fault = errno;
      // What is there of the last line goes. Where that fails, a reader takes it for an end that is cut off.
      const std::size_t whole = lines.substr(0, written).rfind('\n') + 1;
      if (::ftruncate(m_descriptor, static_cast<off_t>(m_size + whole)) == 0) {
        m_size += whole;
        ::lseek(m_descriptor, static_cast<off_t>(m_size), SEEK_SET);
      }
      errno = fault;
      ThrowSystemFault();
    }
    written += static_cast<std::size_t>(count);
  }
  m_size += written;
}

// A process that was forked meanwhile may still have the file open: closing it here would not unlock it.
void RecordingOutput::Close() {
  if (m_descriptor < 0) return;
  ::flock(m_descriptor, LOCK_UN);
  ::close(std::exchange(m_descriptor, -1));
}

void RecordingOutput::CheckIsThere() const {
  struct stat status{};
  if (::fstat(m_descriptor, &status) != 0) ThrowSystemFault();
  if (status.st_nlink == 0) throw RecordingFault("the file was removed");
}

std::string RecordingOutput::nameOf(std::uint64_t part) const {
  return m_file + "." + std::to_string(part);
}

}  // namespace kalStore::internal
