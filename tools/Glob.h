// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

/// Whether the string has a wildcard: * or ?.
bool IsGlob(std::string_view text);

/// Whether the whole string fits the pattern, in which * is any string and ? any byte. Letter case does not
/// count.
bool FitsGlob(std::string_view pattern, std::string_view text);
