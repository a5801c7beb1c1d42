// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Runs the registered benchmarks as Google Benchmark's own main() would: the program's exit status. A second
/// thread lives meanwhile: the C library takes short cuts in a process that has only one, and no engine has
/// only one.
int RunBenchmarks(int argc, char** argv);
