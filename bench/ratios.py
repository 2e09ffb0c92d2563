#!/usr/bin/env python3
"""Counts the instructions of each request in `bench_library` under callgrind, and prints them with the two floors.

    ratios.py [--check | --update] BENCH_LIBRARY

The table ratios.txt has what a request may cost: its ratio to the floor; for a walk, a row of many to a row of few.
--check fails when one is more than 3 % worse than there, --update writes the table again.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

TABLE = pathlib.Path(__file__).with_name("ratios.txt")
HEADER = """\
# Instructions of a request in the library, as a ratio to its floor: the same host calls, each command by snprintf.
# For a walk: a row of many, as a ratio to a row of few. Written by `bench/run --update`.
"""
TOLERANCE = 1.03
# The same string functions of libc on every machine.
ENVIRONMENT = {**os.environ, "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX2,-AVX,-ERMS,-FSRM"}


def count(bench):
    """Instructions for each request or row, by "REQUEST/VARIANT"."""
    counts = {}
    with tempfile.TemporaryDirectory() as directory:
        out = pathlib.Path(directory, "out")
        run = subprocess.run(
            ["valgrind", "--tool=callgrind", "--toggle-collect=counted", f"--callgrind-out-file={out}", bench,
             "--count"], capture_output=True, text=True, env=ENVIRONMENT)
        if run.returncode != 0:
            sys.exit(f"ratios: {bench} failed\n{run.stdout}{run.stderr}")
        for part, line in enumerate(run.stdout.splitlines(), 1):
            requests, name = line.split(None, 1)
            total = re.search(r"^summary: (\d+)$", pathlib.Path(f"{out}.{part}").read_text(), re.M)
            counts[name] = int(total[1]) / int(requests)
    return counts


def requests(counts):
    """The counts of each request by variant, in the order of their names in `counts`."""
    table = {}
    for name, instructions in counts.items():
        request, variant = name.rsplit("/", 1)
        table.setdefault(request, {})[variant] = instructions
    return table


def ratio(variants):
    if "library" in variants:
        return variants["library"] / variants["floor"]
    return variants["many"] / variants["few"]


def show(table):
    print(f"{'':24}{'library':>9}{'floor':>9}{'least':>9}{'to floor':>10}{'to least':>10}")
    for request, variants in table.items():
        if "library" in variants:
            library, floor, least = (variants[name] for name in ("library", "floor", "least"))
            print(f"{request:24}{library:9.0f}{floor:9.0f}{least:9.0f}{library / floor:10.2f}{library / least:10.2f}")
    for request, variants in table.items():
        if "many" in variants:
            print(f"{request:24}a row of many {variants['many']:.0f}, of few {variants['few']:.0f}, "
                  f"ratio {ratio(variants):.2f}")


def committed():
    rows = (line.rsplit(None, 1) for line in TABLE.read_text().splitlines() if not line.startswith("#"))
    return {request: float(value) for request, value in rows}


def held(table):
    """Without what depends on the machine: how long the kernel's statistics files are."""
    return {request: variants for request, variants in table.items() if "statistic" not in request}


def check(table):
    allowed = committed()
    table = held(table)
    failures = [f"{request}: {ratio(variants):.3f}, allowed {allowed[request]:.3f} and 3 %"
                for request, variants in table.items()
                if request in allowed and ratio(variants) > allowed[request] * TOLERANCE]
    failures += [f"{request}: only in {where}" for where, left in (
        (TABLE.name, allowed.keys() - table.keys()), ("the benchmark", table.keys() - allowed.keys()))
        for request in sorted(left)]
    if failures:
        sys.exit("Too many instructions:\n  " + "\n  ".join(failures))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    action = parser.add_mutually_exclusive_group()
    action.add_argument("--check", action="store_true", help="fail when a request costs more than ratios.txt allows")
    action.add_argument("--update", action="store_true", help="write ratios.txt")
    parser.add_argument("bench", help="the program bench_library")
    arguments = parser.parse_args()

    table = requests(count(arguments.bench))
    show(table)
    if arguments.check:
        check(table)
    if arguments.update:
        TABLE.write_text(HEADER + "".join(f"{request:24}{ratio(variants):.3f}\n" for request, variants in held(table).items()))


if __name__ == "__main__":
    main()
