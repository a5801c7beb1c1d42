// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfig.h"

#include <string_view>
#include <utility>

#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

KalConfig::KalConfig(std::uint32_t callId) : m_callId(callId) {
  TESSEL_TRACE(2, "kalStore::KalConfig::KalConfig", Cid{m_callId} << This{this});
}

KalConfig::~KalConfig() {
  TESSEL_TRACE(2, "kalStore::KalConfig::~KalConfig", Cid{m_callId} << This{this});
  DropHandlers();
  for (ConfigMap& values : m_configs) ConfigMap::Locked(values)->clear();
}

std::int32_t KalConfig::SetKalConfig(KalConfigGroup group, const char* name, ConfigData value,
                                     bool bForceNotify, bool bTransient) {
  if (!IsConfigGroup(group) || name == nullptr || !value.IsValid()) {
    TESSEL_TRACE(0, "kalStore::KalConfig::SetKalConfig", "Error parameters" << Cid{m_callId} << This{this});
    return kResultBadArgument;
  }
  if (*name == '\0') return kResultBadArgument;

  ConfigData previous;
  {
    ConfigMap::Locked values(configsOf(group));
    const auto position = values->lower_bound(std::string_view(name));
    const bool isPresent = position != values->end() && position->first == name;
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
  }
  return fireEvents(observersOf(group), name, std::move(previous), std::move(value), group, bForceNotify);
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
  return invokeEvent(observersOf(group), name, value, std::move(defaultValue), group);
}

std::int32_t KalConfig::RemoveKalConfig(KalConfigGroup group, const char* name) {
  if (!IsConfigGroup(group) || name == nullptr || *name == '\0') return kResultBadArgument;
  bool erased = false;
  {
    ConfigMap::Locked values(configsOf(group));
    if (const auto found = values->find(std::string_view(name)); found != values->end()) {
      values->erase(found);
      erased = true;
    }
  }
  TESSEL_TRACE(2, "kalStore::KalConfig::RemoveKalConfig",
               ", " << name << ", ret=" << erased << Cid{m_callId} << This{this});
  return kResultOk;
}

std::int32_t KalConfig::RemoveKalConfigByGroup(KalConfigGroup group) {
  if (!IsConfigGroup(group)) return kResultBadArgument;
  std::size_t size = 0;
  {
    ConfigMap::Locked values(configsOf(group));
    size = values->size();
    values->clear();
  }
  TESSEL_TRACE(2, "kalStore::KalConfig::RemoveKalConfigByGroup",
               ", size=" << size << Cid{m_callId} << This{this});
  return kResultOk;
}

bool KalConfig::MarkCleanedUp() {
  return !std::exchange(m_bCleanedUp, true);
}

}  // namespace kalStore
