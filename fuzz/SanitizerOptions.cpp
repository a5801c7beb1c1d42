// SPDX-License-Identifier: Apache-2.0
// What AddressSanitizer does for each allocation: targets make many small ones, which live for one input.
// Memory is not used again before some hundred inputs have run; a report has the innermost callers.

extern "C" const char* __asan_default_options();  // NOLINT(bugprone-reserved-identifier)

extern "C" const char* __asan_default_options() {  // NOLINT(bugprone-reserved-identifier)
  return "quarantine_size_mb=16:malloc_context_size=8:max_malloc_fill_size=64";
}
