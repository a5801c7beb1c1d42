// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "checker/Region.h"
#include "checker/VectorClock.h"

namespace model {

/// The memory of an execution: its heap, the stacks of its threads, and the program's own data. For each byte
/// it has who wrote and read it last, so that a plain access that does not happen after an earlier one is
/// found, under whatever schedule.
///
/// Freed memory is not used again in the execution, unless the scenario asks for it: every later access is
/// found.
class Memory {
 public:
  enum class Fault { kNone, kRace, kFreed, kStack };
  struct Finding {
    Fault fault = Fault::kNone;
    Epoch other;                ///< of a race: the earlier access
    bool isOtherWrite = false;  ///< the same
  };
  /// Who accesses.
  struct Accessor {
    int thread;
    const VectorClock& clock;
  };

  Memory();
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;

  void BeginExecution(std::uint32_t begin, bool reusesFreed);
  /// After the times of epochs began again.
  void ForgetTimes();

  /// Where a block is depends on the thread's own blocks alone, unless freed memory is used again.
  void* Allocate(std::size_t size, std::size_t alignment, int thread);
  Finding Free(void* memory, Accessor by);
  /// After an execution: what is allocated and nothing points at; empty when there is none.
  std::string FindLeak() const;

  Finding Read(const void* from, std::size_t size, Accessor by);
  Finding Write(const void* to, std::size_t size, Accessor by);
  /// An atomic access: it races with plain writes alone.
  Finding Synchronize(const void* object, std::size_t size, Accessor by);

  /// What is on a stack below the frame of its thread has ended.
  void SetFrame(int thread, const void* frame) { m_frames[thread] = static_cast<const std::byte*>(frame); }
  /// Whether an object is on the stack of another thread, which may return from its function at any time.
  static bool IsOnAnothersStack(const void* object, int thread) {
    return Region::IsOfStacks(object) && Region::OwnerOfStack(object) != thread;
  }
  void EndStack(int thread) { m_frames[thread] = Region::StackOf(thread) + Region::kStackSize; }

 private:
  // Of one byte. A marked write: freed. A marked read: by several threads, in m_readers.
  struct Cell {
    Epoch write;
    Epoch read;
  };

  std::span<Cell> cellsOf(const void* memory, std::size_t size) const;
  bool isStackGone(const void* memory, int thread) const;
  Finding lookFor(const void* memory, std::span<Cell> cells, Accessor by, bool isWrite);
  bool isOld(Epoch moment) const { return moment.Time() < m_begin; }

  // The program's variables, and the heap and the stacks; what was allocated at load comes first there.
  const std::span<std::byte> m_data;
  const std::span<std::byte> m_loaded;
  std::byte* m_next[kMostThreads] = {};  // In each thread's part of the heap.
  Cell* const m_dataCells;
  Cell* const m_cells;
  const std::byte* m_frames[kMostThreads] = {};
  std::unordered_map<const Cell*, VectorClock> m_readers;
  std::unordered_map<const void*, std::size_t> m_sizes;  // Of the heap's blocks.
  bool m_reusesFreed = false;
  std::unordered_map<std::size_t, std::vector<void*>> m_freed;  // By size, when it is used again.
  std::uint32_t m_begin = 1;
};

}  // namespace model
