// mibhost: loads the module library as the switch's agent does, and serves, lists, explains and walks it over a
// simulated switch, or prints what it expects of one.
#include "agent/engine.h"
#include "services/services.h"
#include "switch/simulated_switch.h"
#include "tool/arguments.h"
#include "tool/command_line.h"
#include "tool/contract.h"
#include "tool/explain.h"
#include "tool/format.h"
#include "tool/list.h"
#include "tool/serve.h"
#include "tool/session.h"
#include "tool/trace.h"
#include "tool/walk.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kRefused = 3;

int explain(const tool::Options& options, const services::Registry& registry, services::Backend& backend) {
    const tool::Explained request = tool::parse_explained(registry, options.explained);
    const bool set = request.kind == tool::Explained::Kind::set;
    if (options.lines && !set) throw tool::UsageError("--lines goes with set");
    if (options.lines && options.json) throw tool::UsageError("--lines and --json exclude each other");
    agent::Engine engine(registry);
    const tool::Explanation explanation = tool::explain(request, engine, registry, backend);
    for (const std::string& line : options.lines  ? as_lines(explanation)
                                   : options.json ? as_json(explanation, registry)
                                                  : as_text(explanation, registry))
        fmt::print("{}\n", line);
    if (!set || explanation.result.status == agent::kNoError) return 0;
    if (options.lines) fmt::print(stderr, "mibhost: the SET is refused: {}\n", outcome(explanation, registry));
    return kRefused;
}

int walk(const tool::Options& options, const services::Registry& registry, services::Backend& backend) {
    services::Services& host = services::services();
    host.backend = &backend;
    host.log = [](const services::LogLine& line) {
        if (line.channel == tool::kSwitchChannel) fmt::print(stderr, "mibhost: {}\n", tool::describe(line).line());
    };
    agent::Engine engine(registry);
    const auto root = options.root ? std::optional(tool::parse_oid(registry, *options.root)) : std::nullopt;
    const std::size_t count = tool::walk(engine, registry, root, [&](const agent::Varbind& varbind) {
        fmt::print("{}\n", options.json ? tool::json_line(tool::json_varbind(registry, varbind))
                                        : tool::format_varbind(registry, varbind));
    });
    std::fflush(stdout);
    fmt::print(stderr, "{} variable{}\n", count, count == 1 ? "" : "s");
    return 0;
}

int run(const std::vector<std::string>& words) {
    tool::CommandLine command_line;
    if (const auto text = command_line.parse(words)) {
        fmt::print("{}", *text);
        return 0;
    }
    const tool::Options& options = command_line.options();
    switch (options.command) {
        case tool::Command::manual: fmt::print("{}", command_line.manual_page()); return 0;
        case tool::Command::completion: fmt::print("{}", command_line.bash_completion()); return 0;
        case tool::Command::serve: return tool::serve(options);
        default: break;
    }

    tool::Session session(options.library, options.texts);
    const services::Registry& registry = session.registry();
    if (!registry.has_names())
        fmt::print(stderr, "mibhost: {} was built without names: objects and indexes go by number\n",
                   session.library().path());
    if (options.command == tool::Command::list) {
        fmt::print("{}", tool::list(registry, tool::select(registry, options.patterns), options.form));
        return 0;
    }
    if (options.command == tool::Command::contract) {
        if (!registry.has_names()) throw std::runtime_error("the contract needs a library with names");
        const auto entries = tool::contract(registry, session.library(), tool::select(registry, options.patterns));
        fmt::print("{}", tool::contract_text(entries, options.form));
        return 0;
    }
    services::services().context = {options.vrf, options.snmp_context, false};
    sw::SimulatedSwitch simulated(tool::simulation(options));
    session.groups().up_time = [&] { return simulated.up_time(); };
    return options.command == tool::Command::explain ? explain(options, registry, simulated)
                                                     : walk(options, registry, simulated);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const tool::UsageError& error) {
        fmt::print(stderr, "mibhost: {}\n", error.what());
        return kUsage;
    } catch (const std::exception& error) {
        fmt::print(stderr, "mibhost: {}\n", error.what());
        return kFailed;
    }
}
