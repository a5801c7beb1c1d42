// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalRecord.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "util/ACmThread.h"
#include "util/ConfigData.h"

namespace kalStore::internal {

namespace {

// The strings of a record, in their order. A document's entry throws nothing that is recorded with it.
enum Part : std::size_t { kName, kOldValue, kNewValue, kLabel, kDocument, kThrown, kParts };
constexpr std::size_t kLongest[kParts] = {kJournalLongestValue, kJournalLongestValue,  kJournalLongestValue,
                                          kJournalLongestLabel, kJournalLongestDetail, kJournalLongestDetail};

// The record's beginning. Its strings follow, one right behind the other.
struct Head {
  std::int64_t timeNs;
  std::uint64_t threadId;
  const void* caller;
  std::uint64_t id;
  std::uint64_t cause;
  std::int64_t waitedNs;
  std::int64_t ranNs;
  std::uint32_t callId;
  std::int32_t group;
  std::int32_t result;
  std::uint32_t count;
  std::uint32_t line;
  std::uint32_t column;
  std::int8_t entityType;
  JournalKind kind;
  JournalWay way;
  // A bit for each part.
  std::uint8_t present;
  std::uint8_t cut;
  std::uint8_t sizes[kParts];
};
constexpr std::size_t kMostBytes = 3 * kJournalLongestValue + kJournalLongestLabel + kJournalLongestDetail;
static_assert(sizeof(Head) + kMostBytes <= sizeof(JournalRing::Words));
static_assert(sizeof(Head) % sizeof(std::uint64_t) == 0);

// Where to cut a longer string: before a character of UTF-8, if it is that.
std::size_t CutSize(std::string_view text, std::size_t longest) {
  std::size_t size = longest;
  const auto isContinuation = [&] { return (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80; };
  while (size > longest - 4 && isContinuation()) --size;
  return isContinuation() ? longest : size;
}

class Encoder {
 public:
  Encoder(Head& head, JournalRing::Words& words)
      : m_head(head), m_end(reinterpret_cast<char*>(words.data()) + sizeof(Head)) {}

  void Add(Part part, std::string_view text) {
    const auto bit = static_cast<std::uint8_t>(1U << part);
    std::size_t size = text.size();
    if (size > kLongest[part]) {
      size = CutSize(text, kLongest[part]);
      m_head.cut |= bit;
    }
    m_head.present |= bit;
    m_head.sizes[part] = static_cast<std::uint8_t>(size);
    std::memcpy(m_end, text.data(), size);
    m_end += size;
  }

  char* End() const { return m_end; }

 private:
  Head& m_head;
  char* m_end;
};

}  // namespace

std::span<const std::uint64_t> Encode(const JournalEntry& entry, JournalRing::Words& words) {
  Head head{.timeNs = entry.timeNs,
            .threadId = GetThreadSelfId(),
            .caller = entry.source.caller,
            .id = entry.id,
            .cause = entry.cause,
            .waitedNs = entry.waitedNs,
            .ranNs = entry.ranNs,
            .callId = entry.callId,
            .group = entry.group,
            .result = entry.result,
            .count = entry.count,
            .line = entry.source.line,
            .column = entry.source.column,
            .entityType = static_cast<std::int8_t>(entry.entityType),
            .kind = entry.kind,
            .way = entry.way,
            .present = 0,
            .cut = 0,
            .sizes = {}};
  Encoder encoder(head, words);
  if (entry.name != nullptr) encoder.Add(kName, entry.name);
  if (entry.oldValue != nullptr && entry.oldValue->IsValid())
    encoder.Add(kOldValue, entry.oldValue->ToString());
  if (entry.newValue != nullptr && entry.newValue->IsValid())
    encoder.Add(kNewValue, entry.newValue->ToString());
  if (!entry.source.label.empty()) encoder.Add(kLabel, entry.source.label);
  if (entry.thrown != nullptr) {
    encoder.Add(kThrown, entry.thrown);
  } else if (!entry.source.document.empty()) {
    encoder.Add(kDocument, entry.source.document);
  }
  std::memcpy(words.data(), &head, sizeof head);

  // The rest of the last word is written, too.
  char* const end = encoder.End();
  const auto bytes = static_cast<std::size_t>(end - reinterpret_cast<char*>(words.data()));
  const std::size_t used = (bytes + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t);
  std::memset(end, 0, used * sizeof(std::uint64_t) - bytes);
  return {words.data(), used};
}

JournalEvent Decode(const JournalRing::Words& words) {
  Head head;
  std::memcpy(&head, words.data(), sizeof head);
  JournalEvent event;
  event.kind = head.kind;
  event.timeNs = head.timeNs;
  event.threadId = head.threadId;
  event.callId = head.callId;
  event.group = static_cast<KalConfigGroup>(head.group);
  event.entityType = head.entityType;
  event.result = head.result;
  event.count = head.count;
  event.id = head.id;
  event.cause = head.cause;
  event.way = head.way;
  event.waitedNs = head.waitedNs;
  event.ranNs = head.ranNs;
  event.caller = head.caller;
  event.line = head.line;
  event.column = head.column;

  const char* bytes = reinterpret_cast<const char*>(words.data()) + sizeof head;
  std::optional<JournalString> parts[kParts];
  for (std::size_t part = 0; part < kParts; ++part) {
    if ((head.present >> part & 1) == 0) continue;
    parts[part] = JournalString{{bytes, head.sizes[part]}, (head.cut >> part & 1) != 0};
    bytes += head.sizes[part];
  }
  event.name = std::move(parts[kName]).value_or(JournalString{});
  event.oldValue = std::move(parts[kOldValue]);
  event.newValue = std::move(parts[kNewValue]);
  event.label = std::move(parts[kLabel]).value_or(JournalString{});
  event.document = std::move(parts[kDocument]).value_or(JournalString{});
  event.thrown = std::move(parts[kThrown]);
  return event;
}

}  // namespace kalStore::internal
