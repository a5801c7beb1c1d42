// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

char Use() {
#ifdef REFUSED
  return Value();
#else
  return *Value().ToCstr();
#endif
}
