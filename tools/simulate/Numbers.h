// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

namespace simulate {

/// With so many decimals, the same in every locale.
std::string Fixed(double value, int decimals);
/// "1 call", "2 calls".
std::string Plural(std::uint64_t count, const std::string& what);
/// A duration in the unit that suits it, for example "12.3 µs".
std::string Duration(std::int64_t nanoseconds);
/// An amount of memory in MiB.
std::string Mebibytes(std::uint64_t kibibytes);

}  // namespace simulate
