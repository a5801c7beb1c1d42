// SPDX-License-Identifier: Apache-2.0
// says: nodiscard
#include "Use.h"

void Use() {
#ifdef REFUSED
  kMaxFps.Bind(settings, [] { return 15; });
#else
  const Binding binding = kMaxFps.Bind(settings, [] { return 15; });
#endif
}
