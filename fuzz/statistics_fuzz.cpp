// SPDX-License-Identifier: Apache-2.0
// Statistics objects and their registry under any sequence of operations, with wrong indexes and counts, null
// arrays, and arrays that are exactly as long as an operation may read. After each operation the objects hold
// what a model by documented offsets holds, byte for byte, and nothing around buffers has changed.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "AudioModel.h"
#include "Check.h"
#include "Input.h"
#include "TraceCheck.h"
#include "VideoModel.h"
#include "tessel/CKalTessel.h"
#include "tessel/KalAudioStatisticInfo.h"
#include "tessel/KalContentAudioStatisticInfo.h"
#include "tessel/KalContentVideoStatisticInfo.h"
#include "tessel/KalVideoStatisticInfo.h"

namespace {

using fuzz::AudioModel;
using fuzz::GuardedBuffer;
using fuzz::Input;
using fuzz::VideoModel;
using kalStore::kResultNotFound;

constexpr int kMostOperations = 100;

/// Records of one type, on the heap at their exact size so that a sanitizer sees a read past them; or null.
template <class Record>
class Records {
 public:
  /// Null sometimes, otherwise `count` records. REQUIRES: count >= 0.
  Records(Input& input, int count) {
    const std::uint8_t choice = input.Byte();
    if (choice % 16 == 15) return;
    const std::size_t size = static_cast<std::size_t>(count) * sizeof(Record);
    m_records = std::make_unique<Record[]>(static_cast<std::size_t>(count));
    std::vector<std::uint8_t> bytes(size);
    fuzz::FillPattern(bytes.data(), size, input.As<std::uint16_t>());
    if (size != 0) std::memcpy(m_records.get(), bytes.data(), size);
    m_bytes = std::move(bytes);
  }
  Record* Get() { return m_records.get(); }
  const std::uint8_t* Bytes() const { return m_records ? m_bytes.data() : nullptr; }

 private:
  std::unique_ptr<Record[]> m_records;
  std::vector<std::uint8_t> m_bytes;
};

/// How many records an operation may read for a count, and for an index.
int ForCount(std::int32_t count) {
  return std::clamp(count, 0, fuzz::kLayers);
}
int ForIndex(std::int32_t index) {
  return index >= 0 && index < fuzz::kLayers ? index + 1 : 0;
}

/// A string for a field of `limit` characters: null, or of any length; a long one is not terminated.
class Name {
 public:
  Name(Input& input, std::size_t limit) {
    const std::uint8_t choice = input.Byte();
    if (choice % 8 == 7) return;
    std::string text = input.Text(2 * limit);
    m_text = text.substr(0, text.find('\0'));
    const bool needsEnd = m_text.size() < limit;
    m_buffer = std::make_unique<char[]>(m_text.size() + (needsEnd ? 1 : 0));
    m_text.copy(m_buffer.get(), m_text.size());
    m_text.resize(std::min(m_text.size(), limit));
  }
  const char* Get() const { return m_buffer.get(); }
  const std::string& Stored() const { return m_text; }

 private:
  std::string m_text;
  std::unique_ptr<char[]> m_buffer;
};

/// The reference counting of any statistics object.
template <class Object>
void CheckReferences(Object& object, Input& input) {
  const std::uint32_t count = object.GetReference();
  FUZZ_EQUAL(object.AddRef(), count + 1);
  void* part = &object;
  kal::_tagUUID iid = kalStore::kStatisticsInterfaceId;
  if (input.Flag()) iid = input.As<kal::_tagUUID>();
  const bool isKnown = std::memcmp(&iid, &kalStore::kStatisticsInterfaceId, sizeof iid) == 0;
  FUZZ_EQUAL(object.QueryInterface(iid, &part), isKnown ? 0 : kalStore::kResultNoInterface);
  FUZZ_CHECK(part == (isKnown ? static_cast<kal::CKalUnknownImpl*>(&object) : nullptr));
  FUZZ_EQUAL(object.QueryInterface(iid, nullptr), kalStore::kResultNullOutput);
  if (isKnown) FUZZ_EQUAL(object.Release(), count + 1);
  FUZZ_EQUAL(object.Release(), count);
}

class Video {
 public:
  explicit Video(std::uint32_t callId) : m_object(callId), m_model(callId) { m_object.AddRef(); }

  void Operate(Input& input) {
    Do(input);
    Check(input.Byte());
  }

