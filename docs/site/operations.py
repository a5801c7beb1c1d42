# SPDX-License-Identifier: Apache-2.0
"""Checks that every operation of the exported headers is described: what it does, what it returns, on which threads it
may run, and an example. The last two may be in the comment of its class, of a base of it, or of its header. An argument
whose name says it all needs no line.
"""

import sys
from pathlib import Path

from headers import text_of


class Scope:
    """A class or a header: what it says for all its operations."""

    def __init__(self, compound):
        self.kind = compound.get("kind")
        self.name = text_of(compound.find("compoundname"))
        self.bases = [base.get("refid") for base in compound.findall("basecompoundref")]
        self.outer = None
        self.is_described = any(text_of(compound.find(f"{kind}description")) for kind in ("brief", "detailed"))
        self.says = says(compound.find("detaileddescription"))
        self.functions = compound.findall("sectiondef/memberdef[@kind='function']")
        # A friend with arguments is an operator; one without is a class, which is no operation.
        friends = compound.findall("sectiondef/memberdef[@kind='friend']")
        self.functions += [friend for friend in friends if text_of(friend.find("argsstring"))]


def says(description):
    """The headings of a description."""
    if description is None:
        return set()
    return {text_of(title) for title in description.iterfind(".//simplesect[@kind='par']/title")}


def scopes_of(compounds):
    scopes = {refid: Scope(compound) for refid, compound in compounds.items()}
    for refid, compound in compounds.items():
        for inner in compound.findall("innerclass"):
            if inner.get("refid") in scopes and scopes[refid].kind not in ("file", "namespace"):
                scopes[inner.get("refid")].outer = refid
    return scopes


def said_for_all(scopes, refid):
    """What a class says for its operations, or a base or the class around it does."""
    scope = scopes.get(refid)
    if scope is None:
        return set()
    return scope.says.union(*(said_for_all(scopes, other) for other in [*scope.bases, scope.outer]))


def is_copy_or_end(function, scope):
    """Copies, moves, comparisons and destructors do what their names say."""
    name = text_of(function.find("name"))
    own = scope.name.split("::")[-1].split("<")[0].strip()
    types = [text_of(parameter.find("type")) for parameter in function.findall("param")]
    is_copy = name == own and len(types) == 1 and f"{own} &" in types[0]
    return is_copy or name in ("operator=", "operator==", f"~{own}")


def lacks(function, scope, said):
    """The headings that an operation lacks."""
    arguments = text_of(function.find("argsstring"))
    if arguments == "()=default" or arguments.endswith("=delete") or is_copy_or_end(function, scope):
        return
    description = function.find("detaileddescription")
    if not text_of(function.find("briefdescription")) and not text_of(description):
        yield "a description"
        return
    kind = text_of(function.find("type")).removeprefix("consteval").removeprefix("constexpr").strip()
    returns = kind not in ("", "void") or text_of(function.find("name")).startswith("operator ")
    if returns and not text_of(description.find(".//simplesect[@kind='return']")):
        yield "what it returns"
    for heading in ("Threads", "Example"):
        if heading not in said | says(description):
            yield f"'{heading}', here or at its class or header"


def check_operations(compounds):
    """Prints what the description of an operation lacks; whether nothing is."""
    scopes = scopes_of(compounds)
    said_by_header = {scope.name: scope.says for scope in scopes.values() if scope.kind == "file"}
    seen, complaints = set(), []
    for refid, scope in scopes.items():
        for function in scope.functions:
            if function.get("prot") == "private" or function.get("id") in seen:
                continue
            seen.add(function.get("id"))
            location = function.find("location")
            file = Path(location.get("file"))
            said = said_for_all(scopes, refid) | said_by_header[file.name]
            name = text_of(function.find("definition")) + text_of(function.find("argsstring"))
            place = f"{file}:{location.get('line')}: {name}"
            complaints += [f"{place} lacks {heading}" for heading in lacks(function, scope, said)]
            if not scope.is_described:
                complaints.append(f"{place} has no page while nothing is said of its header: @file")
    for complaint in sorted(complaints):
        print(complaint, file=sys.stderr)
    print(f"docs: {len(seen)} operations described, {len(complaints)} headings missing")
    return seen and not complaints
