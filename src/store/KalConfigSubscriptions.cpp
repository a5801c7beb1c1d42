// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "store/DeliveryJournal.h"
#include "store/DeliverySnapshot.h"
#include "store/HandleCallback.h"
#include "store/SessionGroup.h"
#include "store/StoredHandler.h"
#include "store/UnwaitedRemoval.h"
#include "store/WaitClock.h"
#include "tessel/KalConfig.h"
#include "trace/Assertion.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

constexpr long kRemovalReportMs = 500;

// Asked after a failure: a callback may have removed the handler, or ended the store, of which nothing may be
// used then. Nothing is synchronised here: the callback has returned, and its end is known to this thread.
bool IsRegistered(const ConfigEventHandler& handler) {
  return handler.m_bRegistered.load(std::memory_order_relaxed);
}

// Under the lock that makes a registration visible or hides it, so that its event comes before those of its
// deliveries on other threads. Short, and calls nobody.
[[gnu::noinline, gnu::cold]] void WriteRegistration(JournalKind kind, const void* caller,
                                                    std::uint32_t callId, const ConfigEventHandler& handler) {
  WriteJournal({.kind = kind,
                .callId = callId,
                .source = SourceOf(caller),
                .group = handler.m_group,
                .name = handler.m_strName,
                .id = handler.m_SubscribeId});
}

}  // namespace

SubscribeId_t KalConfig::SubscribeConfig(KalConfigGroup group, const char* name, fnConfigChangedCallBack fn,
                                         ACmThread* pRunThread, bool bAsync) {
  auto handlerPtr = std::make_shared<StoredHandler>();
  handlerPtr->m_fnNotify = std::move(fn);
  return subscribeConfig(group, name, std::move(handlerPtr), pRunThread, bAsync, __builtin_return_address(0));
}

SubscribeId_t KalConfig::BindConfig(KalConfigGroup group, const char* name, fnConfigInvokeCallBack fn) {
  auto handlerPtr = std::make_shared<StoredBinding>();
  handlerPtr->m_fnInvoke = std::move(fn);
  return bindConfig(group, name, std::move(handlerPtr), __builtin_return_address(0));
}

std::int32_t KalConfig::UnsubscribeConfig(SubscribeId_t id) {
  ConfigEventHandler::Ptr handlerPtr;
  {
    decltype(m_mapIDs)::Locked ids(m_mapIDs);
    if (auto node = ids->extract(id)) handlerPtr = std::move(node.mapped());
  }
  if (handlerPtr == nullptr) {
    TESSEL_TRACE(0, "kalStore::KalConfig::UnsubscribeConfig",
                 ", " << Id{id} << "Failed" << Cid{m_callId} << This{this});
    return kResultNotFound;
  }
  return unsubscribeConfig(handlerPtr->m_group, handlerPtr->m_strName.c_str(), handlerPtr,
                           __builtin_return_address(0));
}

SubscribeId_t KalConfig::subscribeConfig(KalConfigGroup group, const char* name,
                                         ConfigEventHandler::Ptr handlerPtr, ACmThread* pRunThread,
                                         bool bAsync, const void* caller) {
  if (!IsConfigGroup(group) || name == nullptr || handlerPtr == nullptr || !handlerPtr->m_fnNotify ||
      handlerPtr->m_SubscribeId != 0) {
    TESSEL_TRACE(0, "kalStore::KalConfig::subscribeConfig",
                 "Error parameters 0" << Cid{m_callId} << This{this});
    return 0;
  }
  if (*name == '\0') {
    TESSEL_TRACE(0, "kalStore::KalConfig::subscribeConfig",
                 "Error parameters" << Cid{m_callId} << This{this});
    return 0;
  }

  const unsigned long threadId = GetThreadSelfId();
  handlerPtr->m_SubscribeId = m_nSubscribeSeq.fetch_add(1, std::memory_order_relaxed) + 1;
  handlerPtr->m_group = group;
  handlerPtr->m_strName = std::string(name);  // Of its size; assigned, it would have room for more.
  handlerPtr->m_pRunThread = pRunThread;
  handlerPtr->m_bAsync = bAsync;
  const SubscribeId_t id = handlerPtr->m_SubscribeId;
  TESSEL_TRACE(2, "kalStore::KalConfig::subscribeConfig",
               ", " << KalConfigGroup2GroupName(group) << ", " << name << ", " << Id{id}
                    << ", m_TotalObservers=" << m_TotalObservers.load()
                    << ", pRunThread=" << static_cast<void*>(pRunThread) << ", bAsync=" << bAsync
                    << Cid{m_callId} << This{this});

  // The initial delivery is announced before anyone else can find the handler: a removal waits for it.
  const int result = observersOf(group).Subscribe(
      handlerPtr->m_strName, handlerPtr, [&](const ConfigEventHandler::Ptr& added) {
        m_TotalObservers.fetch_add(1, std::memory_order_relaxed);
        added->m_bRegistered.store(true, std::memory_order_relaxed);
        AnnounceDelivery(*added, threadId);
        if (JournalIsOn()) [[unlikely]]
          WriteRegistration(JournalKind::kSubscribed, caller, m_callId, *added);
      });
  if (result != kResultOk) return 0;

  try {
    registerId(handlerPtr, 557);
    ConfigValue current;
    if (KalConfig::GetKalConfig(group, name, current) == kResultOk) {
      const KalConfigEvent event{name, {}, std::move(current), {}, group, SessionTypeOfGroup(group)};
      const JournalSource source = SourceOf(caller);
      const ComponentScope component;
      if (JournalIsOn()) [[unlikely]] {
        const std::int64_t nowNs = JournalNowNs();
        ChangeInJournal initial{m_callId, source, nowNs, nowNs};
        NotifyInJournal(*handlerPtr, event, initial);
      } else {
        handlerPtr->Notify(event);
      }
    }
  } catch (...) {
    // The caller will never learn the id: the subscription must not stay behind.
    FinishDelivery(*handlerPtr, threadId);
    if (IsRegistered(*handlerPtr)) withdraw(handlerPtr, caller);
    throw;
  }
  FinishDelivery(*handlerPtr, threadId);
  return id;
}

