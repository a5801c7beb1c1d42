// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

/// The page over recordings, made of the folder web/ when the program is compiled: what comes before the
/// recordings, and what comes after. Empty when dygraphs was missing then.
std::string_view PageBegin();
std::string_view PageEnd();

/// Throws CommandError, which says what is missing, when there is no page.
void RequirePage();
