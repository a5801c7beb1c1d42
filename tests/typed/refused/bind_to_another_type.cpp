// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  const Binding binding = kMaxFps.Bind(settings, [] { return 15.0; });
#else
  const Binding binding = kMaxFps.Bind(settings, [] { return 15; });
#endif
}
