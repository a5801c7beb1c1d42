# SPDX-License-Identifier: Apache-2.0
"""Reads the members of the project's classes: the only file that names them."""

from types import SimpleNamespace

import gdb

from tessel_gdb.reading import (each_of_array, each_of_map, each_of_vector, is_callable, member,
                                optional, plain, pointer_of, require, size_of_map, sole, target, variable)

# ConfigData, ACmThread, timer_fact


def config_text(value):
    """A ConfigData's std::string; None when it is empty."""
    is_valid = int(member(value, "m_valid"))
    require(is_valid in (0, 1))
    return member(value, "m_text") if is_valid else None


def thread_name(thread):
    """The name of an ACmThread: a std::string."""
    return member(target(sole(member(thread, "m_impl"))), "m_name")


def meter_start(meter):
    return int(member(meter, "m_tag"))


# json


def json_kind(value):
    """The enumerator, without its namespace."""
    return str(member(value, "mValueType")).rpartition("::")[2]


# The kinds of a json::Value that hold one simple thing.
JSON_SCALARS = {
    "StringVal": "mStringVal",
    "IntVal": "mIntVal",
    "UnsignedIntVal": "mUnsignedIntVal",
    "Int64Val": "mInt64Val",
    "FloatVal": "mFloatVal",
    "DoubleVal": "mDoubleVal",
    "BoolVal": "mBoolVal",
}


def json_scalar(value):
    kind = json_kind(value)
    require(kind in JSON_SCALARS)
    return member(value, JSON_SCALARS[kind])


def json_object(value):
    """The json::Object of a json::Value; None when nothing was ever written to it."""
    return json_held(member(value, "mObjectVal"))


def json_array(value):
    """The json::Array of a json::Value; None when nothing was ever written to it."""
    return json_held(member(value, "mArrayVal"))


def json_held(owned):
    held = member(owned, "m_held")
    return target(held) if held != 0 else None


def json_members(json_object):
    """Pairs of key and value."""
    return pairs(member(json_object, "m_members"))


def json_elements(json_array):
    return each_of_vector(member(json_array, "m_elements"))


# The maps of a store and a facade


def pairs(tree):
    return ((pair["first"], pair["second"]) for pair in each_of_map(tree))


def named_values(atom_map):
    """The entries of an atomMap: pairs of key and value."""
    return pairs(member(atom_map, "m_map"))


def named_handlers(observers):
    """The subscriptions and bindings of a KalConfigObserverMgr: pairs of name and pointer to a handler."""
    return ((name, handler) for name, entry in pairs(member(observers, "m_map"))
            for handler in each_of_vector(member(entry, "handlers")))


def is_empty(names):
    """Whether an atomMap or KalConfigObserverMgr has no entry."""
    return size_of_map(member(names, "m_map")) == 0


# KalConfig


def store_call(store):
    return int(member(store, "m_callId"))


def store_is_cleaned_up(store):
    return member(store, "m_bCleanedUp") != 0


def store_groups(store):
    """For each group its values, an atomMap, and its observers, a KalConfigObserverMgr."""
    return zip(each_of_array(member(store, "m_configs")), each_of_array(member(store, "m_observerMgrs")))


# KalConfigHelper


def facade_call(facade):
    return int(sole(member(facade, "m_callId")))


def facade_group(facade):
    return sole(member(facade, "m_defaultGroup"))


def facade_store(facade):
    """The pointer to the store; null while the facade is not bound."""
    return sole(member(facade, "m_pIKalConfig"))


def facade_records(facade):
    """The records of each group, an atomMap."""
    return each_of_array(member(target(sole(member(facade, "m_pObserverHelper"))), "m_records"))


# ConfigEventHandler

BEING_MADE = 2**64 - 1  # The id of a facade's record while the store registers its subscription.


def handler_id(handler):
    return int(member(handler, "m_SubscribeId"))


def handler_kind(handler):
    # The record of a facade guards its change callback.
    is_record = any(field.name == "m_callback" for field in handler.type.fields())
    notify = (optional(member(target(pointer_of(member(handler, "m_callback"))), "m_fn", "m_given")) if is_record
              else member(handler, "m_fnNotify"))
    if notify is not None and is_callable(notify):
        return "subscription"
    return "binding" if is_callable(member(handler, "m_fnInvoke")) else "empty handler"


