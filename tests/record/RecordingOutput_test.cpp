// SPDX-License-Identifier: Apache-2.0
#include "record/RecordingOutput.h"

#include <new>

#include "RecordingTest.h"
#include "support/AllocationCount.h"

namespace kalStore::internal {
namespace {

class RecordingOutputTest : public RecordingTest {
 protected:
  void WritePart(int part) const {
    std::ofstream(OfPart(part)) << R"({"type":"recording","event":"began","part":)" << part << "}\n";
  }
  std::string OfPart(int part) const { return File() + "." + std::to_string(part); }
};

TEST_F(RecordingOutputTest, ThatCannotOpenForWantOfMemoryThrowsAndAnotherOpensLater) {
  bool hasFailed = true;
  for (std::size_t n = 1; hasFailed; ++n) {
    SCOPED_TRACE(n);
    hasFailed = false;
    WritePart(1);
    WritePart(2);
    try {
      const FailAllocation nth(n);
      RecordingOutput(File(), 0, 3).Open();
    } catch (const std::bad_alloc&) {
      hasFailed = true;
      RecordingOutput(File(), 0, 3).Open();
    }
    EXPECT_TRUE(std::filesystem::exists(File()));
    EXPECT_FALSE(std::filesystem::exists(OfPart(1)));
    EXPECT_FALSE(std::filesystem::exists(OfPart(2)));
  }
}

}  // namespace
}  // namespace kalStore::internal
