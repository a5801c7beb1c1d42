// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "simulate/Component.h"
#include "tessel/StatsRef.h"

namespace simulate {

/// Reads the statistics of the call with reset, in equal intervals.
class Reporter : public Component {
 public:
  explicit Reporter(const CallContext& call);

  /// Reads what is left. Only when nothing runs in the call any more.
  void ReadLast() { read(); }

 private:
  void work(RunTime now, double elapsed) override;
  CallSettings& settings() override { return m_settings; }
  void read();

  double m_sinceLast = 0;
  kalStore::StatsRef<kalStore::AudioStats> m_audio;
  kalStore::StatsRef<kalStore::VideoStats> m_video;
  CallSettings m_settings;
};

}  // namespace simulate
