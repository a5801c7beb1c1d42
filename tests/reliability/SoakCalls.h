// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "tessel/IKalConfig.h"

/// The calls that are under way, in a fixed number of slots. A call's id is never used again.
///
/// Threads: components enter and leave from any thread; one thread replaces and ends calls.
class SoakCalls {
 public:
  struct Call {
    std::uint32_t id = 0;
    int components = 0;                     // Protected by the lock of SoakCalls.
    kalStore::IKalConfig* store = nullptr;  // One reference, for as long as the call lasts.
  };

  /// A component's presence in a call: the call does not end while one is there.
  class Visit {
   public:
    Visit(SoakCalls& calls, std::size_t slot);
    ~Visit();
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    std::uint32_t Id() const { return m_call->id; }

   private:
    SoakCalls& m_calls;
    std::shared_ptr<Call> m_call;
  };

  explicit SoakCalls(std::size_t slots);

  std::size_t Slots() const { return m_slots.size(); }
  /// Puts a new call in the slot, then waits until the components have left the old one and ends that. Counts
  /// what the ended call left behind.
  void Replace(std::size_t slot);
  /// Ends the last call of each slot. REQUIRES: no component comes any more.
  void EndAll();

  /// Subscriptions, bindings and statistics objects that were left in calls which ended, and calls whose
  /// store could not be released. All zero when all is well.
  std::uint64_t Leftovers() const { return m_leftovers; }
  std::uint32_t Begun() const { return m_begun; }

 private:
  std::shared_ptr<Call> begin();
  void end(Call& call);

  std::mutex m_mutex;  // Protects m_slots and each call's count.
  std::condition_variable m_left;
  std::vector<std::shared_ptr<Call>> m_slots;
  // Of the one thread that ends calls.
  std::uint32_t m_begun = 0;
  std::uint64_t m_leftovers = 0;
};
