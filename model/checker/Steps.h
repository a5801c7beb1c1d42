// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "checker/Checker.h"

namespace model {

/// The last steps of an execution as text, each with its place in the sources.
std::string Describe(const std::vector<Step>& steps);

}  // namespace model
