// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

#include "Program.h"

namespace {

// 100,000 entries in five groups; every tenth value is another one with each `kind`.
std::string Document(const std::string& kind) {
  std::string text = "{";
  for (const char* group : {"Common", "Metrics", "Audio", "Video", "Transmission"}) {
    text += (text.size() == 1 ? "\"" : ",\"") + std::string(group) + "\":[";
    for (int number = 0; number < 20000; ++number) {
      text += (number == 0 ? "" : ", ") + ("{\"key\": \"Setting" + std::to_string(number)) + group +
              "\", \"value\": \"" + (number % 10 == 0 ? kind : "same") + "\"}";
    }
    text += ']';
  }
  return text + '}';
}

}  // namespace

// Work that grows with the square of the entries would not end within the limit of any test.
TEST(HugeDocuments, AreCheckedAndCompared) {
  const std::string a = Document("a");
  Program program;
  program.File("a.json", a).File("b.json", Document("b"));
  program.File("toggles.json", "{\"Feature\":" + a.substr(a.find('[')));
  EXPECT_EQ(program.Run({"lint", "a.json", "b.json"}).status, 0);
  EXPECT_EQ(program.Run({"lint", "a.json", "--names", "b.json"}).status, 0);
  EXPECT_EQ(program.Run({"lint", "toggles.json"}).status, 1);
  EXPECT_EQ(program.Run({"diff", "a.json", "b.json"}).status, 1);
  EXPECT_EQ(program.Run({"diff", "--exact", "a.json", "b.json"}).status, 1);
}

// Here because sanitizers need terabytes of address space for themselves.
TEST(HugeDocuments, WithoutAnEndAreRefusedWhenMemoryRunsOut) {
  const Finished run = Program().MemoryLimit(std::size_t{200} << 20).Run({"lint", "/dev/zero"});
  EXPECT_EQ(run.err, "/dev/zero: cannot be read: not enough memory\n");
  EXPECT_EQ(run.status, 2);
}

// Nothing is read of what is too large.
TEST(HugeDocuments, OfTheGreatestSizeAreReadUntilMemoryRunsOut) {
  Program program;
  program.File("a.json", "{}").MemoryLimit(std::size_t{200} << 20);
  constexpr std::uintmax_t kGreatest = std::uintmax_t{1} << 30;
  for (const auto& [size, reason] :
       {std::pair(kGreatest, "not enough memory"), {kGreatest + 1, "more than 1 GiB"}}) {
    std::filesystem::resize_file(program.Path("a.json"), size);
    const Finished run = program.Run({"lint", "a.json"});
    EXPECT_EQ(run.err, std::string("a.json: cannot be read: ") + reason + "\n");
    EXPECT_EQ(run.status, 2);
  }
}

TEST(HugeDocuments, ThatAreReadMayStillNeedMoreMemoryThanThereIs) {
  std::string text = "{\"Audio\":[0";
  for (int number = 0; number < 4'000'000; ++number) text += ",0";
  const Finished run = Program().Input(text + "]}").MemoryLimit(std::size_t{200} << 20).Run({"apply", "-"});
  EXPECT_EQ(run.err, "tessel: not enough memory\n");
  EXPECT_EQ(run.status, 2);
}

TEST(HugeSimulations, SayWhichThreadTheSystemRefuses) {
  const Finished run =
      Program().MemoryLimit(std::size_t{200} << 20).Run({"simulate", "--calls", "142", "--seconds", "0.05"});
  EXPECT_EQ(run.err, "tessel: no thread for a component: Resource temporarily unavailable\n");
  EXPECT_EQ(run.status, 2);
}

TEST(HugeRecordings, AreReadInLittleMemory) {
  std::string text = R"({"type":"recording","t":0,"version":1,"wall":"2026-11-22T08:42:05Z"})"
                     "\n";
  const std::string line = R"({"type":"lost","t":1,"count":2,"x":")" + std::string(1000, 'x') + "\"}\n";
  while (text.size() < std::size_t{64} << 20) text += line;
  const Finished run = Program()
                           .File("a.tessel", text)
                           .MemoryLimit(std::size_t{48} << 20)
                           .Run({"log", "a.tessel", "--type", "recording"});
  EXPECT_EQ(run.out, "    0.000000  recording             version 1, began 2026-11-22T08:42:05Z\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}
