#include "Value.h"

long Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToInt64();
#endif
}
