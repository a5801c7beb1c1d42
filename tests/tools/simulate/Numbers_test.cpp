// SPDX-License-Identifier: Apache-2.0
#include "simulate/Numbers.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

TEST(Numbers, ShowADurationInTheUnitThatSuitsIt) {
  const struct {
    std::int64_t nanoseconds;
    const char* shown;
  } rows[] = {{0, "0 ns"},           {999, "999 ns"},       {1000, "1 µs"},         {1234, "1.2 µs"},
              {100400, "100 µs"},    {123456, "123 µs"},    {1000000, "1 ms"},      {12345678, "12.3 ms"},
              {999000000, "999 ms"}, {1000000000, "1.0 s"}, {90000000000, "90.0 s"}};
  for (const auto& row : rows) EXPECT_EQ(simulate::Duration(row.nanoseconds), row.shown);
}

TEST(Numbers, ShowMemoryInMebibytes) {
  EXPECT_EQ(simulate::Mebibytes(0), "0.0 MiB");
  EXPECT_EQ(simulate::Mebibytes(1536), "1.5 MiB");
  EXPECT_EQ(simulate::Mebibytes(1048576), "1024.0 MiB");
}

}  // namespace
