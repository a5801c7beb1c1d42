// SPDX-License-Identifier: Apache-2.0
#include "json/KindAssertion.h"

#include <cstdio>
#include <cstdlib>

namespace kalStore::internal {

void AssertionFailed(int line, const char* signature, const char* condition) {
  std::fprintf(stderr, "json:%d: %s: Assertion `%s' failed.\n", line, signature, condition);
  std::abort();
}

}  // namespace kalStore::internal
