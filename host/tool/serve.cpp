#include "tool/serve.h"

#include "agent/engine.h"
#include "agent/output.h"
#include "agent/responder.h"
#include "agent/server.h"
#include "services/services.h"
#include "switch/simulated_switch.h"
#include "tool/arguments.h"
#include "tool/format.h"
#include "tool/session.h"
#include "tool/trace.h"

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace tool {
namespace {

const char* version_name(const agent::Message& message) { return message.version == agent::kVersion1 ? "v1" : "v2c"; }

const char* pdu_name(const agent::Message& message) {
    switch (message.pdu) {
        case agent::kGetRequest: return "GET";
        case agent::kGetNextRequest: return "GETNEXT";
        case agent::kSetRequest: return "SET";
        case agent::kGetBulkRequest: return "GETBULK";
        default: return "RESPONSE";
    }
}

std::vector<std::string> message_lines(const services::Registry& registry, const agent::Message& message) {
    std::vector<std::string> lines;
    if (message.pdu != agent::kResponse) {
        std::string line = fmt::format("{} {}", version_name(message), pdu_name(message));
        if (message.pdu == agent::kGetBulkRequest)
            line += fmt::format(" non-repeaters {} max-repetitions {}", message.error_status, message.error_index);
        for (std::size_t i = 0; i < message.varbinds.size(); ++i) {
            const agent::Varbind& varbind = message.varbinds[i];
            line += i == 0 ? " " : ", ";
            line +=
                message.pdu == agent::kSetRequest ? format_varbind(registry, varbind) : registry.format(varbind.name);
        }
        lines.push_back(std::move(line));
    } else if (message.error_status != agent::kNoError) {
        lines.push_back(fmt::format("  answer {} ({}) index {}", status_name(message.error_status),
                                    message.error_status, message.error_index));
    } else {
        for (const agent::Varbind& varbind : message.varbinds)
            lines.push_back("  answer " + format_varbind(registry, varbind));
    }
    return lines;
}

Json request_json(const services::Registry& registry, const agent::Message& message) {
    Json varbinds = Json::array();
    for (const agent::Varbind& varbind : message.varbinds) varbinds.push_back(json_varbind(registry, varbind));
    Json json{{"event", message.pdu == agent::kResponse ? "answer" : "request"},
              {"version", version_name(message)},
              {"pdu", pdu_name(message)}};
    if (message.pdu == agent::kGetBulkRequest) {
        json["non_repeaters"] = message.error_status;
        json["max_repetitions"] = message.error_index;
    } else if (message.pdu == agent::kResponse) {
        json["error"] = status_name(message.error_status);
        json["index"] = message.error_index;
    }
    json["varbinds"] = std::move(varbinds);
    return json;
}

std::string describe(const agent::Counters& counters) {
    return fmt::format(
        "{} datagrams received, {} answered, dropped: {} malformed, {} of another version, {} of another kind, {} with "
        "a wrong community, {} without a possible answer",
        counters.received, counters.answered, counters.malformed, counters.unsupported_version,
        counters.unsupported_pdu, counters.wrong_community, counters.unanswerable);
}

}  // namespace

sw::Options simulation(const Options& options) {
    sw::Options simulation{.clock = {}, .log = log_refusal, .size = options.size};
    if (options.freeze) simulation.clock = [] { return std::chrono::days(12); };
    return simulation;
}

int serve(const Options& options) {
    agent::survive_closed_output();
    const HostPort listen = parse_listen(options.listen);
    agent::ResponderOptions answering;
    answering.community = options.community;
    answering.write_community = options.write_community;
    answering.max_varbinds = options.max_varbinds;
    answering.max_bulk_varbinds = options.max_bulk_varbinds;
    try {
        answering.check();
    } catch (const std::invalid_argument& error) {
        throw UsageError(error.what());
    }
    spdlog::logger log("mibhost", std::make_shared<spdlog::sinks::stdout_sink_st>());
    log.set_pattern(options.log_json ? "{\"time\":\"%Y-%m-%dT%H:%M:%S.%e%z\",%v" : "%H:%M:%S.%e %v");
    log.flush_on(spdlog::level::info);
    // A line as people read it, or its object, whose brace the pattern has opened.
    const auto say_json = [&](const Json& json) { log.info("{}", json_line(json).substr(1)); };
    const auto say = [&](const char* event, const std::string& text) {
        if (options.log_json)
            say_json({{"event", event}, {"text", text}});
        else
            log.info("{}", text);
    };
    const auto say_event = [&](const Event& event) {
        if (options.log_json)
            say_json(event.json);
        else
            log.info("  {}", event.line());
    };

    // Lines that any sender can cause, with or without --verbose.
    agent::LineLimit limit(options.log_rate, [&](const std::string& text) { say("left out", text); });

    services::Services& host = services::services();
    host.context = {options.vrf, options.snmp_context, options.verbose};
    // What the switch refuses is always worth a line, what the library traces only on demand.
    host.quiet = !options.verbose;
    host.log = [&](const services::LogLine& line) {
        if (options.verbose || limit.pass()) say_event(tool::describe(line));
    };
    Session session(options.library, options.texts);
    const services::Registry& registry = session.registry();

    sw::SimulatedSwitch simulated(simulation(options));
    session.groups().up_time = [&] { return simulated.up_time(); };
    TracingBackend tracing(simulated, registry, say_event);
    host.backend = options.verbose ? static_cast<services::Backend*>(&tracing) : &simulated;

    agent::Engine engine(registry);
    agent::Responder responder(engine, answering);
    session.groups().counters = &responder.counters();
    if (options.verbose) {
        responder.on_message = [&](const agent::Message& message) {
            if (options.log_json)
                say_json(request_json(registry, message));
            else
                for (const std::string& line : message_lines(registry, message)) log.info("{}", line);
        };
        responder.on_dropped = [&](const std::string& reason) {
            if (limit.pass()) say("dropped", "dropped: " + reason);
        };
    }

    agent::Server server(responder, listen.host, listen.port);
    server.stop_on_signals();
    say("loaded", fmt::format("loaded {}: {}", session.library().path(), session.summary()));
    for (const services::Registration& registration : host.registrations)
        say("module", fmt::format("{}{} {} ({})", options.log_json ? "" : "  ", registration.descr,
                                  services::to_string(registration.module_oid), counted(registration.count, "object")));
    say("listening", fmt::format("listening on {}, {}", server.endpoint(),
                                 options.write_community ? "reads and writes" : "read-only (no write community)"));
    server.run();

    limit.flush();
    say("stopped", "stopped: " + describe(responder.counters()));
    host.backend = nullptr;
    host.log = nullptr;
    session.groups().counters = nullptr;
    session.groups().up_time = nullptr;
    return 0;
}

}  // namespace tool
