#include "tool/command_line.h"

#include "tool/arguments.h"
#include "tool/format.h"
#include "tool/session.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>

namespace tool {
namespace {

constexpr std::size_t kColumn = 30;  // where the descriptions of options begin

struct CommandText {
    Command command;
    const char* name;
    const char* words;  // after its name, in the usage line
    const char* description;
    const char* footer;
};

constexpr const char* kFooter =
    R"(Objects go by number, 1.3.6.1.2.1.2.2.1.2.5121, and by name: ifDescr.5121, ifDescr[5121] or
IF-MIB::ifDescr.5121. An index in brackets has its parts as walk prints them, for example
inetCidrRouteMetric1[10.0.0.0/8, 0.0, 192.0.2.1].

Exit status: 0 done, 1 failed, 2 wrong usage, 3 the explained SET was refused.)";

constexpr const char* kExplainFooter = R"(Words:
  get OID...        one GET for each OID
  next OID...       one GETNEXT for each OID
  set OID=VALUE...  one SET of all of them. Each value has the type that its object is registered
                    with: a number, an OID, an IPv4 address, a text, text:... or hex:...
  OID TYPE VALUE    in a set, a value of any type: i INTEGER, u Gauge32, c Counter32, t TimeTicks,
                    s text, x hex octets, o OID, a IpAddress
  NAME=ANSWER,...   what the switch answers in turn; the last answer repeats. NAME is a table or
                    lookup as show requests name it, NAME.MAGIC one column or item of it, or config
                    for the configuration lines. ANSWER is a number, text:..., hex:... or refused;
                    for config, ok or refused.

  mibhost explain set swPortSpeed.5121=2 _get_port_info.1=2 _get_port_info.2=1 config=ok,refused)";

constexpr const char* kListFooter =
    R"(PATTERN selects objects: a module (qBridgeMIB or Q-BRIDGE-MIB), a table, an OID, a part of a name,
or a name with * and ?, in any letter case. MODULE::PATTERN keeps to a module.)";

constexpr const char* kServeFooter =
    R"(A file for --config has one option a line, named as above without the hyphens, for example
  listen = "127.0.0.1:1161"
  verbose = true
An option on the command line overrides the file.)";

constexpr const char* kContractFooter =
    R"(PATTERN selects objects as in list. Each module comes with its groups, each group with the show
requests of its reads, each object with the values it takes, the lines that they are sent as, and
what it refuses. All of it is found by running the library; nothing is asked of a switch. Lines have
their mode: 5 global configuration, -1 the mode that the line before entered, 4 executive.)";

constexpr std::array<CommandText, 7> kCommands = {{
    {Command::serve, "serve", "[OPTIONS]", "Answer SNMPv1 and v2c requests over UDP until Ctrl-C", kServeFooter},
    {Command::list, "list", "[OPTIONS] [PATTERN...]", "List modules, tables and objects", kListFooter},
    {Command::contract, "contract", "[OPTIONS] [PATTERN...]",
     "Print every show request and configuration line that a switch has to know, with what causes it", kContractFooter},
    {Command::explain, "explain", "[OPTIONS] get|next|set WORD...",
     "Show what the library asks of the switch and sends to it for one request; changes nothing", kExplainFooter},
    {Command::walk, "walk", "[OPTIONS] [OID]", "Print every instance under an OID, without a network", ""},
    {Command::manual, "manual", "", "Print the manual page", ""},
    {Command::completion, "completion", "", "Print the completion script for bash", ""},
}};

const CommandText& text_of(const CLI::App& command) {
    return *std::ranges::find(kCommands, command.get_name(), &CommandText::name);
}

// Breaks a text at blanks; all lines but the first are indented.
std::string wrapped(const std::string& text, std::size_t indent) {
    std::string result;
    std::size_t column = indent;
    for (const std::string& word : CLI::detail::split(text, ' ')) {
        if (column != indent && column + 1 + word.size() > kWidth) {
            result += '\n' + std::string(indent, ' ');
            column = indent;
        }
        if (column != indent) {
            result += ' ';
            ++column;
        }
        result += word;
        column += word.size();
    }
    return result + '\n';
}

std::string with_default(const CLI::Option& option) {
    const std::string standard = option.get_default_str();
    return option.get_description() + (standard.empty() ? "" : fmt::format(" (default: {})", standard));
}

