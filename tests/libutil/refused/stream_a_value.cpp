// SPDX-License-Identifier: Apache-2.0
#include <ostream>

#include "Value.h"

void Use(std::ostream& stream) {
#ifdef REFUSED
  stream << Value();
#else
  stream << Value().ToString();
#endif
}
