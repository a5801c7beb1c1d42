# SPDX-License-Identifier: Apache-2.0
"""The commands `tessel journal`, `tessel calls` and `tessel who`. They only read memory."""

import os
import re

import gdb

from tessel_gdb import layout, printers, reading
from tessel_gdb.journal import Journal


class Command(gdb.Command):
    """A command whose `lines(arguments)` are its answer, and which may raise."""

    most_arguments = 0

    def __init__(self):
        super().__init__(self.name, gdb.COMMAND_DATA)

    def invoke(self, argument, _):
        arguments = gdb.string_to_argv(argument)
        if not self.least_arguments <= len(arguments) <= self.most_arguments:
            raise gdb.GdbError(f"usage: {self.usage}")
        try:
            for line in self.lines(*arguments):
                print(line)
        except gdb.GdbError:
            raise
        except Exception as problem:
            raise gdb.GdbError(str(problem)) from problem


class Prefix(gdb.Command):
    """What libtessel has in this program or core file: its calls, and the journal of what happened last."""

    def __init__(self):
        super().__init__("tessel", gdb.COMMAND_DATA, gdb.COMPLETE_NONE, True)


class JournalCommand(Command):
    """The last events of the journal, the newest at the end.
Usage: tessel journal [COUNT]

COUNT is 20 unless given. The times are seconds before the newest event."""

    name, usage = "tessel journal", "tessel journal [COUNT]"
    least_arguments, most_arguments = 0, 1

    def lines(self, count="20"):
        if not count.isdecimal():
            raise gdb.GdbError(f"usage: {self.usage}")
        journal = Journal()
        if journal.ring is None:
            return ["The journal was never started."]
        numbers = range(max(journal.begin, journal.end - int(count)), journal.end)
        events = [journal.event(number) for number in numbers]
        whole = [event for event in events if event is not None]
        now = newest_time(whole)
        state = "on" if journal.is_on else "off"
        heading = f"The journal is {state}, and has room for {journal.ring.capacity} events."
        missing = len(events) - len(whole)
        return [heading, *(described(event, now, journal) for event in whole),
                *([f"Not whole: {counted(missing, 'event')}."] if missing else [])]


class CallsCommand(Command):
    """The calls that have a store, and the statistics objects.
Usage: tessel calls"""

    name, usage = "tessel calls", "tessel calls"
    least_arguments = 0

    def lines(self):
        for call, references, store in layout.stores():
            settings = subscriptions = 0
            for values, observers in layout.store_groups(store):
                settings += layout.size_of_names(values)
                subscriptions += sum(1 for _ in layout.named_handlers(observers))
            state = ", cleaned up" if layout.store_is_cleaned_up(store) else ""
            yield (f"call {call}{state}: {counted(references, 'reference')}, {counted(settings, 'setting')}, "
                   f"{counted(subscriptions, 'subscription or binding', 'subscriptions and bindings')}")
        for entity in layout.statistics_objects():
            yield printers.interface(entity.dereference()).text()


class WhoCommand(Command):
    """Who set a value last, in each call.
Usage: tessel who GROUP NAME

The value, and the event of its last change, if the journal still has it. GROUP is Video, AudioSlide and so on."""

    name, usage = "tessel who", "tessel who GROUP NAME"
    least_arguments = most_arguments = 2

    def lines(self, group_name, name):
        names = [plain_name(each) for each in printers.group_names()]
        if plain_name(group_name) not in names[:-1]:
            raise gdb.GdbError(f"no group {group_name}")
        group = names.index(plain_name(group_name))
        whole_name = os.fsencode(name)
        journal = Journal()
        changes, now = last_changes(journal, group, whole_name)
        stored = dict(stored_values(group, whole_name))
        for call in sorted({*changes, *stored}):
            yield f"call {call}: {name} {'= ' + quoted(stored[call]) if call in stored else 'is not stored'}"
            change = changes.get(call)
            if change is None:
                yield "  The journal has no change of it."
                continue
            if not explains(change, stored.get(call)):
                yield "  The event of its last change is not whole. The one before it:"
            yield "  " + described(change, now, journal)
        if not changes and not stored:
            yield f"No call has {name}, and the journal has no change of it."


def last_changes(journal, group, name):
    """For each call the last change of a value, and the time of the newest event."""
    changes, now = {}, None
    for _, event in journal.newest_first():
        if event is None:
            continue
        now = event.time if now is None else max(now, event.time)
        is_about = event.kind == "GroupRemoved" or event.parts["name"] is not None and event.parts["name"].is_of(name)
        if event.is_change() and event.group == group and is_about:
            changes.setdefault(event.call, event)
    return changes, now


def explains(change, value):
    """Whether the change left that value; None: nothing stored."""
    new = change.parts["new"]
    if value is None:
        return change.kind != "Set"
    return change.kind == "Set" and new is not None and new.is_of(value)


