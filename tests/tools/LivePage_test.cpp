// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "CommandError.h"
#include "report/LivePage.h"

namespace {

std::atomic<bool> listeningFails{false};

}  // namespace

// The server's library calls this one, for the program comes first where it is looked up.
extern "C" __attribute__((visibility("default"))) int accept(int socket, sockaddr* address, socklen_t* size) {
  if (!listeningFails) return static_cast<int>(::syscall(SYS_accept4, socket, address, size, 0));
  errno = EINVAL;
  return -1;
}

TEST(LivePage, NeverWaitsForAServerThatHasEnded) {
  listeningFails = true;
  for (int i = 0; i < 10; ++i) {
    try {
      LivePage page("a.tessel", 0);
      page.Start();  // It may see the server for the moment that it runs.
    } catch (const CommandError& error) {
      EXPECT_STRNE(error.what(), "");
    }
  }
  listeningFails = false;
}

TEST(LivePage, EndsWithoutHavingBegun) {
  try {
    const LivePage page("a.tessel", 0);
    EXPECT_NE(page.Address(), "");
  } catch (const CommandError& error) {
    EXPECT_NE(std::string(error.what()).find("built without"), std::string::npos);
  }
}
