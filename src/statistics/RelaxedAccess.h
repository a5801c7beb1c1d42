// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// Statistics members are written and read by many threads at once, without a lock: each access is a relaxed
// atomic one, which costs no more than a plain one. Whole blocks are copied word by word, so that a member is
// never torn into parts smaller than a word. The compiler's operations are used rather than std::atomic_ref
// because words and members overlap, which atomic_ref does not allow.
namespace kalStore::internal::relaxed {

template <class T>
T Load(const T& member) {
  T value;
  __atomic_load(&member, &value, __ATOMIC_RELAXED);
  return value;
}

template <class T>
void Store(T& member, std::type_identity_t<T> value) {
  __atomic_store(&member, &value, __ATOMIC_RELAXED);
}

/// Stores `value` and returns what it replaces: no update in between is lost.
template <class T>
T Exchange(T& member, std::type_identity_t<T> value) {
  T replaced;
  __atomic_exchange(&member, &value, &replaced, __ATOMIC_RELAXED);
  return replaced;
}

/// Stores `value` if it should replace what is stored, also beside other writers.
template <class T, class Replaces>
void StoreIf(T& member, T value, Replaces replaces) {
  T stored = Load(member);
  while (replaces(value, stored) &&
         !__atomic_compare_exchange_n(&member, &stored, value, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
  }
}

// A word of a block that may overlap members of any type. A block's words are as wide as its alignment
// allows.
struct Words32 {
  using Word [[gnu::may_alias]] = std::uint32_t;
};
struct Words64 {
  using Word [[gnu::may_alias]] = std::uint64_t;
};
template <class Block>
using WordsOf = std::conditional_t<alignof(Block) % sizeof(std::uint64_t) == 0, Words64, Words32>;

/// A copy of the block, which only the calling thread sees.
template <class Block>
Block LoadBlock(const Block& block) {
  using Word = typename WordsOf<Block>::Word;
  static_assert(std::is_trivially_copyable_v<Block> && alignof(Block) % sizeof(Word) == 0);
  Block copy;
  const auto* from = reinterpret_cast<const Word*>(&block);
  auto* to = reinterpret_cast<Word*>(&copy);
  for (std::size_t i = 0; i < sizeof(Block) / sizeof(Word); ++i) {
    to[i] = __atomic_load_n(from + i, __ATOMIC_RELAXED);
  }
  return copy;
}

template <class Block>
void StoreBlock(Block& block, const Block& value) {
  using Word = typename WordsOf<Block>::Word;
  static_assert(std::is_trivially_copyable_v<Block> && alignof(Block) % sizeof(Word) == 0);
  const auto* from = reinterpret_cast<const Word*>(&value);
  auto* to = reinterpret_cast<Word*>(&block);
  for (std::size_t i = 0; i < sizeof(Block) / sizeof(Word); ++i) {
    __atomic_store_n(to + i, from[i], __ATOMIC_RELAXED);
  }
}

template <class Block, std::size_t count>
void ClearBlocks(Block (&blocks)[count]) {
  for (Block& block : blocks) StoreBlock(block, {});
}

}  // namespace kalStore::internal::relaxed
