// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  const auto s = kMaxFps.Subscribe(settings, [](const auto&) {}, [](int) {});
#else
  const auto s = kMaxFps.Subscribe(settings, [](const auto&) {}, [](std::function<void()>) {});
#endif
}
