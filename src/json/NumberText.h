// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace kalStore::internal {

/// The double nearest to a number of JSON's grammar: an infinity when it is too large, zero when it is too
/// small.
double ParseReal(std::string_view token);

}  // namespace kalStore::internal
