// SPDX-License-Identifier: Apache-2.0
#include "util/ICmEvent.h"

ICmEvent::ICmEvent(unsigned long id) : m_id(id) {}

ICmEvent::~ICmEvent() = default;

void ICmEvent::OnDestorySelf() {
  delete this;
}
