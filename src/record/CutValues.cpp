// SPDX-License-Identifier: Apache-2.0
#include "record/CutValues.h"

#include "record/LineText.h"
#include "record/Picture.h"

namespace kalStore::internal {

namespace {

// Whether the event gave its name another value. That of a cut name is nobody's here: a cut one is longer.
bool ReplacesItsValue(const JournalEvent& event) {
  return event.kind == JournalKind::kSet && event.result != kResultUnchanged &&
         event.result != kResultBadArgument && !event.name.isCut;
}

}  // namespace

void CutValues::Take(const JournalEvent& event, EventLines& lines) {
  if (event.missed != 0) m_values.clear();  // What was missed may have changed them.
  forget(event);
  if (!ReplacesItsValue(event) || !event.newValue || !event.newValue->isCut) return;
  if (lines.Shows(event.callId, event.group, event.name.text) != RecordingShows::kAll) return;
  m_values[keyOf(event)] = {event.number, event.timeNs, std::string(lines.Origin(event))};
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

// A value that was removed needs nothing: it is not read any more, or was read before.
void CutValues::forget(const JournalEvent& event) {
  if (!m_values.empty() && ReplacesItsValue(event)) m_values.erase(keyOf(event));
}

}  // namespace kalStore::internal
