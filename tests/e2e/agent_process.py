"""A running `mibhost serve` for the end-to-end tests, and what they share."""

import os
import re
import signal
import subprocess
import sys
import tempfile
import time

ENTERPRISE = (1, 3, 6, 1, 4, 1, 32473)
SYSTEM = (1, 3, 6, 1, 2, 1, 1)
SNMP = (1, 3, 6, 1, 2, 1, 11)
IF_NUMBER = (1, 3, 6, 1, 2, 1, 2, 1, 0)
INTERFACES = (1, 3, 6, 1, 2, 1, 2)
IF_MIB = (1, 3, 6, 1, 2, 1, 31)
SWITCH_PORT_MIB = ENTERPRISE + (10, 1, 100, 2, 1)
TUNNEL_MIB = (1, 3, 6, 1, 2, 1, 10, 131)
IP_MCAST_MIB = (1, 3, 6, 1, 2, 1, 168)
VLAN_INTERFACE_MIB = ENTERPRISE + (10, 1, 100, 3, 4)

IF_DESCR = (1, 3, 6, 1, 2, 1, 2, 2, 1, 2)
IF_ALIAS = (1, 3, 6, 1, 2, 1, 31, 1, 1, 1, 18)
SW_PORT_SPEED = SWITCH_PORT_MIB + (0, 3, 1, 4)
VLAN_INTERFACE_ROW_STATUS = VLAN_INTERFACE_MIB + (1, 1, 1, 4)
PORT1 = 5121
LISTENING = r"127\.0\.0\.1:(\d+)"  # in the line that says where it listens


class Failure(Exception):
    """A check that did not hold; the message says which."""


def check(condition, message):
    if not condition:
        raise Failure(message)


def dotted(name):
    return ".".join(map(str, name))


class Agent:
    """Starts the agent on a free loopback port. Use it in a `with`; a left-over process is killed."""

    def __init__(self, mibhost, library, *options, start_seconds=20):
        command = [mibhost, "serve", "--library", library, "--listen", "127.0.0.1:0", *options]
        # In a file, not a pipe: what was logged before an answer is there when the answer has come.
        self._log = tempfile.TemporaryFile()
        self._logged = []
        self._read = 0  # octets of the log
        self.process = subprocess.Popen(command, stdout=self._log, stderr=subprocess.STDOUT)
        self.port = int(re.search(LISTENING, self._wait_for_line(LISTENING, start_seconds)).group(1))

    @property
    def lines(self):
        """What it has logged up to now."""
        whole, _, _ = os.pread(self._log.fileno(), 1 << 30, self._read).rpartition(b"\n")
        if whole:
            self._read += len(whole) + 1
            self._logged += whole.decode(errors="replace").split("\n")
        return self._logged

    def sent(self, start):
        """The configuration lines that it sent, accepted or not, from logged line `start` on."""
        return [line.split('"')[1] for line in self.lines[start:] if "config mode" in line]

    def _wait_for_line(self, pattern, seconds):
        deadline = time.monotonic() + seconds
        while True:
            ended = self.process.poll() is not None
            found = next((line for line in self.lines if re.search(pattern, line)), None)
            if found:
                return found
            if ended or time.monotonic() > deadline:
                raise Failure(f"mibhost printed no line like {pattern!r}, but:\n" + "\n".join(self.lines))
            time.sleep(0.01)

    def stop(self, with_signal=signal.SIGINT, seconds=10):
        """Ends it as Ctrl-C does; the exit code."""
        self.process.send_signal(with_signal)
        return self.process.wait(seconds)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait(10)


def main(run, seconds=170, names=("MIBHOST", "LIBRARY")):
    """Runs run(*arguments) within a time limit; a failed check ends with a message and exit code 1."""
    if len(sys.argv) != len(names) + 1:
        sys.exit(f"usage: {os.path.basename(sys.argv[0])} {' '.join(names)}")

    def too_late(*_):
        raise Failure(f"not done after {seconds} seconds")

    signal.signal(signal.SIGALRM, too_late)
    signal.alarm(seconds)
    try:
        run(*sys.argv[1:])
    except Failure as failure:
        sys.exit(f"FAILED: {failure}")
    print("all checks passed")
