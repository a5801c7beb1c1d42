#pragma once

#include <cstdint>

#include "tessel/export.h"
#include "util/CKalUnknownImpl.h"

namespace kal {

/// The references of a shared object, and its interfaces.
/// Threads: any operation, from any thread. Lifetime: the object ends with its last reference.
class TESSEL_API IKalUnknown {
 public:
  /// One reference more; returns the new count (low 32 bits). REQUIRES: the caller holds a reference.
  virtual std::uint32_t AddRef() = 0;
  /// Gives one reference back; returns the new count (low 32 bits). At 0 the object is gone.
  virtual std::uint32_t Release() = 0;
  /// Stores the interface that `iid` names in `*ppv`, with one reference more: 0. An unknown `iid`:
  /// 0x46004005,
  /// `*ppv` null. `ppv` null: 0x46004006.
  virtual std::int32_t QueryInterface(const _tagUUID& iid, void** ppv) = 0;
  /// The count at this moment (low 32 bits), for reports.
  virtual std::uint32_t GetReference() = 0;

 protected:
  ~IKalUnknown() = default;
};

}  // namespace kal

namespace kalStore {

/// The one interface that the statistics objects can be asked for, their kal::CKalUnknownImpl:
/// 00000000-2013-0114-0123-456789ABCDEF.
inline constexpr kal::_tagUUID kStatisticsInterfaceId{
    0x00000000, 0x2013, 0x0114, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};

}  // namespace kalStore
