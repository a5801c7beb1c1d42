// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfig.h"

#include <memory>
#include <string_view>
#include <utility>

#include "journal/JournalSource.h"
#include "store/DeliveryJournal.h"
#include "store/LiveRegistration.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

JournalKind KindOfSet(bool bTransient) {
  return bTransient ? JournalKind::kTransientSet : JournalKind::kSet;
}

// What follows the store's values, or null. Asked and used under the lock of the values' group, so that what
// follows a value changes with it, in the order of the changes. That lock shows every follower of the group;
// acquire, with the release in LiveRegistration::Follow(), is for a first follower in another group.
LiveRegistrations* Followers(const std::atomic<LiveRegistrations*>& live) {
  return live.load(std::memory_order_acquire);
}

// Stores the value, or takes the stored one away for a transient one, and returns the one before. Part of its
// two callers, so that the set without the journal pays for no further call. `last` is the last step under
// the lock, with the name: nothing fails after it.
template <class Values, class Last>
[[gnu::always_inline]] inline ConfigData Exchange(Values& map, const std::atomic<LiveRegistrations*>& live,
                                                  KalConfigGroup group, const char* name,
                                                  const ConfigData& value, bool bTransient, Last last) {
  ConfigData previous;
  typename Values::Locked values(map);
  const std::string_view key(name);
  const auto position = values->lower_bound(key);
  const bool isPresent = position != values->end() && position->first == key;
  if (bTransient) {
    if (isPresent) {
      previous = std::move(position->second);
      values->erase(position);
    }
  } else if (isPresent) {
    previous = std::move(position->second);
    try {
      position->second = value;
    } catch (...) {
      position->second = std::move(previous);
      throw;
    }
  } else {
    values->emplace_hint(position, name, value);
  }
  if (LiveRegistrations* const followers = Followers(live)) [[unlikely]] {
    followers->Write(group, key, bTransient ? nullptr : &value);
  }
  last(key);
  return previous;
}

[[gnu::noinline, gnu::cold]] void WriteRefusedSet(const void* caller, std::uint32_t callId,
                                                  KalConfigGroup group, const char* name,
                                                  const ConfigData& value, bool bTransient) {
  WriteJournal({.kind = KindOfSet(bTransient),
                .callId = callId,
                .source = SourceOf(caller),
                .group = group,
                .name = name != nullptr ? std::string_view(name) : std::string_view(),
                .newValue = &value,
                .result = kResultBadArgument});
}

}  // namespace

KalConfig::KalConfig(std::uint32_t callId) : m_callId(callId) {
  TESSEL_TRACE(2, "kalStore::KalConfig::KalConfig", Cid{m_callId} << This{this});
}

KalConfig::~KalConfig() {
  End();
  delete m_live.load(std::memory_order_relaxed);
}

bool KalConfig::End() noexcept {
  if (!std::exchange(m_hasEnded, true)) {
    TESSEL_TRACE(2, "kalStore::KalConfig::~KalConfig", Cid{m_callId} << This{this});
  }
  const bool hadHandlers = DropHandlers();
  // Nothing is written for that: what follows a value keeps the last one.
  if (m_live.load(std::memory_order_relaxed) != nullptr) LiveRegistration::ForgetStore(*this);
  return hadHandlers;
}

std::int32_t KalConfig::SetKalConfig(KalConfigGroup group, const char* name, ConfigData value,
                                     bool bForceNotify, bool bTransient) {
  if (!IsConfigGroup(group) || name == nullptr || !value.IsValid()) {
    if (JournalIsOn()) WriteRefusedSet(__builtin_return_address(0), m_callId, group, name, value, bTransient);
    TESSEL_TRACE(0, "kalStore::KalConfig::SetKalConfig", "Error parameters" << Cid{m_callId} << This{this});
    return kResultBadArgument;
  }
  if (*name == '\0') {
    if (JournalIsOn()) WriteRefusedSet(__builtin_return_address(0), m_callId, group, name, value, bTransient);
    return kResultBadArgument;
  }

  if (JournalIsOn()) [[unlikely]]
    return setInJournal(__builtin_return_address(0), group, name, std::move(value), bForceNotify, bTransient);
  ConfigData previous =
      Exchange(configsOf(group), m_live, group, name, value, bTransient, [](std::string_view) {});
  return fireEvents(observersOf(group), name, std::move(previous), std::move(value), group, bForceNotify);
}

