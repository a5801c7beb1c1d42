# SPDX-License-Identifier: Apache-2.0
"""Reads values of gdb and of the standard library; knows nothing of the project.

Every fault of a value raises an exception. Containers are checked while they are read, so that reading ends whatever
the memory contains.
"""

import gdb


class Unreadable(Exception):
    """Why a value cannot be shown; shown in its place."""


def host_string(ask):
    """A string that gdb is asked for; bytes that are none of the locale's characters become escapes."""
    try:
        return ask()
    except UnicodeDecodeError as error:
        return error.object.decode("ascii", "backslashreplace")


def require(condition):
    if not condition:
        raise Unreadable("uninitialised, destroyed or damaged")


def referred(value):
    """The object of a reference; any other value itself."""
    return value.referenced_value() if value.type.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF) else value


def place(value):
    """The address of the value as a number; unlike any other when it has none."""
    return object() if value.address is None else int(value.address)


def plain(kind):
    """The type without typedefs and qualifiers."""
    return kind.strip_typedefs().unqualified()


def is_a(value, template):
    """Whether the value's type is made from that class template."""
    return str(plain(value.type)).startswith(template + "<")


def is_class(kind):
    return plain(kind).code in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION)


def is_array(kind):
    return plain(kind).code == gdb.TYPE_CODE_ARRAY


def member(value, *path):
    """value.path[0].path[1]..."""
    for name in path:
        kind = plain(value.type)
        if not kind.fields():
            raise Unreadable(f"no debug information for {kind}")
        try:
            value = value[name]
        except gdb.error as problem:
            raise Unreadable(f"no member {name} in {kind}: the printers are of another version") from problem
    return value


def loaded(value):
    """The value; raises when its memory cannot be read."""
    value.fetch_lazy()
    return value


def target(pointer):
    return loaded(pointer.dereference())


def sole(value):
    """The one part of a std::atomic or std::unique_ptr: its value, or its pointer."""
    held = plain(value.type).template_argument(0)
    if is_a(value, "std::unique_ptr"):
        held = held.pointer()
    require(held.sizeof == plain(value.type).sizeof and value.address is not None)
    return value.address.cast(held.pointer()).dereference()


def pointer_of(shared):
    """The pointer of a std::shared_ptr."""
    return member(shared, "_M_ptr")


def optional(held):
    """The value of a std::optional, or None."""
    payload = member(held, "_M_payload")
    return member(payload, "_M_payload", "_M_value") if member(payload, "_M_engaged") else None


def is_callable(function):
    """Whether a std::function holds something."""
    return member(function, "_M_manager") != 0


def text(string):
    """A std::string, as gdb quotes and shortens it."""
    start, length = member(string, "_M_dataplus", "_M_p"), member(string, "_M_string_length")
    require((start + length).dereference() == 0)
    return start.lazy_string(length=int(length))


def size_of_map(tree):
    return int(member(tree, "_M_t", "_M_impl", "_M_node_count"))


def each_of_map(tree):
    """The pairs of a std::map in order. A node is accepted only when it points to its parent."""
    pair = plain(tree.type).template_argument(3).template_argument(0)
    header = member(tree, "_M_t", "_M_impl", "_M_header")
    require(header.address is not None)
    parent, node, above, seen = header.address, header["_M_parent"], [], 0
    while node != 0 or above:
        while node != 0:
            base = target(node)
            require(base["_M_parent"] == parent and (base["_M_left"] != base["_M_right"] or base["_M_left"] == 0))
            require(len(above) < 128)  # Twice the logarithm of any size.
            above.append(node)
            parent, node = node, base["_M_left"]
        parent = above.pop()
        seen += 1
        require(seen <= size_of_map(tree))
        yield target((parent + 1).cast(pair.pointer()))
        node = parent["_M_right"]
    require(seen == size_of_map(tree))


def each_of_vector(row):
    """The elements of a std::vector."""
    first, end, limit = (member(row, "_M_impl", name) for name in ("_M_start", "_M_finish", "_M_end_of_storage"))
    require(first <= end <= limit and (int(end) - int(first)) % first.type.target().sizeof == 0)
    while first != end:
        yield target(first)
        first += 1


def each_of_array(row):
    """The elements of a built-in array or a std::array."""
    if not is_array(row.type):
        row = member(row, "_M_elems")
    first, last = plain(row.type).range()
    return [row[index] for index in range(first, last + 1)]


def variable(name):
    """A variable of the libraries, also one that only its source file knows."""
    symbol = gdb.lookup_static_symbol(name) or gdb.lookup_global_symbol(name)
    if symbol is None:
        raise Unreadable(f"no debug information for {name}: the library is not loaded, or was stripped")
    return symbol.value()


def enumerators(name, prefix):
    """The names of an enum's values, without their prefix, by the values."""
    fields = gdb.lookup_type(name).fields()
    return {field.enumval: field.name.rpartition("::")[2].removeprefix(prefix) for field in fields}


def content(string):
    """The bytes of a std::string."""
    start, length = member(string, "_M_dataplus", "_M_p"), int(member(string, "_M_string_length"))
    return gdb.selected_inferior().read_memory(int(start), length).tobytes() if length else b""
