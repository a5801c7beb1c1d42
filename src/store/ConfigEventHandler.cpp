// SPDX-License-Identifier: Apache-2.0
#include "tessel/ConfigEventHandler.h"

#include <optional>

#include "store/CSwitchThreadEvent.h"
#include "store/DeliveryJournal.h"
#include "store/WaitClock.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

constexpr unsigned int kPostPriority = 128;
constexpr long kSlowMs = 100;
constexpr const char* kNotify = "kalStore::ConfigEventHandler::Notify";

// Raises a handler's call level while it lives.
class CallLevel {
 public:
  explicit CallLevel(std::atomic<std::int32_t>& level)
      : m_level(level), m_value(level.fetch_add(1, std::memory_order_relaxed) + 1) {}
  ~CallLevel() { m_level.fetch_sub(1, std::memory_order_relaxed); }
  CallLevel(const CallLevel&) = delete;
  CallLevel& operator=(const CallLevel&) = delete;

  std::int32_t Value() const { return m_value; }

 private:
  std::atomic<std::int32_t>& m_level;
  const std::int32_t m_value;
};

// Runs a callback of the handler at a raised call level, and reports one that overlaps another or is slow.
// Returns what it returns.
template <class Callback>
auto RunCallback(const char* label, ConfigEventHandler& handler, const KalConfigEvent& event,
                 Callback callback) {
  std::optional<long> startMs;  // Nobody reads how long a callback took unless level 1 is traced.
  auto result = [&] {
    const CallLevel level(handler.m_nCallLevel);
    if (level.Value() > 1) {
      TESSEL_TRACE(1, label,
                   ", level=" << level.Value() << ", " << event.m_name << ", "
                              << KalConfigGroup2GroupName(event.m_group) << This{&handler});
    }
    if (IsTraced(1)) startMs = CurrentWaitClock().nowMs();
    return callback();
  }();
  if (!startMs) return result;
  const long costMs = ElapsedMs(*startMs, CurrentWaitClock().nowMs());
  if (costMs > kSlowMs) {
    TESSEL_TRACE(1, label,
                 ", " << event.m_name << ", " << KalConfigGroup2GroupName(event.m_group)
                      << ", cost=" << static_cast<unsigned long>(costMs) << "ms" << This{&handler});
  }
  return result;
}

// Calls, posts or hands over, as the subscription asks for: `call` calls, and `make` makes what takes the
// event to another thread.
template <class Call, class Make>
JournalWay Deliver(ConfigEventHandler& handler, Call call, Make make) {
  ACmThread* const thread = handler.m_pRunThread;
  if (thread == nullptr) {
    call();
  } else if (ICmEventQueue* const queue = thread->GetEventQueue(); queue == nullptr) {
    TESSEL_TRACE(0, kNotify,
                 ", m_pRunThread=" << static_cast<void*>(thread) << ", EventQueue == NULL" << This{&handler});
    return JournalWay::kDropped;
  } else if (handler.m_bAsync) {
    queue->PostEvent(make(JournalWay::kPosted), kPostPriority, 0);
    return JournalWay::kPosted;
  } else if (thread->GetThreadId() == GetThreadSelfId()) {
    call();
  } else {
    queue->SendEvent(make(JournalWay::kHandedOver), 0);
    return JournalWay::kHandedOver;
  }
  return JournalWay::kDirect;
}

}  // namespace

bool ConfigEventHandler::Notify(const KalConfigEvent& event) {
  if (!m_fnNotify) return false;
  RunCallback(kNotify, *this, event, [&] {
    return Deliver(
        *this, [&] { m_fnNotify(event); },
        [&](JournalWay) { return new CSwitchThreadEvent(event, m_fnNotify); });
  });
  return true;
}

bool internal::NotifyInJournal(ConfigEventHandler& handler, const KalConfigEvent& event,
                               ChangeInJournal& change) {
  if (!handler.m_fnNotify) return false;
  RunCallback(kNotify, handler, event, [&] {
    const JournalWay way = Deliver(
        handler,
        [&] {
          // A trace sink may have taken its time since.
          if (IsTraced(1)) change.nowNs = JournalNowNs();
          change.Run(handler.m_SubscribeId, JournalWay::kDirect, event, [&] { handler.m_fnNotify(event); });
        },
        [&](JournalWay asked) {
          return new SwitchEventInJournal(change, handler.m_SubscribeId, asked, event, handler.m_fnNotify);
        });
    if (way == JournalWay::kDropped)
      change.WriteDelivery(handler.m_SubscribeId, way, event, change.nowNs, nullptr);
    if (way != JournalWay::kDirect) change.nowNs = JournalNowNs();
    return way;
  });
  return true;
}

ConfigValue ConfigEventHandler::Invoke(const KalConfigEvent& event) {
  if (!m_fnInvoke) return {};
  return RunCallback("kalStore::ConfigEventHandler::Invoke", *this, event, [&] { return m_fnInvoke(event); });
}

}  // namespace kalStore
