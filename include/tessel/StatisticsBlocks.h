// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The raw blocks that the statistics objects hand out, and the records that components hand in.
///
/// All are plain bytes, in the machine's byte order, and may be copied with memcpy. The comment of a member
/// begins with its offset, in bytes from the start of its structure. The bytes between members are reserved:
/// the library copies them and gives them no meaning. Members that only the measuring components can name
/// have their offset in the name, and their source in the comment. A member without a unit is a bare number.

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "tessel/KalStatisticsTypes.h"

namespace kalStore {

/// The simulcast or scalability layers of a video block.
inline constexpr int kVideoLayerCount = 6;
/// The receive streams of an audio object: stream indexes 0 to 19.
inline constexpr int kAudioStreamCount = 20;

/// An unsigned 64-bit number at any multiple of 4 bytes. A read beside a write may see halves of two numbers.
/// @threads A plain value.
/// @par Example
/// @code{.cpp}
/// constexpr st_KalUInt64 number{1, 2};
/// static_assert(number.Value() == 0x200000001);
/// @endcode
struct st_KalUInt64 {
  std::uint32_t low;   ///< 0: the low 32 bits
  std::uint32_t high;  ///< 4: the high 32 bits

  /// @return The number.
  constexpr std::uint64_t Value() const { return std::uint64_t{high} << 32 | low; }
};

/// One layer of a sent video, 240 bytes. "in" is the st_KalVideoStreamStatInfo that it is filled from.
struct st_KalVideoLayer {
  std::uint32_t streamWords[4];  ///< 0: in 0 to 15, the stream's identifying words
  std::uint32_t codecCode;       ///< 16: see mapToKALCodec()
  std::uint32_t counter;         ///< 20: in 84, since the start of the call
  std::uint32_t idrRequests;     ///< 24: in 88, IDR frames asked for, since the start of the call
  std::uint32_t idrSent;         ///< 28: in 92, IDR frames sent, since the start of the call
  std::uint32_t interval32;      ///< 32: of the interval; zeroed by a resetting read
  std::uint8_t interval36;       ///< 36: of the interval; zeroed by a resetting read
  std::uint8_t reserved37[3];
  float stat40;           ///< 40: in 56
  float stat44;           ///< 44: in 48
  std::uint32_t stat48;   ///< 48: in 80
  float bufferOccupancy;  ///< 52: how full the frame buffer is, as measured by the sender
  std::uint32_t stat56;   ///< 56: in 104
  std::uint32_t stat60;   ///< 60: in 108
  std::uint32_t profile;  ///< 64: the codec's profile
  std::uint8_t reserved68[36];
  std::uint32_t configChanges;   ///< 104: in 112, configuration changes; in a resetting read, of the interval
  std::uint32_t stats108[4];     ///< 108: in 200 to 215
  std::uint32_t stat124;         ///< 124: in 124
  std::uint32_t stat128;         ///< 128: in 148
  std::uint32_t idrReasons[11];  ///< 132: in 248 to 291, IDR frames by reason; see configChanges
  std::uint8_t reserved176[8];
  std::int32_t intervalMinimum;  ///< 184: in 300, least positive value of the interval; 0 is none
  std::int32_t intervalMaximum;  ///< 188: in 304, greatest value of the interval, at least 0
  std::uint32_t intervalLast;    ///< 192: in 308, last value of the interval
  std::uint8_t reserved196[28];
  std::uint32_t counterDelta;      ///< 224: in a resetting read, the growth of `counter` in the interval
  std::uint32_t idrRequestsDelta;  ///< 228: in a resetting read, the growth of `idrRequests` in the interval
  float targetFps;                 ///< 232: the encoder control's target, frames per second
  std::uint8_t reserved236[4];
};

/// A call's sent video (and, of the same layout, received video), 2064 bytes.
struct alignas(8) st_KalVideoTxBlock {
  st_KalVideoLayer layer[kVideoLayerCount];  ///< 0: layer i at 240 * i
  std::int32_t activeStreams;                ///< 1440: streams in use, as given: may be negative or above 6
  std::uint32_t encodedWidth;                ///< 1444: pixels
  std::uint32_t encodedHeight;               ///< 1448: pixels
  float encoderFps;                          ///< 1452: frames per second
  float encoderBitrate;                      ///< 1456: bits per second, UpdateVideoEncBitrateFps() argument 1
  float encoderBitrate2;                     ///< 1460: bits per second, UpdateVideoEncBitrateFps() argument 2
  std::uint32_t idrRequests;                 ///< 1464: IDR frames asked for, all layers
  std::uint32_t idrSent;                     ///< 1468: IDR frames sent, all layers
  std::uint8_t reserved1472[4];
  std::uint32_t other3;              ///< 1476: UpdateVideoEncOtherInfo() argument 3
  std::int32_t performanceWarnings;  ///< 1480: number of warnings
  std::uint8_t reserved1484[4];
  std::uint32_t encodedFrames;  ///< 1488: frames
  std::uint8_t reserved1492[8];
  std::uint8_t hardwareEncoder;  ///< 1500: 1 while a hardware encoder is in use, else 0
  std::uint8_t reserved1501[19];
  float other2;  ///< 1520: UpdateVideoEncOtherInfo() argument 2
  std::uint8_t reserved1524[4];
  float other1;  ///< 1528: UpdateVideoEncOtherInfo() argument 1
  std::uint8_t reserved1532[4];
  std::uint64_t capturedFrames;  ///< 1536: frames
  std::uint8_t reserved1544[24];
  std::uint64_t framesFedToEncoder;  ///< 1568: frames
  std::uint8_t reserved1576[4];
  std::int32_t other6;                ///< 1580: UpdateVideoEncOtherInfo() argument 6
  std::uint32_t frameSize;            ///< 1584: UpdateVideoEncFSAndDownType() argument 1
  std::uint32_t frameSize2;           ///< 1588: UpdateVideoEncFSAndDownType() argument 2
  kal::KalVideoResDownType downType;  ///< 1592: how pictures are scaled down
  std::uint8_t reserved1596[4];
  std::uint64_t other5;  ///< 1600: UpdateVideoEncOtherInfo() argument 5
  std::uint8_t reserved1608[8];
  std::uint32_t codecCode;  ///< 1616: see mapToKALCodec()
  std::uint8_t reserved1620[112];
  std::uint32_t roiAreaRatio;  ///< 1732: share of the picture that is region of interest
  std::uint32_t other7;        ///< 1736: UpdateVideoEncOtherInfo() argument 7
  std::uint8_t reserved1740[12];
  std::int32_t noiseLevel;  ///< 1752: greatest of the interval; -1 is none
  std::uint8_t reserved1756[196];
  std::int32_t process1;  ///< 1952: UpdateVideoProcessInfo() argument 1
  std::uint8_t reserved1956[4];
  std::int32_t process2;  ///< 1960: UpdateVideoProcessInfo() argument 2
  std::uint8_t reserved1964[16];
  std::int32_t av1Metric;  ///< 1980: UpdateAV1Metrics() argument 1
  char av1Name1[16];       ///< 1984: NUL-terminated
  char av1Name2[64];       ///< 2000: NUL-terminated
};

/// The two bytes of the jitter buffer in a receive block, at 4 and 5 of eight.
struct st_KalJitterBytes {
  std::uint8_t reserved0[4];
  std::uint8_t jitter1;  ///< 4: updateJitterBufferStatistics() argument 3, low 8 bits
  std::uint8_t jitter2;  ///< 5: updateJitterBufferStatistics() argument 4, low 8 bits
  std::uint8_t reserved6[2];
};

/// A call's sent audio (Tx), or one received audio stream (Rx), 260 bytes. "codec" is the
/// st_KalAudioCodecStatisticsInfo, "jitter" the st_KalAudioJitterBufferStatistics that a member comes from.
struct st_KalAudioBlock {
  union {
    std::uint32_t codecStat0;  ///< 0: Tx: codec 0
    std::uint8_t lbrrFlag;     ///< 0: Tx, Rx: the first byte is 1 while low bit-rate redundancy is on, else 0
  };
  std::uint32_t stat4;      ///< 4: Tx: codec 4. Rx: updateDecodeInfo() argument 3
  std::uint32_t bitrate;    ///< 8: Tx, Rx: bits per second
  std::uint32_t codecCode;  ///< 12: Tx, Rx: see KAL_AUDIO_PAYLOAD_TYPE; 0 is none yet
  std::uint8_t reserved16[40];
  std::uint32_t encodeDropMs;  ///< 56: Tx: milliseconds of audio that the encoder dropped, or codec 12
  float noiseLevel[3];         ///< 60: Tx: decibels; -100 is none
  float aecLevel[3];           ///< 72: Tx: echo cancellation, decibels
  float speechLevel[3];        ///< 84: Tx: decibels; -100 is none
  st_KalUInt64 codecStat16;    ///< 96: Tx: codec 16
  union {
    st_KalUInt64 codecStat24;       ///< 104: Tx: codec 24
    st_KalJitterBytes jitterBytes;  ///< 104: Rx: bytes at 108 and 109
  };
  std::uint32_t stat112;         ///< 112: Tx: 20 after a reset and a resetting read. Rx: jitter 36
  std::uint32_t unstableEvents;  ///< 116: Tx: number of events
  std::uint32_t jitterStat12;    ///< 120: Rx: jitter 12; zeroed by a resetting read
  std::uint32_t jitterStat8;     ///< 124: Rx: jitter 8; zeroed by a resetting read
  std::uint32_t jitterStat16;    ///< 128: Rx: jitter 16; zeroed by a resetting read
  st_KalUInt64 jitterStat40;     ///< 132: Rx: jitter 40
  std::uint32_t jitterStat48;    ///< 140: Rx: jitter 48
  std::uint8_t reserved144[52];
  std::uint32_t e2eDelay[3];  ///< 196: Rx: end-to-end delay, milliseconds, in the order of the arguments
  std::uint8_t reserved208[52];
};

/// What an encoder reports of one stream, 400 bytes.
struct alignas(8) st_KalVideoStreamStatInfo {
  std::uint32_t streamWords[4];      ///< 0: the stream's identifying words
  kal::KalVideoCodecType codecType;  ///< 16
  std::uint8_t reserved20[28];
  std::uint64_t stat48;  ///< 48
  std::uint64_t stat56;  ///< 56
  std::uint8_t reserved64[16];
  std::uint32_t stat80;       ///< 80
  std::uint32_t counter;      ///< 84: since the start of the call
  std::uint32_t idrRequests;  ///< 88: IDR frames asked for, since the start of the call
  std::uint32_t idrSent;      ///< 92: IDR frames sent, since the start of the call
  std::uint8_t reserved96[8];
  std::uint32_t stat104;        ///< 104
  std::uint32_t stat108;        ///< 108
  std::uint32_t configChanges;  ///< 112: configuration changes, since the start of the call
  std::uint8_t reserved116[8];
  std::uint32_t stat124;  ///< 124
  std::uint8_t reserved128[20];
  std::uint32_t stat148;  ///< 148
  std::uint8_t reserved152[48];
  std::uint32_t stats200[4];  ///< 200
  std::uint8_t reserved216[32];
  std::uint32_t idrReasons[11];  ///< 248: IDR frames by reason, since the start of the call
  std::uint8_t reserved292[8];
  std::int32_t stat300;   ///< 300: the layer has the least positive value of the interval
  std::int32_t stat304;   ///< 304: the layer has the greatest value of the interval
  std::uint32_t stat308;  ///< 308: the layer has the last value of the interval
  std::uint8_t reserved312[88];
};

/// What an audio codec reports of the sent stream.
struct alignas(8) st_KalAudioCodecStatisticsInfo {
  std::uint32_t stat0;                 ///< 0: first byte: 1 while low bit-rate redundancy is on, else 0
  std::uint32_t stat4;                 ///< 4
  KAL_AUDIO_PAYLOAD_TYPE payloadType;  ///< 8
  std::uint32_t encodeDropMs;          ///< 12: milliseconds of audio that the encoder dropped
  std::uint64_t stat16;                ///< 16
  std::uint64_t stat24;                ///< 24
};

/// What a jitter buffer reports of one received stream.
struct alignas(8) st_KalAudioJitterBufferStatistics {
  std::uint8_t reserved0[8];
  std::uint32_t stat8;   ///< 8
  std::uint32_t stat12;  ///< 12
  std::uint32_t stat16;  ///< 16
  std::uint8_t reserved20[16];
  std::uint32_t stat36;  ///< 36
  std::uint64_t stat40;  ///< 40
  std::uint32_t stat48;  ///< 48
  std::uint8_t reserved52[4];
};

}  // namespace kalStore

