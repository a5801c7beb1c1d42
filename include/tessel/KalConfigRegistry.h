#pragma once

#include <cstdint>

#include "tessel/IKalConfig.h"
#include "tessel/KalSessionType.h"
#include "tessel/export.h"

/// The process-wide registry: one store per call id, counted references. A store is created with two
/// references, its creator's and the registry's own; CleanUpKalConfig() gives back the latter when the call
/// ends. At zero the store is destroyed.
///
/// Threads: any thread may call; one recursive lock serialises all operations, and a store is constructed and
/// destroyed under it. Calls wait for nothing else. No operation throws for bad input; failed allocations
/// leave CreateKalConfig() as exceptions, with the registry as it was.
namespace kalStore {
extern "C" {

/// Creates the store of a call, or shares the one there is. REQUIRES of the slot: `*ppConfig` is null.
/// 0 with one reference in `*ppConfig`, to be given back with ReleaseKalConfig(); 0x46004003 when `ppConfig`
/// is null or the slot is not empty, with nothing changed.
TESSEL_API std::int32_t CreateKalConfig(std::uint32_t callId, IKalConfig** ppConfig);

/// Gives back one reference; the pointer must not be used after its last one.
/// 0; 0x46004003 for null, 0x46000001 when it is no store of the registry.
TESSEL_API std::int32_t ReleaseKalConfig(IKalConfig* pConfig);

/// Gives back the registry's own reference: the call has ended. The store lives on while users hold it, and a
/// CreateKalConfig() for the call shares it. 0; 0x46000001 when there is no store, or it was cleaned up
/// before.
TESSEL_API std::int32_t CleanUpKalConfig(std::uint32_t callId);

/// Destroys every store, whatever its references: for shutdown. Pointers that users still hold dangle.
TESSEL_API void DestroyKalConfig();

/// Reads one value of a call in the group of a session type, or in an explicit group, as KalConfigHelper's
/// GetKalConfig() would: 0; 0x46004003 also for call id 0xFFFFFFFF. A read for a call that has no store
/// leaves an empty one behind, held by the registry alone, until CleanUpKalConfig() or DestroyKalConfig().
TESSEL_API std::int32_t GetKalConfigValue(kal::KalSessionType sessionType, const char* szConfigName,
                                          ConfigData& value, std::uint32_t callId);
TESSEL_API std::int32_t GetKalConfigValueEx(KalConfigGroup group, const char* szConfigName, ConfigData& value,
                                            std::uint32_t callId);

/// The number of stores, for unit tests.
TESSEL_API std::uint32_t GetKalConfigSizeForUT();

}  // extern "C"
}  // namespace kalStore
