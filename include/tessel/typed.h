// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The library in types, and by scope, on top of what tessel.h offers. Its names are short (Binding,
/// Subscription, CallStore...) and might clash with a component's own: tessel.h does not include it. Without
/// exceptions (-fno-exceptions) there is no ScopedConfig.

#include "tessel/Binding.h"
#include "tessel/CallStore.h"
#include "tessel/ConfigEnum.h"
#include "tessel/ConfigExecutor.h"
#include "tessel/ConfigKey.h"
#include "tessel/ConfigRef.h"
#include "tessel/LiveConfig.h"
#include "tessel/SetResult.h"
#include "tessel/StatsRef.h"
#include "tessel/Subscription.h"
#include "tessel/TypedValue.h"

#ifdef __cpp_exceptions
#include "tessel/ScopedConfig.h"
#endif
