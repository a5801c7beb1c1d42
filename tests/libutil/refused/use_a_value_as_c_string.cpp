#include "Value.h"

const char* Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToCstr();
#endif
}
