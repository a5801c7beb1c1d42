// SPDX-License-Identifier: Apache-2.0
#include <tessel/tessel.h>

#include <cstdio>

#include "codec_settings.h"
#include "limits_settings.h"
#include "sender_settings.h"

int PacketBytes(kalStore::KalConfigHelper& call);

int main() {
  kalStore::KalConfigHelper call(7);
  codec::kPacketBytes.Set(call, 900);
  std::printf("%d %d %d %d\n", PacketBytes(call), settings::kVideoMaxFps.Get(call),
              settings::kVideoMinFps.Get(call), settings::kCommonLimit.Get(call));
  kalStore::CleanUpKalConfig(7);
}
