// SPDX-License-Identifier: Apache-2.0
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "LocalServer.h"
#include "Program.h"
#include "Recordings.h"
#include "report/AppendedLines.h"
#include "report/Page.h"

namespace {

void Append(const std::string& file, const std::string& text) {
  std::ofstream(file, std::ios::binary | std::ios::app) << text;
}

// How the page's server answers a request for the address that the program prints; "" when nobody does.
std::string AnswerAt(const std::string& shown) {
  const std::size_t path = shown.find('/', std::string_view("http://").size());
  const std::string request = "GET " + shown.substr(path, shown.find('\r') - path) +
                              " HTTP/1.1\r\nHost: localhost:" + std::to_string(PortOf(shown)) +
                              "\r\nConnection: close\r\n\r\n";
  const int socket = ConnectedTo(PortOf(shown));
  std::array<char, 12> answer{};
  (void)!::send(socket, request.data(), request.size(), MSG_NOSIGNAL);
  (void)!::recv(socket, answer.data(), answer.size(), MSG_WAITALL);
  ::close(socket);
  return {answer.begin(), std::find(answer.begin(), answer.end(), '\0')};
}

}  // namespace

TEST(AppendedLines, GivesWholeLinesOnce) {
  Program program;
  program.File("a", "one\ntwo\nth");
  AppendedLines lines(program.Path("a"));
  ASSERT_TRUE(lines.IsOpen());
  EXPECT_EQ(lines.Next(), "data: one\ndata: two\n\n");
  EXPECT_EQ(lines.Next(), "");
  Append(program.Path("a"), "ree");
  EXPECT_EQ(lines.Next(), "");
  Append(program.Path("a"), "\nfour\n");
  EXPECT_EQ(lines.Next(), "data: three\ndata: four\n\n");
  EXPECT_EQ(lines.Next(), "");
  Append(program.Path("a"), "\n");
  EXPECT_EQ(lines.Next(), "data: \n\n");
}

TEST(AppendedLines, GivesNothingThatWouldBeAnotherFieldOfTheEvent) {
  Program program;
  program.File("a", "one\revent: x\r\n\nid: 5\n");
  EXPECT_EQ(AppendedLines(program.Path("a")).Next(), "data: one event: x \ndata: \ndata: id: 5\n\n");
}

TEST(AppendedLines, GiveALineThatIsTooLongAsOneThatIs) {
  constexpr std::size_t kLongest = std::size_t{1} << 20;
  Program program;  // Pieces of 64 KiB are read: the end of the line comes in one of its own.
  program.File("a",
               "first\n" + std::string(46 * 65536 - 6, 'x') + "\n" + std::string(kLongest, 'y') + "\nlast\n");
  AppendedLines lines(program.Path("a"));
  std::string all;
  for (int i = 0; i < 100; ++i) {
    const std::string event = lines.Next();
    EXPECT_LT(event.size(), 1'200'000U);
    all += event;
  }
  const std::size_t begin = all.find('x'), end = all.find('\n', begin);
  EXPECT_GT(end - begin, kLongest);
  EXPECT_LT(end - begin, 1'200'000U);
  const std::string longLine = all.substr(begin, end - begin);
  EXPECT_EQ(longLine, std::string(longLine.size(), 'x'));
  for (std::size_t gap = 0; (gap = all.find("\n\n")) != std::string::npos;) all.erase(gap, 1);
  EXPECT_TRUE(all ==
              "data: first\ndata: " + longLine + "\ndata: " + std::string(kLongest, 'y') + "\ndata: last\n");
}

