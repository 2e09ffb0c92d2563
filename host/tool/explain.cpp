#include "tool/explain.h"

#include "tool/format.h"

#include <fmt/format.h>

#include <array>

namespace tool {
namespace {

std::string phase_name(int phase) {
    static constexpr std::array kNames = {"RESERVE1", "RESERVE2", "ACTION", "COMMIT", "FREE", "UNDO"};
    if (phase < 0) return "READ";
    return phase < static_cast<int>(kNames.size()) ? kNames[static_cast<std::size_t>(phase)]
                                                   : fmt::format("phase {}", phase);
}

void explain_set(const std::vector<agent::Varbind>& varbinds, agent::Engine& engine, const services::Registry& registry,
                 std::vector<std::string>& requests, const LineSink& out) {
    out("SET");
    for (std::size_t i = 0; i < varbinds.size(); ++i)
        out(fmt::format("  {} {}", i + 1, format_varbind(registry, varbinds[i])));

    const auto flush = [&] {
        for (const std::string& line : requests) out("    " + line);
        requests.clear();
    };
    // A phase of one varbind is told when it is over, with the requests that it made.
    engine.set_phase_observer([&](int phase, std::size_t index, int error) {
        out(fmt::format("  {} {} -> {}", phase_name(phase), index + 1, status_name(error)));
        flush();
    });
    const agent::SetResult result = engine.set(varbinds);
    engine.set_phase_observer(nullptr);
    flush();

    if (result.status == agent::kNoError)
        out("answer noError");
    else if (result.index >= 1 && result.index <= varbinds.size())
        out(fmt::format("answer {} ({}) for varbind {}, {}", status_name(result.status), result.status, result.index,
                        registry.format(varbinds[result.index - 1].name)));
    else
        out(fmt::format("answer {} ({})", status_name(result.status), result.status));
}

}  // namespace

Explained parse_explained(const services::Registry& registry, const std::vector<std::string>& words) {
    Explained request{};
    const std::string kind = words.empty() ? "" : words.front();
    if (kind == "get")
        request.kind = Explained::Kind::get;
    else if (kind == "next")
        request.kind = Explained::Kind::next;
    else if (kind == "set")
        request.kind = Explained::Kind::set;
    else
        throw UsageError(fmt::format("explain: say get, next or set, not '{}'", kind));

    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word.starts_with('-')) throw UsageError(fmt::format("unknown option {}", word));
        if (word.find('=') != std::string::npos) {
            parse_script(word, request.script);
            continue;
        }
        agent::Varbind varbind{parse_oid(registry, word), {}};
        if (request.kind == Explained::Kind::set) {
            if (words.size() - i < 3)
                throw UsageError(fmt::format("{}: a SET needs TYPE and VALUE after the OID", word));
            varbind.value = parse_value(registry, words[i + 1], words[i + 2]);
            i += 2;
        }
        request.varbinds.push_back(std::move(varbind));
    }
    if (request.varbinds.empty()) throw UsageError(fmt::format("explain {}: an OID is missing", kind));
    return request;
}

void explain(const Explained& request, agent::Engine& engine, const services::Registry& registry,
             services::Backend& backend, const LineSink& out) {
    std::vector<std::string> requests;
    const LineSink collect = [&](const std::string& line) { requests.push_back(line); };
    TracingBackend tracing(backend, collect, request.script);
    services::Services& host = services::services();
    host.backend = &tracing;
    host.log = [&](const services::LogLine& line) { collect(describe(line)); };

    if (request.kind == Explained::Kind::set) {
        explain_set(request.varbinds, engine, registry, requests, out);
    } else {
        const bool get = request.kind == Explained::Kind::get;
        for (const agent::Varbind& varbind : request.varbinds) {
            out(fmt::format("{} {}", get ? "GET" : "GETNEXT", registry.format(varbind.name)));
            const agent::Varbind answer = get ? engine.get(varbind.name) : engine.next(varbind.name);
            for (const std::string& line : requests) out("    " + line);
            requests.clear();
            out("answer " + format_varbind(registry, answer));
        }
    }
    for (const std::string& name : tracing.unused()) out(fmt::format("note: no request was named '{}'", name));
    host.backend = nullptr;
    host.log = nullptr;
}

}  // namespace tool
