#!/usr/bin/env python3
"""Makes the object reference, one HTML file, of the MIB texts and of what mibhost says of the library.

usage: make.py MIBHOST LIBRARY SMIDUMP ROOT OUTPUT

ROOT has SWITCH-ROOT-MIB of this build.
"""

import html
import json
import os
import re
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.append(os.path.join(HERE, "..", "..", "mibs"))

from texts import Texts

STANDARDS = {
    "IF-MIB": "RFC 2863", "IP-MIB": "RFC 4293", "IP-FORWARD-MIB": "RFC 4292", "EtherLike-MIB": "RFC 3635",
    "TUNNEL-MIB": "RFC 4087", "BRIDGE-MIB": "RFC 4188", "P-BRIDGE-MIB": "RFC 4363", "Q-BRIDGE-MIB": "RFC 4363",
    "IPMCAST-MIB": "RFC 5132", "MGMD-STD-MIB": "RFC 5519", "IEEE8021-BRIDGE-MIB": "IEEE Std 802.1Q",
    "IEEE8021-Q-BRIDGE-MIB": "IEEE Std 802.1Q", "IEEE8021-FQTSS-MIB": "IEEE Std 802.1Q",
    "IEEE8021-SRP-MIB": "IEEE Std 802.1Q", "IEEE8021-AS-MIB": "IEEE Std 802.1AS",
}

# What the backend puts into the result buffer.
NUMBER = "4 octets in machine order"
RESULTS = {
    "INTEGER": NUMBER, "Gauge32": NUMBER, "Counter32": NUMBER, "Timeticks": NUMBER,
    "Counter64": "8 octets in machine order", "IpAddress": "4 octets in network order",
    "OID": "4 octets in machine order for each sub-identifier", "STRING": "the octets",
}
MODES = {5: "global mode", -1: "same mode", 4: "exec mode"}
# Of the published modules' row statuses, which have no text here.
ROW_STATUS = {1: "active", 2: "notInService", 3: "notReady", 4: "createAndGo", 5: "createAndWait", 6: "destroy"}

# Lists of ports and of VLANs have these sizes.
LIST_SIZES = (12, 512, 652)


def escape(text):
    return html.escape(str(text))


def code(text, kind=""):
    """A command or a line; blanks that would not be seen otherwise are kept by the style sheet."""
    return f'<code{f" class={kind}" if kind else ""}>{escape(text)}</code>'


def link(name):
    return f'<a href="#{escape(name)}">{escape(name)}</a>'


def in_words(items, last="and"):
    items = list(items)
    return items[0] if len(items) == 1 else f"{', '.join(items[:-1])} {last} {items[-1]}"


def numbers(ranges):
    """{2, 3, 4} of "2-4"."""
    found = set()
    for part in ranges.split(","):
        first, _, last = part.partition("-")
        found.update(range(int(first), int(last or first) + 1))
    return found


def shorter(octets, octets_shown=16):
    """Octets as code; all of them, but a run of zeros at the end of a long key."""
    parts = octets.split()
    used = len(parts)
    while used > 1 and parts[used - 1] == "00":
        used -= 1
    if len(parts) <= octets_shown or used > len(parts) - 4:
        return code(octets)
    return f"{code(' '.join(parts[:max(used, 4)]))} and {len(parts) - max(used, 4)} octets <code>00</code>"


class Object:
    def __init__(self, entry, listed, text):
        self.entry = entry
        self.name = entry["name"]
        self.oid = listed["oid"]
        self.text = text  # None for an object of a published module
        self.cases = []  # its writes and refusals
        self.syntax = text.syntax if text else None
        self.names = dict(self.syntax.names) if text else {}
        if not text and self.name.endswith("RowStatus"):
            self.names = ROW_STATUS


class Group:
    def __init__(self, entry):
        self.entry = entry
        self.name = entry["name"]
        self.requests = []
        self.objects = []


class Module:
    def __init__(self, entry):
        self.entry = entry
        self.name = entry["name"]
        self.published = entry.get("published")
        self.groups = []
        self.examples = []
        self.text = None


