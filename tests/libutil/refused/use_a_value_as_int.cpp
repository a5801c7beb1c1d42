// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

int Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToInt();
#endif
}
