#include "Value.h"

void TakesNumber(int);

void Use() {
#ifdef REFUSED
  TakesNumber(Value());
#else
  TakesNumber(Value().ToInt());
#endif
}
