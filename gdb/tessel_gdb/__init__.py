# SPDX-License-Identifier: Apache-2.0
"""Printers for gdb: the values of libtessel and libutil as a reader of the headers knows them.

    (gdb) print value                   a ConfigData
    $1 = "30"
    (gdb) print document                a json::Value, json::Object or json::Array
    $2 = {["Video"] = {{["key"] = "MaxFps", ["value"] = "15"}}}
    (gdb) print *store                  a kalStore::KalConfig, also by way of IKalConfig*
    $3 = settings of call 7 = {VIDEO = {["MaxFps"] = "30"}, VIDEO subscriptions = {["MaxFps"] = subscription 1}}
    (gdb) print facade                  a kalStore::KalConfigHelper
    $4 = facade of call 7 = {default group = kalStore::KAL_CONFIG_GROUP_VIDEO, store = 0x55555556c2b0}
    (gdb) print *audio                  a statistics object, also by way of its interfaces
    $5 = audio statistics of call 7, 1 reference = {tx = {bitrate = 32000}}
    (gdb) print block                   a statistics block or record: what is neither zero nor reserved
    $6 = {encodedWidth = 1280, encodedHeight = 720, noiseLevel = -1}
    (gdb) print meter                   a timer_fact
    $7 = started at 1000000 us of timer_policy

The commands `tessel journal`, `tessel calls` and `tessel who` show what happened last, what there is, and who set a
value; see `help tessel`.

Numbers of a document end as literals do: 30 is an int, 30u unsigned, 30l a 64-bit int, 1.5f a float, 1.5 a double.
`print/r` shows a value as it is in memory, `disable pretty-printer` switches the printers off, `set print elements`
limits long strings and containers, `set print pretty on` gives a line to each member.

They need the libraries' debug information, and say so where there is none. They only read memory: nothing in the
program is called or changed, and no lock is taken, so that they also work on a core file. For a value that was never
initialised, was destroyed or overwritten, they show a message in angle brackets.

`reading` knows gdb and the standard library, `layout` the members of the project's classes, `journal` the records of
the ring; `printers` and `commands` print what they read. When a member is renamed, change `layout`.
"""

import gdb
import gdb.printing

from tessel_gdb import commands, printers


def register(objfile):
    """Registers the printers with a library's symbols, or with all when `objfile` is None."""
    collection = gdb.printing.RegexpCollectionPrettyPrinter("tessel")
    for name, printer in printers.PRINTERS.items():
        collection.add_printer(name, f"^({name})$", printers.guarded(printer))
    gdb.printing.register_pretty_printer(objfile, collection, replace=True)
    commands.register()
