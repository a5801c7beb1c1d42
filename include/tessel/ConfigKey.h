// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "tessel/Binding.h"
#include "tessel/ConfigExecutor.h"
#include "tessel/ConfigRef.h"
#include "tessel/SetResult.h"
#include "tessel/Subscription.h"
#include "tessel/TypedValue.h"

namespace kalStore {

/// A setting as its key reads it.
/// @threads A plain value.
/// @par Example
/// @code{.cpp}
/// constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
/// KalConfigHelper settings(7);
/// settings.SetKalConfig("MaxFps", "15 per second", KAL_CONFIG_GROUP_VIDEO);
/// const ConfigReading<int> reading = kMaxFps.Read(settings);
/// assert(reading.IsRefused() && reading.value == 30);
/// assert(reading.stored.ToString() == "15 per second");
/// @endcode
template <class T>
struct ConfigReading {
  T value;            ///< what is stored, or the key's default
  ConfigData stored;  ///< what is stored, as it is; invalid when nothing is, or the store cannot be read
  bool fromStore;     ///< whether `value` is what is stored

  /// @return Whether something is stored that is not a whole T.
  bool IsRefused() const { return stored.IsValid() && !fromStore; }
};

namespace detail {

template <class T>
using ConfigDefault = std::conditional_t<std::same_as<T, std::string>, const char*, T>;

// No constant calls it: what the compiler names when a key is refused.
inline void TheKeyNeedsAGroupANameAndADefaultWithinRange() {}

// As std::chrono converts without a cast, and no count is cut.
template <class From, class T>
concept ExactDurationFor = ConfigDuration<From> && ConfigDuration<T> && std::convertible_to<From, T> &&
                           std::in_range<typename T::rep>(std::numeric_limits<typename From::rep>::min()) &&
                           std::in_range<typename T::rep>(std::numeric_limits<typename From::rep>::max());

template <class From, class T>
concept ConfigDefaultFor =
    std::same_as<From, ConfigDefault<T>> || (ConfigInteger<From> && ConfigInteger<T>) ||
    (std::same_as<From, double> && std::same_as<T, float>) || ExactDurationFor<From, T>;

// Of its own type alone, so that nothing is narrowed on the way; for a std::string a C string as well, for a
// duration one of a larger unit.
template <class From, class T>
concept SettableAs = std::same_as<From, T> || ExactDurationFor<From, T> ||
                     (std::same_as<T, std::string> && OneOf<From, const char*, char*>);

// What is stored for a value that is SettableAs<T>.
template <ConfigType T, SettableAs<T> Value>
ConfigData DataOf(Value value) {
  if constexpr (std::same_as<T, std::string>) {
    return ConfigData(std::move(value));  // A null C string is no value.
  } else {
    return ToConfigData<T>(value);
  }
}

template <class T, class Default>
constexpr bool IsDefaultWithinRange(Default value) {
  if constexpr (ConfigInteger<T>) {
    return std::in_range<T>(value);
  } else if constexpr (std::same_as<T, float> && std::same_as<Default, double>) {
    return value >= std::numeric_limits<float>::lowest() && value <= std::numeric_limits<float>::max();
  } else if constexpr (NamedEnum<T>) {
    return HasName(value);
  } else if constexpr (std::same_as<T, std::string>) {
    return value != nullptr;
  } else {
    return true;
  }
}

}  // namespace detail

/// A setting's group, name, type and default: declare it once, and use it wherever the setting is read or
/// written.
///
/// A stored value that is not a whole T is refused, not narrowed: reading gives the default, and Read() says
/// so. Writing takes a T alone: neither a wider number nor, for a number, a string compiles.
///
/// | T                                   | stored as                                                    |
/// |-------------------------------------|--------------------------------------------------------------|
/// | `bool`, integers, `float`, `double` | see ConfigData                                               |
/// | a `std::chrono::duration`           | the number of its own unit: 40 of 40 milliseconds            |
/// | an enum with a ConfigEnum           | the value's name                                             |
/// | `std::string`                       | itself                                                       |
///
/// @threads A constant, for any thread; its operations are those of the store or facade that they are given.
/// @par Example
/// @code{.cpp}
/// constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
///
/// KalConfigHelper settings(7);
/// assert(kMaxFps.Get(settings) == 30);  // it is not set
/// kMaxFps.Set(settings, 15);
/// assert(kMaxFps.Get(settings) == 15);
///
/// int fps = 0;
/// const auto subscription = kMaxFps.Subscribe(
///     settings, [&](const ConfigReading<int>& reading) { fps = reading.value; });
/// assert(fps == 15);  // notified of what is stored at once
/// settings.SetKalConfig("MaxFps", "fast", KAL_CONFIG_GROUP_VIDEO);
/// assert(fps == 30);
/// assert(kMaxFps.Read(settings).IsRefused());
/// @endcode
template <class T>
class ConfigKey {
  static_assert(ConfigType<T>,
                "a key's type is bool, int, unsigned int, std::int64_t, std::uint64_t, float, double, "
                "std::string, a std::chrono::duration with an integer count, or an enum that has a "
                "kalStore::ConfigEnum");

