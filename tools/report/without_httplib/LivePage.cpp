// SPDX-License-Identifier: Apache-2.0
// Where cpp-httplib was missing when the program was compiled.
#include "report/LivePage.h"

#include "CommandError.h"

class LivePage::Server {};

LivePage::LivePage(const std::string& /*recording*/, int /*port*/) {
  throw CommandError(
      "tessel: this program was built without cpp-httplib, which serves the page: install libcpp-httplib-dev "
      "and build it again");
}

LivePage::~LivePage() = default;

std::string LivePage::Address() const {
  return "";
}

void LivePage::Start() {}
