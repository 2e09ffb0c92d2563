"""Exchanges with an agent as capture files, and tshark, which decodes them."""

import os
import struct
import subprocess

from agent_process import check

LINKTYPE_RAW = 101  # packets begin with their IP header


def checksum(octets):
    total = sum(struct.unpack(f">{len(octets) // 2}H", octets))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


class Recording:
    """Datagrams as a capture file; needs no right to capture."""

    def __init__(self, path):
        self.count = 0
        self.file = open(path, "wb")
        self.file.write(struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, LINKTYPE_RAW))

    def add(self, source_port, target_port, datagram):
        loopback = bytes([127, 0, 0, 1])
        udp = struct.pack(">HHHH", source_port, target_port, 8 + len(datagram), 0) + datagram
        header = struct.pack(">BBHHHBBH4s4s", 0x45, 0, 20 + len(udp), self.count, 0, 64, 17, 0, loopback, loopback)
        header = header[:10] + struct.pack(">H", checksum(header)) + header[12:]
        packet = header + udp
        self.file.write(struct.pack("<IIII", self.count, 0, len(packet), len(packet)) + packet)
        self.count += 1

    def of(self, agent_port, client_port=40000):
        """A recorder for the clients of an agent."""
        def record(to_agent, datagram):
            ports = (client_port, agent_port) if to_agent else (agent_port, client_port)
            self.add(*ports, datagram)
        return record


def tshark(capture, agent_port, *arguments):
    # A configuration directory of its own: a user's settings must not decide what counts as malformed.
    environment = dict(os.environ, HOME=os.path.dirname(capture), XDG_CONFIG_HOME=os.path.dirname(capture), LC_ALL="C")
    result = subprocess.run(["tshark", "-n", "-r", capture, "-d", f"udp.port=={agent_port},snmp", *arguments],
                            capture_output=True, text=True, errors="replace", timeout=60, env=environment)
    check(result.returncode == 0, f"tshark failed: {result.stderr}")
    return result.stdout.splitlines()
