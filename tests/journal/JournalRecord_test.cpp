// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalEncoder.h"

#include <gtest/gtest.h>

#include <string>

#include "util/ACmThread.h"
#include "util/ConfigData.h"

namespace kalStore::internal {
namespace {

// Callers are compiled with the numbers.
static_assert(kJournalLongestValue == 64 && kJournalLongestLabel == 32 && kJournalLongestDetail == 56 &&
              kJournalLargestCapacity == 1'048'576);

// What is read of an entry that was written over an older record.
JournalEvent Recorded(const JournalEntry& entry) {
  JournalRing::PlaceWords place;
  for (auto& word : place) word = ~std::uint64_t{0};
  Encode(entry, place);
  const std::size_t size = RecordSize(place[0]);
  EXPECT_NE(place[size - 1], ~std::uint64_t{0}) << "the last word is the older record's";
  JournalRing::Words words;
  words.fill(0x4545454545454545);  // A reader has the record's own and no more.
  for (std::size_t i = 0; i < size; ++i) words[i] = place[i];
  return Decode(words);
}

TEST(JournalRecord, KeepsEveryMember) {
  const ConfigData oldValue("before"), newValue("after");
  const JournalPlace place{.document = "document", .line = 3, .column = 4};
  JournalEntry entry{.kind = JournalKind::kDelivered,
                     .way = JournalWay::kHandedOver,
                     .callId = 0xFFFFFFFE,
                     .source = {.caller = &oldValue, .label = "label", .place = &place},
                     .timeNs = 5,
                     .group = KAL_CONFIG_GROUP_TA_ONLY,
                     .name = "name",
                     .oldValue = &oldValue,
                     .newValue = &newValue,
                     .result = kResultNobody,
                     .count = 6,
                     .id = 7,
                     .cause = 8,
                     .waitedNs = 9,
                     .ranNs = 10};
  const JournalEvent event = Recorded(entry);
  EXPECT_EQ(event.kind, JournalKind::kDelivered);
  EXPECT_EQ(event.threadId, GetThreadSelfId());
  EXPECT_EQ(event.callId, 0xFFFFFFFE);
  EXPECT_EQ(event.caller, &oldValue);
  EXPECT_EQ(event.label.text, "label");
  EXPECT_EQ(event.line, 3u);
  EXPECT_EQ(event.column, 4u);
  EXPECT_EQ(event.timeNs, 5);
  EXPECT_EQ(event.group, KAL_CONFIG_GROUP_TA_ONLY);
  EXPECT_EQ(event.entityType, -1);
  EXPECT_EQ(event.name.text, "name");
  EXPECT_EQ(event.oldValue->text, "before");
  EXPECT_EQ(event.newValue->text, "after");
  EXPECT_EQ(event.result, kResultNobody);
  EXPECT_EQ(event.count, 6u);
  EXPECT_EQ(event.id, 7u);
  EXPECT_EQ(event.cause, 8u);
  EXPECT_EQ(event.way, JournalWay::kHandedOver);
  EXPECT_EQ(event.waitedNs, 9);
  EXPECT_EQ(event.ranNs, 10);
  EXPECT_EQ(event.document.text, "document");
  EXPECT_FALSE(event.thrown);
  entry.source.place = nullptr;
  entry.thrown = "thrown";
  EXPECT_EQ(Recorded(entry).thrown->text, "thrown");
  EXPECT_EQ(Recorded(entry).document.text, "");
}

TEST(JournalRecord, KeepsEachNumberOfADeliveryAlone) {
  constexpr auto kDelivered = JournalKind::kDelivered;
  for (const JournalEntry& entry :
       {JournalEntry{.kind = kDelivered, .id = 1}, JournalEntry{.kind = kDelivered, .cause = 2},
        JournalEntry{.kind = kDelivered, .waitedNs = 1}, JournalEntry{.kind = kDelivered, .ranNs = 1}}) {
    const JournalEvent event = Recorded(entry);
    EXPECT_EQ(event.id, entry.id);
    EXPECT_EQ(event.cause, entry.cause);
    EXPECT_EQ(event.waitedNs, entry.waitedNs);
    EXPECT_EQ(event.ranNs, entry.ranNs);
  }
}

TEST(JournalRecord, HasNothingThatItIsNotGiven) {
  const JournalEvent event = Recorded({.kind = JournalKind::kSet});
  EXPECT_EQ(event.way, JournalWay::kNone);
  EXPECT_EQ(event.callId, 0u);
  EXPECT_EQ(event.caller, nullptr);
  EXPECT_EQ(event.label.text, "");
  EXPECT_EQ(event.document.text, "");
  EXPECT_EQ(event.line, 0u);
  EXPECT_EQ(event.column, 0u);
  EXPECT_GT(event.timeNs, 1) << "now";
  EXPECT_EQ(event.group, KAL_CONFIG_GROUP_DEFAULT);
  EXPECT_EQ(event.entityType, -1);
  EXPECT_EQ(event.name.text, "");
  EXPECT_FALSE(event.oldValue || event.newValue || event.thrown);
  EXPECT_EQ(event.result, kResultOk);
  EXPECT_EQ(event.count, 0u);
  EXPECT_EQ(event.id, 0u);
  EXPECT_EQ(event.cause, 0u);
  EXPECT_EQ(event.waitedNs, 0);
  EXPECT_EQ(event.ranNs, 0);
  EXPECT_EQ(Recorded({.kind = JournalKind::kStatisticsEnded}).entityType, -1);
}

TEST(JournalRecord, HasTheTypeOfAStatisticsObject) {
  const JournalEvent event = Recorded({.kind = JournalKind::kStatisticsEnded, .entityType = 2});
  EXPECT_EQ(event.entityType, 2);
  EXPECT_EQ(event.group, KAL_CONFIG_GROUP_DEFAULT);
}

TEST(JournalRecord, KeepsStringsOfEverySize) {
  const std::string all = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ+/";
  for (std::size_t size = 0; size <= all.size(); ++size) {
    const std::string text = all.substr(0, size);
    const ConfigData value(text);
    const JournalEvent event = Recorded({.kind = JournalKind::kSet, .name = text, .newValue = &value});
    EXPECT_EQ(event.name.text, text);
    EXPECT_EQ(event.newValue->text, text);
    EXPECT_FALSE(event.name.isCut);
  }
}

TEST(JournalRecord, HasRoomForEveryStringAtItsLongest) {
  const std::string longest(200, 'x');
  const ConfigData value(longest);
  const JournalPlace place{.document = longest.c_str()};
  const JournalEntry entry{.kind = JournalKind::kSet,
                           .source = {.caller = nullptr, .label = longest.c_str(), .place = &place},
                           .name = longest,
                           .oldValue = &value,
                           .newValue = &value,
                           .id = 1};
  const JournalEvent event = Recorded(entry);
  for (const JournalString& string : {event.name, *event.oldValue, *event.newValue}) {
    EXPECT_EQ(string.text, longest.substr(0, kJournalLongestValue));
    EXPECT_TRUE(string.isCut);
  }
  EXPECT_EQ(event.label.text.size(), kJournalLongestLabel);
  EXPECT_EQ(event.document.text.size(), kJournalLongestDetail);
  EXPECT_TRUE(event.label.isCut && event.document.isCut);
}

TEST(JournalRecord, CutsBytesThatAreNoUtf8AtTheLimit) {
  const std::string continuations(100, '\x80');
  EXPECT_EQ(Recorded({.kind = JournalKind::kSet, .name = continuations}).name.text.size(),
            kJournalLongestValue);
  std::string tooLong(kJournalLongestValue - 5, 'a');
  tooLong += '\xF0' + continuations;  // One byte more than a character has.
  EXPECT_EQ(Recorded({.kind = JournalKind::kSet, .name = tooLong}).name.text.size(), kJournalLongestValue);
}

TEST(JournalRecord, CutsBeforeACharacterOfAnyLength) {
  for (const std::string character : {"a", "\u00fc", "\u20ac", "\U0001F600"}) {
    for (std::size_t shift = 0; shift < 4; ++shift) {
      std::string name(shift, '.');
      while (name.size() <= kJournalLongestValue) name += character;
      const JournalString cut = Recorded({.kind = JournalKind::kSet, .name = name}).name;
      EXPECT_TRUE(cut.isCut);
      EXPECT_EQ((cut.text.size() - shift) % character.size(), 0u) << character << shift;
      EXPECT_GT(cut.text.size(), kJournalLongestValue - character.size());
    }
  }
}

TEST(JournalRecord, TellsAnEmptyValueFromNone) {
  const ConfigData none, empty("");
  const JournalEvent event = Recorded({.kind = JournalKind::kSet, .oldValue = &none, .newValue = &empty});
  EXPECT_FALSE(event.oldValue);
  ASSERT_TRUE(event.newValue);
  EXPECT_EQ(event.newValue->text, "");
}

}  // namespace
}  // namespace kalStore::internal