namespace kal {

/// The audio and video synchronisation of one received stream, 120 bytes: thirty 32-bit members, which the
/// library copies as they are.
struct _tagSyncStatistics {
  std::uint32_t value[30];  ///< 0: value i at 4 * i
};

}  // namespace kal

using kalStore::st_KalVideoStreamStatInfo;

/// @cond
// The layout is a contract between separately built components.
#define TESSEL_SIZE(type, size)                                                 \
  static_assert(sizeof(type) == (size) && std::is_trivially_copyable_v<type> && \
                std::is_standard_layout_v<type>)
#define TESSEL_AT(type, member, offset) static_assert(offsetof(type, member) == (offset))

TESSEL_SIZE(kalStore::st_KalUInt64, 8);
TESSEL_SIZE(kalStore::st_KalVideoLayer, 240);
TESSEL_SIZE(kalStore::st_KalVideoTxBlock, 2064);
TESSEL_SIZE(kalStore::st_KalJitterBytes, 8);
TESSEL_SIZE(kalStore::st_KalAudioBlock, 260);
TESSEL_SIZE(kalStore::st_KalVideoStreamStatInfo, 400);
TESSEL_SIZE(kalStore::st_KalAudioCodecStatisticsInfo, 32);
TESSEL_SIZE(kalStore::st_KalAudioJitterBufferStatistics, 56);
TESSEL_SIZE(kal::_tagSyncStatistics, 120);

