# SPDX-License-Identifier: Apache-2.0
"""The order of the site's pages."""

# Per section, the pages in the order of reading, with a title where that of the page says too little there; "*" takes
# what no line names, in the order of the names.
SECTIONS = {
    "Learn": [
        "docs/guides/five-minute-start",
        "docs/guides/life-of-a-change",
        "docs/guides/threads-and-locks",
    ],
    "Guides": [
        "docs/guides/declared-settings",
        "docs/guides/settings-documents",
        "docs/guides/feature-toggles",
        "docs/guides/event-loops",
        "docs/guides/statistics-blocks",
        "docs/guides/engine-utility-library",
        "docs/guides/*",
    ],
    "Reference": ["reference/*"],
    "Operate": [
        "docs/tessel",
        "docs/guides/trace",
        "docs/guides/journal",
        "docs/guides/recordings",
        "docs/guides/debugging",
        "docs/performance",
        "docs/reliability",
    ],
    "Project": [
        "Overview and installation <README>",
        "CONTRIBUTING",
        "CHANGELOG",
        "docs/releasing",
        "SECURITY",
        "docs/*",
        "*",
    ],
}

# Per part of the reference, its headers in the order of use, with the title of the page where the header has no class
# of its own name. A header has one page.
REFERENCE = {
    "Settings of a call": {
        "tessel/tessel.h": "The headers",
        "tessel/version.h": "The version",
        "tessel/KalConfigHelper.h": None,
        "tessel/ResultCode.h": "Result codes",
        "tessel/KalConfigGroup.h": "Groups",
        "tessel/KalSessionType.h": "Session types",
        "util/ConfigData.h": None,
        "tessel/KalConfigEvent.h": None,
        "tessel/KalFeatureToggleID.h": "Feature toggles: the catalogue",
    },
    "Handles and typed keys": {
        "tessel/CallStore.h": None,
        "tessel/Subscription.h": None,
        "tessel/ConfigExecutor.h": None,
        "tessel/ConfigKey.h": None,
        "tessel/SetResult.h": None,
        "tessel/TypedValue.h": "Types of a key",
        "tessel/ConfigEnum.h": "Enums as values",
        "tessel/LiveConfig.h": None,
        "tessel/Binding.h": None,
        "tessel/ScopedConfig.h": None,
        "tessel/ConfigRef.h": None,
        "tessel/post.h": "Functions on a thread",
    },
    "Stores": {
        "tessel/KalConfigRegistry.h": "The registry of stores",
        "tessel/IKalConfig.h": None,
        "tessel/KalConfig.h": None,
        "tessel/settings_check.h": "The check of settings documents",
        "tessel/settings_declaration.h": "Declared settings",
        "tessel/KalConfigObserverMgr.h": None,
        "tessel/ConfigEventHandler.h": None,
        "tessel/atomMap.h": None,
    },
    "Statistics": {
        "tessel/StatsRef.h": None,
        "tessel/IKalMediaInfo.h": None,
        "tessel/IKalAudioInfo.h": None,
        "tessel/IKalVideoInfo.h": None,
        "tessel/StatisticsBlocks.h": "Blocks and records",
        "tessel/KalStatisticsTypes.h": "Codecs",
        "tessel/KalAudioStatisticInfo.h": None,
        "tessel/KalVideoStatisticInfo.h": None,
        "tessel/KalContentAudioStatisticInfo.h": None,
        "tessel/KalContentVideoStatisticInfo.h": None,
        "tessel/CKalTessel.h": None,
        "tessel/IKalUnknown.h": None,
    },
    "JSON": {
        "tessel/json_value.h": "Value",
        "tessel/json_object.h": "Object",
        "tessel/json_array.h": "Array",
        "tessel/json_text.h": "Reading and writing texts",
        "tessel/jsonHelper.h": None,
    },
    "Time and trace": {
        "tessel/timer_fact.h": None,
        "util/clock_policy.h": "Clocks",
        "tessel/trace.h": "Names in trace lines",
        "tessel/journal.h": "The journal",
        "util/util_trace.h": "Trace output",
        "util/CCmUtilFuncTracer.h": None,
        "util/CCmTextFormator.h": None,
    },
    "Utility library": {
        "util/ACmThread.h": None,
        "util/ICmEventQueue.h": None,
        "util/ICmEvent.h": None,
        "util/CCmMutexThread.h": None,
        "util/CCmReferenceControlT.h": None,
        "util/CKalUnknownImpl.h": None,
        "util/bounded_copy.h": "Bounded copies",
    },
}
