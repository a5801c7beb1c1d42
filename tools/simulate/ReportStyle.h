// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Way.h"

namespace simulate {

/// The style sheet of the report, for the screen and for paper.
extern const char* const kReportStyle;

/// The class by which it shows a way of delivery.
constexpr const char* StyleOf(Way way) {
  constexpr PerWay<const char*> kStyles = {"s1", "s2", "s3"};
  return kStyles[IndexOf(way)];
}

}  // namespace simulate