SubscribeId_t KalConfig::bindConfig(KalConfigGroup group, const char* name,
                                    ConfigEventHandler::Ptr handlerPtr, const void* caller) {
  if (!IsConfigGroup(group) || name == nullptr || handlerPtr == nullptr || !handlerPtr->m_fnInvoke ||
      handlerPtr->m_SubscribeId != 0) {
    TESSEL_TRACE(0, "kalStore::KalConfig::bindConfig", "Error parameters 0" << Cid{m_callId} << This{this});
    return 0;
  }
  if (*name == '\0') {
    TESSEL_TRACE(0, "kalStore::KalConfig::bindConfig", "Error parameters" << Cid{m_callId} << This{this});
    return 0;
  }

  const SubscribeId_t id = m_nSubscribeSeq.fetch_add(1, std::memory_order_relaxed) + 1;
  handlerPtr->m_SubscribeId = id;
  handlerPtr->m_group = group;
  handlerPtr->m_strName = std::string(name);  // Of its size; assigned, it would have room for more.
  KalConfigEvent& event = static_cast<StoredBinding&>(*handlerPtr).event;
  event.m_name = std::string(name);
  event.m_group = group;
  event.m_sessionType = SessionTypeOfGroup(group);
  TESSEL_TRACE(2, "kalStore::KalConfig::bindConfig",
               ", " << name << ", " << Id{id} << ", m_TotalObservers=" << m_TotalObservers.load()
                    << Cid{m_callId} << This{this});

  {
    ObserverMgr::Locked names(observersOf(group));
    ObserverMgr::Entry& entry = names->try_emplace(handlerPtr->m_strName).first->second;
    if (DeliverySnapshot::HasBinding(entry)) return 0;
    entry.Insert(entry.handlers.begin(), handlerPtr);
    m_TotalObservers.fetch_add(1, std::memory_order_relaxed);
    handlerPtr->m_bRegistered.store(true, std::memory_order_relaxed);
    if (JournalIsOn()) [[unlikely]]
      WriteRegistration(JournalKind::kBound, caller, m_callId, *handlerPtr);
  }
  try {
    registerId(handlerPtr, 612);
  } catch (...) {
    if (IsRegistered(*handlerPtr)) withdraw(handlerPtr, caller);
    throw;
  }
  return id;
}

void KalConfig::registerId(const ConfigEventHandler::Ptr& handlerPtr, int assertionLine) {
  ConfigEventHandler::Ptr replaced = handlerPtr;
  {
    decltype(m_mapIDs)::Locked ids(m_mapIDs);
    (*ids)[handlerPtr->m_SubscribeId].swap(replaced);
  }
  // Reported once the map is whole and its lock released: a trace sink may call in.
  if (replaced != nullptr) {
    ReportAssertion("KalConfig", assertionLine, "!m_mapIDs.Find(handlerPtr->m_SubscribeId)");
  }
}

// Takes a registration back whose caller learns of a failure instead of the id. Waits like a removal for the
// deliveries that other threads have begun.
void KalConfig::withdraw(const ConfigEventHandler::Ptr& handlerPtr, const void* caller) {
  decltype(m_mapIDs)::Locked(m_mapIDs)->erase(handlerPtr->m_SubscribeId);
  unsubscribeConfig(handlerPtr->m_group, handlerPtr->m_strName.c_str(), handlerPtr, caller);
}

