// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingEvent.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

#include "recording/EventText.h"

namespace {

std::string FaultOf(const std::string& line) {
  RecordingEvent event;
  return ReadRecordingLine(line, event);
}

constexpr const char* kString = ": expected a string";
constexpr const char* kNumber = ": expected a number, 0 or more";
constexpr const char* kWhole = ": expected a whole number, 0 or more";
constexpr const char* kFlag = ": expected true or false";

// In the order of reading: a value that the member cannot have, one that it just can, and what is said of the
// first.
constexpr struct {
  const char *name, *bad, *good, *fault;
} kMembers[] = {
    {"type", "1", "\"statistics\"", kString},
    {"t", "-1", "0", kNumber},
    {"event", "\"asked\"", "\"made\"", ": unknown"},
    {"version", "4294967296", "4294967295", kWhole},
    {"part", "9007199254740994", "9007199254740992", kWhole},
    {"next", "9007199254740994", "9007199254740992", kWhole},
    {"wall", "1", "\"\"", kString},
    {"reason", "1", "\"\"", kString},
    {"number", "9007199254740994", "9007199254740992", kWhole},
    {"cause", "9007199254740994", "9007199254740992", kWhole},
    {"call", "4294967296", "4294967295", kWhole},
    {"group", "\"Vidio\"", "\"Video\"", ": unknown"},
    {"name", "1", "\"\"", kString},
    {"old", "1", "\"\"", kString},
    {"new", "1", "\"\"", kString},
    {"cut", "\"new\"", "[\"new\"]", ": expected an array"},
    {"hidden", "[1]", "[\"old\"]", ": expected strings"},
    {"transient", "1", "true", kFlag},
    {"result", "\"maybe\"", "\"told\"", ": unknown"},
    {"told", "0.5", "0", kWhole},
    {"count", "9007199254740994", "9007199254740992", kWhole},
    {"references", "\"1\"", "0", kWhole},
    {"id", "9007199254740994", "9007199254740992", kWhole},
    {"way", "\"later\"", "\"handed over\"", ": unknown"},
    {"dropped", "\"true\"", "true", kFlag},
    {"wait_us", "-0.5", "0.5", kNumber},
    {"run_us", "\"1\"", "1", kNumber},
    {"threw", "1", "\"\"", kString},
    {"thread", "9223372036854777856", "9223372036854775808", kWhole},
    {"entity", "\"text\"", "\"content audio\"", ": unknown"},
    {"members", "[]", "{}", ": expected an object"},
    {"picture", "0", "false", kFlag},
    {"origin", "\"me\"", "{}", ": expected an object"},
};

}  // namespace

TEST(RecordingLine, IsDamagedByTheFirstMemberThatItCannotHave) {
  for (std::size_t first = 0; first <= std::size(kMembers); ++first) {
    std::string line;
    for (std::size_t i = 0; i < std::size(kMembers); ++i) {
      line += std::string(i == 0 ? "{" : ",") + "\"" + kMembers[i].name + "\":";
      line += i < first ? kMembers[i].good : kMembers[i].bad;
    }
    const bool isWhole = first == std::size(kMembers);
    EXPECT_EQ(FaultOf(line + "}"), isWhole ? "" : std::string(kMembers[first].name) + kMembers[first].fault);
  }
}

TEST(RecordingLine, IsDamagedByAnOriginOrStatisticsOfAnotherKind) {
  const std::pair<const char*, const char*> rows[] = {
      {R"({"module":1,"symbol":1})", "origin.module: expected a string"},
      {R"({"symbol":1,"label":1})", "origin.symbol: expected a string"},
      {R"({"label":1,"document":1})", "origin.label: expected a string"},
      {R"({"document":1,"line":-1})", "origin.document: expected a string"},
      {R"({"line":-1,"column":-1})", "origin.line: expected a whole number, 0 or more"},
      {R"({"column":-1})", "origin.column: expected a whole number, 0 or more"},
      {R"({"module":"a","symbol":"b","label":"c","document":"d","line":0,"column":1})",
       "members.a: expected a number or a string"},
  };
  for (const auto& [origin, fault] : rows) {
    EXPECT_EQ(FaultOf(R"({"type":"statistics","t":0,"call":1,"entity":"audio","members":{"a":true},)"
                      R"("origin":)" +
                      std::string(origin) + "}"),
              fault);
  }
}

