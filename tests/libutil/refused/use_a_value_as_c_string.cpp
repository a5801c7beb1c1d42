// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

const char* Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToCstr();
#endif
}
