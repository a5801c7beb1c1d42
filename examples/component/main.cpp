// SPDX-License-Identifier: Apache-2.0
// A media component as the engine uses it: made before its call is known, notified of its settings on its own
// thread, and destroyed while others still change them.
#include <atomic>
#include <iostream>
#include <string>

#include "tessel/tessel.h"
#include "util/util.h"

namespace {

using kalStore::KalConfigEvent;
using kalStore::KalConfigHelper;

class AudioSender {
 public:
  AudioSender() {
    m_thread.Start();
    m_settings.SetKalSessionType(kal::KAL_SESSION_AUDIO);
    // No call yet: the facade records the subscription, and JoinCall() makes it. Posted, so that no setter
    // waits.
    m_settings.SubscribeConfig(
        "Bitrate", [this](const KalConfigEvent& event) { onBitrate(event); },
        kalStore::KAL_CONFIG_GROUP_DEFAULT, &m_thread, true);
  }

  bool JoinCall(std::uint32_t callId) {
    if (m_settings.SetCallId(callId) != kalStore::kResultOk) return false;
    // A toggle that is not set is on.
    m_detectMusic = m_settings.IsFeatureToggleDefaultOn(kalStore::KAL_FT_EnableMusicDetection);
    return true;
  }

  bool DetectsMusic() const { return m_detectMusic; }

  /// Returns the bit rate once it is `expected`.
  int WaitForBitrate(int expected) const {
    for (int now = m_bitrate; now != expected; now = m_bitrate) m_bitrate.wait(now);
    return expected;
  }

 private:
  void onBitrate(const KalConfigEvent& event) {
    m_bitrate = event.m_newValue.ToInt();
    m_bitrate.notify_all();
  }

  bool m_detectMusic = true;
  std::atomic<int> m_bitrate{0};
  ACmThread m_thread{"audio-sender"};
  // The last of what callbacks use: it is destroyed first, and no callback runs after that. A Subscription
  // through this facade would come after it.
  KalConfigHelper m_settings;
};

}  // namespace

int main() {
  constexpr std::uint32_t kCall = 7;
  KalConfigHelper application(kCall);
  application.SetKalConfig(kal::KAL_SESSION_AUDIO, "Bitrate", 32000);
  application.SetFeatureToggle(kalStore::KAL_FT_EnableMusicDetection, "false");
  {
    AudioSender sender;
    if (!sender.JoinCall(kCall)) return 1;
    std::cout << "joined at " << sender.WaitForBitrate(32000) << " bit/s, music detection "
              << (sender.DetectsMusic() ? "on" : "off") << '\n';
    application.SetKalConfig(kal::KAL_SESSION_AUDIO, "Bitrate", 24000);
    std::cout << "adapted to " << sender.WaitForBitrate(24000) << " bit/s\n";
    // The delivery may still be on its way when the sender ends.
    application.SetKalConfig(kal::KAL_SESSION_AUDIO, "Bitrate", 16000);
  }
  const bool isAlone =
      application.SetKalConfig(kal::KAL_SESSION_AUDIO, "Bitrate", 8000) == kalStore::kResultNobody;
  std::cout << "left, " << (isAlone ? "nobody listens" : "someone still listens") << '\n';
  return isAlone && kalStore::CleanUpKalConfig(kCall) == kalStore::kResultOk ? 0 : 1;
}
