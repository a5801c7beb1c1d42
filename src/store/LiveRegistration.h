// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <list>
#include <memory>
#include <mutex>

#include "store/LiveRegistrations.h"
#include "tessel/KalConfig.h"
#include "tessel/locking.h"

namespace kalStore::internal {

/// Writes what is stored to a live value; null: nothing. Called under the lock of a group's values: it is
/// short, allocates nothing and calls nothing of the library.
using LiveWrite = void (*)(void* cell, const ConfigData* stored) noexcept;

/// Guards where every registration of the process is, so that neither a store nor a facade ends while a
/// registration takes itself out. Live values are rarely made and ended; no set or read takes this lock. It
/// is held for short; the only lock taken inside it is that of one group's values, under which nobody takes
/// another. Nothing is allocated inside it: an allocation may call a program's own code, which may end a live
/// value.
extern constinit detail::Mutex<std::mutex> g_liveMutex;

/// Where one live value is: it waits in a list, follows a store, or does neither. Its end takes it out; no
/// set or removal writes the cell after that.
///
/// Threads: under g_liveMutex, but for Write(), which runs under the lock of the group's values.
class LiveRegistration {
 public:
  /// What waits for a store, or for its group.
  using List = std::list<LiveRegistration*>;

  /// Allocates what following a store takes. The cell must outlive the registration. `group` may be the
  /// default group of a facade.
  LiveRegistration(KalConfigGroup group, const char* name, LiveWrite write, void* cell);
  /// Takes the lock itself.
  ~LiveRegistration() { leave(); }
  LiveRegistration(const LiveRegistration&) = delete;
  LiveRegistration& operator=(const LiveRegistration&) = delete;

  KalConfigGroup Group() const TESSEL_LOCKING(requires_capability(g_liveMutex)) { return m_group; }
  void Write(const ConfigData* stored) const noexcept { m_write(m_cell, stored); }

  /// Appends it to the list. `entry` is a list of nothing but this registration.
  void WaitIn(List& list, List& entry) noexcept TESSEL_LOCKING(requires_capability(g_liveMutex));
  /// Writes what is stored to the cell, and from then on each change. `spare` serves a store that nothing has
  /// followed yet. REQUIRES: it follows no store, and the caller takes it out of its list;
  /// IsConfigGroup(group).
  void Follow(KalConfig& store, KalConfigGroup group, std::unique_ptr<LiveRegistrations>& spare) noexcept
      TESSEL_LOCKING(requires_capability(g_liveMutex));
  /// The store ends: its registrations forget it, and their values stay as they are. A thread that still sets
  /// finds none. Takes g_liveMutex and the locks of the values. REQUIRES: something has followed the store.
  static void ForgetStore(KalConfig& store) noexcept;
  /// The list ends.
  void Forget() noexcept TESSEL_LOCKING(requires_capability(g_liveMutex));

 private:
  void leave() noexcept;

  // Constant after construction.
  const LiveWrite m_write;
  void* const m_cell;
  KalConfigGroup m_group TESSEL_LOCKING(guarded_by(g_liveMutex));
  // Until it follows a store,
  LiveRegistrations::Names::node_type m_node TESSEL_LOCKING(guarded_by(g_liveMutex));
  // and from then on.
  LiveRegistrations::Names::iterator m_place TESSEL_LOCKING(guarded_by(g_liveMutex));
  List* m_list TESSEL_LOCKING(guarded_by(g_liveMutex)) = nullptr;
  List::iterator m_placeInList TESSEL_LOCKING(guarded_by(g_liveMutex));  // While there is one.
  KalConfig* m_store TESSEL_LOCKING(guarded_by(g_liveMutex)) = nullptr;
};

}  // namespace kalStore::internal
