// SPDX-License-Identifier: Apache-2.0
// The journal: its ring with writers a lap apart, its start and stop beside writers, and its clock.
#include <chrono>
#include <cstdlib>
#include <thread>

#include "journal/ClockAnchor.h"
#include "journal/JournalClock.h"
#include "journal/JournalRing.h"
#include "scenarios/Registry.h"
#include "tessel/KalConfig.h"
#include "tessel/journal.h"

using namespace kalStore;
using internal::JournalRing;
using internal::TimeAt;
using model::Check;

namespace {

// Two words are enough to be torn; the second record has three.
std::size_t RecordWords(std::uint64_t number) {
  return static_cast<std::size_t>(number) + 1;
}

void WriteRecord(JournalRing& ring, std::uint64_t number) {
  JournalRing::PlaceWords* const words = ring.Begin(number);
  if (words == nullptr) return;
  for (std::size_t i = 0; i < RecordWords(number); ++i) (*words)[i].store(number, std::memory_order_release);
  ring.End(number);
}

JournalRing::Found ReadRecord(const JournalRing& ring, std::uint64_t number) {
  JournalRing::Words words;
  const JournalRing::Found found = ring.Read(number, words, &RecordWords);
  if (found == JournalRing::Found::kWhole) {
    for (std::size_t i = 0; i < RecordWords(number); ++i)
      Check(words[i] == number, "a record is not torn, nor another's");
  }
  return found;
}

int SetInJournal(KalConfig& store, const char* name, int value) {
  return store.SetKalConfig(KAL_CONFIG_GROUP_VIDEO, name, value, false, false);
}

// That an event has the value that belongs to its name.
void CheckInJournal(const JournalEvent& event) {
  Check(event.newValue.has_value(), "a set has a value");
  const char* const value = event.name.text == "First" ? "1" : event.name.text == "Second" ? "2" : "3";
  Check(event.newValue->text == value, "an event comes whole");
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
  Check(ReadRecord(ring, 1) != JournalRing::Found::kPending &&
            ReadRecord(ring, 2) != JournalRing::Found::kPending,
        "no number stays pending");
}

MODEL_SCENARIO(JournalIsReadBesideWriters) {
  KalConfig store(7);
  StartJournal(8);
  std::thread setter([&] { SetInJournal(store, "First", 1); });
  SetInJournal(store, "Second", 2);
  JournalReader reader;
  JournalEvent event;
  std::uint64_t last = 0;
  while (reader.Next(event)) {
    CheckInJournal(event);
    Check(event.number > last, "events come in their order");
    last = event.number;
  }
  setter.join();
}

// What is written after the start of another ring is read, whatever a late writer did: it leaves no gap for
// ever.
MODEL_SCENARIO(JournalStartsAnotherRingBesideWriters) {
  KalConfig store(7);
  StartJournal(1);
  std::thread setter([&] { SetInJournal(store, "First", 1); });
  StopJournal();
  StartJournal(8);
  SetInJournal(store, "Second", 2);
  setter.join();
  SetInJournal(store, "Third", 3);
  JournalReader reader;
  JournalEvent event;
  bool hasThird = false;
  while (reader.Next(event)) {
    CheckInJournal(event);
    hasThird |= event.name.text == "Third";
  }
  Check(hasThird, "the latest event is read");
}

// Who finds a number drawn finds the start counted that came before it.
MODEL_SCENARIO(JournalStartIsCountedBeforeItsEvents) {
  KalConfig store(7);
  StartJournal(8);
  const std::uint64_t starts = JournalStarts(), next = NextJournalNumber();
  std::thread starter([&] {
    StopJournal();
    StartJournal(8);
    SetInJournal(store, "First", 1);
  });
  if (NextJournalNumber() > next) Check(JournalStarts() == starts + 1, "the start is counted");
  starter.join();
}

// What a writer had written before it drew a later number is there for whoever finds that one drawn.
MODEL_SCENARIO(JournalHasAllOfOneWriter) {
  KalConfig store(7);
  StartJournal(2);
  std::thread setter([&] {
    SetInJournal(store, "First", 1);
    SetInJournal(store, "Second", 2);
  });
  JournalReader reader;
  JournalEvent event;
  while (reader.Next(event)) {
    CheckInJournal(event);
    Check(event.missed == 0, "nothing is missed");
  }
  Check(reader.Missed() == 0, "nothing is missed");
  setter.join();
}

// A reader that begins with a start has the ring of that start.
MODEL_SCENARIO(JournalReaderBeginsBesideAStart) {
  KalConfig store(7);
  StartJournal(1);
  const std::uint64_t before = NextJournalNumber();
  SetInJournal(store, "First", 1);
  std::thread starter([&] {
    StopJournal();
    StartJournal(8);
    SetInJournal(store, "Second", 2);
    SetInJournal(store, "Third", 3);
  });
  JournalReader reader;
  JournalEvent event;
  bool hasRead = reader.Next(event);
  starter.join();
  if (!hasRead) hasRead = reader.Next(event);
  Check(hasRead && (event.missed == 0 || event.number - event.missed == before), "nothing of it is missed");
}

// What a reader misses by the start of another ring ends where that begins.
MODEL_SCENARIO(JournalIsReadBesideTheStartOfAnotherRing) {
  KalConfig store(7);
  StartJournal(1);
  JournalReader reader;
  std::thread starter([&] {
    SetInJournal(store, "First", 1);
    SetInJournal(store, "Second", 2);
    StopJournal();
    StartJournal(8);
    SetInJournal(store, "Third", 3);
  });
  JournalEvent event;
  const auto read = [&] {
    while (reader.Next(event)) CheckInJournal(event);
  };
  read();
  starter.join();
  read();
  Check(event.name.text == "Third", "the latest event is read");
}

// The same of events that draw their number when they are written.
MODEL_SCENARIO(JournalHasAllRemovalsOfOneWriter) {
  KalConfig store(7);
  StartJournal(2);
  std::thread remover([&] {
    store.RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "First");
    store.RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "Second");
  });
  JournalReader reader;
  for (JournalEvent event; reader.Next(event);) Check(event.missed == 0, "nothing is missed");
  Check(reader.Missed() == 0, "nothing is missed");
  remover.join();
}

