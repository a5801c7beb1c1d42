// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

void TakesNumber(int);

void Use() {
#ifdef REFUSED
  TakesNumber(Value());
#else
  TakesNumber(Value().ToInt());
#endif
}
