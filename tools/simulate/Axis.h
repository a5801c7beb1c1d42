// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace simulate {

/// An axis from 0: where its lines are, and how they are marked.
struct Axis {
  // Both for numbers above 0.

  /// Goes at least to `greatest`, with lines at round numbers, `steps` of them at most beside 0.
  static Axis UpTo(double greatest, int steps);
  /// Ends at `end`, with such lines up to it.
  static Axis EndingAt(double end, int steps);

  /// The number at a line, with the decimals that it needs.
  std::string Label(double line) const;

  double end;
  double step;
  std::vector<double> lines;
};

}  // namespace simulate
