// SPDX-License-Identifier: Apache-2.0
// Which of the mutants in this program is the one that runs: that of the number in TESSEL_MUTANT.
#pragma once

namespace mutation {

[[gnu::visibility("default")]] bool Chosen(int number) noexcept;

// What the compiler computes has no mutants.
constexpr bool Is(int number) noexcept {
  return !__builtin_is_constant_evaluated() && Chosen(number);
}

}  // namespace mutation
