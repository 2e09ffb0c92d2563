#!/usr/bin/python3
"""Walks, gets and sets a running agent with an SNMP client that is not part of this project: pysnmp."""

import re
import signal
import socket
import subprocess
import sys
import tempfile

from pysnmp.hlapi import (
    CommunityData, ContextData, ObjectIdentity, ObjectType, SnmpEngine, UdpTransportTarget, nextCmd)
from pysnmp.proto.rfc1902 import Counter32, Gauge32, Integer32, OctetString, TimeTicks

sys.dont_write_bytecode = True  # nothing is left in the source tree

from agent_process import (
    IF_ALIAS, IF_DESCR, IF_MIB, IF_NUMBER, INTERFACES, IP_MCAST_MIB, LISTENING, PORT1, SNMP, SWITCH_PORT_MIB,
    SW_PORT_SPEED, SYSTEM, TUNNEL_MIB, VLAN_INTERFACE_MIB, VLAN_INTERFACE_ROW_STATUS, Agent, check, dotted, main)
from snmp_client import COUNTER64, END_OF_MIB_VIEW, NO_SUCH_INSTANCE, NO_SUCH_OBJECT, V1, Client

PORTS = list(range(PORT1, PORT1 + 26))
ROOTS = {"interfaces": INTERFACES, "ifMIB": IF_MIB, "switch ports": SWITCH_PORT_MIB,
         "VLAN interfaces": VLAN_INTERFACE_MIB, "tunnels": TUNNEL_MIB, "multicast routing": IP_MCAST_MIB,
         "everything": (1, 3, 6, 1)}
# What may differ between two reads of the same object: the kernel's counters.
MOVING = (Counter32.tagSet, COUNTER64, TimeTicks.tagSet)


def comparable(varbinds):
    return [(name, value.tagSet, None if value.tagSet in MOVING else value.prettyPrint())
            for name, value in varbinds]


def check_walks(agent):
    v1, v2c = Client(agent.port, version=V1), Client(agent.port)
    for title, root in ROOTS.items():
        walked = v2c.walk(root)
        check(walked, f"{title}: the walk is empty")
        for repetitions in (1, 10, 100):
            check(comparable(v2c.walk(root, repetitions)) == comparable(walked),
                  f"{title}: GETBULK with {repetitions} repetitions walks otherwise than GETNEXT")
        # SNMPv1 has no Counter64 and passes over such objects.
        check(comparable(v1.walk(root)) == comparable([v for v in walked if v[1].tagSet != COUNTER64]),
              f"{title}: SNMPv1 walks otherwise than SNMPv2c")
        for start in range(0, len(walked), 20):
            part = walked[start:start + 20]
            status, index, got = v2c.get(*(name for name, _ in part))
            check(status == 0, f"{title}: GET of walked instances: error status {status} at {index}")
            for walked_one, got_one in zip(comparable(part), comparable(got)):
                check(walked_one == got_one, f"{title}: the walk has {walked_one}, GET {got_one}")
        print(f"{title}: {len(walked)} instances, the same by GETNEXT, GETBULK (1, 10, 100), SNMPv1 and GET")

    for column, title in ((IF_DESCR, "ifDescr"), (SW_PORT_SPEED, "swPortSpeed")):
        ports = [name[-1] for name, _ in v2c.walk(column) if name[-1] > 5120]
        check(ports == PORTS, f"{title}: rows of {len(ports)} ports: {ports}")
    check(int(v2c.value(IF_NUMBER)) == len(v2c.walk(IF_DESCR)), "ifNumber is not the number of ifTable's rows")

    names = []
    for indication, status, _, varbinds in nextCmd(
            SnmpEngine(), CommunityData("public"), UdpTransportTarget(("127.0.0.1", agent.port), timeout=5, retries=0),
            ContextData(), ObjectType(ObjectIdentity(dotted(IF_DESCR))), lexicographicMode=False):
        check(not indication and not status, f"a manager's walk of ifDescr: {indication or status}")
        names.append(tuple(varbinds[0][0]))
    check(names == [name for name, _ in v2c.walk(IF_DESCR)], "a manager walks ifDescr otherwise")
    print(f"a manager walks ifDescr: {len(names)} rows")


def check_set(agent, client, pairs, lines, after=None):
    """A SET that is accepted, with exactly these configuration lines in the log and, afterwards, the values that were
    set or the given ones."""
    start = len(agent.lines)
    answer = client.set(*pairs)
    check(answer == (0, 0), f"SET for {lines}: error status and index {answer}")
    sent = agent.sent(start)
    check(sent == lines, f"SET for {lines} sent {sent}")
    for name, value in after or pairs:
        walked = dict(client.walk(name[:-1]))
        check(walked.get(name) == value, f"after {lines}: {dotted(name)} is {walked.get(name)}, not {value}")
    print(f"SET: {lines}")


