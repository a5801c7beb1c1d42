// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>

#include "tessel/tessel.h"
#include "tessel/typed.h"

/// Operations as a component calls them, from a shared object of its own.
namespace component {

#define COMPONENT_API __attribute__((visibility("default"), noinline))

COMPONENT_API int SetInStore(kalStore::IKalConfig& store, int value);
COMPONENT_API int SetInFacade(kalStore::KalConfigHelper& facade, int value);
COMPONENT_API int SetWithKey(kalStore::IKalConfig& store, int value);
COMPONENT_API int SetToggle(kalStore::KalConfigHelper& facade);
COMPONENT_API int SetBySession(kalStore::KalConfigHelper& facade);
COMPONENT_API int Apply(kalStore::KalConfigHelper& facade, const char* document);
COMPONENT_API int Bind(kalStore::KalConfigHelper& facade, unsigned int callId);
COMPONENT_API int Ask(kalStore::KalConfigHelper& facade);
COMPONENT_API int SubscribeAndEnd(kalStore::IKalConfig& store);
COMPONENT_API int SubscribeAndEndInFacade(kalStore::KalConfigHelper& facade);
COMPONENT_API int HoldSubscription(kalStore::IKalConfig& store);
COMPONENT_API int HoldBinding(kalStore::IKalConfig& store);
COMPONENT_API int UseOtherEntries(kalStore::IKalConfig& store, unsigned int callId);
COMPONENT_API int EndStore(unsigned int callId);
COMPONENT_API int EndAllStores();
COMPONENT_API int HoldFacade(unsigned int callId);
COMPONENT_API int HoldStatistics(unsigned int callId);
COMPONENT_API int SetInCallback(kalStore::KalConfigHelper& facade);
/// Lets a facade, a Subscription or a Binding go, or begin, in every way, with callbacks and executors that
/// capture something: `capture` makes what they capture.
COMPONENT_API int UseCaptures(kalStore::KalConfigHelper& facade, kalStore::IKalConfig& store,
                              const std::function<std::shared_ptr<int>()>& capture);

}  // namespace component
