#!/usr/bin/python3
"""Tries the object reference in headless Chromium, as its reader would: search, links, the keyboard, narrow screens,
dark and light, print, and what a screen reader needs."""

import asyncio
import os
import sys
import urllib.parse

sys.dont_write_bytecode = True  # nothing is left in the source tree

from browser import browser

# A page with many kinds of entries, and one with the longest names.
PLACES = ("", "#qBridgeMIB", "#harrowMgmdSnoopingMIB", "#q=vlan")

# The text of what is shown whose contrast with its background is too low.
CONTRAST = """(() => {
    const light = ([r, g, b]) => {
        const [x, y, z] = [r, g, b].map(c => (c /= 255) <= 0.04045 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4);
        return 0.2126 * x + 0.7152 * y + 0.0722 * z;
    };
    const colour = text => text.match(/[\\d.]+/g).map(Number);
    const behind = element => {
        for (let at = element; at; at = at.parentElement) {
            const found = colour(getComputedStyle(at).backgroundColor);
            if (found.length < 4 || found[3] === 1) return found;
        }
        return [255, 255, 255];
    };
    const wrong = new Set();
    const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    let texts = 0;
    while (walker.nextNode()) {
        const element = walker.currentNode.parentElement;
        if (!walker.currentNode.data.trim() || !element.checkVisibility()) continue;
        ++texts;
        const [a, b] = [light(colour(getComputedStyle(element).color)), light(behind(element))];
        const contrast = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
        if (contrast < 4.5) wrong.add(`${element.localName}.${element.className} ${contrast.toFixed(2)}`);
    }
    return texts ? [...wrong] : ["no text"];
})()"""

# What a screen reader trips over, in the whole document.
BASICS = """(() => {
    const wrong = [];
    const ids = new Set();
    for (const {id} of document.querySelectorAll("[id]")) {
        if (ids.has(id)) wrong.push(`id ${id} is there twice`);
        ids.add(id);
    }
    for (const link of document.querySelectorAll("a")) {
        if (!link.textContent.trim()) wrong.push(`a link to ${link.hash} has no text`);
        const hash = link.getAttribute("href");
        if (!hash.startsWith("#") || !ids.has(hash.slice(1))) wrong.push(`a link goes to ${hash}`);
    }
    for (const input of document.querySelectorAll("input, select, textarea"))
        if (!input.labels.length) wrong.push(`${input.id} has no label`);
    for (const attribute of ["aria-labelledby", "aria-describedby"])
        for (const element of document.querySelectorAll(`[${attribute}]`))
            if (!ids.has(element.getAttribute(attribute))) wrong.push(`${attribute} without an element`);
    let level = 0;
    for (const heading of document.querySelectorAll("h1, h2, h3, h4, h5, h6")) {
        const its = Number(heading.localName[1]);
        if (its > level + 1) wrong.push(`${heading.textContent} is h${its} after h${level}`);
        level = its;
    }
    for (const [what, number] of [["h1", 1], ["main", 1], ["body > * header", 1], ["nav[aria-label]", 1],
                                  ["[role=search]", 1], ["html[lang]", 1], ["[role=status]", 1]])
        if (document.querySelectorAll(what).length !== number) wrong.push(`${what}: not ${number}`);
    for (const table of document.querySelectorAll("table"))
        if (!table.caption || !table.querySelector("th[scope]")) wrong.push("a table has no caption or no headings");
    for (const list of document.querySelectorAll("main dl > div"))
        if (list.firstElementChild.localName !== "dt" || list.lastElementChild.localName !== "dd")
            wrong.push(`a list's group is not whole: ${list.textContent.slice(0, 60)}`);
    if (document.querySelector("[src], link[href]:not([href^='data:'])")) wrong.push("something is loaded");
    return wrong;
})()"""

SHOWN = "[...document.querySelectorAll('main > section')].filter(e => e.checkVisibility()).map(e => e.id)"
FOUND = "[...document.querySelectorAll('#results-lists a')].map(e => e.hash.slice(1))"


