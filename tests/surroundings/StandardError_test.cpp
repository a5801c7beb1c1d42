// SPDX-License-Identifier: Apache-2.0
// Trace lines on a standard error that is closed, or that nobody reads.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "tessel/KalConfigRegistry.h"
#include "util/util_trace.h"

namespace {

void TraceText(const std::string& text) {
  util_adapter_trace(0, "UTIL", text.c_str(), static_cast<unsigned int>(text.size()));
}

/// A line whose pieces all differ.
std::string LongLine(std::size_t size) {
  std::string line(size, ' ');
  std::size_t place = 0;
  for (char& letter : line) letter = static_cast<char>('a' + place++ % 23);
  return line;
}

/// Standard error is a pipe as long as this lives.
class ErrorPipe {
 public:
  ErrorPipe() : m_before(dup(STDERR_FILENO)) {
    if (pipe(m_ends.data()) != 0) std::abort();
    dup2(m_ends[1], STDERR_FILENO);
    close(m_ends[1]);
  }
  ~ErrorPipe() {
    dup2(m_before, STDERR_FILENO);
    close(m_before);
    CloseReader();
  }
  ErrorPipe(const ErrorPipe&) = delete;
  ErrorPipe& operator=(const ErrorPipe&) = delete;

  void CloseReader() {
    if (m_ends[0] != -1) close(m_ends[0]);
    m_ends[0] = -1;
  }
  /// Until it takes no byte more.
  void Fill() const {
    const int flags = fcntl(STDERR_FILENO, F_GETFL);
    fcntl(STDERR_FILENO, F_SETFL, flags | O_NONBLOCK);
    while (write(STDERR_FILENO, "x", 1) == 1) {
    }
    fcntl(STDERR_FILENO, F_SETFL, flags);
  }
  /// What is in it.
  std::string Read() const {
    fcntl(m_ends[0], F_SETFL, O_NONBLOCK);
    std::string text;
    for (std::string part = ReadPart(); !part.empty(); part = ReadPart()) text += part;
    return text;
  }
  /// At most PIPE_BUF bytes of it. A full pipe takes as many then.
  std::string ReadPart() const {
    std::array<char, PIPE_BUF> part{};
    const ssize_t size = read(m_ends[0], part.data(), part.size());
    return {part.data(), size > 0 ? static_cast<std::size_t>(size) : 0};
  }

 private:
  const int m_before;
  std::array<int, 2> m_ends{};
};

/// What another process does each time standard error has been found ready, for as long as this lives.
class WhenReady {
 public:
  explicit WhenReady(std::function<void()> act) { s_act = std::move(act); }
  ~WhenReady() { s_act = nullptr; }
  WhenReady(const WhenReady&) = delete;
  WhenReady& operator=(const WhenReady&) = delete;

  static void Act() {
    if (s_act) s_act();
  }

 private:
  static inline std::function<void()> s_act;
};

/// Each wait for standard error takes so long, by the clock that chrono has for as long as this lives.
class LateReader {
 public:
  LateReader() { s_nowMs = 1; }
  ~LateReader() { s_nowMs = 0; }
  LateReader(const LateReader&) = delete;
  LateReader& operator=(const LateReader&) = delete;

  /// False when somebody who waits so long gives up.
  static bool IsAwaited(int timeoutMs) {
    if (s_nowMs != 0) s_nowMs += std::min(timeoutMs, kLateMs);
    return s_nowMs == 0 || timeoutMs >= kLateMs;
  }
  /// 0: that of the system.
  static long NowMs() { return s_nowMs; }

 private:
  static constexpr int kLateMs = 700;
  static inline long s_nowMs = 0;
};

/// The next wait for standard error ends by a signal.
class InterruptedWait {
 public:
  InterruptedWait() { s_isNext = true; }

  static bool IsThis() { return std::exchange(s_isNext, false); }

 private:
  static inline bool s_isNext = false;
};

bool IsPending(int signal) {
  sigset_t pending;
  sigpending(&pending);
  return sigismember(&pending, signal) == 1;
}

/// What the next functions leave uninitialised is no zero.
[[gnu::noinline]] void FillStack() {
  std::array<unsigned char, 65536> stack;
  stack.fill(0xFF);
  asm volatile("" : : "r"(stack.data()) : "memory");
}

/// Whoever reads again is shown that a line is missing.
void ExpectALineLost(const ErrorPipe& pipe) {
  pipe.Read();
  TraceText("somebody sees it");
  EXPECT_EQ(pipe.Read(),
            "[UTIL 0] 1 lines lost: nobody read standard error\n"
            "[UTIL 0] somebody sees it\n");
}

}  // namespace

