# SPDX-License-Identifier: Apache-2.0
"""Writes what the program's `Show` functions hold, wherever they stop from now on, to the file $SHOWN.

What $SHOW calls "whole" and "stripped" is the same in every run, addresses written as 0x...; "any" is not.
"""

import os
import random
import re

import gdb


def mi(command):
    """As development environments ask."""
    escaped = command.replace('"', '\\"')
    return f'interpreter-exec mi "{escaped}"'


WHAT_HAPPENED = ["tessel journal", "tessel journal 2", "tessel calls", "tessel who Video MaxFps",
                 "tessel who AUDIO_SLIDE Codec", "tessel who Video Bitrate"]
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
        "ShowMeters": ["print fine", "tessel journal", "tessel calls", "tessel who Video MaxFps"],
        "ShowStatistics": ["print *video", "print videoBlock"],
    },
    "commands": {
        "ShowConfigData": ["tessel calls"],
        "ShowMeters": ["tessel journal", "tessel calls", "tessel who Video MaxFps"],
        "ShowUnwritten": ["tessel journal 3", "tessel who Video MaxFps"],
        "ShowJournal": [*WHAT_HAPPENED, "tessel who Nothing MaxFps", "tessel who Video", "tessel journal many",
                        "help tessel who"],
    },
    "core": {"ShowJournal": WHAT_HAPPENED},
    "any": {
        "ShowOptimised": ["info locals"],
        "ShowDamage": ["print shape.value"],
        "ShowJournal": [command for seed in range(25) for command in (
            f"python damage_journal({seed})", "tessel journal", "tessel who Video MaxFps")],
    },
}[os.environ["SHOW"]]


def damage_journal(seed):
    """Overwrites what the ring's records say, not which of them are whole."""
    from tessel_gdb import layout
    ring = layout.journal_ring()
    chance = random.Random(seed)
    for place in range(ring.address, ring.address + ring.capacity * ring.stride, ring.stride):
        content = bytearray(chance.randbytes(ring.words_size))
        if seed < 17:  # With a beginning that a record may have: kind, way, flags, sizes.
            sizes = (chance.choice((0, 3, 32, 0x7F, 0x83)) for _ in range(5))
            content[:8] = bytes((seed, seed % 5, chance.randrange(8), *sizes))
        gdb.selected_inferior().write_memory(place + ring.words, bytes(content))
    print("damaged")


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
    for varying, constant in ((r"^\$\d+ = ", ""), (r"0x[0-9a-f]{2,}", "0x..."), (r"[-+]\d+\.\d{6} s", "-0.0 s"),
                              (r"waited \d+ us, ran \d+ us", "waited 0 us, ran 0 us"),
                              (r"debuggee\.cpp:\d+", "debuggee.cpp:1")):
        text = re.sub(varying, constant, text)
    return text


gdb.execute("set width 0")
gdb.execute(mi("-enable-pretty-printing"))
with open(os.environ["SHOWN"], "w", encoding="utf-8") as file:
    while gdb.selected_inferior().pid != 0:
        name = shown()
        for command in COMMANDS.get(name, ()):
            file.write(f"(gdb) {command}\n{answer(command)}")
        if gdb.selected_inferior().connection.type == "core":
            break
        if name == "ShowJournal" and "CORE" in os.environ:
            gdb.execute("generate-core-file " + os.environ["CORE"], to_string=True)
        gdb.execute("continue", to_string=True)