TEST(AppendedLines, GoOnInTheNextFilesOfASet) {
  const auto eventOf = [](std::string lines) {
    std::string event;
    for (std::size_t end = 0; (end = lines.find('\n')) != std::string::npos; lines.erase(0, end + 1))
      event += "data: " + lines.substr(0, end + 1);
    return event + "\n";
  };
  for (const bool isGone : {false, true}) {
    Program program;
    program.File("a", RecordingPart(1) + RecordingPartEnd(1));
    AppendedLines lines(program.Path("a"));
    EXPECT_EQ(lines.Next(), eventOf(RecordingPart(1) + RecordingPartEnd(1)));
    EXPECT_EQ(lines.Next(), "");
    std::filesystem::rename(program.Path("a"), program.Path("a.1"));
    EXPECT_EQ(lines.Next(), "");
    if (!isGone) program.File("a.2", RecordingPart(2) + RecordingPartEnd(2));
    program.File("a", RecordingPart(3) + kLastPartEnd);
    if (!isGone) {
      EXPECT_EQ(lines.Next(), eventOf(RecordingPart(2) + RecordingPartEnd(2)));
    }
    EXPECT_EQ(lines.Next(), eventOf((isGone ? kLostPart : "") + RecordingPart(3) + kLastPartEnd));
    EXPECT_EQ(lines.Next(), "");
  }
}

// Each file once, also when a copy of the first has lost its end, or a program has sorted the members.
TEST(AppendedLines, GoOnBehindAFileThatIsCutOffOrReordered) {
  const std::string begin = R"({"next":20,"part":2,"t":1,"type":"recording","version":1,)"
                            R"("wall":"2026-11-22T09:00:00Z"})"
                            "\n";
  Program program;
  program.File("a.1", RecordingPart(1) + R"({"type":"se)").File("a.2", begin + RecordingPartEnd(2));
  program.File("a", RecordingPart(3));
  AppendedLines lines(program.Path("a"));
  EXPECT_NE(lines.Next(), "");
  const std::string second = lines.Next();
  EXPECT_TRUE(second.starts_with("data: {\"type\":\"se\ndata: " + begin)) << second;
  EXPECT_NE(lines.Next().find("\"part\":3"), std::string::npos);
  EXPECT_EQ(lines.Next(), "");
}

TEST(AppendedLines, GoOnInTheNextFileOfASetThatHadNotBegun) {
  Program program;
  program.File("a", "");
  AppendedLines lines(program.Path("a"));
  EXPECT_EQ(lines.Next(), "");
  Append(program.Path("a"), RecordingPart(1) + RecordingPartEnd(1));
  EXPECT_NE(lines.Next(), "");
  std::filesystem::rename(program.Path("a"), program.Path("a.1"));
  program.File("a", RecordingPart(2));
  EXPECT_NE(lines.Next().find("\"part\":2"), std::string::npos);
}

TEST(AppendedLines, BeginWithTheOldestFileOfASet) {
  Program program;
  program.File("a.1", RecordingPart(1) + RecordingPartEnd(1)).File("a", RecordingPart(2));
  std::filesystem::create_directory(program.Path("links"));
  std::filesystem::create_symlink("../a", program.Path("links/b"));
  AppendedLines lines(program.Path("links/b"));
  EXPECT_TRUE(lines.Next().starts_with("data: " + RecordingPart(1).substr(0, RecordingPart(1).find('\n'))));
  EXPECT_TRUE(lines.Next().starts_with("data: " + RecordingPart(2).substr(0, RecordingPart(2).find('\n'))));
  EXPECT_EQ(lines.Next(), "");
}

TEST(AppendedLines, BeginWithTheFileThatHasTheNameBesideOneThatIsAboutToTakeIt) {
  Program program;
  program.File("a", RecordingPart(1)).File("a.next", RecordingPart(2));
  errno = ENOENT;
  AppendedLines lines(program.Path("a"));
  EXPECT_NE(lines.Next().find("\"part\":1"), std::string::npos);
}

TEST(AppendedLines, GiveNothingOfARecordingThatTakesTheFileOfAnother) {
  Program program;
  program.File("a", RecordingPart(1));
  AppendedLines lines(program.Path("a"));
  EXPECT_NE(lines.Next(), "");
  std::ofstream(program.Path("a"), std::ios::binary | std::ios::in) << Recording("call");
  EXPECT_EQ(lines.Next(), "");
  EXPECT_EQ(lines.Next(), "");
}

