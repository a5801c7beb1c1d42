// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

std::string Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToString();
#endif
}
