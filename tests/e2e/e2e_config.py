#!/usr/bin/python3
"""Configures a running agent with pysnmp in SETs of several varbinds, and reads all of it back: a VLAN with its ports,
what frames are classified by, private VLANs, the voice VLAN, the hardware, the bridge, IP addresses and neighbours,
router advertisements, tunnels, routes and snooping."""

import sys

from pysnmp.proto.rfc1902 import Gauge32, Integer32, OctetString

sys.dont_write_bytecode = True  # nothing is left in the source tree

from agent_process import ENTERPRISE, IF_DESCR, PORT1, TUNNEL_MIB, Agent, check, dotted, main
from snmp_client import Client

BRIDGE = (1, 3, 6, 1, 2, 1, 17)
CREATE, DESTROY, ACTIVE = Integer32(4), Integer32(6), Integer32(1)
VLAN_NAME, VLAN_EGRESS, _, VLAN_UNTAGGED, VLAN_STATUS = [(1, 3, 6, 1, 2, 1, 17, 7, 1, 4, 3, 1, n) for n in range(1, 6)]
PVID = (1, 3, 6, 1, 2, 1, 17, 7, 1, 4, 5, 1, 1)
IEEE_VLANS, IEEE_STATIC = (1, 3, 111, 2, 802, 1, 1, 4, 1, 4, 3, 1), (1, 3, 111, 2, 802, 1, 1, 4, 1, 3, 2, 1)
ROUTE = (1, 3, 6, 1, 2, 1, 4, 24, 7, 1)
ROUTE_IFINDEX, ROUTE_METRIC, ROUTE_STATUS = ROUTE + (7,), ROUTE + (12,), ROUTE + (17,)
IGMP = ENTERPRISE + (10, 1, 100, 2, 7, 1)
MLD = ENTERPRISE + (10, 1, 100, 2, 7, 2)
VLAN10 = 1024 + 10


def port(n):
    return PORT1 + n - 1