// "-v, --verbose", "--listen ADDRESS:PORT"
std::string spelling(const CLI::Option& option) {
    if (option.get_positional()) return option.get_name();
    std::string text;
    for (const std::string& name : option.get_snames()) text += '-' + name + ", ";
    text += "--" + option.get_lnames().front();
    const std::string type = option.get_type_name();
    return option.get_type_size() == 0 || type.empty() ? text : text + ' ' + type;
}

// Help would show a check's name after the type's.
CLI::Validator unnamed(CLI::Validator check) { return check.description(""); }

class Help : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App* app, std::string name) const override {
        const bool command = app->get_name() != "mibhost";
        return fmt::format("\nUsage: {} {}\n", name, command ? text_of(*app).words : "COMMAND [OPTIONS]");
    }
    std::string make_option(const CLI::Option* option, bool) const override {
        return entry(spelling(*option), with_default(*option));
    }
    std::string make_subcommand(const CLI::App* command) const override {
        return entry(command->get_name(), command->get_description());
    }

    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        return CLI::detail::find_and_replace(Formatter::make_help(app, std::move(name), mode), "\n\n\n", "\n\n");
    }

private:
    static std::string entry(const std::string& name, const std::string& description) {
        std::string text = "  " + name;
        text += text.size() + 2 > kColumn ? '\n' + std::string(kColumn, ' ') : std::string(kColumn - text.size(), ' ');
        return text + wrapped(description, kColumn);
    }
};

std::vector<const CLI::Option*> options_of(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->nonpositional(); });
}

std::vector<std::string> option_names(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : options_of(command))
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

// A configuration file, of which every line must be an option of the command.
class OptionsFile : public CLI::ConfigBase {
public:
    explicit OptionsFile(const CLI::App& command) : command_(command) {}

    std::vector<CLI::ConfigItem> from_config(std::istream& input) const override {
        std::vector<CLI::ConfigItem> read = ConfigBase::from_config(input);
        const std::string file = command_.get_config_ptr()->as<std::string>();
        for (const CLI::ConfigItem& item : read) {
            if (!item.parents.empty())
                throw UsageError(fmt::format("{}: it has a section [{}], but options go without one", file,
                                             fmt::join(item.parents, ".")));
            const std::string option = "--" + item.name;
            const CLI::Option* const known = command_.get_option_no_throw(option);
            if (known == nullptr || !known->get_configurable())
                throw UsageError(fmt::format("{}: {} has no option {}{}", file, command_.get_name(), option,
                                             suggestion(option_names(command_), option)));
        }
        return read;
    }

private:
    const CLI::App& command_;
};

std::string escaped_for_troff(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool line_begins = i == 0 || text[i - 1] == '\n';
        if (line_begins && (text[i] == '.' || text[i] == '\'')) result += "\\&";
        if (text[i] == '-')
            result += "\\-";
        else if (text[i] == '\\')
            result += "\\e";
        else
            result += text[i];
    }
    return result;
}

std::string in_capitals(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string as_printed(const std::string& footer) {
    return footer.empty() ? "" : fmt::format(".PP\n.nf\n{}\n.fi\n", escaped_for_troff(footer));
}

}  // namespace

