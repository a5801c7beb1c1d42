// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

bool Use() {
#ifdef REFUSED
  return Value() < 30;
#else
  return Value().ToInt() < 30;
#endif
}
