// SPDX-License-Identifier: Apache-2.0
// A media component as the engine uses it: made before its call is known, notified of its settings on its own
// thread, and destroyed while others still change them. settings.json declares these; the build makes of it
// the header with their keys.
#include <component_settings.h>

#include <atomic>
#include <iostream>
#include <string>

#include "tessel/tessel.h"
#include "tessel/typed.h"
#include "util/util.h"

namespace {

using audio_sender::kBitrate;
using audio_sender::kDetectMusic;
using kalStore::ConfigReading;
using kalStore::KalConfigHelper;

class AudioSender {
 public:
  AudioSender() {
    m_thread.Start();
    // No call yet: the facade records the subscription, and JoinCall() makes it. Posted, so that no setter
    // waits.
    m_subscription = kBitrate.Subscribe(
        m_settings, [this](const ConfigReading<int>& bitrate) { onBitrate(bitrate.value); }, &m_thread, true);
  }

  bool JoinCall(std::uint32_t callId) {
    if (m_settings.SetCallId(callId) != kalStore::kResultOk) return false;
    m_detectMusic = kDetectMusic.Get(m_settings);
    return true;
  }

  bool DetectsMusic() const { return m_detectMusic; }

  /// Returns the bit rate once it is `expected`.
  int WaitForBitrate(int expected) const {
    for (int now = m_bitrate; now != expected; now = m_bitrate) m_bitrate.wait(now);
    return expected;
  }

 private:
  void onBitrate(int bitrate) {
    m_bitrate = bitrate;
    m_bitrate.notify_all();
  }

  bool m_detectMusic = true;
  std::atomic<int> m_bitrate{0};
  ACmThread m_thread{"audio-sender"};
  KalConfigHelper m_settings;
  // The last of all: it ends first, and no callback runs after that.
  kalStore::Subscription m_subscription;
};

}  // namespace

int main() {
  constexpr std::uint32_t kCall = 7;
  KalConfigHelper application(kCall);
  kBitrate.Set(application, 32000);
  kDetectMusic.Set(application, false);
  {
    AudioSender sender;
    if (!sender.JoinCall(kCall)) return 1;
    std::cout << "joined at " << sender.WaitForBitrate(32000) << " bit/s, music detection "
              << (sender.DetectsMusic() ? "on" : "off") << '\n';
    kBitrate.Set(application, 24000);
    std::cout << "adapted to " << sender.WaitForBitrate(24000) << " bit/s\n";
    // The delivery may still be on its way when the sender ends.
    kBitrate.Set(application, 16000);
  }
  const bool isAlone =
      application.SetKalConfig(kal::KAL_SESSION_AUDIO, "Bitrate", 8000) == kalStore::kResultNobody;
  std::cout << "left, " << (isAlone ? "nobody listens" : "someone still listens") << '\n';
  return isAlone && kalStore::CleanUpKalConfig(kCall) == kalStore::kResultOk ? 0 : 1;
}
