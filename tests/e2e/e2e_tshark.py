#!/usr/bin/python3
"""Records an exchange with a running agent and has tshark decode it: every datagram is well-formed SNMP."""

import os
import sys
import tempfile

from pysnmp.proto.rfc1902 import Integer32, OctetString

sys.dont_write_bytecode = True  # nothing is left in the source tree

from agent_process import (
    IF_ALIAS, IF_DESCR, IF_MIB, IF_NUMBER, INTERFACES, PORT1, SWITCH_PORT_MIB, SW_PORT_SPEED, VLAN_INTERFACE_MIB, Agent,
    check, dotted, main)
from recording import Recording, tshark
from snmp_client import V1, V2C, Client


def exchange(port, record):
    """Requests of every kind, with answers of every kind of value and error."""
    for version in (V1, V2C):
        reader = Client(port, version=version, record=record)
        writer = Client(port, "private", version, record)
        for root in (INTERFACES, IF_MIB, SWITCH_PORT_MIB, VLAN_INTERFACE_MIB):
            reader.walk(root, 0 if version == V1 else 25)
        reader.get(IF_NUMBER, IF_DESCR + (PORT1,), (1, 3, 6, 1, 4, 1, 99999, 1), IF_DESCR + (999999,))
        reader.next((2, 39, 999))
        writer.set((IF_ALIAS + (PORT1,), OctetString(bytes(range(1, 60)))))
        writer.set((IF_ALIAS + (PORT1,), OctetString("text")), (SW_PORT_SPEED + (PORT1,), Integer32(0)))
        reader.get(*([IF_ALIAS + (PORT1,)] * 2000))
    reader.bulk(1, 1000, IF_NUMBER, *([IF_DESCR] * 10))


def run(mibhost, library):
    with tempfile.TemporaryDirectory() as directory:
        capture = os.path.join(directory, "exchange.pcap")
        recording = Recording(capture)
        with Agent(mibhost, library, "--write-community", "private") as agent:
            port = agent.port
            exchange(port, recording.of(port))
            check(agent.stop() == 0, f"exit code {agent.process.returncode} after SIGINT")
        recording.file.close()
        print(f"{recording.count} datagrams recorded")

        bad = tshark(capture, port, "-Y", "_ws.malformed or _ws.expert.severity == error or !snmp")
        check(not bad, f"{len(bad)} malformed packets:\n" + "\n".join(bad[:10]))
        decoded = tshark(capture, port, "-T", "fields", "-e", "snmp.data", "-e", "snmp.name")
        check(len(decoded) == recording.count, f"{len(decoded)} of {recording.count} packets are decoded")
        names = {name for line in decoded for name in line.split("\t")[1].split(",")}
        for name in (IF_NUMBER, IF_DESCR + (PORT1,), SW_PORT_SPEED + (PORT1,), VLAN_INTERFACE_MIB + (1, 1, 1, 4, 1)):
            check(dotted(name) in names, f"tshark decodes no {dotted(name)}")
        kinds = {line.split("\t")[0] for line in decoded}
        check({"0", "1", "2", "3", "5"} <= kinds, f"tshark sees only the PDU kinds {sorted(kinds)}")
        print(f"tshark decodes all of them: {len(names)} names, none malformed")


main(run)
