# SPDX-License-Identifier: Apache-2.0
"""Where a source file can be changed, and how: the mutants."""

import re
from typing import NamedTuple


class Mutant(NamedTuple):
    file: str
    kind: str
    start: int
    end: int
    text: str


KINDS = ("operator", "number", "condition", "statement", "lock", "swap", "order")
SWAPS = [(r" == ", " != "), (r" != ", " == "), (r" < ", " <= "), (r" > ", " >= "), (r" <= ", " < "), (r" >= ", " > "),
         (r" && ", " || "), (r" \|\| ", " && "), (r" \+ ", " - "), (r" - ", " + "), (r" \* ", " / "), (r" / ", " * "),
         (r" & ", " | "), (r" \| ", " & "), (r" \+= ", " -= "), (r" -= ", " += "), (r"\+\+", "--"), (r"--", "++"),
         (r"\btrue\b", "false"), (r"\bfalse\b", "true")]
NUMBER = re.compile(r"(?<![\w.'])(\d+)(?![\w.'])")
CONDITION = re.compile(r"\b(?:if|while) \(")
STATEMENT = re.compile(r"(?:\*?[A-Za-z_][\w:.\[\]]*(?:->[\w.]+)*(?:\(.*| [-+|&]?= .*|\+\+|--)"
                       r"|(?:\+\+|--)[A-Za-z_][\w:.\[\]>-]*);$")
NO_STATEMENT = re.compile(
    r"(return|const|constexpr|auto|static|using|if|for|while|else|case|throw|goto|static_assert|decltype|alignas)\b"
    r"|.* = (default|delete);$")
PATH = re.compile(r"[A-Za-z_]\w*(?:(?:\.|->)[A-Za-z_]\w*|\[\w+\])*")
INDEX = re.compile(r"\[([A-Za-z_]\w*)\]")
# What is called Store, or Store and of what, writes its first argument and reads the others.
ASSIGNMENT = re.compile(r"(?:(?:relaxed::)?(?:Store\w*|ClearBlocks)\((?P<stored>PATH)(?:, (?P<of>.*))?\)"
                        r"|(?P<to>PATH) [-+|&]?= (?P<value>.*)"
                        r"|(?:\+\+|--)(?P<counted>PATH)|(?P<counter>PATH)(?:\+\+|--));$"
                        .replace("PATH", PATH.pattern))
MOVED = re.compile(rf"(?:std::move|std::exchange|relaxed::Exchange)\(({PATH.pattern})[,)]")
# Of the libraries' own functions, some that only read their arguments.
PURE_CALL = re.compile(r"(?:\bstd::(?:min|max|clamp|greater|string)(?:<[\w:]*>)?|\bstatic_cast<[\w:*& ]+>|\bsizeof"
                       r"|\b(?:mapToKALCodec|SessionTypeOfGroup|TypeOf|ElementPath|High|Low|Saturated\w*(?:<[\w: ]+>)?)"
                       r"|(?:\.|->)(?:size|Size|empty|data|get|Place|FaultPlace|FaultReason)|[^\w>])\(")
WRITING = re.compile(r" [-+|&]?= |\+\+|--")
LOCK = re.compile(r"(?:const )?[\w:]*(?:Lock|Guard) \w+[({].*[)}];$")
# Comments, or strings and characters, which are the first group.
TEXT = re.compile(
    r"//[^\n]*|/\*.*?\*/|(R\"(\w*)\(.*?\)\2\"|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])')", re.S)
CLASS = re.compile(r"(?:class|struct) (?:[A-Z_]+ )?(\w+)[^;()]*\{")
CONSTRUCTOR = re.compile(r"(\w+)\([^()]*\)(?: noexcept)?;")
NOT_CODE = re.compile(r"\s*(#|static_assert|using |namespace |template )")

ATOMIC = re.compile(
    r"(?:\.|->)(load|store|exchange|test_and_set|clear|fetch_\w+|compare_exchange_(?:weak|strong))\(")
ORDER = re.compile(r"std::memory_order_(\w+)")
READS, WRITES = ("load", "test", "wait"), ("store", "clear")
# The arguments before the order, where leaving it out means seq_cst and the name means an atomic operation.
WITHOUT_ORDER = {"load": 0, "store": 1, "exchange": 1, "compare_exchange_weak": 2, "compare_exchange_strong": 2}
WEAKER_READ = {"acquire": ["relaxed"], "seq_cst": ["acquire"]}
WEAKER_WRITE = {"release": ["relaxed"], "seq_cst": ["release"]}
WEAKER = {"acquire": ["relaxed"], "release": ["relaxed"], "acq_rel": ["acquire", "release"], "seq_cst": ["acq_rel"]}


def masked(code):
    """The code with comments, strings and characters masked, every offset kept."""
    return TEXT.sub(lambda match: re.sub(r"[^\n]", "\x01", match.group()), code)


def closing(code, start):
    """Where the parenthesis that opens at `start` closes."""
    depth = 0
    for at in range(start, len(code)):
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        if depth == 0:
            return at
    return -1


