// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "journal/JournalRun.h"
#include "store/CSwitchThreadEvent.h"
#include "tessel/ConfigEventHandler.h"

namespace kalStore::internal {

/// A change whose deliveries the journal has, too.
struct ChangeInJournal {
  std::uint32_t callId;
  JournalSource source;
  std::int64_t timeNs;  ///< of the set
  /// When the last delivery ended, and so the next one begins: one look at the clock for both.
  std::int64_t nowNs;
  std::uint64_t cause = 0;  ///< the number of the set's event

  /// The entry of a delivery that begins now; nobody is called yet.
  JournalEntry Delivery(SubscribeId_t id, const KalConfigEvent& event) const {
    JournalEntry entry{.kind = JournalKind::kDelivered,
                       .way = JournalWay::kDropped,
                       .callId = callId,
                       .source = source,
                       .timeNs = nowNs,
                       .group = event.m_group,
                       .id = id,
                       .cause = cause,
                       .waitedNs = nowNs - timeNs};
    if (cause == 0) {  // Otherwise readers take them from the event of the set.
      entry.name = event.m_name;
      entry.newValue = &event.m_newValue;
    }
    return entry;
  }
};

/// ConfigEventHandler::Notify() of a delivery that the journal has.
bool NotifyInJournal(ConfigEventHandler& handler, const KalConfigEvent& event, ChangeInJournal& change);

/// A delivery to another thread that writes its event when it has run, or when it ends without.
class SwitchEventInJournal final : public CSwitchThreadEvent {
 public:
  SwitchEventInJournal(const ChangeInJournal& change, SubscribeId_t id, JournalWay way,
                       const KalConfigEvent& event, const fnConfigChangedCallBack& fnNotify);

  int OnEventFire() override;

 private:
  ~SwitchEventInJournal() override;

  ChangeInJournal m_change;
  const SubscribeId_t m_id;
  const JournalWay m_way;
  bool m_hasFired = false;
  char m_label[kJournalLongestLabel + 2] = {};  // The setter's scope may be over.
};

}  // namespace kalStore::internal