 private:
  using Streams = Records<kalStore::st_KalVideoStreamStatInfo>;

  void Do(Input& input) {
    VideoModel::Block& tx = m_model.Tx();
    switch (input.Below(25)) {
      case 0: {
        GuardedBuffer<2064> buffer(input.Byte());
        VideoModel::Block block;
        fuzz::FillPattern(block.Bytes(), block.kSize, input.As<std::uint16_t>());
        if (input.Flag()) block.Put(1440, input.Wild());
        buffer.Fill(block);
        FUZZ_EQUAL(m_object.UpdateTxMediaInfo(buffer.Pointer()), 0);
        FUZZ_CHECK(buffer.Contents() == block);
        tx = block;
        return;
      }
      case 1: {
        GuardedBuffer<2064> buffer(input.Byte());
        FUZZ_EQUAL(m_object.UpdateRxMediaInfo(input.Flag() ? buffer.Pointer() : nullptr), kResultNotFound);
        FUZZ_EQUAL(m_object.GetRxMediaInfo(buffer.Pointer(), input.Flag()), kResultNotFound);
        FUZZ_EQUAL(m_object.UpdateTxMediaInfo(nullptr), kResultNotFound);
        FUZZ_EQUAL(m_object.GetTxMediaInfo(nullptr, true), kResultNotFound);
        FUZZ_CHECK(buffer.IsUntouched());
        return;
      }
      case 2: {
        GuardedBuffer<2064> buffer(input.Byte());
        FUZZ_EQUAL(m_object.GetTxMediaInfo(buffer.Pointer(), true), 0);
        FUZZ_CHECK(buffer.Contents() == m_model.Read(true));
        return;
      }
      case 3: {
        const auto callId = input.As<std::uint32_t>();
        m_object.reset(callId);
        return m_model.Reset(callId);
      }
      case 4:
        m_object.resetTxVideoStatisticInfo();
        return m_model.ResetTx();
      case 5: {
        const auto bitrate = input.As<std::uint32_t>(), bitrate2 = input.As<std::uint32_t>();
        const auto fps = input.As<float>();
        m_object.UpdateVideoEncBitrateFps(bitrate, bitrate2, fps);
        tx.Put(1452, fps);
        tx.Put(1456, static_cast<float>(bitrate));
        return tx.Put(1460, static_cast<float>(bitrate2));
      }
      case 6: {
        const auto size = input.As<std::uint32_t>(), size2 = input.As<std::uint32_t>();
        const auto type = input.As<std::int32_t>();
        m_object.UpdateVideoEncFSAndDownType(size, size2, static_cast<kal::KalVideoResDownType>(type));
        tx.Put(1584, size);
        tx.Put(1588, size2);
        return tx.Put(1592, type);
      }
      case 7: {
        const auto count = input.As<std::int32_t>();
        m_object.UpdatePerformanceWarnCnt(count);
        return tx.Put(1480, count);
      }
      case 8: {
        const std::int32_t level = input.Wild();
        m_object.UpdateNoiseLevel(level);
        return m_model.NoiseLevel(level);
      }
      case 9: {
        const auto ratio = input.As<std::uint32_t>();
        m_object.UpdateEncROIAreaRation(ratio);
        return tx.Put(1732, ratio);
      }
      case 10: {
        const auto packed = input.As<std::uint32_t>();
        m_object.UpdateVideoEncResolution(packed);
        tx.Put(1444, packed % 65536);
        return tx.Put(1448, packed / 65536);
      }
      case 11: {
        const bool enabled = input.Flag();
        m_object.UpdateVideoEnableHWEnc(enabled);
        return tx.Put<std::uint8_t>(1500, enabled ? 1 : 0);
      }
      case 12: {
        const std::int32_t count = input.Wild();
        Records<float> fps(input, ForCount(count));
        m_object.UpdateEncodeControlTargetFps(fps.Get(), count);
        if (count >= 1 && count <= 6) m_model.EachLayer(232, fps.Bytes(), count);
        return;
      }
      case 13: {
        const auto first = input.As<std::int32_t>(), second = input.As<std::int32_t>();
        m_object.UpdateVideoProcessInfo(first, second);
        tx.Put(1952, first);
        return tx.Put(1960, second);
      }
      case 14: {
        const auto value = input.As<std::int32_t>();
        const Name name1(input, 15), name2(input, 63);
        m_object.UpdateAV1Metrics(value, name1.Get(), name2.Get());
        tx.Put(1980, value);
        PutName(1984, 16, name1.Stored());
        return PutName(2000, 64, name2.Stored());
      }
      case 15: {
        const auto count = input.As<std::uint32_t>();
        const std::int32_t index = input.Wild();
        const bool all = input.Flag();
        Streams streams(input, all ? ForCount(index) : ForIndex(index));
        m_object.UpdateVideoEncIdrReqNum(count, streams.Get(), index, all);
        return m_model.IdrRequests(count, streams.Bytes(), index, all);
      }
      case 16: {
        const auto count = input.As<std::uint32_t>();
        const std::int32_t index = input.Wild();
        Streams streams(input, ForIndex(index));
        m_object.UpdateVideoEncIdrSentAndReasonCnt(count, streams.Get(), index);
        return m_model.IdrSent(count, streams.Bytes(), index);
      }
      case 17: {
        const auto index = static_cast<std::uint32_t>(input.Wild());
        Records<float> values(input, ForIndex(static_cast<std::int32_t>(index)));
        m_object.UpdateFBufferOcuppiedVideo(values.Get(), index);
        return m_model.OneValue(52, values.Bytes(), index);
      }
      case 18: {
        const std::int32_t count = input.Wild();
        Records<std::uint32_t> profiles(input, ForCount(count));
        m_object.UpdateProfile(profiles.Get(), count);
        return m_model.EachLayer(64, profiles.Bytes(), count);
      }
      case 19: {
        const std::int32_t count = input.Wild(), codec = input.Wild();
        m_object.UpdateEncodeParam(count, static_cast<kal::KalVideoCodecType>(codec));
        tx.Put(1440, count);
        return m_model.Codec(1616, codec);
      }
      case 20: {
        const std::int32_t index = input.Wild();
        const bool clear = input.Flag();
        const auto frames = input.As<std::uint32_t>();
        Streams streams(input, ForIndex(index));
        m_object.UpdateOneVideoLayerInfo(streams.Get(), index, clear, frames);
        return m_model.OneLayer(streams.Bytes(), index, clear, frames);
      }
      case 21: {
        const std::int32_t count = input.Wild();
        Streams streams(input, ForCount(count));
        m_object.UpdateStreamsInfo(streams.Get(), count);
        return m_model.Streams(streams.Bytes(), count);
      }
      case 22: {
        const std::int32_t count = input.Wild();
        Streams streams(input, ForCount(count));
        m_object.UpdateVideoConfigureChange(streams.Get(), count);
        return m_model.ConfigureChange(streams.Bytes(), count);
      }
      case 23: {
        const auto encoded = input.As<std::uint32_t>(), captured = input.As<std::uint32_t>(),
                   fed = input.As<std::uint32_t>();
        m_object.UpdateVideoEncFrameCnt(encoded);
        m_object.UpdateVideoCapturedFrameCnt(captured);
        m_object.UpdateVideoFeedToEncoderFramesCnt(fed);
        tx.Put(1488, encoded);
        tx.Put<std::uint64_t>(1536, captured);
        return tx.Put<std::uint64_t>(1568, fed);
      }
      default: {
        const auto other1 = input.As<float>(), other2 = input.As<float>();
        const auto other3 = input.As<std::uint32_t>(), other7 = input.As<std::uint32_t>();
        const auto other5 = static_cast<unsigned long>(input.As<std::uint64_t>());
        const std::int32_t codec = input.Wild(), other6 = input.Wild();
        m_object.UpdateVideoEncOtherInfo(other1, other2, other3, static_cast<kal::KalVideoCodecType>(codec),
                                         other5, other6, other7);
        tx.Put(1528, other1);
        tx.Put(1520, other2);
        tx.Put(1476, other3);
        m_model.Codec(1616, codec);
        tx.Put<std::uint64_t>(1600, other5);
        tx.Put(1580, other6);
        tx.Put(1736, other7);
        return CheckReferences(m_object, input);
      }
    }
  }

