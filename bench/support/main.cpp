#include "support/Run.h"

int main(int argc, char** argv) {
  return RunBenchmarks(argc, argv);
}
