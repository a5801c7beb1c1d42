// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  StatsRef<AudioStats> other = audio;
#else
  StatsRef<AudioStats> other = std::move(audio);
#endif
}