TESSEL_AT(kalStore::st_KalVideoLayer, streamWords, 0);
TESSEL_AT(kalStore::st_KalVideoLayer, codecCode, 16);
TESSEL_AT(kalStore::st_KalVideoLayer, counter, 20);
TESSEL_AT(kalStore::st_KalVideoLayer, idrRequests, 24);
TESSEL_AT(kalStore::st_KalVideoLayer, idrSent, 28);
TESSEL_AT(kalStore::st_KalVideoLayer, interval32, 32);
TESSEL_AT(kalStore::st_KalVideoLayer, interval36, 36);
TESSEL_AT(kalStore::st_KalVideoLayer, reserved37, 37);
TESSEL_AT(kalStore::st_KalVideoLayer, stat40, 40);
TESSEL_AT(kalStore::st_KalVideoLayer, stat44, 44);
TESSEL_AT(kalStore::st_KalVideoLayer, stat48, 48);
TESSEL_AT(kalStore::st_KalVideoLayer, bufferOccupancy, 52);
TESSEL_AT(kalStore::st_KalVideoLayer, stat56, 56);
TESSEL_AT(kalStore::st_KalVideoLayer, stat60, 60);
TESSEL_AT(kalStore::st_KalVideoLayer, profile, 64);
TESSEL_AT(kalStore::st_KalVideoLayer, reserved68, 68);
TESSEL_AT(kalStore::st_KalVideoLayer, configChanges, 104);
TESSEL_AT(kalStore::st_KalVideoLayer, stats108, 108);
TESSEL_AT(kalStore::st_KalVideoLayer, stat124, 124);
TESSEL_AT(kalStore::st_KalVideoLayer, stat128, 128);
TESSEL_AT(kalStore::st_KalVideoLayer, idrReasons, 132);
TESSEL_AT(kalStore::st_KalVideoLayer, reserved176, 176);
TESSEL_AT(kalStore::st_KalVideoLayer, intervalMinimum, 184);
TESSEL_AT(kalStore::st_KalVideoLayer, intervalMaximum, 188);
TESSEL_AT(kalStore::st_KalVideoLayer, intervalLast, 192);
TESSEL_AT(kalStore::st_KalVideoLayer, reserved196, 196);
TESSEL_AT(kalStore::st_KalVideoLayer, counterDelta, 224);
TESSEL_AT(kalStore::st_KalVideoLayer, idrRequestsDelta, 228);
TESSEL_AT(kalStore::st_KalVideoLayer, targetFps, 232);
TESSEL_AT(kalStore::st_KalVideoLayer, reserved236, 236);

