// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

#include "tessel/KalStatisticsTypes.h"

namespace kalStore::internal {

/// The codec code of an audio payload type; none for a type without a codec.
std::optional<std::uint32_t> AudioCodecCode(KAL_AUDIO_PAYLOAD_TYPE payloadType);

}  // namespace kalStore::internal
