// SPDX-License-Identifier: Apache-2.0
#include <bit>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "journal/JournalEncoder.h"

namespace kalStore::internal {

using namespace journal_record;

namespace {

class RecordReader {
 public:
  explicit RecordReader(const std::uint64_t* next) : m_next(next) {}

  std::uint64_t Take() { return *m_next++; }
  std::optional<JournalString> Take(std::uint8_t sizeAndCut) {
    if (sizeAndCut == kNone) return std::nullopt;
    const std::size_t size = sizeAndCut & ~kCut;
    JournalString string{std::string(size, '\0'), (sizeAndCut & kCut) != 0};
    char* const bytes = string.text.data();
    if (size < kWord) {
      if (size != 0) std::memcpy(bytes, m_next++, size);
    } else {
      for (std::size_t at = 0; at < size - kWord; at += kWord) std::memcpy(bytes + at, m_next++, kWord);
      std::memcpy(bytes + size - kWord, m_next++, kWord);
    }
    return string;
  }

 private:
  const std::uint64_t* m_next;
};

std::uint32_t High(std::uint64_t word) {
  return static_cast<std::uint32_t>(word >> 32);
}

std::uint32_t Low(std::uint64_t word) {
  return static_cast<std::uint32_t>(word);
}

}  // namespace

std::size_t RecordSize(std::uint64_t first) {
  const auto tags = std::bit_cast<Tags>(first);
  std::size_t words = kHeadWords;
  if ((tags.flags & kHasDelivery) != 0) words += kDeliveryWords;
  if ((tags.flags & kHasPlace) != 0) ++words;
  for (const std::uint8_t size : tags.sizes) {
    if (size != kNone) words += ((size & ~kCut) + kWord - 1) / kWord;
  }
  return words;
}

JournalEvent Decode(const JournalRing::Words& words) {
  RecordReader reader(words.data());
  const auto tags = std::bit_cast<Tags>(reader.Take());
  JournalEvent event;
  event.kind = tags.kind;
  event.way = tags.way;
  event.timeNs = static_cast<std::int64_t>(reader.Take());
  const std::uint64_t where = reader.Take();
  event.callId = High(where);
  if (IsOfStatistics(tags.kind)) {
    event.entityType = static_cast<std::int32_t>(Low(where));
  } else {
    event.group = static_cast<KalConfigGroup>(Low(where));
  }
  const std::uint64_t outcome = reader.Take();
  event.result = static_cast<std::int32_t>(High(outcome));
  event.count = Low(outcome);
  event.caller = std::bit_cast<const void*>(static_cast<std::uintptr_t>(reader.Take()));
  event.threadId = static_cast<unsigned long>(reader.Take());
  if ((tags.flags & kHasDelivery) != 0) {
    event.id = reader.Take();
    event.cause = reader.Take();
    event.waitedNs = static_cast<std::int64_t>(reader.Take());
    event.ranNs = static_cast<std::int64_t>(reader.Take());
  }
  if ((tags.flags & kHasPlace) != 0) {
    const std::uint64_t place = reader.Take();
    event.line = High(place);
    event.column = Low(place);
  }
  event.name = reader.Take(tags.sizes[kName]).value_or(JournalString{});
  event.oldValue = reader.Take(tags.sizes[kOldValue]);
  event.newValue = reader.Take(tags.sizes[kNewValue]);
  event.label = reader.Take(tags.sizes[kLabel]).value_or(JournalString{});
  std::optional<JournalString> detail = reader.Take(tags.sizes[kDetail]);
  if ((tags.flags & kHasThrown) != 0) {
    event.thrown = std::move(detail);
  } else {
    event.document = std::move(detail).value_or(JournalString{});
  }
  return event;
}

}  // namespace kalStore::internal
