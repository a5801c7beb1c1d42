// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "checker/Choices.h"
#include "checker/VectorClock.h"

namespace model {

/// The atomic objects of an execution, each with the stores that it had. A load sees the latest one or, where
/// the language allows it, an older one:
/// - none that is older than one that the thread has seen or stored, or that happens before the load
///   (coherence);
/// - a sequentially consistent load none that is older than one that another such operation saw or stored;
/// - a read-modify-write the latest one. An exchange that fails is a load.
///
/// A load with acquire that sees a store with release, or a read-modify-write in the sequence that it heads,
/// happens after it.
///
/// The order of the stores to an object, and that of sequentially consistent operations, is the order in
/// which they are executed. So what is never found: a load that sees a store which is executed later (load
/// buffering), and stores in an order against that of the execution.
class Atomics {
 public:
  explicit Atomics(Choices& choices) : m_choices(choices) {}
  Atomics(const Atomics&) = delete;
  Atomics& operator=(const Atomics&) = delete;

  /// The thread that does it; its clock learns what it acquires.
  struct Doer {
    int thread;
    VectorClock& clock;
  };
  struct Object {
    void* address;
    std::size_t size;
  };

  void BeginExecution();

  std::uint64_t Load(Object object, int order, Doer by);
  void Store(Object object, std::uint64_t value, int order, Doer by);
  /// Replaces the latest value by what `change` makes of it, and returns it.
  template <class Change>
  std::uint64_t Modify(Object object, int order, Doer by, Change change) {
    Location& location = locate(object, by);
    const std::uint64_t old = location.stores.back().value;
    modify(object, location, change(old), order, by);
    return old;
  }
  /// Whether it was exchanged; `expected` receives what it saw.
  bool CompareExchange(Object object, std::uint64_t& expected, std::uint64_t desired, int order,
                       int failureOrder, bool isWeak, Doer by);

  /// How many stores an object had.
  std::size_t StoresOf(Object object, Doer by) { return locate(object, by).stores.size(); }
  /// What was stored without atomic operations: they begin again.
  void Forget(const void* memory, std::size_t size);

 private:
  struct Stored {
    std::uint64_t value;
    bool releases;
    VectorClock released;
  };
  // Up to which store a thread knew the object, from when on.
  struct Seen {
    std::uint32_t time;
    std::size_t store;
  };
  struct Location {
    Object object;
    std::vector<Stored> stores;  // In their order.
    std::vector<Seen> seen[kMostThreads];
    std::size_t consistent = 0;  // The latest store that a sequentially consistent operation saw or made.
  };

  static constexpr std::uintptr_t kLargest = 8;  // Bytes of an atomic object.
  static constexpr std::size_t kWords = 4096;

  static std::size_t wordOf(std::uintptr_t address) { return address / kLargest % kWords; }
  Location& locate(Object object, Doer by);
  static std::size_t oldestVisible(const Location& location, int order, Doer by);
  static void see(Location& location, std::size_t store, int order, Doer by);
  static void modify(Object object, Location& location, std::uint64_t value, int order, Doer by);

  Choices& m_choices;
  std::unordered_map<std::uintptr_t, Location*> m_locations;
  std::bitset<kWords> m_words;                    // Where a location begins, and elsewhere by chance.
  std::vector<std::unique_ptr<Location>> m_pool;  // Used again in the next execution.
  std::size_t m_used = 0;
};

}  // namespace model