def members(size, numbers):
    octets = bytearray(size)
    for n in numbers:
        octets[(n - 1) // 8] |= 0x80 >> (n - 1) % 8
    return OctetString(bytes(octets))


def ports(*numbers):
    return members(12, numbers)


def vlan_list(*vids):
    return members(512, vids)


def expect(client, values):
    """What a walk of the column shows."""
    for (column, row), value in values.items():
        found = dict(client.walk(column)).get(column + row)
        check(found == value, f"{dotted(column)} row {dotted(row)} is {found and found.prettyPrint()}, not {value}")


def configure(agent, client, bindings, lines, shown={}):
    """A SET of columns in rows that is accepted and sends exactly these lines, in this order. Each column then shows
    its value, the status of a created row is active, and a destroyed row is gone; `shown` is what else is shown."""
    start = len(agent.lines)
    answer = client.set(*((column + row, value) for column, row, value in bindings))
    check(answer == (0, 0), f"SET for {lines}: error status and index {answer}:\n" + "\n".join(agent.lines[start:]))
    sent = agent.sent(start)
    check(sent == lines, f"a SET sent {sent}, not {lines}")
    destroyed = any(value is DESTROY for _, _, value in bindings)
    for column, row, value in bindings:
        value = None if destroyed else ACTIVE if value is CREATE else value
        expect(client, {(column, row): value} if (column, row) not in shown else {})
    expect(client, shown)


def vlans(agent, client):
    row = (40,)
    configure(agent, client,
              [(VLAN_NAME, row, OctetString("lab")), (VLAN_EGRESS, row, ports(13, 25)),
               (VLAN_UNTAGGED, row, ports(13)), (VLAN_STATUS, row, CREATE)],
              ["vlan 40", "name lab", "interface port13", "switchport hybrid allowed vlan add untagged 40",
               "interface port25", "switchport trunk allowed vlan add 40"],
              {(IEEE_VLANS + (3,), (1, 40)): OctetString("lab"), (IEEE_VLANS + (4,), (1, 40)): ports(13, 25),
               (IEEE_VLANS + (6,), (1, 40)): ports(13), (IEEE_VLANS + (7,), (1, 40)): ACTIVE})
    configure(agent, client, [(VLAN_EGRESS, row, ports(13, 26))],
              ["interface port25", "switchport trunk allowed vlan remove 40", "interface port26",
               "switchport trunk allowed vlan add 40"])
    configure(agent, client, [(PVID, (port(13),), Gauge32(40))],
              ["interface port13", "switchport hybrid native vlan 40"])
    configure(agent, client, [(VLAN_STATUS, row, DESTROY)], ["no vlan 40"], {(VLAN_NAME, row): None})
    print("VLAN 40: created with its ports in one SET, changed, deleted")


def classification(agent, client):
    """A trunk's VLANs; the VLANs of a MAC address and of a protocol group on a port."""
    private = ENTERPRISE + (10, 1, 100, 2, 9, 1)
    allowed, row = private + (3, 1, 6), (port(25),)
    configure(agent, client, [(allowed, row, vlan_list(10, 30))],
              ["interface port25", "switchport trunk allowed vlan remove 20"])
    configure(agent, client, [(allowed, row, vlan_list(20, 30))],
              ["interface port25", "switchport trunk allowed vlan remove 10", "switchport trunk allowed vlan add 20"])

    vid, priority, status = (private + (1, 1, n) for n in (2, 3, 5))
    mac, line = (2, 0, 0, 0, 10, 9), "mac-vlan 02-00-00-00-0a-09"
    configure(agent, client, [(vid, mac, Integer32(10)), (priority, mac, Gauge32(5)), (status, mac, CREATE)],
              [f"{line} vlan 10 priority 5"])
    configure(agent, client, [(vid, mac, Integer32(20))], [f"no {line}", f"{line} vlan 20 priority 5"],
              {(priority, mac): Gauge32(5)})
    configure(agent, client, [(status, mac, DESTROY)], [f"no {line}"], {(vid, mac): None})

    groups = (1, 3, 6, 1, 2, 1, 17, 7, 1, 5)
    group, group_status, bound, bound_status = (groups + end for end in ((1, 1, 3), (1, 1, 4), (2, 1, 2), (2, 1, 3)))
    ipv4, binding = (1, 2, 8, 0), (port(13), 9)
    protocol = "frame-type ethernet2 ether-type 0x8000"
    configure(agent, client,
              [(group, ipv4, Integer32(9)), (group_status, ipv4, CREATE), (bound, binding, Integer32(10)),
               (bound_status, binding, CREATE)],
              [f"protocol-vlan profile 9 {protocol}", "interface port13", "protocol-vlan profile 9 vlan 10"])
    configure(agent, client, [(bound, binding, Integer32(20))],
              ["interface port13", "protocol-vlan profile 9 vlan 20"])
    configure(agent, client, [(bound_status, binding, DESTROY)], ["interface port13", "no protocol-vlan profile 9"])
    configure(agent, client, [(group, ipv4, Integer32(8))],
              ["no protocol-vlan profile 9", f"protocol-vlan profile 8 {protocol}"], {(bound, binding): None})
    configure(agent, client, [(group_status, ipv4, DESTROY)], ["no protocol-vlan profile 8"], {(group, ipv4): None})
    print("VLANs of a trunk, a MAC address and a protocol group: created, changed, removed")


def private_vlans(agent, client):
    """A primary and a community VLAN, and the pair of them on a port."""
    private = ENTERPRISE + (10, 1, 100, 2, 8, 1)
    kind, primary, status = (private + (2, 1, n) for n in (2, 3, 4))
    pair, pair_status = private + (3, 1, 3), private + (3, 1, 4)
    configure(agent, client, [(kind, (100,), Integer32(1)), (status, (100,), CREATE)],
              ["vlan 100", "private-vlan primary"])
    configure(agent, client,
              [(kind, (101,), Integer32(3)), (primary, (101,), Integer32(100)), (status, (101,), CREATE)],
              ["vlan 101", "private-vlan community", "vlan 100", "private-vlan association add 101"])
    configure(agent, client, [(kind, (101,), Integer32(2))], ["vlan 101", "private-vlan isolated"])
    configure(agent, client, [(primary, (101,), Integer32(10))], ["pvlan modify association 101 10"])

    promiscuous, on_port = (port(20), 101), f"{port(20)} 101"
    configure(agent, client, [(pair, promiscuous, Integer32(10)), (pair_status, promiscuous, CREATE)],
              [f"pvlan port-association create {on_port} 10"])
    configure(agent, client, [(pair_status, promiscuous, DESTROY)], [f"pvlan port-association destroy {on_port}"],
              {(pair, promiscuous): None})
    synchronize = private + (1, 1)  # done once, so it reads as 2, false
    configure(agent, client, [(synchronize, (0,), Integer32(1))],
              ["spanning-tree mst configuration", "private-vlan synchronize"], {(synchronize, (0,)): Integer32(2)})
    for vid, number, word in ((101, 2, "isolated"), (100, 1, "primary")):
        configure(agent, client, [(kind, (vid,), Integer32(number)), (status, (vid,), DESTROY)],
                  [f"vlan {vid}", f"no private-vlan {word}"])
    print("private VLANs: a pair created, changed, put on a port, removed")


def voice_vlan(agent, client):
    """An OUI, the VLAN for phones, and what ports do with them and with multicast frames."""
    voice = ENTERPRISE + (10, 1, 100, 2, 11, 1)
    description, status, phones = voice + (1, 4, 1, 3), voice + (1, 4, 1, 4), voice + (3, 3, 1, 3)
    oui = (0, 1, 0xe3, 0, 0, 0, 255, 255, 255, 0, 0, 0)
    line = "voice vlan mac-address 00-01-e3-00-00-00 ff-ff-ff-00-00-00"
    configure(agent, client, [(description, oui, OctetString("phone")), (status, oui, CREATE)],
              [f"{line} description phone"])
    configure(agent, client, [(description, oui, OctetString("a phone"))], [f"{line} description a phone"])
    configure(agent, client, [(status, oui, DESTROY)], [f"no {line}"], {(description, oui): None})
    check(len(client.walk(phones)) == 3, "there are not three phones")
    filtering = ENTERPRISE + (10, 1, 100, 2, 15, 1, 1, 1, 2)
    configure(agent, client, [(voice + (1, 1), (0,), Integer32(10))], ["voice vlan 10"])
    configure(agent, client, [(voice + (1, 2), (0,), Gauge32(6))], ["voice vlan qos 6"])
    configure(agent, client, [(voice + (2, 1, 1, 2), (port(1),), Integer32(1))],
              ["interface port1", "voice vlan enable"])
    configure(agent, client, [(filtering, (port(1),), Integer32(3))],
              ["interface port1", "multicast filtering-mode filter-unregistered"])
    print("voice VLAN: an OUI created, changed, removed; its VLAN, priority and a port set and read back")


def hardware(agent, client):
    """Pause modes, power saving, transceivers and the system monitor: what a SET sends, and what a walk then shows."""
    vendor, pause_mode = ENTERPRISE + (10, 1, 100), (1, 3, 6, 1, 2, 1, 10, 7, 10, 1, 1)
    high_alarm, temperature = vendor + (8, 1, 3, 1, 1, 1, 2), vendor + (8, 1, 2, 1, 1, 1, 2)
    power, monitor = vendor + (1, 5), vendor + (1, 4, 1)
    threshold, row = "transceiver-monitoring temperature high alarm", (port(25), 1)
    configure(agent, client, [(pause_mode, (port(1),), Integer32(4))], ["interface port1", "flowcontrol on"])
    configure(agent, client, [(power + (1, 1), (0,), Integer32(0))], ["disable ports leds"])
    configure(agent, client, [(power + (2, 1, 1, 1, 3), (port(1),), Integer32(1))], ["interface port1", "eee enable"])
    configure(agent, client, [(monitor + (5, 2), (0,), Integer32(15))], ["environment temperature threshold low 15"])
    configure(agent, client, [(high_alarm, row, OctetString("20.5"))], ["interface port25", f"{threshold} 20.5"])
    alarm = client.value(temperature + (port(25),)).prettyPrint()
    check(alarm.endswith(" ++"), f"the temperature over its threshold is {alarm!r}")
    configure(agent, client, [(high_alarm, row, OctetString("NA"))], ["interface port25", f"no {threshold} "])
    check(client.set((high_alarm + row, OctetString("x" * 16)))[0] == 5, "a threshold of 16 octets is accepted")
    print("pause mode, LEDs, EEE, temperature threshold and transceiver threshold set and read back")


def bridge(agent, client):
    """The forwarding database by address and by VLAN, the aging time, priorities, timers, a static group."""
    aging, by_mac, by_vlan = BRIDGE + (4, 2), BRIDGE + (4, 3, 1, 2), BRIDGE + (7, 1, 2, 2, 1, 2)
    on_ports = {name[-6:]: value for name, value in client.walk(by_mac, 25)}
    in_vlans = {name[-6:]: value for name, value in client.walk(by_vlan, 25)}
    check(len(on_ports) > 200, f"the forwarding database has {len(on_ports)} addresses")
    both = on_ports.keys() & in_vlans.keys()  # an address may come or go between the walks
    check(len(both) >= len(on_ports) - 5 and all(on_ports[mac] == in_vlans[mac] for mac in both),
          "the forwarding databases by address and by VLAN differ")
    configure(agent, client, [(aging, (0,), Integer32(60))], ["mac address-table aging-time 60"])

    priority, join = BRIDGE + (6, 1, 2, 1, 1, 1), (1, 3, 111, 2, 802, 1, 1, 2, 1, 4, 1, 1, 1)
    configure(agent, client, [(priority, (port(3),), Integer32(5))], ["interface port3", "mls qos cos 5"])
    configure(agent, client, [(join, (port(3),), Integer32(40))], [f"mrp_snmp timer join 40 ifindex {port(3)}"])

    static, status, group = BRIDGE + (7, 1, 3, 2, 1, 3), BRIDGE + (7, 1, 3, 2, 1, 5), (10, 1, 0, 94, 0, 0, 99, 0)
    (ieee, ieee_status), ieee_group = (IEEE_STATIC + (column,) for column in (3, 6)), (1,) + group
    mac = "mac address-table static 01-00-5e-00-00-63 vlan 10"
    configure(agent, client, [(static, group, ports(5, 6))], [f"{mac} interface port5", f"{mac} interface port6"])
    configure(agent, client, [(static, group, ports(6, 13))],
              [f"{mac} interface port13", f"no {mac} interface port5"],
              {(BRIDGE + (7, 1, 2, 3, 1, 2), group[:-1]): ports(6, 13), (ieee, ieee_group): ports(6, 13)})
    configure(agent, client, [(status, group, Integer32(2))], [f"no {mac}"],
              {(status, group): None, (static, group): None, (ieee_status, ieee_group): None})
    configure(agent, client, [(ieee, ieee_group, ports(6)), (ieee_status, ieee_group, CREATE)],
              [f"{mac} interface port6"])
    configure(agent, client, [(ieee, ieee_group, ports(5))],
              [f"{mac} interface port5", f"no {mac} interface port6"],
              {(static, group): ports(5), (ieee_status, ieee_group): ACTIVE})
    configure(agent, client, [(ieee_status, ieee_group, DESTROY)], [f"no {mac}"], {(static, group): None})
    print(f"bridge: {len(on_ports)} addresses, aging time, priority, timer and static group set and read back")


def routes(agent, client):
    route, line = (1, 4, 198, 51, 100, 0, 24, 2, 0, 0, 1, 4, 10, 0, 0, 254), "ip route 198.51.100.0/24 10.0.0.254"
    configure(agent, client, [(ROUTE_METRIC, route, Integer32(7)), (ROUTE_STATUS, route, CREATE)], [f"{line} 7"])
    configure(agent, client, [(ROUTE_METRIC, route, Integer32(9))], [f"{line} 9"])
    configure(agent, client, [(ROUTE_STATUS, route, DESTROY)], [f"no {line}"], {(ROUTE_METRIC, route): None})

    route6 = ((2, 16) + tuple(bytes.fromhex("20010db8000700000000000000000000")) + (48, 2, 0, 0, 2, 16) +
              tuple(bytes.fromhex("fe800000000000000000000000000001")))
    configure(agent, client,
              [(ROUTE_IFINDEX, route6, Integer32(VLAN10)), (ROUTE_METRIC, route6, Integer32(3)),
               (ROUTE_STATUS, route6, CREATE)],
              ["ipv6 route 2001:db8:7::/48  vlan 10 fe80::1 3"])
    print("routes: added with metric and interface, changed, removed")


def addresses(agent, client):
    """An address with its prefix and connected route, neighbours, and router advertisements of a new interface."""
    ip = (1, 3, 6, 1, 2, 1, 4)
    ifindex, status, prefix = ip + (34, 1, 3), ip + (34, 1, 10), ip + (32, 1, 5)
    network = (1, 4, 10, 0, 40, 0, 24)
    row, route = (1, 4, 10, 0, 40, 1), network + (2, 0, 0, 1, 4, 0, 0, 0, 0)
    for value, no, seen in ((CREATE, "", VLAN10), (DESTROY, "no ", None)):
        configure(agent, client, [(ifindex, row, Integer32(VLAN10)), (status, row, value)],
                  [f"{no}ipaddresstable ip {VLAN10} 10.0.40.1"],
                  {(ROUTE_IFINDEX, route): seen, (prefix, (VLAN10,) + network): seen and Integer32(2)})

    physical, kind, neighbour_status = (ip + (35, 1, n) for n in (4, 6, 8))
    mac, row = OctetString(hexValue="001f2e030405"), (VLAN10, 1, 4, 10, 0, 10, 77)
    arp = ["interface vlan10", "ip arp 10.0.10.77  00-1f-2e-03-04-05"]
    configure(agent, client, [(physical, row, mac), (neighbour_status, row, CREATE)], arp + arp,
              {(kind, row): Integer32(4)})
    configure(agent, client, [(neighbour_status, row, DESTROY)], ["interface vlan10", "no ip arp 10.0.10.77"],
              {(physical, row): None})
    row6 = (VLAN10, 2, 16) + tuple(bytes.fromhex("20010db80000000a0000000000000077"))
    start = len(agent.lines)
    check(client.set((physical + row6, mac)) == (5, 1), "the physical address of an IPv6 neighbour is accepted")
    check(any(line.startswith("ip arp 2001:db8:0:a::77 ") for line in agent.sent(start)), "nothing is sent for IPv6")
    configure(agent, client, [(neighbour_status, row6, CREATE)], [],
              {(neighbour_status, row6): None, (physical, row6): None})

    longest, shortest, status = (ip + (39, 1, n) for n in (3, 4, 12))
    row = (VLAN10,)
    configure(agent, client, [(longest, row, Gauge32(100)), (shortest, row, Gauge32(50)), (status, row, CREATE)],
              ["interface vlan10", "ipv6 nd ra-interval 100 50"])
    configure(agent, client, [(shortest, row, Gauge32(60))], ["interface vlan10", "ipv6 nd ra-min-interval 60"])
    configure(agent, client, [(status, row, DESTROY)], ["interface vlan10", "ipv6 nd suppress-ra"],
              {(longest, row): None})
    print("IP: an address with its prefix and route, a neighbour, and router advertisements come, change and go")


def tunnels(agent, client):
    address, status = TUNNEL_MIB + (1, 1, 1, 1, 9), TUNNEL_MIB + (1, 1, 3, 1, 7)
    row = (1, 4, 192, 0, 2, 1, 1, 4, 203, 0, 113, 10, 12, 7)
    moved, ifindex = row[:5] + (2,) + row[6:], (896 + 7,)
    ends = "192.0.2.{} 203.0.113.10 12 7"
    configure(agent, client, [(status, row, CREATE)],
              ["snmp check tunnel create " + ends.format(1), "interface tunnel 7", "tunnel source 192.0.2.1",
               "tunnel destination 203.0.113.10", "tunnel mode ipv6ip"],
              {(IF_DESCR, ifindex): OctetString("IPv6 over IPv4 tunnel7")})
    configure(agent, client, [(address, ifindex, OctetString(hexValue="c0000202"))],
              ["show interface tunnel7", "interface tunnel 7", "tunnel source 192.0.2.2"],
              {(status, row): None, (status, moved): ACTIVE})
    configure(agent, client, [(status, moved, DESTROY)],
              ["snmp check tunnel destroy " + ends.format(2), "no interface tunnel 7"],
              {(address, ifindex): None, (IF_DESCR, ifindex): None})
    print("tunnels: one created, given another address, removed")


def snooping(agent, client):
    for arc, kind, config, group, text in ((IGMP, 1, "ip igmp", (1, 4, 239, 1, 1, 9), "239.1.1.9"),
                                           (MLD, 2, "ipv6 mld", (2, 16, 255, 30) + (0,) * 13 + (9,), "ff1e::9")):
        for value, no in ((2, "no "), (1, "")):
            configure(agent, client, [(arc + (2, 1, 2), (VLAN10, kind), Integer32(value))],
                      ["interface vlan10", f"{no}{config} snooping"])

        for value, no in ((CREATE, ""), (DESTROY, "no ")):
            configure(agent, client, [(arc + (3, 1, 5), (port(13), VLAN10) + group, value)],
                      ["interface vlan10", f"{no}{config} snooping static-group {text} interface port13"])

        on_port = (port(13), VLAN10, kind)
        configure(agent, client, [(arc + (6, 1, 4), on_port, Gauge32(100))],
                  ["interface port13", f"{config} snooping limit 100 vlan 10"])
        configure(agent, client,
                  [(arc + (7, 1, 4), on_port, OctetString("cameras")), (arc + (7, 1, 5), on_port, CREATE)],
                  ["interface port13", f"{config} snooping access-group cameras vlan 10"])

        designate = arc + (5, 1, 3)
        check(client.set((designate + (VLAN10,), ports(1, 25))) == (0, 0), "a SET of router ports is refused")
        rows = dict(client.walk(designate))
        check(ports(1, 25) in rows.values(), f"router ports read back as {rows}")
    print("snooping: states, static groups, limits, access groups and router ports of IGMP and MLD read back")


def sizes(client):
    """The hardware, multicast routers, limits, access groups and VLANs, streams and the clock: all instances."""
    vendor, ieee = ENTERPRISE + (10, 1, 100), (1, 3, 111, 2, 802, 1, 1)
    counts = {(1, 3, 6, 1, 2, 1, 10, 7): 26 * (18 + 6 + 6), vendor + (1, 5): 1 + 24 * 3, vendor + (1, 4, 1): 11,
              vendor + (8, 1): 1 + 3 * (6 + 5 * 5 + 2), (1, 3, 6, 1, 2, 1, 185, 1): 3 * 16 + 3 * 9,
              vendor + (3, 1): 10, vendor + (2, 16, 1): 5 + 4, ieee + (19, 1): 3 + 26 * 2 + 3 * 6,
              ieee + (16, 1): 2 * 26 * 2, ieee + (20, 1): 42 + 26 * (31 + 16)}
    for root, count in counts.items():
        walked = client.walk(root, 25)
        check(len(walked) == count, f"a walk of {dotted(root)} has {len(walked)} instances, not {count}")
    print("hardware, multicast, streams and clock: walks have as many instances as there are rows")


def run(mibhost, library):
    with Agent(mibhost, library, "--write-community", "private", "-v") as agent:
        client = Client(agent.port, "private")
        for area in (vlans, classification, private_vlans, voice_vlan, hardware, bridge, routes, addresses, tunnels,
                     snooping):
            area(agent, client)
        sizes(client)
        check(agent.stop() == 0, "the agent does not end with exit code 0")


main(run)
