# SPDX-License-Identifier: Apache-2.0
"""Prints what `layout` reads. No exception raised here or below reaches gdb: a message replaces the value."""

import gdb

from tessel_gdb import layout, reading


class Printer:
    """The printer of a value that is one string. A subclass defines `text()`, which may raise."""

    def __init__(self, value):
        self.value = value
        self.is_readable = True

    def text(self):
        return None

    def to_string(self):
        try:
            return self.text()
        except Exception as problem:
            self.is_readable = False
            return message(problem)


class Compound(Printer):
    """The printer of a value with parts. A subclass defines `parts()`, pairs of name and value, which may raise."""

    hint = None

    def display_hint(self):
        return self.hint

    def children(self):
        count = 0
        try:
            for name, part in self.parts() if self.is_readable else ():
                yield from self.child(count, shown(name), shown(part))
                count += 1
        except Exception as problem:
            yield from self.child(count, "...", message(problem))

    def child(self, count, name, part):
        if self.hint == "map":
            # gdb shows neither name, but needs different ones.
            yield f"key {count}", name
            yield f"value {count}", part
        else:
            yield name, part


def message(problem):
    return f"<{problem}>"


def guarded(make):
    """A function for gdb around `make`, which returns the printer of a value."""

    def printer(value):
        try:
            return make(reading.referred(value))
        except Exception as problem:
            return Text(message(problem))

    return printer


def shown(part):
    """A part as gdb can show it: strings, and objects in place of the pointers that own them."""
    if not isinstance(part, gdb.Value):
        return part
    if reading.is_a(part, "std::__cxx11::basic_string"):
        text = reading.text(part)
        # Development environments show the string itself, if the printers of the standard library are loaded.
        return text if gdb.default_visualizer(part) is None else part
    if reading.is_a(part, "std::shared_ptr"):
        pointer = reading.pointer_of(part)
        return reading.target(pointer) if pointer != 0 else "null"
    # A number of one byte is not a character.
    return int(part) if part.type.sizeof == 1 and not reading.is_class(part.type) else part


class Text(Printer):
    """A string that is given."""

    def text(self):
        return self.value


class Config(Printer):
    def text(self):
        string = layout.config_text(self.value)
        return "<empty>" if string is None else reading.text(string)


class Thread(Printer):
    def text(self):
        return reading.text(layout.thread_name(self.value))


class Meter(Printer):
    def text(self):
        policy = reading.plain(self.value.type).template_argument(0)
        return f"started at {layout.meter_start(self.value)} us of {policy}"


class Sequence(Compound):
    """A container of entries."""

    nothing = "{}"

    def text(self):
        return None if any(True for _ in self.parts()) else self.nothing


class Nested(Sequence):
    """A container of containers. A damaged one may contain itself, and would be shown without end."""

    open = []  # The containers being shown, the outermost first.

    def entries(self):
        return ()

    def parts(self):
        place = reading.place(self.value)
        if place in Nested.open:
            raise reading.Unreadable("contains itself")
        Nested.open.append(place)
        try:
            yield from self.entries()
        finally:
            Nested.open.remove(place)


class JsonObject(Nested):
    hint = "map"

    def entries(self):
        return layout.json_members(self.value)


class JsonArray(Nested):
    hint = "array"
    nothing = "[]"

    def entries(self):
        return ((str(index), element) for index, element in enumerate(layout.json_elements(self.value)))


# How numbers of each kind end.
SUFFIXES = {"UnsignedIntVal": "u", "Int64Val": "l", "FloatVal": "f"}


def json_value(value):
    kind = layout.json_kind(value)
    if kind == "NullVal":
        return Text("null")
    if kind == "ObjectVal":
        held = layout.json_object(value)
        return Text(JsonObject.nothing) if held is None else JsonObject(held)
    if kind == "ArrayVal":
        held = layout.json_array(value)
        return Text(JsonArray.nothing) if held is None else JsonArray(held)
    scalar = layout.json_scalar(value)
    return Text(reading.text(scalar) if kind == "StringVal" else f"{scalar}{SUFFIXES.get(kind, '')}")


class NamedValues(Sequence):
    hint = "map"

    def parts(self):
        return layout.named_values(self.value)


class NamedHandlers(Sequence):
    hint = "map"

    def parts(self):
        return layout.named_handlers(self.value)


class Handler(Compound):
    def text(self):
        number = layout.handler_id(self.value)
        state = {0: "not made yet", layout.BEING_MADE: "being made"}.get(number, number)
        return f"{layout.handler_kind(self.value)} {state}"

    def parts(self):
        thread = layout.handler_thread(self.value)
        if thread != 0:
            how = "posted to" if layout.handler_is_posted(self.value) else "handed over to"
            yield how, reading.target(thread)
        if layout.handler_deliveries(self.value) != 0:
            yield "deliveries under way", layout.handler_deliveries(self.value)


