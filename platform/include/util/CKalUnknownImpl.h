#pragma once

#include <cstdint>

#include "util/CCmReferenceControlT.h"
#include "util/export.h"

namespace kal {

/// Identifies an interface. Its textual form is the members in hexadecimal with dashes between them, and one
/// more dash after the first two of the last eight bytes.
struct _tagUUID {
  std::uint32_t data1;
  std::uint16_t data2;
  std::uint16_t data3;
  std::uint8_t data4[8];

  friend bool operator==(const _tagUUID&, const _tagUUID&) = default;
};

/// The reference-counted part of an object that can be asked for interfaces.
class UTIL_API CKalUnknownImpl : public CCmReferenceControlT<CCmMutexThread> {
 public:
  ~CKalUnknownImpl() override;

  /// Knows no interface: sets `*ppv` to null and returns 0x46004005; 0x46004006 when `ppv` is null.
  virtual std::int32_t QueryInterface(const _tagUUID& iid, void** ppv);
};

}  // namespace kal
