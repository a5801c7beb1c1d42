// SPDX-License-Identifier: Apache-2.0
#include "EventList.h"

namespace cm::internal {

void EventList::Insert(ICmEvent* event) {
  ICmEvent** link = &m_first;
  while (*link != nullptr && (*link)->m_priority < event->m_priority) link = &(*link)->m_lastOfRun->m_next;

  ICmEvent* run = *link;
  if (run != nullptr && run->m_priority == event->m_priority) {
    link = &run->m_lastOfRun->m_next;
    run->m_lastOfRun = event;
  } else {
    event->m_lastOfRun = event;
  }
  event->m_next = *link;
  *link = event;
}

ICmEvent* EventList::Pop() {
  ICmEvent* event = m_first;
  m_first = event->m_next;
  if (m_first != nullptr && m_first->m_priority == event->m_priority)
    m_first->m_lastOfRun = event->m_lastOfRun;
  return event;
}

}  // namespace cm::internal
