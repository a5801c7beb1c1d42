// SPDX-License-Identifier: Apache-2.0
#include "checker/Crash.h"

#include <csignal>

#include "checker/Checker.h"

namespace model {

namespace {

constexpr std::size_t kStackSize = std::size_t{256} << 10;
constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

void OnSignal(int signal) {
  Checker* const checker = RunningChecker();
  if (checker != nullptr) checker->Fail(signal == SIGABRT ? "std::terminate() or abort()" : "a crash");
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

Crash::Crash() : m_stack(kStackSize) {
  stack_t stack{};
  stack.ss_sp = m_stack.data();
  stack.ss_size = m_stack.size();
  sigaltstack(&stack, nullptr);
  struct sigaction action{};
  action.sa_handler = &OnSignal;
  action.sa_flags = SA_ONSTACK;
  for (const int signal : kSignals) sigaction(signal, &action, nullptr);
}

Crash::~Crash() {
  for (const int signal : kSignals) std::signal(signal, SIG_DFL);
  stack_t stack{};
  stack.ss_flags = SS_DISABLE;
  sigaltstack(&stack, nullptr);
}

}  // namespace model
