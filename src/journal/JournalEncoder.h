// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "journal/JournalClock.h"
#include "journal/JournalRecord.h"
#include "util/ACmThread.h"
#include "util/ConfigData.h"

// How a record is made of an entry. Part of its callers: what those leave out of an entry costs them nothing.

namespace kalStore::internal {

namespace journal_record {

// The strings of a record, in their order. The name of a document and what a callback threw share a place: an
// import whose callback threw is named in the events of its sets.
enum Part : std::uint8_t { kName, kOldValue, kNewValue, kLabel, kDetail, kParts };
inline constexpr std::size_t kLongest[kParts] = {kJournalLongestValue, kJournalLongestValue,
                                                 kJournalLongestValue, kJournalLongestLabel,
                                                 kJournalLongestDetail};

// The size of a part: the bytes that it has here, or that there is none.
inline constexpr std::uint8_t kNone = 0x7F;
inline constexpr std::uint8_t kCut = 0x80;

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
inline constexpr std::size_t kWord = sizeof(std::uint64_t);
static_assert(sizeof(Tags) == kWord);
inline constexpr std::size_t kHeadWords = 6;
inline constexpr std::size_t kDeliveryWords = 4;
inline constexpr std::size_t kMostBytes =
    3 * kJournalLongestValue + kJournalLongestLabel + kJournalLongestDetail;
static_assert(kMostBytes % kWord == 0);
static_assert(kHeadWords + kDeliveryWords + 1 + kMostBytes / kWord == JournalRing::kWords);

inline bool IsOfStatistics(JournalKind kind) {
  return kind >= JournalKind::kStatisticsMade;
}

// Where to cut a longer string: before a character of UTF-8, if it is that.
inline std::size_t CutSize(std::string_view string, std::size_t longest) {
  std::size_t size = longest;
  const auto isContinuation = [&] { return (static_cast<unsigned char>(string[size]) & 0xC0) == 0x80; };
  while (size > longest - 4 && isContinuation()) --size;
  return isContinuation() ? longest : size;
}

inline std::uint64_t WordAt(const char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, kWord);
  return word;
}

// The word that has these bytes from its byte `at` on. By shifts: a word whose bytes were stored one by one
// is not read before all of them are in the cache.
template <class Bytes>
std::uint64_t Placed(Bytes bytes, std::size_t at) {
  static_assert(std::is_unsigned_v<Bytes>);
  const bool isLittle = std::endian::native == std::endian::little;
  return std::uint64_t{bytes} << 8 * (isLittle ? at : kWord - sizeof bytes - at);
}

// Of a string that is shorter than a word: the bytes from both of its ends on, which may meet in its middle.
template <class Bytes>
std::uint64_t BothEnds(std::string_view string) {
  Bytes first, last;
  const std::size_t at = string.size() - sizeof last;
  std::memcpy(&first, string.data(), sizeof first);
  std::memcpy(&last, string.data() + at, sizeof last);
  return Placed(first, 0) | Placed(last, at);
}

inline std::uint64_t ShortWord(std::string_view string) {
  if (string.size() >= 4) return BothEnds<std::uint32_t>(string);
  return string.size() >= 2 ? BothEnds<std::uint16_t>(string) : BothEnds<std::uint8_t>(string);
}

class RecordWriter {
 public:
  explicit RecordWriter(std::atomic<std::uint64_t>* next) : m_next(next) {}

  void Put(std::uint64_t word) { m_next++->store(word, std::memory_order_release); }
  void Put(std::uint32_t high, std::uint32_t low) { Put(std::uint64_t{high} << 32 | low); }

  // Returns the part's size, in its byte of the first word. The last word of a longer string has its last
  // bytes, so that it overlaps the word before.
  std::uint64_t Put(Part part, std::string_view string) {
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
    return SizeOf(part, static_cast<std::uint8_t>(size | cut));
  }
  std::uint64_t Put(Part part, const ConfigData* value) {
    return value == nullptr || !value->IsValid() ? SizeOf(part, kNone)
                                                 : Put(part, std::string_view(value->ToString()));
  }
  std::uint64_t Put(Part part, const char* string) {
    return string == nullptr ? SizeOf(part, kNone) : Put(part, std::string_view(string));
  }

 private:
  static std::uint64_t SizeOf(Part part, std::uint8_t size) {
    return Placed(size, offsetof(Tags, sizes) + part);
  }

  std::atomic<std::uint64_t>* m_next;
};

}  // namespace journal_record

/// Puts an entry into the words of a place, its strings cut.
[[gnu::always_inline]] inline void Encode(const JournalEntry& entry, JournalRing::PlaceWords& words) {
  using namespace journal_record;
  if (t_journal.id == 0) t_journal.id = GetThreadSelfId();
  std::uint8_t flags = 0;
  RecordWriter writer(words.data() + 1);
  writer.Put(static_cast<std::uint64_t>(entry.timeNs != 0 ? entry.timeNs : JournalNowNs()));
  const auto group = IsOfStatistics(entry.kind) ? entry.entityType : static_cast<std::int32_t>(entry.group);
  writer.Put(entry.callId, static_cast<std::uint32_t>(group));
  writer.Put(static_cast<std::uint32_t>(entry.result), entry.count);
  writer.Put(reinterpret_cast<std::uintptr_t>(entry.source.caller));
  writer.Put(t_journal.id);
  if ((entry.id | entry.cause) != 0 || (entry.waitedNs | entry.ranNs) != 0) {
    flags |= kHasDelivery;
    writer.Put(entry.id);
    writer.Put(entry.cause);
    writer.Put(static_cast<std::uint64_t>(entry.waitedNs));
    writer.Put(static_cast<std::uint64_t>(entry.ranNs));
  }
  const char* detail = nullptr;
  if (const JournalPlace* const place = entry.source.place) {
    flags |= kHasPlace;
    writer.Put(place->line, place->column);
    detail = place->document;
  }
  if (entry.thrown != nullptr) {
    flags |= kHasThrown;
    detail = entry.thrown;
  }
  std::uint64_t tags = Placed(static_cast<std::uint8_t>(entry.kind), offsetof(Tags, kind)) |
                       Placed(static_cast<std::uint8_t>(entry.way), offsetof(Tags, way)) |
                       Placed(flags, offsetof(Tags, flags));
  tags |= writer.Put(kName, entry.name);
  tags |= writer.Put(kOldValue, entry.oldValue);
  tags |= writer.Put(kNewValue, entry.newValue);
  tags |= writer.Put(kLabel, entry.source.label);
  tags |= writer.Put(kDetail, detail);
  words[0].store(tags, std::memory_order_release);
}

}  // namespace kalStore::internal
