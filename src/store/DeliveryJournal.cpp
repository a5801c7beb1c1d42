// SPDX-License-Identifier: Apache-2.0
#include "store/DeliveryJournal.h"

namespace kalStore::internal {

SwitchEventInJournal::SwitchEventInJournal(const ChangeInJournal& change, SubscribeId_t id, JournalWay way,
                                           const KalConfigEvent& event,
                                           const fnConfigChangedCallBack& fnNotify)
    : CSwitchThreadEvent(event, fnNotify), m_change(change), m_id(id), m_way(way) {
  m_change.source.place = nullptr;  // The import may be over.
  // One byte more than an event has of it: a label that is cut there is marked so.
  if (change.source.label == nullptr) return;
  std::string_view(change.source.label).copy(m_label, sizeof m_label - 1);
  m_change.source.label = m_label;
}

SwitchEventInJournal::~SwitchEventInJournal() {
  if (m_hasFired) return;
  m_change.nowNs = JournalNowNs();
  WriteJournal(m_change.Delivery(m_id, m_event));
}

int SwitchEventInJournal::OnEventFire() {
  m_hasFired = true;
  m_change.nowNs = JournalNowNs();
  JournalEntry entry = m_change.Delivery(m_id, m_event);
  entry.way = m_way;
  const ComponentScope component;
  RunInJournal(entry, m_change.nowNs, [this] { CSwitchThreadEvent::OnEventFire(); });
  return 0;
}

}  // namespace kalStore::internal
