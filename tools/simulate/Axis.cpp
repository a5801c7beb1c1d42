// SPDX-License-Identifier: Apache-2.0
#include "simulate/Axis.h"

#include <algorithm>
#include <cmath>

#include "simulate/Numbers.h"

namespace simulate {

namespace {

// The smallest of 1, 2 and 5 times a power of ten that is not below the value.
double RoundStep(double value) {
  const double power = std::pow(10, std::floor(std::log10(value)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (value <= factor * power * (1 + 1e-9)) return factor * power;
  }
  return 10 * power;
}

Axis Lined(double end, double step) {
  Axis axis{end, step, {}};
  for (int line = 0; line * step <= end * (1 + 1e-9); ++line) axis.lines.push_back(line * step);
  return axis;
}

}  // namespace

Axis Axis::UpTo(double greatest, int steps) {
  const double step = RoundStep(greatest / steps);
  return Lined(std::ceil(greatest / step * (1 - 1e-9)) * step, step);
}

Axis Axis::EndingAt(double end, int steps) {
  return Lined(end, RoundStep(end / steps));
}

std::string Axis::Label(double line) const {
  return Fixed(line, std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9))));
}

}  // namespace simulate
