// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <future>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "Program.h"
#include "report/Page.h"
#include "tessel/json.h"

namespace {

using testing::HasSubstr;

std::string Example(const std::string& name) {
  return TESSEL_EXAMPLE_SETTINGS "/" + name;
}

const json::Value& Member(const json::Value& object, const std::string& name) {
  return object[name];
}

std::int64_t Number(const json::Value& object, const std::string& name) {
  return Member(object, name).ToInt64();
}

json::Value Summary(const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"simulate", "--json"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const Finished run = Program().Run(all);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0) << run.out;
  EXPECT_EQ(run.out.find('\n'), run.out.size() - 1) << run.out;
  EXPECT_THAT(run.out, testing::ContainsRegex("\"seconds\":[0-9]+[.][0-9]{3},"));
  EXPECT_THAT(run.out, testing::ContainsRegex(
                           "\"memory\":[{]\"residentKiB\":[1-9][0-9]*,\"peakKiB\":[1-9][0-9]*[}],"));
  json::Value summary = json::Deserialize(run.out);
  EXPECT_EQ(summary.GetType(), json::ObjectVal) << run.out;
  return summary;
}

TEST(SimulateCommand, NotifiesEverySubscriberOnceOfEachChange) {
  const json::Value summary = Summary({"--seconds", "0.6", "--calls", "2", "--components", "3"});
  std::int64_t deliveries = 0;
  std::int64_t sets = 0;
  std::map<std::string, std::int64_t> subscribers;
  for (const json::Value& setting : Member(summary, "settings").ToArray()) {
    EXPECT_EQ(Number(setting, "deliveries"), Number(setting, "sets") * Number(setting, "subscribers"))
        << json::SerializeValue(setting);
    deliveries += Number(setting, "deliveries");
    sets += Number(setting, "sets");
    subscribers[Member(setting, "setting").ToString()] = Number(setting, "subscribers");
    if (Member(setting, "setting").ToString() == "Transmission/TargetBandwidth") {
      EXPECT_GT(Number(setting, "sets"), 0);
    }
  }
  // Three of most are the listeners.
  const std::map<std::string, std::int64_t> expected = {
      {"Audio/EnableFec", 5},
      {"Audio/ExpectedLossPercent", 4},
      {"Audio/JitterMaxDelayMs", 1},
      {"Audio/JitterMinDelayMs", 1},
      {"Audio/JitterTargetDelayMs", 4},
      {"Audio/TargetBitrate", 4},
      {"Feature/EnableFECForRetransmission", 4},
      {"Transmission/MaxBandwidth", 1},
      {"Transmission/MinBandwidth", 1},
      {"Transmission/TargetBandwidth", 3},
      {"Video/ActiveLayers", 4},
      {"Video/MaxFps", 1},
      {"Video/TargetBitrate", 4},
      {"Video/TargetFps", 5},
  };
  EXPECT_EQ(subscribers, expected);
  const json::Value& delivered = Member(summary, "deliveries");
  EXPECT_EQ(Number(delivered, "onSubscribing"), 0);  // Nothing is stored in an empty store.
  EXPECT_EQ(Number(delivered, "expected"), deliveries);
  EXPECT_EQ(Number(delivered, "lost"), 0);
  EXPECT_EQ(Number(delivered, "unexpected"), 0);
  EXPECT_EQ(Number(delivered, "outOfOrder"), 0);
  EXPECT_EQ(Number(Member(summary, "sets"), "notified"), sets);
  EXPECT_EQ(Number(summary, "components"), 20);
  EXPECT_GE(Member(summary, "seconds").ToDouble(), 0.6);

  std::int64_t arrived = 0;
  for (const char* way : {"direct", "posted", "handedOver"}) {
    const json::Value& latency = Member(delivered, way);
    arrived += Number(latency, "count");
    EXPECT_GT(Number(latency, "count"), 0) << way;
    EXPECT_GT(Number(latency, "p50Ns"), 0) << way;
    EXPECT_LE(Number(latency, "p50Ns"), Number(latency, "p99Ns")) << way;
    EXPECT_LE(Number(latency, "p99Ns"), Number(latency, "maxNs")) << way;
  }
  EXPECT_EQ(arrived, deliveries);
}

