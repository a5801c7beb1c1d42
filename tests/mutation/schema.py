# SPDX-License-Identifier: Apache-2.0
"""Source code that contains many mutants, each chosen by its number when the program runs."""

import re
from typing import NamedTuple

from places import ORDER, TEXT, closing

HEADER = '#include "{}"\n'
# What a change may be confined to: operands of operators that bind at least as closely as the changed one.
PRECEDENCE = {"||": 1, "&&": 2, "|": 3, "^": 4, "&": 5, "==": 6, "!=": 6, "<": 7, ">": 7, "<=": 7, ">=": 7, "<=>": 7,
              "<<": 8, ">>": 8, "+": 9, "-": 9, "*": 10, "/": 10, "%": 10, "+=": 0,
              "-=": 0}
# Types in the angle brackets of a cast, or of numeric_limits, may have spaces.
SPACED_TYPE = re.compile(r"(?<=_cast<)[\w:*& ]+(?=>\()|(?<=_limits<)[\w: ]+(?=>)")
EXPONENT = re.compile(r"\b(?:0x)?[\d.a-fA-F]+[ep]-$")
VARIABLE = re.compile(r"[\w>&*] +[\w:]+$")  # Not a type: before a value in braces.
DIRECTIVE = re.compile(r"\s*#")
OPENING, CLOSING = "([{", ")]}"
CONSTANT = re.compile(r"\s*(?:inline )?(constexpr) (?!auto )[^(){};]* \w+ = ")


class Region(NamedTuple):
    """What stands for a mutant and its original: an expression, or whole statements."""
    start: int
    end: int
    is_statement: bool = False


class Placed(NamedTuple):
    """Where the new text has a mutant: all of its variants, and its own."""
    start: int
    end: int
    numbers: tuple
    own: tuple  # (start, end, number) of each.


def plain_of(code):
    """The code without comments, with strings, characters and types of more than one word masked, every offset kept."""
    plain = TEXT.sub(lambda found: re.sub(r"[^\n]", "\x01" if found[1] else " ", found[0]), code)
    return SPACED_TYPE.sub(lambda found: "\x01" * len(found[0]), plain)


def is_in_directive(code, at):
    """Whether a directive of the preprocessor, such as a macro, has this place: no line can begin in it."""
    begin = code.rfind("\n", 0, at) + 1
    while code[:begin].endswith("\\\n"):
        begin = code.rfind("\n", 0, begin - 1) + 1
    return bool(DIRECTIVE.match(code, begin))


def operand_before(plain, at):
    """Where the operand that ends at `at` begins."""
    depth = 0
    while at > 0:
        char = plain[at - 1]
        if char in CLOSING:
            if depth == 0 and char == "}" and plain[at:at + 1] == "\n":
                break  # The end of a block.
            depth += 1
        elif char in OPENING:
            if depth == 0:
                break
            depth -= 1
        elif depth == 0 and (char.isspace() or char in ",;"):
            break
        at -= 1
    word = re.search(r"\bsizeof\s+$", plain[:at])
    return word.start() if word else at


def operand_after(plain, at):
    """Where the operand that begins at `at` ends."""
    word = re.match(r"sizeof\s+", plain[at:])
    at += word.end() if word else 0
    depth = 0
    while at < len(plain):
        char = plain[at]
        if char in OPENING:
            depth += 1
        elif char in CLOSING:
            if depth == 0:
                break
            depth -= 1
        elif depth == 0 and (char.isspace() or char in ",;"):
            break
        at += 1
    return at


def expression(plain, start, end, precedence):
    """The operands around a place, with all operators between them that bind so closely."""
    while True:
        start = operand_before(plain, start)
        rest = plain[:start].rstrip()
        operator = re.search(r"\s(\S+)$", rest)
        if not operator or rest == plain[:start] or PRECEDENCE.get(operator[1], -1) < precedence:
            break
        start = len(rest[:operator.start()].rstrip())
    while True:
        end = operand_after(plain, end)
        operator = re.match(r"\s+(\S+)\s+", plain[end:])
        if not operator or PRECEDENCE.get(operator[1], -1) < precedence:
            break
        end += operator.end()
    return Region(start, end)


def end_of_expression(plain, at):
    """Where what is assigned at `at` ends."""
    while plain[at] not in ",;" and plain[at] not in CLOSING:
        at = operand_after(plain, at + 1)
    return at


