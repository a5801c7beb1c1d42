// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "tessel/journal.h"

namespace {

// Before the first test, in the programs that link this, when the environment asks for it.
[[maybe_unused]] const bool g_isOn =
    std::getenv("TESSEL_TEST_JOURNAL") != nullptr && kalStore::StartJournal(1024) == kalStore::kResultOk;

}  // namespace
