// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/export.h"
#include "util/CKalUnknownImpl.h"

namespace kal {

/// The reference count of a shared object, and its interfaces.
/// @threads Any operation, from any thread.
/// @lifetime The object ends with its last reference.
/// @par Example
/// @code{.cpp}
/// auto* const statistics = new KalVideoStatisticInfo(7);
/// assert(statistics->AddRef() == 1);
/// void* part = nullptr;
/// assert(statistics->QueryInterface(kStatisticsInterfaceId, &part) == kResultOk);
/// assert(statistics->GetReference() == 2);
/// static_cast<kal::CKalUnknownImpl*>(part)->ReleaseReference();
/// assert(statistics->Release() == 0);
/// @endcode
class TESSEL_API IKalUnknown {
 public:
  /// Adds a reference.
  /// @pre The caller holds a reference, or the object has no other user yet.
  /// @return The new count (low 32 bits).
  virtual std::uint32_t AddRef() = 0;
  /// Releases a reference.
  /// @pre The caller holds a reference.
  /// @return The new count (low 32 bits).
  /// At 0 the object is destroyed. A registry that handed it out forgets it, under the registry's lock.
  /// @invalidates At 0, the object.
  virtual std::uint32_t Release() = 0;
  /// Asks for an interface.
  /// @param iid  the interface's; the statistics objects know kStatisticsInterfaceId
  /// @param ppv  receives the interface, with one reference more; null for an unknown `iid`
  /// @return kResultOk; kResultNoInterface for an unknown `iid`; kResultNullOutput when `ppv` is null.
  virtual std::int32_t QueryInterface(const _tagUUID& iid, void** ppv) = 0;
  /// @return The count at this moment (low 32 bits), for reports.
  virtual std::uint32_t GetReference() = 0;

 protected:
  ~IKalUnknown() = default;
};

}  // namespace kal

namespace kalStore {

/// The interface that the statistics objects can be asked for, their kal::CKalUnknownImpl:
/// 00000000-2013-0114-0123-456789ABCDEF.
inline constexpr kal::_tagUUID kStatisticsInterfaceId{
    0x00000000, 0x2013, 0x0114, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};

}  // namespace kalStore
