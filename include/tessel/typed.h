#pragma once

/// @file
/// The library in types, and by scope: header-only, on top of what tessel.h offers. Its short names (Audio,
/// Subscription, CallStore...) are the reason why tessel.h does not include it.

#include "tessel/CallStore.h"
#include "tessel/ConfigKey.h"
#include "tessel/ConfigRef.h"
#include "tessel/ScopedConfig.h"
#include "tessel/StatsRef.h"
#include "tessel/Subscription.h"
#include "tessel/TypedValue.h"