def stored_values(group, name):
    """The calls that have the value, and its bytes."""
    for call, _, store in layout.stores():
        values, _ = list(layout.store_groups(store))[group]
        for key, value in layout.named_values(values):
            if reading.content(key) == name:
                yield call, reading.content(layout.config_text(value))


def newest_time(events):
    return max((event.time for event in events), default=0)


def plain_name(group):
    """AudioSlide as AUDIO_SLIDE."""
    return group.replace("_", "").lower()


def counted(count, one, many=None):
    return f"{count} {one if count == 1 else many or one + 's'}"


def escaped(c):
    """A character as it can be part of a line; a byte that is no UTF-8 is a surrogate."""
    if c.isprintable():
        return f"\\{c}" if c in '"\\' else c
    return f"\\x{ord(c) & 0xFF:02x}"


def quoted(content):
    """Bytes in quotes, on one line."""
    return f'"{"".join(map(escaped, content.decode("utf-8", "surrogateescape")))}"'


def part_of(text):
    return "none" if text is None else quoted(text.content) + ("..." if text.is_cut else "")


def described(event, now, journal):
    """An event, on one line."""
    seconds = f"{(event.time - now) / 1e9:+.6f} s"
    what = ", ".join([subject(event, journal), *outcome(event), *origin(event)])
    return f"#{event.number}  {seconds}  {thread_name(event.thread, journal.order)}  call {event.call}  {what}"


def subject(event, journal):
    what = re.sub(r"(?<=[a-z])(?=[A-Z])", " ", event.kind).lower()
    parts = event.parts
    if event.kind == "Delivered" and (cause := journal.event(event.cause)) is not None:
        parts = cause.parts  # A delivery has the name and the values of its set.
    if event.entity is not None:
        return f"{what} ({('audio', 'video', 'content video', 'content audio')[event.entity]})"
    if event.group != layout.NO_GROUP:
        what += f" {group_name(event.group)}"
    if parts["name"] is not None and parts["name"].content:
        what += f" {part_of(parts['name'])}"
    if parts["old"] is not None and parts["new"] is not None:
        return f"{what}: {part_of(parts['old'])} -> {part_of(parts['new'])}"
    if parts["new"] is not None:
        return f"{what} = {part_of(parts['new'])}"
    return what if parts["old"] is None else f"{what}, which was {part_of(parts['old'])}"


def group_name(group):
    names = printers.group_names()
    return names[group] if group in range(len(names)) else f"group {group}"


RESULTS = {layout.UNCHANGED: "unchanged", layout.NOBODY: "nobody", layout.BAD_ARGUMENT: "refused"}
COUNTED = {"Set": "notified {}", "TransientSet": "notified {}", "Applied": "{} set", "Removed": "{} removed",
           "GroupRemoved": "{} removed"}


def outcome(event):
    if event.result:
        yield RESULTS.get(event.result, f"result {event.result:#x}")
    if event.count:
        yield COUNTED.get(event.kind, "references: {}").format(event.count)
    if event.id:
        yield f"id {event.id}"
    if event.way != "None":
        yield re.sub(r"(?<=[a-z])(?=[A-Z])", " ", event.way).lower()
    if event.cause:
        yield f"of #{event.cause}"
    if event.waited or event.ran:
        yield f"waited {event.waited / 1e3:.0f} us, ran {event.ran / 1e3:.0f} us"
    if event.thrown is not None:
        yield f"threw {part_of(event.thrown)}"


def origin(event):
    if event.parts["label"] is not None:
        yield f"by {part_of(event.parts['label'])}"
    if event.document is not None:
        yield f"from {part_of(event.document)}"
    if event.line:
        yield f"line {event.line} column {event.column}"
    if event.caller:
        yield f"in {code_place(event.caller)}"


def thread_name(number, order):
    """A thread as gdb counts it, by its pthread_t."""
    for thread in gdb.selected_inferior().threads():
        try:
            handle = thread.handle()
        except gdb.error:
            continue
        if number == int.from_bytes(handle, order):
            return f"thread {thread.num}"
    return f"thread {number:#x}"


def code_place(address):
    """The function that called, or the module; the address is behind the call."""
    try:
        block = gdb.block_for_pc(address - 1)
        while block is not None and block.function is None:
            block = block.superblock
        if block is not None:
            place = gdb.find_pc_line(address - 1)
            file = os.path.basename(reading.host_string(lambda: place.symtab.filename))
            return f"{block.function.name} ({file}:{place.line})"
    except (RuntimeError, AttributeError):
        pass
    symbol = reading.host_string(lambda: gdb.execute(f"info symbol {address - 1}", to_string=True))
    known = re.match(r"(.*?)( \+ \d+)? in section", symbol)
    if known:
        return known[1]
    return os.path.basename(reading.host_string(lambda: gdb.solib_name(address)) or "") or f"{address:#x}"


def register():
    for command in (Prefix, JournalCommand, CallsCommand, WhoCommand):
        command()