[[gnu::noinline]] std::int32_t KalConfig::setInJournal(const void* caller, KalConfigGroup group,
                                                       const char* name, ConfigData&& value,
                                                       bool bForceNotify, bool bTransient) {
  std::string_view key;  // The name, whose size is known then.
  std::uint64_t number = 0;
  ConfigData previous =
      Exchange(configsOf(group), m_live, group, name, value, bTransient, [&](std::string_view stored) {
        key = stored;
        number = DrawJournalNumber();
      });
  const std::int64_t nowNs = JournalNowNs();
  SetInJournal set{{m_callId, SourceOf(caller), nowNs, nowNs, number}, KindOfSet(bTransient), group, key};
  return fireInJournal(observersOf(group), set, name, std::move(previous), std::move(value), bForceNotify);
}

std::int32_t KalConfig::GetKalConfig(KalConfigGroup group, const char* name, ConfigData& value) {
  if (!IsConfigGroup(group) || name == nullptr || *name == '\0') return kResultBadArgument;
  {
    ConfigMap::Locked values(configsOf(group));
    if (const auto found = values->find(std::string_view(name)); found != values->end()) {
      value = found->second;
      return kResultOk;
    }
  }
  value.SetInvalid();
  return kResultNotFound;
}

std::int32_t KalConfig::GetDynamicConfig(KalConfigGroup group, const char* name, ConfigData& value,
                                         ConfigData defaultValue) {
  if (!IsConfigGroup(group) || name == nullptr) {
    TESSEL_TRACE(0, "kalStore::KalConfig::GetDynamicConfig",
                 "Error parameters" << Cid{m_callId} << This{this});
    return kResultBadArgument;
  }
  if (*name == '\0') return kResultBadArgument;
  if (JournalIsOn()) [[unlikely]] {
    return invokeInJournal(__builtin_return_address(0), name, value, std::move(defaultValue), group);
  }
  return invokeEvent(observersOf(group), name, value, std::move(defaultValue), group);
}

std::int32_t KalConfig::RemoveKalConfig(KalConfigGroup group, const char* name) {
  if (!IsConfigGroup(group) || name == nullptr || *name == '\0') return kResultBadArgument;
  ConfigMap::Map::node_type removed;
  {
    ConfigMap::Locked values(configsOf(group));
    if (const auto found = values->find(std::string_view(name)); found != values->end()) {
      removed = values->extract(found);
      if (LiveRegistrations* const live = Followers(m_live)) live->Write(group, name, nullptr);
    }
    // Under the lock, as the numbers of sets are drawn: it is short, and calls nobody.
    if (JournalIsOn()) [[unlikely]] {
      WriteJournal({.kind = JournalKind::kRemoved,
                    .callId = m_callId,
                    .source = SourceOf(__builtin_return_address(0)),
                    .group = group,
                    .name = name,
                    .oldValue = removed.empty() ? nullptr : &removed.mapped(),
                    .count = !removed.empty()});
    }
  }
  TESSEL_TRACE(2, "kalStore::KalConfig::RemoveKalConfig",
               ", " << name << ", ret=" << !removed.empty() << Cid{m_callId} << This{this});
  return kResultOk;
}

std::int32_t KalConfig::RemoveKalConfigByGroup(KalConfigGroup group) {
  if (!IsConfigGroup(group)) return kResultBadArgument;
  ConfigMap::Map removed;  // Ends after the lock: it may be large.
  std::size_t size = 0;
  {
    ConfigMap::Locked values(configsOf(group));
    values->swap(removed);
    size = removed.size();
    if (LiveRegistrations* const live = Followers(m_live)) live->WriteNothing(group);
    if (JournalIsOn()) [[unlikely]] {
      WriteJournal({.kind = JournalKind::kGroupRemoved,
                    .callId = m_callId,
                    .source = SourceOf(__builtin_return_address(0)),
                    .group = group,
                    .count = static_cast<std::uint32_t>(size)});
    }
  }
  TESSEL_TRACE(2, "kalStore::KalConfig::RemoveKalConfigByGroup",
               ", size=" << size << Cid{m_callId} << This{this});
  return kResultOk;
}

bool KalConfig::MarkCleanedUp() {
  return !std::exchange(m_bCleanedUp, true);
}

}  // namespace kalStore
