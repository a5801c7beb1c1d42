#include "Value.h"

unsigned int Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToUInt();
#endif
}
