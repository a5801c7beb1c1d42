// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

int Use() {
#ifdef REFUSED
  return Value() + 1;
#else
  return Value().ToInt() + 1;
#endif
}
