// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "SoakCalls.h"
#include "tessel/tessel.h"
#include "util/util.h"

/// A call whose values are read, and which nobody holds: reading leaves an empty store behind, by design.
inline constexpr std::uint32_t kSoakReadOnlyCall = 1;

/// What all components of a soak run share.
struct SoakShared {
  SoakCalls calls{3};
  // Of a call that lasts for the whole run: posted callbacks may still run when their own facade is gone.
  std::unique_ptr<kalStore::KalConfigHelper> lasting;
  std::vector<std::unique_ptr<ACmThread>>
      threads;  // Where deliveries are posted and handed over; they stop and go on.
  std::atomic<bool> isOver{false};
  std::atomic<std::uint64_t> operations{0};
  std::atomic<std::uint64_t> deliveries{0};
  std::atomic<std::int64_t> callbacks{0};  // Callbacks alive anywhere, in stores, facades and queues.
  std::atomic<std::uint64_t> faults{0};    // Results that cannot be.
  std::atomic<std::uint64_t> late{0};      // Callbacks that began after their removal.
};

/// A media component on a thread of its own: joins one call after the other, uses its settings and statistics
/// in every way, and leaves.
class SoakComponent {
 public:
  SoakComponent(SoakShared& shared, std::uint64_t seed) : m_shared(shared), m_random(seed) {}

  /// Until the run is over.
  void Run();

 private:
  static constexpr unsigned int kNames = 12;
  static constexpr unsigned int kGroups = 2;

  // What this component has subscribed to. No callback begins once it has been removed.
  struct Subscribed {
    std::shared_ptr<std::atomic<bool>> isRemoved;
    bool endsWithFacade = false;  // A posted one, only where it is removed: the facade's end may give up.
  };

  void stay(std::uint32_t callId);
  void stayIn(kalStore::KalConfigHelper& facade, std::uint32_t callId);
  void subscribe(kalStore::KalConfigHelper& facade, bool isBound);
  void use(kalStore::KalConfigHelper& facade, std::uint32_t callId);
  void record(std::uint32_t callId);
  kalStore::fnConfigChangedCallBack makeCallback(kalStore::KalConfigHelper& used,
                                                 std::shared_ptr<const std::atomic<bool>> isRemoved);

  unsigned int pick(unsigned int count) { return static_cast<unsigned int>(m_random() % count); }
  void expect(bool holds) { m_shared.faults += holds ? 0 : 1; }

  SoakShared& m_shared;
  std::mt19937_64 m_random;
  std::array<std::array<Subscribed, kNames>, kGroups> m_subscribed;
};