CommandLine::CommandLine()
    : app_(std::make_unique<CLI::App>(
          "An SNMP agent over a simulated switch, for the library of the switch's MIB modules", "mibhost")) {
    Options& options = options_;
    CLI::App& app = *app_;
    app.formatter(std::make_shared<Help>());
    app.get_formatter()->label("SUBCOMMANDS", "Commands");
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", "mibhost " MIBHOST_VERSION, "Print the version and exit");
    app.footer(kFooter);

    std::map<Command, CLI::App*> commands;
    for (const CommandText& text : kCommands) {
        CLI::App& command = *app.add_subcommand(text.name, text.description);
        command.footer(text.footer);
        command.allow_extras();  // they are looked at after the parsing
        command.group(text.command == Command::manual || text.command == Command::completion ? "" : "Commands");
        command.final_callback([&options, &text] { options.command = text.command; });
        commands[text.command] = &command;
    }

    options.library = default_library();
    options.texts = default_texts();
    for (const Command each : {Command::serve, Command::list, Command::contract, Command::explain, Command::walk}) {
        CLI::App& command = *commands[each];
        command.add_option("--library", options.library, "the module library (default: the one beside mibhost)")
            ->type_name("PATH");
        command.config_formatter(std::make_shared<OptionsFile>(command));
        command.set_config("--config", "", "options from a file")->type_name("FILE")->check(unnamed(CLI::ExistingFile));
        if (each == Command::list || each == Command::contract) continue;
        command
            .add_option("--texts", options.texts,
                        "print values by MIB texts: what smidump -f mosy prints of them (default: the installed ones)")
            ->type_name("FILE");
        command.add_option("--vrf", options.vrf, "VRF of the requests")->type_name("NAME");
        command.add_option("--snmp-context", options.snmp_context, "SNMP context of the requests")->type_name("NAME");
        command.add_flag("--freeze", options.freeze, "stop the switch's clock: counters and timers do not move");
        const auto add_size = [&](const char* name, std::size_t& size, std::size_t most, const char* description) {
            command.add_option(name, size, fmt::format("{}, up to {}", description, most))
                ->type_name("N")
                ->check(unnamed(CLI::Range(std::size_t{0}, most)))
                ->group("Size of the simulated switch, at least");
        };
        add_size("--ports", options.size.ports, sw::kMostPorts, "ports");
        add_size("--vlans", options.size.vlans, 4094, "VLANs");
        add_size("--routes", options.size.routes, sw::kMostRows, "routes in the default VRF");
        add_size("--neighbours", options.size.neighbours, sw::kMostRows, "neighbours in the default VRF");
        add_size("--fdb", options.size.fdb, sw::kMostRows, "addresses in the forwarding database");
        add_size("--groups", options.size.groups, sw::kMostRows, "multicast groups of each of IGMP and MLD");
    }
    for (const Command each : {Command::list, Command::contract, Command::explain, Command::walk})
        commands[each]->add_flag("--json", options.json, "print JSON, one object a line");

    CLI::App& serve = *commands[Command::serve];
    serve.add_option("--listen", options.listen, "where to listen; port 0 takes a free one")
        ->type_name("ADDRESS:PORT")
        ->capture_default_str();
    serve.add_option("--community", options.community, "community that may read")
        ->type_name("NAME")
        ->capture_default_str();
    serve.add_option("--write-community", options.write_community, "community that may read and write (default: none)")
        ->type_name("NAME");
    const auto add_limit = [&](const char* name, auto& limit, const char* description) {
        serve.add_option(name, limit, description)
            ->type_name("N")
            ->check(unnamed(CLI::Range(1, 1'000'000)))
            ->capture_default_str();
    };
    add_limit("--max-varbinds", options.max_varbinds, "varbinds of a request; more are answered with tooBig");
    add_limit("--max-bulk-varbinds", options.max_bulk_varbinds, "varbinds of the answer to a GETBULK");
    add_limit("--log-rate", options.log_rate, "log lines a second for requests that are refused or dropped");
    serve.add_flag("-v,--verbose", options.verbose, "log each request with the backend requests it causes");
    serve.add_flag("--log-json", options.log_json, "log in JSON, one object a line");

    const auto add_form = [&](Command command, const char* name, ListForm form, const char* description) {
        commands[command]->add_flag_callback(
            name, [&options, form] { options.form = form; }, description);
    };
    for (const Command each : {Command::list, Command::contract}) {
        commands[each]->add_option("PATTERN", options.patterns, "which objects (default: all)");
        add_form(each, "--markdown", ListForm::markdown, "print Markdown");
    }
    add_form(Command::list, "--modules", ListForm::modules, "print the modules alone");
    add_form(Command::list, "--names", ListForm::names, "print the names alone, of modules, tables and objects");

    commands[Command::explain]->add_flag("--lines", options.lines,
                                         "print the configuration lines of a set alone, ready to paste");
    commands[Command::walk]->add_option("OID", options.root, "where to walk (default: everything)");
}

CommandLine::~CommandLine() = default;