class Test:
    def __init__(self, page, url, pictures):
        self.page, self.url, self.pictures = page, url, pictures
        self.failures = []

    def check(self, is_right, message):
        if not is_right:
            self.failures.append(message)

    async def open(self, place="", width=1400, **media):
        await self.page.media(width, **media)
        await self.page.go(self.url + place)

    async def equal(self, expression, expected, what):
        got = await self.page.evaluate(expression)
        self.check(got == expected, f"{what}: {got!r}, not {expected!r}")

    async def at(self, name, address=None):
        """The address has the object, its heading is on the screen, and its module alone is there."""
        await self.equal("location.hash", address or f"#{name}", f"the address at {name}")
        element = f"document.getElementById('{name}')"
        module = await self.page.evaluate(f"{element}.closest('section.module').id")
        await self.equal(SHOWN, [module], f"shown at {name}")
        top = await self.page.evaluate(f"{element}.getBoundingClientRect().top")
        self.check(0 <= top < 200, f"{name} is at {top} pixels")

    async def search(self, text):
        await self.page.press("/")
        await self.page.evaluate("document.getElementById('search-field').select()")
        await self.page.type(text)
        return await self.page.evaluate(FOUND)

    async def searches(self):
        await self.open()
        await self.equal(SHOWN, ["how-to-read"], "shown at first")
        for text, expected in (("dot1qPvid", "dot1qPvid"),
                               ("QPVID", "dot1qPvid"),
                               ("Q-BRIDGE-MIB::dot1qPvid.5121", "dot1qPvid"),
                               ("1.3.6.1.2.1.17.7.1.4.5.1.1", "dot1qPvid"),
                               (".1.3.6.1.2.1.17.7.1.4.5.1.1.5121", "dot1qPvid"),
                               ("1.3.6.1.2.1.17.7.1.4.5", "dot1qPortVlanTable"),
                               ("IF-MIB", "interfaces"),
                               ("show snmp mac-vlan", "nVlanMacVlanTable"),
                               ("native vlan <value>", "dot1qPvid"),
                               ("frames sends tagged", "nVlanPortIfTagAllowVlanLstFirst2K")):
            found = await self.search(text)
            self.check(found and expected in found[:3], f"{text} finds {found[:3]}")
        below = await self.search("1.3.6.1.2.1.17.7.1.4.5")
        self.check("dot1qPvid" in below and "dot1qVlanStaticRowStatus" not in below, "what is below an OID")
        for text in ("<b>no such thing</b>", "(", "[\\"):
            self.check(not await self.search(text), f"{text} finds something")
        await self.equal("document.getElementById('results-count').textContent", "Nothing is found for “[\\”.", "count")

    async def links(self):
        """A link to an object is found by the keyboard alone, and survives a reload."""
        await self.open()
        await self.search("dot1qPvid")
        await self.page.press("Enter")
        await self.at("dot1qPvid")
        await self.page.reload()
        await self.at("dot1qPvid")
        await self.page.evaluate("history.back()")
        await self.page.settle()
        await self.equal("location.hash", "#q=dot1qPvid", "after going back")
        await self.equal(SHOWN, ["results"], "after going back")
        await self.page.evaluate("document.getElementById('search-field').focus()")
        await self.page.press("ArrowDown")
        await self.equal("document.activeElement.hash", "#dot1qPvid", "after the arrow")
        for name in ("dot1qPvid", "nVlanPortIfTagAllowVlanLstSecond2K", "ieee8021AsPortDSClockIdentity"):
            for width in (400, 1400):
                await self.open(f"#{name}", width)
                await self.at(name)
        await self.open("#1.3.6.1.2.1.17.7.1.4.5.1.1")
        await self.at("dot1qPvid", "#1.3.6.1.2.1.17.7.1.4.5.1.1")
        for address in ("#nothing", "#%zz"):
            await self.open(address)
            await self.equal(SHOWN, ["how-to-read"], f"shown at {address}")

    async def answers(self):
        """What new readers ask, answered where they come."""
        for name, wanted in (
                ("nVlanPortIfTagAllowVlanLstSecond2K", ("sends tagged", "CorvinVlanList", "2 hybrid",
                                                        "switchport hybrid allowed vlan add tagged 1")),
                ("dot1qVlanStaticRowStatus", ("4 createAndGo\nsends vlan 10",)),
                ("nVlanMacVlanTable", ("show snmp mac-vlan 02-50-00-00-00-01", "class 2", "nVlanMacVlanPriority",
                                       "4 octets in machine order", "MAC address"))):
            await self.open(f"#{name}")
            text = await self.page.evaluate(f"document.getElementById('{name}').innerText")
            for part in wanted:
                self.check(part in text, f"{name} does not say: {part}")

    async def looks(self):
        await self.open()
        self.failures += await self.page.evaluate(BASICS)
        for scheme in ("light", "dark"):
            for width in (400, 1400):
                for place in PLACES:
                    await self.open(place, width, scheme=scheme)
                    self.failures += [f"{place}, {scheme}: contrast of {what}"
                                      for what in await self.page.evaluate(CONTRAST)]
                    if self.pictures:
                        name = f"{width}-{scheme}-{place.strip('#').replace('=', '-') or 'start'}.png"
                        await self.page.screenshot(os.path.join(self.pictures, name))
        await self.open(width=400)
        for module in await self.page.evaluate("[...document.querySelectorAll('.to-module')].map(e => e.hash)"):
            await self.page.evaluate(f"location.hash = '{module}'")
            await self.page.settle()
            width = await self.page.evaluate("document.documentElement.scrollWidth")
            self.check(width <= 400, f"{module} is {width} pixels wide on a screen of 400")

    async def print(self):
        await self.open("#qBridgeMIB", 800, medium="print")
        await self.equal(SHOWN, ["qBridgeMIB"], "printed")
        await self.equal("[...document.querySelectorAll('nav, #search')].some(e => e.checkVisibility())", False,
                         "navigation in print")

    async def without_script(self):
        await self.page.media(1400)
        await self.page.call("Emulation.setScriptExecutionDisabled", value=True)
        for url in ("about:blank", self.url):
            await self.page.call("Page.navigate", url=url)
            await asyncio.sleep(2)
        await self.equal(f"{SHOWN}.length === document.querySelectorAll('main > section:not([hidden])').length", True,
                         "every module is shown without scripts")
        await self.equal("document.getElementById('search').checkVisibility()", False, "a search without scripts")
        await self.page.call("Emulation.setScriptExecutionDisabled", value=False)


async def main(path, pictures=None):
    if pictures:
        os.makedirs(pictures, exist_ok=True)
    async with browser() as page:
        test = Test(page, "file://" + urllib.parse.quote(os.path.abspath(path)), pictures)
        for part in (test.searches, test.links, test.answers, test.looks, test.print, test.without_script):
            await part()
        test.failures += [f"console: {error}" for error in page.errors]
    if test.failures:
        sys.exit("FAILED:\n" + "\n".join(test.failures))
    print("all checks passed")


if len(sys.argv) not in (2, 3):
    sys.exit("usage: page.py PAGE [DIRECTORY-FOR-PICTURES]")
asyncio.run(main(*sys.argv[1:]))
