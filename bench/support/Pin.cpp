// SPDX-License-Identifier: Apache-2.0
#include "support/Pin.h"

namespace {

cpu_set_t CpusOfProcess() {
  cpu_set_t cpus;
  sched_getaffinity(0, sizeof cpus, &cpus);
  return cpus;
}

const cpu_set_t kCpus = CpusOfProcess();  // Before anything is pinned.

}  // namespace

Pin::Pin(int index) {
  sched_getaffinity(0, sizeof m_before, &m_before);
  int cpu = 0;
  while (!CPU_ISSET(cpu, &kCpus) || index-- > 0) ++cpu;
  cpu_set_t only;
  CPU_ZERO(&only);
  CPU_SET(cpu, &only);
  sched_setaffinity(0, sizeof only, &only);
}

Pin::~Pin() {
  sched_setaffinity(0, sizeof m_before, &m_before);
}

int Pin::Cpus() {
  return CPU_COUNT(&kCpus);
}
