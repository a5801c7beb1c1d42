// SPDX-License-Identifier: Apache-2.0
#include "tessel/ResultCode.h"

#include <gtest/gtest.h>

namespace kalStore {

// Callers are compiled with the numbers.
TEST(ResultCode, HasTheDocumentedNumbers) {
  EXPECT_EQ(kResultOk, 0);
  EXPECT_EQ(kResultNoSuchOrExists, 0x46000001);
  EXPECT_EQ(kResultNotFound, 0x46004001);
  EXPECT_EQ(kResultBadArgument, 0x46004003);
  EXPECT_EQ(kResultNoInterface, 0x46004005);
  EXPECT_EQ(kResultNullOutput, 0x46004006);
  EXPECT_EQ(kResultUnchanged, 0x46004009);
  EXPECT_EQ(kResultNobody, 0x4600400a);
  EXPECT_EQ(kNoCallId, 0xFFFFFFFF);
}

}  // namespace kalStore
