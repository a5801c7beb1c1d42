// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace fuzz {

/// Ends the process: a fuzz target reports so that a property does not hold.
[[noreturn]] inline void Fail(const char* file, int line, const std::string& what) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, what.c_str());
  std::abort();
}

template <class T>
std::string Shown(const T& value) {
  if constexpr (requires(std::ostream& out) { out << value; }) {
    std::ostringstream out;
    out << value;
    return out.str();
  } else {
    return "a value without a text";
  }
}

template <class Left, class Right>
void CheckEqual(const Left& left, const Right& right, const char* file, int line, const char* what) {
  if (left == right) return;
  Fail(file, line, what + (": " + Shown(left)) + " and " + Shown(right));
}

}  // namespace fuzz

#define FUZZ_CHECK(condition) \
  (static_cast<bool>(condition) ? void() : fuzz::Fail(__FILE__, __LINE__, #condition))
#define FUZZ_EQUAL(left, right) fuzz::CheckEqual((left), (right), __FILE__, __LINE__, #left " == " #right)