 public:
  /// All three are constants, checked by the compiler. Clang before 19 checks those of a `constexpr` key
  /// alone; for any other, the store refuses a wrong group or name.
  /// @param group  0 to 12, or KAL_CONFIG_GROUP_DEFAULT for a facade's default group
  /// @param name  not null, not empty
  /// @param defaultValue  within the range of T; for a std::string a C string, for an enum a value that has a
  /// name, for a duration also one of a larger unit
  template <detail::ConfigDefaultFor<T> Default>
#if defined(__clang__) && __clang_major__ < 19
  // A consteval one leaves temporaries unset, and what is initialised from them.
  constexpr
#else
  consteval
#endif
      ConfigKey(KalConfigGroup group, const char* name, Default defaultValue)
      : m_group(group), m_name(name), m_default(static_cast<detail::ConfigDefault<T>>(defaultValue)) {
    const bool fits = (IsConfigGroup(group) || group == KAL_CONFIG_GROUP_DEFAULT) && name && *name != '\0' &&
                      detail::IsDefaultWithinRange<T>(defaultValue);
    if (!fits) detail::TheKeyNeedsAGroupANameAndADefaultWithinRange();
  }

  /// @return The group given.
  constexpr KalConfigGroup Group() const { return m_group; }
  /// @return The name given.
  constexpr const char* Name() const { return m_name; }
  /// @return The default given.
  T Default() const { return m_default; }

  /// Reads the setting.
  /// @param store  a store or a facade
  /// @return What is stored; the default when nothing is, when it is refused, and when the store cannot be
  /// read.
  T Get(ConfigRef store) const { return Read(store).value; }

  /// Reads the setting, and says where the value comes from.
  /// @param store  a store or a facade
  /// @return The value, what is stored, and whether one is the other.
  ConfigReading<T> Read(ConfigRef store) const {
    ConfigData stored;
    store.Get(m_group, m_name, stored);
    return reading(std::move(stored));
  }

  /// Stores a value.
  /// @param store  a store or a facade
  /// @param value  a T; for a std::string a C string as well, not null; for a duration one of a larger unit
  /// as well; of an enum, one that has a name: kResultBadArgument otherwise
  /// @param bForceNotify  notifies of an equal value, too
  /// @return Whether the value was stored, and whether a subscriber was notified; its code is that of
  /// IKalConfig::SetKalConfig() or KalConfigHelper::SetKalConfig().
  template <detail::SettableAs<T> Value>
  SetResult Set(ConfigRef store, Value value, bool bForceNotify = false) const {
    return SetResult(store.Set(m_group, m_name, detail::DataOf<T>(std::move(value)), bForceNotify));
  }