// The libraries call these, for the program comes first where they are looked up.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
  const long nowMs = LateReader::NowMs();
  if (nowMs == 0) return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  *time = {.tv_sec = nowMs / 1000, .tv_nsec = nowMs % 1000 * 1'000'000L};
  return 0;
}

extern "C" __attribute__((visibility("default"))) int poll(pollfd* files, nfds_t count, int timeout) {
  if (InterruptedWait::IsThis()) {
    errno = EINTR;
    return -1;
  }
  if (!LateReader::IsAwaited(timeout)) return 0;
  timespec limit{.tv_sec = timeout / 1000, .tv_nsec = timeout % 1000 * 1'000'000L};
  const auto ready =
      static_cast<int>(syscall(SYS_ppoll, files, count, timeout < 0 ? nullptr : &limit, nullptr, 0));
  if (ready > 0) WhenReady::Act();
  return ready;
}

TEST(StandardError, MayBeClosed) {
  {
    const ErrorPipe pipe;
    close(STDERR_FILENO);
    TraceText("nobody sees it");
  }
  const ErrorPipe pipe;
  TraceText("somebody sees it");
  EXPECT_EQ(pipe.Read(), "[UTIL 0] somebody sees it\n") << "no line was waited for";
}

TEST(StandardError, MayBeAPipeWithoutAReader) {
  ErrorPipe pipe;
  pipe.CloseReader();
  TraceText("nobody sees it");
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  EXPECT_EQ(sigismember(&blocked, SIGPIPE), 0);
}

