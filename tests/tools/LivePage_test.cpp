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
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "CommandError.h"
#include "LocalServer.h"
#include "Program.h"
#include "report/LivePage.h"
#include "report/Page.h"

namespace {

std::atomic<int> acceptError{0};
std::atomic<bool> acceptFailed{false};
std::atomic<bool> received{false};

}  // namespace

// The server's library calls these, for the program comes first where they are looked up.
extern "C" __attribute__((visibility("default"))) ssize_t recv(int socket, void* bytes, size_t size,
                                                               int flags) {
  const ssize_t count = ::syscall(SYS_recvfrom, socket, bytes, size, flags, nullptr, nullptr);
  if (count > 0) received = true;
  return count;
}
extern "C" __attribute__((visibility("default"))) int accept(int socket, sockaddr* address, socklen_t* size) {
  if (acceptError == 0 || socket < 0)
    return static_cast<int>(::syscall(SYS_accept4, socket, address, size, 0));
  acceptFailed = true;
  errno = acceptError;
  return -1;
}

TEST(LivePage, NeverWaitsForAServerThatHasEnded) {
  acceptError = EINVAL;
  for (int i = 0; i < 10; ++i) {
    try {
      LivePage page("a.tessel", 0);
      page.Start();  // It may see the server for the moment that it runs.
    } catch (const CommandError& error) {
      EXPECT_STRNE(error.what(), "");
    }
  }
  acceptError = 0;
}

namespace {

// One of the process that has nothing to do with a page.
struct OtherConnection {
  OtherConnection() {
    sockaddr_in own = LocalAddress(0);
    socklen_t size = sizeof own;
    EXPECT_EQ(::bind(listening, reinterpret_cast<sockaddr*>(&own), size), 0);
    EXPECT_EQ(::listen(listening, 1), 0);
    EXPECT_EQ(::getsockname(listening, reinterpret_cast<sockaddr*>(&own), &size), 0);
    from = ConnectedTo(ntohs(own.sin_port));
    to = ::accept(listening, nullptr, nullptr);
  }
  ~OtherConnection() {
    for (const int descriptor : {listening, from, to}) ::close(descriptor);
  }
  OtherConnection(const OtherConnection&) = delete;
  OtherConnection& operator=(const OtherConnection&) = delete;

  void ExpectOpen() const {
    char byte = 'a';
    EXPECT_EQ(::send(from, &byte, 1, MSG_NOSIGNAL), 1);
    EXPECT_EQ(::recv(to, &byte, 1, 0), 1);
  }

  const int listening = ::socket(AF_INET, SOCK_STREAM, 0);
  int from = -1, to = -1;
};

// Serves the lines of a file. Skipped where the program is built without the page.
struct RunningLivePage : testing::Test {
  void SetUp() override {
    program.File("a.tessel", "one\n");
    try {
      Serve();
    } catch (const CommandError& error) {
      // Any other fault of the server is one of the test.
      if (std::string(error.what()).find("built without") == std::string::npos) throw;
      GTEST_SKIP() << error.what();
    }
    // ThreadSanitizer does not see how the server's library, which is built without it, orders its threads
    // after what the first request constructs. Those of this page have ended before others begin.
    WholeAnswer("/" + token, "localhost:" + std::to_string(port));
    Serve();
  }

  void Serve() {
    page = nullptr;
    page = std::make_unique<LivePage>(program.Path("a.tessel"), 0);
    page->Start();
    const std::string address = page->Address();
    port = PortOf(address);
    token = address.substr(address.find('?'));
  }