def region_of(mutant, code, plain):
    """What is there twice in the schema; None where no program can choose."""
    was = code[mutant.start:mutant.end]
    if is_in_directive(code, mutant.start):
        return None
    if mutant.kind in ("statement", "swap"):
        is_declared = re.search(r"(?:Lock|Guard) \w+[({]", was)
        return None if is_declared else Region(mutant.start, mutant.end, True)
    if mutant.kind == "condition":
        return Region(mutant.start + 1, mutant.end - 1)
    if mutant.kind == "order":
        opening, depth = mutant.start, 1
        while depth > 0:
            opening -= 1
            depth += {")": 1, "(": -1}.get(plain[opening], 0)
        return expression(plain, opening, closing(plain, opening) + 1, 99)
    if mutant.kind == "operator":
        if was.strip() in PRECEDENCE:
            begin = len(plain[:mutant.start].rstrip())
            after = mutant.end + re.match(r"\s*", plain[mutant.end:]).end()
            if was.strip() in ("+=", "-="):
                return Region(operand_before(plain, begin), end_of_expression(plain, after))
            return expression(plain, begin, after, PRECEDENCE[was.strip()])
        if was in ("++", "--"):
            return expression(plain, mutant.start, mutant.end, 99)
    if mutant.kind == "number":
        exponent = EXPONENT.search(plain[:mutant.start])
        if exponent:
            return Region(exponent.start(), mutant.end)
        before = plain[:mutant.start - 1]
        if plain[mutant.start - 1] + plain[mutant.end] == "{}" and not VARIABLE.search(before):
            return Region(operand_before(plain, len(before)), mutant.end + 1)
    return None if mutant.kind == "lock" else Region(mutant.start, mutant.end)


class Schema:
    """The code of a file with the mutants of these numbers: `text`, and which of them are `left_out`."""

    def __init__(self, header, code, mutants):
        self.code, self.mutants = code, mutants
        self.plain = plain_of(code)
        self.left_out = []
        self.placed = []
        self.regions = self.laid_out()
        self.parts, self.at = [], 0
        if self.regions:
            self.put(HEADER.format(header))
        self.write(0, len(code), sorted(self.regions, key=lambda region: (region.start, -region.end)))
        self.text = "".join(self.parts)

    def laid_out(self):
        """By region, the numbers: regions contain each other or have nothing in common."""
        regions = {}
        for number, mutant in self.mutants.items():
            region = region_of(mutant, self.code, self.plain)
            if region is None or any(
                    a.start < b.start < a.end < b.end or (a[:2] == b[:2] and a != b)
                    for one in regions for a, b in ((region, one), (one, region))):
                self.left_out.append(number)
            else:
                regions.setdefault(region, []).append(number)
        return regions

    def put(self, text):
        self.parts.append(text)
        self.at += len(text)

    def write(self, start, end, regions):
        """The code from `start` to `end`, with these regions in it."""
        while regions:
            region = regions[0]
            inner = [one for one in regions[1:] if one.start < region.end]
            self.write_plain(start, region.start, region)
            self.write_region(region, inner)
            start, regions = region.end, regions[1 + len(inner):]
        self.put(self.code[start:end])

    def write_plain(self, start, end, region):
        """A constant that contains a mutant is one only when the program has begun."""
        line = self.code.rfind("\n", 0, end) + 1
        constant = CONSTANT.match(self.plain[line:region.end])
        if constant and start <= line + constant.start(1):
            self.put(self.code[start:line + constant.start(1)] + "const")
            start = line + constant.end(1)
        self.put(self.code[start:end])

    def chooses(self, number, region):
        line = self.code.rfind("\n", 0, region.start) + 1
        return f"mutation::{'Chosen' if CONSTANT.match(self.plain[line:region.end]) else 'Is'}({number})"

    def write_region(self, region, inner):
        begin, own = self.at, []
        numbers = sorted(self.regions[region], key=lambda number: self.mutants[number].kind == "condition")
        self.put("{ " if region.is_statement else "(")
        is_condition = False
        for number in numbers:
            mutant = self.mutants[number]
            first = self.at
            if mutant.kind == "condition":
                self.put(f"{self.chooses(number, region)} != ")
                is_condition = True
            else:
                text = (self.code[region.start:mutant.start] + mutant.text + self.code[mutant.end:region.end])
                form = "if ({}) {{ {}\n}} else " if region.is_statement else "{} ? ({}\n) : "
                self.put(form.format(self.chooses(number, region), text))
            own.append((first, self.at, number))
        self.put("{ " if region.is_statement else "static_cast<bool>(" if is_condition else "(")
        self.write(region.start, region.end, inner)
        self.put("\n}}" if region.is_statement else "))")
        self.placed.append(Placed(begin, self.at, tuple(numbers), tuple(own)))

    def numbers_at(self, line, column):
        """The mutants that a compiler's message about this place is about."""
        lines = self.text.split("\n")
        at = sum(len(one) + 1 for one in lines[:line - 1]) + column - 1
        around = [one for one in self.placed if one.start <= at < one.end]
        if not around:
            return []
        inmost = min(around, key=lambda one: one.end - one.start)
        return [number for start, end, number in inmost.own if start <= at < end] or list(inmost.numbers)

    def numbers_on(self, line, _):
        """Those that have something on the line."""
        lines = self.text.split("\n")
        start = sum(len(one) + 1 for one in lines[:line - 1])
        end = start + len(lines[line - 1])
        return sorted({number for one in self.placed if one.start <= end and one.end >= start
                       for number in one.numbers})
