#include "Use.h"

void Use() {
#ifdef REFUSED
  kMaxFps.Set(settings, "15");
#else
  kDevice.Set(settings, "15");
#endif
}