def check_sets(agent):
    writer, old_writer = Client(agent.port, "private"), Client(agent.port, "private", V1)
    alias, speed = IF_ALIAS + (PORT1,), SW_PORT_SPEED + (PORT1,)
    vlan20 = VLAN_INTERFACE_ROW_STATUS + (20,)

    check_set(agent, writer, [(alias, OctetString("uplink to core"))], ["interface port1", "desc uplink to core"])
    check_set(agent, writer, [(alias, OctetString(""))], ["interface port1", "no desc"])
    check_set(agent, writer, [(speed, Integer32(2))], ["interface port1", "speed 100"])
    check_set(agent, old_writer, [(speed, Integer32(6)), (alias, OctetString("both"))],
              ["interface port1", "speed auto", "interface port1", "desc both"])
    check(vlan20 not in dict(writer.walk(VLAN_INTERFACE_MIB)), "VLAN interface 20 is there before it is created")
    check_set(agent, writer, [(vlan20, Integer32(4))], ["interface vlan20"], [(vlan20, Integer32(1))])
    check_set(agent, writer, [(vlan20, Integer32(6))], ["no interface vlan20"], [(vlan20, None)])


def check_refusals(agent):
    reader, writer = Client(agent.port), Client(agent.port, "private")
    old_reader, old_writer = Client(agent.port, version=V1), Client(agent.port, "private", V1)
    alias, speed, descr = IF_ALIAS + (PORT1,), SW_PORT_SPEED + (PORT1,), IF_DESCR + (PORT1,)
    before = reader.value(alias)
    start = len(agent.lines)

    intrusion = [(alias, OctetString("intruder"))]
    if not reader.silent(reader.types.SetRequestPDU, intrusion):
        check(reader.set(*intrusion)[0] in (6, 16), "a SET with the read community is neither refused nor dropped")
    stranger = Client(agent.port, "wrong")
    check(stranger.silent(stranger.types.GetRequestPDU, stranger.nulls([alias])), "a wrong community is answered")

    never = (alias, OctetString("never"))
    cases = [  # title, client, bindings, error status, error index
        ("wrongType", writer, [(speed, Gauge32(2))], 7, 1),
        ("wrongType, second", writer, [never, (speed, OctetString("fast"))], 7, 2),
        ("wrongLength", writer, [(alias, OctetString("x" * 65))], 8, 1),
        ("wrongValue, second", writer, [never, (speed, Integer32(0))], 10, 2),
        ("notWritable", writer, [(descr, OctetString("x"))], 17, 1),
        ("SNMPv1 badValue", old_writer, [(speed, Integer32(0))], 3, 1),
        ("SNMPv1 badValue, second", old_writer, [never, (speed, Integer32(0))], 3, 2),
        ("SNMPv1 noSuchName", old_writer, [(descr, OctetString("x"))], 2, 1),
    ]
    for title, client, bindings, status, index in cases:
        answer = client.set(*bindings)
        check(answer == (status, index), f"{title}: error status and index {answer}, not {(status, index)}")
    check(reader.value(alias) == before, "a refused SET changed ifAlias")
    sent = agent.sent(start)
    check(not sent, f"refused SETs sent {sent}")
    print(f"refused: {len(cases)} SETs by error status and index, and wrong communities")

    unknown = (1, 3, 6, 1, 4, 1, 99999, 1, 0)
    status, _, got = reader.get(descr, unknown, IF_DESCR + (999999,))
    tags = [value.tagSet for _, value in got]
    check(status == 0 and tags == [OctetString.tagSet, NO_SUCH_OBJECT, NO_SUCH_INSTANCE],
          f"GET of a known, an unknown object and an unknown row: {status} {got}")
    status, index, _ = old_reader.get(descr, unknown)
    check((status, index) == (2, 2), f"SNMPv1 GET of an unknown object: {(status, index)}, not (2, 2)")
    end = (2, 39, 999)
    for title, (status, _, got) in (("GETNEXT", reader.next(end)), ("GETBULK", reader.bulk(0, 5, end))):
        check(status == 0 and got and got[0][0] == end and got[0][1].tagSet == END_OF_MIB_VIEW,
              f"{title} after everything: {status} {got}")
    check(old_reader.next(end)[0] == 2, "SNMPv1 GETNEXT after everything is not noSuchName")
    print("unknown: noSuchObject, noSuchInstance, endOfMibView and SNMPv1's noSuchName")


def check_sizes(agent):
    reader, writer = Client(agent.port), Client(agent.port, "private")
    rows = [IF_ALIAS + (port,) for port in PORTS]
    for name in rows:  # aliases of 64 octets make large answers of few rows
        check(writer.set((name, OctetString("x" * 64))) == (0, 0), f"{dotted(name)} is not set")
    status, _, _ = reader.get(*(rows * 40))
    check(status == 1, f"a GET whose answer fits no datagram: error status {status}, not tooBig")
    status, _, got = reader.bulk(0, 10000, *([IF_ALIAS] * 20))
    check(status == 0 and 0 < len(got) < 10000, f"an endless GETBULK: error status {status}, {len(got)} varbinds")
    status, _, mixed = reader.bulk(1, 3, IF_NUMBER[:-1], IF_DESCR)
    check([name for name, _ in mixed] == [IF_NUMBER] + [name for name, _ in reader.walk(IF_DESCR)[:3]],
          f"a GETBULK with one non-repeater: {status} {mixed}")
    print(f"sizes: tooBig for {len(rows) * 40} varbinds, GETBULK of 10000 repetitions cut to {len(got)} varbinds")


