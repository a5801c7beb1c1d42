// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>

namespace simulate {

/// So much per second, as of late: a mean in which the past fades within a quarter of a second.
class Rate {
 public:
  void Add(double amount, double elapsedSeconds) {
    if (elapsedSeconds <= 0) return;
    const double weight = std::min(1.0, elapsedSeconds / kFadeSeconds);
    m_perSecond += (amount / elapsedSeconds - m_perSecond) * weight;
  }
  double PerSecond() const { return m_perSecond; }

 private:
  static constexpr double kFadeSeconds = 0.25;
  double m_perSecond = 0;
};

}  // namespace simulate