TEST(StandardError, WithoutAReaderLeavesSignalsThatWerePending) {
  ErrorPipe pipe;
  pipe.CloseReader();
  sigset_t brokenPipe;
  sigemptyset(&brokenPipe);
  sigaddset(&brokenPipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
  TraceText("nobody sees it");
  EXPECT_FALSE(IsPending(SIGPIPE));
  raise(SIGPIPE);
  TraceText("nobody sees it");
  EXPECT_TRUE(IsPending(SIGPIPE));
  int taken = 0;
  sigwait(&brokenPipe, &taken);
  pthread_sigmask(SIG_UNBLOCK, &brokenPipe, nullptr);
}

TEST(StandardError, WithoutAReaderTakesNoOtherSignal) {
  ErrorPipe pipe;
  pipe.CloseReader();
  sigset_t another;
  sigemptyset(&another);
  sigaddset(&another, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &another, nullptr);
  raise(SIGUSR1);
  FillStack();
  TraceText("nobody sees it");
  EXPECT_TRUE(IsPending(SIGUSR1));
  int taken = 0;
  sigwait(&another, &taken);
  pthread_sigmask(SIG_UNBLOCK, &another, nullptr);
}

TEST(StandardError, ThatNobodyReadsLosesLinesAndSaysHowMany) {
  const ErrorPipe pipe;
  pipe.Fill();
  for (int i = 0; i < 17; ++i) {
    errno = EINTR;  // Of whatever came before.
    TraceText("nobody sees it");
  }
  pipe.Read();
  TraceText("somebody sees it");
  TraceText("and this");
  EXPECT_EQ(pipe.Read(),
            "[UTIL 0] 17 lines lost: nobody read standard error\n"
            "[UTIL 0] somebody sees it\n"
            "[UTIL 0] and this\n");
}

TEST(StandardError, ThatNobodyReadsCutsALongLineOff) {
  const ErrorPipe pipe;
  pipe.Fill();
  pipe.ReadPart();
  TraceText(std::string(2 * std::size_t{PIPE_BUF}, 'a'));
  TraceText("nobody sees it");
  const std::string text = pipe.Read();
  const std::string start = "[UTIL 0] ";
  EXPECT_EQ(text.substr(text.find('[')), start + std::string(PIPE_BUF - start.size(), 'a'));
  TraceText("somebody sees it");
  TraceText("and this");
  EXPECT_EQ(pipe.Read(),
            "\n[UTIL 0] 2 lines lost: nobody read standard error\n"
            "[UTIL 0] somebody sees it\n"
            "[UTIL 0] and this\n");
}

TEST(StandardError, HasALineAsAWholeThatIsLongerThanThePipe) {
  const ErrorPipe pipe;
  const std::string line = LongLine(std::size_t{64} * PIPE_BUF + 1);
  std::string text;
  std::thread reader([&] {
    while (text.find('\n') == std::string::npos) text += pipe.ReadPart();
  });
  TraceText(line);
  reader.join();
  EXPECT_EQ(text, "[UTIL 0] " + line + '\n');
  TraceText("next");
  EXPECT_EQ(pipe.Read(), "[UTIL 0] next\n");
}

// It stays whole beside those of other processes.
TEST(StandardError, ThatIsAFileTakesALongLineAtOnce) {
  const ErrorPipe pipe;  // In its end, standard error is what it was.
  std::FILE* const file = std::tmpfile();
  ASSERT_NE(file, nullptr);
  dup2(fileno(file), STDERR_FILENO);
  const std::string line = LongLine(3 * std::size_t{PIPE_BUF});
  int pieces = 0;
  {
    const WhenReady counted([&] { ++pieces; });
    TraceText(line);
  }
  EXPECT_EQ(pieces, 1);
  EXPECT_EQ(lseek(STDERR_FILENO, 0, SEEK_CUR), static_cast<off_t>(line.size() + 10));
  std::fclose(file);
}

TEST(StandardError, IsNotTakenForInterruptedByAnOldErrorNumber) {
  const ErrorPipe pipe;
  errno = EINTR;
  TraceText("somebody sees it");
  EXPECT_EQ(pipe.Read(), "[UTIL 0] somebody sees it\n");
}

TEST(StandardError, ThatNobodyReadsIsAwaitedNoLongerAfterASignal) {
  const ErrorPipe pipe;
  pipe.Fill();
  [[maybe_unused]] const InterruptedWait signal;
  TraceText("nobody sees it");
  ExpectALineLost(pipe);
}

// However little is left for the last piece.
TEST(StandardError, HasLinesWholeThatAreAboutAsLongAsAPiece) {
  const ErrorPipe pipe;
  for (std::size_t size = PIPE_BUF - 12; size < PIPE_BUF; ++size) {
    const std::string line = LongLine(size);
    TraceText(line);
    TraceText("next");
    EXPECT_EQ(pipe.Read(), "[UTIL 0] " + line + "\n[UTIL 0] next\n");
  }
}

TEST(StandardError, IsAwaitedForASecondByEachPieceOfALine) {
  const ErrorPipe pipe;
  const std::string line = LongLine(3 * std::size_t{PIPE_BUF});
  {
    const LateReader reader;
    TraceText(line);
  }
  EXPECT_EQ(pipe.Read(), "[UTIL 0] " + line + '\n');
}

TEST(StandardError, WhoseRoomAnotherTakesIsWaitedFor) {
  const ErrorPipe pipe;
  fcntl(STDERR_FILENO, F_SETFL, O_NONBLOCK);
  const std::string line = LongLine(2 * std::size_t{PIPE_BUF});
  for (const bool isFullAtOnce : {true, false}) {
    int looks = isFullAtOnce ? 1 : 0;
    std::string text;
    std::atomic<bool> isOver{false};
    std::thread reader;
    const WhenReady taken([&] {
      if (++looks != 2) return;  // Between the look and the first piece, or the second one.
      text = pipe.Read();
      pipe.Fill();
      fcntl(STDERR_FILENO, F_SETFL, O_NONBLOCK);
      reader = std::thread([&] {
        std::string part;
        while (!isOver) part += pipe.Read();
        part += pipe.Read();
        text += part.substr(part.find_last_of('x') + 1);
      });
    });
    TraceText(line);
    isOver = true;
    reader.join();
    EXPECT_EQ(text, "[UTIL 0] " + line + '\n');
  }
}

TEST(StandardError, WhoseRoomAnotherAlwaysTakesLosesTheLineAndSaysSo) {
  const ErrorPipe pipe;
  {
    const WhenReady taken([&] {
      pipe.Read();
      pipe.Fill();
      fcntl(STDERR_FILENO, F_SETFL, O_NONBLOCK);
    });
    TraceText("nobody sees it");
  }
  ExpectALineLost(pipe);
}

TEST(StandardError, ThatNobodyReadsDoesNotHoldTheRegistryForEver) {
  const ErrorPipe pipe;
  pipe.Fill();
  set_external_trace_mask(2);
  // Each makes and ends stores, and so traces under the lock of the registry.
  const auto use = [](std::uint32_t callId) {
    kalStore::IKalConfig* store = nullptr;
    kalStore::CreateKalConfig(callId, &store);
    kalStore::CleanUpKalConfig(callId);
    kalStore::ReleaseKalConfig(store);
  };
  std::thread other([&] { use(7); });
  use(8);
  other.join();
  set_external_trace_mask(0);
  EXPECT_EQ(kalStore::GetKalConfigSizeForUT(), 0U);
  pipe.Read();
  TraceText("somebody sees it");  // No line is lost any more.
}
