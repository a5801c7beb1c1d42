// SPDX-License-Identifier: Apache-2.0
#include "util/CKalUnknownImpl.h"

namespace kal {
namespace {

constexpr std::int32_t kInterfaceNotSupported = 0x46004005;
constexpr std::int32_t kNullOutput = 0x46004006;

}  // namespace

CKalUnknownImpl::~CKalUnknownImpl() = default;

std::int32_t CKalUnknownImpl::QueryInterface(const _tagUUID&, void** ppv) {
  if (ppv == nullptr) return kNullOutput;
  *ppv = nullptr;
  return kInterfaceNotSupported;
}

}  // namespace kal
