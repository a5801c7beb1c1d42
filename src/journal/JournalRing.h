// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace kalStore::internal {

/// The last records, each of so many words, in places that are used again and again: the record of a number is at the
/// number modulo the capacity. Numbers come from outside, each once, from 1 upward.
///
/// A place's state is a number and what became of its record:
///
/// |                  | a writer with a later number      | the place's writer ends |
/// |------------------|-----------------------------------|-------------------------|
/// | being written    | leaves: lost, still being written | whole                   |
/// | lost, still being written | the same, of its number  | lost                    |
/// | whole, lost      | takes the place: being written    |                         |
///
/// A writer whose place has a later number already leaves without a trace: its record would be overwritten now. So
/// nobody waits, two writers never write in one place at a time, and every number ends as whole or lost, or gone.
///
/// Threads: any. No record is read torn. Words are stored with release and loaded with acquire: a reader that loads a
/// word of a later record synchronises with its writer, which took the place before, and so finds the state changed when
/// it loads it again after the words.
class JournalRing {
 public:
  static constexpr std::size_t kWords = 47;
  using Words = std::array<std::uint64_t, kWords>;

  enum class Found {
    kPending,  ///< not written yet
    kWhole,
    kGone,  ///< lost, or overwritten
  };

  /// 2 to the power of `bits` places.
  explicit JournalRing(unsigned int bits);

  std::uint64_t Capacity() const { return m_mask + 1; }

  /// Writes the record of a number, or loses it. REQUIRES: at most kWords words.
  void Write(std::uint64_t number, std::span<const std::uint64_t> words) {
    if (!Begin(number)) return;
    Fill(number, words);
    End(number);
  }
  /// Reads the record of a number. Words that its writer did not give have any value.
  Found Read(std::uint64_t number, Words& words) const;

  // The steps of Write(), apart for the tests.
  bool Begin(std::uint64_t number);
  void Fill(std::uint64_t number, std::span<const std::uint64_t> words);
  void End(std::uint64_t number);

 private:
  // The lower bits of a state; the number is above them.
  enum State : std::uint64_t { kLostWhileWritten, kWritten, kWhole, kLost };
  static constexpr unsigned int kStateBits = 2;

  struct alignas(64) Place {
    std::atomic<std::uint64_t> state{kLost};  // Of number 0, which is none.
    std::array<std::atomic<std::uint64_t>, kWords> words{};
  };

  static std::uint64_t stateOf(std::uint64_t number, State state) { return number << kStateBits | state; }
  Place& placeOf(std::uint64_t number) const { return m_places[number & m_mask]; }

  const std::uint64_t m_mask;
  const std::unique_ptr<Place[]> m_places;
};

}  // namespace kalStore::internal
