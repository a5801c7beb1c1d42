// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "reference/CommandLine.h"

/// A program of two commands, with each way to take an option or argument.
inline CommandLine SmallCommandLine() {
  // Names, value, description; whether it is an argument, required, repeatable.
  const Parameter help = {{"-h", "--help"}, "", "Print this help", false, false, false};
  const Parameter version = {{"--version"}, "", "Print the version", false, false, false};
  return {{"small",
           "See what is drawn",
           {help, version},
           {{"", {"Colours are those of the screen", "unless -c is given."}},
            {"Exit status", {"0  done", "1  nothing to draw"}}}},
          "small 2.1-beta",
          {{"draw",
            R"(Draw: what \is [visible])",
            {help,
             {{"SHAPE"}, "circle|square", "What to draw", true, true, false},
             {{"FILE"}, "FILE", "Where it is from", true, false, true},
             {{"-o", "--output"}, "FILE", "Write to this file", false, false, false},
             {{"-c", "--colours"}, "N|none|all", R"(How many: [all] or \n)", false, false, false},
             {{"--set"}, "GROUP/NAME", "Set a value", false, false, true},
             {{"--at"}, "X:Y[:Z]", "Where", false, true, false}},
            {{"Examples", {"small draw circle", "  A circle.", "", "small draw square a.txt"}},
             {"", {".5 is a half."}},
             {"", {"Another part."}}}},
           {"list", "List names", {{{"NAME"}, "NAME", "Which of them", true, false, false}}, {}}}};
}
