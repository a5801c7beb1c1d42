// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <span>
#include <utility>

#include "inspect/StoreParts.h"
#include "store/DeliverySnapshot.h"
#include "tessel/inspect.h"

namespace kalStore {

using namespace internal;

namespace {

struct SubscriptionHead {
  SubscribeId_t id;
  KalConfigGroup group;
  bool isBinding;
  JournalWay way;
  const ACmThread* runThread;
  unsigned long runThreadId;
  std::uint32_t deliveries;
  unsigned long deliveringThreadId;
};

// Of a handler in the lists: its callbacks, its id and its run thread stay as they are until it is taken out
// of them, under their lock.
SubscriptionHead HeadOf(ConfigEventHandler& handler) noexcept {
  SubscriptionHead head{};
  head.id = handler.m_SubscribeId;
  head.group = handler.m_group;
  head.isBinding = handler.m_fnInvoke != nullptr;
  if (const ACmThread* const thread = handler.m_pRunThread) {
    head.way = handler.m_bAsync ? JournalWay::kPosted : JournalWay::kHandedOver;
    head.runThread = thread;
    head.runThreadId = thread->GetThreadId();
  } else if (!head.isBinding) {
    head.way = JournalWay::kDirect;
  }
  // Relaxed: numbers to report, by which nothing else is reached.
  head.deliveringThreadId =
      static_cast<unsigned long>(DeliveringThread(handler).load(std::memory_order_relaxed));
  const std::int32_t overlapping = handler.m_nPendingNotify.load(std::memory_order_relaxed);
  head.deliveries =
      static_cast<std::uint32_t>(std::max(overlapping, 0)) + (head.deliveringThreadId != 0 ? 1 : 0);
  return head;
}

}  // namespace

std::vector<InspectedSubscription> InspectSubscriptions(std::uint32_t callId) {
  std::vector<InspectedSubscription> subscriptions;
  CopyGroups<SubscriptionHead>(
      callId,
      [](auto& copy, KalConfig& store, KalConfigGroup group) {
        StoreParts::Observers::Locked names(StoreParts::ObserversOf(store, group));
        for (const auto& [name, entry] : *names) {
          std::span handlers(entry.handlers);
          // The binding is the first of the list: it goes to where it was registered.
          const ConfigEventHandler::Ptr* binding = nullptr;
          if (DeliverySnapshot::HasBinding(entry)) {
            binding = &handlers.front();
            handlers = handlers.subspan(1);
          }
          for (const ConfigEventHandler::Ptr& handler : handlers) {
            if (binding != nullptr && (*binding)->m_SubscribeId < handler->m_SubscribeId) {
              copy.Put(HeadOf(**std::exchange(binding, nullptr)), name);
            }
            copy.Put(HeadOf(*handler), name);
          }
          if (binding != nullptr) copy.Put(HeadOf(**binding), name);
        }
      },
      [&](const SubscriptionHead& head, std::string_view name, std::string_view) {
        subscriptions.push_back({head.id, head.group, std::string(name), head.isBinding, head.way,
                                 head.runThread, head.runThreadId, head.deliveries, head.deliveringThreadId});
      });
  return subscriptions;
}

}  // namespace kalStore