def modules_of(contract, listed, texts):
    """The contract's entries as a tree."""
    modules, objects = [], {}
    for entry in contract:
        kind = entry["entry"]
        if kind == "module":
            modules.append(Module(entry))
            modules[-1].text = texts.module_of_identity(entry["name"])
        elif kind in ("table", "scalars"):
            modules[-1].groups.append(Group(entry))
        elif kind == "request":
            modules[-1].groups[-1].requests.append(entry)
        elif kind == "object":
            name = entry["name"]
            objects[name] = Object(entry, listed[name], texts.objects.get(name))
            modules[-1].groups[-1].objects.append(objects[name])
        elif kind in ("write", "refusal"):
            objects[entry["name"]].cases.append(entry)
        elif kind == "example":
            modules[-1].examples.append(entry)
        else:
            sys.exit(f"make.py: the contract has an entry of an unknown kind: {kind}")
    return modules


class Page:
    def __init__(self, modules, texts):
        self.modules = modules
        self.texts = texts
        self.ids = {}  # what each is of
        self.examples = {}  # anchors and titles, by objects in them
        self.asked = {}  # the objects that show requests read, by command and magic
        for module in modules:
            self._add_id(module.name, "module")
            for group in module.groups:
                self._add_id(group.name, "group")
                for item in group.objects:
                    self._add_id(item.name, "object")
                    for request in group.requests:
                        if item.entry["magic"] in numbers(request["columns"]):
                            self.asked.setdefault((request["command"], item.entry["magic"]), item)
            for number, example in enumerate(module.examples, 1):
                anchor = f"{module.name}-example-{number}"
                for name in dict.fromkeys(re.findall(r"(\w+)[.\[]\S*=", example["request"])):
                    self.examples.setdefault(name, []).append((anchor, example["name"]))
        for name in texts.conventions:
            self._add_id(name, "textual convention")

    def _add_id(self, name, kind):
        if name in self.ids:
            sys.exit(f"make.py: {name} is a {self.ids[name]} and a {kind}")
        self.ids[name] = kind

    # --- Pieces -------------------------------------------------------------------------------------------------------

    def prose(self, text, own="", kind="description"):
        """Paragraphs; names of objects in them are links."""
        def linked(match):
            name = match.group()
            return link(name) if name in self.ids and name != own and re.search("[A-Z]", name[1:]) else name
        return "".join(f'<p class="{kind}">{re.sub("[A-Za-z][A-Za-z0-9]+", linked, html.escape(p, quote=False))}</p>'
                       for p in re.split(r"\n\s*\n", text) if p.strip())

    @staticmethod
    def heading(level, name, oid=None, also=""):
        number = f' <span class="oid">{escape(oid)}</span>' if oid else ""
        return (f'<h{level}><a class="anchor" href="#{escape(name)}">{escape(name)}</a>'
                f'{f" <small>{also}</small>" if also else ""}{number}</h{level}>')

    @staticmethod
    def properties(rows):
        return '<dl class="properties">' + "".join(f"<div><dt>{name}</dt><dd>{value}</dd></div>"
                                                   for name, value in rows if value) + "</dl>"

    @staticmethod
    def columns(titles, rows, caption, kind="plain"):
        head = "".join(f'<th scope="col">{title}</th>' for title in titles)
        body = "".join("<tr>" + "".join(f"<td>{cell}</td>" for cell in row) + "</tr>" for row in rows)
        return (f'<table class="{kind}"><caption>{caption}</caption><thead><tr>{head}</tr></thead>'
                f"<tbody>{body}</tbody></table>")

    # --- Modules and groups -------------------------------------------------------------------------------------------

    def module(self, module):
        also = escape(module.text.name if module.text else module.published or "")
        parts = [f'<section class="module" id="{module.name}">',
                 self.heading(2, module.name, self.oid(module.entry, module.groups[0].objects[0]), also)]
        if module.text:
            parts.append(self.prose(module.text.description))
            conventions = [c for c in self.texts.conventions.values() if c.module == module.text.name]
        else:
            conventions = []
            standard = STANDARDS.get(module.published)
            if not standard:
                sys.exit(f"make.py: no standard is known for {module.published}")
            parts.append(f"<p>{escape(standard)} describes the objects of {escape(module.published)}. "
                         "Here is what the library registers, asks and sends.</p>")
        for convention in conventions:
            parts.append(f'<section class="convention" id="{convention.name}">'
                         f'{self.heading(3, convention.name, also="textual convention")}'
                         f"{self.properties([('Syntax', escape(convention.syntax.in_words()))])}"
                         f"{self.prose(convention.description, convention.name)}</section>")
        parts += [self.group(group) for group in module.groups]
        for number, example in enumerate(module.examples, 1):
            parts.append(self.example(f"{module.name}-example-{number}", example))
        parts.append("</section>")
        return "\n".join(parts)

    @staticmethod
    def oid(entry, item):
        """The OID of what an object is in, with this build's enterprise arcs."""
        return ".".join(item.oid.split(".")[:entry["oid"].count(".") + 1]) if "oid" in entry else None

    def group(self, group):
        is_table = group.entry["entry"] == "table"
        oid = self.oid(group.entry, group.objects[0])
        parts = [f'<section class="group" id="{group.name}">',
                 self.heading(3, group.name, oid, "" if is_table else "scalars")]
        table = self.texts.nodes.get(group.name) if is_table else None
        row = self.texts.nodes.get(group.name.removesuffix("Table") + "Entry") if table else None
        for node in (table, row):
            if node:
                parts.append(self.prose(node.description, group.name))
        key = group.entry.get("key", {})
        if row and row.index:
            parts.append(self.properties([("Index", ", ".join(map(link, row.index)))]))
        elif key.get("fields"):
            parts.append(self.properties([("Index", escape(", ".join(field["is"] for field in key["fields"])))]))
        if not group.entry["answers"]:
            parts.append('<p class="never">Never answers: a read of it asks the backend nothing.</p>')
        if group.requests:
            parts.append(self.backend(group, key, is_table))
        parts += [self.object(item, group) for item in group.objects]
        parts.append("</section>")
        return "\n".join(parts)

    def backend(self, group, key, is_table):
        """What the backend is asked, and what it returns."""
        requests = "".join(self.request(request, is_table) for request in group.requests)
        parts = [f'<h4>Show requests<span class="of"> of {group.name}</span></h4><ul class="requests">{requests}</ul>']
        magics = set().union(*(numbers(request["columns"]) for request in group.requests))
        rows = []
        for item in group.objects:
            if item.entry["magic"] in magics:
                kind = item.entry["type"]
                text = f"{kind}: {RESULTS[kind]}"
                if item.syntax and item.syntax.narrowed_in_words():
                    text += f"; {item.syntax.narrowed_in_words()}"
                rows.append((item.entry["magic"], link(item.name), escape(text)))
        parts.append("<p>The backend returns 0 and the value with its length"
                     + (", and after a GETNEXT the row’s index in the key" if is_table else "")
                     + (". Not 0 is “no such row”.</p>" if is_table else ". Not 0 is “no value”.</p>"))
        parts.append(self.columns(("Magic", "Object", "Value"), rows, "Values by magic", "values"))
        if key.get("octets"):
            rows = []
            for field in key.get("record") or key["fields"]:
                what = " ".join(filter(None, (field.get("family"), field["is"])))
                if "part" in field:
                    what += f" of index part {field['part']}"
                rows.append((field["offset"], field["octets"], escape(what)))
            kind = "Record in place of the key" if "record" in key else "Key"
            parts.append(self.columns(("Offset", "Octets", "Field"), rows, f"{kind}, {key['octets']} octets"))
        return "".join(parts)

    def request(self, request, is_table):
        if not is_table:
            whose = []
        elif request["for"] == "first row":
            whose = ["first row"]
        else:
            whose = [f"row {self.row(request['row'])}"]
        for context in ("vrf", "context"):
            if context in request:
                whose.append(f"{'VRF' if context == 'vrf' else context} {escape(request[context])}")
        phases = {(0,): "GETNEXT (exact 0)", (1,): "GET (exact 1)"}.get(tuple(sorted(request["exact"])),
                                                                       "GET and GETNEXT (exact 1, 0)")
        magics = f"magic{'s' if len(numbers(request['columns'])) > 1 else ''} {request['columns']}"
        details = whose + [phases, magics, f"class {request['class']}", f"buffer of {request['size']} octets"]
        if "index_count" in request:
            details.append(f"index count {request['index_count']}")
        if request["request"] != request["name"]:
            details.append(f"name {escape(request['request'])}")
        if "key" in request:
            details.append(f"key {shorter(request['key'])}")
        return f'<li>{code(request["command"], "show")}<p class="details">{" · ".join(details)}</p></li>'

    @staticmethod
    def row(parts):
        return f"[{escape(', '.join(map(str, parts)))}]"

    # --- Objects ------------------------------------------------------------------------------------------------------

    def object(self, item, group):
        entry = item.entry
        parts = [f'<article class="object" id="{item.name}">', self.heading(4, item.name, item.oid)]
        access = item.text.access if item.text else entry["access"]
        if not item.text and not item.cases and entry["answers"] == "never":  # nothing more to say
            parts.append(f'<p class="details">{entry["type"]} · {access}'
                         f'{" in the standard, refused here" if access == "read-write" else ""} · never answers</p>')
            parts.append("</article>")
            return "".join(parts)
        if item.text:
            parts.append(self.prose(item.text.description, item.name))
        parts.append(self.properties([
            ("Type", self.type(item)),
            ("Access", access),
            ("Values", " ".join(f'<span class="named">{escape(name)}<b>({number})</b></span>'
                                for number, name in item.names.items())),
            ("Units", escape(item.text.units) if item.text and item.text.units else ""),
            ("Read", self.read(item, group)),
            ("Write", self.takes(item)),
            ("Examples", ", ".join(f'<a href="#{anchor}">{escape(title)}</a>'
                                   for anchor, title in self.examples.get(item.name, ()))),
        ]))
        parts.append(self.writes(item))
        parts.append("</article>")
        return "".join(parts)

    def type(self, item):
        text = escape(item.entry["type"])
        if not item.syntax:
            return text
        for name in item.syntax.types[:1]:
            text += f", {link(name) if name in self.texts.conventions else escape(name)}"
        ranges = item.syntax.ranges_in_words()
        return text + (f", {escape(ranges)}" if ranges and not item.names else "")

    @staticmethod
    def read(item, group):
        answers = item.entry["answers"]
        if answers == "library":
            return "The library answers by itself, with a constant or the kernel’s statistics"
        if answers == "never":
            return "Never answers"
        magic = item.entry["magic"]
        mine = [request for request in group.requests if magic in numbers(request["columns"])]
        shown = next((request for request in mine if request["for"] != "first row"), mine[0] if mine else None)
        return (code(shown["command"], "show") if shown else "") + f' magic {magic} of <a href="#{group.name}">' \
            f'{group.name}</a>'

    @staticmethod
    def takes(item):
        takes = item.entry.get("takes")
        if takes is None:
            return "notWritable" if item.entry["access"] == "read-write" else ""
        if isinstance(takes, str):
            return "Takes nothing by itself"
        sizes = f" of {in_words(takes['sizes'], 'or').replace('..', ' to ')} octets" if "sizes" in takes else ""
        return in_words(takes["types"], "or") + sizes

    def value(self, entry, item):
        values = entry["values"]
        if isinstance(values, dict):
            octets, size = values["octets"], values["size"]
            if "at" in values:
                text = f"{code(octets)} at octet {values['at']} of {size}"
            elif len(octets.split()) < size:
                text = f"{code(octets + ' 00…')} ({size} octets)"
            else:
                text = code(octets)
            if size in LIST_SIZES:
                text = f"{ {'00': 'No member', '80': 'Member 1'}.get(octets, 'List')}: {text}"
            return text
        if isinstance(values, int):
            return f"<b>{values}</b>" + (f" {escape(item.names[values])}" if values in item.names else "")
        if values == "":
            return "No octets"
        if values == "any text":
            return "Any text"
        if re.fullmatch(r"-?\d+\.\.-?\d+", values):
            first, last = map(int, values.split(".."))
            names = [name for number, name in item.names.items() if first <= number <= last]
            return f"<b>{first}</b> to <b>{last}</b>" + (f" {escape(', '.join(names))}" if names else "")
        return code(json.dumps(values))

    def what(self, entry, item):
        """What a write or a refusal is of, whatever the row."""
        what = entry.get("what", "value")
        if what == "value":
            text = self.value(entry, item)
        elif what == "type":
            takes = item.entry["takes"]
            text = f"Type {in_words(map(escape, entry['types']), 'or')}"
            if isinstance(takes, dict) and len(entry["types"]) > 3:
                text = f"Another type than {in_words(takes['types'], 'or')}"
        elif what == "length":
            sizes = entry["sizes"]
            text = f"Length not {sizes[4:]}" if sizes.startswith("not ") else f"Length {sizes.replace('..', ' to ')}"
        elif what == "refused line":
            text = f"Line {entry['line']} is refused"
        else:
            text = escape(what.capitalize())
        if "row exists" in entry:
            text += ", when the row is not there"
        for context in ("vrf", "context"):
            if context in entry:
                text += f", in {'VRF' if context == 'vrf' else context} {escape(entry[context])}"
        return text

    def writes(self, item):
        """Values with what each causes: first those that lines are sent for, last those that are refused."""
        if not item.cases:
            return ""
        usual_row = item.cases[0].get("row")
        cases = {}  # by what is written, and the row
        for entry in item.cases:
            row = entry.get("row", usual_row)
            cases.setdefault((self.what(entry, item), row and self.row(row)), []).append(entry)
        rows = {row for _, row in cases}
        alike = {}  # what is written and the rows, by what that causes
        ranks = {}
        for (what, row), entries in cases.items():
            effect = tuple(self.effect(entry) for entry in entries)
            alike.setdefault(effect, {}).setdefault(what, []).append(row)
            accepted = [entry for entry in entries if entry["entry"] == "write"]
            ranks[effect] = 0 if any(entry["sends"] for entry in accepted) else 1 if accepted else 2

        def in_rows(those):
            if len(rows) == 1 or usual_row and those == [self.row(usual_row)]:
                return ""
            if len(those) == len(rows):
                return ", in every row that was tried"
            return f" in row {in_words(those)}"
        parts = []
        for effect in sorted(alike, key=ranks.get):
            whats = "<br>".join(what + in_rows(those) for what, those in alike[effect].items())
            effects = "".join(f"<dd>{each}</dd>" for each in effect)
            parts.append(f"<div><dt>{whats}</dt>{effects}</div>")
        row = f" for row {self.row(usual_row)}" if usual_row not in (None, [0]) else ""
        return f'<p class="label" id="{item.name}-set">A SET of…{row}</p><dl class="cases" ' \
            f'aria-labelledby="{item.name}-set">{"".join(parts)}</dl>'

    def effect(self, entry):
        own = f"write_{entry['name']}"
        parts = []
        for ask in entry.get("asks", ()):
            details = f"magic {ask['magic']}" + (f" as {escape(ask['request'])}" if ask["request"] != own else "")
            answer = ""
            asked = self.asked.get((ask["command"], ask["magic"]))
            if asked:
                details += ", this object" if asked.name == entry["name"] else f", {asked.name}"
            if "answer" in ask:
                answer = f"<b>{escape(ask['answer'])}</b>"
                if asked and ask["answer"] in asked.names:
                    answer += f" {escape(asked.names[ask['answer']])}"
                answer = f"; answer {answer}"
            parts.append(f'<p class="ask">asks {code(ask["command"], "show")} <span class="details">{details}</span>'
                         f"{answer}</p>")
        if entry.get("sends"):
            lines = []
            for line in entry["sends"]:
                details = MODES[line["mode"]]
                if line["caller"] != own:
                    details += f", from {escape(line['caller'])}"
                if "phase" in line:
                    details += f", in {line['phase']}"
                inner = ' class="inner"' if line["mode"] == -1 else ""
                lines.append(f'<li{inner}>sends {code(line["line"], "line")} '
                             f'<span class="details">{details}</span></li>')
            parts.append(f'<ol class="lines">{"".join(lines)}</ol>')
        if "error" in entry:
            phase = f" in {entry['phase']}" if "phase" in entry else ""
            if entry["error"] != "noError":
                parts.append(f'<p class="error"><b>{entry["error"]}</b>{phase}</p>')
        elif not entry.get("sends"):
            parts.append('<p class="nothing">Accepted; sends nothing</p>')
        return "".join(parts)

    def example(self, name, example):
        effect = self.effect(example)
        return (f'<section class="example" id="{name}"><h3>Example: {escape(example["name"])}</h3>'
                f'<p>{code("mibhost explain " + example["request"])}</p>{effect}</section>')

    # --- The whole ----------------------------------------------------------------------------------------------------

    def navigation(self):
        parts = []
        for title, modules in (("Private modules", [m for m in self.modules if m.text]),
                               ("Published modules", [m for m in self.modules if not m.text])):
            items = []
            for module in sorted(modules, key=lambda m: m.name.lower()):
                groups = "".join(f"<li>{link(group.name)}</li>" for group in module.groups)
                also = f" <small>{escape(module.published)}</small>" if module.published else ""
                items.append(f'<li><a class="to-module" href="#{module.name}">{module.name}{also}</a>'
                             f"<ul>{groups}</ul></li>")
            parts.append(f'<p class="label" id="{title.split()[0].lower()}-modules">{title}</p>'
                         f'<ul aria-labelledby="{title.split()[0].lower()}-modules">{"".join(items)}</ul>')
        return "\n".join(parts)

    def overview(self):
        rows = []
        for module in self.modules:
            objects = [item for group in module.groups for item in group.objects]
            what = module.text.name if module.text else f"{module.published}, {STANDARDS[module.published]}"
            answering = sum(item.entry["answers"] != "never" for item in objects)
            rows.append((link(module.name), escape(what), len(objects), answering))
        return self.columns(("Module", "Text", "Objects", "That answer"), rows, "Modules, by OID")

    def html(self, version):
        def read(name):
            with open(os.path.join(HERE, name), encoding="utf-8") as file:
                return file.read()
        filled = {"VERSION": escape(version), "STYLE": read("style.css"), "SCRIPT": read("script.js"),
                  "NAVIGATION": self.navigation(), "OVERVIEW": self.overview(),
                  "MODULES": "\n".join(map(self.module, self.modules))}
        return re.sub(r"@([A-Z]+)@", lambda match: filled[match.group(1)], read("page.html"))


def main():
    if len(sys.argv) != 6:
        sys.exit(__doc__)
    mibhost, library, smidump, root, output = sys.argv[1:]

    def run(*arguments):
        result = subprocess.run([mibhost, *arguments], capture_output=True, text=True)
        if result.returncode != 0:
            sys.exit(f"make.py: mibhost {' '.join(arguments)}: {result.stderr}")
        return result.stdout

    def lines(command):
        return [json.loads(line) for line in run(command, "--library", library, "--json").splitlines()]

    texts = Texts(root, smidump)
    listed = {entry["name"]: entry for entry in lines("list")}
    page = Page(modules_of(lines("contract"), listed, texts), texts)
    text = page.html(run("--version").split()[-1])
    os.makedirs(os.path.dirname(output), exist_ok=True)
    with open(output, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main()
