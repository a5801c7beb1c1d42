#include "Value.h"

double Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToDouble();
#endif
}
