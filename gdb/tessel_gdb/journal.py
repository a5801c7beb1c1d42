# SPDX-License-Identifier: Apache-2.0
"""Reads the journal's ring from the memory of the program, as src/journal/ writes it."""

import gdb

from tessel_gdb import layout
from tessel_gdb.reading import Unreadable, enumerators, require

# The strings of a record in their order, and how long each is at most.
PARTS = {"name": 64, "old": 64, "new": 64, "label": 32, "detail": 56}
NO_PART, CUT = 0x7F, 0x80
HAS_DELIVERY, HAS_PLACE, HAS_THROWN = 1, 2, 4
WORD = 8


class Text:
    """A string of an event."""

    def __init__(self, content, is_cut):
        self.content = content
        self.is_cut = is_cut

    def is_of(self, whole):
        """Whether it is that string, or its beginning."""
        return whole.startswith(self.content) and (self.is_cut or whole == self.content)


class Event:
    """A whole record."""

    def __init__(self, number, words, journal):
        self.number = number
        self.at = 0
        self.words = words
        self.order = journal.order
        kind, way, flags, *sizes = self.bytes(WORD)
        require(kind in journal.kinds and way in journal.ways)
        self.kind = journal.kinds[kind]
        self.way = journal.ways[way]
        self.time = self.signed(self.word(), 64)
        self.call, group = self.halves()
        self.group = None if self.kind.startswith("Statistics") else self.signed(group, 32)
        self.entity = self.signed(group, 32) if self.group is None else None
        require(self.group is not None or self.entity in range(4))
        self.result, self.count = self.halves()
        self.caller = self.word()
        self.thread = self.word()
        self.id, self.cause, self.waited, self.ran = (self.word() if flags & HAS_DELIVERY else 0 for _ in range(4))
        self.line, self.column = self.halves() if flags & HAS_PLACE else (0, 0)
        self.parts = {part: self.text(size, PARTS[part]) for part, size in zip(PARTS, sizes)}
        self.thrown = self.parts["detail"] if flags & HAS_THROWN else None
        self.document = None if flags & HAS_THROWN else self.parts["detail"]

    def bytes(self, count):
        require(self.at + count <= len(self.words))
        self.at += count
        return self.words[self.at - count:self.at]

    def word(self):
        return int.from_bytes(self.bytes(WORD), self.order)

    def halves(self):
        word = self.word()
        return word >> 32, word & 0xFFFFFFFF

    @staticmethod
    def signed(number, bits):
        return number - (1 << bits) if number >> bits - 1 else number

    def text(self, size_and_cut, longest):
        if size_and_cut == NO_PART:
            return None
        size = size_and_cut & ~CUT
        require(size <= longest)
        words = self.bytes(-(-size // WORD) * WORD)
        # The last word of a longer string has its last bytes: it overlaps the word before.
        content = words[:size] if size < WORD else words[:-WORD][:size - WORD] + words[-WORD:]
        return Text(content, bool(size_and_cut & CUT))

    def is_change(self):
        """Whether it changed what is stored."""
        if self.kind == "Set":
            return self.result not in (layout.BAD_ARGUMENT, layout.UNCHANGED)
        if self.kind == "TransientSet":
            return self.result != layout.BAD_ARGUMENT
        return self.kind in ("Removed", "GroupRemoved") and self.count != 0


class Journal:
    """The ring, as it is now."""

    def __init__(self):
        self.is_on = layout.journal_is_on()
        self.end = layout.journal_next()
        self.begin = self.end
        self.ring = layout.journal_ring()
        if self.ring is not None:
            self.begin = max(layout.journal_begin(), self.end - self.ring.capacity)
        self.kinds = enumerators("kalStore::JournalKind", "k")
        self.ways = enumerators("kalStore::JournalWay", "k")
        self.order = "big" if "big" in gdb.execute("show endian", to_string=True) else "little"

    def event(self, number):
        """The event of a number; None when it is not whole, overwritten or damaged."""
        if not self.begin <= number < self.end:
            return None
        place = self.ring.address + number % self.ring.capacity * self.ring.stride
        memory = gdb.selected_inferior().read_memory(place, self.ring.stride).tobytes()
        state = int.from_bytes(memory[self.ring.state:self.ring.state + WORD], self.order)
        if state != number << 1 | 1:  # The lowest bit: it is whole.
            return None
        try:
            return Event(number, memory[self.ring.words:self.ring.words + self.ring.words_size], self)
        except Unreadable:
            return None

    def newest_first(self):
        """The numbers from the newest to the oldest, and their events."""
        return ((number, self.event(number)) for number in range(self.end - 1, self.begin - 1, -1))
