// SPDX-License-Identifier: Apache-2.0
#include "RecordingTest.h"
#include "support/Gate.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

constexpr KalConfigGroup kCutGroup = KAL_CONFIG_GROUP_COMMON;

class RecordedCutValues : public RecordingTest {
 protected:
  void Set(const std::string& value, const char* name = "Layout") {
    m_store->SetKalConfig(kCutGroup, name, ConfigData(value), false, false);
  }
  std::vector<RecordedLine> WholeValues() const {
    std::vector<RecordedLine> lines;
    for (const RecordedLine& line : OfType("set")) {
      if (line.Has("cause")) lines.push_back(line);
    }
    return lines;
  }
  // Of the set that has only the beginning of the value.
  RecordedLine CutSet(char first) const {
    for (const RecordedLine& line : OfType("set")) {
      if (line.Has("number") && line.Get("new")[0] == first) return line;
    }
    return RecordedLine("{}");
  }

  static std::string Long(char letter) { return std::string(5000, letter); }

  const CallStore m_store{7, CallStore::kEndsCall};
};

TEST_F(RecordedCutValues, FollowWhole) {
  {
    Recording recording(File());
    const JournalOrigin origin("layout");
    Set(Long('a'));
    recording.Flush();
    Set("b");
    Set(Long('c'));
  }
  const auto values = WholeValues();
  ASSERT_EQ(values.size(), 2u);
  for (const std::size_t i : {0u, 1u}) {
    const char letter = i == 0 ? 'a' : 'c';
    EXPECT_EQ(values[i].Get("new"), Long(letter));
    EXPECT_EQ(CutSet(letter).Get("cut"), "[\"new\"]");
    EXPECT_EQ(values[i].Get("cause"), CutSet(letter).Get("number"));
    EXPECT_EQ(values[i].Get("t"), CutSet(letter).Get("t"));
    EXPECT_EQ(values[i].Get("picture"), "true");
    EXPECT_EQ(values[i].Origin("label"), "layout");
  }
}

TEST_F(RecordedCutValues, FollowUnlessTheyAreReplacedOrRemovedBeforeTheyAreRead) {
  const std::string longest(kJournalLongestValue, 'n');
  {
    Gate begins, goesOn, ends, isOver;
    CallStore other(8, CallStore::kEndsCall);
    Recording recording(File(), {.filter = [&](auto, auto, std::string_view name) {
                          if (name == "First") begins.Open(), goesOn.Wait();
                          if (name == "Last") ends.Open(), isOver.Wait();
                          return RecordingShows::kAll;
                        }});
    Set("held up", "First");
    begins.Wait();
    for (const char* const name :
         {"Removed", "Early", "Short", "Transient", "Long", "Same", "Refused", longest.c_str()}) {
      Set(Long('a'), name);
    }
    Set("short", "Early");
    Set("another's", (longest + "x").c_str());
    m_store->SetKalConfig(kCutGroup, "Refused", ConfigData(), false, false);
    for (const KalConfigGroup group : {KAL_CONFIG_GROUP_AUDIO, KAL_CONFIG_GROUP_AUDIO_SLIDE}) {
      m_store->SetKalConfig(group, "Group", ConfigData(Long('a')), false, false);
      other->SetKalConfig(group, "Group", ConfigData(Long('o')), false, false);
    }
    Set("held up", "Last");
    goesOn.Open();
    ends.Wait();  // Its thread has read all these events, and none of the values.
    Set(Long('b'), "Long");
    Set(Long('a'), "Same");
    Set("short", "Short");
    m_store->SetKalConfig(kCutGroup, "Transient", 1, true, false);
    m_store->RemoveKalConfig(kCutGroup, "Removed");
    m_store->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_AUDIO);
    isOver.Open();
    recording.Flush();
  }
  std::string values;
  for (const RecordedLine& line : WholeValues()) {
    values += line.Get("call") + line.Get("group") + line.Get("name") + line.Get("new")[0] + " ";
  }
  EXPECT_EQ(values, "7CommonRefuseda 7CommonSamea 7Common" + longest +
                        "a 7AudioSlideGroupa 8AudioGroupo 8AudioSlideGroupo 7CommonLongb ");
}

// What was missed may have set the value again.
TEST_F(RecordedCutValues, ThatEventsWereMissedAfterDoNotFollow) {
  {
    Gate begins, goesOn, isTaken, isOver;
    Recording recording(File(), {.journalCapacity = 64, .filter = [&](auto, auto, std::string_view name) {
                                   if (name == "First") begins.Open(), goesOn.Wait();
                                   if (name == "Taken") isTaken.Open(), isOver.Wait();
                                   return RecordingShows::kAll;
                                 }});
    Set("held up", "First");
    begins.Wait();
    Set(Long('a'));
    Set("held up", "Taken");
    Set("in the same round", "Other");
    goesOn.Open();
    isTaken.Wait();  // Its thread has read the first of these events, and will not find the last one.
    Set(Long('b'));
    for (int i = 0; i < 200; ++i) Set(std::to_string(i), "Other");
    isOver.Open();
  }
  EXPECT_FALSE(OfType("lost").empty());
  EXPECT_TRUE(WholeValues().empty());
}

TEST_F(RecordedCutValues, OfSettingsThatAreHiddenDoNotFollow) {
  {
    const Recording recording(File(), {.filter = [](auto, auto, auto) { return RecordingShows::kName; }});
    Set(Long('a'));
  }
  EXPECT_EQ(OfType("set").size(), 1u);
}

TEST_F(RecordedCutValues, GoWithTheirStores) {
  {
    const Recording recording(File());
    CallStore other(8, CallStore::kEndsCall);
    other->SetKalConfig(kCutGroup, "Layout", ConfigData(Long('a')), false, false);
  }
  for (const RecordedLine& line : WholeValues()) EXPECT_EQ(line.Get("new"), Long('a'));
  EXPECT_LE(WholeValues().size(), 1u);
}

}  // namespace
}  // namespace kalStore
