"""The texts of the private modules as smidump reads them, and what the tests of them share."""

import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.append(os.path.join(HERE, "..", "e2e"))

from agent_process import Failure

TEXTS = os.path.join(HERE, "..", "..", "mibs")
STANDARD = os.path.join(TEXTS, "standard")
ROOT = "SWITCH-ROOT-MIB"
REFUSED = 3  # mibhost's exit status for a SET that is refused


def modules():
    """The names of the private modules that have a text."""
    return sorted(name[:-len(".mib")] for name in os.listdir(TEXTS) if name.endswith(".mib"))


def fill_root(directory, vendor, second):
    """Writes the root module with these enterprise arcs."""
    with open(os.path.join(TEXTS, ROOT + ".mib.in")) as template:
        text = template.read()
    text = text.replace("@SWITCHMIB_VENDOR_ENTERPRISE@", str(vendor))
    text = text.replace("@SWITCHMIB_SECOND_ENTERPRISE@", str(second))
    with open(os.path.join(directory, ROOT + ".mib"), "w") as root:
        root.write(text)


def smi_tool(root_directory, *command):
    """Runs a program of smitools that finds the texts and the standard modules that they import, and no others."""
    with tempfile.NamedTemporaryFile() as no_configuration:
        environment = dict(os.environ, SMIPATH=os.pathsep.join([root_directory, TEXTS, STANDARD]), LC_ALL="C")
        # Names may have more than 32 characters: those of the objects are given.
        return subprocess.run([command[0], "-c", no_configuration.name, *command[1:]], env=environment,
                              capture_output=True, text=True, timeout=60)


class Syntax:
    """What a value may be: the base type's name, named numbers, ranges of numbers or of sizes."""

    def __init__(self, base, names, ranges, types):
        self.base = base
        self.names = names
        self.ranges = ranges
        self.types = types  # the textual conventions that it goes by, the innermost one last

    def admits(self, number):
        if self.names:
            return number in self.names.values()
        return not self.ranges or any(low <= number <= high for low, high in self.ranges)


class Node:
    def __init__(self, module, name, fields, texts):
        self.module, self.name, self.texts = module, name, texts
        self.kind = fields["nodetype"]  # node, scalar, table, row, column, ...
        self.oid = fields.get("oid", "")
        self.access = fields.get("access")
        self.index = [item for item in fields.get("linkage", ())]
        self.implied = "implied" in fields
        self.syntax = texts.syntax(fields["syntax"]["type"]) if "syntax" in fields else None


class Texts:
    """All modules with a text: nodes by name."""

    def __init__(self, root_directory):
        self.root_directory = root_directory
        self._dumps = {}
        self.nodes = {}
        self.repeated = []  # names that are there twice
        for module in modules() + [ROOT]:
            for name, fields in self._dump(module).get("nodes", {}).items():
                if name in self.nodes:
                    self.repeated.append(name)
                self.nodes[name] = Node(module, name, fields, self)
        self.objects = {name: node for name, node in self.nodes.items() if node.kind in ("scalar", "column")}

    def identity(self, module):
        """The OID and the name of a module's MODULE-IDENTITY."""
        name = self._dump(module)[module]["identity node"]
        return self.nodes[name].oid, name

    def row(self, column):
        """The row that a column is in."""
        oid = column.oid.rpartition(".")[0]
        return next(node for node in self.nodes.values() if node.kind == "row" and node.oid == oid)

    def _dump(self, module):
        if module not in self._dumps:
            result = smi_tool(self.root_directory, "smidump", "-q", "-k", "-f", "python", module)
            if result.returncode != 0 or result.stderr:
                raise Failure(f"smidump {module}: {result.stderr}")
            scope = {}
            exec(result.stdout, scope)
            self._dumps[module] = scope["MIB"]
        return self._dumps[module]

    def syntax(self, fields):
        """The syntax that smidump gives: a type by name, or one that is narrowed from a named or a base type."""
        if "basetype" not in fields:
            return self._named(fields["module"], fields["name"])
        parent = fields.get("parent module")
        outer = self._named(parent["name"], parent["type"]) if parent else Syntax(fields["basetype"], {}, [], [])
        names = {name: int(number["number"]) for name, number in fields.items()
                 if isinstance(number, dict) and number.get("nodetype") == "namednumber"}
        ranges = [(int(r["min"]), int(r["max"])) for r in fields.get("ranges", ())]
        return Syntax(outer.base, names or outer.names, ranges or outer.ranges, outer.types)

    def _named(self, module, name):
        if module in ("", "SNMPv2-SMI"):
            return Syntax(name, {}, [], [])
        syntax = self.syntax(self._dump(module)["typedefs"][name])
        return Syntax(syntax.base, syntax.names, syntax.ranges, syntax.types + [name])


def mibhost(program, library, *arguments):
    """What a command of mibhost prints with --json, an object for each line. A SET that is refused is not a failure."""
    result = subprocess.run([program, *arguments[:1], "--library", library, "--json", *arguments[1:]],
                            capture_output=True, text=True, timeout=60)
    if result.returncode not in (0, REFUSED):
        raise Failure(f"mibhost {' '.join(arguments)}: {result.stderr}")
    return [json.loads(line) for line in result.stdout.splitlines()]


def main(run, *names):
    """Runs run(*arguments); a failure ends with its message and exit code 1."""
    if len(sys.argv) != len(names) + 1:
        sys.exit(f"usage: {os.path.basename(sys.argv[0])} {' '.join(names)}")
    try:
        run(*sys.argv[1:])
    except Failure as failure:
        sys.exit(f"FAILED: {failure}")
    print("all checks passed")
