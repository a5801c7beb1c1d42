#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks documents against the JSON Schema that `tessel declare` writes, and that `tessel lint` says the same.

usage: schema_test.py PROGRAM EXAMPLES
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

from jsonschema import Draft202012Validator

PROGRAM, EXAMPLES = sys.argv[1], Path(sys.argv[2])

DECLARATIONS = {
    "settings": [
        {"group": "Video", "name": "MaxFps", "type": "int", "default": 30, "minimum": 1, "maximum": 120},
        {"group": "Video", "name": "Layers", "type": "uint", "default": 1, "values": [1, 3]},
        {"group": "Video", "name": "Offset", "type": "int64", "default": -3, "minimum": -20, "maximum": -3},
        {"group": "Video", "name": "Codec", "type": "enum", "default": "h264", "values": ["h264", "vp8"]},
        {"group": "Video", "name": "Old", "type": "string", "default": "", "description": "quoted \" \\ \u2028 ä",
         "deprecated": {"since": "2", "replacedBy": "Video/Codec"}},
        {"group": "Audio", "name": "Ratio", "type": "double", "default": 0.5},
        {"group": "Audio", "name": "Frame", "type": "duration", "unit": "ms", "default": 20, "minimum": 0},
        {"group": "Audio", "name": "Dtx \u0085\u007f\n", "identifier": "Dtx", "type": "bool", "default": True},
    ]
}

# Entries by group: what the schema and lint take, and what they do not.
GOOD = [
    ("Video", "MaxFps", "1"), ("Video", "MaxFps", "120"), ("Video", "MaxFps", "0060"), ("Video", "Layers", "3"),
    ("Video", "Offset", "-20"), ("Video", "Offset", "-3"), ("Video", "Codec", "vp8"), ("Audio", "Ratio", "-1.5e3"),
    ("Audio", "Frame", "20"), ("Audio", "Frame", "-0"), ("Audio", "Dtx \u0085\u007f\n", "TRUE"),
    ("Audio", "Dtx \u0085\u007f\n", "0"), ("Common", "Anything", "at all"),
    ("Feature", "EnableMusicDetection", "false"), ("Feature", "NoiseSuppressionLevel", "4"),
    ("Feature", "VideoStrategyLadder", "any"),
]
BAD = [
    ("Video", "MaxFps", "0"), ("Video", "MaxFps", "121"), ("Video", "MaxFps", "fast"), ("Video", "MaxFps", "30.0"),
    ("Video", "MaxFps", ""), ("Video", "Layers", "2"), ("Video", "Layers", "-1"), ("Video", "Offset", "-21"),
    ("Video", "Offset", "-2"), ("Video", "Offset", "3"), ("Video", "Codec", "VP8"), ("Video", "Code", "vp8"),
    ("Video", "maxfps", "1"), ("Audio", "Ratio", "half"), ("Audio", "Frame", "-1"), ("Audio", "Frame", "20ms"),
    ("Audio", "Dtx \u0085\u007f\n", "on"), ("Feature", "EnableMusicDetection", "off"), ("Feature", "EnableMusic", "1"),
    ("Feature", "NoiseSuppressionLevel", "5"), ("Common", "", "1"),
]
BAD_DOCUMENTS = [
    7, [], {"Vidoe": []}, {"Video": {}}, {"Video": [7]}, {"Video": [{"key": "MaxFps"}]}, {"Video": [{"value": "1"}]},
    {"Video": [{"key": "MaxFps", "value": 30}]}, {"Common": [{"key": 7, "value": "1"}]},
    {"Common": [{"key": "A", "value": None}]},
]


def tessel(*arguments, text=""):
    return subprocess.run([PROGRAM, *arguments], input=text, capture_output=True, text=True, encoding="utf-8",
                          check=False)


def schema_of(*files):
    first, second = (tessel("declare", "--json-schema", *files) for _ in range(2))
    assert first.returncode == 0, first.stderr
    assert first.stdout == second.stdout, "the schema changes from run to run"
    schema = json.loads(first.stdout)
    Draft202012Validator.check_schema(schema)
    return Draft202012Validator(schema), first.stdout


def main():
    with tempfile.TemporaryDirectory() as folder:
        file = Path(folder) / "declarations.json"
        file.write_text(json.dumps(DECLARATIONS, ensure_ascii=False), encoding="utf-8")
        validator, text = schema_of(file)
        # Whatever is declared, a terminal gets nothing that it would obey.
        assert not {"\u0085", "\u007f", "\u2028"} & set(text) and "ä" in text

        def check(document, is_good):
            errors = [error.message for error in validator.iter_errors(document)]
            assert (not errors) == is_good, f"{document}: {errors}"
            lint = tessel("lint", "-", "--declared", str(file), text=json.dumps(document, ensure_ascii=False))
            assert lint.returncode == (0 if is_good else 1), f"{document}: {lint.stdout}{lint.stderr}"

        check({}, True)
        for group, key, value in GOOD:
            check({group: [{"key": key, "value": value, "note": 1}]}, True)
        for group, key, value in BAD:
            check({group: [{"key": key, "value": value}]}, False)
        for document in BAD_DOCUMENTS:
            check(document, False)

        # A deprecated name is marked, for the editor to show; it is not wrong.
        old = {"Video": [{"key": "Old", "value": "x"}]}
        assert validator.is_valid(old)
        assert tessel("lint", "-", "--declared", str(file), text=json.dumps(old)).returncode == 1
        names = validator.schema["properties"]["Video"]["items"]["properties"]["key"]["anyOf"]
        assert [name["const"] for name in names if name.get("deprecated")] == ["Old"]
        assert any("quoted \" \\ \u2028 ä" in name.get("description", "") for name in names)

        # The toggles are in every schema, and the shipped documents fit them.
        file.write_text('{"settings":[]}', encoding="utf-8")
        validator, _ = schema_of(file)
        for document in sorted((EXAMPLES / "settings").glob("*.json")):
            instance = json.loads(document.read_text(encoding="utf-8"))
            errors = [error.message for error in validator.iter_errors(instance)]
            assert not errors, f"{document}: {errors}"


main()