def handler_thread(handler):
    """The pointer to the subscriber's thread; null for a direct delivery."""
    return member(handler, "m_pRunThread")


def handler_is_posted(handler):
    return member(handler, "m_bAsync") != 0


def handler_deliveries(handler):
    """The number of deliveries that a removal waits for."""
    return int(sole(member(handler, "m_nPendingNotify"))) + (member(handler, "m_notifyThreadId") != 0)


# KalConfigEvent


def event_members(event):
    return {"name": member(event, "m_name"), "old": member(event, "m_oldValue"), "new": member(event, "m_newValue"),
            "default": member(event, "m_defaultValue"), "group": member(event, "m_group"),
            "session": member(event, "m_sessionType")}


# Statistics


def statistics_call(entity):
    return int(member(entity, "m_callId"))


def statistics_references(entity):
    return int(sole(member(entity, "m_references")))


def video_blocks(entity):
    return {"tx": member(entity, "m_txBlock"), "rx": member(entity, "m_rxBlock")}


def audio_blocks(entity):
    return {"tx": member(entity, "m_txBlock"), "rx": member(entity, "m_rxBlocks"),
            "sync": member(entity, "m_syncRecords")}


def wide_number(halves):
    """An st_KalUInt64."""
    return int(member(halves, "high")) << 32 | int(member(halves, "low"))


def block_members(block):
    """The members of a block that have a meaning: pairs of name and value."""
    for field in plain(block.type).fields():
        if not field.name:
            yield from block_members(block[field])
        elif not field.name.startswith("reserved"):
            yield field.name, block[field]


# The registries


def stores():
    """For each call its id, the references to its store, and the store."""
    calls = variable("kalStore::(anonymous namespace)::g_mapConfigs")
    if calls == 0:
        return
    for call, entry in pairs(target(calls)):
        yield int(call), int(member(entry, "counts")), target(pointer_of(member(entry, "store")))


def size_of_names(names):
    """The number of entries of an atomMap."""
    return size_of_map(member(names, "m_map"))


def statistics_objects():
    """The pointers to the process's statistics objects, as callers have them."""
    registry = gdb.parse_and_eval("&kalStore::kalTesselInstant").cast(
        gdb.lookup_type("kalStore::CKalTessel").pointer())
    for key, entity in pairs(member(target(registry), "m_entities")):
        is_video = int(key["first"]) in (1, 2)
        medium = gdb.lookup_type("kalStore::IKalVideoInfo" if is_video else "kalStore::IKalAudioInfo")
        yield entity.cast(medium.pointer())


# The journal

BAD_ARGUMENT, UNCHANGED, NOBODY = 0x46004003, 0x46004009, 0x4600400a  # kResultBadArgument and so on.
NO_GROUP = -1  # KAL_CONFIG_GROUP_DEFAULT


def journal_is_on():
    return int(sole(variable("kalStore::internal::g_isJournalOn"))) != 0


def journal_next():
    """The number that the next event will have."""
    return int(sole(member(variable("kalStore::internal::g_journalNumber"), "next")))


def journal_begin():
    """The first number that is in the ring, or was."""
    return int(sole(variable("kalStore::internal::(anonymous namespace)::g_ringBegin")))


def journal_ring():
    """Where the records are; None before the first start."""
    pointer = sole(variable("kalStore::internal::g_journalRing"))
    if pointer == 0:
        return None
    ring = target(pointer)
    capacity = int(member(ring, "m_mask")) + 1
    require(capacity & capacity - 1 == 0 and capacity <= 1 << 20)
    place = gdb.lookup_type("kalStore::internal::JournalRing::Place")
    fields = {field.name: field for field in place.fields()}
    return SimpleNamespace(address=int(sole(member(ring, "m_places"))), capacity=capacity, stride=place.sizeof,
                           state=fields["state"].bitpos // 8, words=fields["words"].bitpos // 8,
                           words_size=fields["words"].type.sizeof)
