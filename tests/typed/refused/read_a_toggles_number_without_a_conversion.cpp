// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  const int delay = settings.GetFeatureToggle(KAL_FT_MinAudioSlideBufferDelay);
  static_cast<void>(delay);
#else
  const bool isOn = settings.GetFeatureToggle(KAL_FT_MinAudioSlideBufferDelay);
  static_cast<void>(isOn);
#endif
}
