// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace model {

/// Where another thread can make a difference: the places of the code that use an object which several
/// threads use and one of them changes. Only there a thread is preempted. Which places these are is learned
/// from one execution to the next.
class Sharing {
 public:
  using Place = std::uint64_t;

  void BeginExecution() {
    m_objects.clear();
    for (const Place place : m_forgotten) m_shared.erase(place);
    m_forgotten.clear();
  }
  /// A thread uses an object. Returns whether its place is one of those that are shared.
  bool Use(const void* object, Place place, int thread, bool isChange) {
    Object& used = m_objects[object];
    used.threads |= 1U << thread;
    used.isChanged |= isChange;
    if (used.isChanged && (used.threads & (used.threads - 1)) != 0) {
      learn(place);
      for (const Place earlier : used.places) learn(earlier);
      used.places.clear();
    } else {
      used.places.push_back(place);
    }
    return m_shared.contains(place);
  }
  /// From now on, what an execution learns is forgotten with it: none depends on the ones before it.
  void StopLearning() { m_isLearning = false; }
  /// How many places are known. A search that learns one begins again.
  std::size_t Size() const { return m_shared.size(); }

 private:
  struct Object {
    unsigned int threads = 0;
    bool isChanged = false;
    std::vector<Place> places;
  };

  void learn(Place place) {
    if (m_shared.insert(place).second && !m_isLearning) m_forgotten.push_back(place);
  }

  std::unordered_map<const void*, Object> m_objects;
  std::unordered_set<Place> m_shared;
  bool m_isLearning = true;
  std::vector<Place> m_forgotten;  // With the execution.
};

}  // namespace model
