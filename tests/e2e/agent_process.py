"""A running `mibhost serve` for the end-to-end tests, and what they share."""

import os
import re
import signal
import subprocess
import sys
import threading
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
PROXY_ARP_MIB = ENTERPRISE + (10, 120, 100, 2, 14)
VLAN_INTERFACE_MIB = ENTERPRISE + (10, 1, 100, 3, 4)

IF_DESCR = (1, 3, 6, 1, 2, 1, 2, 2, 1, 2)
IF_ALIAS = (1, 3, 6, 1, 2, 1, 31, 1, 1, 1, 18)
SW_PORT_SPEED = SWITCH_PORT_MIB + (0, 3, 1, 4)
VLAN_INTERFACE_ROW_STATUS = VLAN_INTERFACE_MIB + (1, 1, 1, 4)
TUNNEL_LOCAL_ADDRESS = TUNNEL_MIB + (1, 1, 1, 1, 9)
TUNNEL_STATUS = TUNNEL_MIB + (1, 1, 3, 1, 7)
PROXY_ARP_ROW_STATUS = PROXY_ARP_MIB + (1, 2, 1, 2)
PORT1 = 5121


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
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                        errors="replace")
        self.lines = []
        self.reading = True
        self._changed = threading.Condition()
        threading.Thread(target=self._read, daemon=True).start()
        line = self.wait_for_line(r"127\.0\.0\.1:(\d+)", start_seconds)
        self.port = int(re.search(r"127\.0\.0\.1:(\d+)", line).group(1))

    def close_output(self):
        """From the next line on its output is closed."""
        self.reading = False

    def _read(self):
        for line in self.process.stdout:
            if not self.reading:
                self.process.stdout.close()
                return
            with self._changed:
                self.lines.append(line.rstrip("\n"))
                self._changed.notify_all()

    def wait_for_line(self, pattern, seconds=5, start=0):
        """The first logged line from number `start` on that matches."""
        deadline = time.monotonic() + seconds
        with self._changed:
            while True:
                for line in self.lines[start:]:
                    if re.search(pattern, line):
                        return line
                left = deadline - time.monotonic()
                if left <= 0 or (self.process.poll() is not None and not self._changed.wait(0.2)):
                    raise Failure(f"mibhost printed no line like {pattern!r}, but:\n" + "\n".join(self.lines[start:]))
                self._changed.wait(left)

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


def main(run, seconds=80):
    """Runs run(mibhost, library) within a time limit; a failed check ends with a message and exit code 1."""
    if len(sys.argv) != 3:
        sys.exit(f"usage: {os.path.basename(sys.argv[0])} MIBHOST LIBRARY")

    def too_late(*_):
        raise Failure(f"not done after {seconds} seconds")

    signal.signal(signal.SIGALRM, too_late)
    signal.alarm(seconds)
    try:
        run(sys.argv[1], sys.argv[2])
    except Failure as failure:
        sys.exit(f"FAILED: {failure}")
    print("all checks passed")
