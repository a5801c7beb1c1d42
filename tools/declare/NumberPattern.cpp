// SPDX-License-Identifier: Apache-2.0
#include "declare/NumberPattern.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "declare/Words.h"

namespace declare {
namespace {

using Alternatives = std::vector<std::string>;

constexpr const char* kNumber = "-?([0-9]+([.][0-9]*)?|[.][0-9]+)([eE][-+]?[0-9]+)?";

std::string Digit(char least, char most) {
  if (least == most) return {least};
  return std::string("[") + least + "-" + most + "]";
}

std::string Digits(std::size_t count) {
  if (count == 0) return "";
  return count == 1 ? "[0-9]" : "[0-9]{" + std::to_string(count) + "}";
}

bool IsAll(const std::string& text, char digit) {
  return text.find_first_not_of(digit) == std::string::npos;
}

// Adds what matches the numbers from `least` to `most`, which have as many digits, after `prefix`.
void AddOfOneLength(Alternatives& out, const std::string& prefix, const std::string& least,
                    const std::string& most) {
  const std::string leastRest = least.substr(1), mostRest = most.substr(1);
  if (least.front() == most.front() && !(IsAll(leastRest, '0') && IsAll(mostRest, '9'))) {
    AddOfOneLength(out, prefix + least.front(), leastRest, mostRest);
    return;
  }
  // The first digits between the two ends may have anything behind them; an end's own may not always.
  char from = least.front(), to = most.front();
  if (!IsAll(leastRest, '0')) {
    AddOfOneLength(out, prefix + from, leastRest, std::string(leastRest.size(), '9'));
    ++from;
  }
  const bool isMostWhole = IsAll(mostRest, '9');
  if (!isMostWhole) --to;
  if (from <= to) out.push_back(prefix + Digit(from, to) + Digits(leastRest.size()));
  if (!isMostWhole) {
    AddOfOneLength(out, prefix + most.front(), std::string(mostRest.size(), '0'), mostRest);
  }
}

void AddFromTo(Alternatives& out, const std::string& prefix, std::uint64_t minimum, std::uint64_t maximum) {
  const std::string least = std::to_string(minimum), most = std::to_string(maximum);
  for (std::size_t length = least.size(); length <= most.size(); ++length) {
    const bool isFirst = length == least.size(), isLast = length == most.size();
    AddOfOneLength(out, prefix, isFirst ? least : "1" + std::string(length - 1, '0'),
                   isLast ? most : std::string(length, '9'));
  }
}

std::uint64_t Magnitude(std::int64_t number) {
  return number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
}

}  // namespace

std::string WholeNumberPattern(std::int64_t minimum, std::int64_t maximum, bool isSigned) {
  Alternatives all;
  if (isSigned && minimum <= 0) {
    AddFromTo(all, "-0*", Magnitude(std::min<std::int64_t>(maximum, 0)), Magnitude(minimum));
  }
  if (maximum >= 0) AddFromTo(all, "0*", Magnitude(std::max<std::int64_t>(minimum, 0)), Magnitude(maximum));
  return "^(" + Joined(all, "|") + ")$";
}

std::string NumberPattern() {
  return std::string("^") + kNumber + "$";
}

std::string BoolPattern() {
  return std::string("^([Tt][Rr][Uu][Ee]|[Ff][Aa][Ll][Ss][Ee]|") + kNumber + ")$";
}

}  // namespace declare
