// SPDX-License-Identifier: Apache-2.0
#include "facade/ExecutorDelivery.h"

#include <atomic>
#include <exception>
#include <utility>

#include "trace/TraceLine.h"

namespace kalStore::internal {
namespace {

// What a delivery needs when it runs. Not the executor: that may own the queue in which the delivery waits.
struct Target {
  std::shared_ptr<GuardedCallback> callback;
  fnConfigChangedCallBack deliver;
};

// One delivery on its way, shared by the copies of its task.
class Delivery {
 public:
  Delivery(std::shared_ptr<const Target> target, const KalConfigEvent& event)
      : m_target(std::move(target)), m_event(event) {}
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  // Ends where the last copy of the task does: after the run, or in an executor that ends before it.
  ~Delivery() {
    if (HasBegun() || m_isRefused || !m_target->callback->IsOpen()) return;
    TESSEL_TRACE(0, "kalStore::ConfigExecutor::Execute",
                 ", " << m_event.m_name.c_str() << ", The executor dropped a delivery");
  }

  // A task that an executor copies and runs twice notifies once. Nothing else is ordered by the flag.
  void Run() {
    if (!m_hasBegun.exchange(true, std::memory_order_relaxed)) m_target->deliver(m_event);
  }
  bool HasBegun() const { return m_hasBegun.load(std::memory_order_relaxed); }

  // Called by the setter alone, who still holds the delivery then.
  void Refuse() {
    m_isRefused = true;
    TESSEL_TRACE(0, "kalStore::ConfigExecutor::Execute",
                 ", " << m_event.m_name.c_str() << ", The executor refused a delivery");
  }

 private:
  const std::shared_ptr<const Target> m_target;
  const KalConfigEvent m_event;
  std::atomic<bool> m_hasBegun{false};
  bool m_isRefused = false;
};

// What the store alone has. It may end before the deliveries that are on their way.
class Source final : public HandleCallback {
 public:
  Source(ConfigExecutor&& executor, std::shared_ptr<GuardedCallback> callback,
         fnConfigChangedCallBack deliver)
      : m_executor(std::move(executor)),
        m_target(std::make_shared<const Target>(Target{std::move(callback), std::move(deliver)})) {}
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  // Also of a store that is not the library's own.
  ~Source() {
    LoseStore();
    m_target->callback->Close();
  }

  void LoseStore() override { m_target->callback->LoseStore(); }
  void Run(const KalConfigEvent& event) override {
    if (!m_target->callback->IsOpen()) return;
    const auto delivery = std::make_shared<Delivery>(m_target, event);
    try {
      // The run holds the delivery: its callback may end the executor's queue, and the task with it.
      const bool isTaken = (*m_executor).Execute([delivery] { std::shared_ptr(delivery)->Run(); });
      if (!isTaken && !delivery->HasBegun()) delivery->Refuse();
    } catch (...) {
      // What the callback throws in an executor that runs it at once goes to the setter, as in a direct
      // delivery.
      if (delivery->HasBegun()) throw;
      delivery->Refuse();
      // The end of the thread (pthread_exit, pthread_cancel) has no exception object: the C library wants it
      // passed on.
      if (std::current_exception() == nullptr) throw;
    }
  }

 private:
  const OfComponent<ConfigExecutor> m_executor;
  const std::shared_ptr<const Target> m_target;
};

}  // namespace

fnConfigChangedCallBack DeliverOn(ConfigExecutor&& executor, std::shared_ptr<GuardedCallback> callback,
                                  fnConfigChangedCallBack deliver) {
  return RunsHandleCallback{
      std::make_shared<Source>(std::move(executor), std::move(callback), std::move(deliver))};
}

}  // namespace kalStore::internal
