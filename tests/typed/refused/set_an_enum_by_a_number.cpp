// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  kCodec.Set(settings, 1);
#else
  kCodec.Set(settings, Codecs::kVp8);
#endif
}
