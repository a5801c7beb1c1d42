// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "statistics/RelaxedAccess.h"
#include "tessel/ResultCode.h"
#include "util/bounded_copy.h"

// Blocks to and from buffers of callers, which may have any alignment and be null.
namespace kalStore::internal {

template <class Block>
std::int32_t CopyIn(Block& block, const void* buffer) {
  if (buffer == nullptr) return kResultNotFound;
  Block copy;
  memcpy_s(&copy, sizeof copy, buffer, sizeof copy);
  relaxed::StoreBlock(block, copy);
  return kResultOk;
}

/// `finish` is given the copy before it is handed out.
template <class Block, class Finish>
std::int32_t CopyOut(const Block& block, void* buffer, Finish finish) {
  if (buffer == nullptr) return kResultNotFound;
  Block copy = relaxed::LoadBlock(block);
  finish(copy);
  memcpy_s(buffer, sizeof copy, &copy, sizeof copy);
  return kResultOk;
}

}  // namespace kalStore::internal
