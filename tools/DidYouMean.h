// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string>
#include <string_view>

/// " (did you mean "NAME"?)" with the known name that a string is most likely meant to be, letter case aside:
/// at most a third of the name's letters, and one in any case, are missing, too many, wrong or swapped. ""
/// when there is none.
std::string DidYouMean(std::string_view text, std::span<const std::string> known);
