// SPDX-License-Identifier: Apache-2.0
#include "record/RecordingOutput.h"

#include <sys/resource.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <new>

#include "RecordingTest.h"
#include "record/RecordingFault.h"
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

TEST_F(RecordingOutputTest, IsNotTakenForAnothersByAnOldErrorNumber) {
  RecordingOutput output(File(), 0, 1);
  errno = EWOULDBLOCK;
  EXPECT_NO_THROW(output.Open());
}

TEST_F(RecordingOutputTest, RemovesWhatIsInItsWayWhateverAnOldErrorNumberSays) {
  RecordingOutput output(File(), 0, 1);
  output.Open();
  for (const std::string& other : {OfPart(1), File() + ".next"}) std::ofstream(other) << "something else\n";
  errno = EIO;
  EXPECT_NO_THROW(output.Rotate("end\n", "begin\n"));
  EXPECT_EQ(Text(File()), "begin\n");
}

// Its end can be written to it, then: it has none yet.
TEST_F(RecordingOutputTest, WhoseNextFileHasNoRoomLeavesTheFullOneAsItIs) {
  RecordingOutput output(File(), 0, 2);
  output.Open();
  output.Write("full\n");
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto before = openFiles();
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit small{20, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  EXPECT_THROW(output.Rotate("end\n", std::string(30, 'x')), RecordingFault);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(Text(File()), "full\n");
  EXPECT_FALSE(std::filesystem::exists(File() + ".next"));
  EXPECT_EQ(openFiles(), before);
}

}  // namespace
}  // namespace kalStore::internal