def check_garbage(agent):
    client = Client(agent.port)
    good, _ = client.message(client.types.GetRequestPDU, client.nulls([IF_NUMBER]))
    garbage = [b"", b"\xff" * 1400, b"\x30\x84\xff\xff\xff\xff", b"\x30\x80" * 700, b"GET / HTTP/1.0\r\n\r\n"]
    garbage += [good[:length] for length in range(1, len(good))]
    for datagram in garbage:
        client.socket.send(datagram)
    client.socket.settimeout(0.5)
    try:
        check(False, f"garbage is answered with {client.socket.recv(65536).hex()}")
    except socket.timeout:
        pass
    check(int(Client(agent.port).value(IF_NUMBER)) > 0, "the agent does not answer after garbage")
    print(f"garbage: {len(garbage)} malformed datagrams dropped, the agent answers on")


def check_read_only(mibhost, library):
    """No write community, options from a file; the command line's --listen wins over the file's."""
    with tempfile.NamedTemporaryFile("w", suffix=".conf") as config:
        config.write('community = "reader"\nlisten = "127.0.0.1:1"\n')
        config.flush()
        with Agent(mibhost, library, "--config", config.name) as agent:
            reader, writer = Client(agent.port, "reader"), Client(agent.port, "private")
            check(int(reader.value(IF_NUMBER)) > 0, "the community of the configuration file does not read")
            binding = [(IF_ALIAS + (PORT1,), OctetString("x"))]
            check(writer.silent(writer.types.SetRequestPDU, binding), "a SET by an unknown community is answered")
            check(reader.set(*binding)[0] != 0, "a SET is accepted without a write community")
            check(agent.stop(signal.SIGTERM) == 0, f"exit code {agent.process.returncode} after SIGTERM")
    print("options from a file; no write access without a write community; SIGTERM ends it with 0")


def check_system(agent):
    """What a manager asks a device first, and how it names one."""
    reader, writer = Client(agent.port), Client(agent.port, "private")
    for arc in (1, 2, 3, 5, 7):
        reader.value(SYSTEM + (arc, 0))
    names = [(SYSTEM + (arc, 0), OctetString(text)) for arc, text in ((4, "noc@example.org"), (5, "lab"), (6, "rack 7"))]
    check(writer.set(*names) == (0, 0), "sysContact, sysName and sysLocation are not set together")
    check([reader.value(name) for name, _ in names] == [text for _, text in names], "they are not kept")
    served = {bytes(value) for _, value in reader.walk(SYSTEM + (9, 1, 3))}
    listed = (line for line in agent.lines if re.search(r"\(\d+ objects?\)$", line))
    logged = {line.split()[1].encode() for line in listed} - {b"system", b"snmp"}
    check(served == logged, f"sysORDescr names {served}, registered are {logged}")
    check(int(reader.value(SNMP + (1, 0))) > 0, "snmpInPkts counts nothing")
    print(f"system: named, with {len(served)} modules")


def check_closed_output(mibhost, library):
    """The reader of the log is gone, and the agent goes on."""
    with subprocess.Popen([mibhost, "serve", "-v", "--library", library, "--listen", "127.0.0.1:0"],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True) as process:
        try:
            port = next(int(found.group(1)) for line in process.stdout if (found := re.search(LISTENING, line)))
            process.stdout.close()
            for _ in range(3):
                Client(port).walk(IF_DESCR)
            process.terminate()
            check(process.wait(10) == 0, f"exit code {process.returncode} with its output closed")
        finally:
            process.kill()
    print("a closed output does not end it")


def check_communities(mibhost, library):
    """Communities that cannot be meant, as a shell gives them for a variable that is not set."""
    for options, reason in ((["--write-community", ""], "empty"), (["--community", ""], "empty"),
                            (["--write-community", "public"], "another")):
        result = subprocess.run([mibhost, "serve", "--library", library, *options], capture_output=True, text=True,
                                timeout=20)
        check(result.returncode == 2 and reason in result.stderr and len(result.stderr.splitlines()) == 1,
              f"{options}: exit code {result.returncode}, {result.stderr!r}")
    print("empty communities and the same one twice are refused")


def run(mibhost, library):
    # With the clock stopped, what was walked first is still so when it is walked again.
    with Agent(mibhost, library, "--write-community", "private", "-v", "--freeze") as agent:
        for part in (check_walks, check_sets, check_refusals, check_sizes, check_system, check_garbage):
            part(agent)
        check(agent.stop() == 0, f"exit code {agent.process.returncode} after SIGINT:\n" + "\n".join(agent.lines[-20:]))
        check(any("lines left out" in line for line in agent.lines), "no line says how much of the garbage is not logged")
        print("SIGINT ends it with 0")
    check_read_only(mibhost, library)
    check_closed_output(mibhost, library)
    check_communities(mibhost, library)


main(run)
