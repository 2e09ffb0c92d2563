#!/usr/bin/python3
"""Holds the texts of the private modules against the built library: the same objects with the same OIDs, types, access
and indexes."""

import collections
import sys

sys.dont_write_bytecode = True  # nothing is left in the source tree

import mib_exceptions
from mib_checks import ARGUMENTS, check, main, mibhost
from mib_exceptions import ACCESSIBLE_INDEX, NEVER_ANSWER, NEVER_WRITABLE, NOT_ACCESSIBLE
from texts import Texts

# What the library registers for each base type.
TYPES = {"Enumeration": "INTEGER", "Integer32": "INTEGER", "OctetString": "STRING", "Unsigned32": "Gauge32",
         "TimeTicks": "Timeticks", "IpAddress": "IpAddress"}

PRIVATE = "1.3.6.1.4.1"

ADDRESS = ["InetAddressType", "InetAddress"]
# The fields that each kind of index has in a text.
KINDS = {2: ["number"], 6: ["MacAddress"], 7: ADDRESS + ["number"], 10: ADDRESS, 13: ADDRESS * 2,
         14: ["counted string"]}


def field(syntax):
    """How KINDS names an index object."""
    for name in ("MacAddress", *ADDRESS):
        if name in syntax.types:
            return name
    if syntax.base != "OctetString":
        return "number"
    sizes = {size for sizes in syntax.ranges for size in sizes}
    return "counted string" if len(sizes) != 1 else "fixed string"


def check_names(texts):
    """Every name is there once in all modules: managers use names without their module."""
    yield from (f"{name} is there twice" for name in texts.repeated)
    count = collections.Counter(name.lower() for name in texts.nodes)
    yield from (f"{name} differs from another name in case only" for name, n in count.items() if n > 1)


def check_exceptions(texts):
    """What is listed as an exception is there."""
    listed = {name for title, names in vars(mib_exceptions).items() if title.isupper() for name in names}
    return [f"{name} is listed as an exception, and no object" for name in sorted(listed - set(texts.objects))]


def check_object(node, registered, texts):
    """One object of a text and the library's."""
    name = node.name
    table = texts.row(node).name.removesuffix("Entry") + "Table" if node.kind == "column" else None
    for what, in_text, in_library in (
            ("OID", node.oid, registered["oid"]),
            ("type", TYPES.get(node.syntax.base), registered["type"]),
            ("access", node.access.replace("read-create", "read-write"),
             "not-accessible" if name in NOT_ACCESSIBLE else registered["access"]),
            ("table", table, registered.get("table"))):
        if in_text != in_library:
            yield f"{name}: {what} {in_text} in the text, {in_library} in the library"
    if (registered["access"] == "read-write" and not registered["writable"]) != (name in NEVER_WRITABLE):
        yield f"{name}: wrongly listed as having a write method, or as having none"


def check_index(table, kinds, texts):
    """The index of a table: objects that a manager can follow, of the kinds that the library has."""
    row = texts.nodes[table.removesuffix("Table") + "Entry"]
    if row.implied:
        yield f"{row.name}: its index is IMPLIED"
    foreign = [name for name in row.index if name not in texts.objects]
    if foreign:
        yield f"{row.name}: in its index, {', '.join(foreign)} is not an object of these modules"
        return
    fields = [field(texts.objects[name].syntax) for name in row.index]
    expected = [name for kind in kinds for name in KINDS[kind]]
    if fields != expected:
        yield f"{row.name}: index {fields} in the text, {expected} in the library"


def check_access(texts, program, library):
    """Index objects are not-accessible where they answer nothing, and nowhere else."""
    indexes = {name for node in texts.nodes.values() for name in node.index}
    hidden = {name for name, node in texts.objects.items() if node.access == "not-accessible"}
    for listed, found, what in (
            (set(NOT_ACCESSIBLE), hidden, "not-accessible"),
            (set(ACCESSIBLE_INDEX), indexes - hidden, "an index object that is accessible")):
        yield from (f"{name} is {what}, and not listed" for name in found - listed)
        yield from (f"{name} is listed, but not {what}" for name in listed - found)
    # An object that is there asks the switch for its value, or has one.
    for name, node in sorted(texts.objects.items()):
        events = mibhost(program, library, "explain", "get", name + (".0" if node.kind == "scalar" else ""))
        there = any(event["event"] == "show" or "value" in event for event in events)
        if there == (name in hidden or name in NEVER_ANSWER):
            yield f"{name} {'answers' if there else 'answers nothing'}"
    walked = {line["name"] for line in mibhost(program, library, "walk", PRIVATE)}
    yield from (f"{name} answers" for name in walked & (hidden | set(NEVER_ANSWER)))


def run(root_directory, program, library):
    texts = Texts(root_directory)
    by_module = collections.defaultdict(list)
    for line in mibhost(program, library, "list"):
        by_module[line["module"]].append(line)
    wrong = [*check_names(texts), *check_exceptions(texts)]
    private = {module for module, lines in by_module.items() if lines[0]["oid"].startswith(PRIVATE + ".")}
    wrong += [f"{name} has no text" for name in sorted(private) if not texts.module_of_identity(name)]
    for module in texts.modules:
        registered = {line["name"]: line for line in by_module.get(module.identity, [])}
        written = {name for name, node in texts.objects.items() if node.module == module.name}
        wrong += [f"{module.name}: the library has no {name}" for name in sorted(written - set(registered))]
        wrong += [f"{module.name}: the text has no {name}" for name in sorted(set(registered) - written)]
        for name in sorted(written & set(registered)):
            if not registered[name]["oid"].startswith(texts.nodes[module.identity].oid + "."):
                wrong.append(f"{name} is not below {module.identity}")
            wrong += check_object(texts.objects[name], registered[name], texts)
        for table, kinds in {line["table"]: line["kinds"] for line in registered.values() if "table" in line}.items():
            wrong += check_index(table, kinds, texts)
    wrong += check_access(texts, program, library)
    check(not wrong, "\n".join(wrong))
    print(f"{len(texts.modules)} modules, {len(texts.objects)} objects: the texts have what the library has")


main(run, 600, ARGUMENTS)
