// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tessel/ConfigEventHandler.h"
#include "tessel/KalConfigObserverMgr.h"

namespace kalStore::internal {

/// The thread that delivers to the handler at the moment; 0: none. The field is a plain number shared between
/// threads: set under the manager's lock, where it is 0, and cleared without it, by the thread that it names.
inline std::atomic_ref<std::uint64_t> DeliveringThread(ConfigEventHandler& handler) {
  return std::atomic_ref(handler.m_notifyThreadId);
}

/// Announces a delivery to a handler: removal waits for it from now on. Called under the manager's lock.
/// Returns false when another delivery to the handler is under way; its thread mark then stays.
inline bool AnnounceDelivery(ConfigEventHandler& handler, unsigned long threadId) {
  // A removal reads the count after it unlinked the handler under the same lock: it sees this one.
  handler.m_nPendingNotify.fetch_add(1, std::memory_order_relaxed);
  if (DeliveringThread(handler).load(std::memory_order_relaxed) != 0) return false;
  DeliveringThread(handler).store(threadId, std::memory_order_relaxed);
  return true;
}

/// Ends what AnnounceDelivery() began, on the same thread. The handler may be emptied by a removal right
/// after.
inline void FinishDelivery(ConfigEventHandler& handler, unsigned long threadId) {
  if (DeliveringThread(handler).load(std::memory_order_relaxed) == threadId) {
    DeliveringThread(handler).store(0, std::memory_order_relaxed);
  }
  // Pairs with the load in the removal's wait: what the callback did happens before it is emptied.
  handler.m_nPendingNotify.fetch_sub(1, std::memory_order_release);
}

/// The handlers of one name that a delivery is announced to, in the order of registration. Made under the
/// manager's lock and gone through outside it. What was not finished is finished when the snapshot ends, so
/// that no exception leaves a removal waiting.
class DeliverySnapshot {
 public:
  using ObserverMgr = KalConfigObserverMgr<ConfigEventHandler::Ptr>;

  DeliverySnapshot() = default;
  ~DeliverySnapshot() {
    while (HasNext()) finishNext();
  }
  DeliverySnapshot(const DeliverySnapshot&) = delete;
  DeliverySnapshot& operator=(const DeliverySnapshot&) = delete;

  /// Announces a delivery to every subscription of the name. Allocates at most once.
  /// Returns how many of them have another delivery under way: to be reported once the lock is released,
  /// since a trace sink may call in, and may wait for a thread that needs the lock.
  std::size_t AnnounceToSubscriptions(ObserverMgr& observers, std::string_view name) {
    return announce(observers, name, &ObserverMgr::Entry::subscriptions, hasNotify);
  }
  /// The same for the name's binding.
  std::size_t AnnounceToBinding(ObserverMgr& observers, std::string_view name) {
    return announce(observers, name, &ObserverMgr::Entry::bindings, hasInvoke);
  }

  bool IsEmpty() const { return m_handlers.IsEmpty(); }
  std::size_t Size() const { return m_handlers.Handlers().size(); }

  /// Hands the next handler that is not finished to `deliver` and finishes it, whatever `deliver` throws.
  template <class Deliver>
  void DeliverNext(Deliver deliver) {
    struct Finish {
      DeliverySnapshot& snapshot;
      ~Finish() { snapshot.finishNext(); }
    } finish{*this};
    deliver(*m_handlers.Handlers()[m_finished]);
  }
  bool HasNext() const { return m_finished < m_handlers.Handlers().size(); }

 private:
  using Handlers = detail::HandlerSnapshot<ConfigEventHandler::Ptr>;

  // Of a handler in the list, which removal leaves before it empties the callbacks.
  static bool hasNotify(const ConfigEventHandler::Ptr& handler) { return handler->m_fnNotify != nullptr; }
  static bool hasInvoke(const ConfigEventHandler::Ptr& handler) { return handler->m_fnInvoke != nullptr; }

  template <class IsWanted>
  std::size_t announce(ObserverMgr& observers, std::string_view name, Handlers ObserverMgr::Entry::* kept,
                       IsWanted isWanted) {
    ObserverMgr::Locked names(observers);
    const auto found = names->find(name);
    if (found == names->end()) return 0;
    Handlers& handlers = found->second.*kept;
    if (handlers.IsEmpty()) handlers = Handlers(found->second.handlers, isWanted);
    m_handlers = handlers;
    m_threadId = GetThreadSelfId();
    std::size_t overlaps = 0;
    for (const ConfigEventHandler::Ptr& handler : m_handlers.Handlers()) {
      if (!AnnounceDelivery(*handler, m_threadId)) ++overlaps;
    }
    return overlaps;
  }

  void finishNext() { FinishDelivery(*m_handlers.Handlers()[m_finished++], m_threadId); }

  Handlers m_handlers;
  std::size_t m_finished = 0;
  unsigned long m_threadId = 0;
};

}  // namespace kalStore::internal
