// mibhost: loads the module library as the switch's agent does, and serves, lists, explains and walks it over a
// simulated switch.
#include "agent/engine.h"
#include "services/services.h"
#include "switch/simulated_switch.h"
#include "tool/arguments.h"
#include "tool/explain.h"
#include "tool/list.h"
#include "tool/options.h"
#include "tool/serve.h"
#include "tool/session.h"
#include "tool/trace.h"
#include "tool/walk.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

constexpr const char* kExplainHelp = R"(
  get|next OID... | set OID TYPE VALUE...   with NAME=answer,answer... among them

  TYPE    i INTEGER, u Gauge32, c Counter32, t TimeTicks, s text, x hex octets, o OID, a IpAddress
  NAME    a table or lookup as the show requests name it, NAME.MAGIC for one column or item of it, or config for
          configuration lines
  answer  an integer, text:..., hex:... or refused (config: ok or refused); the last one repeats

  mibhost explain set swPortSpeed.5121 i 2 _get_port_info.1=2 _get_port_info.2=1 config=ok,refused)";

int run(int argc, char** argv) {
    CLI::App app{"An SNMP agent over a simulated switch, for the module library", "mibhost"};
    app.require_subcommand(0, 1);
    tool::Options options;
    options.library = tool::default_library();
    const auto add_library = [&](CLI::App& command) {
        command.add_option("--library", options.library, "the module library")
            ->type_name("PATH")
            ->capture_default_str();
    };
    const auto add_context = [&](CLI::App& command) {
        command.add_option("--vrf", options.vrf, "VRF of the requests")->type_name("NAME");
        command.add_option("--snmp-context", options.snmp_context, "SNMP context of the requests")->type_name("NAME");
    };

    CLI::App& serve = *app.add_subcommand("serve", "answer SNMPv1 and v2c requests over UDP until Ctrl-C");
    std::string config;
    add_library(serve);
    serve.add_option("--listen", options.listen, "where to listen; port 0 takes a free one")
        ->type_name("ADDRESS:PORT")
        ->capture_default_str();
    serve.add_option("--community", options.community, "community that may read")->capture_default_str();
    serve.add_option("--write-community", options.write_community, "community that may read and write (default: none)");
    add_context(serve);
    serve.add_option("--config", config, "options from a JSON object, its keys named as these options")
        ->type_name("FILE");
    serve.add_flag("--freeze", options.freeze, "stop the switch's clock: its counters and timers stand still");
    serve.add_flag("-v,--verbose", options.verbose, "log each request with the backend requests it causes");

    CLI::App& list = *app.add_subcommand("list", "every registration and object");
    std::string format = "text";
    add_library(list);
    list.add_option("--format", format, "text, json or markdown")
        ->check(CLI::IsMember({"text", "json", "markdown"}))
        ->capture_default_str();

    CLI::App& explain = *app.add_subcommand("explain", "what the library would ask of the switch; changes nothing");
    add_library(explain);
    add_context(explain);
    explain.allow_extras();  // its words are no positionals: a VALUE may begin with a hyphen
    explain.footer(kExplainHelp);

    CLI::App& walk = *app.add_subcommand("walk", "every instance under an OID, without a network");
    std::optional<std::string> root;
    add_library(walk);
    add_context(walk);
    walk.add_option("OID", root, "where to walk, by number or name (default: everything)");

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        throw tool::UsageError(error.what());
    }
    if (app.get_subcommands().empty()) throw tool::UsageError("say serve, list, explain or walk (or --help)");

    if (serve) {
        if (!config.empty())
            tool::read_config(config, options, [&](const std::string& name) { return serve.count("--" + name) != 0; });
        return tool::serve(options);
    }

    const tool::Session session(options.library);
    const services::Registry& registry = session.registry();
    services::services().context = {options.vrf, options.snmp_context, false};
    if (list) {
        fmt::print("{}", tool::list(registry, format));
        return 0;
    }

    sw::SimulatedSwitch simulated({{}, tool::log_refusal});
    agent::Engine engine(registry);
    if (explain) {
        const tool::Explained request = tool::parse_explained(registry, explain.remaining());
        tool::explain(request, engine, registry, simulated, [](const std::string& line) { fmt::print("{}\n", line); });
        return 0;
    }
    services::services().backend = &simulated;
    const auto from = root ? std::optional(tool::parse_oid(registry, *root)) : std::nullopt;
    return tool::walk(engine, registry, from, stdout) ? 0 : kFailed;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const tool::UsageError& error) {
        fmt::print(stderr, "mibhost: {}\n", error.what());
        return kUsage;
    } catch (const std::exception& error) {
        fmt::print(stderr, "mibhost: {}\n", error.what());
        return kFailed;
    }
}