TEST(AppendedLines, IsNotOpenWithoutAFile) {
  Program program;
  EXPECT_FALSE(AppendedLines(program.Path("none")).IsOpen());
}

TEST(LiveCommand, RefusesStandardInputAndWhatCannotBeOpened) {
  Program program;
  const Finished input = program.Run({"live", "-"});
  EXPECT_EQ(input.err, "tessel: FILE: it is read for each browser, which standard input cannot be\n");
  EXPECT_EQ(input.status, 2);
  ASSERT_EQ(::mkfifo(program.Path("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
  const Finished pipe = program.Run({"live", "pipe"});
  EXPECT_EQ(pipe.err, "tessel: FILE: it is read for each browser, which a pipe or a device cannot be\n");
  EXPECT_EQ(pipe.status, 2);
  const Finished missing = program.Run({"live", "none.tessel"});
  EXPECT_NE(missing.err, "");
  EXPECT_EQ(missing.out, "");
  EXPECT_EQ(missing.status, 2);
}

/// The command where the program has the page.
struct LiveServer : testing::Test {
  void SetUp() override {
    if (PageBegin().empty()) GTEST_SKIP() << "libjs-dygraphs is not installed";
  }
};

TEST_F(LiveServer, ChoosesAPortThatNobodyHas) {
  // Of the address that it prints before the user ends it.
  const auto chosenPort = [] {
    const Finished run = Program()
                             .File("a.tessel", kRecordingBegin)
                             .InputFromTerminal()
                             .InputOnceShown("\x04", "\n")
                             .To(Program::Output::kTerminal)
                             .Run({"live", "a.tessel"});
    EXPECT_EQ(run.status, 0) << run.err;
    return PortOf(run.out);
  };
  const sockaddr_in taken = LocalAddress(chosenPort());
  const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
  // Where this fails, another program has taken it meanwhile.
  (void)!::bind(socket, reinterpret_cast<const sockaddr*>(&taken), sizeof taken);
  EXPECT_NE(chosenPort(), ntohs(taken.sin_port));
  ::close(socket);
}

TEST_F(LiveServer, ServesThePageUntilASignalEndsIt) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::string answer;
    const Finished run = Program()
                             .File("a.tessel", kRecordingBegin)
                             .OnceALineIsShown([&](const std::string& shown, pid_t process) {
                               answer = AnswerAt(shown);
                               ::kill(process, signal);
                             })
                             .Run({"live", "a.tessel"});
    EXPECT_EQ(answer, "HTTP/1.1 200") << run.out;
    EXPECT_EQ(run.status, 0) << signal;
    EXPECT_EQ(run.err, "");
  }
}

TEST_F(LiveServer, ServesThePageWhileTheUserTypes) {
  bool isServed = true;
  const Finished run = Program()
                           .File("a.tessel", kRecordingBegin)
                           .InputFromTerminal()
                           .Input("\n")
                           .OnceALineIsShown([&](const std::string& shown, pid_t process) {
                             // It may not have read the line when the first answer comes.
                             for (int i = 0; i < 10 && isServed; ++i)
                               isServed = AnswerAt(shown) == "HTTP/1.1 200";
                             ::kill(process, SIGTERM);
                           })
                           .Run({"live", "a.tessel"});
  EXPECT_TRUE(isServed) << run.out;
  EXPECT_EQ(run.status, 0);
}

TEST_F(LiveServer, EndsWhereNobodyCanSeeItsAddress) {
  Program program;
  program.File("a.tessel", kRecordingBegin);
  const Finished full = program.To(Program::Output::kFullDevice).Run({"live", "a.tessel"});
  EXPECT_EQ(full.err, "tessel: standard output cannot be written: No space left on device\n");
  EXPECT_EQ(full.status, 2);
  EXPECT_EQ(program.To(Program::Output::kNoReader).Run({"live", "a.tessel"}).status, 0);
}
