// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The library in types, and by scope, on top of what tessel.h offers. Its names are short (Audio,
/// Subscription, CallStore...) and might clash with a component's own: tessel.h does not include it.

#include "tessel/CallStore.h"
#include "tessel/ConfigEnum.h"
#include "tessel/ConfigKey.h"
#include "tessel/ConfigRef.h"
#include "tessel/LiveConfig.h"
#include "tessel/ScopedConfig.h"
#include "tessel/StatsRef.h"
#include "tessel/Subscription.h"
#include "tessel/TypedValue.h"
