#include "Use.h"

void Use() {
#ifdef REFUSED
  Subscription other = subscription;
#else
  Subscription other = std::move(subscription);
#endif
}
