// SPDX-License-Identifier: Apache-2.0
// The system's waits for a word of memory: the C++ library's waits for atomic variables, which are inline in
// the program, end in them. The linker brings the program's calls here.
#include <linux/futex.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>

#include "checker/Checker.h"

// NOLINTBEGIN: the system's names.
extern "C" {

long __real_syscall(long number, ...) noexcept;
long __wrap_syscall(long number, ...) noexcept {
  long arguments[6];
  va_list list;
  va_start(list, number);
  for (long& argument : arguments) argument = va_arg(list, long);
  va_end(list);
  const auto [word, operation, value, time, word2, value2] = arguments;
  model::Checker* const checker = model::ActiveChecker();
  if (number != SYS_futex || checker == nullptr) {
    return __real_syscall(number, word, operation, value, time, word2, value2);
  }
  const model::Operation here(*checker, __builtin_return_address(0), __builtin_frame_address(0));
  const auto* const object = reinterpret_cast<const std::uint32_t*>(word);
  switch (static_cast<int>(operation) & ~FUTEX_PRIVATE_FLAG) {
    case FUTEX_WAIT:
      if (time != 0) break;
      if (checker->WaitWhile(object, static_cast<std::uint32_t>(value))) return 0;
      errno = EAGAIN;
      return -1;
    case FUTEX_WAKE:
      return checker->Notify(object, static_cast<int>(value));
    default:
      break;
  }
  checker->Fail("a wait of the system that the checker does not know");
}

}  // extern "C"
// NOLINTEND
