// SPDX-License-Identifier: Apache-2.0
#include "record/RecordingOutput.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <new>

#include "RecordingTest.h"
#include "record/RecordingFault.h"
#include "support/AllocationCount.h"

namespace {

// What the next writes of the process write at most; 0: a signal comes first.
std::vector<std::size_t> g_mostWritten;

}  // namespace

// Instead of the system's, which writes a file's bytes at once where there is room.
extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  std::size_t most = size;
  if (!g_mostWritten.empty()) {
    most = std::min(size, g_mostWritten.front());
    g_mostWritten.erase(g_mostWritten.begin());
    if (most == 0) {
      errno = EINTR;
      return -1;
    }
  }
  const iovec part{const_cast<void*>(bytes), most};
  return ::writev(descriptor, &part, 1);
}

namespace kalStore::internal {
namespace {

class RecordingOutputTest : public RecordingTest {
 protected:
  static auto OpenFiles() { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }
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
  const auto before = OpenFiles();
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
  EXPECT_EQ(OpenFiles(), before);
}

TEST_F(RecordingOutputTest, WritesTheRestOfWhatTheSystemHasWrittenInPart) {
  RecordingOutput output(File(), 0, 1);
  output.Open();
  g_mostWritten = {0, 4, 0, 3};
  output.Write("first\nsecond\n");
  EXPECT_TRUE(g_mostWritten.empty());
  output.Write("third\n");
  EXPECT_EQ(Text(File()), "first\nsecond\nthird\n");
}

TEST_F(RecordingOutputTest, HasRoomUpToItsLargestSize) {
  RecordingOutput output(File(), 12, 1);
  output.Open();
  output.Write("lines\n");
  EXPECT_TRUE(output.HasRoom(6));
  EXPECT_FALSE(output.HasRoom(7));
}

TEST_F(RecordingOutputTest, LeavesTheFilesOfOthersOpen) {
  const auto before = OpenFiles();
  {
    const RecordingOutput neverOpened(File(), 0, 1);
    RecordingOutput closed(File(), 0, 1);
    closed.Open();
    closed.Close();
  }
  EXPECT_EQ(OpenFiles(), before);
}

TEST_F(RecordingOutputTest, RemovesOnlyWhatBeginsWithTheLineOfAPart) {
  std::ofstream(OfPart(1)) << R"({"type":"something else","part":1})" << '\n';
  std::ofstream(OfPart(2)) << R"({"type":"recording","part":22)" << '\n';  // Not whole.
  WritePart(3);
  RecordingOutput(File(), 0, 1).Open();
  EXPECT_TRUE(std::filesystem::exists(OfPart(1)));
  EXPECT_TRUE(std::filesystem::exists(OfPart(2)));
  EXPECT_FALSE(std::filesystem::exists(OfPart(3)));
}

TEST_F(RecordingOutputTest, IsNotOpenInAProgramThatTheProcessBecomes) {
  RecordingOutput output(File(), 0, 1);
  output.Open();
  int found = 0;
  for (int descriptor = 0; descriptor < 1024; ++descriptor) {
    std::error_code ignored;
    if (!std::filesystem::equivalent("/proc/self/fd/" + std::to_string(descriptor), File(), ignored))
      continue;
    ++found;
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
  }
  EXPECT_EQ(found, 1);
}

// Its number is that of the next file that is opened.
TEST_F(RecordingOutputTest, FindsTheOneThatWritesItsNextPartAlsoWithoutAStandardInput) {
  const int input = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  RecordingOutput output(File(), 0, 3), other(OfPart(1), 0, 1);
  output.Open();
  other.Open();
  std::string reason;
  try {
    output.Rotate("end\n", "begin\n");
  } catch (const RecordingFault& fault) {
    reason = fault.what();
  }
  if (input != -1) {
    ::dup2(input, STDIN_FILENO);
    ::close(input);
  }
  EXPECT_EQ(reason, "another recording writes its next part");
}

}  // namespace
}  // namespace kalStore::internal