TESSEL_AT(kalStore::st_KalVideoTxBlock, layer, 0);
TESSEL_AT(kalStore::st_KalVideoTxBlock, activeStreams, 1440);
TESSEL_AT(kalStore::st_KalVideoTxBlock, encodedWidth, 1444);
TESSEL_AT(kalStore::st_KalVideoTxBlock, encodedHeight, 1448);
TESSEL_AT(kalStore::st_KalVideoTxBlock, encoderFps, 1452);
TESSEL_AT(kalStore::st_KalVideoTxBlock, encoderBitrate, 1456);
TESSEL_AT(kalStore::st_KalVideoTxBlock, encoderBitrate2, 1460);
TESSEL_AT(kalStore::st_KalVideoTxBlock, idrRequests, 1464);
TESSEL_AT(kalStore::st_KalVideoTxBlock, idrSent, 1468);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1472, 1472);
TESSEL_AT(kalStore::st_KalVideoTxBlock, other3, 1476);
TESSEL_AT(kalStore::st_KalVideoTxBlock, performanceWarnings, 1480);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1484, 1484);
TESSEL_AT(kalStore::st_KalVideoTxBlock, encodedFrames, 1488);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1492, 1492);
TESSEL_AT(kalStore::st_KalVideoTxBlock, hardwareEncoder, 1500);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1501, 1501);
TESSEL_AT(kalStore::st_KalVideoTxBlock, other2, 1520);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1524, 1524);
TESSEL_AT(kalStore::st_KalVideoTxBlock, other1, 1528);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1532, 1532);
TESSEL_AT(kalStore::st_KalVideoTxBlock, capturedFrames, 1536);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1544, 1544);
TESSEL_AT(kalStore::st_KalVideoTxBlock, framesFedToEncoder, 1568);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1576, 1576);
TESSEL_AT(kalStore::st_KalVideoTxBlock, other6, 1580);
TESSEL_AT(kalStore::st_KalVideoTxBlock, frameSize, 1584);
TESSEL_AT(kalStore::st_KalVideoTxBlock, frameSize2, 1588);
TESSEL_AT(kalStore::st_KalVideoTxBlock, downType, 1592);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1596, 1596);
TESSEL_AT(kalStore::st_KalVideoTxBlock, other5, 1600);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1608, 1608);
TESSEL_AT(kalStore::st_KalVideoTxBlock, codecCode, 1616);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1620, 1620);
TESSEL_AT(kalStore::st_KalVideoTxBlock, roiAreaRatio, 1732);
TESSEL_AT(kalStore::st_KalVideoTxBlock, other7, 1736);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1740, 1740);
TESSEL_AT(kalStore::st_KalVideoTxBlock, noiseLevel, 1752);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1756, 1756);
TESSEL_AT(kalStore::st_KalVideoTxBlock, process1, 1952);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1956, 1956);
TESSEL_AT(kalStore::st_KalVideoTxBlock, process2, 1960);
TESSEL_AT(kalStore::st_KalVideoTxBlock, reserved1964, 1964);
TESSEL_AT(kalStore::st_KalVideoTxBlock, av1Metric, 1980);
TESSEL_AT(kalStore::st_KalVideoTxBlock, av1Name1, 1984);
TESSEL_AT(kalStore::st_KalVideoTxBlock, av1Name2, 2000);

