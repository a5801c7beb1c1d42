// SPDX-License-Identifier: Apache-2.0
// Looks for a block of the heap that nothing points at, neither the program's variables nor a block that is
// pointed at itself. Any word that could be a pointer is one.
#include <cstdio>
#include <cstring>
#include <map>

#include "checker/Memory.h"

namespace model {

namespace {

class Marks {
 public:
  explicit Marks(const std::unordered_map<const void*, std::size_t>& blocks) {
    for (const auto& [block, size] : blocks) m_unseen.emplace(static_cast<const std::byte*>(block), size);
  }

  void Scan(std::span<const std::byte> memory) {
    scan(memory);
    while (!m_toScan.empty()) {
      const std::span<const std::byte> block = m_toScan.back();
      m_toScan.pop_back();
      scan(block);
    }
  }
  const std::map<const std::byte*, std::size_t>& Unseen() const { return m_unseen; }

 private:
  void scan(std::span<const std::byte> memory) {
    for (std::size_t at = 0; at + sizeof(void*) <= memory.size(); at += sizeof(void*)) {
      const std::byte* pointer = nullptr;
      std::memcpy(&pointer, memory.data() + at, sizeof pointer);
      auto block = m_unseen.upper_bound(pointer);
      if (block == m_unseen.begin()) continue;
      --block;
      if (pointer >= block->first + block->second) continue;
      m_toScan.emplace_back(block->first, block->second);
      m_unseen.erase(block);
    }
  }

  std::map<const std::byte*, std::size_t> m_unseen;
  std::vector<std::span<const std::byte>> m_toScan;
};

}  // namespace

std::string Memory::FindLeak() const {
  if (m_sizes.empty()) return {};
  Marks marks(m_sizes);
  marks.Scan(m_data);
  marks.Scan(m_loaded);
  if (marks.Unseen().empty()) return {};
  const auto& [block, size] = *marks.Unseen().begin();
  char text[100];
  std::snprintf(text, sizeof text, "a leak: %zu blocks, the first of %zu bytes at %p", marks.Unseen().size(),
                size, static_cast<const void*>(block));
  return text;
}

}  // namespace model