TEST(SimulateCommand, AppliesDocumentsAtTheStartAndDuringTheCalls) {
  const json::Value summary =
      Summary({"--seconds", "1", "--calls", "1", "--settings", Example("base.json"), "--settings",
               Example("lab.json"), "--settings", Example("low-bandwidth.json")});
  const json::Value& delivered = Member(summary, "deliveries");
  // Of what base.json sets, eight settings are subscribed to, one of them by two components.
  EXPECT_EQ(Number(delivered, "onSubscribing"), 9);
  EXPECT_EQ(Number(delivered, "lost"), 0);
  EXPECT_EQ(Number(delivered, "unexpected"), 0);
  // base.json sets 110 settings before there is a subscriber.
  EXPECT_GE(Number(Member(summary, "sets"), "withoutSubscribers"), 110);
  for (const json::Value& setting : Member(summary, "settings").ToArray()) {
    // Only low-bandwidth.json changes it while somebody listens.
    if (Member(setting, "setting").ToString() != "Video/MaxFps") continue;
    EXPECT_EQ(Number(setting, "sets"), 1);
    EXPECT_EQ(Number(setting, "deliveries"), 1);
  }
}

TEST(SimulateCommand, ReportsEveryFrameThatWasSentInTheStatistics) {
  const json::Value summary = Summary({"--seconds", "0.6", "--calls", "3"});
  const json::Value& statistics = Member(summary, "statistics");
  EXPECT_GT(Number(statistics, "framesSent"), 0);
  EXPECT_EQ(Number(statistics, "framesReported"), Number(statistics, "framesSent"));
  EXPECT_GT(Number(statistics, "writes"), 0);
  EXPECT_GT(Number(statistics, "reads"), 0);
  EXPECT_EQ(Number(statistics, "reads") % 4, 0);  // Those of a report.
  EXPECT_GT(Number(summary, "reads"), 0);
}

TEST(SimulateCommand, WorksWithWhateverNumbersADocumentSets) {
  const struct {
    const char* group;
    std::vector<const char*> names;
  } settings[] = {
      {"Audio",
       {"Bitrate", "MinBitrate", "FrameMs", "JitterMinDelayMs", "JitterMaxDelayMs", "ExpectedLossPercent",
        "TargetBitrate", "JitterTargetDelayMs"}},
      {"Video",
       {"MaxWidth", "MaxHeight", "MaxFps", "MinFps", "MaxBitrate", "MinBitrate", "Layers", "TargetBitrate",
        "TargetFps", "ActiveLayers"}},
      {"Transmission", {"StartBandwidth", "MinBandwidth", "MaxBandwidth", "TargetBandwidth"}},
  };
  for (const char* value : {"-2147483648", "-1", "0", "2147483647", "99999999999999999999", "nan", ""}) {
    std::string document = "{";
    for (const auto& [group, names] : settings) {
      document += (document.size() == 1 ? "\"" : ",\"") + std::string(group) + "\":[";
      const char* separator = "";
      for (const char* name : names) {
        document += std::string(separator) + R"({"key":")" + name + R"(","value":")" + value + R"("})";
        separator = ",";
      }
      document += "]";
    }
    const Finished run = Program()
                             .File("x.json", document + "}")
                             .File("later.json", document + "}")
                             .Run({"simulate", "--seconds", "0.2", "--calls", "1", "--settings", "x.json",
                                   "--settings", "later.json"});
    EXPECT_EQ(run.err, "") << value;
    EXPECT_EQ(run.status, 0) << value << run.out;
  }
}

TEST(SimulateCommand, PrintsASummaryForPeople) {
  const Finished run = Program().Run({"simulate", "--seconds", "0.3", "--calls", "1"});
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
  // A count has ten columns: #.
  std::string pattern =
      "1 call, 7 components, [0-9]+[.][0-9] s\n"
      "sets {14}#  [0-9]+ notified, [0-9]+ without subscribers, [0-9]+ unchanged\n"
      "deliveries {8}#  [0-9]+ expected, 0 lost, 0 unexpected, 0 out of order\n"
      "  on subscribing {11}0\n"
      " {39}p50 {9}p99 {9}max\n"
      "  direct {10}#( +[0-9.]+ [^ ]*s){3}\n"
      "  posted {10}#( +[0-9.]+ [^ ]*s){3}\n"
      "  handed over {5}#( +[0-9.]+ [^ ]*s){3}\n"
      "reads {13}#\n"
      "statistics writes #\n"
      "statistics reads {2}#  [0-9]+ of [0-9]+ video frames reported\n"
      "memory {12}[ 0-9.]{6} MiB  [0-9]+[.][0-9] MiB at most\n";
  for (std::size_t at = 0; (at = pattern.find('#')) != std::string::npos;)
    pattern.replace(at, 1, "[ 0-9]{9}[0-9]");
  EXPECT_THAT(run.out, testing::MatchesRegex(pattern));
  for (const char* const way : {"\n  direct", "\n  posted", "\n  handed over"}) {
    const std::size_t begin = run.out.find(way) + 1;
    const std::string line = run.out.substr(begin, run.out.find('\n', begin) - begin);
    // Those of UTF-8 behind the first of a character are no columns.
    EXPECT_EQ(std::ranges::count_if(line, [](char byte) { return (byte & 0xC0) != 0x80; }), 66) << line;
  }
}