TESSEL_AT(kalStore::st_KalJitterBytes, reserved0, 0);
TESSEL_AT(kalStore::st_KalJitterBytes, jitter1, 4);
TESSEL_AT(kalStore::st_KalJitterBytes, jitter2, 5);
TESSEL_AT(kalStore::st_KalJitterBytes, reserved6, 6);

TESSEL_AT(kalStore::st_KalAudioBlock, codecStat0, 0);
TESSEL_AT(kalStore::st_KalAudioBlock, lbrrFlag, 0);
TESSEL_AT(kalStore::st_KalAudioBlock, stat4, 4);
TESSEL_AT(kalStore::st_KalAudioBlock, bitrate, 8);
TESSEL_AT(kalStore::st_KalAudioBlock, codecCode, 12);
TESSEL_AT(kalStore::st_KalAudioBlock, reserved16, 16);
TESSEL_AT(kalStore::st_KalAudioBlock, encodeDropMs, 56);
TESSEL_AT(kalStore::st_KalAudioBlock, noiseLevel, 60);
TESSEL_AT(kalStore::st_KalAudioBlock, aecLevel, 72);
TESSEL_AT(kalStore::st_KalAudioBlock, speechLevel, 84);
TESSEL_AT(kalStore::st_KalAudioBlock, codecStat16, 96);
TESSEL_AT(kalStore::st_KalAudioBlock, codecStat24, 104);
TESSEL_AT(kalStore::st_KalAudioBlock, jitterBytes, 104);
TESSEL_AT(kalStore::st_KalAudioBlock, stat112, 112);
TESSEL_AT(kalStore::st_KalAudioBlock, unstableEvents, 116);
TESSEL_AT(kalStore::st_KalAudioBlock, jitterStat12, 120);
TESSEL_AT(kalStore::st_KalAudioBlock, jitterStat8, 124);
TESSEL_AT(kalStore::st_KalAudioBlock, jitterStat16, 128);
TESSEL_AT(kalStore::st_KalAudioBlock, jitterStat40, 132);
TESSEL_AT(kalStore::st_KalAudioBlock, jitterStat48, 140);
TESSEL_AT(kalStore::st_KalAudioBlock, reserved144, 144);
TESSEL_AT(kalStore::st_KalAudioBlock, e2eDelay, 196);
TESSEL_AT(kalStore::st_KalAudioBlock, reserved208, 208);

TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, streamWords, 0);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, codecType, 16);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved20, 20);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat48, 48);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat56, 56);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved64, 64);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat80, 80);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, counter, 84);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, idrRequests, 88);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, idrSent, 92);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved96, 96);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat104, 104);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat108, 108);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, configChanges, 112);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved116, 116);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat124, 124);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved128, 128);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat148, 148);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved152, 152);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stats200, 200);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved216, 216);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, idrReasons, 248);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved292, 292);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat300, 300);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat304, 304);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, stat308, 308);
TESSEL_AT(kalStore::st_KalVideoStreamStatInfo, reserved312, 312);

TESSEL_AT(kalStore::st_KalAudioCodecStatisticsInfo, stat0, 0);
TESSEL_AT(kalStore::st_KalAudioCodecStatisticsInfo, stat4, 4);
TESSEL_AT(kalStore::st_KalAudioCodecStatisticsInfo, payloadType, 8);
TESSEL_AT(kalStore::st_KalAudioCodecStatisticsInfo, encodeDropMs, 12);
TESSEL_AT(kalStore::st_KalAudioCodecStatisticsInfo, stat16, 16);
TESSEL_AT(kalStore::st_KalAudioCodecStatisticsInfo, stat24, 24);

TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, reserved0, 0);
TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, stat8, 8);
TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, stat12, 12);
TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, stat16, 16);
TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, reserved20, 20);
TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, stat36, 36);
TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, stat40, 40);
TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, stat48, 48);
TESSEL_AT(kalStore::st_KalAudioJitterBufferStatistics, reserved52, 52);

TESSEL_AT(kal::_tagSyncStatistics, value, 0);

#undef TESSEL_AT
#undef TESSEL_SIZE
/// @endcond