std::optional<std::string> CommandLine::parse(const std::vector<std::string>& words) {
    const std::string name = words.empty() ? "" : words.front();
    const auto commands = app_->get_subcommands([&](const CLI::App* each) { return each->get_name() == name; });
    CLI::App* const command = commands.empty() ? nullptr : commands.front();
    if (command == nullptr && !name.starts_with('-')) {
        std::vector<std::string> names(kCommands.size());
        std::ranges::transform(kCommands, names.begin(), &CommandText::name);
        throw UsageError(name.empty() ? "say serve, list, contract, explain or walk, or --help"
                                      : fmt::format("unknown command '{}'{}", name, suggestion(names, name)));
    }
    const UsageError comes_first(
        fmt::format("{}: a command comes first: serve, list, contract, explain or walk", name));
    // What is before a command is help or the version.
    CLI::App& parsed = command != nullptr ? *command : *app_;
    std::vector<std::string> reversed{name};
    if (command != nullptr) reversed.assign(words.rbegin(), words.rend() - 1);
    try {
        parsed.parse(std::move(reversed));
    } catch (const CLI::CallForHelp&) {
        return parsed.help(command != nullptr ? "mibhost" : "");
    } catch (const CLI::CallForVersion& version) {
        return std::string(version.what()) + '\n';
    } catch (const CLI::ExtrasError&) {
        throw comes_first;
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    if (command == nullptr) throw comes_first;
    if (options_.command == Command::explain) {
        options_.explained = command->remaining();
        return std::nullopt;
    }
    for (const std::string& word : command->remaining())
        throw UsageError(word.starts_with('-') ? fmt::format("{} has no option {}{}", name, word,
                                                             suggestion(option_names(*command), word))
                                               : fmt::format("{} does not take the word '{}'", name, word));
    if (options_.json) options_.form = ListForm::json;
    return std::nullopt;
}

std::string CommandLine::manual_page() const {
    std::string page = fmt::format(
        ".TH MIBHOST 1 \"\" \"switchmib {0}\" \"User Commands\"\n.SH NAME\nmibhost \\- {1}\n"
        ".SH SYNOPSIS\n",
        MIBHOST_VERSION, escaped_for_troff(app_->get_description()));
    const auto commands = app_->get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
    for (const CLI::App* const command : commands)
        page +=
            fmt::format(".B mibhost {}\n{}\n.br\n", command->get_name(), escaped_for_troff(text_of(*command).words));
    page += ".SH DESCRIPTION" + ('\n' + as_printed(app_->get_footer()));
    for (const CLI::App* const command : commands) {
        page += fmt::format(".SH MIBHOST {}\n{}.\n", in_capitals(command->get_name()),
                            escaped_for_troff(command->get_description()));
        std::string group;
        // Those without a group of their own come first, as in the help.
        std::vector<const CLI::Option*> options = command->get_options();
        std::stable_partition(options.begin(), options.end(),
                              [](const CLI::Option* each) { return each->get_group() == "Options"; });
        for (const CLI::Option* const option : options) {
            if (option->get_group() != "Options" && option->get_group() != group)
                page += fmt::format(".SS {}\n", group = option->get_group());
            page += fmt::format(".TP\n.B {}\n{}\n", escaped_for_troff(spelling(*option)),
                                escaped_for_troff(with_default(*option)));
        }
        page += as_printed(command->get_footer());
    }
    return page;
}

std::string CommandLine::bash_completion() const {
    std::string commands;
    std::string cases;
    std::string files;
    for (const CLI::App* const command :
         app_->get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); })) {
        commands += command->get_name() + ' ';
        cases +=
            fmt::format("        {}) options=\"{}\" ;;\n", command->get_name(), fmt::join(option_names(*command), " "));
        for (const CLI::Option* const option : options_of(*command)) {
            const std::string name = "--" + option->get_lnames().front();
            const bool is_file = option->get_type_name() == "PATH" || option->get_type_name() == "FILE";
            if (is_file && files.find(name) == std::string::npos) files += (files.empty() ? "" : "|") + name;
        }
    }
    return fmt::format(R"bash(# bash completion of mibhost
_mibhost() {{
    local cur prev words cword options module=
    _init_completion -n =: || return
    if ((cword == 1)); then
        COMPREPLY=($(compgen -W "{}--help --version" -- "$cur"))
        return
    fi
    case $prev in
        {}) _filedir; return ;;
    esac
    case ${{words[1]}} in
{}        *) return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [[ ${{words[1]}} == explain && $cword == 2 ]]; then
        COMPREPLY=($(compgen -W "get next set" -- "$cur"))
    elif [[ ${{words[1]}} != serve ]]; then
        [[ $cur == *::* ]] && module=${{cur%%::*}}
        COMPREPLY=($(compgen -P "${{module:+$module::}}" -W "$("${{words[0]}}" list --names $module 2>/dev/null)" \
            -- "${{cur#*::}}"))
        __ltrim_colon_completions "$cur"
    fi
}}
complete -F _mibhost mibhost
)bash",
                       commands, files, cases);
}

}  // namespace tool
