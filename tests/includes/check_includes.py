#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the directions of the project's own includes: which folder may know which headers.

Every file below a folder of FOLDERS may include the headers that the folder's row names, and no others of the project.
A private header is named from its root (ROOTS), never from the file that includes it. Each line that breaks a rule is
printed as FILE:LINE.
"""

import re
import sys
from pathlib import Path

# An exported header's name says whose it is.
EXPORTED = r"(util|tessel)/\w+\.(h|def)"
UTIL = r"util/\w+\.h"
TRACE_HEADERS = r"tessel/(export|locking|timer_fact|trace)\.h"
JSON_HEADERS = r"tessel/(export|json|jsonHelper|json_\w+)\.h"
JOURNAL_HEADERS = r"tessel/(export|journal|locking|KalConfigGroup|ResultCode)\.h"
STORE_HEADERS = (r"tessel/((I?KalConfig|KalConfig(Event|Group|ObserverMgr|Registry)|ConfigEventHandler"
                 r"|KalFeatureToggleID|KalSessionType|ResultCode|atomMap)\.h|KalFeatureToggles\.def)")
DOCUMENT_HEADERS = r"tessel/(settings_(check|declaration)|ConfigEnum|TypedValue)\.h"
STATISTICS_HEADERS = (r"tessel/(CKalTessel|IKalUnknown|IKal(Audio|Media|Video)Info"
                      r"|Kal(Content)?(Audio|Video)StatisticInfo|KalStatisticsTypes|ResultCode"
                      r"|Statistics(Blocks|Registration))\.h")

# Folder or file, by pattern: what it may include. The first row that matches holds.
FOLDERS = [
    (r"libutil/include/util/", [UTIL]),
    (r"libutil/src/", [UTIL, r"\w+\.h"]),
    (r"include/tessel/(export|locking|timer_fact|trace)\.h$", [UTIL, TRACE_HEADERS]),
    (r"include/tessel/json\w*\.h$", [UTIL, JSON_HEADERS]),
    (r"include/tessel/journal\.h$", [JOURNAL_HEADERS]),
    (f"include/{STORE_HEADERS}$", [UTIL, TRACE_HEADERS, JSON_HEADERS, STORE_HEADERS]),
    (f"include/{DOCUMENT_HEADERS}$", [UTIL, TRACE_HEADERS, JSON_HEADERS, STORE_HEADERS, DOCUMENT_HEADERS]),
    (f"include/{STATISTICS_HEADERS}$", [UTIL, TRACE_HEADERS, STATISTICS_HEADERS]),
    (r"include/tessel/", [EXPORTED]),
    (r"src/trace/", [UTIL, TRACE_HEADERS, "trace/.*"]),
    (r"src/json/", [UTIL, JSON_HEADERS, "json/.*"]),
    (r"src/journal/", [UTIL, JOURNAL_HEADERS, r"trace/CallContext\.h", "journal/.*"]),
    (r"src/store/", [UTIL, TRACE_HEADERS, JSON_HEADERS, STORE_HEADERS, "(trace|json|journal|store)/.*"]),
    (r"src/documents/", [UTIL, TRACE_HEADERS, JSON_HEADERS, STORE_HEADERS, DOCUMENT_HEADERS,
                         "(trace|json|journal|store|documents)/.*"]),
    (r"src/facade/", [EXPORTED, "(trace|json|journal|store|documents|facade)/.*"]),
    (r"src/statistics/", [UTIL, TRACE_HEADERS, STATISTICS_HEADERS, "(trace|journal|statistics)/.*"]),
    (r"src/inspect/", [EXPORTED, "(journal|store|statistics|inspect)/.*"]),
    (r"src/record/", [EXPORTED, "record/.*"]),
    # Suggestions of names, the one private part that the program shares.
    (r"tools/DidYouMean\.cpp$", [EXPORTED, r"\w+\.h", r"documents/NearestName\.h"]),
    (r"tools/", [EXPORTED, r"((declare|recording|report|simulate)/)?\w+\.h"]),
    (r"examples/", [EXPORTED]),
]

# Where the private headers of a folder are named from. Exported ones are named from the include folders.
ROOTS = {"libutil": ["libutil/src"], "src": ["src"], "tools": ["tools", "tools/reference", "src"]}
EXPORTED_ROOTS = {"util": "libutil/include", "tessel": "include"}

CHECKED = ("libutil/include", "libutil/src", "include", "src", "tools", "examples")
INCLUDE = re.compile(r'\s*#\s*include\s*(?:"([^"]+)"|<((?:util|tessel)/[^>]+)>)')


def includes(path):
    """The project's own includes of a file: line number and name."""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if match:
            yield number, match[1] or match[2]


def fault(tree, file, allowed, name):
    """What is wrong with an include, or None."""
    first = name.partition("/")[0]
    roots = [EXPORTED_ROOTS[first]] if first in EXPORTED_ROOTS else ROOTS.get(file.partition("/")[0], [])
    if not any((tree / root / name).is_file() for root in roots):
        return f'"{name}" is not named from {" or ".join(roots) or "an include folder"}'
    if not any(re.fullmatch(pattern, name) for pattern in allowed):
        return f'"{name}" is none of what {file.rpartition("/")[0]} may include'
    return None


def check(tree):
    """The lines that break a rule."""
    faults = []
    for folder in CHECKED:
        for path in sorted((tree / folder).rglob("*")):
            if path.suffix not in (".h", ".cpp", ".def"):
                continue
            file = path.relative_to(tree).as_posix()
            allowed = next((allowed for pattern, allowed in FOLDERS if re.match(pattern, file)), None)
            if allowed is None:
                faults.append(f"{file}:1: no rule says what this folder may include")
                continue
            for number, name in includes(path):
                found = fault(tree, file, allowed, name)
                if found:
                    faults.append(f"{file}:{number}: {found}")
    return faults


if __name__ == "__main__":
    sys.exit("\n".join(check(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2])) or 0)
