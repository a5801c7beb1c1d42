// SPDX-License-Identifier: Apache-2.0
// An encoder writes what it measures, on its own thread, without a lock; a reporter reads once an interval
// and prints what happened in it. Both ask for the statistics of the same call, and so hold the same object.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <iostream>
#include <thread>

#include "tessel/tessel.h"

namespace {

constexpr std::uint32_t kCall = 7;
constexpr std::uint32_t kFrames = 300;
constexpr std::uint32_t kFramesPerIdr = 30;

/// A component's reference to the video statistics of a call.
class VideoStatistics {
 public:
  explicit VideoStatistics(std::uint32_t callId) : m_callId(callId) {
    createTesselEntity(kalStore::KAL_TESSEL_VIDEO, m_callId, &m_entity);
  }
  ~VideoStatistics() { releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, m_callId, m_entity); }
  VideoStatistics(const VideoStatistics&) = delete;
  VideoStatistics& operator=(const VideoStatistics&) = delete;

  kalStore::IKalVideoInfo* operator->() const { return static_cast<kalStore::IKalVideoInfo*>(m_entity); }

 private:
  std::uint32_t m_callId;
  void* m_entity = nullptr;
};

void Encode(std::atomic<bool>& isDone) {
  const VideoStatistics statistics(kCall);
  statistics->UpdateEncodeParam(1, kal::KAL_VIDEO_CODEC_CODE_100);
  statistics->UpdateVideoEncResolution(720U << 16 | 1280U);
  kalStore::st_KalVideoStreamStatInfo stream{};
  for (std::uint32_t frame = 1; frame <= kFrames; ++frame) {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    stream.counter = frame;
    if (frame % kFramesPerIdr == 0) ++stream.idrRequests;
    stream.stat304 = static_cast<std::int32_t>(frame % 17);  // The interval's greatest is kept.
    statistics->UpdateStreamsInfo(&stream, 1);
    statistics->UpdateOneVideoLayerInfo(&stream, 0, false, frame);
  }
  isDone = true;
}

}  // namespace

int main() {
  const VideoStatistics statistics(kCall);
  std::atomic<bool> isDone{false};
  std::thread encoder(Encode, std::ref(isDone));

  std::uint32_t frames = 0;
  std::uint32_t idrRequests = 0;
  for (bool isLast = false; !isLast;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    isLast = isDone;  // Read before the block: the last report then has all that the encoder wrote.
    kalStore::st_KalVideoTxBlock block;
    statistics->GetTxMediaInfo(&block, true);
    if (block.activeStreams == 0) continue;  // The encoder has not begun.
    const kalStore::st_KalVideoLayer& layer = block.layer[0];
    std::cout << block.encodedWidth << 'x' << block.encodedHeight << ": " << layer.counterDelta << " frames, "
              << layer.idrRequestsDelta << " IDR requests, peak " << layer.intervalMaximum << '\n';
    frames += layer.counterDelta;
    idrRequests += layer.idrRequestsDelta;
  }
  encoder.join();
  std::cout << "in all: " << frames << " frames, " << idrRequests << " IDR requests\n";
  return frames == kFrames && idrRequests == kFrames / kFramesPerIdr ? 0 : 1;
}
