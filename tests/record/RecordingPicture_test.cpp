// SPDX-License-Identifier: Apache-2.0
#include "RecordingTest.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

constexpr std::uint32_t kSeen = 7;

class RecordingPicture : public RecordingTest {
 protected:
  std::string Picture() const {
    std::string picture;
    for (const RecordedLine& line : Lines()) {
      if (!line.Has("picture")) continue;
      EXPECT_EQ(line.Get("t"), "0");
      EXPECT_FALSE(line.Has("event") || line.Has("result") || line.Has("number"));
      picture += line.Get("type");
      for (const char* const member :
           {"call", "references", "group", "name", "new", "id", "cut", "hidden", "entity", "members"}) {
        if (line.Has(member)) picture += std::string(" ") + member + "=" + line.Get(member);
      }
      picture += "\n";
    }
    return picture;
  }

  CallStore m_store{kSeen, CallStore::kEndsCall};
};

TEST_F(RecordingPicture, HasWhatWasThere) {
  m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
  m_store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "Codec", "opus", false, false);
  m_store->SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", [](const KalConfigEvent&) {}, nullptr, false);
  m_store->BindConfig(KAL_CONFIG_GROUP_METRICS, "Load", [](const KalConfigEvent&) { return ConfigData(1); });
  const CallStore other(8, CallStore::kEndsCall);
  const StatsRef<AudioStats> statistics(kSeen);
  statistics->updateRxBitRate(3, 24000);
  {
    const Recording recording(File());
    m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 15, false, false);
  }
  EXPECT_EQ(Picture(),
            "call call=7 references=2\n"
            "set call=7 group=Audio name=Codec new=opus\n"
            "set call=7 group=Video name=MaxFps new=30\n"
            "bind call=7 group=Metrics name=Load id=2\n"
            "subscribe call=7 group=Video name=MaxFps id=1\n"
            "call call=8 references=2\n"
            "statistics call=7 references=1 entity=audio members={\"received3.bitrate\":24000,"
            "\"sent.noiseLevel[0]\":-100,\"sent.noiseLevel[1]\":-100,\"sent.noiseLevel[2]\":-100,"
            "\"sent.speechLevel[0]\":-100,\"sent.speechLevel[1]\":-100,\"sent.speechLevel[2]\":-100,"
            "\"sent.stat112\":20}\n");
}

TEST_F(RecordingPicture, HasValuesWholeThatTheJournalCuts) {
  const std::string value(5000, 'v'), name(500, 'n');
  m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name.c_str(), ConfigData(value), false, false);
  {
    const Recording recording(File());
  }
  const auto sets = OfType("set");
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0].Get("new"), value);
  EXPECT_EQ(sets[0].Get("name"), name);
  EXPECT_FALSE(sets[0].Has("cut"));
}

TEST_F(RecordingPicture, CutsWhatIsTooLongForALine) {
  const std::string value((std::size_t{2} << 20) + 1, '\x01'), name(std::size_t{1} << 20, '\x02');
  m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name.c_str(), ConfigData(value), false, false);
  std::string accents = "a";
  while (accents.size() < 200000) accents += "\u00E9";
  m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Accents", ConfigData(accents), false, false);
  {
    const Recording recording(File());
  }
  std::ifstream stream(File());
  for (std::string line; std::getline(stream, line);) EXPECT_LE(line.size(), std::size_t{1} << 20);
  const auto sets = OfType("set");
  ASSERT_EQ(sets.size(), 2u);
  EXPECT_EQ(sets[0].Get("cut"), R"(["name","new"])");
  EXPECT_EQ(sets[0].Get("new"), value.substr(0, sets[0].Get("new").size()));
  EXPECT_EQ(sets[1].Get("cut"), R"(["new"])");
  EXPECT_EQ(sets[1].Get("new").size() % 2, 1u);  // Before a character.
  EXPECT_EQ(sets[1].Get("new"), accents.substr(0, sets[1].Get("new").size()));
}

// Whatever the size of its characters and wherever they lie.
TEST_F(RecordingPicture, CutsAValueBehindTheLastWholeCharacterThatHasRoom) {
  constexpr std::size_t kLongest = std::size_t{128} << 10;
  for (const std::string character : {"a", "\u00E9", "\u0800", "\U0001F3A5"}) {
    for (std::size_t before = 0; before < character.size(); ++before) {
      std::string value(before, 'x');
      while (value.size() <= kLongest) value += character;
      const std::string name = std::to_string(character.size()) + std::to_string(before);
      m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name.c_str(), ConfigData(value), false, false);
    }
  }
  {
    const Recording recording(File());
  }
  const auto sets = OfType("set");
  ASSERT_EQ(sets.size(), 10u);
  for (const RecordedLine& set : sets) {
    const std::size_t size = set.Get("name")[0] - '0', before = set.Get("name")[1] - '0';
    EXPECT_EQ(set.Get("new").size(), kLongest - (kLongest - before) % size) << set.Get("name");
  }
}

// As many bytes as a character can have behind its first one, and no more.
TEST_F(RecordingPicture, CutsBytesThatAreNoUtf8WithinACharacterOfTheLimit) {
  constexpr std::size_t kLongest = std::size_t{128} << 10;
  const std::string value(kLongest + 1, '\x80');
  m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Bytes", ConfigData(value), false, false);
  {
    const Recording recording(File());
  }
  EXPECT_EQ(OfType("set").at(0).Get("new").size(), kLongest - 4);
}

TEST_F(RecordingPicture, LeavesAValueOfTheLongestSizeWhole) {
  const std::string value(std::size_t{128} << 10, 'v'), name(std::size_t{32} << 10, 'n');
  m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name.c_str(), ConfigData(value), false, false);
  {
    const Recording recording(File());
  }
  const RecordedLine set = OfType("set").at(0);
  EXPECT_EQ(set.Get("new").size(), value.size());
  EXPECT_EQ(set.Get("name").size(), name.size());
  EXPECT_FALSE(set.Has("cut"));
}

TEST_F(RecordingPicture, CutsANameThatIsLonger) {
  constexpr std::size_t kLongest = std::size_t{32} << 10;
  m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, std::string(kLongest + 1, 'n').c_str(), ConfigData(1), false,
                        false);
  {
    const Recording recording(File());
  }
  const RecordedLine set = OfType("set").at(0);
  EXPECT_EQ(set.Get("name").size(), kLongest);
  EXPECT_TRUE(set.Has("cut"));
}

TEST_F(RecordingPicture, SaysWhoSetAValueLast) {
  ASSERT_EQ(StartJournal(64), kResultOk);
  {
    const JournalOrigin origin("bandwidth controller");
    m_store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
  }
  {
    const Recording recording(File());
  }
  EXPECT_EQ(OfType("set").front().Origin("label"), "bandwidth controller");
  StopJournal();
}

TEST_F(RecordingPicture, IsFiltered) {
  m_store->SetKalConfig(KAL_CONFIG_GROUP_COMMON, "Password", "secret", false, false);
  m_store->SubscribeConfig(KAL_CONFIG_GROUP_COMMON, "Token", [](const KalConfigEvent&) {}, nullptr, false);
  {
    const Recording recording(File(), {.filter = [](auto, auto, std::string_view name) {
                                return name == "Token" ? RecordingShows::kNothing : RecordingShows::kName;
                              }});
  }
  EXPECT_EQ(Picture(),
            "call call=7 references=2\nset call=7 group=Common name=Password hidden=[\"new\"]\n"
            "subscribe call=7 group=Common id=1 hidden=[\"name\"]\n");
}

}  // namespace
}  // namespace kalStore
