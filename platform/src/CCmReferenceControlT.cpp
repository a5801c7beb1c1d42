#include "util/CCmReferenceControlT.h"

CCmReferenceControlT<CCmMutexThread>::~CCmReferenceControlT() = default;

void CCmReferenceControlT<CCmMutexThread>::OnReferenceDestory() {
  delete this;
}

std::uint32_t CCmReferenceControlT<CCmMutexThread>::AddReference() {
  // Relaxed: whoever adds a reference holds one already, or received the object in a synchronised way.
  return static_cast<std::uint32_t>(m_references.fetch_add(1, std::memory_order_relaxed) + 1);
}

std::uint32_t CCmReferenceControlT<CCmMutexThread>::ReleaseReference() {
  // Release: what this owner did to the object comes before its deletion by the last one, which acquires.
  const std::int64_t left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (left == 0) OnReferenceDestory();
  return static_cast<std::uint32_t>(left);
}

std::uint32_t CCmReferenceControlT<CCmMutexThread>::ReferenceCount() const {
  return static_cast<std::uint32_t>(m_references.load(std::memory_order_relaxed));
}
