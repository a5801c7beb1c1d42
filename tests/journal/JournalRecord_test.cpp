// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalRecord.h"

#include <gtest/gtest.h>

#include <string>

#include "util/ACmThread.h"
#include "util/ConfigData.h"

namespace kalStore::internal {
namespace {

TEST(JournalRecord, KeepsEveryMember) {
  const ConfigData oldValue("before"), newValue("after");
  const JournalEntry entry{
      .kind = JournalKind::kDelivered,
      .callId = 0xFFFFFFFE,
      .source = {.caller = &oldValue, .label = "label", .document = {}, .line = 3, .column = 4},
      .timeNs = 5,
      .group = KAL_CONFIG_GROUP_TA_ONLY,
      .entityType = 2,
      .name = "name",
      .oldValue = &oldValue,
      .newValue = &newValue,
      .result = kResultNobody,
      .count = 6,
      .id = 7,
      .cause = 8,
      .way = JournalWay::kHandedOver,
      .waitedNs = 9,
      .ranNs = 10,
      .thrown = "thrown"};
  JournalRing::Words words;
  words.fill(~std::uint64_t{0});
  Encode(entry, words);
  const JournalEvent event = Decode(words);
  EXPECT_EQ(event.kind, JournalKind::kDelivered);
  EXPECT_EQ(event.threadId, GetThreadSelfId());
  EXPECT_EQ(event.callId, 0xFFFFFFFE);
  EXPECT_EQ(event.caller, &oldValue);
  EXPECT_EQ(event.label.text, "label");
  EXPECT_EQ(event.line, 3u);
  EXPECT_EQ(event.column, 4u);
  EXPECT_EQ(event.timeNs, 5);
  EXPECT_EQ(event.group, KAL_CONFIG_GROUP_TA_ONLY);
  EXPECT_EQ(event.entityType, 2);
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
  EXPECT_EQ(event.thrown->text, "thrown");
  EXPECT_EQ(event.document.text, "");
}

TEST(JournalRecord, HasRoomForEveryStringAtItsLongest) {
  const std::string longest(200, 'x');
  const ConfigData value(longest);
  const JournalEntry entry{.kind = JournalKind::kSet,
                           .source = {.caller = nullptr, .label = longest, .document = longest},
                           .name = longest.c_str(),
                           .oldValue = &value,
                           .newValue = &value};
  JournalRing::Words words;
  EXPECT_EQ(Encode(entry, words).size(), words.size());
  const JournalEvent event = Decode(words);
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
  JournalRing::Words words;
  Encode({.kind = JournalKind::kSet, .name = continuations.c_str()}, words);
  EXPECT_EQ(Decode(words).name.text.size(), kJournalLongestValue);
}

TEST(JournalRecord, CutsBeforeACharacterOfAnyLength) {
  for (const std::string character : {"a", "\u00fc", "\u20ac", "\U0001F600"}) {
    for (std::size_t shift = 0; shift < 4; ++shift) {
      std::string name(shift, '.');
      while (name.size() <= kJournalLongestValue) name += character;
      JournalRing::Words words;
      Encode({.kind = JournalKind::kSet, .name = name.c_str()}, words);
      const JournalString cut = Decode(words).name;
      EXPECT_TRUE(cut.isCut);
      EXPECT_EQ((cut.text.size() - shift) % character.size(), 0u) << character << shift;
      EXPECT_GT(cut.text.size(), kJournalLongestValue - character.size());
    }
  }
}

TEST(JournalRecord, TellsAnEmptyValueFromNone) {
  const ConfigData none, empty("");
  JournalRing::Words words;
  Encode({.kind = JournalKind::kSet, .oldValue = &none, .newValue = &empty}, words);
  const JournalEvent event = Decode(words);
  EXPECT_FALSE(event.oldValue);
  ASSERT_TRUE(event.newValue);
  EXPECT_EQ(event.newValue->text, "");
}

}  // namespace
}  // namespace kalStore::internal
