// SPDX-License-Identifier: Apache-2.0
#include "codec_settings.h"

#include <tessel/tessel.h>

int PacketBytes(kalStore::KalConfigHelper& call);

int PacketBytes(kalStore::KalConfigHelper& call) {
  return codec::kPacketBytes.Get(call);
}
