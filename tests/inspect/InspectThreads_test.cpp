// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <thread>

#include "InspectTest.h"

namespace kalStore {
namespace {

// Takes looks until it ends.
template <class Look>
class Looker {
 public:
  explicit Looker(Look look)
      : m_thread([this, look] {
          while (!m_isOver.load()) {
            look();
            m_looks.fetch_add(1);
          }
        }) {}
  ~Looker() {
    m_isOver = true;
    m_thread.join();
  }
  Looker(const Looker&) = delete;
  Looker& operator=(const Looker&) = delete;

  int Looks() const { return m_looks.load(); }

 private:
  std::atomic<bool> m_isOver{false};
  std::atomic<int> m_looks{0};
  std::thread m_thread;
};

// Calls `step` for at least so many rounds, and until two threads have taken some looks beside it.
template <class Look, class Step>
void RunBeside(Look look, Step step) {
  const Looker<Look> looker(look);
  const Looker<Look> another(look);
  for (int round = 0; round < 300 || looker.Looks() < 100 || another.Looks() < 100; ++round) step(round);
}

// Notes on which thread it ends.
struct EndNotesItsThread {
  explicit EndNotesItsThread(std::atomic<int>& counter) : elsewhere(counter) {}
  ~EndNotesItsThread() {
    if (std::this_thread::get_id() != home) elsewhere.fetch_add(1);
  }

  std::atomic<int>& elsewhere;
  const std::thread::id home = std::this_thread::get_id();
};

TEST(InspectThreads, EachGroupIsCopiedAtOneMoment) {
  const CallStore store(kInspected, CallStore::kEndsCall);
  std::atomic<bool> isOver{false};
  std::thread setter([&] {
    // At each moment both are equal, or A is ahead by one.
    for (int i = 0; !isOver.load(); ++i) {
      for (const char* name : {"A", "B"}) store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name, i, false, false);
    }
  });
  for (int looks = 0; looks < 2000; ++looks) {
    const std::vector<InspectedSetting> found = InspectSettings(kInspected);
    if (found.size() < 2) continue;
    const int ahead = found[0].value.ToInt() - found[1].value.ToInt();
    EXPECT_TRUE(ahead == 0 || ahead == 1) << ahead;
  }
  isOver = true;
  setter.join();
}

TEST(InspectThreads, NeverEndsWhatACallbackCaptured) {
  const CallStore store(kInspected, CallStore::kEndsCall);
  std::atomic<int> elsewhere{0};
  RunBeside(LookAtAll, [&](int) {
    const SubscribeId_t id = store->SubscribeConfig(
        KAL_CONFIG_GROUP_VIDEO, "MaxFps",
        [held = std::make_shared<EndNotesItsThread>(elsewhere)](const KalConfigEvent&) {}, nullptr, false);
    store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 1, true, false);
    EXPECT_EQ(store->UnsubscribeConfig(id), kResultOk);
  });
  EXPECT_EQ(elsewhere.load(), 0);
}

TEST(InspectThreads, NeverEndsAStore) {
  std::atomic<int> elsewhere{0};
  const std::string takesTimeToCopy(1 << 18, 'v');
  const auto look = [] { InspectSettings(kInspected); };
  RunBeside(look, [&](int) {
    IKalConfig* store = nullptr;
    ASSERT_EQ(CreateKalConfig(kInspected, &store), kResultOk);
    store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", takesTimeToCopy, false, false);
    store->SubscribeConfig(
        KAL_CONFIG_GROUP_VIDEO, "MaxFps",
        [held = std::make_shared<EndNotesItsThread>(elsewhere)](const KalConfigEvent&) {}, nullptr, false);
    CleanUpKalConfig(kInspected);
    ReleaseKalConfig(store);
    EXPECT_EQ(GetKalConfigSizeForUT(), 0u);
  });
  EXPECT_EQ(elsewhere.load(), 0);
}

TEST(InspectThreads, NeverHoldsAStatisticsObject) {
  const auto look = [] {
    InspectedAudio blocks;
    InspectAudio(KAL_TESSEL_AUDIO, kInspected, blocks);
  };
  RunBeside(look, [](int round) {
    void* entity = nullptr;
    ASSERT_EQ(createTesselEntity(KAL_TESSEL_AUDIO, kInspected, &entity), kResultOk);
    auto* const audio = static_cast<KalAudioStatisticInfo*>(static_cast<IKalAudioInfo*>(entity));
    audio->updateTxBitRate(static_cast<std::uint32_t>(round));
    for (int i = 0; i < 100; ++i) {
      EXPECT_EQ(audio->AddRef(), 2u);
      EXPECT_EQ(audio->Release(), 1u);
    }
    EXPECT_EQ(audio->Release(), 0u);
    EXPECT_FALSE(kalTesselInstant.isTesselEntityExisted(KAL_TESSEL_AUDIO, kInspected));
  });
}

TEST(InspectThreads, WorksBesideEverything) {
  StartJournal(64);
  const CallStore store(kInspected, CallStore::kEndsCall);
  ACmThread thread("media");
  thread.Start();
  const KalConfigGroup groups[] = {KAL_CONFIG_GROUP_VIDEO, KAL_CONFIG_GROUP_AUDIO};
  std::atomic<bool> isOver{false};
  std::thread remover([&] {
    while (!isOver.load()) {
      for (const KalConfigGroup group : groups) {
        store->RemoveKalConfig(group, "Name1");
        store->RemoveKalConfigByGroup(group);
      }
    }
  });
  RunBeside(LookAtAll, [&](int round) {
    const KalConfigGroup group = groups[round % 2];
    const std::string name = "Name" + std::to_string(round % 7);
    const std::string value(static_cast<std::size_t>(round % 100) * 100, 'v');
    const SubscribeId_t posted =
        store->SubscribeConfig(group, name.c_str(), [](const KalConfigEvent&) {}, &thread, true);
    const SubscribeId_t bound =
        store->BindConfig(group, name.c_str(), [](const KalConfigEvent&) { return ConfigData(1); });
    store->SetKalConfig(group, name.c_str(), value, false, false);
    ConfigData read;
    store->GetDynamicConfig(group, name.c_str(), read, {});
    store->UnsubscribeConfig(posted);
    store->UnsubscribeConfig(bound);
    const StatsRef<AudioStats> audio(kInspected);
    audio->updateTxBitRate(static_cast<std::uint32_t>(round));
  });
  isOver = true;
  remover.join();
  StopJournal();
  thread.Stop();
}

}  // namespace
}  // namespace kalStore
