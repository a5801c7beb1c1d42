// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  CallStore other = call;
#else
  CallStore other = std::move(call);
#endif
}
