#include "Value.h"

std::string Use() {
#ifdef REFUSED
  return Value();
#else
  return Value().ToString();
#endif
}
