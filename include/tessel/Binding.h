// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>

#include "tessel/ConfigRef.h"

namespace kalStore {

namespace internal {
class ConfigRegistration;
}

/// A binding that removes itself: its callback computes the value of a name whenever GetDynamicConfig() reads
/// it, on the reader's thread. ConfigKey::Bind() makes one in the key's type.
///
/// A name has one binding in a call's store, and one subscription or binding in a facade; a second one is
/// refused. Removal waits for reads in progress, at most 3000 ms; inside the callback itself that wait can
/// only give up. A facade that is not bound records the binding and makes it when it binds; it may be refused
/// then, and before that, a second one of the name is not refused but replaces it.
///
/// @threads For one owner. The callback runs on each reader's thread, on several at once when several read.
/// @lifetime The store or facade must outlive it.
/// @par Example
/// @code{.cpp}
/// constexpr ConfigKey<double> kLoad{KAL_CONFIG_GROUP_METRICS, "Load", 0.0};
/// KalConfigHelper encoder(7), reporter(7);
/// {
///   const Binding binding = kLoad.Bind(encoder, [] { return 0.25; });
///   assert(binding && kLoad.GetDynamic(reporter) == 0.25);
///   assert(kLoad.Bind(reporter, [] { return 0.5; }).RefusalReason() == kResultNoSuchOrExists);
/// }
/// assert(kLoad.GetDynamic(reporter, 1.0) == 1.0);  // nothing is bound any more
/// @endcode
class [[nodiscard, gnu::visibility("default")]] Binding {
 public:
  /// Empty.
  Binding() = default;
  /// Binds; empty when the store or facade refuses, see BindConfig() there.
  /// @param store  a store or a facade
  /// @param group  0 to 12, or a facade's default group
  /// @param name  not null, not empty
  /// @param fn  returns the value, given the reader's default; not empty
  [[nodiscard]] Binding(ConfigRef store, KalConfigGroup group, const char* name, fnConfigInvokeCallBack fn);

  /// The source is empty afterwards.
  Binding(Binding&&) noexcept = default;
  /// Removes what the target had; the source is empty afterwards.
  Binding& operator=(Binding&& other) noexcept;
  ~Binding();

  /// @return Whether it is not empty.
  explicit operator bool() const;
  /// Why it is empty.
  /// @return kResultNoSuchOrExists for a name that is bound, or that the facade has subscribed;
  /// kResultNotFound for a facade without a default group; kResultBadArgument for other bad arguments;
  /// kResultOk when it was not refused.
  std::int32_t RefusalReason() const;

  /// Removes the binding; waits as described above.
  /// @invalidates What the callback captured by reference may go, unless the wait gave up.
  void Remove();

 private:
  std::shared_ptr<internal::ConfigRegistration> m_registration;
};

}  // namespace kalStore
