// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>

/// @cond
namespace kalStore {

class CKalTessel;
enum KalTesselEntityType : std::int32_t;

namespace internal {

struct EntityParts;  // What the registry reaches of an object; sees its private members.

// The entry of a statistics object in the registry that hands it out. The end of the object erases it,
// also when the last reference is released by the object's own Release().
class Registration {
 public:
  Registration() = default;
  // Erases the entry, unless a new object has taken it. Takes the registry's lock.
  ~Registration();
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

  // All three are called with the registry's lock held.
  void Enter(CKalTessel& registry, KalTesselEntityType type, std::uint32_t callId);
  void Leave() { m_registry.store(nullptr); }
  // Leaves an entry that a new object takes while this one is ending.
  void LeaveToAnother();

 private:
  static constexpr auto kNeverEntered = static_cast<KalTesselEntityType>(-1);

  void writeEnd() const;

  std::atomic<CKalTessel*> m_registry{nullptr};  // Null when the object has no entry.
  KalTesselEntityType m_type = kNeverEntered;    // With m_callId the entry's key; constant once entered.
  std::uint32_t m_callId = 0;
  std::uint64_t m_endNumber =
      0;  // Of the journal's event of the end; 0: none yet. Set before m_registry is null.
};

}  // namespace internal

}  // namespace kalStore
/// @endcond
