// SPDX-License-Identifier: Apache-2.0
#include "StandardError.h"

#include <poll.h>
#include <pthread.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>
#include <iterator>
#include <utility>

#include "Mutex.h"
#include "util/CCmTextFormator.h"

namespace cm::internal {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLongestWait{1000};

// From the look at standard error to the end of the write: no other thread's line takes the room. It is held
// for as long as standard error is waited for.
Mutex g_mutex;
// Since standard error took the last line. While it is not 0, nothing waits.
unsigned long g_lostLines UTIL_LOCKING(guarded_by(g_mutex)) = 0;

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

/// Whether standard error takes a line, or refuses it, without a wait.
bool IsReady(std::chrono::milliseconds longestWait) {
  const Clock::time_point end = Clock::now() + longestWait;
  pollfd standardError{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    const int ready = poll(&standardError, 1, left > 0 ? static_cast<int>(left) : 0);
    if (ready != -1 || errno != EINTR) return ready != 0;
  }
}

void WriteLine(int level, const char* module, const char* text, std::size_t length) {
  char digits[12];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, level);
  const auto part = [](const char* from, std::size_t size) { return iovec{const_cast<char*>(from), size}; };
  const iovec line[] = {part("[", 1),  part(module, std::strlen(module)),
                        part(" ", 1),  part(digits, static_cast<std::size_t>(end.ptr - digits)),
                        part("] ", 2), part(text, length),
                        part("\n", 1)};
  [[maybe_unused]] const ssize_t written = ::writev(STDERR_FILENO, line, std::size(line));
}

}  // namespace

void WriteToStandardError(void*, int level, const char* module, const char* text, unsigned int length) {
  const WithoutBrokenPipe withoutBrokenPipe;
  const Lock lock(g_mutex);
  if (!IsReady(g_lostLines == 0 ? kLongestWait : std::chrono::milliseconds(0))) {
    ++g_lostLines;
    return;
  }
  if (const unsigned long lost = std::exchange(g_lostLines, 0); lost != 0) {
    char buffer[64];
    CCmTextFormator line(buffer, sizeof buffer);
    line << lost << " lines lost: nobody read standard error";
    WriteLine(0, "UTIL", line, line.tell());
  }
  WriteLine(level, module, text, length);
}

}  // namespace cm::internal
