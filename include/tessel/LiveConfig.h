// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>
#include <type_traits>

#include "tessel/ConfigKey.h"
#include "tessel/ConfigRef.h"
#include "tessel/export.h"

namespace kalStore {

/// @cond internal
namespace internal {

class LiveRegistration;

class LiveRegistrar {
 public:
  // Calls `write` with what is stored now, and with each change, until the result ends; null: nothing is
  // stored. No two calls run at once. Returns null when the store refuses.
  TESSEL_API static std::shared_ptr<LiveRegistration> Follow(
      ConfigRef settings, KalConfigGroup group, const char* name,
      void (*write)(void* cell, const ConfigData* stored) noexcept, void* cell);
};

}  // namespace internal
/// @endcond

namespace detail {

template <class T>
inline constexpr bool kIsLiveType = false;
template <class T>
  requires(std::is_trivially_copyable_v<T>)
inline constexpr bool kIsLiveType<T> = std::atomic<T>::is_always_lock_free;

// On cache lines of its own: nothing but a change of the setting slows those who read it.
template <ConfigType T>
class alignas(64) LiveCell {
 public:
  LiveCell(ConfigRef settings, const ConfigKey<T>& key)
      : m_value(key.Default()),
        m_key(key),
        m_registration(internal::LiveRegistrar::Follow(settings, key.Group(), key.Name(), &write, this)) {}

  // Acquire, with the release in write(): what the setter did before its set is visible with the value, as it
  // is after a read of the store, so that of two settings, one set after the other, a reader of the later
  // one's new value finds the earlier one's, too. That a set which has returned is seen takes no order at
  // all: it happens before the read, and an atomic never goes back from what happened before. On x86-64 this
  // is a plain load.
  T Get() const { return m_value.load(std::memory_order_acquire); }
  bool IsFollowing() const { return m_registration != nullptr; }

 private:
  // In the order of the changes, under the lock under which the store makes them.
  static void write(void* cell, const ConfigData* stored) noexcept {
    auto& self = *static_cast<LiveCell*>(cell);
    const T value =
        stored == nullptr ? self.m_key.Default() : ReadAs<T>(*stored).value_or(self.m_key.Default());
    self.m_value.store(value, std::memory_order_release);
  }

  std::atomic<T> m_value;
  const ConfigKey<T> m_key;
  // The last member: it begins when the others are there, and ends before them.
  const std::shared_ptr<internal::LiveRegistration> m_registration;
};

}  // namespace detail

/// A setting that any thread reads without waiting, real-time threads too: Get() is one atomic load. It takes
/// no lock, allocates nothing, and makes no system call.
///
/// The store itself writes the value, at the moment in which it changes what is stored: Get() gives what
/// ConfigKey::Get() of the same store or facade gives, at every moment. So once a set has returned, on
/// whatever thread, every later Get() sees its value or a newer one, also when the set found its value stored
/// already, or when a subscriber threw. A removal, of the name or of its group, by key or not, and a
/// transient set are seen as well: the value is then the key's default. What is not a whole T is refused, as
/// by the key.
///
/// It is not a subscription: a name may have any number of them, beside subscriptions, through one facade
/// too, and what a set returns does not change.
///
/// A facade need not be bound, nor have the default group that the key asks for: Get() gives the key's
/// default until it has both. An IKalConfig that is not this library's own is refused, and so is
/// KAL_CONFIG_GROUP_DEFAULT with a store: it is false, and Get() gives the key's default for ever.
///
/// Copies share one value; the last one ends it. A move copies. Making one and ending the last allocate,
/// free, and take locks for a short time: not for real-time threads.
///
/// @threads Get() and the conversion to bool, from any thread at any time; assignment and destruction by one
/// owner, on any thread, callbacks included, while nobody reads this object.
/// @lifetime It may outlive the store or facade. A facade that ends changes nothing for what has followed its
/// store; what has not, never will. After the end of the store, Get() gives the last value.
/// @par Example
/// @code{.cpp}
/// constexpr ConfigKey<int> kMaxFps{KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
/// KalConfigHelper settings(7);
/// const LiveConfig maxFps(settings, kMaxFps);
/// assert(maxFps.Get() == 30);  // it is not set
/// settings.SetKalConfig("MaxFps", 15, KAL_CONFIG_GROUP_VIDEO);
/// assert(maxFps.Get() == 15);
/// kMaxFps.Remove(settings);
/// assert(maxFps.Get() == 30);
/// @endcode
template <class T>
class LiveConfig {
  static_assert(
      detail::kIsLiveType<T>,
      "a LiveConfig is read without a lock: its type is one whose std::atomic is always lock-free, such "
      "as bool, a number, an enum or a duration; read a std::string by its ConfigKey");

 public:
  /// Follows a setting from now on. A failed allocation leaves the constructor as std::bad_alloc.
  /// @param settings  a store or a facade, bound or not
  /// @param key  the setting's
  [[nodiscard]] LiveConfig(ConfigRef settings, const ConfigKey<T>& key)
      : m_cell(std::make_shared<detail::LiveCell<T>>(settings, key)) {}
  ///@{
  /// Shares the other's value.
  LiveConfig(const LiveConfig&) = default;
  LiveConfig& operator=(const LiveConfig&) = default;
  ///@}
  ~LiveConfig() = default;

  /// @return What is stored; the key's default when nothing is, or it is not a whole T.
  T Get() const { return m_cell->Get(); }

  /// @return Whether it follows the setting, or will when the facade is bound; false when it was refused.
  explicit operator bool() const { return m_cell->IsFollowing(); }

 private:
  std::shared_ptr<const detail::LiveCell<T>> m_cell;
};

}  // namespace kalStore
