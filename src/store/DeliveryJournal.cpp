// SPDX-License-Identifier: Apache-2.0
#include "store/DeliveryJournal.h"

#include "journal/JournalWriter.h"

namespace kalStore::internal {

// The event of the set has the place in the document. It has the name and the values, too: readers take them
// from there. Of an initial delivery there is none.
void ChangeInJournal::WriteDelivery(SubscribeId_t id, JournalWay way, const KalConfigEvent& event,
                                    std::int64_t beginNs, const char* thrown) const noexcept {
  const bool isInitial = cause == 0;
  WriteJournalHere({.kind = JournalKind::kDelivered,
                    .way = way,
                    .callId = callId,
                    .source = {source.caller, source.label, nullptr},
                    .timeNs = beginNs,
                    .group = event.m_group,
                    .name = isInitial ? std::string_view(event.m_name) : std::string_view(),
                    .newValue = isInitial ? &event.m_newValue : nullptr,
                    .id = id,
                    .cause = cause,
                    .waitedNs = beginNs - timeNs,
                    .ranNs = nowNs - beginNs,
                    .thrown = thrown});
}

void SetInJournal::Write(const ConfigData& oldValue, const ConfigData& newValue, std::int32_t result,
                         std::uint32_t subscribers, const char* thrown) const noexcept {
  WriteJournalHere({.kind = kind,
                    .number = change.cause,
                    .callId = change.callId,
                    .source = change.source,
                    .timeNs = change.timeNs,
                    .group = group,
                    .name = name,
                    .oldValue = &oldValue,
                    .newValue = &newValue,
                    .result = result,
                    .count = subscribers,
                    .thrown = thrown});
}

SwitchEventInJournal::SwitchEventInJournal(const ChangeInJournal& change, SubscribeId_t id, JournalWay way,
                                           const KalConfigEvent& event,
                                           const fnConfigChangedCallBack& fnNotify)
    : CSwitchThreadEvent(event, fnNotify), m_change(change), m_id(id), m_way(way) {
  // One byte more than an event has of it: a label that is cut there is marked so.
  if (change.source.label == nullptr) return;
  std::string_view(change.source.label).copy(m_label, sizeof m_label - 1);
  m_change.source.label = m_label;
}

SwitchEventInJournal::~SwitchEventInJournal() {
  if (m_hasFired) return;
  m_change.nowNs = JournalNowNs();
  m_change.WriteDelivery(m_id, JournalWay::kDropped, m_event, m_change.nowNs, nullptr);
}

int SwitchEventInJournal::OnEventFire() {
  m_hasFired = true;
  m_change.nowNs = JournalNowNs();
  const ComponentScope component;
  m_change.Run(m_id, m_way, m_event, [this] { CSwitchThreadEvent::OnEventFire(); });
  return 0;
}

}  // namespace kalStore::internal
