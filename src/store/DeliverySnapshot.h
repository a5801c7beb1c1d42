#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "tessel/ConfigEventHandler.h"
#include "tessel/KalConfigObserverMgr.h"

namespace kalStore {

/// Announces a delivery to a handler: removal waits for it from now on. Called under the manager's lock.
/// Returns false when another delivery to the handler is under way; its thread mark then stays.
bool AnnounceDelivery(ConfigEventHandler& handler, unsigned long threadId);

/// Ends what AnnounceDelivery() began, on the same thread. The handler may be emptied by a removal right
/// after.
void FinishDelivery(ConfigEventHandler& handler, unsigned long threadId);

/// The thread that delivers to the handler at the moment; 0: none.
unsigned long DeliveringThread(ConfigEventHandler& handler);

/// The handlers of one name that a delivery is announced to, in the order of registration. Made under the
/// manager's lock and gone through outside it. What was not finished is finished when the snapshot ends, so
/// that no exception leaves a removal waiting.
class DeliverySnapshot {
 public:
  DeliverySnapshot() = default;
  ~DeliverySnapshot();
  DeliverySnapshot(const DeliverySnapshot&) = delete;
  DeliverySnapshot& operator=(const DeliverySnapshot&) = delete;

  /// Announces a delivery to every handler of the name that `isWanted`, and calls `onOverlap`, under the lock
  /// too, for each that has another delivery under way. Allocates at most once.
  template <class IsWanted, class OnOverlap>
  void Announce(KalConfigObserverMgr<ConfigEventHandler::Ptr>& observers, std::string_view name,
                IsWanted isWanted, OnOverlap onOverlap) {
    KalConfigObserverMgr<ConfigEventHandler::Ptr>::Locked names(observers);
    const auto found = names->find(name);
    if (found == names->end()) return;
    reserve(found->second.size());
    for (const ConfigEventHandler::Ptr& handler : found->second) {
      if (isWanted(*handler) && !add(handler)) onOverlap();
    }
  }

  bool IsEmpty() const { return m_count == 0; }

  /// Hands the next handler that is not finished to `deliver` and finishes it, whatever `deliver` throws.
  template <class Deliver>
  void DeliverNext(Deliver deliver) {
    struct Finish {
      DeliverySnapshot& snapshot;
      ~Finish() { snapshot.finishNext(); }
    } finish{*this};
    deliver(*handlers()[m_finished]);
  }
  bool HasNext() const { return m_finished < m_count; }

 private:
  static constexpr std::size_t kInline = 8;

  void reserve(std::size_t count);
  bool add(const ConfigEventHandler::Ptr& handler);
  void finishNext();
  ConfigEventHandler::Ptr* handlers() { return m_many.empty() ? m_few.data() : m_many.data(); }

  const unsigned long m_threadId = GetThreadSelfId();
  std::size_t m_count = 0;
  std::size_t m_finished = 0;
  std::array<ConfigEventHandler::Ptr, kInline> m_few;  // The handlers while they fit,
  std::vector<ConfigEventHandler::Ptr> m_many;         // all of them otherwise.
};

}  // namespace kalStore
