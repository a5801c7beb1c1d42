#include "Use.h"

void Use() {
#ifdef REFUSED
  kDtx.Set(settings, 1);
#else
  kDtx.Set(settings, true);
#endif
}
