// SPDX-License-Identifier: Apache-2.0
#include "Value.h"

void Use(std::string& text) {
#ifdef REFUSED
  text += Value();
#else
  text += Value().ToString();
#endif
}
