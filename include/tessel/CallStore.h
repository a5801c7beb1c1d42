// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <utility>

#include "tessel/IKalConfig.h"
#include "tessel/KalConfigRegistry.h"

namespace kalStore {

/// The store of a call, held for a scope: made, or shared with whoever holds it, and released at the end.
///
/// @threads The handle has one owner, who may be any thread; the store is for all.
/// @lifetime Whatever uses the store, subscriptions too, must end before the handle. Do not use it after
/// DestroyKalConfig().
/// @par Example
/// @code{.cpp}
/// {
///   const CallStore call(7, CallStore::kEndsCall);
///   call->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 15, false, false);
///   const CallStore shared(7);
///   assert(&*shared == &*call);
/// }
/// assert(GetKalConfigSizeForUT() == 0);
/// @endcode
class [[nodiscard]] CallStore {
 public:
  /// What the end of the scope means for the call.
  enum Role {
    kSharesCall,  ///< nothing: the store lives until the call ends
    kEndsCall,    ///< the call ends: the store goes with its last holder
  };

  /// Makes or shares the store. A failed allocation leaves the constructor as std::bad_alloc.
  /// @param callId  any
  /// @param role  what the end of the scope means for the call
  [[nodiscard]] explicit CallStore(std::uint32_t callId, Role role = kSharesCall)
      : m_callId(callId), m_role(role) {
    CreateKalConfig(callId, &m_store);
  }

  /// The source then holds nothing, and may only be assigned to or destroyed.
  CallStore(CallStore&& other) noexcept
      : m_callId(other.m_callId), m_role(other.m_role), m_store(std::exchange(other.m_store, nullptr)) {}
  /// Releases what this handle held; the source then holds nothing.
  CallStore& operator=(CallStore&& other) noexcept {
    if (this == &other) return *this;
    const CallStore old(std::move(*this));  // Ends last: a callback of its store may own this handle.
    m_callId = other.m_callId;
    m_role = other.m_role;
    m_store = std::exchange(other.m_store, nullptr);
    return *this;
  }

  /// Ends the call, as the role says, and releases the store.
  /// @invalidates Pointers to the store, unless somebody else holds it.
  ~CallStore() {
    if (m_store == nullptr) return;
    // First the call, while its store is still this one.
    if (m_role == kEndsCall) CleanUpKalConfig(m_callId);
    ReleaseKalConfig(m_store);
  }

  ///@{
  /// @return The store.
  IKalConfig& operator*() const { return *m_store; }
  IKalConfig* operator->() const { return m_store; }
  ///@}
  /// @return The id given.
  std::uint32_t CallId() const { return m_callId; }

 private:
  std::uint32_t m_callId;
  Role m_role;
  IKalConfig* m_store = nullptr;
};

}  // namespace kalStore
