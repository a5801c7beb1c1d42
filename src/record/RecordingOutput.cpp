// SPDX-License-Identifier: Apache-2.0
#include "record/RecordingOutput.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

#include "record/RecordingFault.h"

namespace kalStore::internal {

namespace {

constexpr const char* kNext = "next";
constexpr const char* kNoRegularFile = "it is no regular file";
constexpr int kLook = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;

[[noreturn]] void ThrowSystemFault() {
  throw RecordingFault(std::generic_category().message(errno));
}

// The number is none of a standard stream that is closed: what is written to that would be in the file.
int OpenToWrite(const std::string& file, int flags) {
  constexpr mode_t kOwner = S_IRUSR | S_IWUSR;
  const int first =
      ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | flags, kOwner);
  if (first == -1 || first > STDERR_FILENO) return first;
  const int descriptor = ::fcntl(first, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int fault = errno;
  ::close(first);
  errno = fault;
  return descriptor;
}

// Whether another recording writes the file. Where files cannot be locked, nobody is found.
bool IsOthers(int descriptor, int lock) {
  return ::flock(descriptor, lock | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}
bool IsOthers(const std::string& file) {
  const int descriptor = ::open(file.c_str(), kLook);
  if (descriptor == -1) return false;
  const bool isOthers = IsOthers(descriptor, LOCK_SH);
  ::close(descriptor);
  return isOthers;
}

// Whatever has the name, and nobody writes; not what a link leads to.
void Remove(const std::string& file) {
  if (::unlink(file.c_str()) != 0 && errno != ENOENT) ThrowSystemFault();
}

bool AreOne(const struct stat& first, const struct stat& second) {
  return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// Whether both names are those of one file.
bool AreOne(const std::string& first, const std::string& second) {
  struct stat one{}, other{};
  return ::stat(first.c_str(), &one) == 0 && ::stat(second.c_str(), &other) == 0 && AreOne(one, other);
}

// Whether the file that is open has the name.
bool HasName(int descriptor, const std::string& file) {
  struct stat opened{}, named{};
  if (::fstat(descriptor, &opened) != 0 || ::stat(file.c_str(), &named) != 0) ThrowSystemFault();
  return AreOne(opened, named);
}

// The number that the file has in a set, as its first line says; "" when it is in none, or still written.
std::string PartIn(const std::string& file) {
  const int descriptor = ::open(file.c_str(), kLook);
  if (descriptor == -1) return "";
  struct stat status{};
  std::array<char, 256> bytes;
  const bool isFree =
      ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && !IsOthers(descriptor, LOCK_SH);
  const ssize_t size = isFree ? ::read(descriptor, bytes.data(), bytes.size()) : 0;
  ::close(descriptor);
  if (size <= 0) return "";
  const std::string_view begin(bytes.data(), static_cast<std::size_t>(size));
  const std::string_view line = begin.substr(0, begin.find('\n'));
  constexpr std::string_view kPart = ",\"part\":";
  const std::size_t part = line.rfind(kPart);
  if (!line.starts_with(R"({"type":"recording",)") || !line.ends_with('}') || part == std::string_view::npos)
    return "";
  return std::string(line.substr(part + kPart.size(), line.size() - part - kPart.size() - 1));
}

}  // namespace

RecordingOutput::RecordingOutput(std::string file, std::uint64_t largest, std::size_t files)
    : m_file(std::move(file)), m_next(m_file + "." + kNext), m_largest(largest), m_files(files) {}

// Still open in a forked process alone: unlocking it there would unlock it for the parent.
RecordingOutput::~RecordingOutput() {
  if (m_current.descriptor != -1) ::close(m_current.descriptor);
}

// The system would take the beginning of a name with a zero byte for all of it: another file. Of a set, a
// symbolic link would be renamed, and the file be none of the next recording's: the set is where the file is.
void RecordingOutput::Open() {
  if (m_file.find('\0') != std::string::npos) throw RecordingFault("its name has a zero byte");
  m_current = open(m_file, 0);
  if (struct stat named{}; ::lstat(m_file.c_str(), &named) == 0 && S_ISLNK(named.st_mode)) {
    const std::unique_ptr<char, decltype(&std::free)> file(::realpath(m_file.c_str(), nullptr), std::free);
    if (file == nullptr) ThrowSystemFault();
    m_file = file.get();
    m_next = m_file + "." + kNext;
  }
  if (!m_current.isDevice) removeParts();
}

// The next file is whole before it takes its place, and all names are there before one is changed: whatever
// fails, the recording's file has its name, and its end can be written to it. The oldest one goes first:
// the others are as many as there may be with the next one. The full file has both names for a moment, so
// that the set always has a last file; where no file can have two, it has none for a moment. The next file is
// a new one: what a crash has left, or a link to a file of somebody else, goes.
void RecordingOutput::Rotate(std::string_view end, std::string_view begin) {
  const std::string full = nameOf(m_part);
  if (!HasName(m_current.descriptor, m_file)) throw RecordingFault("another file has its name");
  if (IsOthers(full) || IsOthers(m_next)) throw RecordingFault("another recording writes its next part");
  Remove(full);
  if (m_part >= m_files) Remove(nameOf(m_part + 1 - m_files));
  Remove(m_next);
  Opened next = open(m_next, O_EXCL);
  try {
    write(next, begin);
    write(m_current, end);
    if (::link(m_file.c_str(), full.c_str()) != 0 && std::rename(m_file.c_str(), full.c_str()) != 0) {
      ThrowSystemFault();
    }
    if (std::rename(m_next.c_str(), m_file.c_str()) != 0) {
      const int fault = errno;
      // Of a file that has both names, this renames nothing.
      if (std::rename(full.c_str(), m_file.c_str()) == 0) ::unlink(full.c_str());
      errno = fault;
      ThrowSystemFault();
    }
  } catch (...) {
    ::unlink(m_next.c_str());
    close(next);
    throw;
  }
  close(m_current);
  m_current = next;
  ++m_part;
}

void RecordingOutput::CheckIsThere() const {
  struct stat status{};
  if (::fstat(m_current.descriptor, &status) != 0) ThrowSystemFault();
  if (status.st_nlink == 0) throw RecordingFault("the file was removed");
}

// It is emptied only once it is known to be nobody else's. A pipe is refused: its reader could hold up the
// recording, and end the process by leaving.
RecordingOutput::Opened RecordingOutput::open(const std::string& file, int flags) const {
  Opened opened;
  opened.descriptor = OpenToWrite(file, flags);
  if (opened.descriptor == -1) {
    // What a pipe says that nobody reads.
    if (errno == ENXIO) throw RecordingFault(kNoRegularFile);
    ThrowSystemFault();
  }
  try {
    struct stat status{};
    if (::fstat(opened.descriptor, &status) != 0) ThrowSystemFault();
    opened.isDevice = S_ISCHR(status.st_mode);
    if (opened.isDevice && !IsRotated()) return opened;  // Of a set, it would be renamed.
    if (!S_ISREG(status.st_mode)) throw RecordingFault(kNoRegularFile);
    // The other one may just have gone on in its next file, and have left this one as a part of its set.
    if (IsOthers(opened.descriptor, LOCK_EX) || !HasName(opened.descriptor, file))
      throw RecordingFault("another recording writes it");
    if (::ftruncate(opened.descriptor, 0) != 0) ThrowSystemFault();
  } catch (...) {
    ::close(opened.descriptor);
    throw;
  }
  return opened;
}

// What is there of lines that do not fit goes: it leaves room for the end. Where that fails, a reader takes
// the last line for an end that is cut off.
void RecordingOutput::write(Opened& opened, std::string_view lines) {
  std::size_t written = 0;
  while (written < lines.size()) {
    const ssize_t count = ::write(opened.descriptor, lines.data() + written, lines.size() - written);
    if (count == -1 && errno == EINTR) continue;
    if (count == -1) {
      const int fault = errno;
      if (::ftruncate(opened.descriptor, static_cast<off_t>(opened.size)) == 0)
        ::lseek(opened.descriptor, static_cast<off_t>(opened.size), SEEK_SET);
      errno = fault;
      ThrowSystemFault();
    }
    written += static_cast<std::size_t>(count);
  }
  opened.size += written;
}

// A process that was forked meanwhile may still have the file open: closing it here would not unlock it.
void RecordingOutput::close(Opened& opened) {
  if (opened.descriptor == -1) return;
  ::flock(opened.descriptor, LOCK_UN);
  ::close(std::exchange(opened.descriptor, -1));
}

// Of an earlier set. They would stay for ever, or be taken for parts of this one. What cannot be removed
// stays. The standard's directory_iterator and equivalent() would end the process where memory runs out.
void RecordingOutput::removeParts() const {
  const std::size_t nameAt = m_file.rfind('/') + 1;
  const std::string folder = m_file.substr(0, nameAt), prefix = m_file.substr(nameAt) + ".";
  const std::unique_ptr<DIR, int (*)(DIR*)> list(::opendir(folder.c_str()), ::closedir);
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the list is this thread's own.
  while (const dirent* const entry = list ? ::readdir(list.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (!name.starts_with(prefix)) continue;
    const std::string_view number = name.substr(prefix.size());
    if (number != kNext && number.find_first_not_of("0123456789") != std::string_view::npos) continue;
    const std::string file = m_file + "." + std::string(number), part = PartIn(file);
    // A crash may have left the recording's file the name of a part as well.
    if (AreOne(file, m_file)) ::unlink(file.c_str());
    if (!part.empty() && (number == kNext || number == part)) ::unlink(file.c_str());
  }
}

std::string RecordingOutput::nameOf(std::uint64_t part) const {
  return m_file + "." + std::to_string(part);
}

}  // namespace kalStore::internal
