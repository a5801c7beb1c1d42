// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

long Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToInt64();
#endif
}
