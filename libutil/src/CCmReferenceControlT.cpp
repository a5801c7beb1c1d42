// SPDX-License-Identifier: Apache-2.0
#include "util/CCmReferenceControlT.h"

CCmReferenceControlT<CCmMutexThread>::~CCmReferenceControlT() = default;

void CCmReferenceControlT<CCmMutexThread>::OnReferenceDestory() {
  delete this;
}
