#!/usr/bin/python3
"""serve.py ROOT UNIT: runs the unit's command in the root, as a user without rights and in a network of its own, and
reads from it over SNMP."""

import os
import shlex
import subprocess
import sys
import time

sys.dont_write_bytecode = True  # nothing is left in the source tree
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "e2e"))

from agent_process import Failure, IF_DESCR, PORT1, check
from snmp_client import Client

NOBODY = "65534"


def read(name, port, seconds=20):
    """The value, once the agent answers."""
    deadline = time.monotonic() + seconds
    while True:
        try:
            return Client(port).value(name)
        except (Failure, ConnectionRefusedError):
            if time.monotonic() > deadline:
                raise
            time.sleep(0.1)


def main(root, unit):
    with open(unit, encoding="utf-8") as lines:
        command = [line.removeprefix("ExecStart=") for line in lines if line.startswith("ExecStart=")]
    check(len(command) == 1, f"{unit} has {len(command)} commands")
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    unprivileged = ["setpriv", "--reuid", NOBODY, "--regid", NOBODY, "--clear-groups", "--no-new-privs",
                    "--bounding-set=-all", "--inh-caps=-all"]
    agent = subprocess.Popen(["chroot", root, *unprivileged, *shlex.split(command[0])], stdout=subprocess.DEVNULL)
    try:
        value = read(IF_DESCR + (PORT1,), 1161)
        check(bytes(value).startswith(b"port1 "), f"ifDescr of port 1 is {value.prettyPrint()}")
        agent.terminate()
        check(agent.wait(10) == 0, f"the agent ended with {agent.returncode}")
    finally:
        agent.kill()


try:
    main(*sys.argv[1:])
except (Failure, ConnectionRefusedError) as failure:
    sys.exit(f"FAILED: {failure}")
