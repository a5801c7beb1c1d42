// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

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

  /// Delivers it by `deliver`, from now on, and writes the event of that.
  template <class Deliver>
  void Run(SubscribeId_t id, JournalWay way, const KalConfigEvent& event, Deliver deliver) {
    const std::int64_t beginNs = nowNs;
    RunAndWrite(deliver, [&](const char* thrown) {
      nowNs = JournalNowNs();
      WriteDelivery(id, way, event, beginNs, thrown);
    });
  }
  /// Writes the event of a delivery from `beginNs` to `nowNs`, which threw that; null: nothing.
  void WriteDelivery(SubscribeId_t id, JournalWay way, const KalConfigEvent& event, std::int64_t beginNs,
                     const char* thrown) const noexcept;
};

/// A set that the journal has.
struct SetInJournal {
  ChangeInJournal change;  ///< `cause` is drawn
  JournalKind kind;
  KalConfigGroup group;
  std::string_view name;

  /// Writes its event.
  void Write(const ConfigData& oldValue, const ConfigData& newValue, std::int32_t result,
             std::uint32_t subscribers, const char* thrown) const noexcept;
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
