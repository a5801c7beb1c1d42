// SPDX-License-Identifier: Apache-2.0
// What the language allows and forbids between threads, in the smallest programs that show it: the checker
// finds every outcome that is allowed, and none that is forbidden.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "checker/Explore.h"

namespace {

using model::Check;

constexpr std::memory_order kRelaxed = std::memory_order_relaxed;
constexpr std::memory_order kAcquire = std::memory_order_acquire;
constexpr std::memory_order kRelease = std::memory_order_release;
constexpr std::memory_order kConsistent = std::memory_order_seq_cst;

model::Outcome ExploreAll(void (*scenario)()) {
  return model::Explore({"", scenario}, {.preemptions = 3, .oddities = 3}, 0);
}

void ExpectFound(void (*scenario)(), const char* failure) {
  const model::Outcome outcome = ExploreAll(scenario);
  EXPECT_NE(outcome.failure.find(failure), std::string::npos) << outcome.failure;
  // The schedule is all that is needed to see it again.
  const std::string replayed = model::Replay({"", scenario}, outcome.schedule);
  EXPECT_NE(replayed.find(failure), std::string::npos)
      << outcome.failure << " at " << outcome.schedule << "\n"
      << replayed;
}

void ExpectNothing(void (*scenario)()) {
  const model::Outcome outcome = ExploreAll(scenario);
  EXPECT_EQ(outcome.failure, "") << outcome.schedule;
  EXPECT_EQ(outcome.preemptions, 3);
}

constexpr const char* kForbidden = "forbidden";

template <std::memory_order store, std::memory_order load>
void StoreBuffering() {
  std::atomic<int> x{0}, y{0};
  int first = 0, second = 0;
  std::thread other([&] {
    x.store(1, store);
    first = y.load(load);
  });
  y.store(1, store);
  second = x.load(load);
  other.join();
  Check(first == 1 || second == 1, kForbidden);
}

TEST(Litmus, StoresAreBufferedUnlessConsistent) {
  ExpectFound(&StoreBuffering<kRelaxed, kRelaxed>, kForbidden);
  ExpectFound(&StoreBuffering<kRelease, kAcquire>, kForbidden);
  ExpectFound(&StoreBuffering<kConsistent, kAcquire>, kForbidden);
  ExpectNothing(&StoreBuffering<kConsistent, kConsistent>);
}

template <std::memory_order store, std::memory_order load>
void MessagePassing() {
  std::atomic<int> data{0};
  std::atomic<bool> isReady{false};
  std::thread other([&] {
    data.store(1, kRelaxed);
    isReady.store(true, store);
  });
  if (isReady.load(load)) Check(data.load(kRelaxed) == 1, kForbidden);
  other.join();
}

TEST(Litmus, AMessageNeedsReleaseAndAcquire) {
  ExpectFound(&MessagePassing<kRelaxed, kRelaxed>, kForbidden);
  ExpectFound(&MessagePassing<kRelease, kRelaxed>, kForbidden);
  ExpectFound(&MessagePassing<kRelaxed, kAcquire>, kForbidden);
  ExpectNothing(&MessagePassing<kRelease, kAcquire>);
  ExpectNothing(&MessagePassing<kConsistent, kConsistent>);
}

template <std::memory_order store, std::memory_order load>
void PlainMessage() {
  int data = 0;
  std::atomic<bool> isReady{false};
  std::thread other([&] {
    data = 1;
    isReady.store(true, store);
  });
  if (isReady.load(load)) Check(data == 1, kForbidden);
  other.join();
}

TEST(Litmus, APlainMessageWithoutThemIsARace) {
  ExpectFound(&PlainMessage<kRelaxed, kAcquire>, "a race");
  ExpectFound(&PlainMessage<kRelease, kRelaxed>, "a race");
  ExpectNothing(&PlainMessage<kRelease, kAcquire>);
}

// A read-modify-write continues a release sequence, a store ends it.
template <bool isModified>
void ReleaseSequence() {
  int data = 0;
  std::atomic<int> state{0};
  std::thread first([&] {
    data = 1;
    state.store(1, kRelease);
  });
  std::thread second([&] {
    if (state.load(kRelaxed) != 1) return;
    if (isModified) {
      state.fetch_add(1, kRelaxed);
    } else {
      state.store(2, kRelaxed);
    }
  });
  if (state.load(kAcquire) == 2) Check(data == 1, kForbidden);
  first.join();
  second.join();
}

TEST(Litmus, AModificationContinuesAReleaseSequence) {
  ExpectNothing(&ReleaseSequence<true>);
  ExpectFound(&ReleaseSequence<false>, "a race");
}

void Coherence() {
  std::atomic<int> x{0};
  std::thread other([&] {
    x.store(1, kRelaxed);
    x.store(2, kRelaxed);
  });
  const int first = x.load(kRelaxed);
  Check(x.load(kRelaxed) >= first, kForbidden);
  other.join();
  Check(x.load(kRelaxed) == 2, kForbidden);
}

TEST(Litmus, AnObjectNeverGoesBack) {
  ExpectNothing(&Coherence);
}

template <std::memory_order load>
void IndependentReads() {
  std::atomic<int> x{0}, y{0};
  int ofX[2] = {}, ofY[2] = {};
  std::thread writeX([&] { x.store(1, kRelease); });
  std::thread writeY([&] { y.store(1, kRelease); });
  std::thread reader([&] {
    ofX[0] = x.load(load);
    ofY[0] = y.load(load);
  });
  ofY[1] = y.load(load);
  ofX[1] = x.load(load);
  writeX.join();
  writeY.join();
  reader.join();
  Check(!(ofX[0] == 1 && ofY[0] == 0 && ofY[1] == 1 && ofX[1] == 0), kForbidden);
}

TEST(Litmus, ReadersAgreeOnTheOrderOfIndependentStoresOnlyIfConsistent) {
  ExpectFound(&IndependentReads<kAcquire>, kForbidden);
  ExpectNothing(&IndependentReads<kConsistent>);
}

void LostUpdate() {
  std::atomic<int> count{0};
  std::thread other([&] { count.store(count.load(kConsistent) + 1, kConsistent); });
  count.store(count.load(kConsistent) + 1, kConsistent);
  other.join();
  Check(count.load() == 2, kForbidden);
}

void KeptUpdate() {
  std::atomic<int> count{0};
  std::thread other([&] { count.fetch_add(1, kRelaxed); });
  int seen = count.load(kRelaxed);
  while (!count.compare_exchange_weak(seen, seen + 1, kRelaxed)) {
  }
  other.join();
  Check(count.load() == 2, kForbidden);
}

TEST(Litmus, AnUpdateIsLostUnlessItIsOneOperation) {
  ExpectFound(&LostUpdate, kForbidden);
  ExpectNothing(&KeptUpdate);
}

void SpuriousFailure() {
  std::atomic<int> x{0};
  int expected = 0;
  Check(x.compare_exchange_weak(expected, 1), kForbidden);
}

TEST(Litmus, AWeakExchangeFailsForNoReason) {
  ExpectFound(&SpuriousFailure, kForbidden);
}

}  // namespace
