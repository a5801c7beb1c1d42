// SPDX-License-Identifier: Apache-2.0
#include <exception>
#include <utility>

#include "store/DeliverySnapshot.h"
#include "store/SessionGroup.h"
#include "tessel/KalConfig.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

std::int32_t KalConfig::fireEvents(ObserverMgr& observers, const char* name, ConfigValue&& oldValue,
                                   ConfigValue&& newValue, KalConfigGroup group, bool bForceNotify) {
  if (!IsConfigGroup(group) || name == nullptr) {
    TESSEL_TRACE(0, "kalStore::KalConfig::fireEvents", "Error parameters" << Cid{m_callId} << This{this});
    return kResultBadArgument;
  }
  if (!bForceNotify && oldValue == newValue) return kResultUnchanged;
  // A callback may end the store: nothing of it is used once the deliveries have begun.
  const Cid cid{m_callId};
  const This self{this};
  TESSEL_TRACE(2, "kalStore::KalConfig::fireEvents",
               ", " << name << ", " << oldValue.ToCstr() << " -> " << newValue.ToCstr()
                    << ", bForceNotify=" << bForceNotify << cid << self);
  if (*name == '\0') return kResultNobody;

  unsigned int notified = 0;
  {
    DeliverySnapshot snapshot;
    for (std::size_t left = snapshot.AnnounceToSubscriptions(observers, name); left > 0; --left) {
      TESSEL_TRACE(1, "kalStore::KalConfig::fireEvents", ", fireEvents Multiple notification" << cid << self);
    }
    if (snapshot.IsEmpty()) return kResultNobody;

    const KalConfigEvent event{name,  std::move(oldValue),      std::move(newValue), {},
                               group, SessionTypeOfGroup(group)};
    // One subscriber's exception must not keep the change from the others.
    std::exception_ptr firstError;
    while (snapshot.HasNext()) {
      try {
        snapshot.DeliverNext([&](ConfigEventHandler& handler) { notified += handler.Notify(event) ? 1 : 0; });
      } catch (...) {
        if (!firstError) firstError = std::current_exception();
      }
    }
    if (firstError) std::rethrow_exception(firstError);
  }
  if (notified == 0) return kResultNobody;
  TESSEL_TRACE(2, "kalStore::KalConfig::fireEvents", ", nObservers=" << notified << cid << self);
  return kResultOk;
}

std::int32_t KalConfig::invokeEvent(ObserverMgr& observers, const char* name, ConfigValue& value,
                                    ConfigValue&& defaultValue, KalConfigGroup group) {
  if (!IsConfigGroup(group) || name == nullptr) {
    TESSEL_TRACE(0, "kalStore::KalConfig::invokeEvent", "Error parameters" << Cid{m_callId} << This{this});
    return kResultBadArgument;
  }
  // As above: a binding may end the store, too.
  const Cid cid{m_callId};
  const This self{this};
  TESSEL_TRACE(2, "kalStore::KalConfig::invokeEvent",
               ", " << name << ", " << defaultValue.ToCstr() << cid << self);
  if (*name == '\0') return kResultNobody;

  unsigned int callees = 0;
  {
    DeliverySnapshot snapshot;
    for (std::size_t left = snapshot.AnnounceToBinding(observers, name); left > 0; --left) {
      TESSEL_TRACE(1, "kalStore::KalConfig::invokeEvent",
                   ", invokeEvent Multiple notification" << cid << self);
    }
    if (snapshot.IsEmpty()) return kResultNobody;

    const KalConfigEvent event{name, {}, {}, std::move(defaultValue), group, SessionTypeOfGroup(group)};
    while (snapshot.HasNext()) {
      snapshot.DeliverNext([&](ConfigEventHandler& handler) {
        if (callees++ == 0) value = handler.Invoke(event);
      });
    }
  }
  if (callees > 1) {
    TESSEL_TRACE(0, "kalStore::KalConfig::invokeEvent",
                 ", Bind too much, " << "nCallees=" << callees << cid << self);
  }
  return kResultOk;
}

}  // namespace kalStore
