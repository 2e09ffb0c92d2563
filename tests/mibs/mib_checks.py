"""What the tests of the texts share: the reader of the texts, and mibhost."""

import json
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path += [os.path.join(HERE, "..", "e2e"), os.path.join(HERE, "..", "..", "mibs")]

from agent_process import check, main

ARGUMENTS = ("ROOT_DIRECTORY", "MIBHOST", "LIBRARY")
REFUSED = 3  # mibhost's exit status for a SET that is refused


def mibhost(program, library, *arguments):
    """What a command of mibhost prints with --json, an object for each line. A SET that is refused is not a failure."""
    result = subprocess.run([program, *arguments[:1], "--library", library, "--json", *arguments[1:]],
                            capture_output=True, text=True, timeout=60)
    check(result.returncode in (0, REFUSED), f"mibhost {' '.join(arguments)}: {result.stderr}")
    return [json.loads(line) for line in result.stdout.splitlines()]