  // The string and its NUL; the characters after it are left to the object.
  void PutName(std::size_t offset, std::size_t size, const std::string& text) {
    GuardedBuffer<2064> buffer(0);
    FUZZ_EQUAL(m_object.GetTxMediaInfo(buffer.Pointer(), false), 0);
    const VideoModel::Block now = buffer.Contents();
    for (std::size_t i = 0; i < size; ++i) {
      const char stored = now.At<char>(offset + i);
      if (i <= text.size()) FUZZ_EQUAL(stored, i < text.size() ? text[i] : '\0');
      m_model.Tx().Put(offset + i, stored);
    }
  }

  void Check(std::size_t misalignment) {
    GuardedBuffer<2064> buffer(misalignment);
    FUZZ_EQUAL(m_object.GetTxMediaInfo(buffer.Pointer(), false), 0);
    FUZZ_CHECK(buffer.Contents() == m_model.Read(false));
    FUZZ_EQUAL(m_object.GetCallId(), m_model.CallId());
    FUZZ_EQUAL(m_object.GetReference(), 1U);
  }

  KalContentVideoStatisticInfo m_object;
  VideoModel m_model;
};

class Audio {
 public:
  explicit Audio(std::uint32_t callId) : m_object(callId), m_model(callId) { m_object.AddRef(); }

