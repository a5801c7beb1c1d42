// SPDX-License-Identifier: Apache-2.0
#include "record/CutValues.h"

#include "record/LineText.h"
#include "record/Picture.h"

namespace kalStore::internal {

namespace {

bool HasChanged(const JournalEvent& event) {
  return event.kind <= JournalKind::kGroupRemoved && event.result != kResultUnchanged &&
         event.result != kResultBadArgument;
}

}  // namespace

void CutValues::Take(const JournalEvent& event, EventLines& lines) {
  if (event.missed != 0) m_values.clear();  // What was missed may have changed them.
  if (!m_values.empty()) forget(event);
  if (event.kind != JournalKind::kSet || !HasChanged(event) || event.name.isCut) return;
  if (!event.newValue || !event.newValue->isCut) return;
  if (lines.Shows(event.callId, event.group, event.name.text) != RecordingShows::kAll) return;
  m_values[{event.callId, event.group, event.name.text}] = {event.number, event.timeNs,
                                                            std::string(lines.Origin(event))};
}

CutValues::Settings CutValues::Read() const {
  Settings settings;
  for (const auto& [key, cut] : m_values) {
    const auto [call, isNew] = settings.try_emplace(std::get<0>(key));
    if (isNew) call->second = InspectSettings(call->first);
  }
  return settings;
}

// A value that was read is the one of its event when no later event changes it up to the number that comes
// next after the reading: numbers are drawn with the change, under its lock, which the reading takes, too.
void CutValues::Append(LineBuffer& out, std::int64_t startNs, const Settings& settings, JournalReader reader,
                       std::uint64_t next) {
  const std::uint64_t end = NextJournalNumber();
  for (JournalEvent event; next < end && reader.Next(event); next = event.number + 1) {
    if (event.missed != 0) return m_values.clear();
    forget(event);
  }
  if (next < end) return;
  for (const auto& [callId, ofCall] : settings) {
    for (const InspectedSetting& setting : ofCall) {
      const auto found = m_values.find({callId, setting.group, setting.name});
      if (found == m_values.end()) continue;
      const Cut& cut = found->second;
      LineText line(out, "set", cut.timeNs - startNs);
      line.Number("cause", cut.number).Number("call", callId).True("picture");
      WriteSetting(line, setting.group, setting.name, setting.value, RecordingShows::kAll);
      if (!cut.origin.empty()) line.Raw("origin", cut.origin);
      line.End();
    }
  }
  m_values.clear();
}

// What the event has replaced or removed: found by its key, for there may be as many values as events.
void CutValues::forget(const JournalEvent& event) {
  const auto first = [&](int group) {
    return m_values.lower_bound({event.callId, static_cast<KalConfigGroup>(group), ""});
  };
  if (event.kind == JournalKind::kStoreEnded) {
    m_values.erase(first(0), first(KAL_CONFIG_GROUP_LAST));
  } else if (!HasChanged(event)) {
    return;
  } else if (event.kind == JournalKind::kGroupRemoved || event.name.isCut) {
    m_values.erase(first(event.group), first(event.group + 1));
  } else {
    m_values.erase({event.callId, event.group, event.name.text});
  }
}

}  // namespace kalStore::internal
