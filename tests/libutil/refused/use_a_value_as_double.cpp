// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

double Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToDouble();
#endif
}
