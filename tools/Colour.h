// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

enum class Colour { kRed, kGreen, kYellow, kCyan, kBold };

/// Whether the descriptor leads to a terminal.
bool IsTerminal(int descriptor);

/// Whether it leads to a terminal that can do more than print letters: TERM is not "dumb".
bool IsCapableTerminal(int descriptor);

/// Whether standard output shows colour: it is a terminal, and the environment has neither NO_COLOR nor
/// TERM=dumb.
bool WantsColour();

/// The string in the colour, or as it is where colour is not wanted.
std::string Coloured(Colour colour, std::string_view text);
