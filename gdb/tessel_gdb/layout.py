# SPDX-License-Identifier: Apache-2.0
"""Reads the members of the project's classes: the only file that names them."""

from tessel_gdb.reading import (each_of_array, each_of_list, each_of_map, each_of_vector, is_callable, member, plain,
                                pointer_of, require, size_of_map, sole, target)

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
            for handler in each_of_list(member(entry, "handlers")))


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
    notify = (member(target(pointer_of(member(handler, "m_callback"))), "m_fn") if is_record
              else member(handler, "m_fnNotify"))
    if is_callable(notify):
        return "subscription"
    return "binding" if is_callable(member(handler, "m_fnInvoke")) else "empty handler"


def handler_thread(handler):
    """The pointer to the subscriber's thread; null for a direct delivery."""
    return member(handler, "m_pRunThread")


def handler_is_posted(handler):
    return member(handler, "m_bAsync") != 0


def handler_deliveries(handler):
    """The number of deliveries that a removal waits for."""
    return int(sole(member(handler, "m_nPendingNotify")))


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