  // The connection, when the path was asked for.
  int Asked(const std::string& path, const std::string& host) const {
    const int descriptor = ConnectedTo(port);
    const std::string request = "GET " + path + " HTTP/1.1\r\nHost: " + host + "\r\n\r\n";
    EXPECT_EQ(::send(descriptor, request.data(), request.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(request.size()));
    return descriptor;
  }
  // What is answered up to this text, or to the end of the connection.
  static std::string Answer(int descriptor, const std::string& last = "") {
    std::string answer;
    for (char byte = 0; last.empty() || !answer.ends_with(last); answer += byte)
      if (::recv(descriptor, &byte, 1, 0) <= 0) break;
    return answer;
  }
  std::string WholeAnswer(const std::string& path, const std::string& host) const {
    const int descriptor = Asked(path, host);
    std::string answer = Answer(descriptor);
    ::close(descriptor);
    return answer;
  }

  Program program;
  std::unique_ptr<LivePage> page;
  int port = 0;
  std::string token;  // "?token=..."
};

}  // namespace

TEST_F(RunningLivePage, EndsWithoutWaitingForAClientThatNeverSendsAllOfItsRequest) {
  const int descriptor = ConnectedTo(port);
  const OtherConnection other;
  received = false;
  // The server would answer a line that is too long, which this one is after a quarter of an hour.
  std::thread client([&] {
    while (::send(descriptor, "a", 1, MSG_NOSIGNAL) == 1) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  });
  while (!received) std::this_thread::yield();
  page.reset();
  client.join();
  char answer = 0;
  EXPECT_LE(::recv(descriptor, &answer, 1, 0), 0);
  ::close(descriptor);
  other.ExpectOpen();
}

// The server goes on as long as it may.
TEST_F(RunningLivePage, EndsWhereNoDescriptorIsLeftToAcceptWith) {
  acceptError = EMFILE;
  acceptFailed = false;
  ::close(ConnectedTo(port));  // The call that waits already has its descriptor.
  while (!acceptFailed) std::this_thread::yield();
  page.reset();
  acceptError = 0;
}

TEST_F(RunningLivePage, HasATokenThatNoOtherHas) {
  const LivePage other("a.tessel", 0);
  const std::regex form("http://127[.]0[.]0[.]1:[0-9]+/[?]token=[0-9a-f]{32}");
  EXPECT_TRUE(std::regex_match(page->Address(), form)) << page->Address();
  EXPECT_TRUE(std::regex_match(other.Address(), form)) << other.Address();
  EXPECT_FALSE(other.Address().ends_with(token));
}

TEST_F(RunningLivePage, AnswersThoseAloneWhoKnowTheAddress) {
  const std::string ownPort = ":" + std::to_string(port), local = "127.0.0.1" + ownPort;
  const struct {
    std::string path, host;
    const char* status;
  } rows[] = {
      {"/" + token, local, "200"},
      {"/" + token, "localhost" + ownPort, "200"},
      {"/none" + token, local, "404"},
      {"/", local, "403"},
      {"/?token=", local, "403"},
      {"/events", local, "403"},
      {"/none", local, "403"},
      {"/" + token.substr(0, token.size() - 1), local, "403"},
      {"/" + token, "example.net", "403"},
      {"/" + token, "example.net" + ownPort, "403"},
      {"/" + token, "127.0.0.1", "403"},
      {"/" + token, "localhost", "403"},
      {"/" + token, "127.0.0.1.example.net" + ownPort, "403"},
  };
  for (const auto& [path, host, status] : rows) {
    const std::string answer = WholeAnswer(path, host);
    EXPECT_TRUE(answer.starts_with(std::string("HTTP/1.1 ") + status)) << path << ' ' << host << answer;
    // Nobody keeps it, and nobody waits for another request.
    for (const char* const header : {"Cache-Control: no-store", "Referrer-Policy: no-referrer",
                                     "X-Content-Type-Options: nosniff", "Connection: close"}) {
      EXPECT_NE(answer.find(std::string(header) + "\r\n"), std::string::npos) << path << ' ' << answer;
    }
  }
}

TEST_F(RunningLivePage, IsAPageThatHasTheRecordingsName) {
  const std::string answer = WholeAnswer("/" + token, "localhost:" + std::to_string(port));
  EXPECT_NE(answer.find("Content-Type: text/html; charset=utf-8\r\n"), std::string::npos) << answer;
  EXPECT_NE(answer.find("data-recording=\"0\" data-name=\"a.tessel\""), std::string::npos);
  EXPECT_TRUE(answer.ends_with(PageEnd()));
}

TEST_F(RunningLivePage, GivesWhatIsAppendedUntilItEnds) {
  const int descriptor = Asked("/events" + token, "localhost:" + std::to_string(port));
  const std::string begin = Answer(descriptor, "data: one\n\n");
  EXPECT_NE(begin.find("Content-Type: text/event-stream\r\n"), std::string::npos) << begin;
  for (const std::string line : {"two", "three", "four"}) {
    WholeAnswer("/" + token, "localhost:" + std::to_string(port));  // Meanwhile it finds nothing appended.
    std::ofstream(program.Path("a.tessel"), std::ios::app) << line << '\n';
    const std::string event = "data: " + line + "\n\n", next = Answer(descriptor, event);
    EXPECT_TRUE(next.ends_with(event)) << next;
  }
  page.reset();
  EXPECT_EQ(Answer(descriptor).find("data"), std::string::npos);
  ::close(descriptor);
}

TEST_F(RunningLivePage, GivesEventsToSixteenAtOnce) {
  std::vector<int> descriptors;
  for (int i = 0; i < 16; ++i) {
    descriptors.push_back(Asked("/events" + token, "localhost:" + std::to_string(port)));
    EXPECT_TRUE(Answer(descriptors.back(), "data: one\n\n").ends_with("data: one\n\n")) << i;
  }
  page.reset();
  for (const int descriptor : descriptors) ::close(descriptor);
}

TEST_F(RunningLivePage, HasNoEventsOfAFileThatIsGone) {
  std::filesystem::remove(program.Path("a.tessel"));
  const std::string answer = WholeAnswer("/events" + token, "localhost:" + std::to_string(port));
  EXPECT_TRUE(answer.starts_with("HTTP/1.1 404")) << answer;
}

TEST(LivePage, HasAPortOfItsOwnBeforeItBegins) {
  try {
    const LivePage page("a.tessel", 0);
    EXPECT_THROW(LivePage("a.tessel", PortOf(page.Address())), CommandError);
  } catch (const CommandError& error) {
    EXPECT_NE(std::string(error.what()).find("built without"), std::string::npos);
  }
}
