#include "tool/serve.h"

#include "agent/engine.h"
#include "agent/responder.h"
#include "agent/server.h"
#include "services/services.h"
#include "switch/simulated_switch.h"
#include "tool/format.h"
#include "tool/session.h"
#include "tool/trace.h"

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <memory>
#include <string>

namespace tool {
namespace {

std::string request_line(const services::Registry& registry, const agent::Message& request) {
    std::string line = request.version == agent::kVersion1 ? "v1 " : "v2c ";
    switch (request.pdu) {
        case agent::kGetRequest: line += "GET"; break;
        case agent::kGetNextRequest: line += "GETNEXT"; break;
        case agent::kSetRequest: line += "SET"; break;
        default:
            line +=
                fmt::format("GETBULK non-repeaters {} max-repetitions {}", request.error_status, request.error_index);
    }
    for (std::size_t i = 0; i < request.varbinds.size(); ++i) {
        const agent::Varbind& varbind = request.varbinds[i];
        line += i == 0 ? " " : ", ";
        line += request.pdu == agent::kSetRequest ? format_varbind(registry, varbind) : registry.format(varbind.name);
    }
    return line;
}

void log_message(spdlog::logger& log, const services::Registry& registry, const agent::Message& message) {
    if (message.pdu != agent::kResponse) {
        log.info("{}", request_line(registry, message));
    } else if (message.error_status != agent::kNoError) {
        log.info("  answer {} ({}) index {}", status_name(message.error_status), message.error_status,
                 message.error_index);
    } else {
        for (const agent::Varbind& varbind : message.varbinds)
            log.info("  answer {}", format_varbind(registry, varbind));
    }
}

std::string describe(const agent::Counters& counters) {
    return fmt::format(
        "{} datagrams received, {} answered, dropped: {} malformed, {} of another version, {} of another kind, {} with "
        "a wrong community, {} without a possible answer",
        counters.received, counters.answered, counters.malformed, counters.unsupported_version,
        counters.unsupported_pdu, counters.wrong_community, counters.unanswerable);
}

}  // namespace

int serve(const Options& options) {
    const HostPort listen = parse_listen(options.listen);
    spdlog::logger log("mibhost", std::make_shared<spdlog::sinks::stdout_sink_st>());
    log.set_pattern("%H:%M:%S.%e %v");
    log.flush_on(spdlog::level::info);

    services::Services& host = services::services();
    host.context = {options.vrf, options.snmp_context, options.verbose};
    host.log = [&](const services::LogLine& line) {
        // What the switch refuses is always worth a line, what the library traces only on demand.
        if (options.verbose || line.channel == kSwitchChannel) log.info("  {}", tool::describe(line));
    };
    const Session session(options.library);
    const services::Registry& registry = session.registry();

    sw::Options simulation{.clock = {}, .log = log_refusal};
    if (options.freeze) simulation.clock = [] { return std::chrono::days(12); };
    sw::SimulatedSwitch simulated(simulation);
    TracingBackend tracing(simulated, [&](const std::string& line) { log.info("  {}", line); });
    host.backend = options.verbose ? static_cast<services::Backend*>(&tracing) : &simulated;

    agent::Engine engine(registry);
    agent::ResponderOptions communities;
    communities.community = options.community;
    communities.write_community = options.write_community;
    agent::Responder responder(engine, communities);
    if (options.verbose) {
        responder.on_message = [&](const agent::Message& message) { log_message(log, registry, message); };
        responder.on_dropped = [&](const std::string& reason) { log.info("dropped: {}", reason); };
    }

    agent::Server server(responder, listen.host, listen.port);
    server.stop_on_signals();
    log.info("loaded {}: {}", session.library().path(), session.summary());
    for (const services::Registration& registration : host.registrations)
        log.info("  {} {} ({} objects)", registration.descr, services::to_string(registration.module_oid),
                 registration.count);
    log.info("listening on {}, {}", server.endpoint(),
             options.write_community ? "reads and writes" : "read-only (no write community)");
    server.run();

    log.info("stopped: {}", describe(responder.counters()));
    host.backend = nullptr;
    host.log = nullptr;
    return 0;
}

}  // namespace tool
