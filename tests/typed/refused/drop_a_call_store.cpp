// SPDX-License-Identifier: Apache-2.0
// says: nodiscard
#include "Use.h"

void Use() {
#ifdef REFUSED
  CallStore(7, CallStore::kEndsCall);
#else
  const CallStore store(7, CallStore::kEndsCall);
#endif
}
