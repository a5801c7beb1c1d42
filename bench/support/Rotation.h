// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

/// Returns its items one after another, repeatedly, in a shuffled order that is the same in every run: the
/// caches and the branch predictor must not have seen the next item last.
template <class T>
class Rotation {
 public:
  explicit Rotation(std::vector<T> items) : m_items(std::move(items)) {
    std::shuffle(m_items.begin(), m_items.end(), std::mt19937(1));
  }

  const T& Next() {
    if (m_next == m_items.size()) m_next = 0;
    return m_items[m_next++];
  }

  const std::vector<T>& Items() const { return m_items; }

 private:
  std::vector<T> m_items;
  std::size_t m_next = 0;
};