TEST(SimulateCommand, EndsEarlyWhenInterruptedAndStillSumsUp) {
  const Finished run = Program()
                           .InterruptOnceItMakes("a.tessel")
                           .Run({"simulate", "--seconds", "3600", "--record", "a.tessel"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, testing::StartsWith("2 calls, 14 components, "));
  EXPECT_THAT(run.out, HasSubstr(" 0 lost, 0 unexpected, 0 out of order\n"));
}

// Once the first signal has ended the calls, the report waits for the reader of a pipe.
TEST(SimulateCommand, EndsAtOnceWhenInterruptedAgain) {
  if (PageBegin().empty()) GTEST_SKIP() << "libjs-dygraphs is not installed";
  Program program;
  ASSERT_EQ(::mkfifo(program.Path("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
  program.InterruptOnceItMakes("a.tessel").InterruptOnceItMakes("again");
  std::future<Finished> run = std::async(std::launch::async, [&] {
    return program.Run({"simulate", "--seconds", "3600", "--record", "a.tessel", "--report", "pipe"});
  });
  while (!program.Contents("a.tessel").ends_with("\"event\":\"ended\"}\n")) std::this_thread::yield();
  program.File("again", "");
  EXPECT_EQ(run.get().status, -SIGINT);
}

TEST(SimulateCommand, ReportsWhatImportSkips) {
  const Finished run = Program()
                           .File("x.json", R"({"Audoi":[]})")
                           .Run({"simulate", "--seconds", "0.05", "--settings", "x.json"});
  EXPECT_THAT(run.err, testing::StartsWith("x.json:1:2: "));
  EXPECT_THAT(run.err, HasSubstr("did you mean \"Audio\"?"));
  EXPECT_EQ(run.status, 0);
}

TEST(SimulateCommand, RefusesAnUnusableCommandLineInOneLine) {
  for (const auto& arguments : {std::vector<std::string>{"simulate", "--seconds", "0"},
                                {"simulate", "--seconds", "-1"},
                                {"simulate", "--seconds", "nan"},
                                {"simulate", "--seconds", "soon"},
                                {"simulate", "--seconds", "86401"},
                                {"simulate", "--calls", "0"},
                                {"simulate", "--calls", "-1"},
                                {"simulate", "--calls", "143"},
                                {"simulate", "--components", "1001"},
                                {"simulate", "--calls", "100", "--components", "4"},
                                {"simulate", "--settings"},
                                {"simulate", "--settings", "missing.json"},
                                {"simulate", "--settings", "-", "--settings", "-"},
                                {"simulate", "--settings", "no.json"},
                                {"simulate", "--report", "missing/report.html"},
                                {"simulate", "--report", "."},
                                {"simulate", "--report", "-"},
                                {"simulate", "--report", ""},
                                {"simulate", "--calls", "0x2"},
                                {"simulate", "--calls", "1.5"},
                                {"simulate", "--components", ""},
                                {"simulate", "--settings", "no.json", "--report", "./no.json"},
                                {"simulate", "--record", "a.tessel", "--report", "./a.tessel"},
                                {"simulate", "--record", "/dev/null", "--report", "report.html"},
                                {"simulate", "base.json"}}) {
    const Finished run = Program().File("no.json", "[]").Run(arguments);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_EQ(run.status, 2) << arguments.back();
  }
}

TEST(SimulateCommand, NeedsNoComponentsForLoad) {
  EXPECT_EQ(Program().Run({"simulate", "--seconds", "0.05", "--components", "0"}).status, 0);
}

}  // namespace