def arguments(code, start, end):
    """Where the arguments of a call begin and end."""
    if not code[start:end].strip():
        return []
    commas, depth = [start - 1], 0
    for at in range(start, end):
        depth += {"(": 1, "{": 1, "[": 1, ")": -1, "}": -1, "]": -1}.get(code[at], 0)
        if code[at] == "," and depth == 0:
            commas.append(at)
    return [(begin + 1, stop) for begin, stop in zip(commas, [*commas[1:], end])]


def weaker_orders(path, plain):
    """Each atomic operation with an order that is one step weaker."""
    for call in ATOMIC.finditer(plain):
        name, end = call[1], closing(plain, call.end() - 1)
        given = arguments(plain, call.end(), end)
        orders = [found for begin, stop in given if (found := ORDER.fullmatch(plain[begin:stop].strip()))]
        of_operation = WEAKER_READ if name in READS else WEAKER_WRITE if name in WRITES else WEAKER
        of_failure = WEAKER_READ  # The second order of an exchange that compares.
        for order, (begin, stop), weaker in zip(orders, given[len(given) - len(orders):], (of_operation, of_failure)):
            start = plain.index("std::", begin)
            for weakened in weaker.get(order[1], []):
                yield Mutant(path, "order", start, stop, f"std::memory_order_{weakened}")
        expected = WITHOUT_ORDER.get(name, 1 if name.startswith("fetch_") else None)
        if not orders and len(given) == expected:
            comma = ", " if given else ""
            yield Mutant(path, "order", end, end, f"{comma}std::memory_order_{of_operation['seq_cst'][0]}")


def is_within(path, other):
    """Whether one names a part of the other, or the same."""
    return path == other or path.startswith((f"{other}.", f"{other}->", f"{other}["))


def may_overlap(path, other):
    """Whether they may name parts of one thing. An index that is a name may be any number."""
    if INDEX.search(path) or INDEX.search(other):
        path, other = (re.sub(r"\[\w+\]", "[]", one) for one in (path, other))
    return is_within(path, other) or is_within(other, path)


def assigned(statement):
    """The paths that an assignment writes, where it calls nothing that might write more; otherwise none."""
    found = ASSIGNMENT.match(statement)
    if not found:
        return []
    value = found["of"] or found["value"] or ""
    moved = MOVED.findall(value)
    if WRITING.search(value) or len(PURE_CALL.findall(f" {value}")) + len(moved) != value.count("("):
        return []
    return [found["stored"] or found["to"] or found["counted"] or found["counter"], *moved]


def are_independent(first, second):
    """Whether these do the same in either order: assignments, none of which writes what the other names."""
    statements = first, second
    return all(assigned(one) for one in statements) and not any(
        may_overlap(path, other)
        for one, another in (statements, statements[::-1])
        for path in assigned(one) for other in PATH.findall(another) + INDEX.findall(another))


def mutants_of(path, code):
    plain = masked(code)
    classes = CLASS.findall(plain)
    at, before, neighbour = 0, ";", None
    for line in plain.splitlines(keepends=True):
        if not NOT_CODE.match(line):
            for pattern, replacement in SWAPS:
                for match in re.finditer(pattern, line):
                    yield Mutant(path, "operator", at + match.start(), at + match.end(), replacement)
            for match in NUMBER.finditer(line):
                value = int(match.group())
                yield Mutant(path, "number", at + match.start(), at + match.end(),
                             "0" if value == 1 else str(value + 1))
            for match in CONDITION.finditer(line):
                start = at + match.end() - 1
                end = closing(plain, start)
                if end > 0 and ";" not in plain[start:end]:
                    yield Mutant(path, "condition", start, end + 1, "(!" + code[start:end + 1] + ")")
        statement = line.strip().rstrip("\x01").rstrip()
        indent = len(line) - len(line.lstrip())
        here = None
        if before in ";{}:" and indent >= 2:
            is_lock = LOCK.match(statement)
            constructor = CONSTRUCTOR.fullmatch(statement)
            is_declared = NO_STATEMENT.match(statement) or (constructor and constructor[1] in classes)
            if is_lock or (STATEMENT.match(statement) and not is_declared):
                here = (at + indent, at + indent + len(statement), indent)
                yield Mutant(path, "lock" if is_lock else "statement", *here[:2], ";")
                if neighbour and neighbour[2] == indent and not are_independent(
                        plain[neighbour[0]:neighbour[1]], plain[here[0]:here[1]]):
                    yield Mutant(path, "swap", neighbour[0], here[1],
                                 code[here[0]:here[1]] + code[neighbour[1]:here[0]] + code[neighbour[0]:neighbour[1]])
        if line.strip("\x01 \n"):  # Not of comments and empty lines.
            neighbour = here
        before = statement[-1] if statement else before
        at += len(line)
    yield from weaker_orders(path, plain)


def changed(mutant, code):
    return code[:mutant.start] + mutant.text + code[mutant.end:]


def lines_of(mutant, code):
    """The lines of the place, without indentation: as they are, and as the mutant has them."""
    begin = code.rfind("\n", 0, mutant.start) + 1
    end = code.find("\n", mutant.end)
    end = len(code) if end < 0 else end
    after = code[begin:mutant.start] + mutant.text + code[mutant.end:end]
    return tuple(" ".join(line.strip() for line in part.splitlines()) for part in (code[begin:end], after))
