// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

unsigned int Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToUInt();
#endif
}
