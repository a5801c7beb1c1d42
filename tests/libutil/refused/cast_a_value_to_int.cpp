#include "Value.h"

int Use() {
#ifdef REFUSED
  return static_cast<int>(Value());
#else
  return Value().ToInt();
#endif
}
