// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <sstream>

#include "SmallCommandLine.h"
#include "reference/Completion.h"

namespace {

TEST(BashCompletion, OffersWhatFollowsEachWord) {
  std::ostringstream out;
  WriteBashCompletion(out, SmallCommandLine());
  EXPECT_EQ(out.str(), R"(# Made from the definition of the command line.
_small_offer() {
  mapfile -t COMPREPLY < <(compgen "$@" -- "$current")
}

_small() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=
  [ "$COMP_CWORD" -gt 1 ] && command=${COMP_WORDS[1]}
  # A word such as --format=json is in three parts.
  if [ "$current" = = ]; then
    current=
  elif [ "$previous" = = ]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  case "$command $previous" in
    'draw -o' | 'draw --output')
      compopt -o filenames 2>/dev/null; _small_offer -f
      return 0
      ;;
    'draw -c' | 'draw --colours')
      _small_offer -W 'none all'
      return 0
      ;;
    'draw --set')
      compopt -o nospace 2>/dev/null; _small_offer -W 'Common/ Feature/ Metrics/ Audio/ AudioSlide/ Video/ VideoSlide/ Application/ Gamestate/ AudioSi/ Transmission/ TAOnly/ UnitTest/'
      return 0
      ;;
    'draw --at')
      :
      return 0
      ;;
  esac
  case "$command $current" in
    'draw -'*)
      _small_offer -W '-h --help -o --output -c --colours --set --at'
      ;;
    'draw '*)
      compopt -o filenames 2>/dev/null; _small_offer -f
      ;;
    'list -'*)
      _small_offer -W ''
      ;;
    'list '*)
      :
      ;;
    ' '*)
      _small_offer -W 'draw list -h --help --version'
      ;;
  esac
}

complete -F _small small
)");
}

}  // namespace
