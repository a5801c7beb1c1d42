// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <sstream>

#include "SmallCommandLine.h"
#include "reference/Completion.h"

namespace {

TEST(ZshCompletion, OffersWhatFollowsEachWord) {
  std::ostringstream out;
  WriteZshCompletion(out, SmallCommandLine());
  EXPECT_EQ(out.str(), R"(#compdef small
# Made from the definition of the command line.

_small() {
  local curcontext="$curcontext" state line
  local -a commands=(
    'draw:Draw\: what \\is \[visible\]'
    'list:List names'
  )
  _arguments -C \
        '(-h --help)-h[Print this help]' \
        '(-h --help)--help[Print this help]' \
        '(--version)--version[Print the version]' \
        '1:command:->command' '*::argument:->argument'
  case $state in
    command) _describe command commands ;;
    argument)
      case $words[1] in
      draw) _arguments \
        '(-h --help)-h[Print this help]' \
        '(-h --help)--help[Print this help]' \
        ':SHAPE:(circle square)' \
        '*:FILE:_files' \
        '(-o --output)-o[Write to this file]:FILE:_files' \
        '(-o --output)--output=[Write to this file]:FILE:_files' \
        '(-c --colours)-c[How many\: \[all\] or \\n]:N|none|all:(none all)' \
        '(-c --colours)--colours=[How many\: \[all\] or \\n]:N|none|all:(none all)' \
        '*--set=[Set a value]:GROUP/NAME: compadd -S "" -- Common/ Feature/ Metrics/ Audio/ AudioSlide/ Video/ VideoSlide/ Application/ Gamestate/ AudioSi/ Transmission/ TAOnly/ UnitTest/' \
        '(--at)--at=[Where]:X\:Y[\:Z]: ' ;;
      list) _arguments \
        '::NAME: ' ;;
      esac
      ;;
  esac
}

_small "$@"
)");
}

}  // namespace
