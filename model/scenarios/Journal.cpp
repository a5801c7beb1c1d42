// SPDX-License-Identifier: Apache-2.0
// The journal: its ring with writers a lap apart, its start and stop beside writers, and its clock.
#include <chrono>
#include <cstdlib>
#include <thread>

#include "journal/JournalClock.h"
#include "journal/JournalRing.h"
#include "scenarios/Registry.h"
#include "tessel/KalConfig.h"
#include "tessel/journal.h"

using namespace kalStore;
using internal::JournalRing;
using model::Check;

namespace {

// Two words are enough to be torn.
void WriteRecord(JournalRing& ring, std::uint64_t number) {
  ring.Write(number, [number](JournalRing::PlaceWords& words) {
    words[0].store(number, std::memory_order_release);
    words[1].store(number, std::memory_order_release);
  });
}

void ReadRecord(const JournalRing& ring, std::uint64_t number) {
  JournalRing::Words words;
  if (ring.Read(number, words) != JournalRing::Found::kWhole) return;
  Check(words[0] == number && words[1] == number, "a record is not torn, nor another's");
}

}  // namespace

MODEL_SCENARIO(JournalRingIsReadBesideAWriter) {
  JournalRing ring(0);
  WriteRecord(ring, 1);
  std::thread writer([&] { WriteRecord(ring, 2); });
  ReadRecord(ring, 1);
  ReadRecord(ring, 2);
  writer.join();
  ReadRecord(ring, 2);
}

MODEL_SCENARIO(JournalRingHasWritersALapApart) {
  JournalRing ring(0);
  std::thread first([&] { WriteRecord(ring, 1); });
  std::thread second([&] { WriteRecord(ring, 2); });
  ReadRecord(ring, 1);
  ReadRecord(ring, 2);
  first.join();
  second.join();
  JournalRing::Words words;
  Check(ring.Read(1, words) != JournalRing::Found::kPending &&
            ring.Read(2, words) != JournalRing::Found::kPending,
        "no number stays pending");
}

MODEL_SCENARIO(JournalIsReadBesideWriters) {
  KalConfig store(7);
  StartJournal(8);
  const auto set = [&](const char* name) {
    store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name, 1, false, false);
  };
  std::thread setter([&] { set("MaxFps"); });
  set("Codec");
  JournalReader reader;
  JournalEvent event;
  std::uint64_t last = 0;
  while (reader.Next(event)) {
    Check(event.number > last && event.newValue->text == "1", "events come whole, in their order");
    last = event.number;
  }
  setter.join();
}

MODEL_SCENARIO(JournalStartsAnotherRingBesideWriters) {
  KalConfig store(7);
  StartJournal(1);
  std::thread setter([&] { store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 1, false, false); });
  StopJournal();
  StartJournal(2);
  JournalReader reader;
  JournalEvent event;
  while (reader.Next(event)) Check(event.newValue->text == "1", "events come whole");
  setter.join();
}

// A reader takes the anchor's parts of one renewal, and the thread's time does not go back.
MODEL_SCENARIO(JournalClockIsRenewedBesideAReader) {
  const auto sleep = [] { std::this_thread::sleep_for(std::chrono::milliseconds(1)); };
  // The anchor is published, and used up.
  for (int i = 0; i < 12; ++i) {
    internal::JournalNowNs();
    sleep();
  }
  const auto now = [] { return std::chrono::steady_clock::now().time_since_epoch().count(); };
  const auto check = [&] {
    for (int i = 0; i < 2; ++i)
      Check(std::abs(internal::JournalNowNs() - now()) < 1000, "the time of one anchor");
  };
  for (int i = 0; i < 11; ++i) sleep();
  std::thread other(check);
  check();
  other.join();
}