MODEL_SCENARIO(JournalStartsAnotherRingBesideARemoval) {
  KalConfig store(7);
  StartJournal(1);
  std::thread remover([&] { store.RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "First"); });
  StopJournal();
  StartJournal(8);
  remover.join();
  store.RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "Second");
  JournalReader reader;
  JournalEvent event;
  while (reader.Next(event)) {
  }
  Check(event.name.text == "Second", "the latest event is read");
}

// The capacity is that of a ring which another thread has just made.
MODEL_SCENARIO(JournalCapacityIsAskedBesideAStart) {
  std::thread starter([] { StartJournal(4); });
  const std::size_t capacity = JournalCapacity();
  Check(capacity == 0 || capacity == 4, "none, or that of the start");
  starter.join();
}

// A ring of one place: each writer is a lap ahead of the one before.
MODEL_SCENARIO(JournalOfOnePlaceIsReadBesideAWriter) {
  KalConfig store(7);
  StartJournal(1);
  SetInJournal(store, "First", 1);
  std::thread setter([&] { SetInJournal(store, "Second", 2); });
  JournalReader reader;
  JournalEvent event;
  while (reader.Next(event)) CheckInJournal(event);
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

// A reader has the time of the old anchor or that of the new one; what is made of both is another.
MODEL_SCENARIO(ClockAnchorIsReadBesideARenewal) {
  constexpr std::int64_t kStretchNs = 20'000'000;
  constexpr std::int64_t kLateNs = 10'000;  // The rate changes a little.
  constexpr std::uint64_t kTicks = 3 * kStretchNs;
  internal::ClockAnchor anchor;
  internal::ClockRate rate;
  rate.Renew(anchor, {kStretchNs, kStretchNs});
  rate.Renew(anchor, {2 * kStretchNs, 2 * kStretchNs});
  const auto before = TimeAt(anchor, kTicks);
  std::thread writer([&] { rate.Renew(anchor, {kTicks, 3 * kStretchNs + kLateNs}); });
  const auto time = TimeAt(anchor, kTicks);
  writer.join();
  const auto after = TimeAt(anchor, kTicks);
  Check(before && after && *before != *after, "both anchors have a time");
  Check(!time || time == before || time == after, "the time of one anchor");
}
