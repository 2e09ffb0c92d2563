"use strict";
(() => {
    const field = document.getElementById("search-field");
    const results = document.getElementById("results");
    const count = document.getElementById("results-count");
    const lists = document.getElementById("results-lists");
    const start = document.getElementById("how-to-read");
    const sections = [...document.querySelectorAll("main > section")];
    const modules = document.getElementById("modules");
    const narrow = matchMedia("(max-width: 56rem)");
    const kMost = 60;  // results of a kind that are listed

    // --- What there is to find, made at the first search -------------------------------------------------------------

    let things = null;
    function collect() {
        const texts = (element, selector) =>
            [...new Set([...element.querySelectorAll(selector)].map(each => each.textContent))];
        const commands = [];
        things = {objects: [], commands};
        for (const element of document.querySelectorAll("section.module, section.group, article.object")) {
            const heading = element.querySelector("h2, h3, h4");
            const also = heading.querySelector("small")?.textContent ?? "";
            const description = element.querySelector(":scope > p.description")?.textContent ?? "";
            things.objects.push({
                id: element.id, lower: element.id.toLowerCase(), also, description,
                oid: heading.querySelector(".oid")?.textContent ?? "",
                what: {module: "module", group: also ? "" : "table", object: ""}[element.className],
                within: element.className === "module" ? "" : element.parentElement.id,
                described: [...element.querySelectorAll(":scope > p.description")].map(e => e.textContent).join(" "),
            });
            if (element.className === "module") continue;
            for (const [selector, kind, why] of [[":scope > .requests .show", "show", "Read of"],
                                                 [":scope > .cases .show", "show", "SET of"],
                                                 [":scope > .cases .line", "line", "SET of"]])
                for (const text of texts(element, selector))
                    commands.push({text, id: element.id, kind, why: `${why} ${element.id}`});
        }
        for (const element of document.querySelectorAll("section.example"))
            for (const kind of ["show", "line"])
                for (const text of texts(element, "." + kind))
                    commands.push({text, id: element.id, kind, why: element.querySelector("h3").textContent});
        for (const element of document.querySelectorAll("section.convention"))
            things.objects.push({id: element.id, lower: element.id.toLowerCase(), oid: "", also: "",
                                 what: "textual convention", within: element.parentElement.id,
                                 description: element.querySelector("p.description").textContent, described: ""});
    }

    // --- Search ------------------------------------------------------------------------------------------------------

    const isOid = text => /^\.?\d+(\.\d+)+\.?$/.test(text);

    // Objects in and below an OID; else the one that it is an instance of.
    function byOid(text) {
        const oid = text.replace(/^\.|\.$/g, "");
        const below = things.objects.filter(each => each.oid === oid || each.oid.startsWith(oid + "."));
        if (below.length) return below;
        const above = things.objects.filter(each => each.oid && oid.startsWith(each.oid + "."));
        return above.sort((a, b) => b.oid.length - a.oid.length);
    }

    // Objects by parts of their names, the closest first. Names may be those of instances, with their module.
    function byName(text) {
        const name = text.replace(/^.*::/, "").replace(/(\.[\d.]*|\[.*)$/, "").toLowerCase();
        if (!name) return [];
        const words = name.split(/\s+/);
        const rank = each => each.lower === name || each.also.toLowerCase() === name ? 0
            : each.lower.startsWith(name) ? 1
            : words.every(word => each.lower.includes(word) || each.also.toLowerCase().includes(word)) ? 2 : 3;
        return things.objects.map(each => [rank(each), each]).filter(([rank]) => rank < 3)
            .sort((a, b) => a[0] - b[0]).map(([, each]) => each);
    }

    // Texts with all the words, those that have them as they stand first.
    function byWords(list, text, of) {
        const whole = text.toLowerCase().replace(/\s+/g, " ");
        const words = whole.split(" ");
        return list.map(each => [of(each).toLowerCase(), each])
            .filter(([lower]) => words.every(word => lower.includes(word)))
            .map(([lower, each]) => [lower.includes(whole) ? 0 : 1, each])
            .sort((a, b) => a[0] - b[0]).map(([, each]) => each);
    }

    function element(name, text, ...children) {
        const made = document.createElement(name);
        if (text) made.textContent = text;
        made.append(...children);
        return made;
    }
    function marked(text, query) {
        const words = query.toLowerCase().split(/\s+/).filter(Boolean);
        const whole = text.toLowerCase().includes(words.join(" ")) ? [words.join(" ")] : words;
        const escaped = whole.map(word => word.replace(/[.*+?^${}()|[\]\\]/g, "\\$&"));
        return text.split(new RegExp(`(${escaped.join("|")})`, "i"))
            .map((part, at) => at % 2 ? element("mark", part) : document.createTextNode(part));
    }
    function short(text) {
        const sentence = text.match(/^.*?\.(?=\s|$)/s)?.[0] ?? text;
        return sentence.replace(/\s+/g, " ");
    }

    function list(title, items, made) {
        if (!items.length) return;
        const shown = items.slice(0, kMost).map(made);
        if (items.length > kMost) shown.push(element("li", `… and ${items.length - kMost} more`));
        lists.append(element("h3", `${title} (${items.length})`), element("ol", "", ...shown));
    }

    function search(text) {
        if (!things) collect();
        const query = text.trim();
        lists.replaceChildren();
        const objects = isOid(query) ? byOid(query) : byName(query);
        const listed = new Set(objects);
        const shows = byWords(things.commands.filter(each => each.kind === "show"), query, each => each.text);
        const lines = byWords(things.commands.filter(each => each.kind === "line"), query, each => each.text);
        const described = query.length < 3 || isOid(query) ? []
            : byWords(things.objects, query, each => each.described).filter(each => !listed.has(each));
        const object = each => {
            const link = element("a", "", ...marked(each.id, query));
            link.href = "#" + each.id;
            const where = [each.what, each.oid, each.also, each.within].filter(Boolean);
            const item = element("li", "", link, element("span", where.join(" · ")));
            if (each.description) item.append(element("span", short(each.description)));
            return item;
        };
        const command = each => {
            const link = element("a", "", element("code", "", ...marked(each.text, query)));
            link.href = "#" + each.id;
            return element("li", "", link, element("span", each.why));
        };
        list("Names and OIDs", objects, object);
        list("Show commands", shows, command);
        list("Lines", lines, command);
        list("Descriptions", described, object);
        const all = objects.length + shows.length + lines.length + described.length;
        count.textContent = all === 0 ? `Nothing is found for “${query}”.` : `${all} for “${query}”`;
    }

    // --- What is shown -----------------------------------------------------------------------------------------------

    function show(section) {
        for (const each of sections) each.classList.toggle("current", each === section);
        results.hidden = section !== results;
        for (const link of modules.querySelectorAll(".to-module")) {
            const current = link.hash === "#" + section.id;
            link.parentElement.classList.toggle("current", current);
            if (current) link.setAttribute("aria-current", "page");
            else link.removeAttribute("aria-current");
            if (current && !narrow.matches) link.parentElement.scrollIntoView({block: "nearest"});
        }
    }

    // Goes by the address: #dot1qPvid, #1.3.6.1.2.1.17.7, #q=pvid.
    function route() {
        let name = "";
        try {
            name = decodeURIComponent(location.hash.slice(1));
        } catch {}  // an address that somebody mistyped
        if (name.startsWith("q=") && name.length > 2) {
            if (field.value.trim() !== name.slice(2)) field.value = name.slice(2);
            search(name.slice(2));
            show(results);
            document.title = "Search: " + name.slice(2);
            scrollTo(0, 0);
            return;
        }
        if (name === "content") return;
        let target = name ? document.getElementById(name) : null;
        if (!target && isOid(name)) {
            if (!things) collect();
            target = document.getElementById(byOid(name)[0]?.id ?? "");
        }
        const section = target?.closest("main > section") ?? start;
        show(section);
        document.title = section === start ? "Object reference" : `${target.id} – Object reference`;
        if (narrow.matches) modules.open = false;
        if (section === start) scrollTo(0, 0);
        else target.scrollIntoView();
        if (target && document.activeElement !== document.body && document.activeElement !== null) {
            target.tabIndex = -1;
            target.focus({preventScroll: true});
        }
    }

    history.scrollRestoration = "manual";  // an address names its place
    addEventListener("hashchange", route);

    let timer = 0;
    let before = "";  // the address to return to when the field is empty
    function typed() {
        const query = field.value.trim();
        const searching = location.hash.startsWith("#q=");
        if (!searching) before = location.hash;
        if (!query && !searching) return;
        const address = query ? "#q=" + encodeURIComponent(query) : before || "#";
        if (searching) history.replaceState(null, "", address);
        else history.pushState(null, "", address);
        route();
    }
    field.addEventListener("input", () => {
        clearTimeout(timer);
        timer = setTimeout(typed, 120);
    });
    document.getElementById("search").addEventListener("submit", event => {
        event.preventDefault();
        clearTimeout(timer);
        typed();
        lists.querySelector("a")?.click();
    });
    addEventListener("keydown", event => {
        if (event.ctrlKey || event.metaKey || event.altKey) return;
        if (event.key === "/" && document.activeElement !== field) {
            event.preventDefault();
            field.focus();
            field.select();
        }
        if (results.hidden || (event.key !== "ArrowDown" && event.key !== "ArrowUp")) return;
        const stops = [field, ...lists.querySelectorAll("a")];
        const at = stops.indexOf(document.activeElement);
        const next = stops[at + (event.key === "ArrowDown" ? 1 : -1)];
        if (at < 0 || !next) return;
        event.preventDefault();
        next.focus();
    });

    document.getElementById("search").hidden = false;
    if (narrow.matches) modules.open = false;
    narrow.addEventListener("change", () => { modules.open = !narrow.matches; });
    route();
})();
