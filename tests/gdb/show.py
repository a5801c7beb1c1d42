# SPDX-License-Identifier: Apache-2.0
"""Writes what the program's `Show` functions hold, wherever they stop from now on, to the file $SHOWN.

What $SHOW calls "whole" and "stripped" is the same in every run, addresses written as 0x...; "any" is not.
"""

import os
import re

import gdb


def mi(command):
    """As development environments ask."""
    escaped = command.replace('"', '\\"')
    return f'interpreter-exec mi "{escaped}"'


COMMANDS = {
    "whole": {
        "ShowConfigData": ["info locals", mi("-var-create text * number")],
        "ShowJson": ["info locals", "set print elements 3", "print text", "print document", "set print elements 200"],
        "ShowChange": ["info args", "print *g_config", "print *g_facade"],
        "ShowSettings": ["info locals", "print *config"],
        "ShowSmallStore": ["print store", mi("-var-create store * *config"), mi("-var-list-children 1 store"),
                           mi("-var-list-children 1 store.COMMON"), mi("-var-delete store")],
        "ShowMeters": ["info locals"],
        "ShowStatistics": ["print *video", "print *audio", "print *(kalStore::IKalMediaInfo*)audio", "print stream",
                           "print codec", "print jitter", "print sync", "print videoBlock", "print audioBlock",
                           "print emptyBlock", "set print pretty on", "print videoBlock.layer[0]",
                           "set print pretty off"],
        "ShowDamagedContainers": ["info locals"],
    },
    "stripped": {
        "ShowJson": ["print document"],
        "ShowSettings": ["info locals", "print *config"],
        "ShowMeters": ["print fine"],
        "ShowStatistics": ["print *video", "print videoBlock"],
    },
    "any": {
        "ShowOptimised": ["info locals"],
        "ShowDamage": ["print shape.value"],
    },
}[os.environ["SHOW"]]


def shown():
    """The innermost of the program's own functions, selected: its name."""
    frame = gdb.newest_frame()
    while not (name := re.search(r"\bShow\w+", frame.name() or "")):
        frame = frame.older()
    frame.select()
    return name.group()


def answer(command):
    try:
        text = gdb.execute(command, to_string=True)
    except gdb.error as problem:
        text = f"error: {problem}\n"
    return re.sub(r"0x[0-9a-f]{2,}", "0x...", re.sub(r"^\$\d+ = ", "", text))


gdb.execute("set width 0")
gdb.execute(mi("-enable-pretty-printing"))
with open(os.environ["SHOWN"], "w", encoding="utf-8") as file:
    while gdb.selected_inferior().pid != 0:
        for command in COMMANDS.get(shown(), ()):
            file.write(f"(gdb) {command}\n{answer(command)}")
        gdb.execute("continue", to_string=True)
