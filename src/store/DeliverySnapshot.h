// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "store/StoredBinding.h"
#include "tessel/ConfigEventHandler.h"
#include "tessel/KalConfigObserverMgr.h"

namespace kalStore::internal {

/// The thread that delivers to the handler at the moment; 0: none. The field is a plain number shared between
/// threads: set under the manager's lock, where it is 0, and cleared without it, by the thread that it names.
/// That delivery is counted by it; m_nPendingNotify counts those announced while there is one. So a delivery
/// that no other overlaps takes no locked instruction, and the sum of the two is always right: whoever ends a
/// delivery takes away either.
inline std::atomic_ref<std::uint64_t> DeliveringThread(ConfigEventHandler& handler) {
  return std::atomic_ref(handler.m_notifyThreadId);
}

/// Announces a delivery to a handler: removal waits for it from now on. Called under the manager's lock.
/// Returns false when another delivery to the handler is under way; its thread mark then stays.
inline bool AnnounceDelivery(ConfigEventHandler& handler, unsigned long threadId) {
  // A removal reads both after it unlinked the handler under the same lock: it sees this one. Acquire pairs
  // with the end of the last delivery: a removal may see only the end of this one, and what came before it.
  if (DeliveringThread(handler).load(std::memory_order_acquire) == 0) {
    DeliveringThread(handler).store(threadId, std::memory_order_relaxed);
    return true;
  }
  handler.m_nPendingNotify.fetch_add(1, std::memory_order_relaxed);
  return false;
}

/// Ends what AnnounceDelivery() began, on the same thread. The handler may be emptied by a removal right
/// after.
inline void FinishDelivery(ConfigEventHandler& handler, unsigned long threadId) {
  // Release pairs with HasPendingDelivery(): what the callback did happens before the handler is emptied.
  // Relaxed: only this thread stores its id, and replaces it.
  if (DeliveringThread(handler).load(std::memory_order_relaxed) == threadId) {
    DeliveringThread(handler).store(0, std::memory_order_release);
  } else {
    handler.m_nPendingNotify.fetch_sub(1, std::memory_order_release);
  }
}

/// Whether a delivery to the handler is announced and not finished. Asked once it is out of the lists: both
/// then only fall to 0, so that they need not be read at one moment.
inline bool HasPendingDelivery(ConfigEventHandler& handler) {
  return DeliveringThread(handler).load(std::memory_order_acquire) != 0 ||
         handler.m_nPendingNotify.load(std::memory_order_acquire) >= 1;
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
  /// Part of its callers, the delivery with the journal and without: a call costs more than what most sets do
  /// here, which find nobody.
  [[gnu::always_inline]] std::size_t AnnounceToSubscriptions(ObserverMgr& observers, std::string_view name) {
    ObserverMgr::Locked names(observers);
    const auto found = names->find(name);
    if (found == names->end()) return 0;
    ObserverMgr::Entry& entry = found->second;
    const std::span subscriptions = std::span(entry.handlers).subspan(HasBinding(entry) ? 1 : 0);
    if (subscriptions.size() > 1) {
      if (entry.shared == nullptr) {
        entry.shared = std::make_shared<ConfigEventHandler::Ptr[]>(subscriptions.size());
        std::copy(subscriptions.begin(), subscriptions.end(), entry.shared.get());
      }
      m_several = entry.shared;
      return announce({m_several.get(), subscriptions.size()});
    }
    if (subscriptions.empty()) return 0;
    m_one = subscriptions.front();
    return announce({&m_one, 1});
  }
  /// The same for the name's binding, whose event is lent if it can be. Allocates nothing.
  /// @param event  ends before this snapshot
  std::size_t AnnounceToBinding(ObserverMgr& observers, std::string_view name, LentEvent& event) {
    ObserverMgr::Locked names(observers);
    const auto found = names->find(name);
    if (found == names->end() || !HasBinding(found->second)) return 0;
    m_one = found->second.handlers.front();
    event.Borrow(static_cast<StoredBinding&>(*m_one));
    return announce({&m_one, 1});
  }

  /// REQUIRES: the manager's lock, under which removal takes a handler out before it empties the callbacks.
  static bool HasBinding(const ObserverMgr::Entry& entry) {
    return !entry.handlers.empty() && entry.handlers.front()->m_fnInvoke != nullptr;
  }

  std::size_t Size() const { return m_handlers.size(); }

  /// Hands the next handler that is not finished to `deliver` and finishes it, whatever `deliver` throws.
  template <class Deliver>
  void DeliverNext(Deliver deliver) {
    struct Finish {
      DeliverySnapshot& snapshot;
      ~Finish() { snapshot.finishNext(); }
    } finish{*this};
    deliver(*m_handlers[m_finished]);
  }
  bool HasNext() const { return m_finished < m_handlers.size(); }

 private:
  // Fails no more: what is announced is finished.
  std::size_t announce(std::span<const ConfigEventHandler::Ptr> handlers) {
    m_handlers = handlers;
    m_threadId = GetThreadSelfId();
    std::size_t overlaps = 0;
    for (const ConfigEventHandler::Ptr& handler : m_handlers) {
      if (!AnnounceDelivery(*handler, m_threadId)) ++overlaps;
    }
    return overlaps;
  }

  void finishNext() { FinishDelivery(*m_handlers[m_finished++], m_threadId); }

  // Keep the handlers alive:
  ConfigEventHandler::Ptr m_one;                         // the only one,
  std::shared_ptr<ConfigEventHandler::Ptr[]> m_several;  // or all of them.
  std::span<const ConfigEventHandler::Ptr> m_handlers;
  std::size_t m_finished = 0;
  unsigned long m_threadId = 0;
};

}  // namespace kalStore::internal
