#include "Value.h"

void Use(std::string& text) {
#ifdef REFUSED
  text += Value();
#else
  text += Value().ToString();
#endif
}
