"""The texts of the private modules as smidump reads them, for the object reference and for the tests of the texts."""

import ast
import os
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = "SWITCH-ROOT-MIB"  # what a build makes of its template

BASES = ("", "SNMPv2-SMI")
BASE_NAMES = {"OctetString": "OCTET STRING", "Enumeration": "INTEGER"}  # as texts have them
ACCESS = {"noaccess": "not-accessible", "readonly": "read-only", "readwrite": "read-write"}


def modules():
    """The names of the modules that have a text, the root module first."""
    return [ROOT, *sorted(name.removesuffix(".mib") for name in os.listdir(HERE) if name.endswith(".mib"))]


def directories(root):
    """Where the texts are and the standard modules that they import; `root` has the root module."""
    return [root, HERE, os.path.join(HERE, "standard")]


def smi_tool(root, program, *arguments):
    """Runs a program of smitools that finds the modules in those directories, and no others."""
    environment = dict(os.environ, SMIPATH=os.pathsep.join(directories(root)), LC_ALL="C")
    return subprocess.run([program, "-c", os.devnull, *arguments], env=environment, capture_output=True, text=True)


class Syntax:
    """What a value may be."""

    def __init__(self, base, types=(), names=None, ranges=()):
        self.base = base
        self.types = list(types)  # the textual conventions that it goes by, the outermost one first
        self.names = names or {}  # by number
        self.ranges = list(ranges)  # of numbers, or of an octet string's sizes

    def admits(self, number):
        if self.names:
            return number in self.names
        return not self.ranges or any(low <= number <= high for low, high in self.ranges)

    def ranges_in_words(self):
        text = ", ".join(str(first) if first == last else f"{first}..{last}" for first, last in self.ranges)
        if not text:
            return ""
        return f"{text} octets" if self.base == "OctetString" else text

    def narrowed_in_words(self):
        """The textual convention, and the named numbers or ranges."""
        names = ", ".join(f"{name}({number})" for number, name in self.names.items())
        return ", ".join(filter(None, [*self.types[:1], names or self.ranges_in_words()]))

    def in_words(self):
        base = [] if self.types else [BASE_NAMES.get(self.base, self.base)]
        return ", ".join(filter(None, [*base, self.narrowed_in_words()]))


class Node:
    def __init__(self, module, name, fields, syntax):
        self.module, self.name, self.syntax = module, name, syntax
        self.kind = fields["nodetype"]  # node, scalar, table, row, column, ...
        self.oid = fields.get("oid", "")
        self.access = ACCESS.get(fields.get("access"))
        self.makes_rows = fields.get("create") == "true"  # a row whose columns are read-create
        self.description = fields.get("description", "")
        self.units = fields.get("units", "")
        self.index = list(fields.get("linkage", ()))
        self.implied = "implied" in fields


class Module:
    def __init__(self, name, fields):
        self.name = name
        self.identity = fields["identity node"]
        self.description = fields.get("description", "")


class Convention:
    def __init__(self, name, module, description, syntax):
        self.name, self.module, self.description, self.syntax = name, module, description, syntax


class Texts:
    """All modules: nodes by name, objects among them, and textual conventions of their own."""

    def __init__(self, root, smidump="smidump"):
        self._root, self._smidump = root, smidump
        self._dumps = {}
        self.modules = []
        self.nodes, self.conventions = {}, {}
        self.repeated = []  # names of nodes that are there twice
        for name in modules():
            dump = self._dump(name)
            self.modules.append(Module(name, dump[name]))
            for node, fields in dump.get("nodes", {}).items():
                if node in self.nodes:
                    self.repeated.append(node)
                syntax = self._syntax(fields["syntax"]["type"]) if "syntax" in fields else None
                self.nodes[node] = Node(name, node, fields, syntax)
            for convention, fields in dump.get("typedefs", {}).items():
                self.conventions[convention] = Convention(convention, name, fields.get("description", ""),
                                                          self._syntax(fields))
        self.objects = {name: node for name, node in self.nodes.items() if node.kind in ("scalar", "column")}
        self._rows = {node.oid: node for node in self.nodes.values() if node.kind == "row"}
        for node in self.objects.values():
            if node.access == "read-write" and node.kind == "column" and self.row(node).makes_rows:
                node.access = "read-create"

    def module_of_identity(self, name):
        """The module with this MODULE-IDENTITY; None when it has no text."""
        return next((module for module in self.modules if module.identity == name), None)

    def row(self, column):
        """The row that a column is in."""
        return self._rows[column.oid.rpartition(".")[0]]

    def _dump(self, module):
        if module not in self._dumps:
            result = smi_tool(self._root, self._smidump, "-q", "-k", "-f", "python", module)
            if result.returncode != 0 or result.stderr:
                sys.exit(f"smidump {module}: {result.stderr}")
            self._dumps[module] = ast.literal_eval(result.stdout.partition("\nMIB = ")[2])
        return self._dumps[module]

    def _syntax(self, fields):
        """Of smidump's type: a name, or what is narrowed from a named or a base type."""
        if "basetype" not in fields:
            return self._named(fields["module"], fields["name"])
        parent = fields.get("parent module")
        outer = self._named(parent["name"], parent["type"]) if parent else Syntax(fields["basetype"])
        names = {int(number["number"]): name for name, number in fields.items()
                 if isinstance(number, dict) and number.get("nodetype") == "namednumber"}
        ranges = [(int(r["min"]), int(r["max"])) for r in fields.get("ranges", ())]
        return Syntax(outer.base, outer.types, names or outer.names, ranges or outer.ranges)

    def _named(self, module, name):
        if module in BASES:
            return Syntax(name)
        syntax = self._syntax(self._dump(module)["typedefs"][name])
        return Syntax(syntax.base, [name, *syntax.types], syntax.names, syntax.ranges)
