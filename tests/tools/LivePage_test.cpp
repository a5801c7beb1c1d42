// SPDX-License-Identifier: Apache-2.0
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

#include "CommandError.h"
#include "report/LivePage.h"

namespace {

std::atomic<bool> listeningFails{false};

int PortOf(const std::string& address) {
  return std::stoi(address.substr(address.rfind(':') + 1));
}

int ConnectedTo(int port) {
  sockaddr_in server{};
  server.sin_family = AF_INET;
  server.sin_port = htons(static_cast<std::uint16_t>(port));
  server.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int descriptor = ::socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EQ(::connect(descriptor, reinterpret_cast<sockaddr*>(&server), sizeof server), 0);
  return descriptor;
}

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

TEST(LivePage, EndsWithoutWaitingForAClientThatNeverSendsAllOfItsRequest) {
  std::unique_ptr<LivePage> page;
  try {
    page = std::make_unique<LivePage>("a.tessel", 0);
  } catch (const CommandError& error) {
    // Any other fault of the server is one of the test.
    if (std::string(error.what()).find("built without") == std::string::npos) throw;
    GTEST_SKIP() << error.what();
  }
  page->Start();
  const int descriptor = ConnectedTo(PortOf(page->Address()));
  // The server would answer a line that is too long, which this one is after a quarter of an hour.
  std::thread client([&] {
    while (::send(descriptor, "a", 1, MSG_NOSIGNAL) == 1) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  });
  page.reset();
  client.join();
  char answer = 0;
  EXPECT_LE(::recv(descriptor, &answer, 1, 0), 0);
  ::close(descriptor);
}

TEST(LivePage, HasAPortOfItsOwnBeforeItBegins) {
  try {
    const LivePage page("a.tessel", 0);
    EXPECT_THROW(LivePage("a.tessel", PortOf(page.Address())), CommandError);
  } catch (const CommandError& error) {
    EXPECT_NE(std::string(error.what()).find("built without"), std::string::npos);
  }
}
