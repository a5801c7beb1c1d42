// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

int Use(const int* numbers) {
#ifdef REFUSED
  return numbers[Value()];
#else
  return numbers[Value().ToInt()];
#endif
}
