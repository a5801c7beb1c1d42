// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The process-wide registry: one store per call id, counted references. A store is created with two
/// references, its creator's and the registry's own; CleanUpKalConfig() releases the latter when the call
/// ends. At zero the store is destroyed.
///
/// No operation throws for bad input. Failed allocations leave CreateKalConfig() and the value readers as
/// exceptions, with the registry as it was; nothing else throws for lack of memory. A lock that fails is a
/// std::system_error.
///
/// What is left when the process exits is destroyed then: after the static objects that were constructed
/// since the library was loaded or first used. What ends later still finds a registry, an empty one.
///
/// @threads Any thread may call; one recursive lock serialises all operations, and a store is constructed and
/// destroyed under it. So are most lines traced: a trace sink, and what callbacks captured when it ends with
/// a store, may call any operation, but must not wait there for another thread that does.
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
/// @param ppConfig  a slot that holds null; receives one reference, to be released with ReleaseKalConfig()
/// @return kResultOk; kResultBadArgument when `ppConfig` is null or the slot is not empty, with nothing
/// changed.
TESSEL_API std::int32_t CreateKalConfig(std::uint32_t callId, IKalConfig** ppConfig);

/// Releases one reference.
/// @param pConfig  as CreateKalConfig() gave it
/// @return kResultOk; kResultBadArgument for null, kResultNoSuchOrExists when it is no store of the registry.
/// @invalidates With the caller's last reference, the pointer and the texts of DumpKalConfigs().
TESSEL_API std::int32_t ReleaseKalConfig(IKalConfig* pConfig);

/// Releases the registry's own reference: the call has ended. The store lives on while users hold it, and a
/// CreateKalConfig() for the call shares it.
/// @return kResultOk; kResultNoSuchOrExists when there is no store, or it was cleaned up before.
TESSEL_API std::int32_t CleanUpKalConfig(std::uint32_t callId);

/// Destroys every store, whatever its references: for shutdown. What callbacks captured ends first, and may
/// hold facades and subscriptions of any call; what a callback captured that is running ends after it, and
/// must hold none.
/// @invalidates Every pointer to a store; what else holds one, a KalConfigHelper too, must be gone before.
TESSEL_API void DestroyKalConfig();

/// Reads one value of a call, in the group of a session type. A read for a call that has no store leaves an
/// empty one behind, held by the registry alone, until CleanUpKalConfig() or DestroyKalConfig().
/// @param sessionType  0 to 5, or 14
/// @param szConfigName  not null, not empty
/// @param value  receives a copy
/// @param callId  not 0xFFFFFFFF
/// @return kResultOk; kResultNotFound when there is no such value, with `value` made invalid, or the session
/// type has no group, with `value` untouched; kResultBadArgument for a bad name or call id, with `value`
/// untouched.
TESSEL_API std::int32_t GetKalConfigValue(kal::KalSessionType sessionType, const char* szConfigName,
                                          ConfigData& value, std::uint32_t callId);
/// The same in a group.
/// @param group  0 to 12
/// @param szConfigName  not null, not empty
/// @param value  receives a copy
/// @param callId  not 0xFFFFFFFF
/// @return kResultOk; kResultNotFound when there is no such value, with `value` made invalid, or for
/// KAL_CONFIG_GROUP_DEFAULT, with `value` untouched; kResultBadArgument for any other bad argument, with
/// `value` untouched.
TESSEL_API std::int32_t GetKalConfigValueEx(KalConfigGroup group, const char* szConfigName, ConfigData& value,
                                            std::uint32_t callId);

/// @return The number of stores, for unit tests.
TESSEL_API std::uint32_t GetKalConfigSizeForUT();

}  // extern "C"
}  // namespace kalStore
