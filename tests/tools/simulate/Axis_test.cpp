// SPDX-License-Identifier: Apache-2.0
#include "simulate/Axis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using simulate::Axis;

std::vector<std::string> Labels(const Axis& axis) {
  std::vector<std::string> labels;
  for (const double line : axis.lines) labels.push_back(axis.Label(line));
  return labels;
}

TEST(Axis, HasRoundNumbersUpToTheGreatestValue) {
  const struct {
    double greatest;
    std::vector<std::string> labels;
  } rows[] = {
      {1, {"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}},
      {5, {"0", "1", "2", "3", "4", "5"}},
      {5.1, {"0", "2", "4", "6"}},
      {30, {"0", "10", "20", "30"}},
      {0.0003, {"0.0000", "0.0001", "0.0002", "0.0003"}},
      {1234567, {"0", "500000", "1000000", "1500000"}},
  };
  for (const auto& row : rows) EXPECT_EQ(Labels(Axis::UpTo(row.greatest, 5)), row.labels) << row.greatest;
}

TEST(Axis, EndsWhereTheRunEnds) {
  const Axis axis = Axis::EndingAt(3.3, 8);
  EXPECT_EQ(axis.end, 3.3);
  EXPECT_THAT(Labels(axis), testing::ElementsAre("0.0", "0.5", "1.0", "1.5", "2.0", "2.5", "3.0"));
  EXPECT_THAT(Labels(Axis::EndingAt(5, 6)), testing::ElementsAre("0", "1", "2", "3", "4", "5"));
}

}  // namespace
