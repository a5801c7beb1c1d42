// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifndef __cpp_exceptions
#error "tessel/ScopedConfig.h needs exceptions: it restores the value when a callback throws"
#endif

#include <string>
#include <utility>

#include "tessel/ConfigKey.h"
#include "tessel/ConfigRef.h"

namespace kalStore {

/// Sets a value for a scope, for tests: at the end of the scope it restores the previous value, or removes a
/// name that had none. Scopes of one name end in the reverse order of their beginning.
///
/// Subscribers are notified of both sets, but not of a removal. What a callback throws leaves the
/// constructor, with the previous value restored; at the end of the scope it is dropped.
///
/// @threads Begins and ends like two sets, from any thread; what others set to the name meanwhile is lost.
/// @lifetime The store or facade must outlive it.
/// @par Example
/// @code{.cpp}
/// constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
/// KalConfigHelper settings(7);
/// {
///   const ScopedConfig slow(settings, kMaxFps, 5);
///   assert(kMaxFps.Get(settings) == 5);
/// }
/// assert(!settings.HaveKalConfig("MaxFps", KAL_CONFIG_GROUP_VIDEO));
/// @endcode
class [[nodiscard]] ScopedConfig {
 public:
  /// Sets the value.
  /// @param store  a store or a facade
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @param value  valid
  [[nodiscard]] ScopedConfig(ConfigRef store, KalConfigGroup group, const char* name, ConfigData value)
      : m_store(store), m_group(group), m_name(name ? name : "") {
    m_store.Get(m_group, name, m_previous);
    try {
      m_isInPlace = IsStored(m_store.Set(m_group, name, std::move(value)));
    } catch (...) {
      restore();
      throw;
    }
  }
  /// The same with a key.
  /// @param store  a store or a facade
  /// @param key  the setting's
  /// @param value  of the key's type, as for ConfigKey::Set()
  template <ConfigType T, detail::SettableAs<T> Value>
  [[nodiscard]] ScopedConfig(ConfigRef store, const ConfigKey<T>& key, Value value)
      : ScopedConfig(store, key.Group(), key.Name(), detail::DataOf<T>(std::move(value))) {}
  ScopedConfig(const ScopedConfig&) = delete;
  ScopedConfig& operator=(const ScopedConfig&) = delete;

  /// Restores the previous value.
  ~ScopedConfig() {
    if (m_isInPlace) restore();
  }

  /// @return Whether the value was set; otherwise the scope does nothing.
  bool IsInPlace() const { return m_isInPlace; }

 private:
  void restore() noexcept {
    try {
      if (m_previous.IsValid()) {
        m_store.Set(m_group, m_name.c_str(), std::move(m_previous));
      } else {
        m_store.Remove(m_group, m_name.c_str());
      }
    } catch (...) {
      // A callback's exception; the value is restored.
    }
  }

  const ConfigRef m_store;
  const KalConfigGroup m_group;
  const std::string m_name;
  ConfigData m_previous;
  bool m_isInPlace = false;
};

}  // namespace kalStore
