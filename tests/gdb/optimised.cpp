// SPDX-License-Identifier: Apache-2.0
#include "optimised.h"

#include <tessel/tessel.h>

void Stop();

void ShowOptimised(int count) {
  const ConfigData unused(count);
  const ConfigData moved = ConfigData(true);
  const json::Value number(count + 1);
  const json::Array none;
  const timer_fact<timer_policy> meter(count);
  kalStore::st_KalUInt64 wide{};
  wide.low = static_cast<unsigned int>(count) * 3;
  [[maybe_unused]] kalStore::st_KalAudioCodecStatisticsInfo codec{};
  codec.stat4 = wide.low;
  Stop();
}
