// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <utility>

#include "tessel/IKalConfig.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/SetResult.h"

namespace kalStore {

class Binding;
class Subscription;

namespace internal {
class LiveRegistrar;
}

/// A call's settings, through its store or through a facade: what typed.h works on. Pass either where a
/// ConfigRef is asked for.
///
/// KAL_CONFIG_GROUP_DEFAULT is a facade's default group; a store refuses it.
///
/// @threads As the store or facade: operations and results are theirs.
/// @lifetime Borrows: the store or facade must outlive it.
/// @par Example
/// @code{.cpp}
/// const auto halve = [](ConfigRef settings) {  // takes a store as well as a facade
///   ConfigData bitrate;
///   settings.Get(KAL_CONFIG_GROUP_AUDIO, "Bitrate", bitrate);
///   return settings.Set(KAL_CONFIG_GROUP_AUDIO, "Bitrate", bitrate.ToInt() / 2);
/// };
/// KalConfigHelper facade(7);
/// CallStore store(7);
/// facade.SetKalConfig("Bitrate", 32000, KAL_CONFIG_GROUP_AUDIO);
/// halve(facade);
/// halve(*store);
/// assert(facade.GetKalConfig("Bitrate", KAL_CONFIG_GROUP_AUDIO).ToInt() == 8000);
/// @endcode
class ConfigRef {
 public:
  /// Refers to a store.
  /// @param store  must outlive it
  ConfigRef(IKalConfig& store) : m_store(&store) {}
  /// Refers to a facade.
  /// @param facade  must outlive it
  ConfigRef(KalConfigHelper& facade) : m_facade(&facade) {}

  /// Reads a stored value.
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @param value  receives a copy
  /// @return As GetKalConfig() there.
  std::int32_t Get(KalConfigGroup group, const char* name, ConfigData& value) const {
    return m_facade ? m_facade->GetKalConfig(name, value, group) : m_store->GetKalConfig(group, name, value);
  }
  /// Stores a value and notifies the name's subscribers.
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @param value  valid
  /// @param bForceNotify  notifies of an equal value, too
  /// @return As SetKalConfig() there; see IsStored().
  std::int32_t Set(KalConfigGroup group, const char* name, ConfigData value,
                   bool bForceNotify = false) const {
    return m_facade ? m_facade->SetKalConfig(name, std::move(value), group, bForceNotify)
                    : m_store->SetKalConfig(group, name, std::move(value), bForceNotify, false);
  }
  /// Asks the name's binding. Stored values are not consulted.
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @param value  receives what the binding returned
  /// @param defaultValue  handed to the binding; may be invalid
  /// @return As GetDynamicConfig() there.
  std::int32_t GetDynamic(KalConfigGroup group, const char* name, ConfigData& value,
                          ConfigData defaultValue) const {
    return m_facade ? m_facade->GetDynamicConfig(name, value, group, std::move(defaultValue))
                    : m_store->GetDynamicConfig(group, name, value, std::move(defaultValue));
  }
  /// Removes a stored value and notifies nobody.
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @return As RemoveKalConfig() there.
  std::int32_t Remove(KalConfigGroup group, const char* name) const {
    return m_facade ? m_facade->RemoveKalConfig(name, group) : m_store->RemoveKalConfig(group, name);
  }

 private:
  friend class Binding;
  friend class Subscription;
  friend class internal::LiveRegistrar;

  // Exactly one of the two is set.
  IKalConfig* m_store = nullptr;
  KalConfigHelper* m_facade = nullptr;
};

}  // namespace kalStore
