// SPDX-License-Identifier: Apache-2.0
#include "journal/JournalRing.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <utility>
#include <vector>

namespace kalStore::internal {
namespace {

using Found = JournalRing::Found;

void Fill(JournalRing::PlaceWords& words, std::uint64_t number) {
  for (auto& word : words) word.store(number, std::memory_order_release);
}

void Write(JournalRing& ring, std::uint64_t number) {
  JournalRing::PlaceWords* const words = ring.Begin(number);
  if (words == nullptr) return;
  Fill(*words, number);
  ring.End(number);
}

std::size_t AllWords(std::uint64_t /*first*/) {
  return JournalRing::kWords;
}

Found Read(const JournalRing& ring, std::uint64_t number) {
  JournalRing::Words words;
  const Found found = ring.Read(number, words, &AllWords);
  if (found == Found::kWhole) {
    for (const std::uint64_t word : words) EXPECT_EQ(word, number);
  }
  return found;
}

TEST(JournalRing, HasTheLastRecords) {
  JournalRing ring(2);
  EXPECT_EQ(ring.Capacity(), 4u);
  for (std::uint64_t number = 1; number <= 2 * ring.Capacity() + 1; ++number) {
    EXPECT_EQ(Read(ring, number), Found::kPending);
    Write(ring, number);
    EXPECT_EQ(Read(ring, number), Found::kWhole);
    for (std::uint64_t old = 1; old < number; ++old) {
      EXPECT_EQ(Read(ring, old), number - old < ring.Capacity() ? Found::kWhole : Found::kGone);
    }
  }
}

TEST(JournalRing, GivesAsManyWordsAsTheRecordHas) {
  JournalRing ring(0);
  const std::pair<std::uint64_t, std::size_t> rows[] = {
      {0, 1}, {1, 1}, {2, 2}, {45, 45}, {46, 46}, {47, 46}, {~std::uint64_t{0}, 46}};
  std::uint64_t number = 0;
  for (const auto& [first, count] : rows) {
    JournalRing::PlaceWords* const place = ring.Begin(++number);
    ASSERT_NE(place, nullptr);
    Fill(*place, number);
    (*place)[0].store(first, std::memory_order_release);
    ring.End(number);
    JournalRing::Words words;
    words.fill(~number);
    EXPECT_EQ(ring.Read(number, words, [](std::uint64_t size) { return static_cast<std::size_t>(size); }),
              Found::kWhole);
    EXPECT_EQ(words[0], first);
    for (std::size_t i = 1; i < words.size(); ++i) EXPECT_EQ(words[i], i < count ? number : ~number) << i;
  }
}

TEST(JournalRing, GivesNoRecordThatIsBeingWritten) {
  JournalRing ring(0);
  Write(ring, 1);
  JournalRing::PlaceWords* const words = ring.Begin(2);
  ASSERT_NE(words, nullptr);
  EXPECT_EQ(Read(ring, 1), Found::kGone);
  EXPECT_EQ(Read(ring, 2), Found::kPending);
  Fill(*words, 2);
  EXPECT_EQ(Read(ring, 2), Found::kPending);
  ring.End(2);
  EXPECT_EQ(Read(ring, 2), Found::kWhole);
}

TEST(JournalRing, LosesTheRecordsOfWritersWhosePlaceIsBeingWritten) {
  JournalRing ring(0);
  JournalRing::PlaceWords* const words = ring.Begin(1);
  ASSERT_NE(words, nullptr);
  EXPECT_EQ(ring.Begin(2), nullptr);
  EXPECT_EQ(Read(ring, 1), Found::kPending);
  EXPECT_EQ(Read(ring, 2), Found::kGone);
  EXPECT_EQ(Read(ring, 3), Found::kPending);
  EXPECT_EQ(ring.Begin(3), nullptr) << "the first one is still writing";
  EXPECT_EQ(Read(ring, 3), Found::kGone);
  Fill(*words, 1);
  ring.End(1);
  EXPECT_EQ(Read(ring, 1), Found::kWhole);
  for (const std::uint64_t lost : {2, 3}) EXPECT_EQ(Read(ring, lost), Found::kGone);
  EXPECT_EQ(Read(ring, 4), Found::kPending);
  Write(ring, 4);
  EXPECT_EQ(Read(ring, 4), Found::kWhole);
}

TEST(JournalRing, LosesTheRecordsOfLaterWritersFirstAsWell) {
  JournalRing ring(0);
  ASSERT_NE(ring.Begin(1), nullptr);
  EXPECT_EQ(ring.Begin(3), nullptr);
  EXPECT_EQ(ring.Begin(2), nullptr);
  for (const std::uint64_t lost : {2, 3}) EXPECT_EQ(Read(ring, lost), Found::kGone);
  EXPECT_EQ(Read(ring, 4), Found::kPending);
}

TEST(JournalRing, RefusesAWriterThatComesTooLate) {
  JournalRing ring(0);
  Write(ring, 2);
  EXPECT_EQ(ring.Begin(1), nullptr);
  EXPECT_EQ(Read(ring, 2), Found::kWhole);
  EXPECT_EQ(Read(ring, 1), Found::kGone);
}

TEST(JournalRing, ReadsARecordThatIsShorterThanTheLast) {
  JournalRing ring(0);
  Write(ring, 1);
  JournalRing::PlaceWords* const place = ring.Begin(2);
  ASSERT_NE(place, nullptr);
  (*place)[0] = (*place)[1] = 2;
  ring.End(2);
  JournalRing::Words words;
  ASSERT_EQ(ring.Read(2, words, &AllWords), Found::kWhole);
  EXPECT_EQ(words[0], 2u);
  EXPECT_EQ(words[1], 2u);
}

// Several writers and slow readers, in rings so small that writers lap each other all the time. Every number
// ends as a whole record or as gone, and a whole one has the words of its number alone.
TEST(JournalRing, IsNeverReadTornBesideSeveralWriters) {
  constexpr unsigned int kWriters = 3;
  constexpr std::uint64_t kNumbers = 30000;
  for (const unsigned int bits : {0U, 1U, 3U}) {
    JournalRing ring(bits);
    std::atomic<std::uint64_t> next{1};
    std::atomic<unsigned int> writing{kWriters};
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < kWriters; ++i) {
      threads.emplace_back([&] {
        for (std::uint64_t number; (number = next.fetch_add(1)) <= kNumbers;) Write(ring, number);
        --writing;
      });
    }
    for (const bool isSlow : {false, true}) {
      threads.emplace_back([&, isSlow] {
        std::uint64_t whole = 0, gone = 0;
        for (std::uint64_t number = 1; number <= kNumbers;) {
          if (isSlow && number % 8 == 0) std::this_thread::yield();
          const bool areDone = writing == 0;
          const Found found = Read(ring, number);
          if (found == Found::kPending) {
            EXPECT_FALSE(areDone) << number << " neither whole nor gone";
            if (areDone) return;
            continue;
          }
          ++(found == Found::kWhole ? whole : gone);
          ++number;
        }
        EXPECT_EQ(whole + gone, kNumbers);
      });
    }
    for (std::thread& thread : threads) thread.join();
    // What nobody overwrote is there, unless it was lost.
    for (std::uint64_t number = kNumbers + 1; number <= kNumbers + ring.Capacity(); ++number) {
      Write(ring, number);
      EXPECT_EQ(Read(ring, number), Found::kWhole);
    }
  }
}

}  // namespace
}  // namespace kalStore::internal
