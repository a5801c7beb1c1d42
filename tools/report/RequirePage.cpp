// SPDX-License-Identifier: Apache-2.0
#include "CommandError.h"
#include "report/Page.h"

void RequirePage() {
  if (!PageBegin().empty()) return;
  throw CommandError(
      "tessel: this program was built without dygraphs, which draws the page: install libjs-dygraphs and "
      "build "
      "it again");
}
