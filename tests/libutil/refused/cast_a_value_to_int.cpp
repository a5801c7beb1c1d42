// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

int Use() {
#ifdef REFUSED
  return static_cast<int>(Value());
#else
  return Value().ToInt();
#endif
}
