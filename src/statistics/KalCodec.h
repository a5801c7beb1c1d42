#pragma once

#include <cstdint>
#include <optional>

#include "tessel/KalStatisticsTypes.h"

namespace kalStore::internal {

/// The code of the audio codec that a payload type stands for; none when it stands for no codec.
std::optional<std::uint32_t> AudioCodecCode(KAL_AUDIO_PAYLOAD_TYPE payloadType);

}  // namespace kalStore::internal
