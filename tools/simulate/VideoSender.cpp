// SPDX-License-Identifier: Apache-2.0
#include "simulate/VideoSender.h"

#include <algorithm>
#include <cmath>

#include "simulate/Keys.h"

namespace simulate {

namespace {

constexpr double kPacketBits = 1200 * 8;
constexpr double kFecShare = 0.1;
constexpr std::uint32_t kFramesPerIdr = 90;

}  // namespace

VideoSender::VideoSender(const CallContext& call)
    : Component("video sender", call), m_statistics(call.callId), m_settings(makeSettings()) {
  m_settings.Follow(kVideoTarget, Way::kPosted, m_bitrate);
  m_settings.Follow(kTargetFps, Way::kPosted, m_fps);
  m_settings.Follow(kActiveLayers, Way::kHandedOver, m_layers);
  m_settings.Follow(kRetransmissionFec, Way::kPosted, m_hasFec);
}

void VideoSender::work(RunTime now, double elapsed) {
  const double fps = std::clamp<int>(m_fps, 1, kMostFps);
  m_owedFrames += elapsed * fps;
  const double frames = std::floor(m_owedFrames);
  m_owedFrames -= frames;
  const double bitsPerFrame = std::clamp<int>(m_bitrate, 0, kMostBitrate) / fps;
  const double sent = frames * bitsPerFrame;
  const double bits = m_hasFec ? sent * (1 + kFecShare) : sent;
  m_call.link.Send(Media::kVideo, now, static_cast<std::uint32_t>(std::ceil(bits / kPacketBits)), bits);
  m_sentBits.Add(sent, elapsed);
  m_sentFrames.Add(frames, elapsed);
  report(static_cast<std::uint32_t>(frames), bitsPerFrame);
}

void VideoSender::report(std::uint32_t frames, double bitsPerFrame) {
  const int layers = std::clamp<int>(m_layers, 1, kalStore::kVideoLayerCount);
  for (int layer = 0; layer < layers; ++layer) {
    kalStore::st_KalVideoStreamStatInfo& stream = m_streams[layer];
    stream.codecType = kal::KAL_VIDEO_CODEC_CODE_100;
    stream.counter += frames;
    stream.idrSent = stream.counter / kFramesPerIdr;
    stream.idrRequests = stream.idrSent;
    stream.stat304 = static_cast<std::int32_t>(bitsPerFrame / 8);
    m_statistics->UpdateOneVideoLayerInfo(m_streams, layer, false, m_streams[0].counter);
  }
  m_call.recorder.framesSent += frames;

  m_statistics->UpdateEncodeParam(layers, kal::KAL_VIDEO_CODEC_CODE_100);
  m_statistics->UpdateVideoEncBitrateFps(static_cast<std::uint32_t>(m_sentBits.PerSecond()),
                                         static_cast<std::uint32_t>(m_bitrate.load()),
                                         static_cast<float>(m_sentFrames.PerSecond()));
  float targets[kalStore::kVideoLayerCount];
  std::fill(std::begin(targets), std::end(targets), static_cast<float>(m_fps.load()));
  m_statistics->UpdateEncodeControlTargetFps(targets, layers);
  // Without its upper layers the picture has half the lines and columns, each time.
  const int halvings =
      std::max(0, std::clamp(m_settings.Read(kVideoLayers), 1, kalStore::kVideoLayerCount) - layers);
  const auto width = static_cast<std::uint32_t>(m_settings.Read(kVideoMaxWidth) >> halvings);
  const auto height = static_cast<std::uint32_t>(m_settings.Read(kVideoMaxHeight) >> halvings);
  m_statistics->UpdateVideoEncResolution(height << 16 | (width & 0xFFFF));
  m_statistics->UpdateVideoEnableHWEnc(m_settings.Read(kHardwareEncode));
  m_statistics->UpdateVideoCapturedFrameCnt(m_streams[0].counter);
  m_statistics->UpdateVideoFeedToEncoderFramesCnt(m_streams[0].counter);
  m_call.recorder.statisticsWrites += static_cast<std::uint64_t>(layers) + 7;
}

}  // namespace simulate
