// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalRecord.h"

#include <bit>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "journal/JournalClock.h"
#include "util/ACmThread.h"
#include "util/ConfigData.h"

namespace kalStore::internal {

namespace {

// The strings of a record, in their order. The name of a document and what a callback threw share a place: an
// import whose callback threw is named in the events of its sets.
enum Part : std::uint8_t { kName, kOldValue, kNewValue, kLabel, kDetail, kParts };
constexpr std::size_t kLongest[kParts] = {kJournalLongestValue, kJournalLongestValue, kJournalLongestValue,
                                          kJournalLongestLabel, kJournalLongestDetail};

// The size of a part: the bytes that it has here, or that there is none.
constexpr std::uint8_t kNone = 0x7F;
constexpr std::uint8_t kCut = 0x80;

// What follows the words that every record has.
enum Flag : std::uint8_t {
  kHasDelivery = 1,  // Words: id, cause, waitedNs, ranNs.
  kHasPlace = 2,     // A word: line, column.
  kHasThrown = 4,    // The detail is what was thrown.
};

// The first word. The others: time, call and group (of statistics the entity's type), result and count,
// caller, thread; what the flags say; the parts, each in words of its own.
struct Tags {
  JournalKind kind;
  JournalWay way;
  std::uint8_t flags;
  std::uint8_t sizes[kParts];
};
constexpr std::size_t kWord = sizeof(std::uint64_t);
static_assert(sizeof(Tags) == kWord);
constexpr std::size_t kHeadWords = 6;
constexpr std::size_t kDeliveryWords = 4;
constexpr std::size_t kMostBytes = 3 * kJournalLongestValue + kJournalLongestLabel + kJournalLongestDetail;
static_assert(kMostBytes % kWord == 0);
static_assert(kHeadWords + kDeliveryWords + 1 + kMostBytes / kWord == JournalRing::kWords);

bool IsOfStatistics(JournalKind kind) {
  return kind >= JournalKind::kStatisticsMade;
}

// Where to cut a longer string: before a character of UTF-8, if it is that.
std::size_t CutSize(std::string_view string, std::size_t longest) {
  std::size_t size = longest;
  const auto isContinuation = [&] { return (static_cast<unsigned char>(string[size]) & 0xC0) == 0x80; };
  while (size > longest - 4 && isContinuation()) --size;
  return isContinuation() ? longest : size;
}

std::uint64_t WordAt(const char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, kWord);
  return word;
}

// Of a string that is shorter than a word: the bytes from both of its ends on, which may meet in its middle.
std::uint64_t ShortWord(std::string_view string) {
  const char* const bytes = string.data();
  const std::size_t size = string.size();
  char word[kWord] = {};
  const auto copyEnds = [&](auto length) {
    std::memcpy(word, bytes, length);
    std::memcpy(word + size - length, bytes + size - length, length);
  };
  if (size >= 4) {
    copyEnds(std::integral_constant<std::size_t, 4>());
  } else if (size >= 2) {
    copyEnds(std::integral_constant<std::size_t, 2>());
  } else if (size == 1) {
    word[0] = *bytes;
  }
  return WordAt(word);
}

class RecordWriter {
 public:
  explicit RecordWriter(std::atomic<std::uint64_t>* next) : m_next(next) {}

  void Put(std::uint64_t word) { m_next++->store(word, std::memory_order_release); }
  void Put(std::uint32_t high, std::uint32_t low) { Put(std::uint64_t{high} << 32 | low); }

  // Returns the part's size. The last word of a longer string has its last bytes, so that it overlaps the
  // word before.
  std::uint8_t Put(Part part, std::string_view string) {
    std::size_t size = string.size();
    std::uint8_t cut = 0;
    if (size > kLongest[part]) [[unlikely]] {
      size = CutSize(string, kLongest[part]);
      cut = kCut;
    }
    if (size < kWord) {
      if (size != 0) Put(ShortWord(string));
    } else {
      for (std::size_t at = 0; at < size - kWord; at += kWord) Put(WordAt(string.data() + at));
      Put(WordAt(string.data() + size - kWord));
    }
    return static_cast<std::uint8_t>(size | cut);
  }
  std::uint8_t Put(Part part, const ConfigData* value) {
    return value == nullptr || !value->IsValid() ? kNone : Put(part, std::string_view(value->ToString()));
  }
  std::uint8_t Put(Part part, const char* string) {
    return string == nullptr ? kNone : Put(part, std::string_view(string));
  }

 private:
  std::atomic<std::uint64_t>* m_next;
};

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

void Encode(const JournalEntry& entry, JournalRing::PlaceWords& words) {
  if (t_journal.id == 0) t_journal.id = GetThreadSelfId();
  Tags tags{entry.kind, entry.way, 0, {}};
  RecordWriter writer(words.data() + 1);
  writer.Put(static_cast<std::uint64_t>(entry.timeNs != 0 ? entry.timeNs : JournalNowNs()));
  const auto group = IsOfStatistics(entry.kind) ? entry.entityType : static_cast<std::int32_t>(entry.group);
  writer.Put(entry.callId, static_cast<std::uint32_t>(group));
  writer.Put(static_cast<std::uint32_t>(entry.result), entry.count);
  writer.Put(reinterpret_cast<std::uintptr_t>(entry.source.caller));
  writer.Put(t_journal.id);
  if ((entry.id | entry.cause) != 0 || (entry.waitedNs | entry.ranNs) != 0) {
    tags.flags |= kHasDelivery;
    writer.Put(entry.id);
    writer.Put(entry.cause);
    writer.Put(static_cast<std::uint64_t>(entry.waitedNs));
    writer.Put(static_cast<std::uint64_t>(entry.ranNs));
  }
  const char* detail = nullptr;
  if (const JournalPlace* const place = entry.source.place) {
    tags.flags |= kHasPlace;
    writer.Put(place->line, place->column);
    detail = place->document;
  }
  if (entry.thrown != nullptr) {
    tags.flags |= kHasThrown;
    detail = entry.thrown;
  }
  tags.sizes[kName] = writer.Put(kName, entry.name);
  tags.sizes[kOldValue] = writer.Put(kOldValue, entry.oldValue);
  tags.sizes[kNewValue] = writer.Put(kNewValue, entry.newValue);
  tags.sizes[kLabel] = writer.Put(kLabel, entry.source.label);
  tags.sizes[kDetail] = writer.Put(kDetail, detail);
  words[0].store(std::bit_cast<std::uint64_t>(tags), std::memory_order_release);
}

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