TEST(RecordingLine, IsDamagedWithoutWhatItsTypeNeeds) {
  const std::pair<const char*, const char*> rows[] = {
      {R"("recording","version":1)", "wall"},
      {R"("recording","wall":"")", "version"},
      {R"("recording","event":"ended")", ""},
      {R"("call","picture":true)", "call"},
      {R"("call","call":1)", "event"},
      {R"("call","call":1,"picture":true)", ""},
      {R"("set","call":1,"result":"told")", "group"},
      {R"("set","call":1,"group":"Video")", "result"},
      {R"("set","call":1,"group":"Video","picture":true)", ""},
      {R"("set","call":1,"result":"refused")", ""},
      {R"("set","group":"Video","result":"refused")", "call"},
      {R"("remove","call":1,"count":1)", "group"},
      {R"("remove","call":1,"group":"Video")", "count"},
      {R"("remove","group":"Video","count":1)", "call"},
      {R"("apply","call":1)", "count"},
      {R"("apply","count":1)", "call"},
      {R"("subscribe","call":1,"group":"Video")", "id"},
      {R"("subscribe","call":1,"id":1)", "group"},
      {R"("unsubscribe","call":1,"group":"Video")", "id"},
      {R"("unsubscribe","call":1,"id":1)", "group"},
      {R"("bind","call":1,"id":1,"event":"bound")", "group"},
      {R"("bind","call":1,"group":"Video","event":"bound")", "id"},
      {R"("bind","call":1,"group":"Video","event":"asked")", ""},
      {R"("bind","call":1,"group":"Video","id":1)", "event"},
      {R"("bind","call":1,"group":"Video","id":1,"picture":true)", ""},
      {R"("deliver","call":1,"id":1)", "way"},
      {R"("deliver","call":1,"way":"direct")", "id"},
      {R"("deliver","id":1,"way":"direct")", "call"},
      {R"("deliver","call":1,"id":1,"dropped":true)", ""},
      {R"("statistics","call":1,"members":{})", "entity"},
      {R"("statistics","call":1,"entity":"audio")", "members"},
      {R"("statistics","entity":"audio","members":{})", "call"},
      {R"("statistics","call":1,"entity":"audio","event":"ended")", ""},
      {R"("lost")", "count"},
      {R"("later","call":"7","origin":1,"members":[true])", ""},
  };
  for (const auto& [line, missing] : rows) {
    EXPECT_EQ(FaultOf("{\"t\":0,\"type\":" + std::string(line) + "}"),
              *missing == '\0' ? "" : std::string(missing) + ": missing")
        << line;
  }
  EXPECT_EQ(FaultOf(R"({"type":"lost","count":1})"), "t: missing");
  EXPECT_EQ(FaultOf(R"({"type":1})"), "t: missing");
  EXPECT_EQ(FaultOf(R"({"type":"lost","t":0,"origin":"me"})"), "origin: expected an object");
  EXPECT_EQ(FaultOf(R"({"t":0,"count":1})"), "type: missing");
}

TEST(ShortNumber, HasNoExponentUpToTheLargestNumberThatIsReadable) {
  const std::pair<double, const char*> rows[] = {
      {0, "0"},
      {0.1, "0.1"},
      {100000, "100000"},
      {1e-7, "0.0000001"},
      {1e18, "1000000000000000000"},
      {-1e18, "-1000000000000000000"},
      {2e18, "2e+18"},
      {-2e18, "-2e+18"},
  };
  for (const auto& [number, text] : rows) EXPECT_EQ(ShortNumber(number), text);
}
