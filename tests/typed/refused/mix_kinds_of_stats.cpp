// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  StatsRef<ContentAudio> other = std::move(audio);
#else
  StatsRef<Audio> other = std::move(audio);
#endif
}
