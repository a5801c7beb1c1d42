// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace model {

/// The threads of an execution, the scenario's own included.
inline constexpr int kMostThreads = 8;

/// A moment in one thread: its number and its time, in one word.
class Epoch {
 public:
  static constexpr std::uint32_t kLatestTime = (1U << 28) - 1;

  constexpr Epoch() = default;
  constexpr Epoch(int thread, std::uint32_t time) : m_word(static_cast<std::uint32_t>(thread) << 28 | time) {}

  int Thread() const { return static_cast<int>(m_word >> 28 & 7); }
  std::uint32_t Time() const { return m_word & kLatestTime; }
  /// One more bit, for whoever stores epochs.
  bool IsMarked() const { return m_word >> 31 != 0; }
  Epoch Marked() const {
    Epoch marked = *this;
    marked.m_word |= 1U << 31;
    return marked;
  }

 private:
  std::uint32_t m_word = 0;
};

/// What happens before a moment: for each thread, up to when.
class VectorClock {
 public:
  VectorClock() = default;
  explicit VectorClock(std::uint32_t begin) { m_times.fill(begin); }
  explicit VectorClock(Epoch moment) { Set(moment); }

  std::uint32_t Of(int thread) const { return m_times[static_cast<std::size_t>(thread)]; }
  bool Knows(Epoch moment) const { return moment.Time() <= Of(moment.Thread()); }
  void Set(Epoch moment) { m_times[static_cast<std::size_t>(moment.Thread())] = moment.Time(); }
  void Tick(int thread) { ++m_times[static_cast<std::size_t>(thread)]; }
  void Join(const VectorClock& other) {
    for (std::size_t i = 0; i < m_times.size(); ++i) m_times[i] = std::max(m_times[i], other.m_times[i]);
  }

 private:
  std::array<std::uint32_t, kMostThreads> m_times{};
};

}  // namespace model
