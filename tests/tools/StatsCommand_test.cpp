// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "Program.h"

namespace {

template <class T>
void Put(std::string& block, std::size_t offset, T value) {
  std::memcpy(block.data() + offset, &value, sizeof value);
}

// An audio block with another value in each member, by place.
std::string Audio() {
  std::string block(260, '\0');
  for (std::uint32_t offset = 0; offset < 260; offset += 4) Put(block, offset, offset + 1000);
  for (std::uint32_t i = 0; i < 9; ++i) Put(block, 60 + 4 * i, -0.5F * static_cast<float>(i));
  Put<std::uint64_t>(block, 96, 18446744073709551615U);
  Put<std::uint64_t>(block, 132, 1099511627776U);
  Put<std::uint32_t>(block, 108, 0xFF07);  // Also the high half of codecStat24.
  return block;
}

constexpr const char* kAudioTable =
    "block 0 (audio)\n"
    "  both\n"
    "    lbrrFlag             232\n"
    "    stat4                1004\n"
    "    bitrate              1008 bit/s\n"
    "    codecCode            1012\n"
    "    stat112              1112\n"
    "  sent\n"
    "    codecStat0           1000\n"
    "    encodeDropMs         1056 ms\n"
    "    noiseLevel[0]        -0 dB\n"
    "    noiseLevel[1]        -0.5 dB\n"
    "    noiseLevel[2]        -1 dB\n"
    "    aecLevel[0]          -1.5 dB\n"
    "    aecLevel[1]          -2 dB\n"
    "    aecLevel[2]          -2.5 dB\n"
    "    speechLevel[0]       -3 dB\n"
    "    speechLevel[1]       -3.5 dB\n"
    "    speechLevel[2]       -4 dB\n"
    "    codecStat16          18446744073709551615\n"
    "    codecStat24          280405529855056\n"
    "    unstableEvents       1116\n"
    "  received\n"
    "    jitterBytes.jitter1  7\n"
    "    jitterBytes.jitter2  255\n"
    "    jitterStat8          1124\n"
    "    jitterStat12         1120\n"
    "    jitterStat16         1128\n"
    "    jitterStat40         1099511627776\n"
    "    jitterStat48         1140\n"
    "    e2eDelay[0]          1196 ms\n"
    "    e2eDelay[1]          1200 ms\n"
    "    e2eDelay[2]          1204 ms\n";

TEST(StatsCommand, PrintsAnAudioBlockBySection) {
  const Finished run = Program().File("audio.bin", Audio()).Run({"stats", "audio.bin"});
  EXPECT_EQ(run.out, kAudioTable);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(StatsCommand, PrintsAVideoBlockByLayer) {
  std::string block(2064, '\0');
  Put<std::int32_t>(block, 1440, 1);
  Put<std::uint32_t>(block, 1444, 1280);
  Put<std::uint32_t>(block, 1448, 720);
  Put<float>(block, 1452, 29.97F);
  Put<std::int32_t>(block, 1752, -1);
  std::memcpy(block.data() + 1984, "svt\"1", 5);
  std::memcpy(block.data() + 2000, "caf\xC3\xA9\n", 6);
  Put<std::uint32_t>(block, 480 + 8, 11);
  Put<std::uint32_t>(block, 480 + 20, 300);
  Put<std::uint32_t>(block, 480 + 224, 30);
  Put<std::uint32_t>(block, 480 + 172, 5);
  Put<std::int32_t>(block, 480 + 184, -4);
  Put<float>(block, 480 + 232, 15.0F);
  std::string reasons;
  for (int i = 0; i < 11; ++i) {
    const std::string name = "idrReasons[" + std::to_string(i) + "]";
    reasons += "    " + name + std::string(21 - name.size(), ' ') + (i == 10 ? "5" : "0") + " frames\n";
  }
  const Finished run = Program().Input(block).Run({"stats", "-"});
  EXPECT_EQ(run.out,
            "block 0 (video)\n"
            "  call\n"
            "    activeStreams        1\n"
            "    codecCode            0\n"
            "    encodedWidth         1280 px\n"
            "    encodedHeight        720 px\n"
            "    encoderFps           29.97 fps\n"
            "    encoderBitrate       0 bit/s\n"
            "    encoderBitrate2      0 bit/s\n"
            "    hardwareEncoder      0\n"
            "    downType             0\n"
            "    frameSize            0\n"
            "    frameSize2           0\n"
            "    capturedFrames       0 frames\n"
            "    framesFedToEncoder   0 frames\n"
            "    encodedFrames        0 frames\n"
            "    idrRequests          0 frames\n"
            "    idrSent              0 frames\n"
            "    performanceWarnings  0\n"
            "    noiseLevel           -1\n"
            "    roiAreaRatio         0\n"
            "    process1             0\n"
            "    process2             0\n"
            "    other1               0\n"
            "    other2               0\n"
            "    other3               0\n"
            "    other5               0\n"
            "    other6               0\n"
            "    other7               0\n"
            "    av1Metric            0\n"
            "    av1Name1             \"svt\\\"1\"\n"
            "    av1Name2             \"caf\xC3\xA9\\n\"\n"
            "  layer0: empty\n"
            "  layer1: empty\n"
            "  layer2\n"
            "    streamWords[0]       0\n"
            "    streamWords[1]       0\n"
            "    streamWords[2]       11\n"
            "    streamWords[3]       0\n"
            "    codecCode            0\n"
            "    counter              300\n"
            "    counterDelta         30\n"
            "    idrRequests          0 frames\n"
            "    idrRequestsDelta     0 frames\n"
            "    idrSent              0 frames\n" +
                reasons +
                "    configChanges        0\n"
                "    profile              0\n"
                "    targetFps            15 fps\n"
                "    bufferOccupancy      0\n"
                "    interval32           0\n"
                "    interval36           0\n"
                "    intervalMinimum      -4\n"
                "    intervalMaximum      0\n"
                "    intervalLast         0\n"
                "    stat40               0\n"
                "    stat44               0\n"
                "    stat48               0\n"
                "    stat56               0\n"
                "    stat60               0\n"
                "    stats108[0]          0\n"
                "    stats108[1]          0\n"
                "    stats108[2]          0\n"
                "    stats108[3]          0\n"
                "    stat124              0\n"
                "    stat128              0\n"
                "  layer3: empty\n"
                "  layer4: empty\n"
                "  layer5: empty\n");
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.status, 0);
}

TEST(StatsCommand, PrintsATablePerBlock) {
  const std::string blocks(260 * 3, '\0');
  const Finished run = Program().File("a.bin", blocks).Run({"stats", "a.bin"});
  EXPECT_EQ(run.out.rfind("block 0 (audio)\n", 0), 0U);
  EXPECT_NE(run.out.find("\n\nblock 1 (audio)\n"), std::string::npos);
  EXPECT_NE(run.out.find("\n\nblock 2 (audio)\n"), std::string::npos);
  EXPECT_EQ(run.out.find("block 3"), std::string::npos);
  EXPECT_EQ(run.status, 0);
}

constexpr const char* kCsvNames =
    "block,kind,both.lbrrFlag,both.stat4,both.bitrate (bit/s),both.codecCode,both.stat112,"
    "sent.codecStat0,sent.encodeDropMs (ms),sent.noiseLevel[0] (dB),sent.noiseLevel[1] "
    "(dB),sent.noiseLevel[2] (dB),"
    "sent.aecLevel[0] (dB),sent.aecLevel[1] (dB),sent.aecLevel[2] (dB),"
    "sent.speechLevel[0] (dB),sent.speechLevel[1] (dB),sent.speechLevel[2] (dB),"
    "sent.codecStat16,sent.codecStat24,sent.unstableEvents,"
    "received.jitterBytes.jitter1,received.jitterBytes.jitter2,received.jitterStat8,received.jitterStat12,"
    "received.jitterStat16,received.jitterStat40,received.jitterStat48,"
    "received.e2eDelay[0] (ms),received.e2eDelay[1] (ms),received.e2eDelay[2] (ms)\n";

TEST(StatsCommand, PrintsALinePerBlockAsCsv) {
  std::string block(260, '\0');
  Put<std::uint32_t>(block, 8, 32000);
  Put<float>(block, 84, -100.0F);
  const Finished run = Program().Input(block + std::string(260, '\0')).Run({"stats", "--csv", "-"});
  EXPECT_EQ(
      run.out,
      kCsvNames + std::string("0,audio,0,0,32000,0,0,0,0,0,0,0,0,0,0,-100,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0\n"
                              "1,audio,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0\n"));
  EXPECT_EQ(run.status, 0);
}

TEST(StatsCommand, QuotesStringsInCsv) {
  std::string block(2064, '\0');
  std::memcpy(block.data() + 1984, "a,\"b\"", 5);
  const Finished run = Program().Input(block).Run({"stats", "--csv", "-"});
  EXPECT_NE(run.out.find(",\"a,\"\"b\"\"\",\"\","), std::string::npos) << run.out;
}

TEST(StatsCommand, PrintsAnObjectPerBlockAsJson) {
  std::string block(260, '\0');
  Put<std::uint32_t>(block, 8, 32000);
  Put<float>(block, 60, std::numeric_limits<float>::quiet_NaN());
  Put<float>(block, 64, -std::numeric_limits<float>::infinity());
  const std::string received =
      R"("received":{"jitterBytes.jitter1":0,"jitterBytes.jitter2":0,"jitterStat8":0,"jitterStat12":0,)"
      R"("jitterStat16":0,"jitterStat40":0,"jitterStat48":0,"e2eDelay[0]":0,"e2eDelay[1]":0,"e2eDelay[2]":0}})"
      "\n";
  const auto sent = [](const std::string& first, const std::string& second) {
    return R"("sent":{"codecStat0":0,"encodeDropMs":0,"noiseLevel[0]":)" + first + R"(,"noiseLevel[1]":)" +
           second +
           R"(,"noiseLevel[2]":0,"aecLevel[0]":0,"aecLevel[1]":0,"aecLevel[2]":0,"speechLevel[0]":0,)"
           R"("speechLevel[1]":0,"speechLevel[2]":0,"codecStat16":0,"codecStat24":0,"unstableEvents":0},)";
  };
  const Finished run = Program().Input(block + std::string(260, '\0')).Run({"stats", "--json", "-"});
  EXPECT_EQ(
      run.out,
      R"({"block":0,"kind":"audio","both":{"lbrrFlag":0,"stat4":0,"bitrate":32000,"codecCode":0,"stat112":0},)" +
          sent("null", "null") + received +
          R"({"block":1,"kind":"audio","both":{"lbrrFlag":0,"stat4":0,"bitrate":0,"codecCode":0,"stat112":0},)" +
          sent("0", "0") + received);
  EXPECT_EQ(run.status, 0);
}

TEST(StatsCommand, TakesItsFormatsByNameAsWell) {
  Program program;
  program.Input(std::string(260, '\0'));
  EXPECT_EQ(program.Run({"stats", "-", "--format", "csv"}).out, program.Run({"stats", "-", "--csv"}).out);
  EXPECT_EQ(program.Run({"stats", "-", "--format=json"}).out, program.Run({"stats", "-", "--json"}).out);
  EXPECT_EQ(program.Run({"stats", "-", "--format", "text"}).out, program.Run({"stats", "-"}).out);
}

TEST(StatsCommand, RefusesASizeThatIsNoWholeNumberOfBlocks) {
  const struct {
    std::size_t size;
    std::vector<std::string> options;
    const char* reason;
  } rows[] = {
      {0, {}, "0 bytes are no whole number of blocks: a block has 2064 bytes (video) or 260 bytes (audio)"},
      {1, {}, "1 bytes are no whole number of blocks: a block has 2064 bytes (video) or 260 bytes (audio)"},
      {2063,
       {},
       "2063 bytes are no whole number of blocks: a block has 2064 bytes (video) or 260 bytes (audio)"},
      {2064 + 260,
       {},
       "2324 bytes are no whole number of blocks: a block has 2064 bytes (video) or 260 bytes (audio)"},
      {260, {"--kind", "video"}, "260 bytes are no whole number of blocks: a block has 2064 bytes (video)"},
      {2064, {"--kind", "audio"}, "2064 bytes are no whole number of blocks: a block has 260 bytes (audio)"},
      {134160,
       {},
       "134160 bytes are whole blocks of 2064 bytes (video) or 260 bytes (audio): choose with --kind"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> arguments = {"stats", "x.bin"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    const Finished run = Program().File("x.bin", std::string(row.size, '\0')).Run(arguments);
    EXPECT_EQ(run.err, "x.bin: " + std::string(row.reason) + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
  }
}

TEST(StatsCommand, TakesASizeOfBothKindsAsTheKindChosen) {
  const std::string blocks(134160, '\0');
  const Finished video = Program().Input(blocks).Run({"stats", "-", "--kind", "video"});
  EXPECT_NE(video.out.find("block 64 (video)"), std::string::npos);
  EXPECT_EQ(video.out.find("block 65"), std::string::npos);
  const Finished audio = Program().Input(blocks).Run({"stats", "--kind", "audio", "-"});
  EXPECT_NE(audio.out.find("block 515 (audio)"), std::string::npos);
  EXPECT_EQ(audio.out.find("block 516"), std::string::npos);
}

TEST(StatsCommand, RefusesAnUnusableCommandLineInOneLine) {
  for (const auto& arguments : {std::vector<std::string>{"stats"},
                                {"stats", "x.bin", "--kind", "text"},
                                {"stats", "x.bin", "--csv", "--json"},
                                {"stats", "x.bin", "y.bin"},
                                {"stats", "missing.bin"}}) {
    const Finished run = Program().File("x.bin", std::string(260, '\0')).Run(arguments);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_EQ(run.status, 2) << run.err;
  }
}

}  // namespace
