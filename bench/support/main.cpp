// SPDX-License-Identifier: Apache-2.0
#include "support/Run.h"

int main(int argc, char** argv) {
  return RunBenchmarks(argc, argv);
}
