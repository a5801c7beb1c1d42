// SPDX-License-Identifier: Apache-2.0
#include "statistics/KalCodec.h"

namespace kalStore {

std::uint32_t mapToKALCodec(kal::KalVideoCodecType codec) {
  switch (codec) {
    case kal::KAL_VIDEO_CODEC_CODE_100:
      return 100;
    case kal::KAL_VIDEO_CODEC_CODE_101:
      return 101;
    case kal::KAL_VIDEO_CODEC_CODE_NONE:
      return 0;
    case kal::KAL_VIDEO_CODEC_CODE_104:
      return 104;
  }
  return 0;
}

}  // namespace kalStore

namespace kalStore::internal {

std::optional<std::uint32_t> AudioCodecCode(KAL_AUDIO_PAYLOAD_TYPE payloadType) {
  switch (payloadType) {
    case KAL_AUDIO_PAYLOAD_PCMU:
      return 1;
    case KAL_AUDIO_PAYLOAD_PCMA:
      return 2;
    case KAL_AUDIO_PAYLOAD_G722:
      return 5;
    case KAL_AUDIO_PAYLOAD_G729:
      return 7;
    case KAL_AUDIO_PAYLOAD_DYNAMIC_101:
      return 4;
    case KAL_AUDIO_PAYLOAD_DYNAMIC_102:
      return 3;
    case KAL_AUDIO_PAYLOAD_DYNAMIC_103:
      return 8;
    case KAL_AUDIO_PAYLOAD_DYNAMIC_104:
      return 9;
    case KAL_AUDIO_PAYLOAD_DYNAMIC_105:
      return 10;
    case KAL_AUDIO_PAYLOAD_DYNAMIC_106:
      return 11;
    case KAL_AUDIO_PAYLOAD_DYNAMIC_107:
      return 12;
  }
  return std::nullopt;
}

}  // namespace kalStore::internal
