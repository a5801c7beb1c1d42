// SPDX-License-Identifier: Apache-2.0
#include "Watchdog.h"

#include <execinfo.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

void PrintStack(int) {
  std::array<void*, 64> frames{};
  const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
  backtrace_symbols_fd(frames.data(), count, STDERR_FILENO);
}

// Asks each thread to print its own stack, one after the other so that they do not mix.
void PrintAllStacks() {
  const long self = syscall(SYS_gettid);
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    const std::string name = entry.path().filename();
    const long thread = std::strtol(name.c_str(), nullptr, 10);
    if (thread == self) continue;
    std::fprintf(stderr, "stack of thread %ld:\n", thread);
    syscall(SYS_tgkill, getpid(), thread, SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

}  // namespace

Watchdog::Watchdog(std::chrono::milliseconds limit) {
  // The first call loads what the handler needs, which a handler may not do.
  std::array<void*, 1> frame{};
  backtrace(frame.data(), 1);
  struct sigaction action{};
  action.sa_handler = &PrintStack;
  action.sa_flags = SA_RESTART;
  sigaction(SIGUSR1, &action, nullptr);
  m_thread = std::thread([this, limit] { watch(limit); });
}

Watchdog::~Watchdog() {
  {
    std::lock_guard lock(m_mutex);
    m_done = true;
  }
  m_changed.notify_one();
  m_thread.join();
}

void Watchdog::watch(std::chrono::milliseconds limit) {
  std::unique_lock lock(m_mutex);
  if (m_changed.wait_for(lock, limit, [this] { return m_done; })) return;
  std::fprintf(stderr, "not finished after %lld ms\n", static_cast<long long>(limit.count()));
  PrintAllStacks();
  std::abort();
}
