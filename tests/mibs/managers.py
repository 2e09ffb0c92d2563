#!/usr/bin/python3
"""Walks a running agent and reads the answers with the texts, as managers do: pysnmp resolves names, indexes and named
numbers, tshark decodes what went over the wire."""

import os
import re
import sys
import tempfile

from pysmi.codegen import PySnmpCodeGen
from pysmi.compiler import MibCompiler
from pysmi.parser import SmiV2Parser
from pysmi.reader import FileReader
from pysmi.searcher import StubSearcher
from pysmi.writer import PyFileWriter
from pysnmp.smi import builder, error, view
from pysnmp.smi.rfc1902 import ObjectIdentity, ObjectType

sys.dont_write_bytecode = True  # nothing is left in the source tree

from mib_checks import ARGUMENTS
from agent_process import Agent, Failure, check, dotted, main
from recording import Recording, tshark
from snmp_client import Client
from texts import directories, modules

PRIVATE = (1, 3, 6, 1, 4, 1)
# tshark takes no second field of six octets in an index.
TWO_OF_SIX_OCTETS = "dVoiceVlanOuiEntry"


def view_of(root_directory, directory):
    """The texts as pysnmp loads them. It has the modules of SMI and INET-ADDRESS-MIB itself."""
    compiler = MibCompiler(SmiV2Parser(tempdir=""), PySnmpCodeGen(), PyFileWriter(directory))
    compiler.addSources(*(FileReader(path) for path in directories(root_directory)))
    compiler.addSearchers(StubSearcher(*PySnmpCodeGen.baseMibs))
    failed = {name: getattr(result, "error", result) for name, result in compiler.compile(*modules()).items()
              if result not in ("compiled", "untouched")}
    check(not failed, f"pysmi: {failed}")
    mib_builder = builder.MibBuilder()
    mib_builder.addMibSources(builder.DirMibSource(directory))
    mib_builder.loadModules(*modules())
    return view.MibViewController(mib_builder)


def resolve(mib_view, walked):
    """Every instance is an object of the texts, with an index and a value that it may have. The resolved ones, as
    `name.index = value`."""
    resolved = []
    for oid, value in walked:
        try:
            name, typed = ObjectType(ObjectIdentity(oid), value).resolveWithMib(mib_view, ignoreErrors=False)
            _, label, indexes = name.getMibSymbol()
        except error.SmiError as reason:
            raise Failure(f"{dotted(oid)} = {value.prettyPrint()}: {reason}")
        text = typed.prettyPrint()
        check(label not in ("enterprises", "switchVendor") and indexes, f"{dotted(oid)} is no instance of the texts")
        named = getattr(typed, "namedValues", None)
        check(not named or not text.lstrip("-").isdigit(), f"{label}: {text} has no name")
        resolved.append(f"{label}.{'.'.join(index.prettyPrint() for index in indexes)} = {text}")
    return resolved


def check_samples(resolved):
    for pattern in (r"swPortDuplex\.5121 = auto", r"swPortMedium\.5145 = fiber",
                    r"swDdmThresholdType\.\d+\.txPower = txPower",
                    r"nVlanMacVlanRowStatus\.02:50:00:00:00:01 = active",
                    r"nVlanSubnetVlanId\.ipv4\.10\.0\.10\.0\.24 = 10",
                    r"nVlanPortIfTrunkNativeVlanTag\.\d+ = (true|false)", r"mgmdIgmpSnpState\.1034\.igmp = enabled",
                    r"mgmdMldSnpGroupStatus\.5121\.1025\.ipv6\..* = active", r"mgmdIgmpSnpHostAddress\..* = 02:48:"):
        check(any(re.match(pattern, line) for line in resolved), f"pysnmp resolves nothing to {pattern}")


def check_tshark(directory, root_directory, capture, port):
    configuration = os.path.join(directory, "wireshark")
    os.mkdir(configuration)
    for name, lines in (("preferences", ["nameres.load_smi_modules: TRUE"]),
                        ("smi_paths", [f'"{path}"' for path in directories(root_directory)]),
                        ("smi_modules", [f'"{module}"' for module in modules()])):
        with open(os.path.join(configuration, name), "w") as file:
            file.writelines(line + "\n" for line in lines)
    lines = tshark(capture, port, "-O", "snmp")
    names = [line for line in lines if "Object Name:" in line and dotted(PRIVATE) + "." in line]
    check(names, "tshark decodes no private object")
    nameless = [line.strip() for line in names if "::" not in line]
    check(not nameless, "tshark has no names for:\n" + "\n".join(nameless[:10]))
    row = ""
    for line in lines:
        row = next(iter(re.findall(r"::(\w+Entry)\.", line)), row)
        check("[Expert Info" not in line or row == TWO_OF_SIX_OCTETS, f"tshark, about {row}: {line.strip()}")
    print(f"tshark names {len(names)} instances")


def run(root_directory, mibhost, library):
    with tempfile.TemporaryDirectory() as directory:
        mib_view = view_of(root_directory, directory)
        capture = os.path.join(directory, "walk.pcap")
        recording = Recording(capture)
        with Agent(mibhost, library) as agent:
            walked = Client(agent.port, record=recording.of(agent.port)).walk(PRIVATE, 25)
        recording.file.close()
        resolved = resolve(mib_view, walked)
        check_samples(resolved)
        print(f"pysnmp resolves {len(resolved)} instances")
        check_tshark(directory, root_directory, capture, agent.port)


main(run, 600, ARGUMENTS)
