#!/usr/bin/python3
"""Lints the texts of the private modules."""

import re
import sys
import tempfile

sys.dont_write_bytecode = True  # nothing is left in the source tree

from mib_exceptions import ACCESSIBLE_INDEX
from mib_texts import ROOT, Failure, fill_root, main, modules, smi_tool


def run():
    with tempfile.TemporaryDirectory() as directory:
        # Two arcs that differ: a number that is there twice is worth a warning, and is none of the texts' faults.
        fill_root(directory, 32473, 32474)
        result = smi_tool(directory, "smilint", "-m", "-s", "-l", "6", *modules(), ROOT)
    if result.returncode != 0:
        raise Failure(f"smilint ends with {result.returncode}: {result.stderr}")
    accessible = set()
    wrong = []
    for line in (result.stdout + result.stderr).splitlines():
        known = re.search(r"\{index-element-accessible\}.* index element `(\w+)'", line)
        if known and known.group(1) in ACCESSIBLE_INDEX:
            accessible.add(known.group(1))
        else:
            wrong.append(line)
    stale = set(ACCESSIBLE_INDEX) - accessible
    if stale:
        wrong.append(f"not accessible, but listed as such: {', '.join(sorted(stale))}")
    if wrong:
        raise Failure("\n".join(wrong))
    print(f"smilint: {len(modules()) + 1} modules")


main(run)
