#include "DeliverySnapshot.h"

namespace kalStore {
namespace {

// The field is a plain number shared between threads: set under the manager's lock, cleared without it.
std::atomic_ref<std::uint64_t> NotifyThread(ConfigEventHandler& handler) {
  return std::atomic_ref(handler.m_notifyThreadId);
}

}  // namespace

bool AnnounceDelivery(ConfigEventHandler& handler, unsigned long threadId) {
  // A removal reads the count after it unlinked the handler under the same lock: it sees this one.
  handler.m_nPendingNotify.fetch_add(1, std::memory_order_relaxed);
  std::uint64_t none = 0;
  return NotifyThread(handler).compare_exchange_strong(none, threadId, std::memory_order_relaxed);
}

void FinishDelivery(ConfigEventHandler& handler, unsigned long threadId) {
  std::uint64_t own = threadId;
  NotifyThread(handler).compare_exchange_strong(own, 0, std::memory_order_relaxed);
  // Pairs with the load in the removal's wait: what the callback did happens before it is emptied.
  handler.m_nPendingNotify.fetch_sub(1, std::memory_order_release);
}

unsigned long DeliveringThread(ConfigEventHandler& handler) {
  return NotifyThread(handler).load(std::memory_order_relaxed);
}

DeliverySnapshot::~DeliverySnapshot() {
  while (HasNext()) finishNext();
}

void DeliverySnapshot::reserve(std::size_t count) {
  if (count > kInline) m_many.reserve(count);
}

bool DeliverySnapshot::add(const ConfigEventHandler::Ptr& handler) {
  if (m_many.capacity() == 0) {
    m_few[m_count] = handler;
  } else {
    m_many.push_back(handler);
  }
  ++m_count;
  return AnnounceDelivery(*handler, m_threadId);
}

void DeliverySnapshot::finishNext() {
  FinishDelivery(*handlers()[m_finished], m_threadId);
  ++m_finished;
}

}  // namespace kalStore