  /// Removes what is stored, and notifies nobody: reading gives the default again.
  /// @param store  a store or a facade
  /// @return As IKalConfig::RemoveKalConfig() or KalConfigHelper::RemoveKalConfig().
  std::int32_t Remove(ConfigRef store) const { return store.Remove(m_group, m_name); }

  /// Has `fn` compute the value whenever GetDynamic() reads it, on the reader's thread. What `fn` throws
  /// leaves that read.
  /// @param store  a store or a facade; must outlive the binding
  /// @param fn  takes nothing and returns a T, or what Set() takes
  /// @return The binding; empty when refused, see Binding::RefusalReason().
  template <std::invocable Fn>
    requires detail::SettableAs<std::invoke_result_t<Fn&>, T>
  Binding Bind(ConfigRef store, Fn fn) const {
    return Binding(store, m_group, m_name,
                   [fn = std::move(fn)](const KalConfigEvent&) mutable { return detail::DataOf<T>(fn()); });
  }

  /// Asks the binding. What is stored is not consulted.
  /// @param store  a store or a facade
  /// @return What it computes; the default when nothing is bound, when that is refused, and when the store
  /// cannot be read.
  T GetDynamic(ConfigRef store) const { return GetDynamic(store, Default()); }
  /// The same with a default of the caller's own.
  /// @param store  a store or a facade
  /// @param defaultValue  as for Set()
  /// @return As above, with `defaultValue` for the default.
  template <detail::SettableAs<T> Value>
  T GetDynamic(ConfigRef store, Value defaultValue) const {
    ConfigData computed;
    store.GetDynamic(m_group, m_name, computed, detail::DataOf<T>(defaultValue));
    std::optional<T> value = ReadAs<T>(computed);
    return value ? *std::move(value) : T(std::move(defaultValue));
  }

  /// Notifies `fn` of every change, and at once of what is stored if anything is.
  ///
  /// **A facade refuses a second subscription of a name:** the result is empty then, and its RefusalReason()
  /// is kResultNoSuchOrExists. Use a facade of your own, or assign to the Subscription that is there.
  /// @param store  a store or a facade; must outlive the subscription
  /// @param fn  takes a const ConfigReading<T>&
  /// @param pRunThread  where `fn` runs, see IKalConfig::SubscribeConfig(); not owned, must outlive the
  /// subscription
  /// @param bAsync  whether `pRunThread` is posted to rather than waited for
  /// @return The subscription; empty when refused.
  template <std::invocable<const ConfigReading<T>&> Fn>
  Subscription Subscribe(ConfigRef store, Fn fn, ACmThread* pRunThread = nullptr, bool bAsync = false) const {
    return Subscription(
        store, m_group, m_name,
        [key = *this, fn = std::move(fn)](const KalConfigEvent& event) mutable {
          const ConfigReading<T> change = key.reading(event.m_newValue);
          static_cast<void>(fn(change));
        },
        pRunThread, bAsync);
  }
  /// The same on an event loop, see Subscription.
  /// @param store  a store or a facade; must outlive the subscription
  /// @param fn  takes a const ConfigReading<T>&
  /// @param executor  where `fn` runs
  /// @return The subscription; empty when refused.
  template <std::invocable<const ConfigReading<T>&> Fn>
  Subscription Subscribe(ConfigRef store, Fn fn, ConfigExecutor executor) const {
    return Subscription(
        store, m_group, m_name,
        [key = *this, fn = std::move(fn)](const KalConfigEvent& event) mutable {
          const ConfigReading<T> change = key.reading(event.m_newValue);
          static_cast<void>(fn(change));
        },
        std::move(executor));
  }

 private:
  ConfigReading<T> reading(ConfigData stored) const {
    std::optional<T> value = ReadAs<T>(stored);
    const bool fromStore = value.has_value();
    return {fromStore ? *std::move(value) : Default(), std::move(stored), fromStore};
  }

  KalConfigGroup m_group;
  const char* m_name;
  detail::ConfigDefault<T> m_default;
};

}  // namespace kalStore