  void Operate(Input& input) {
    const std::int32_t stream = input.Wild();
    Do(input, stream);
    CheckTx(input);
    ReadStream(input, stream, false);
  }
  /// After the last operation: also the streams that no operation named.
  void CheckAll(Input& input) {
    CheckTx(input);
    for (std::int32_t stream = -1; stream <= fuzz::kStreams; ++stream) ReadStream(input, stream, false);
  }

 private:
  void Do(Input& input, std::int32_t stream) {
    AudioModel::Block& tx = m_model.Tx();
    AudioModel::Block& rx = m_model.Rx(stream);
    switch (input.Below(18)) {
      case 0: {
        GuardedBuffer<260> buffer(input.Byte());
        AudioModel::Block block;
        fuzz::FillPattern(block.Bytes(), block.kSize, input.As<std::uint16_t>());
        buffer.Fill(block);
        FUZZ_EQUAL(m_object.UpdateTxMediaInfo(buffer.Pointer()), 0);
        FUZZ_CHECK(buffer.Contents() == block);
        tx = block;
        return;
      }
      case 1: {
        GuardedBuffer<260> buffer(input.Byte());
        FUZZ_EQUAL(m_object.UpdateRxMediaInfo(buffer.Pointer()), kResultNotFound);
        FUZZ_EQUAL(m_object.GetRxMediaInfo(input.Flag() ? buffer.Pointer() : nullptr, input.Flag()), 0);
        FUZZ_EQUAL(m_object.UpdateTxMediaInfo(nullptr), kResultNotFound);
        FUZZ_EQUAL(m_object.GetTxMediaInfo(nullptr, true), kResultNotFound);
        FUZZ_EQUAL(m_object.GetRxAudioInfo(nullptr, stream, true), kResultNotFound);
        FUZZ_EQUAL(m_object.GetAVSyncInfo(nullptr, stream), kResultNotFound);
        FUZZ_CHECK(buffer.IsUntouched());
        return;
      }
      case 2: {
        GuardedBuffer<260> buffer(input.Byte());
        FUZZ_EQUAL(m_object.GetTxMediaInfo(buffer.Pointer(), true), 0);
        FUZZ_CHECK(buffer.Contents() == m_model.ReadTx(true));
        return;
      }
      case 3:
        return ReadStream(input, stream, true);
      case 4: {
        const auto callId = input.As<std::uint32_t>();
        m_object.reset(callId);
        return m_model.Reset(callId);
      }
      case 5: {
        kalStore::st_KalAudioCodecStatisticsInfo codec;
        std::uint8_t bytes[sizeof codec];
        fuzz::FillPattern(bytes, sizeof bytes, input.As<std::uint16_t>());
        const std::int32_t type = input.Byte();
        std::memcpy(bytes + 8, &type, sizeof type);
        std::memcpy(&codec, bytes, sizeof codec);
        m_object.updateSendCodecInfo(codec);
        std::memcpy(tx.Bytes(), bytes, 8);
        AudioModel::PayloadType(tx, type);
        std::memcpy(tx.Bytes() + 56, bytes + 12, 4);
        AudioModel::Wide(tx, 96, codec.stat16);
        return AudioModel::Wide(tx, 104, codec.stat24);
      }
      case 6: {
        const auto bitrate = input.As<std::uint32_t>();
        m_object.updateTxBitRate(bitrate);
        return tx.Put(8, bitrate);
      }
      case 7: {
        const auto bitrate = input.As<std::uint32_t>();
        m_object.updateRxBitRate(stream, bitrate);
        return rx.Put(8, bitrate);
      }
      case 8: {
        const auto count = input.As<std::uint32_t>();
        m_object.updateUnstableEventCount(count);
        return tx.Put(116, count);
      }
      case 9: {
        const auto first = input.As<float>(), second = input.As<float>(), third = input.As<float>();
        m_object.updateAECLevel(first, second, third);
        m_object.updateNoiseLevel(third, first, second);
        m_object.updateSpeechLevel(second, third, first);
        AudioModel::Triple(tx, 72, first, second, third);
        AudioModel::Triple(tx, 60, third, first, second);
        return AudioModel::Triple(tx, 84, second, third, first);
      }
      case 10: {
        const std::int32_t type = input.Flag() ? input.Byte() : input.Wild();
        m_object.updatePayloadType(stream, static_cast<kalStore::KAL_AUDIO_PAYLOAD_TYPE>(type));
        return AudioModel::PayloadType(rx, type);
      }
      case 11: {
        const bool lbrr = input.Flag();
        const auto word = input.As<std::uint32_t>();
        m_object.updateDecodeInfo(stream, lbrr, word);
        rx.Put<std::uint8_t>(0, lbrr ? 1 : 0);
        return rx.Put(4, word);
      }
      case 12: {
        kalStore::st_KalAudioJitterBufferStatistics jitter;
        std::uint8_t bytes[sizeof jitter];
        fuzz::FillPattern(bytes, sizeof bytes, input.As<std::uint16_t>());
        std::memcpy(&jitter, bytes, sizeof jitter);
        const auto first = input.As<std::int32_t>(), second = input.As<std::int32_t>();
        m_object.updateJitterBufferStatistics(stream, jitter, first, second);
        rx.Put(108, static_cast<std::uint8_t>(first & 0xFF));
        rx.Put(109, static_cast<std::uint8_t>(second & 0xFF));
        std::memcpy(rx.Bytes() + 112, bytes + 36, 4);
        std::memcpy(rx.Bytes() + 120, bytes + 12, 4);
        std::memcpy(rx.Bytes() + 124, bytes + 8, 4);
        std::memcpy(rx.Bytes() + 128, bytes + 16, 4);
        AudioModel::Wide(rx, 132, jitter.stat40);
        std::memcpy(rx.Bytes() + 140, bytes + 48, 4);
        return;
      }
      case 13: {
        const auto first = input.As<std::uint32_t>(), second = input.As<std::uint32_t>(),
                   third = input.As<std::uint32_t>();
        m_object.updateE2EDelayInfo(stream, first, second, third);
        rx.Put(196, first);
        rx.Put(200, second);
        return rx.Put(204, third);
      }
      case 14: {
        const bool lbrr = input.Flag();
        m_object.updateCodecStaticsLBRRflag(stream, lbrr);
        return rx.Put<std::uint8_t>(0, lbrr ? 1 : 0);
      }
      case 15: {
        const bool lbrr = input.Flag();
        m_object.updateCodecStaticsLBRRflag(lbrr);
        return tx.Put<std::uint8_t>(0, lbrr ? 1 : 0);
      }
      case 16: {
        const auto milliseconds = input.As<std::uint32_t>();
        m_object.updateTxEncodeDropFrameinMS(milliseconds);
        return tx.Put(56, milliseconds);
      }
      default: {
        kal::_tagSyncStatistics sync;
        AudioModel::Sync block;
        fuzz::FillPattern(block.Bytes(), block.kSize, input.As<std::uint16_t>());
        std::memcpy(&sync, block.Bytes(), sizeof sync);
        m_object.updateAVSyncStatistics(stream, sync);
        m_model.SyncOf(stream) = block;
        return CheckReferences(m_object, input);
      }
    }
  }

