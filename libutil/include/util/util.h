// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The engine utility library: locks, threads with an event loop, trace output, clocks, values, reference
/// counting and bounded copies.

#include "util/ACmThread.h"
#include "util/CCmMutexThread.h"
#include "util/CCmReferenceControlT.h"
#include "util/CCmTextFormator.h"
#include "util/CCmUtilFuncTracer.h"
#include "util/CKalUnknownImpl.h"
#include "util/ConfigData.h"
#include "util/ICmEvent.h"
#include "util/ICmEventQueue.h"
#include "util/bounded_copy.h"
#include "util/clock_policy.h"
#include "util/util_trace.h"
