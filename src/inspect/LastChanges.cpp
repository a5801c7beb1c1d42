// SPDX-License-Identifier: Apache-2.0
#include "inspect/LastChanges.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include "journal/Journal.h"
#include "journal/JournalRecord.h"
#include "journal/JournalState.h"

namespace kalStore::internal {

namespace {

// Whether the event changed what was stored, at least in part.
bool IsChange(const JournalEvent& event) {
  switch (event.kind) {
    case JournalKind::kSet:
      return event.result != kResultBadArgument && event.result != kResultUnchanged;
    case JournalKind::kTransientSet:
      return event.result != kResultBadArgument;
    case JournalKind::kRemoved:
    case JournalKind::kGroupRemoved:
      return event.count != 0;
    default:
      return false;
  }
}

// Whether the last change that was found is the one that gave the value.
bool IsFound(const InspectedSetting& setting) {
  const auto& change = setting.lastChange;
  if (!change || change->kind != JournalKind::kSet) return false;
  const JournalString& made = change->newValue.value_or(JournalString{});
  const std::string_view value = setting.value.ToString();
  return made.isCut ? value.size() > made.text.size() && value.starts_with(made.text) : value == made.text;
}

using Settings = std::vector<InspectedSetting>;

// The first setting that an event may be about.
Settings::iterator FirstOf(const JournalEvent& event, Settings& settings) {
  return std::partition_point(settings.begin(), settings.end(), [&](const InspectedSetting& setting) {
    return std::tie(setting.group, setting.name) < std::tie(event.group, event.name.text);
  });
}

// The name of a removed group's event is empty: its first setting is the group's.
bool IsAbout(const JournalEvent& event, const InspectedSetting& setting) {
  return setting.group == event.group &&
         (event.kind == JournalKind::kGroupRemoved || setting.name == event.name.text);
}

}  // namespace

void FindLastChanges(std::uint32_t callId, const CopyNumbers& numbers, Settings& settings) {
  const JournalState journal = CurrentJournal();
  if (!JournalIsOn() || journal.ring == nullptr) return;
  const std::uint64_t overwritten = journal.end - std::min(journal.end, journal.ring->Capacity());
  std::uint64_t number = std::max({journal.begin, JournalStartNumber(), overwritten});
  for (JournalRing::Words words; number < journal.end; ++number) {
    if (journal.ring->Read(number, words, &RecordSize) != JournalRing::Found::kWhole) continue;
    JournalEvent event = Decode(words);
    if (event.callId != callId || !IsChange(event) || event.name.isCut) continue;
    event.number = number;
    for (auto setting = FirstOf(event, settings); setting != settings.end() && IsAbout(event, *setting);
         ++setting) {
      // Numbers of changes are drawn under the lock of their group: those of earlier ones are lower.
      if (number < numbers[static_cast<std::size_t>(setting->group)]) setting->lastChange = event;
    }
  }
  // The event of a set that was still to be written then is not there, and the one before it gave another
  // value.
  for (InspectedSetting& setting : settings) {
    if (!IsFound(setting)) setting.lastChange.reset();
  }
}

}  // namespace kalStore::internal
