"""The MIB texts of the private modules, as smidump reads them."""

import ast
import glob
import os
import subprocess
import sys

BASES = ("", "SNMPv2-SMI")
BASE_NAMES = {"OctetString": "OCTET STRING", "Enumeration": "INTEGER"}  # as texts have them
ACCESS = {"noaccess": "not-accessible", "readonly": "read-only", "readwrite": "read-write"}


class Syntax:
    """What a value may be."""

    def __init__(self, base, types=(), names=None, ranges=()):
        self.base = base
        self.types = list(types)  # the textual conventions that it goes by, the outermost one first
        self.names = names or {}  # by number
        self.ranges = list(ranges)  # of numbers, or of an octet string's sizes

    def ranges_in_words(self):
        text = ", ".join(first if first == last else f"{first}..{last}" for first, last in self.ranges)
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
    def __init__(self, fields, syntax):
        self.access = ACCESS.get(fields.get("access"))
        self.description = fields.get("description", "")
        self.units = fields.get("units", "")
        self.index = list(fields.get("linkage", ()))
        self.syntax = syntax


class Module:
    def __init__(self, name, fields):
        self.name = name
        self.identity = fields["identity node"]
        self.description = fields.get("description", "")


class Convention:
    def __init__(self, name, module, description, syntax):
        self.name, self.module, self.description, self.syntax = name, module, description, syntax


class Texts:
    """All private modules: nodes by name, objects among them, and textual conventions of their own."""

    def __init__(self, smidump, directory, root):
        self._smidump = smidump
        self._path = os.pathsep.join([root, directory, os.path.join(directory, "standard")])
        self._dumps = {}
        self.nodes, self.objects, self.conventions, self._modules = {}, {}, {}, {}
        for path in sorted(glob.glob(os.path.join(directory, "*.mib"))):
            name = os.path.basename(path).removesuffix(".mib")
            dump = self._dump(name)
            module = Module(name, dump[name])
            self._modules[module.identity] = module
            for node_name, fields in dump.get("nodes", {}).items():
                syntax = self._syntax(fields["syntax"]["type"]) if "syntax" in fields else None
                node = self.nodes[node_name] = Node(fields, syntax)
                if fields["nodetype"] in ("scalar", "column"):
                    self.objects[node_name] = node
            # smidump says of a row that its columns are read-create.
            rows = {fields["oid"] for fields in dump.get("nodes", {}).values() if fields.get("create") == "true"}
            for node_name, fields in dump.get("nodes", {}).items():
                node = self.nodes[node_name]
                if node.access == "read-write" and fields.get("oid", "").rpartition(".")[0] in rows:
                    node.access = "read-create"
            for convention, fields in dump.get("typedefs", {}).items():
                self.conventions[convention] = Convention(convention, name, fields.get("description", ""),
                                                          self._syntax(fields))

    def module_of_identity(self, name):
        """The module with this MODULE-IDENTITY; None when it has no text."""
        return self._modules.get(name)

    def _dump(self, module):
        if module not in self._dumps:
            environment = dict(os.environ, SMIPATH=self._path, LC_ALL="C")
            result = subprocess.run([self._smidump, "-c", os.devnull, "-q", "-k", "-f", "python", module],
                                    env=environment, capture_output=True, text=True)
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
        ranges = [(r["min"], r["max"]) for r in fields.get("ranges", ())]
        return Syntax(outer.base, outer.types, names or outer.names, ranges or outer.ranges)

    def _named(self, module, name):
        if module in BASES:
            return Syntax(name)
        syntax = self._syntax(self._dump(module)["typedefs"][name])
        return Syntax(syntax.base, [name, *syntax.types], syntax.names, syntax.ranges)
