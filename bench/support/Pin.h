// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sched.h>

/// Keeps the calling thread on one CPU while it lives; threads that it starts meanwhile stay there.
/// Without it two threads often share a CPU, and the measurement shows no contention.
class Pin {
 public:
  /// `index` counts the CPUs that the process may use. REQUIRES: index < Cpus().
  explicit Pin(int index);
  ~Pin();
  Pin(const Pin&) = delete;
  Pin& operator=(const Pin&) = delete;

  static int Cpus();

 private:
  cpu_set_t m_before;
};
