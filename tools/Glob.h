// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

/// Whether the text has a wildcard: * or ?.
bool IsGlob(std::string_view text);

/// Whether the whole text fits the pattern, in which * is any text and ? any byte. Letter case does not
/// count.
bool FitsGlob(std::string_view pattern, std::string_view text);
