// SPDX-License-Identifier: Apache-2.0
#include "boundary.h"

#include <atomic>

namespace {

std::atomic<int> g_flag{0};

class Word final : public BoundaryWord {
 public:
  void Set(std::uint32_t value) override { m_value.store(value, std::memory_order_relaxed); }

 private:
  std::atomic<std::uint32_t> m_value{0};
} g_word;

}  // namespace

int ReadBoundaryFlag() {
  return g_flag.load(std::memory_order_relaxed);
}

BoundaryWord& TheBoundaryWord() {
  return g_word;
}
