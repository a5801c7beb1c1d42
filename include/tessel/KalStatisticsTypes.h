// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "tessel/export.h"

namespace kal {

/// The video codecs of an encoder, named after their codec codes in the blocks.
enum KalVideoCodecType : std::int32_t {
  KAL_VIDEO_CODEC_CODE_100 = 0,
  KAL_VIDEO_CODEC_CODE_101 = 1,
  KAL_VIDEO_CODEC_CODE_NONE = 2,
  KAL_VIDEO_CODEC_CODE_104 = 3,
};

/// How an encoder scales its pictures down; stored as given. All values of the engine are allowed.
enum KalVideoResDownType : std::int32_t {
  KAL_VIDEO_RES_DOWN_NONE = 0,
};

}  // namespace kal

namespace kalStore {

/// The RTP payload types of an audio codec. Every other value has no codec code.
enum KAL_AUDIO_PAYLOAD_TYPE : std::int32_t {
  KAL_AUDIO_PAYLOAD_PCMU = 0,           ///< codec code 1
  KAL_AUDIO_PAYLOAD_PCMA = 8,           ///< codec code 2
  KAL_AUDIO_PAYLOAD_G722 = 9,           ///< codec code 5
  KAL_AUDIO_PAYLOAD_G729 = 18,          ///< codec code 7
  KAL_AUDIO_PAYLOAD_DYNAMIC_101 = 101,  ///< codec code 4
  KAL_AUDIO_PAYLOAD_DYNAMIC_102 = 102,  ///< codec code 3
  KAL_AUDIO_PAYLOAD_DYNAMIC_103 = 103,  ///< codec code 8
  KAL_AUDIO_PAYLOAD_DYNAMIC_104 = 104,  ///< codec code 9
  KAL_AUDIO_PAYLOAD_DYNAMIC_105 = 105,  ///< codec code 10
  KAL_AUDIO_PAYLOAD_DYNAMIC_106 = 106,  ///< codec code 11
  KAL_AUDIO_PAYLOAD_DYNAMIC_107 = 107,  ///< codec code 12
};

/// Converts a video codec to its code in the blocks.
/// @param codec  any
/// @return 100, 101, 0 and 104 for types 0 to 3; 0 for every other value.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// assert(mapToKALCodec(kal::KAL_VIDEO_CODEC_CODE_101) == 101);
/// @endcode
TESSEL_API std::uint32_t mapToKALCodec(kal::KalVideoCodecType codec);

}  // namespace kalStore

using kalStore::mapToKALCodec;
