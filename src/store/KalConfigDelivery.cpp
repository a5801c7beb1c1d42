// SPDX-License-Identifier: Apache-2.0
#include <string_view>
#include <utility>

#include "store/DeliveryJournal.h"
#include "store/DeliverySnapshot.h"
#include "store/FirstError.h"
#include "store/SessionGroup.h"
#include "tessel/KalConfig.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

// How a change is delivered without the journal.
struct Plain {
  void Begin(const KalConfigEvent&, std::size_t) {}
  bool Notify(ConfigEventHandler& handler, const KalConfigEvent& event) { return handler.Notify(event); }
};

// The same with it.
class InJournal {
 public:
  InJournal(SetInJournal& set, const ConfigValue& oldValue, const ConfigValue& newValue)
      : m_set(set), m_oldValue(oldValue), m_newValue(newValue) {}

  // Writes the set before its first delivery: what the callbacks do comes after it.
  void Begin(const KalConfigEvent& event, std::size_t subscribers) {
    m_hasBegun = true;
    m_set.Write(event.m_oldValue, event.m_newValue, kResultOk, static_cast<std::uint32_t>(subscribers),
                nullptr);
  }
  bool Notify(ConfigEventHandler& handler, const KalConfigEvent& event) {
    return NotifyInJournal(handler, event, m_set.change);
  }
  // Writes a set that notified nobody: it has its number, also when memory ran out.
  void End(std::int32_t result, const char* thrown) {
    if (!m_hasBegun) m_set.Write(m_oldValue, m_newValue, result, 0, thrown);
  }

 private:
  SetInJournal& m_set;
  const ConfigValue& m_oldValue;
  const ConfigValue& m_newValue;
  bool m_hasBegun = false;
  const ComponentScope m_component;
};

// A callback may end the store: nothing of it is used here. Part of its two callers, so that the set without
// the journal pays for no further call.
template <class Delivery>
[[gnu::always_inline]] inline std::int32_t Fire(Cid cid, This self,
                                                KalConfigObserverMgr<ConfigEventHandler::Ptr>& observers,
                                                const char* name, ConfigValue&& oldValue,
                                                ConfigValue&& newValue, KalConfigGroup group,
                                                bool bForceNotify, Delivery& delivery) {
  if (!IsConfigGroup(group) || name == nullptr) {
    TESSEL_TRACE(0, "kalStore::KalConfig::fireEvents", "Error parameters" << cid << self);
    return kResultBadArgument;
  }
  if (!bForceNotify && oldValue == newValue) return kResultUnchanged;
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
    if (!snapshot.HasNext()) return kResultNobody;

    const KalConfigEvent event{name,  std::move(oldValue),      std::move(newValue), {},
                               group, SessionTypeOfGroup(group)};
    delivery.Begin(event, snapshot.Size());
    // One subscriber's exception must not keep the change from the others.
    FirstError error;
    while (snapshot.HasNext()) {
      try {
        snapshot.DeliverNext(
            [&](ConfigEventHandler& handler) { notified += delivery.Notify(handler, event) ? 1 : 0; });
      } catch (...) {
        if (!error.Keep()) throw;
      }
    }
    error.Rethrow();
  }
  if (notified == 0) return kResultNobody;
  TESSEL_TRACE(2, "kalStore::KalConfig::fireEvents", ", nObservers=" << notified << cid << self);
  return kResultOk;
}

}  // namespace

std::int32_t KalConfig::fireEvents(ObserverMgr& observers, const char* name, ConfigValue&& oldValue,
                                   ConfigValue&& newValue, KalConfigGroup group, bool bForceNotify) {
  Plain delivery;
  return Fire(Cid{m_callId}, This{this}, observers, name, std::move(oldValue), std::move(newValue), group,
              bForceNotify, delivery);
}

std::int32_t KalConfig::fireInJournal(ObserverMgr& observers, SetInJournal& set, const char* name,
                                      ConfigValue&& oldValue, ConfigValue&& newValue, bool bForceNotify) {
  InJournal delivery(set, oldValue, newValue);
  std::int32_t result = kResultOk;
  RunAndWrite(
      [&] {
        result = Fire(Cid{m_callId}, This{this}, observers, name, std::move(oldValue), std::move(newValue),
                      set.group, bForceNotify, delivery);
      },
      [&](const char* thrown) { delivery.End(result, thrown); });
  return result;
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

  DeliverySnapshot snapshot;
  LentEvent lent;
  if (snapshot.AnnounceToBinding(observers, name, lent) > 0) {
    TESSEL_TRACE(1, "kalStore::KalConfig::invokeEvent", ", invokeEvent Multiple notification" << cid << self);
  }
  if (!snapshot.HasNext()) return kResultNobody;
  const auto ask = [&](const KalConfigEvent& event) {
    snapshot.DeliverNext([&](ConfigEventHandler& handler) { value = handler.Invoke(event); });
  };
  if (const KalConfigEvent* const event = lent.With(defaultValue)) {
    ask(*event);
  } else {
    ask({name, {}, {}, std::move(defaultValue), group, SessionTypeOfGroup(group)});
  }
  return kResultOk;
}

std::int32_t KalConfig::invokeInJournal(const void* caller, const char* name, ConfigValue& value,
                                        ConfigValue&& defaultValue, KalConfigGroup group) {
  // A copy of what an event has of it, and a byte more, to mark the cut: the binding may end the caller's
  // name.
  char asked[kJournalLongestValue + 1];
  const std::size_t size = std::string_view(name).copy(asked, sizeof asked);
  JournalEntry entry{.kind = JournalKind::kAsked,
                     .callId = m_callId,
                     .source = SourceOf(caller),
                     .timeNs = JournalNowNs(),
                     .group = group,
                     .name = {asked, size}};
  const ComponentScope component;
  RunInJournal(entry, [&] {
    entry.result = invokeEvent(observersOf(group), name, value, std::move(defaultValue), group);
    if (entry.result == kResultOk) entry.newValue = &value;
  });
  return entry.result;
}

}  // namespace kalStore
