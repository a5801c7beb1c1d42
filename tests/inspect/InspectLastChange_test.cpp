// SPDX-License-Identifier: Apache-2.0
#include "InspectTest.h"

namespace kalStore {
namespace {

class InspectLastChange : public InspectTest {
 protected:
  static constexpr KalConfigGroup kVideo = KAL_CONFIG_GROUP_VIDEO;

  InspectLastChange() { StartJournal(256); }
  ~InspectLastChange() override { StopJournal(); }

  void setBy(const char* label, const char* name, ConfigData value, bool force = false) {
    const JournalOrigin origin(label);
    m_store.SetKalConfig(kVideo, name, std::move(value), force, false);
  }
  // Of the only setting.
  static std::optional<JournalEvent> lastChange() { return InspectSettings(kInspected).at(0).lastChange; }
  // Its label; "nothing" without one.
  static std::string lastLabel() {
    const auto change = lastChange();
    return change ? change->label.text : "nothing";
  }
};

TEST_F(InspectLastChange, IsTheEventOfTheSetThatGaveTheValue) {
  setBy("first", "MaxFps", 15);
  const std::uint64_t number = NextJournalNumber();
  setBy("second", "MaxFps", 30);
  setBy("another name", "MinFps", 30);
  {
    const CallStore other(kInspected + 1, CallStore::kEndsCall);
    const JournalOrigin origin("another call");
    other->SetKalConfig(kVideo, "MaxFps", 30, false, false);
    m_store.SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "MaxFps", 30, false, false);
  }
  const std::vector<InspectedSetting> settings = InspectSettings(kInspected);
  ASSERT_EQ(settings.size(), 3u);
  const JournalEvent change = settings[1].lastChange.value();
  EXPECT_EQ(settings[1].name, "MaxFps");
  EXPECT_EQ(settings[1].group, kVideo);
  EXPECT_EQ(change.number, number);
  EXPECT_EQ(change.label.text, "second");
  EXPECT_EQ(change.oldValue->text, "15");
  EXPECT_EQ(change.newValue->text, "30");
  EXPECT_EQ(change.threadId, GetThreadSelfId());
  EXPECT_NE(change.caller, nullptr);
  JournalEvent read;
  ASSERT_TRUE(JournalReader(number).Next(read));
  EXPECT_EQ(read.timeNs, change.timeNs);
  EXPECT_EQ(settings[0].lastChange->label.text, "another call");
  EXPECT_EQ(settings[2].lastChange->label.text, "another name");
}

TEST_F(InspectLastChange, HasThePlaceInAnImportedDocument) {
  const JournalDocument document("lab.json");
  m_store.ApplyKalConfigs("{\n\"Video\":[{\"key\":\"MaxFps\",\"value\":\"15\"}]}");
  EXPECT_EQ(lastChange()->document.text, "lab.json");
  EXPECT_EQ(lastChange()->line, 2u);
}

TEST_F(InspectLastChange, IsNotASetThatChangedNothingOrWasRefused) {
  setBy("changed", "MaxFps", 30);
  setBy("unchanged", "MaxFps", 30);
  EXPECT_EQ(lastLabel(), "changed");
  {
    const TraceLog refusal(0);
    setBy("refused", "MaxFps", ConfigData());
  }
  EXPECT_EQ(lastLabel(), "changed");
  setBy("forced", "MaxFps", 30, true);
  EXPECT_EQ(lastLabel(), "forced");
}

TEST_F(InspectLastChange, IsTheSetAfterARemoval) {
  setBy("before", "MaxFps", 30);
  m_store.RemoveKalConfig(kVideo, "MaxFps");
  setBy("removed", "MaxFps", 30);
  EXPECT_EQ(lastLabel(), "removed");
  m_store.RemoveKalConfigByGroup(kVideo);
  setBy("group removed", "MaxFps", 30);
  EXPECT_EQ(lastLabel(), "group removed");
  m_store.SetKalConfig(kVideo, "MaxFps", 30, false, true);
  setBy("transient", "MaxFps", 30);
  EXPECT_EQ(lastLabel(), "transient");
}

TEST_F(InspectLastChange, IsNothingOnceItIsOverwritten) {
  setBy("early", "MaxFps", 30);
  for (int i = 0; i < 255; ++i) set(KAL_CONFIG_GROUP_AUDIO, "Gain", i);
  EXPECT_EQ(InspectSettings(kInspected).at(1).lastChange->label.text, "early");
  set(KAL_CONFIG_GROUP_AUDIO, "Gain", 255);
  EXPECT_FALSE(InspectSettings(kInspected).at(1).lastChange);
  EXPECT_EQ(InspectSettings(kInspected).at(1).value.ToInt(), 30);
}

TEST_F(InspectLastChange, IsNothingWhileTheJournalIsOffAndFromBeforeItsStart) {
  setBy("before", "MaxFps", 30);
  StopJournal();
  EXPECT_EQ(lastLabel(), "nothing");
  StartJournal(256);
  EXPECT_EQ(lastLabel(), "nothing");
  setBy("after", "MaxFps", 15);
  EXPECT_EQ(lastLabel(), "after");
}

TEST_F(InspectLastChange, IsKnownOfALongValueAndNotOfALongName) {
  const std::string value(kJournalLongestValue + 1, 'v');
  setBy("long value", "MaxFps", value);
  EXPECT_EQ(lastLabel(), "long value");
  m_store.RemoveKalConfig(kVideo, "MaxFps");
  const std::string name(kJournalLongestValue, 'n');
  setBy("longest name", name.c_str(), 1);
  EXPECT_EQ(lastLabel(), "longest name");
  const std::string longer = name + 'n';
  setBy("longer name", longer.c_str(), 2);
  EXPECT_EQ(lastLabel(), "longest name");
  EXPECT_FALSE(InspectSettings(kInspected).at(1).lastChange);
}

TEST_F(InspectLastChange, IsThereInTheCallbackOfTheSet) {
  std::string label;
  m_store.SubscribeConfig(
      kVideo, "MaxFps", [&](const KalConfigEvent&) { label = lastLabel(); }, nullptr, false);
  setBy("controller", "MaxFps", 30);
  EXPECT_EQ(label, "controller");
}

// A set traces its line before it writes its event.
TEST_F(InspectLastChange, IsNothingWhileTheSetIsStillToWriteItsEvent) {
  setBy("early", "MaxFps", 1);
  setBy("early", "MaxFps", 2);
  static std::string label;
  static bool isLooking;
  label.clear();
  set_util_trace_sink(
      [](void*, int, const char*, const char* text, unsigned int) {
        if (std::string_view(text).find("2 -> 1") == std::string_view::npos || isLooking) return;
        isLooking = true;
        label = lastLabel();
        isLooking = false;
      },
      nullptr);
  set_external_trace_mask(2);
  setBy("late", "MaxFps", 1);
  set_external_trace_mask(0);
  set_util_trace_sink(nullptr, nullptr);
  EXPECT_EQ(label, "nothing");
  EXPECT_EQ(lastLabel(), "late");
}

}  // namespace
}  // namespace kalStore
