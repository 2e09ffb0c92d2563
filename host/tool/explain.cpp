#include "tool/explain.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace tool {
namespace {

// Whether a word of a SET scripts answers: its name is one that requests have.
bool names_requests(const services::Registry& registry, std::string_view name) {
    if (!registry.has_names()) return services::oid_from_numbers(name) == std::nullopt;
    return name == "config" || name.starts_with('_') || name.starts_with("write_") ||
           registry.group(name.substr(0, name.find('.'))) != nullptr;
}

// `OID=VALUE`, of the type that the object is registered with.
agent::Varbind parse_assignment(const services::Registry& registry, std::string_view word) {
    const std::size_t equals = word.find('=');
    agent::Varbind varbind{parse_oid(registry, word.substr(0, equals)), {}};
    const services::Object* const object = registry.find(varbind.name);
    if (object == nullptr)
        throw UsageError(
            fmt::format("{}: no such object is registered; say OID TYPE VALUE to try it nevertheless", word));
    try {
        varbind.value = parse_value(registry, *object, word.substr(equals + 1));
    } catch (const UsageError& error) {
        throw UsageError(fmt::format("{}: {}", registry.format(varbind.name), error.what()));
    }
    return varbind;
}

std::size_t width_of(const std::vector<std::string>& pieces) {
    std::size_t width = 0;
    for (const std::string& piece : pieces) width += piece.size() + 1;
    return width - 1;
}

// The pieces on one line, or one line each, the further ones indented, where they are too long for it.
void add_folded(std::vector<std::string>& lines, std::size_t indent, const std::vector<std::string>& pieces) {
    std::string line(indent, ' ');
    if (indent + width_of(pieces) <= kWidth) {
        lines.push_back(line + fmt::format("{}", fmt::join(pieces, " ")));
        return;
    }
    line += pieces.front();
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        if (line.size() + 1 + pieces[i].size() <= kWidth) {
            line += ' ' + pieces[i];
        } else {
            lines.push_back(std::move(line));
            line = std::string(indent + 4, ' ') + pieces[i];
        }
    }
    lines.push_back(std::move(line));
}

void add_events(std::vector<std::string>& lines, const Explanation::Step& step) {
    for (const Event& event : step.events) add_folded(lines, 4, event.text);
}

bool is_quiet(const Explanation::Step& step) { return step.events.empty() && step.error == agent::kNoError; }

// A run of steps that neither asked nor sent anything: phase by phase, with the varbinds where it was not all of them.
std::vector<std::string> quiet_text(const std::vector<Explanation::Step>& steps, std::size_t begin, std::size_t end,
                                    const std::vector<std::string>& names) {
    std::vector<std::string> pieces;
    for (std::size_t at = begin; at < end;) {
        const int phase = steps[at].phase;
        if (at != begin) pieces.back() += ',';
        pieces.push_back(phase_name(phase));
        const std::size_t first = at;
        while (at < end && steps[at].phase == phase) ++at;
        if (at - first != names.size())
            for (std::size_t step = first; step < at; ++step) pieces.push_back(names[steps[step].varbind]);
    }
    pieces.emplace_back("-> noError, nothing asked or sent");
    return pieces;
}

std::vector<std::string> set_text(const Explanation& explanation, const services::Registry& registry) {
    std::vector<std::string> lines;
    std::vector<std::string> names;
    for (const agent::Varbind& varbind : explanation.varbinds) {
        names.push_back(registry.format(varbind.name));
        lines.push_back("SET " + format_varbind(registry, varbind));
    }
    const auto& steps = explanation.steps;
    for (std::size_t at = 0; at < steps.size();) {
        std::size_t end = at;
        while (end < steps.size() && is_quiet(steps[end])) ++end;
        if (end != at) {
            add_folded(lines, 2, quiet_text(steps, at, end, names));
            at = end;
            continue;
        }
        const Explanation::Step& step = steps[at++];
        lines.push_back(
            fmt::format("  {} {} -> {}", phase_name(step.phase), names[step.varbind], status_name(step.error)));
        add_events(lines, step);
    }
    lines.push_back("answer " + outcome(explanation, registry));
    return lines;
}

}  // namespace

std::string phase_name(int phase) {
    static constexpr std::array kNames = {"RESERVE1", "RESERVE2", "ACTION", "COMMIT", "FREE", "UNDO"};
    if (phase < 0) return "READ";
    return phase < static_cast<int>(kNames.size()) ? kNames[static_cast<std::size_t>(phase)]
                                                   : fmt::format("phase {}", phase);
}

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
        throw UsageError(words.empty() ? "explain: say get, next or set"
                                       : fmt::format("explain: say get, next or set, not '{}'", kind));
    const bool set = request.kind == Explained::Kind::set;

    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word.starts_with('-')) throw UsageError(fmt::format("unknown option {}", word));
        if (const std::size_t equals = word.find('='); equals != std::string::npos) {
            if (set && !names_requests(registry, word.substr(0, equals)))
                request.varbinds.push_back(parse_assignment(registry, word));
            else
                parse_script(word, request.script);
            continue;
        }
        agent::Varbind varbind{parse_oid(registry, word), {}};
        if (set) {
            if (words.size() - i < 3)
                throw UsageError(fmt::format("{}: a SET needs OID=VALUE, or OID TYPE VALUE", word));
            varbind.value = parse_value(registry, words[i + 1], words[i + 2]);
            i += 2;
        }
        request.varbinds.push_back(std::move(varbind));
    }
    if (request.varbinds.empty()) throw UsageError(fmt::format("explain {}: an OID is missing", kind));
    return request;
}

