#pragma once

#include <cstdint>
#include <utility>

#include "tessel/IKalConfig.h"
#include "tessel/KalConfigHelper.h"

namespace kalStore {

/// Whether a set with this result has stored its value, be it told to somebody or not.
constexpr bool IsStored(std::int32_t setResult) {
  return setResult == kResultOk || setResult == kResultNobody || setResult == kResultUnchanged;
}

/// A call's settings, by way of its store or of a facade: what typed.h works on. Made by passing either where
/// a ConfigRef is asked for.
///
/// Borrows: the store or facade must outlive it. Operations, results and threads are those of what it refers
/// to. KAL_CONFIG_GROUP_DEFAULT is a facade's default group; a store refuses it.
class ConfigRef {
 public:
  ConfigRef(IKalConfig& store) : m_store(&store) {}
  ConfigRef(KalConfigHelper& facade) : m_facade(&facade) {}

  std::int32_t Get(KalConfigGroup group, const char* name, ConfigData& value) const {
    return m_facade ? m_facade->GetKalConfig(name, value, group) : m_store->GetKalConfig(group, name, value);
  }
  std::int32_t Set(KalConfigGroup group, const char* name, ConfigData value,
                   bool bForceNotify = false) const {
    return m_facade ? m_facade->SetKalConfig(name, std::move(value), group, bForceNotify)
                    : m_store->SetKalConfig(group, name, std::move(value), bForceNotify, false);
  }
  std::int32_t Remove(KalConfigGroup group, const char* name) const {
    return m_facade ? m_facade->RemoveKalConfig(name, group) : m_store->RemoveKalConfig(group, name);
  }
  SubscribeId_t Subscribe(KalConfigGroup group, const char* name, fnConfigChangedCallBack fn,
                          ACmThread* pRunThread, bool bAsync) const {
    return m_facade ? m_facade->SubscribeConfig(name, std::move(fn), group, pRunThread, bAsync)
                    : m_store->SubscribeConfig(group, name, std::move(fn), pRunThread, bAsync);
  }
  std::int32_t Unsubscribe(SubscribeId_t id) const {
    return m_facade ? m_facade->UnsubscribeConfig(id) : m_store->UnsubscribeConfig(id);
  }
  /// Of a facade alone: a store knows its subscriptions by id.
  std::int32_t Unsubscribe(KalConfigGroup group, const char* name) const {
    return m_facade ? m_facade->UnsubscribeConfig(name, group) : kResultNotFound;
  }

 private:
  // Exactly one of the two is set.
  IKalConfig* m_store = nullptr;
  KalConfigHelper* m_facade = nullptr;
};

}  // namespace kalStore
