// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace kal {

/// What a media component works on; it selects the component's group of settings. 6 to 13 select no group.
enum KalSessionType : std::int32_t {
  KAL_SESSION_AUDIO = 0,        ///< group "Audio"
  KAL_SESSION_VIDEO = 1,        ///< group "Video"
  KAL_SESSION_VIDEO_SLIDE = 2,  ///< group "VideoSlide"
  KAL_SESSION_AUDIO_SLIDE = 3,  ///< group "AudioSlide"
  KAL_SESSION_APPLICATION = 4,  ///< group "Application"
  KAL_SESSION_GAMESTATE = 5,    ///< group "Gamestate"
  KAL_SESSION_AUDIO_SI = 14,    ///< group "AudioSi"
  KAL_SESSION_NONE = 15,        ///< of a group without a session type
};

}  // namespace kal
