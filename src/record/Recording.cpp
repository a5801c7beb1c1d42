// SPDX-License-Identifier: Apache-2.0
#include "tessel/record.h"

#include <utility>

#include "record/RecordingRun.h"

namespace kalStore {

using namespace internal;

Recording::Recording(std::string file, RecordingOptions options)
    : m_run(std::make_shared<RecordingRun>(std::move(file), std::move(options))) {
  RecordingRun::Start(m_run);
}

Recording::~Recording() {
  m_run->End();
}

std::int32_t Recording::Flush() {
  return m_run->Flush();
}

bool Recording::IsOn() const {
  return m_run->IsOn();
}

}  // namespace kalStore
