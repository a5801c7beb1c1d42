// SPDX-License-Identifier: Apache-2.0
#include "documents/NameIndex.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "documents/NearestName.h"

namespace kalStore::internal {
namespace {

// A few hundredths of a second.
constexpr std::size_t kMostWork = 8'000'000;
constexpr std::size_t kMost = 255;

}  // namespace

NameIndex::LetterCounts NameIndex::countLetters(std::string_view string) {
  LetterCounts counts{};
  for (const char letter : string) {
    std::uint8_t& count = counts[static_cast<unsigned char>(letter) % counts.size()];
    if (count != kMost) ++count;
  }
  return counts;
}

// Inserting, removing or replacing a letter changes the counts by two at most: names that differ in more than
// the edits which may turn a string into them need no closer look, and the others are best looked at in the
// order of the difference.
void NameIndex::findDifferences(std::string_view string) {
  for (std::size_t index = m_counts.size(); index < m_names.size(); ++index) {
    m_counts.push_back(countLetters(m_names[index]));
  }
  const LetterCounts counts = countLetters(string);
  m_differences.resize(m_names.size());
  for (std::size_t index = 0; index < m_names.size(); ++index) {
    const LetterCounts& known = m_counts[index];
    unsigned int difference = 0;
    for (std::size_t letter = 0; letter < counts.size(); ++letter) {
      difference += static_cast<unsigned int>(std::abs(known[letter] - counts[letter]));
    }
    const bool isNear = difference <= 2 * NearestName::Edits(m_names[index]);
    m_differences[index] =
        static_cast<std::uint8_t>(isNear ? std::min<std::size_t>(difference, kMost) : kMost);
  }
  m_work += m_names.size();
}

std::string NameIndex::Nearest(std::string_view string) {
  if (m_work >= kMostWork) return {};
  findDifferences(string);
  NearestName nearest(string);
  for (unsigned int difference = 0; difference < kMost && nearest.MayBeImproved(difference / 2);
       ++difference) {
    const std::uint8_t* const begin = m_differences.data();
    const std::uint8_t* const end = begin + m_differences.size();
    for (const std::uint8_t* at = begin; at != end && m_work < kMostWork; ++at) {
      at = static_cast<const std::uint8_t*>(
          std::memchr(at, static_cast<int>(difference), static_cast<std::size_t>(end - at)));
      if (at == nullptr) break;
      const std::string_view known = m_names[static_cast<std::size_t>(at - begin)];
      nearest.Consider(known);
      m_work += string.size() * known.size();
    }
  }
  return nearest.Result();
}

}  // namespace kalStore::internal
