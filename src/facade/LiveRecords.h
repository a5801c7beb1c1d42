// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>

#include "store/LiveRegistration.h"
#include "tessel/IKalConfig.h"

namespace kalStore::internal {

/// The live values that were made through one facade and wait: for its store, for its default group, or for
/// both. Those that follow the store are the store's.
///
/// Threads: any operation but the destructor, from any thread.
class LiveRecords {
 public:
  LiveRecords() = default;
  LiveRecords(const LiveRecords&) = delete;
  LiveRecords& operator=(const LiveRecords&) = delete;
  /// What waits waits for ever.
  ~LiveRecords();

  /// Lets the registration follow the store, or wait for it. Fails without a change.
  void Add(LiveRegistration& registration);
  /// Gives the facade's store, once. It must outlive the records.
  void SetStore(IKalConfig& store) noexcept;
  /// Sets the facade's default group unless it is set. What waits for it follows before others can use it.
  /// Returns whether it was set.
  bool SetDefaultGroup(std::atomic<KalConfigGroup>& defaultGroup, KalConfigGroup group) noexcept;

 private:
  void followStore() noexcept TESSEL_LOCKING(requires_capability(g_liveMutex));

  KalConfig* m_store TESSEL_LOCKING(guarded_by(g_liveMutex)) = nullptr;
  KalConfigGroup m_defaultGroup TESSEL_LOCKING(guarded_by(g_liveMutex)) = KAL_CONFIG_GROUP_DEFAULT;
  LiveRegistration::List m_waiting TESSEL_LOCKING(guarded_by(g_liveMutex));
  // For a store that nothing follows yet: binding a facade allocates nothing for what waits.
  std::unique_ptr<LiveRegistrations> m_spare TESSEL_LOCKING(guarded_by(g_liveMutex));
};

}  // namespace kalStore::internal
