// SPDX-License-Identifier: Apache-2.0
#include <optional>

#include "Value.h"

std::optional<int> Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToInt();
#endif
}
