// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The documented classes and entry points of libtessel.so: settings per call, statistics per call, JSON,
/// stopwatches, trace helpers. What is built on top of them is included by name: "tessel/typed.h" has typed
/// keys, and handles that release themselves; "tessel/post.h" runs functions on an ACmThread.
///
/// The examples in all headers are bodies of functions, in a file that begins with
/// @code{.cpp}
/// #include <tessel/inspect.h>
/// #include <tessel/journal.h>
/// #include <tessel/post.h>
/// #include <tessel/tessel.h>
/// #include <tessel/typed.h>
/// #include <util/util.h>
///
/// #include <atomic>
/// #include <cassert>
/// #include <cstdio>
/// #include <cstring>
///
/// using namespace kalStore;
/// @endcode

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
#include "tessel/version.h"
