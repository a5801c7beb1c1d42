#pragma once

/// @file
/// The process-wide registry: one store per call id, counted references. A store is created with two
/// references, its creator's and the registry's own; CleanUpKalConfig() gives back the latter when the call
/// ends. At zero the store is destroyed.
///
/// No operation throws for bad input; failed allocations leave CreateKalConfig() as exceptions, with the
/// registry as it was.
///
/// @threads Any thread may call; one recursive lock serialises all operations, and a store is constructed and
/// destroyed under it. Calls wait for nothing else.
/// @par Example
/// @code{.cpp}
/// IKalConfig* first = nullptr;
/// IKalConfig* second = nullptr;
/// assert(CreateKalConfig(7, &first) == kResultOk);
/// assert(CreateKalConfig(7, &second) == kResultOk && second == first);
/// first->SetKalConfig(KAL_CONFIG_GROUP_COMMON, "Locale", "de", false, false);
/// ConfigData value;
/// assert(GetKalConfigValueEx(KAL_CONFIG_GROUP_COMMON, "Locale", value, 7) == kResultOk);
///
/// assert(CleanUpKalConfig(7) == kResultOk);  // the call has ended
/// assert(ReleaseKalConfig(first) == kResultOk && ReleaseKalConfig(second) == kResultOk);
/// assert(GetKalConfigSizeForUT() == 0);
/// @endcode

#include <cstdint>

#include "tessel/IKalConfig.h"
#include "tessel/KalSessionType.h"
#include "tessel/export.h"

namespace kalStore {
extern "C" {

/// Creates the store of a call, or shares the one there is.
/// @param callId  any
/// @param ppConfig  a slot that holds null; receives one reference, to be given back with ReleaseKalConfig()
/// @return 0; 0x46004003 when `ppConfig` is null or the slot is not empty, with nothing changed.
TESSEL_API std::int32_t CreateKalConfig(std::uint32_t callId, IKalConfig** ppConfig);

/// Gives back one reference.
/// @param pConfig  as CreateKalConfig() gave it
/// @return 0; 0x46004003 for null, 0x46000001 when it is no store of the registry.
/// @invalidates With the caller's last reference, the pointer and the texts of DumpKalConfigs().
TESSEL_API std::int32_t ReleaseKalConfig(IKalConfig* pConfig);

/// Gives back the registry's own reference: the call has ended. The store lives on while users hold it, and a
/// CreateKalConfig() for the call shares it.
/// @param callId  the call's
/// @return 0; 0x46000001 when there is no store, or it was cleaned up before.
TESSEL_API std::int32_t CleanUpKalConfig(std::uint32_t callId);

/// Destroys every store, whatever its references: for shutdown.
/// @invalidates Every pointer to a store; what holds one, a KalConfigHelper too, must be gone before.
TESSEL_API void DestroyKalConfig();

/// Reads one value of a call, in the group of a session type. A read for a call that has no store leaves an
/// empty one behind, held by the registry alone, until CleanUpKalConfig() or DestroyKalConfig().
/// @param sessionType  0 to 5, or 14
/// @param szConfigName  not null, not empty
/// @param value  receives a copy
/// @param callId  not 0xFFFFFFFF
/// @return 0; 0x46004001 when there is no such value, with `value` made invalid, or the session type has no
/// group, with `value` untouched; 0x46004003 for a bad name or call id, with `value` untouched.
TESSEL_API std::int32_t GetKalConfigValue(kal::KalSessionType sessionType, const char* szConfigName,
                                          ConfigData& value, std::uint32_t callId);
/// The same in a group.
/// @param group  0 to 12
/// @param szConfigName  not null, not empty
/// @param value  receives a copy
/// @param callId  not 0xFFFFFFFF
/// @return 0; 0x46004001 when there is no such value, with `value` made invalid, or for
/// KAL_CONFIG_GROUP_DEFAULT, with `value` untouched; 0x46004003 for any other bad argument, with `value`
/// untouched.
TESSEL_API std::int32_t GetKalConfigValueEx(KalConfigGroup group, const char* szConfigName, ConfigData& value,
                                            std::uint32_t callId);

/// @return The number of stores, for unit tests.
TESSEL_API std::uint32_t GetKalConfigSizeForUT();

}  // extern "C"
}  // namespace kalStore