Explanation explain(const Explained& request, agent::Engine& engine, const services::Registry& registry,
                    services::Backend& backend) {
    Explanation explanation{request.kind, request.varbinds, {}, {}, {}, {}};
    std::vector<Event> events;
    const auto finish_step = [&](int phase, std::size_t varbind, int error) {
        explanation.steps.push_back({phase, varbind, error, std::move(events)});
        events.clear();
    };
    const EventSink collect = [&](const Event& event) { events.push_back(event); };
    TracingBackend tracing(backend, registry, collect, request.script);
    services::Services& host = services::services();
    host.backend = &tracing;
    host.log = [&](const services::LogLine& line) { collect(describe(line)); };

    if (request.kind == Explained::Kind::set) {
        engine.set_phase_observer(finish_step);
        explanation.result = engine.set(request.varbinds);
        engine.set_phase_observer(nullptr);
    } else {
        for (std::size_t i = 0; i < request.varbinds.size(); ++i) {
            const services::Oid& name = request.varbinds[i].name;
            explanation.answers.push_back(request.kind == Explained::Kind::get ? engine.get(name) : engine.next(name));
            finish_step(-1, i, agent::kNoError);
        }
    }
    explanation.unused = tracing.unused();
    host.backend = nullptr;
    host.log = nullptr;
    return explanation;
}

std::string outcome(const Explanation& explanation, const services::Registry& registry) {
    const auto& [status, index] = explanation.result;
    if (status == agent::kNoError) return "noError";
    std::string error = fmt::format("{} ({})", status_name(status), status);
    if (index == 0 || index > explanation.varbinds.size()) return error;
    return fmt::format("{} for varbind {}, {}", error, index, registry.format(explanation.varbinds[index - 1].name));
}

std::vector<std::string> as_text(const Explanation& explanation, const services::Registry& registry) {
    std::vector<std::string> lines;
    if (explanation.kind == Explained::Kind::set) {
        lines = set_text(explanation, registry);
    } else {
        for (std::size_t i = 0; i < explanation.answers.size(); ++i) {
            lines.push_back(fmt::format("{} {}", explanation.kind == Explained::Kind::get ? "GET" : "GETNEXT",
                                        registry.format(explanation.varbinds[i].name)));
            add_events(lines, explanation.steps[i]);
            lines.push_back("answer " + format_varbind(registry, explanation.answers[i]));
        }
    }
    for (const std::string& name : explanation.unused)
        lines.push_back(fmt::format("note: no request was named '{}'", name));
    return lines;
}

std::vector<std::string> as_json(const Explanation& explanation, const services::Registry& registry) {
    std::vector<std::string> lines;
    const bool set = explanation.kind == Explained::Kind::set;
    const auto add = [&](const char* event, const Json& rest) {
        Json json{{"event", event}};
        json.update(rest);
        lines.push_back(json_line(json));
    };
    const char* const request = set ? "set" : explanation.kind == Explained::Kind::get ? "get" : "next";
    const auto add_request = [&](std::size_t varbind) {
        add(request, json_varbind(registry, explanation.varbinds[varbind]));
    };
    if (set)
        for (std::size_t i = 0; i < explanation.varbinds.size(); ++i) add_request(i);
    for (const Explanation::Step& step : explanation.steps) {
        const Json where{{"phase", phase_name(step.phase)}, {"varbind", step.varbind + 1}};
        if (!set) add_request(step.varbind);
        for (const Event& event : step.events) {
            Json json = event.json;
            if (set) json.update(where);
            lines.push_back(json_line(json));
        }
        if (set) {
            Json phase = where;
            phase["name"] = registry.format(explanation.varbinds[step.varbind].name);
            phase["error"] = status_name(step.error);
            add("phase", phase);
        } else {
            add("answer", json_varbind(registry, explanation.answers[step.varbind]));
        }
    }
    if (set)
        add("answer", {{"error", status_name(explanation.result.status)},
                       {"number", explanation.result.status},
                       {"varbind", explanation.result.index}});
    for (const std::string& name : explanation.unused) add("unused", {{"name", name}});
    return lines;
}

std::vector<std::string> as_lines(const Explanation& explanation) {
    std::vector<std::string> lines;
    for (const Explanation::Step& step : explanation.steps)
        for (const Event& event : step.events)
            if (event.kind == Event::Kind::config) lines.push_back(event.json.at("command").get<std::string>());
    return lines;
}

}  // namespace tool
