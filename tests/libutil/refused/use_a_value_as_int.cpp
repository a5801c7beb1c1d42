#include "Value.h"

int Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToInt();
#endif
}
