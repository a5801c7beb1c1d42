// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace kalStore::internal {

/// The last records, each of so many words, in places that are used again and again: the record of a number
/// is at the number modulo the capacity. Numbers come from outside, each once, from 1 upward.
///
/// A place's state is the number of its record, and whether that is whole:
///
/// |               | a writer with a later number     | the place's writer ends |
/// |---------------|----------------------------------|-------------------------|
/// | being written | leaves: its number is lost       | whole                   |
/// | whole         | takes the place: being written   |                         |
///
/// A writer whose place has a later number already leaves, too: its record would be overwritten now. So
/// nobody waits, two writers never write in one place at a time, and every number ends as whole or gone. The
/// largest number that was lost is noted beside the state, so that readers do not wait for it.
///
/// Threads: any. No record is read torn. Words are stored with release and loaded with acquire: a reader that
/// loads a word of a later record synchronises with its writer, which took the place before, and so finds the
/// state changed when it loads it again after the words.
class JournalRing {
 public:
  static constexpr std::size_t kWords = 46;
  using Words = std::array<std::uint64_t, kWords>;
  /// The words of a place. To be stored with release, see above.
  using PlaceWords = std::array<std::atomic<std::uint64_t>, kWords>;

  enum class Found {
    kPending,  ///< not written yet
    kWhole,
    kGone,  ///< lost, or overwritten
  };

  /// 2 to the power of `bits` places.
  explicit JournalRing(unsigned int bits);

  std::uint64_t Capacity() const { return m_mask + 1; }

  /// Fetches the place of a number that is written soon: its last writer may have been another processor.
  void Prefetch(std::uint64_t number) const {
    const auto* const lines = reinterpret_cast<const char*>(&placeOf(number));
    fetchToWrite(lines);
    fetchToWrite(lines + 64);
  }
  /// Begins to write the record of a number; null: it is lost. Taking the place acquires: the words of its
  /// last record were stored before.
  PlaceWords* Begin(std::uint64_t number) {
    Place& place = placeOf(number);
    std::uint64_t found = place.state.load(std::memory_order_relaxed);
    do {
      if (found >> 1 >= number) return nullptr;
      if ((found & kWhole) == 0) {
        lose(place, number);
        return nullptr;
      }
    } while (!place.state.compare_exchange_weak(found, number << 1, std::memory_order_acquire,
                                                std::memory_order_relaxed));
    return &place.words;
  }
  /// Ends the record that was begun. Releases, for the next writer of the place and for readers. Nobody else
  /// changes the state of a record that is being written.
  void End(std::uint64_t number) {
    placeOf(number).state.store(number << 1 | kWhole, std::memory_order_release);
  }

  /// How many words a record has, as its first one says. That may be of a later record, which then is found
  /// to have come.
  using Size = std::size_t (*)(std::uint64_t first);
  /// Reads the record of a number: as many words as it has. The others have any value.
  Found Read(std::uint64_t number, Words& words, Size size) const;

 private:
  static constexpr std::uint64_t kWhole = 1;  // The lowest bit of a state; the number is above it.

  // Of which a short record changes the first two cache lines. No place shares a line with another, nor a
  // pair of lines, which processors fetch at once. Debuggers read places in cores: m_places has m_mask + 1 of
  // them.
  struct alignas(128) Place {
    std::atomic<std::uint64_t> state{kWhole};  // Of number 0, which is none.
    PlaceWords words{};
    std::atomic<std::uint64_t> lost{0};
  };
  static_assert(sizeof(Place) == 384);

  // What the compiler has for every x86-64 processor fetches a line to be read: its owner keeps a copy, and
  // is asked again at the first store. A processor that does not know this instruction passes over it.
  static void fetchToWrite(const char* line) {
#if defined(__x86_64__)
    asm volatile("prefetchw %0" : : "m"(*line));
#else
    __builtin_prefetch(line, 1);
#endif
  }

  static void lose(Place& place, std::uint64_t number);
  Place& placeOf(std::uint64_t number) const { return m_places[static_cast<std::size_t>(number & m_mask)]; }

  const std::uint64_t m_mask;
  const std::unique_ptr<Place[]> m_places;
};

}  // namespace kalStore::internal
