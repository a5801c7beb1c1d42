// SPDX-License-Identifier: Apache-2.0
#include "OptionChecks.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <functional>
#include <limits>
#include <sstream>
#include <system_error>

#include "DidYouMean.h"

namespace {

// `isFine` decides; `expected` says what it lets through.
void Check(CLI::Option& option, const std::string& expected, std::function<bool(const std::string&)> isFine,
           const std::vector<std::string>& names = {}) {
  option.check(CLI::Validator(
      [expected, isFine = std::move(isFine), names](const std::string& value) {
        if (isFine(value)) return std::string();
        return "expected " + expected + ", not \"" + value + "\"" + DidYouMean(value, names);
      },
      ""));
}

template <class Number>
void CheckRange(CLI::Option& option, const char* what, Number least, Number most) {
  std::ostringstream expected;
  expected << what << " from " << least << " to " << most;
  Check(option, std::move(expected).str(), [least, most](const std::string& value) {
    Number number{};
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    return error == std::errc() && stop == end && number >= least && number <= most;  // NaN is not.
  });
}

}  // namespace

void SetChoices(CLI::Option& option, const std::vector<std::string>& names) {
  option.type_name(CLI::detail::join(names, "|"));
  Check(
      option, CLI::detail::join(names, " or "),
      [names](const std::string& value) { return std::ranges::find(names, value) != names.end(); }, names);
}

void SetRange(CLI::Option& option, unsigned least, unsigned most) {
  CheckRange(option, "a whole number", least, most);
}

void SetRange(CLI::Option& option, double least, double most) {
  CheckRange(option, "a number", least, most);
}

void SetSeconds(CLI::Option& option) {
  constexpr double kMostSeconds = 1e9;
  option.type_name("SECONDS");
  SetRange(option, 0.0, kMostSeconds);
}

void SetCall(CLI::Option& option) {
  option.type_name("N");
  SetRange(option, 0U, std::numeric_limits<std::uint32_t>::max());
}

void SetFile(CLI::Option& option) {
  option.type_name("FILE");
  Check(option, "the name of a file", [](const std::string& value) { return !value.empty(); });
}
