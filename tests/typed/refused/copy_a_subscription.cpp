// SPDX-License-Identifier: Apache-2.0
#include "Use.h"

void Use() {
#ifdef REFUSED
  Subscription other = subscription;
#else
  Subscription other = std::move(subscription);
#endif
}