  void ReadStream(Input& input, std::int32_t stream, bool reset) {
    GuardedBuffer<260> buffer(input.Byte());
    GuardedBuffer<120> sync(input.Byte());
    const bool isStream = AudioModel::IsStream(stream);
    FUZZ_EQUAL(m_object.GetRxAudioInfo(buffer.Pointer(), stream, reset), isStream ? 0 : kResultNotFound);
    FUZZ_EQUAL(m_object.GetAVSyncInfo(sync.Pointer(), stream), isStream ? 0 : kResultNotFound);
    if (!isStream) {
      FUZZ_CHECK(buffer.IsUntouched() && sync.IsUntouched());
      return;
    }
    FUZZ_CHECK(buffer.Contents() == m_model.ReadRx(stream, reset));
    FUZZ_CHECK(sync.Contents() == m_model.SyncOf(stream));
  }

  void CheckTx(Input& input) {
    GuardedBuffer<260> buffer(input.Byte());
    FUZZ_EQUAL(m_object.GetTxMediaInfo(buffer.Pointer(), false), 0);
    FUZZ_CHECK(buffer.Contents() == m_model.ReadTx(false));
    FUZZ_EQUAL(m_object.GetCallId(), m_model.CallId());
    FUZZ_EQUAL(m_object.GetReference(), 1U);
  }

