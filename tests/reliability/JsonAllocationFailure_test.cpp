// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "FailEachAllocation.h"
#include "tessel/json.h"

namespace {

const std::string kText =
    R"({"a name of more than fifteen characters":"a text of more than fifteen characters",)"
    R"("flags":[true,false,null],"nested":{"inner":[{"key":"another text that is not short"},[[]],1.5]},)"
    R"("numbers":[1,-2,3000000000,4.5]})";

struct Nothing {};

struct Documents {
  json::Value source = json::Deserialize(kText);
  json::Value target = json::Deserialize(R"(["what was there before, at some length"])");
  std::string text;
};

TEST(JsonAllocationFailure, ReadingLeavesNothingBehindAndWorksAfterwards) {
  const std::string expected = json::Serialize(json::Deserialize(kText));
  const std::size_t failed = FailEachAllocation(
      [] { return Nothing{}; }, [](Nothing&) { json::Deserialize(kText); },
      [&](Nothing&, bool) { EXPECT_EQ(json::Serialize(json::Deserialize(kText)), expected); });
  EXPECT_GT(failed, 10U);
}

TEST(JsonAllocationFailure, AFailedReadIsNeverTakenForMalformedText) {
  FailEachAllocation([] { return json::ParseError{}; },
                     [](json::ParseError& error) { json::Deserialize(kText, error); },
                     [](const json::ParseError& error, bool) { EXPECT_EQ(error.reason, nullptr); });
}

TEST(JsonAllocationFailure, WritingLeavesTheDocumentAsItWas) {
  const std::string expected = json::Serialize(Documents{}.source);
  const std::size_t failed = FailEachAllocation(
      [] { return Documents{}; },
      [](Documents& documents) { documents.text = json::Serialize(std::as_const(documents.source)); },
      [&](Documents& documents, bool done) {
        EXPECT_EQ(documents.text, done ? expected : "");
        EXPECT_EQ(json::Serialize(documents.source), expected);
      });
  EXPECT_GT(failed, 0U);
}

TEST(JsonAllocationFailure, AFailedAssignmentKeepsBothValues) {
  const Documents before;
  const std::size_t failed = FailEachAllocation(
      [] { return Documents{}; }, [](Documents& documents) { documents.target = documents.source; },
      [&](const Documents& documents, bool done) {
        EXPECT_EQ(json::Serialize(documents.target), json::Serialize(done ? before.source : before.target));
        EXPECT_EQ(json::Serialize(documents.source), json::Serialize(before.source));
      });
  EXPECT_GT(failed, 10U);
}

TEST(JsonAllocationFailure, AFailedMergeLeavesAWholeDocument) {
  const auto setup = [] {
    Documents documents;
    documents.target = json::Deserialize(R"({"flags":[1],"nested":{"inner":null,"kept":"as it was"}})");
    return documents;
  };
  const std::size_t failed = FailEachAllocation(
      setup, [](Documents& documents) { EXPECT_TRUE(documents.target.MergeValue(documents.source)); },
      [](Documents& documents, bool done) {
        EXPECT_EQ(documents.target["nested"]["kept"].ToString(), "as it was");
        const std::string text = json::Serialize(documents.target);
        EXPECT_EQ(json::Serialize(json::Deserialize(text)), text);
        EXPECT_TRUE(documents.target.MergeValue(documents.source));
        EXPECT_EQ(done, text == json::Serialize(documents.target));
      });
  EXPECT_GT(failed, 10U);
}

TEST(JsonAllocationFailure, TheTypedReaderReadsTheSameAfterwards) {
  const std::size_t failed = FailEachAllocation(
      [] { return jsonHelper(json::Deserialize(kText)); },
      [](const jsonHelper& reader) { (void)reader["nested"]["inner"].ToArray(); },
      [](const jsonHelper& reader, bool) { EXPECT_EQ(reader["nested"]["inner"].ToArray().size(), 3U); });
  EXPECT_GT(failed, 0U);
}

}  // namespace
