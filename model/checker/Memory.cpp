// SPDX-License-Identifier: Apache-2.0
#include "checker/Memory.h"

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "checker/Image.h"
#include "checker/Region.h"

namespace model {

namespace {

// What is read before it is written is seen, or at least the same each time.
constexpr int kFresh = 0xA5;

}  // namespace

Memory::Memory()
    : m_data(ProgramData()),
      m_loaded(Region::EndLoad()),
      m_dataCells(static_cast<Cell*>(Region::Reserve(m_data.size() * sizeof(Cell)))),
      m_cells(static_cast<Cell*>(Region::Reserve(Region::kSize * sizeof(Cell)))) {}

void Memory::BeginExecution(std::uint32_t begin, bool reusesFreed) {
  m_begin = begin;
  // The region's own variables point at the end of what was loaded: at no block.
  for (int thread = 0; thread < kMostThreads; ++thread) m_next[thread] = Region::PartOf(thread);
  m_next[0] = m_loaded.data() + m_loaded.size() + 1;
  m_reusesFreed = reusesFreed;
  m_readers.clear();
  m_sizes.clear();
  m_freed.clear();
  for (const std::byte*& frame : m_frames) frame = nullptr;
}

void Memory::ForgetTimes() {
  madvise(m_cells, Region::kSize * sizeof(Cell), MADV_DONTNEED);
  madvise(m_dataCells, m_data.size() * sizeof(Cell), MADV_DONTNEED);
}

void* Memory::Allocate(std::size_t size, std::size_t alignment, int thread) {
  // Every block has an address of its own.
  if (size == 0) size = 1;
  if (m_reusesFreed) {
    std::vector<void*>& freed = m_freed[size];
    if (!freed.empty()) {
      void* const memory = freed.back();
      freed.pop_back();
      m_sizes[memory] = size;
      for (Cell& cell : cellsOf(memory, size)) cell = {};
      std::memset(memory, kFresh, size);
      return memory;
    }
  }
  std::byte* const memory = Align(m_next[thread], alignment);
  if (memory + size > Region::PartOf(thread) + Region::kPartSize) {
    std::fputs("model: the scenario takes too much memory\n", stderr);
    std::abort();
  }
  m_next[thread] = memory + size;
  m_sizes[memory] = size;
  std::memset(memory, kFresh, size);
  return memory;
}

Memory::Finding Memory::Free(void* memory, Accessor by) {
  if (memory < m_loaded.data() + m_loaded.size()) return {};
  const auto found = m_sizes.find(memory);
  if (found == m_sizes.end()) return {Fault::kFreed, {}, true};
  const std::size_t size = found->second;
  const Finding finding = Write(memory, size, by);
  m_sizes.erase(found);
  for (Cell& cell : cellsOf(memory, size)) cell.write = cell.write.Marked();
  if (m_reusesFreed) m_freed[size].push_back(memory);
  return finding;
}

std::span<Memory::Cell> Memory::cellsOf(const void* memory, std::size_t size) const {
  const auto* const at = static_cast<const std::byte*>(memory);
  if (at >= Region::Begin() && at + size <= Region::Begin() + Region::kSize) {
    return {m_cells + (at - Region::Begin()), size};
  }
  if (at >= m_data.data() && at + size <= m_data.data() + m_data.size()) {
    return {m_dataCells + (at - m_data.data()), size};
  }
  return {};
}

bool Memory::isStackGone(const void* memory, int thread) const {
  return IsOnAnothersStack(memory, thread) && memory < m_frames[Region::OwnerOfStack(memory)];
}

Memory::Finding Memory::lookFor(const void* memory, std::span<Cell> cells, Accessor by, bool isWrite) {
  if (isStackGone(memory, by.thread)) return {Fault::kStack, {}, false};
  for (const Cell& cell : cells) {
    if (!isOld(cell.write)) {
      if (cell.write.IsMarked()) return {Fault::kFreed, cell.write, true};
      if (!by.clock.Knows(cell.write)) return {Fault::kRace, cell.write, true};
    }
    if (!isWrite || isOld(cell.read)) continue;
    if (!cell.read.IsMarked()) {
      if (!by.clock.Knows(cell.read)) return {Fault::kRace, cell.read, false};
      continue;
    }
    const VectorClock& readers = m_readers[&cell];
    for (int thread = 0; thread < kMostThreads; ++thread) {
      const Epoch read(thread, readers.Of(thread));
      if (!by.clock.Knows(read)) return {Fault::kRace, read, false};
    }
  }
  return {};
}

Memory::Finding Memory::Read(const void* from, std::size_t size, Accessor by) {
  const std::span<Cell> cells = cellsOf(from, size);
  const Finding finding = lookFor(from, cells, by, false);
  const Epoch now(by.thread, by.clock.Of(by.thread));
  for (Cell& cell : cells) {
    if (isOld(cell.read) || (!cell.read.IsMarked() && by.clock.Knows(cell.read))) {
      cell.read = now;
      continue;
    }
    VectorClock& readers = m_readers[&cell];
    if (!cell.read.IsMarked()) readers = VectorClock(cell.read);
    readers.Set(now);
    cell.read = now.Marked();
  }
  return finding;
}

Memory::Finding Memory::Write(const void* to, std::size_t size, Accessor by) {
  const std::span<Cell> cells = cellsOf(to, size);
  const Finding finding = lookFor(to, cells, by, true);
  const Epoch now(by.thread, by.clock.Of(by.thread));
  for (Cell& cell : cells) cell = {now, {}};
  return finding;
}

Memory::Finding Memory::Synchronize(const void* object, std::size_t size, Accessor by) {
  return Read(object, size, by);
}

}  // namespace model
