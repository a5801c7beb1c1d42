// SPDX-License-Identifier: Apache-2.0
#include "DumpOutput.h"

#include <unistd.h>

#include <iostream>

#include "Colour.h"
#include "Printable.h"

void PrintDump(std::string_view dump) {
  if (IsTerminal(STDOUT_FILENO)) {
    std::cout << PrintableJson(dump) << '\n';
  } else {
    std::cout << dump << '\n';
  }
}