  KalContentAudioStatisticInfo m_object;
  AudioModel m_model;
};

/// The process's registry, compared with a map of counts.
class Registry {
 public:
  ~Registry() {
    while (!m_counts.empty()) Release(m_counts.begin()->first);
  }

  void Operate(Input& input) {
    constexpr std::uint32_t kCallIds[] = {0, 1, 7, kalStore::kNoCallId};
    const auto type =
        static_cast<kalStore::KalTesselEntityType>(input.Flag() ? input.Byte() % 4 : input.Wild());
    const Key key(type, input.Pick(kCallIds));
    switch (input.Below(5)) {
      case 0:
      case 1:
        return Create(key);
      case 2:
        return Release(key);
      case 3:
        return ReleaseObject(key);
      default:
        FUZZ_EQUAL(kalStore::createTesselEntity(key.first, key.second, nullptr), kResultNotFound);
        FUZZ_EQUAL(kalStore::releaseTesselEntity(key.first, key.second, nullptr), -1);
        FUZZ_EQUAL(kalStore::kalTesselInstant.isTesselEntityExisted(key.first, key.second),
                   m_counts.contains(key));
    }
  }

 private:
  using Key = std::pair<kalStore::KalTesselEntityType, std::uint32_t>;
  struct Held {
    void* entity;
    int count;
  };

  void Create(const Key& key) {
    void* entity = this;
    const bool isKnown = key.first >= 0 && key.first < 4;
    FUZZ_EQUAL(kalStore::createTesselEntity(key.first, key.second, &entity), isKnown ? 0 : kResultNotFound);
    FUZZ_EQUAL(entity != nullptr, isKnown);
    if (!isKnown) return;
    Held& held = m_counts.try_emplace(key, Held{entity, 0}).first->second;
    FUZZ_CHECK(held.entity == entity);
    ++held.count;
    FUZZ_EQUAL(MediaOf(key, entity)->GetCallId(), key.second);
  }

  static kalStore::IKalMediaInfo* MediaOf(const Key& key, void* entity) {
    const bool isVideo =
        key.first == kalStore::KAL_TESSEL_VIDEO || key.first == kalStore::KAL_TESSEL_CONTENT_VIDEO;
    if (isVideo) return static_cast<kalStore::IKalVideoInfo*>(entity);
    return static_cast<kalStore::IKalAudioInfo*>(entity);
  }

  // By the object itself: the last reference also ends its registration.
  void ReleaseObject(const Key& key) {
    const auto found = m_counts.find(key);
    if (found == m_counts.end()) return;
    const auto left = static_cast<std::uint32_t>(--found->second.count);
    FUZZ_EQUAL(dynamic_cast<kal::IKalUnknown*>(MediaOf(key, found->second.entity))->Release(), left);
    if (left == 0) m_counts.erase(found);
  }

  // Any pointer that is not null does.
  void Release(const Key& key) {
    const auto found = m_counts.find(key);
    const int left = found == m_counts.end() ? -1 : --found->second.count;
    FUZZ_EQUAL(kalStore::releaseTesselEntity(key.first, key.second, this), left);
    if (left == 0) m_counts.erase(found);
  }

  std::map<Key, Held> m_counts;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::CheckTraceLines();
  Input input(data, size);
  const auto video = std::make_unique<Video>(input.Byte());
  const auto audio = std::make_unique<Audio>(input.Byte());
  Registry registry;
  for (int i = 0; i < kMostOperations && !input.IsEmpty(); ++i) {
    switch (input.Below(4)) {
      case 0:
        audio->Operate(input);
        break;
      case 1:
        registry.Operate(input);
        break;
      default:
        video->Operate(input);
    }
  }
  audio->CheckAll(input);
  return 0;
}