bool KalConfig::DropHandlers() {
  // What callbacks captured may call in when it ends, and may own other subscriptions of this store. So every
  // handler is out of the maps before the first is emptied, and what is registered meanwhile goes as well.
  for (bool hadHandlers = false;; hadHandlers = true) {
    decltype(m_mapIDs)::Map ids;  // Has every handler: none ends with the lists, under a lock.
    decltype(m_mapIDs)::Locked(m_mapIDs)->swap(ids);
    for (ObserverMgr& observers : m_observerMgrs) ObserverMgr::Locked(observers)->clear();
    if (ids.empty()) return hadHandlers;
    m_TotalObservers.fetch_sub(static_cast<std::uint32_t>(ids.size()), std::memory_order_relaxed);
    for (const auto& [id, handler] : ids) {
      handler->m_bRegistered.store(false, std::memory_order_relaxed);
      if (auto* const fn = handler->m_fnNotify.target<RunsHandleCallback>()) fn->callback->LoseStore();
    }
    if (JournalIsOn()) {
      for (const auto& [id, handler] : ids) {
        WriteRegistration(JournalKind::kEnded, nullptr, m_callId, *handler);
      }
    }
    for (const auto& [id, handler] : ids) {
      // One that is being delivered to, since its own callback ends the store, ends with its last delivery.
      if (!HasPendingDelivery(*handler)) StoredHandler::EmptyCallbacks(*handler);
    }
  }
}

std::int32_t KalConfig::unsubscribeConfig(KalConfigGroup group, const char* name,
                                          const ConfigEventHandler::Ptr& handlerPtr, const void* caller) {
  const bool isUnwaited = UnwaitedRemoval::Take();
  if (handlerPtr == nullptr) return kResultBadArgument;
  if (!IsConfigGroup(group) || name == nullptr) {
    TESSEL_TRACE(0, "kalStore::KalConfig::unsubscribeConfig",
                 "Error parameters" << Cid{m_callId} << This{this});
    return kResultBadArgument;
  }
  if (*name == '\0') return kResultBadArgument;
  const SubscribeId_t id = handlerPtr->m_SubscribeId;
  // What is waited for may be the store's last use: nothing of it is used after its lists have changed.
  const Cid cid{m_callId};
  const This self{this};
  TESSEL_TRACE(2, "kalStore::KalConfig::unsubscribeConfig",
               ", " << KalConfigGroup2GroupName(group) << ", " << name << ", " << Id{id}
                    << ", m_TotalObservers=" << m_TotalObservers.load() << cid << self);

  unsigned long deliveringId = 0;
  const int result = observersOf(group).Unsubscribe(name, handlerPtr, [&] {
    m_TotalObservers.fetch_sub(1, std::memory_order_relaxed);
    handlerPtr->m_bRegistered.store(false, std::memory_order_relaxed);
    deliveringId = static_cast<unsigned long>(DeliveringThread(*handlerPtr).load(std::memory_order_relaxed));
    if (JournalIsOn()) [[unlikely]]
      WriteRegistration(JournalKind::kEnded, caller, cid.callId, *handlerPtr);
  });
  if (result != kResultOk) return result;
  // Reported once the lock is released: a trace sink may call in, and may wait for a thread that needs the
  // lock.
  if (deliveringId != 0) {
    const unsigned long threadId = GetThreadSelfId();
    if (deliveringId == threadId) {
      TESSEL_TRACE(0, "kalStore::KalConfig::unsubscribeConfig",
                   ", Same thread remove itself when notification" << ", " << name << ", " << deliveringId
                                                                   << ", " << Id{id} << cid << self);
    } else {
      TESSEL_TRACE(0, "kalStore::KalConfig::unsubscribeConfig",
                   ", Other thread remove itself when notification"
                       << ", " << name << ", " << deliveringId << ", " << Id{id} << ", " << threadId << cid
                       << self);
    }
  }

  if (HasPendingDelivery(*handlerPtr)) {
    if (isUnwaited) return kResultOk;
    const WaitClock& clock = CurrentWaitClock();
    const long startMs = clock.nowMs();
    long reportMs = startMs;
    do {
      clock.sleepOneMs();
      const long nowMs = clock.nowMs();
      if (ElapsedMs(reportMs, nowMs) > kRemovalReportMs) {
        TESSEL_TRACE(1, "kalStore::KalConfig::unsubscribeConfig",
                     ", " << name << " Waiting for long time..." << cid << self);
        reportMs = nowMs;
      }
      if (ElapsedMs(startMs, nowMs) > kRemovalCeilingMs) return kResultOk;
    } while (HasPendingDelivery(*handlerPtr));
  }
  // Nobody can announce a delivery any more.
  StoredHandler::EmptyCallbacks(*handlerPtr);
  return kResultOk;
}

}  // namespace kalStore
