#!/usr/bin/python3
"""Lints the texts of the private modules."""

import re
import sys
import tempfile

sys.dont_write_bytecode = True  # nothing is left in the source tree

from mib_checks import check, main
from mib_exceptions import ACCESSIBLE_INDEX
from texts import HERE, ROOT, modules, smi_tool


def run():
    with tempfile.TemporaryDirectory() as directory:
        with open(f"{HERE}/{ROOT}.mib.in") as template, open(f"{directory}/{ROOT}.mib", "w") as root:
            # Two arcs that differ: a number that is there twice is worth a warning, and is none of the texts' faults.
            root.write(template.read().replace("@SWITCHMIB_VENDOR_ENTERPRISE@", "32473")
                       .replace("@SWITCHMIB_SECOND_ENTERPRISE@", "32474"))
        result = smi_tool(directory, "smilint", "-m", "-s", "-l", "6", *modules())
    check(result.returncode == 0, f"smilint ends with {result.returncode}: {result.stderr}")
    accessible, wrong = set(), []
    for line in (result.stdout + result.stderr).splitlines():
        known = re.search(r"\{index-element-accessible\}.* index element `(\w+)'", line)
        if known and known.group(1) in ACCESSIBLE_INDEX:
            accessible.add(known.group(1))
        else:
            wrong.append(line)
    wrong += [f"{name} is not accessible, but listed as such" for name in ACCESSIBLE_INDEX if name not in accessible]
    check(not wrong, "\n".join(wrong))
    print(f"smilint: {len(modules())} modules")


main(run, names=())
