#!/usr/bin/python3
"""Tries every writable object of the texts at the ends of its ranges, at each named number and just beyond, through the
library: it accepts what a text allows and refuses the rest."""

import sys

sys.dont_write_bytecode = True  # nothing is left in the source tree

from mib_checks import ARGUMENTS, check, main, mibhost
from mib_exceptions import ALWAYS_REFUSED, CHECKED_BY_THE_SWITCH, CUT, NEVER_WRITABLE, ONLY_READ
from texts import Texts

OF_NUMBERS = {"Enumeration": (-2**31, 2**31 - 1), "Integer32": (-2**31, 2**31 - 1), "Unsigned32": (0, 2**32 - 1)}
ENDLESS = 600  # octets that a text without a largest size has to admit

# What the switch says when the library asks it something before it decides: a value has to be accepted in one case.
CASES = {
    "swPort": [
        "_get_port_info.1=0 _get_port_info.2=1",          # one copper connector
        "_get_port_info.1=2 _get_port_info.2=1",          # a combo port on copper
        "_get_port_info.1=2 _get_port_info.2=2",          # a combo port on fiber
        "_get_port_info.1=268435456 _get_port_info.2=2",  # one that can be broken out
    ],
    "nPrivateVlanVlanRowStatus": ["write_nPrivateVlanVlanRowStatus=0"],  # a VLAN without a type
}

# What a row status applies, to be set before it in the same request.
BEFORE = {"nVlanSubnetVlanRowStatus": "nVlanSubnetVlanId=10", "nPrivateVlanVlanRowStatus": "nPrivateVlanVlanType=2"}


def sub_ids(node, multicast):
    """Sub-identifiers for an index object. Interfaces are port 1 and the one of VLAN 10."""
    syntax, is_mld = node.syntax, "Mld" in node.name
    if "MacAddress" in syntax.types:
        return [2, 0x50, 0, 0, 0, 1]
    if "InetAddress" in syntax.types:
        if is_mld:
            return [16, 0xff, 0x3e] + [0] * 13 + [1]
        return [4, 239, 1, 0, 1] if multicast else [4, 10, 0, 10, 0]
    if "InterfaceIndex" in syntax.types:
        return [1034 if "Vlan" in node.name else 5121]
    if syntax.base == "OctetString":
        return [2, 8, 0]
    return [(2 if is_mld else 1) if syntax.names else 10]  # an InetAddressType has names


def index_of(node, texts):
    if node.kind == "scalar":
        return ".0"
    multicast = node.name.startswith("mgmd")
    ids = [i for name in texts.row(node).index for i in sub_ids(texts.objects[name], multicast)]
    return "".join(f".{i}" for i in ids)


def as_argument(syntax, value):
    """A number, or a text of so many octets, as a word of a set."""
    if syntax.base == "OctetString":
        return "text:" + "1" * value if "DisplayString" in syntax.types else "hex:" + "00" * value
    return str(value)


def candidates(syntax):
    """Numbers or sizes in and just out of what the syntax admits."""
    low, high = OF_NUMBERS.get(syntax.base, (0, 65535))
    if syntax.names:
        inside, around = set(syntax.names), range(min(syntax.names) - 1, max(syntax.names) + 2)
    else:
        ranges = syntax.ranges or [(low, min(high, ENDLESS) if syntax.base == "OctetString" else high)]
        inside = {end for ends in ranges for end in ends}
        around = {near for end in inside for near in (end - 1, end + 1)}
    return sorted(inside), sorted(n for n in around if low <= n <= high and not syntax.admits(n))


def run(root_directory, program, library):
    texts = Texts(root_directory)
    wrong, tried = [], 0

    def answers(node, value):
        """The errors of a SET, one for each case."""
        nonlocal tried
        index = index_of(node, texts)
        varbinds = [f"{node.name}{index}={as_argument(node.syntax, value)}"]
        if node.name in BEFORE:
            varbinds.insert(0, BEFORE[node.name].replace("=", index + "="))
        for said in next((cases for prefix, cases in CASES.items() if node.name.startswith(prefix)), [""]):
            tried += 1
            events = mibhost(program, library, "explain", "set", *varbinds, "config=ok", *said.split())
            answer = next(event for event in events if event["event"] == "answer" and "error" in event)
            yield answer["error"]

    for name, node in sorted(texts.objects.items()):
        if node.access not in ("read-write", "read-create") or name in NEVER_WRITABLE:
            continue
        inside, outside = candidates(node.syntax)
        for value in inside + outside:
            errors = set(answers(node, value))
            accepted = "noError" in errors
            if value in outside:
                is_right = accepted == (name in CHECKED_BY_THE_SWITCH + CUT)
            elif name in ALWAYS_REFUSED:
                is_right = errors == {ALWAYS_REFUSED[name]}
            else:
                is_right = accepted == (value not in ONLY_READ.get(name, ()))
            if not is_right:
                wrong.append(f"{name}: {value} is {'not ' if value in outside else ''}in the text, and answered with "
                             f"{', '.join(sorted(errors))}")
    check(not wrong, "\n".join(wrong))
    print(f"{tried} SETs: the library accepts and refuses what the texts say")


main(run, 600, ARGUMENTS)
