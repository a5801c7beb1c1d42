#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks recordings, a kept one and one that is written now, against the JSON Schema of their lines, and that
`tessel log` says the same.

usage: schema_test.py PROGRAM SCHEMA RECORDING
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

from jsonschema import Draft202012Validator

PROGRAM, SCHEMA, RECORDING = sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])

SET = {"type": "set", "t": 1, "call": 7, "group": "Video", "name": "A", "new": "1", "result": "told", "told": 1}
DELIVERY = {"type": "deliver", "t": 1, "call": 7, "id": 3, "way": "direct", "wait_us": 0.5, "run_us": 1}


def changed(line, **members):
    """The line with other members; those that are None are left out."""
    return {name: value for name, value in {**line, **members}.items() if value is not None}


GOOD = [
    SET, DELIVERY, changed(SET, unknown=[1]), changed(SET, new=None, hidden=["new"]), {"type": "later", "t": 0},
    changed(SET, result=None, told=None, picture=True), changed(DELIVERY, way=None, dropped=True),
    {"type": "statistics", "t": 1, "call": 7, "entity": "content audio", "members": {"a": -1.5, "b": "c"}},
    {"type": "recording", "t": 1, "event": "ended", "reason": "no space is left"},
    changed(SET, group=None, result="refused", told=0),
    {"type": "bind", "t": 1, "call": 1, "group": "Audio", "name": "A", "event": "asked", "new": "1"},
]
BAD = [
    "set", 1, [SET], {}, {"t": 1}, {"type": "set"}, changed(SET, t=-1), changed(SET, t="1"), changed(SET, call=None),
    changed(SET, call=-1), changed(SET, call=1.5), changed(SET, call=2**32), changed(SET, group="Vidio"),
    changed(SET, group=None), changed(SET, result=None), changed(SET, result="done"), changed(SET, new=1),
    changed(SET, told="1"), changed(SET, transient=1), changed(SET, cut="new"), changed(SET, cut=[1]),
    changed(SET, origin="main"), changed(SET, origin={"line": "1"}), changed(SET, origin={"module": 1}),
    changed(DELIVERY, way=None), changed(DELIVERY, way="mail"), changed(DELIVERY, wait_us=-1),
    changed(DELIVERY, id=None), {"type": "lost", "t": 1}, {"type": "call", "t": 1, "call": 1},
    {"type": "call", "t": 1, "call": 1, "event": "asked"}, {"type": "remove", "t": 1, "call": 1, "group": "Audio"},
    {"type": "bind", "t": 1, "call": 1, "group": "Audio", "name": "A", "id": 1},
    {"type": "bind", "t": 1, "call": 1, "group": "Audio", "name": "A", "event": "bound"},
    {"type": "apply", "t": 1, "call": 1},
    {"type": "statistics", "t": 1, "call": 1, "entity": "text", "event": "made"},
    {"type": "statistics", "t": 1, "call": 1, "entity": "audio"},
    {"type": "statistics", "t": 1, "call": 1, "entity": "audio", "members": {"a": [1]}},
    {"type": "recording", "t": 1, "event": "begun"}, {"type": "recording", "t": 1, "version": 1},
]

failures = []


def check(condition, what):
    if not condition:
        failures.append(what)


def is_readable(line):
    """Whether `tessel log` takes the line."""
    text = '{"type":"recording","t":0,"version":1,"wall":"2026-11-22T08:42:05Z"}\n' + json.dumps(line) + "\n"
    status = subprocess.run([PROGRAM, "log", "-"], input=text, text=True, capture_output=True, check=False).returncode
    return status == 0


def simulated():
    """The lines of a recording that the library writes."""
    with tempfile.TemporaryDirectory() as folder:
        file = Path(folder) / "call.tessel"
        subprocess.run([PROGRAM, "simulate", "--seconds", "0.2", "--record", file],
                       stdout=subprocess.DEVNULL, check=True)
        lines = [json.loads(line) for line in file.read_text(encoding="utf-8").splitlines()]
        check(len(lines) > 100, "next to nothing is recorded")
        return lines


schema = json.loads(SCHEMA.read_text(encoding="utf-8"))
Draft202012Validator.check_schema(schema)
validator = Draft202012Validator(schema)

lines = [json.loads(line) for line in RECORDING.read_text(encoding="utf-8").splitlines()]
check({line["type"] for line in lines} >= {"recording", "call", "set", "remove", "apply", "subscribe", "unsubscribe",
                                           "bind", "deliver", "statistics", "lost"},
      "a type is missing in the recording")
for line in lines + GOOD:
    for error in validator.iter_errors(line):
        failures.append(f"{line}: {error.message}")
    check(is_readable(line), f"{line}: tessel log does not take it")
for line in simulated():
    for error in validator.iter_errors(line):
        failures.append(f"{line}: {error.message}")
for line in BAD:
    check(not validator.is_valid(line), f"{line}: the schema takes it")
    check(not is_readable(line), f"{line}: tessel log takes it")

print("\n".join(failures))
sys.exit(1 if failures else 0)
