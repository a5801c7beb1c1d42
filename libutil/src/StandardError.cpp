// SPDX-License-Identifier: Apache-2.0
#include "StandardError.h"

#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <limits>
#include <span>

#include "Mutex.h"
#include "util/CCmTextFormator.h"

namespace cm::internal {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLongestWait{1000};
constexpr std::size_t kParts = 8;  // Of a line.

// From the look at standard error to the end of the write: no other thread's line takes the room. It is held
// for as long as standard error is waited for.
Mutex g_mutex;
// Since standard error took the last line. While it is not 0, nothing waits.
unsigned long g_lostLines UTIL_LOCKING(guarded_by(g_mutex)) = 0;
// Whether what was written last is the beginning of a line.
bool g_isCutOff UTIL_LOCKING(guarded_by(g_mutex)) = false;

/// Writing to a pipe that nobody reads raises SIGPIPE on the thread, which would end the process for a trace
/// line: it is blocked meanwhile, and taken back. One that was pending before stays.
class WithoutBrokenPipe {
 public:
  WithoutBrokenPipe() {
    sigemptyset(&m_brokenPipe);
    sigaddset(&m_brokenPipe, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    m_wasPending = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &m_brokenPipe, &m_before);
  }
  ~WithoutBrokenPipe() {
    constexpr timespec kNoWait{.tv_sec = 0, .tv_nsec = 0};
    while (!m_wasPending && sigtimedwait(&m_brokenPipe, nullptr, &kNoWait) == -1 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
  }
  WithoutBrokenPipe(const WithoutBrokenPipe&) = delete;
  WithoutBrokenPipe& operator=(const WithoutBrokenPipe&) = delete;

 private:
  sigset_t m_brokenPipe;
  sigset_t m_before;
  bool m_wasPending;
};

/// Whether standard error takes something, or refuses it, before `end`.
bool IsReady(Clock::time_point end) {
  pollfd standardError{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    const int ready = poll(&standardError, 1, left > 0 ? static_cast<int>(left) : 0);
    if (ready != -1 || errno != EINTR) return ready != 0;
  }
}

/// How many bytes it takes without a wait once it is ready. A file takes everything: a line stays whole there
/// beside those of other processes.
std::size_t LongestPiece() {
  struct stat standardError{};
  const bool isFile = fstat(STDERR_FILENO, &standardError) == 0 && S_ISREG(standardError.st_mode);
  return isFile ? std::numeric_limits<std::size_t>::max() : PIPE_BUF;
}

enum class Outcome : std::uint8_t {
  kTaken,
  kNotNow,  ///< somebody else took the room that was there, or a signal came
  kRefused,
};

/// Writes the first bytes of the parts, `longest` at most, and takes them off.
Outcome WritePiece(std::span<iovec>& parts, std::size_t longest) {
  std::array<iovec, kParts> piece{};
  std::transform(parts.begin(), parts.end(), piece.begin(), [&](const iovec& part) {
    const std::size_t size = std::min(part.iov_len, longest);
    longest -= size;
    return iovec{part.iov_base, size};
  });
  const ssize_t result = ::writev(STDERR_FILENO, piece.data(), static_cast<int>(parts.size()));
  if (result < 0 && (errno == EAGAIN || errno == EINTR)) return Outcome::kNotNow;
  if (result <= 0) return Outcome::kRefused;
  auto written = static_cast<std::size_t>(result);
  for (; !parts.empty() && parts.front().iov_len <= written; parts = parts.subspan(1))
    written -= parts.front().iov_len;
  if (parts.empty()) return Outcome::kTaken;
  parts.front().iov_base = static_cast<char*>(parts.front().iov_base) + written;
  parts.front().iov_len -= written;
  return Outcome::kTaken;
}

/// Returns false when standard error does not take all of the line: when it takes nothing for so long. After
/// the line's first piece, that is the longest wait.
bool WriteLine(int level, const char* module, const char* text, std::size_t length,
               std::chrono::milliseconds wait) UTIL_LOCKING(requires_capability(g_mutex)) {
  char digits[12];
  const char* const digitsEnd = std::to_chars(digits, digits + sizeof digits, level).ptr;
  const auto part = [](const char* from, std::size_t size) { return iovec{const_cast<char*>(from), size}; };
  std::array<iovec, kParts> line = {part("\n", g_isCutOff ? 1 : 0),
                                    part("[", 1),
                                    part(module, std::strlen(module)),
                                    part(" ", 1),
                                    part(digits, static_cast<std::size_t>(digitsEnd - digits)),
                                    part("] ", 2),
                                    part(text, length),
                                    part("\n", 1)};
  std::span<iovec> left(line);
  Clock::time_point end = Clock::now() + wait;
  for (const std::size_t longest = LongestPiece(); !left.empty();) {
    if (!IsReady(end)) return false;
    switch (WritePiece(left, longest)) {
      case Outcome::kRefused:
        return true;
      case Outcome::kNotNow:
        if (Clock::now() >= end) return false;
        break;
      case Outcome::kTaken:
        g_isCutOff = !left.empty();
        end = Clock::now() + kLongestWait;
    }
  }
  return true;
}

}  // namespace

void WriteToStandardError(void*, int level, const char* module, const char* text, unsigned int length) {
  const WithoutBrokenPipe withoutBrokenPipe;
  const Lock lock(g_mutex);
  if (g_lostLines != 0) {
    char buffer[64];
    CCmTextFormator line(buffer, sizeof buffer);
    line << g_lostLines << " lines lost: nobody read standard error";
    if (WriteLine(0, "UTIL", line, line.tell(), std::chrono::milliseconds(0))) g_lostLines = 0;
  }
  if (g_lostLines != 0 || !WriteLine(level, module, text, length, kLongestWait)) ++g_lostLines;
}

}  // namespace cm::internal
