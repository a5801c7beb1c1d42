// SPDX-License-Identifier: Apache-2.0
// Recordings: who holds the journal on, waits that are given up, and the thread of a recording.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>

#include "record/JournalUse.h"
#include "record/LongWait.h"
#include "scenarios/Registry.h"
#include "tessel/KalConfig.h"
#include "tessel/journal.h"
#include "tessel/record.h"

using namespace kalStore;
using internal::JournalUse;
using model::Check;

namespace {

// Devices take every line and keep none.
constexpr const char* kNoFile = "/dev/null";

RecordingOptions FewEvents() {
  RecordingOptions options;
  options.journalCapacity = 8;
  options.statisticsInterval = std::chrono::milliseconds(0);
  return options;
}

}  // namespace

MODEL_SCENARIO(JournalIsUsedByTwo) {
  const auto use = [] {
    const JournalUse own(8);
    Check(IsJournalOn(), "it is on while it is used");
  };
  std::thread other(use);
  use();
  other.join();
  Check(!IsJournalOn(), "the last one turns it off");
}

// A journal that somebody else has started, also after stopping it, is not turned off by its last use.
MODEL_SCENARIO(JournalIsUsedBesideAStart) {
  std::int32_t started = kResultUnchanged;
  std::thread other([&] {
    StopJournal();
    started = StartJournal(8);
  });
  {
    const JournalUse own(8);
  }
  other.join();
  Check(started != kResultOk || IsJournalOn(), "what another one has started goes on");
}

// What the thread used before it began to wait may end once the wait is given up.
MODEL_SCENARIO(LongWaitIsGivenUp) {
  internal::LongWait wait;
  std::mutex locked;
  locked.lock();
  auto used = std::make_unique<int>(0);
  std::thread waiting([&] {
    ++*used;
    try {
      wait.Run([&] {
        const std::lock_guard lock(locked);
        return 0;
      });
      Check(false, "it goes no further");
    } catch (const internal::RecordingFault&) {
    }
  });
  while (!wait.GiveUp()) std::this_thread::sleep_for(std::chrono::seconds(4));
  used.reset();
  locked.unlock();
  waiting.join();
}

MODEL_SCENARIO(RecordingEndsBesideAFlush) {
  KalConfig store(7);
  std::optional<Recording> recording(std::in_place, kNoFile, FewEvents());
  std::thread setter([&] {
    store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "First", 1, false, false);
    Check(recording->Flush() == kResultOk, "it is flushed");
  });
  Check(recording->Flush() == kResultOk && recording->IsOn(), "it is flushed, and goes on");
  setter.join();
  recording.reset();
  Check(!IsJournalOn(), "the journal is off again");
}

MODEL_SCENARIO(RecordingIsFlushedBesideAStop) {
  Recording recording(kNoFile, FewEvents());
  std::thread other([&] {
    const std::int32_t result = recording.Flush();
    Check(result == kResultOk || result == kResultNotFound, "it is flushed, or over");
  });
  StopJournal();
  Check(recording.Flush() == kResultNotFound && !recording.IsOn(), "it is over");
  other.join();
}

// Its filter ends with it at the latest, on whichever thread; the handle may end in it.
MODEL_SCENARIO(RecordingEndsInItsFilter) {
  KalConfig store(7);
  static std::unique_ptr<Recording> recording;
  std::atomic<bool> hasEnded{false};
  RecordingOptions options = FewEvents();
  options.filter = [&](std::uint32_t, KalConfigGroup, std::string_view) {
    recording.reset();
    hasEnded = true;
    return RecordingShows::kAll;
  };
  recording = std::make_unique<Recording>(kNoFile, options);
  store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "First", 1, false, false);
  while (!hasEnded || IsJournalOn()) std::this_thread::sleep_for(std::chrono::milliseconds(100));
}
