// SPDX-License-Identifier: Apache-2.0
#include "SoakCalls.h"

#include "SoakTrace.h"
#include "tessel/CKalTessel.h"
#include "tessel/tessel.h"

using namespace kalStore;

namespace {

constexpr std::uint32_t kFirstCall = 1000;

}  // namespace

SoakCalls::Visit::Visit(SoakCalls& calls, std::size_t slot) : m_calls(calls) {
  const std::lock_guard lock(m_calls.m_mutex);
  m_call = m_calls.m_slots[slot];
  ++m_call->components;
}

SoakCalls::Visit::~Visit() {
  const std::lock_guard lock(m_calls.m_mutex);
  if (--m_call->components == 0) m_calls.m_left.notify_all();
}

SoakCalls::SoakCalls(std::size_t slots) {
  for (std::size_t slot = 0; slot < slots; ++slot) m_slots.push_back(begin());
}

void SoakCalls::Replace(std::size_t slot) {
  std::shared_ptr<Call> call = begin();
  {
    std::unique_lock lock(m_mutex);
    m_slots[slot].swap(call);
    m_left.wait(lock, [&] { return call->components == 0; });
  }
  end(*call);
}

void SoakCalls::EndAll() {
  for (const std::shared_ptr<Call>& call : m_slots) end(*call);
  m_slots.clear();
}

std::shared_ptr<SoakCalls::Call> SoakCalls::begin() {
  auto call = std::make_shared<Call>();
  call->id = kFirstCall + m_begun++;
  if (CreateKalConfig(call->id, &call->store) != kResultOk) ++m_leftovers;
  return call;
}

void SoakCalls::end(Call& call) {
  m_leftovers += SoakTrace::TotalObservers(*call.store);
  for (int type = KAL_TESSEL_AUDIO; type <= KAL_TESSEL_CONTENT_AUDIO; ++type) {
    m_leftovers +=
        kalTesselInstant.isTesselEntityExisted(static_cast<KalTesselEntityType>(type), call.id) ? 1 : 0;
  }
  if (CleanUpKalConfig(call.id) != kResultOk) ++m_leftovers;
  if (ReleaseKalConfig(call.store) != kResultOk) ++m_leftovers;
  // That was the last reference: the registry knows the store no more.
  if (CleanUpKalConfig(call.id) != kResultNoSuchOrExists) ++m_leftovers;
}
