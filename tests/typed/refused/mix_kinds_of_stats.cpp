// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  StatsRef<ContentAudioStats> other = std::move(audio);
#else
  StatsRef<AudioStats> other = std::move(audio);
#endif
}
