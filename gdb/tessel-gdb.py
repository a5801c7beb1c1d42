# SPDX-License-Identifier: Apache-2.0
"""Loads the printers of libtessel and libutil into gdb.

Installed as share/tessel/gdb/tessel-gdb.py, for gdb's command `source`, and below share/gdb/auto-load, where gdb looks
for the printers of a library. See tessel_gdb/__init__.py for what the printers show.
"""

import os
import sys

import gdb

folder, auto_load, _ = os.path.realpath(__file__).partition("/gdb/auto-load/")
folder = os.path.join(folder, "tessel", "gdb") if auto_load else os.path.dirname(folder)
if folder not in sys.path:
    sys.path.insert(0, folder)

# Leave no compiled copies beside the files.
writes_nothing, sys.dont_write_bytecode = sys.dont_write_bytecode, True
import tessel_gdb

sys.dont_write_bytecode = writes_nothing

tessel_gdb.register(gdb.current_objfile())
