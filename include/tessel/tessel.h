#pragma once

/// @file
/// Everything that libtessel.so offers: settings per call, statistics per call, JSON, stopwatches, trace
/// helpers. Typed settings, and handles that release themselves, are headers alone: include "tessel/typed.h"
/// beside it; "tessel/post.h" runs functions on an ACmThread.

/// @namespace kalStore
/// Settings and statistics per call.

/// @namespace kal
/// The engine's own vocabulary: session and codec types, interfaces by reference.

/// @namespace json
/// JSON values and texts.

#include "tessel/CKalTessel.h"
#include "tessel/IKalConfig.h"
#include "tessel/KalConfig.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/KalContentAudioStatisticInfo.h"
#include "tessel/KalContentVideoStatisticInfo.h"
#include "tessel/ResultCode.h"
#include "tessel/json.h"
#include "tessel/settings_check.h"
#include "tessel/timer_fact.h"
#include "tessel/trace.h"