class Event(Compound):
    """The event that a callback receives."""

    def parts(self):
        return layout.event_members(self.value).items()


def group_names():
    """The groups' names in their order: the ends of the enumerators' names."""
    groups = gdb.lookup_type("kalStore::KalConfigGroup").fields()
    return [field.name.rpartition("KAL_CONFIG_GROUP_")[2] for field in sorted(groups, key=lambda field: field.enumval)
            if field.enumval >= 0]


class Store(Compound):
    def text(self):
        state = ", cleaned up" if layout.store_is_cleaned_up(self.value) else ""
        return f"settings of call {layout.store_call(self.value)}{state}"

    def parts(self):
        for name, (values, observers) in zip(group_names(), layout.store_groups(self.value)):
            if not layout.is_empty(values):
                yield name, values
            if not layout.is_empty(observers):
                yield f"{name} subscriptions", observers


class Facade(Compound):
    def text(self):
        is_bound = layout.facade_store(self.value) != 0
        return f"facade of call {layout.facade_call(self.value)}" if is_bound else "facade, not bound"

    def parts(self):
        yield "default group", layout.facade_group(self.value)
        yield "store", layout.facade_store(self.value)
        for name, records in zip(group_names(), layout.facade_records(self.value)):
            if not layout.is_empty(records):
                yield f"{name} subscriptions", records


def is_zero(value):
    """Whether a number, array or block has nothing to show."""
    if reading.is_array(value.type):
        return all(is_zero(element) for element in reading.each_of_array(value))
    if reading.is_class(value.type):
        return all(is_zero(part) for _, part in layout.block_members(value))
    return value == 0


def without_zeros(members):
    """The members that are not zero; of an array of blocks those blocks."""
    for name, value in members:
        if reading.is_array(value.type) and reading.is_class(reading.plain(value.type).target()):
            elements = enumerate(reading.each_of_array(value))
            yield from without_zeros((f"{name}[{index}]", element) for index, element in elements)
        elif not is_zero(value):
            yield name, value


class Block(Sequence):
    """A statistics block or record."""

    nothing = "all zero"

    def parts(self):
        return without_zeros(layout.block_members(self.value))


class WideNumber(Printer):
    def text(self):
        return str(layout.wide_number(self.value))


class Statistics(Compound):
    """A statistics object: its medium and its blocks."""

    def __init__(self, medium, blocks, value):
        super().__init__(value)
        self.medium = medium
        self.blocks = blocks

    def text(self):
        count = layout.statistics_references(self.value)
        return (f"{self.medium} statistics of call {layout.statistics_call(self.value)}, "
                f"{count} reference{'' if count == 1 else 's'}")

    def parts(self):
        return without_zeros(self.blocks(self.value).items())


def statistics(medium, blocks):
    return lambda value: Statistics(medium, blocks, value)


def interface(value):
    """The printer of the object that an interface belongs to, if it has one."""
    kind = value.dynamic_type
    make = PRINTERS.get(str(reading.plain(kind)), interface)
    return None if make is interface else make(value.cast(kind))


# The printers by the types' names, regular expressions.
PRINTERS = {
    "ConfigData": Config,
    "ACmThread": Thread,
    "timer_fact<.*>": Meter,
    "json::Value": json_value,
    "json::Object": JsonObject,
    "json::Array": JsonArray,
    "kalStore::atomMap<.*>": NamedValues,
    "kalStore::KalConfigObserverMgr<.*>": NamedHandlers,
    "kalStore::ConfigEventHandler|kalStore::internal::ObserverRecord": Handler,
    "kalStore::KalConfigEvent": Event,
    "kalStore::KalConfig": Store,
    "kalStore::KalConfigHelper": Facade,
    "kalStore::st_KalUInt64": WideNumber,
    "kalStore::st_Kal.*|st_KalVideoStreamStatInfo|kal::_tagSyncStatistics": Block,
    "KalAudioStatisticInfo": statistics("audio", layout.audio_blocks),
    "KalContentAudioStatisticInfo": statistics("content audio", layout.audio_blocks),
    "KalVideoStatisticInfo": statistics("video", layout.video_blocks),
    "KalContentVideoStatisticInfo": statistics("content video", layout.video_blocks),
    "kalStore::IKal(Config|MediaInfo|AudioInfo|VideoInfo)|kal::IKalUnknown": interface,
}
