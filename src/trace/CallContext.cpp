// SPDX-License-Identifier: Apache-2.0
#include "trace/CallContext.h"

namespace kalStore::internal {

constinit thread_local CallContext t_call{};

}  // namespace kalStore::internal
