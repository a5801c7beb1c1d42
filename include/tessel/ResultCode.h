// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace kalStore {

/// What operations return: this for success, one of the other codes otherwise.
inline constexpr std::int32_t kResultOk = 0;
/// No such store, handler or binding, or it is there already.
inline constexpr std::int32_t kResultNoSuchOrExists = 0x46000001;
/// Not found or unusable: missing value, unknown subscription, bad state, a string that is no JSON object.
inline constexpr std::int32_t kResultNotFound = 0x46004001;
/// Bad argument: null or empty name, group above 12, non-empty output slot, call id 0xFFFFFFFF.
inline constexpr std::int32_t kResultBadArgument = 0x46004003;
/// The object does not support the interface asked for.
inline constexpr std::int32_t kResultNoInterface = 0x46004005;
/// The output pointer is null.
inline constexpr std::int32_t kResultNullOutput = 0x46004006;
/// The value did not change and notification was not forced: nobody was notified.
inline constexpr std::int32_t kResultUnchanged = 0x46004009;
/// Nobody to notify, or no binding to compute the value.
inline constexpr std::int32_t kResultNobody = 0x4600400a;

/// A call id that names no call.
inline constexpr std::uint32_t kNoCallId = 0xFFFFFFFF;

}  // namespace kalStore
