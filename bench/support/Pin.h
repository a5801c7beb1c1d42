#pragma once

#include <sched.h>

/// Keeps the calling thread on one CPU while it lives; threads that it starts meanwhile stay there for good.
/// Left to themselves two threads often share a CPU, and contention vanishes from what is measured.
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
