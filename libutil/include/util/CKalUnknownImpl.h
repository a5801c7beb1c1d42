// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "util/CCmReferenceControlT.h"
#include "util/export.h"

namespace kal {

/// Identifies an interface. Written as a string, it is the members in hexadecimal with dashes between them,
/// and one more dash after the first two of the last eight bytes.
/// @threads A plain value.
/// @par Example
/// @code{.cpp}
/// kal::_tagUUID id = kStatisticsInterfaceId;
/// assert(id == kStatisticsInterfaceId);
/// id.data1 = 1;
/// assert(!(id == kStatisticsInterfaceId));
/// @endcode
struct _tagUUID {
  std::uint32_t data1;    ///< the first eight digits
  std::uint16_t data2;    ///< the next four
  std::uint16_t data3;    ///< the next four
  std::uint8_t data4[8];  ///< the last sixteen, byte by byte

  /// Whether all members are equal.
  friend bool operator==(const _tagUUID&, const _tagUUID&) = default;
};

/// The reference-counted part of an object that can be asked for interfaces.
///
/// @threads Any.
class UTIL_API CKalUnknownImpl : public CCmReferenceControlT<CCmMutexThread> {
 public:
  ~CKalUnknownImpl() override;

  /// Knows no interface.
  /// @param iid  any
  /// @param ppv  set to null
  /// @return `kResultNoInterface`; `kResultNullOutput` when `ppv` is null (see tessel/ResultCode.h).
  virtual std::int32_t QueryInterface(const _tagUUID& iid, void** ppv);
};

}  // namespace kal
