// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingReader.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "Recordings.h"

TEST(RecordingReader, KnowsWhetherTheLastLineEndedTheRecording) {
  std::vector<std::string> lines;
  RecordingReader reader({[&](const RecordingEvent&, const std::string& line) { lines.push_back(line); },
                          [](RecordingReader::Fault, std::size_t, const std::string&) { FAIL(); }});
  EXPECT_FALSE(reader.HasEnded());
  EXPECT_TRUE(reader.Feed(RecordingPart(1)));
  EXPECT_FALSE(reader.HasEnded());
  EXPECT_TRUE(reader.Feed(RecordingPartEnd(1)));
  EXPECT_FALSE(reader.HasEnded());
  EXPECT_TRUE(reader.Feed(kLastPartEnd));
  EXPECT_TRUE(reader.HasEnded());
  EXPECT_TRUE(reader.Feed(kRecordingBegin));
  EXPECT_FALSE(reader.HasEnded());
  reader.Finish();
  EXPECT_EQ(lines.size(), 5U);
}
