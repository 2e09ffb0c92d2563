#!/usr/bin/python3
"""A walk of everything on the simulated switch with its clock stopped, by two builds of the same sources:
`walk_alike.py THEIRS OURS...`, where OURS may have an emulator before the tool. Both must print the same, apart from what
changes on the machine itself. Without THEIRS the exit status is 77."""

import json
import os
import subprocess
import sys


def walk(*command):
    done = subprocess.run([*command, "walk", "--freeze", "--json"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True)
    if done.returncode != 0:
        sys.exit(f"{' '.join(command)}: exit status {done.returncode}\n{done.stderr}")
    return {json.loads(line)["oid"]: line for line in done.stdout.splitlines()}


theirs = sys.argv[1]
if not os.path.exists(theirs):
    print(f"there is no {theirs} to compare with")
    sys.exit(77)
before, ours, after = walk(theirs), walk(*sys.argv[2:]), walk(theirs)
steady = [oid for oid in before if before[oid] == after.get(oid)]
differing = [oid for oid in steady if ours.get(oid) != before[oid]] + [oid for oid in ours if oid not in before]
for oid in differing[:20]:
    print(f"{before.get(oid)}\n{ours.get(oid)}\n")
if len(steady) < 5000 or differing:
    sys.exit(f"{len(differing)} instances differ; {len(steady)} were compared")
print(f"{len(steady)} instances are the same")
