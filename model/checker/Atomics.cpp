// SPDX-License-Identifier: Apache-2.0
#include "checker/Atomics.h"

#include <algorithm>
#include <cstring>

namespace model {

namespace {

bool Acquires(int order) {
  return order == __ATOMIC_ACQUIRE || order == __ATOMIC_CONSUME || order == __ATOMIC_ACQ_REL ||
         order == __ATOMIC_SEQ_CST;
}

bool Releases(int order) {
  return order == __ATOMIC_RELEASE || order == __ATOMIC_ACQ_REL || order == __ATOMIC_SEQ_CST;
}

std::uintptr_t AddressOf(const void* memory) {
  return reinterpret_cast<std::uintptr_t>(memory);
}

std::uint64_t ValueIn(const Atomics::Object& object) {
  std::uint64_t value = 0;
  std::memcpy(&value, object.address, object.size);
  return value;
}

void Put(const Atomics::Object& object, std::uint64_t value) {
  std::memcpy(object.address, &value, object.size);
}

}  // namespace

void Atomics::BeginExecution() {
  m_locations.clear();
  m_words.reset();
  m_used = 0;
}

void Atomics::Forget(const void* memory, std::size_t size) {
  const std::uintptr_t begin = AddressOf(memory);
  std::uintptr_t at = begin - kLargest + 1;
  while (at < begin + size) {
    const std::uintptr_t nextWord = (at / kLargest + 1) * kLargest;
    // Most of what is written was never atomic.
    if (!m_words.test(wordOf(at))) {
      at = nextWord;
      continue;
    }
    for (; at < std::min(nextWord, begin + size); ++at) {
      const auto found = m_locations.find(at);
      if (found != m_locations.end() && at + found->second->object.size > begin) m_locations.erase(found);
    }
  }
}

Atomics::Location& Atomics::locate(Object object, Doer by) {
  const std::uint64_t value = ValueIn(object);
  const auto found = m_locations.find(AddressOf(object.address));
  if (found != m_locations.end() && found->second->object.size == object.size &&
      found->second->stores.back().value == value) {
    return *found->second;
  }
  // The first operation, or one after a change that was not seen, or of another size: everyone knows the
  // value.
  Forget(object.address, object.size);
  if (m_used == m_pool.size()) m_pool.push_back(std::make_unique<Location>());
  Location& location = *m_pool[m_used++];
  location.object = object;
  location.stores.assign(1, {value, false, VectorClock()});
  for (auto& seen : location.seen) seen.clear();
  location.consistent = 0;
  see(location, 0, __ATOMIC_RELAXED, by);
  m_locations[AddressOf(object.address)] = &location;
  m_words.set(wordOf(AddressOf(object.address)));
  return location;
}

std::size_t Atomics::oldestVisible(const Location& location, int order, Doer by) {
  std::size_t oldest = order == __ATOMIC_SEQ_CST ? location.consistent : 0;
  for (int thread = 0; thread < kMostThreads; ++thread) {
    const std::vector<Seen>& seen = location.seen[thread];
    for (auto at = seen.rbegin(); at != seen.rend() && at->store > oldest; ++at) {
      if (!by.clock.Knows(Epoch(thread, at->time))) continue;
      oldest = at->store;
      break;
    }
  }
  return oldest;
}

void Atomics::see(Location& location, std::size_t store, int order, Doer by) {
  std::vector<Seen>& seen = location.seen[by.thread];
  if (seen.empty() || seen.back().store != store) seen.push_back({by.clock.Of(by.thread), store});
  if (order == __ATOMIC_SEQ_CST) location.consistent = std::max(location.consistent, store);
  if (Acquires(order) && location.stores[store].releases) by.clock.Join(location.stores[store].released);
}

std::uint64_t Atomics::Load(Object object, int order, Doer by) {
  Location& location = locate(object, by);
  const std::size_t latest = location.stores.size() - 1;
  const std::size_t oldest = oldestVisible(location, order, by);
  Options ages;
  for (std::size_t age = 0; age <= latest - oldest; ++age) ages.Add(static_cast<int>(age));
  const int age = m_choices.Choose(Choices::Kind::kStore, Choices::Cost::kOddity, ages);
  const std::size_t store = latest - static_cast<std::size_t>(age);
  see(location, store, order, by);
  return location.stores[store].value;
}

void Atomics::Store(Object object, std::uint64_t value, int order, Doer by) {
  Location& location = locate(object, by);
  location.stores.push_back({value, Releases(order), by.clock});
  see(location, location.stores.size() - 1, order == __ATOMIC_SEQ_CST ? order : __ATOMIC_RELAXED, by);
  Put(object, value);
}

void Atomics::modify(Object object, Location& location, std::uint64_t value, int order, Doer by) {
  see(location, location.stores.size() - 1, order, by);
  const Stored& before = location.stores.back();
  // It is in the release sequence of what it replaces, and may head one of its own.
  Stored stored{value, before.releases || Releases(order), before.releases ? before.released : VectorClock()};
  if (Releases(order)) stored.released.Join(by.clock);
  location.stores.push_back(stored);
  see(location, location.stores.size() - 1, order == __ATOMIC_SEQ_CST ? order : __ATOMIC_RELAXED, by);
  Put(object, value);
}

bool Atomics::CompareExchange(Object object, std::uint64_t& expected, std::uint64_t desired, int order,
                              int failureOrder, bool isWeak, Doer by) {
  constexpr int kFails = -1;
  Location& location = locate(object, by);
  const std::size_t latest = location.stores.size() - 1;
  Options ages{0};
  for (std::size_t age = 1; age <= latest - oldestVisible(location, failureOrder, by); ++age) {
    // With the expected value it would have to exchange, which takes the latest store.
    if (location.stores[latest - age].value != expected) ages.Add(static_cast<int>(age));
  }
  const bool isExpected = location.stores[latest].value == expected;
  if (isExpected && isWeak) ages.Add(kFails);
  const int age = m_choices.Choose(Choices::Kind::kFailure, Choices::Cost::kOddity, ages);
  if (age == 0 && isExpected) {
    modify(object, location, desired, order, by);
    return true;
  }
  const std::size_t store = age == kFails ? latest : latest - static_cast<std::size_t>(age);
  see(location, store, failureOrder, by);
  expected = location.stores[store].value;
  return false;
}

}  // namespace model
