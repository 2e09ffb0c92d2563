// IGMP and MLD snooping, one description of both: what it is set to on VLAN interfaces, the groups, sources and hosts
// on ports, router ports, limits, access groups and statistics.
#include "switch/model.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace sw {
namespace {

using std::chrono::seconds;

constexpr Duration kQueryInterval = seconds(125);
constexpr Duration kMembershipTime = seconds(260);
constexpr std::size_t kLongestAccessList = 32;

// Where the two differ.
struct Words {
    const char *show, *show_source, *tables, *lines, *immediate_leave, *designate, *forbid, *no_limit, *address;
};
constexpr Words kIgmpWords{"show debugging igmp snooping snmp",
                           "show debugging igmp snp snmp",
                           "mgmdIgmpSnp",
                           "ip igmp snooping",
                           "immediate-leave",
                           "debugging igmp snooping snmp designate mrouter",
                           "debugging igmp snooping snmp not mrouter",
                           "no limit filter",
                           "{ipv4}"};
constexpr Words kMldWords{"show debugging mld snooping snmp",
                          "show debugging mld snp snmp",
                          "mgmdMldSnp",
                          "ipv6 mld snooping",
                          "fast-leave",
                          "debugging mld snooping snmp mrouter",
                          "debugging mld snooping snmp mrouter forbidden",
                          "no ipv6 mld snooping limit",
                          "{ipv6}"};

const Words& words_of(Protocol protocol) { return protocol == kIgmp ? kIgmpWords : kMldWords; }

// --- What it has learned ---------------------------------------------------------------------------------------------

Index group_address(Protocol protocol, oid n) {
    if (protocol == kIgmp) return {1, 4, 239, 1 + n / 0x10000, n / 0x100 % 0x100, n % 0x100};
    return {2, 16, 0xff, 0x3e, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, n / 0x10000, n / 0x100 % 0x100, n % 0x100};
}

Index host_address(Protocol protocol, oid vid, oid n) {
    if (protocol == kIgmp) return {1, 4, 10, 0, vid % 0x100, n};
    return {2, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, vid % 0x100, 0, 0, 0, 0, 0, 0, 0, n};
}

Value octets(std::initializer_list<oid> values) {
    Value value;
    for (const oid octet : values) value += static_cast<char>(octet);
    return value;
}

// A host behind a port has reported a group, and from which source it wants it.
void learn(Model& model, Protocol protocol, std::uint32_t port, std::uint32_t vid, const Index& group) {
    Snooping& known = model.snooping[protocol];
    const Index on_port{kPortIfIndexBase + port}, on_vlan{kVlanIfIndexBase + vid};
    const Membership member{false, Duration(), octets({10, 0, vid, 100 + port})};
    known.groups.emplace(join({on_port, on_vlan, group}), member);
    known.sources.emplace(join({on_port, on_vlan, group, host_address(protocol, vid, 10)}), member);
    known.hosts.emplace(join({on_vlan, on_port, group, host_address(protocol, vid, 100 + port)}),
                        octets({0x02, 0x48, 0x00, 0x00, vid, port}));
    known.reports.emplace(join({on_vlan, group}), Duration());
}

// --- Tables ----------------------------------------------------------------------------------------------------------

// Rows of VLAN interfaces, whose index has the protocol behind the interface.
Rows on_vlan_interfaces(const Model& model, Protocol protocol, Columns<Interface> columns) {
    return translated(
        rows_of(model.interfaces, std::move(columns)), [](const Index& index) { return Index{index[0]}; },
        [protocol](const Index& index) -> std::optional<Index> {
            if (index[0] > kVlanIfIndexBase + kLastVlan) return {};
            return Index{index[0], protocol};
        });
}

// What counts on a port in a VLAN: steady rates that differ from column to column.
std::uint32_t events(const Model& model, const Index& index, int magic) {
    const auto queries = static_cast<std::uint32_t>(model.uptime() / kQueryInterval);
    return queries * (1 + (index[0] + index[1] + static_cast<oid>(magic)) % 7) & 0x7fffffff;
}

// Every port in every VLAN that it is a member of and that has an interface.
Rows statistics_rows(const Model& model, Protocol protocol) {
    Rows rows;
    for (int magic = 4; magic <= 11; ++magic) rows.magics.push_back(magic);
    const auto is_row = [&model](oid port, oid vlan) {
        const auto known = model.vlans.find(vlan - kVlanIfIndexBase);
        return model.ports.contains(port) && model.interfaces.contains(vlan) && known != model.vlans.end() &&
               known->second.egress.has(port - kPortIfIndexBase);
    };
    const auto answer = [&model](int magic, Index index) {
        Value value = number(events(model, index, magic));
        return Answer{std::move(index), std::move(value)};
    };
    rows.at = [=](int magic, const Index& index) -> std::optional<Answer> {
        if (!is_row(index[0], index[1])) return {};
        return answer(magic, index);
    };
    rows.behind = [=, &model](int magic, const Index& index) -> std::optional<Answer> {
        for (auto port = model.ports.lower_bound(index[0]); port != model.ports.end(); ++port) {
            // On the port asked for, behind the VLAN asked for.
            const oid asked = port->first == index[0] ? index[1] : 0;
            auto vlan = model.interfaces.upper_bound(asked);
            for (; vlan != model.interfaces.end() && vlan->second.port == nullptr; ++vlan)
                if (is_row(port->first, vlan->first)) return answer(magic, {port->first, vlan->first, protocol});
        }
        return {};
    };
    return rows;
}

Columns<Interface> vlan_columns(Protocol protocol) {
    const auto flag = [protocol](bool VlanSnooping::*which) {
        return [protocol, which](const Interface& i) { return truth(i.snooping[protocol].*which); };
    };
    return {
        {2, flag(&VlanSnooping::enabled)},          {3, flag(&VlanSnooping::querier)},
        {4, flag(&VlanSnooping::querier)},                                          // no other querier is about
        {5, flag(&VlanSnooping::immediate_leave)},  {6, [](const Interface&) { return number(1); }},  // any version
        {7, flag(&VlanSnooping::host_based_leave)},
    };
}

Columns<Interface> router_columns(const Model& model, Protocol protocol) {
    return {
        {3, [protocol](const Interface& i) { return i.snooping[protocol].router_ports.value(); }},
        // The routers are behind trunks.
        {4,
         [&model, protocol](const Interface& i) {
             PortList found;
             const auto vlan = model.vlans.find(i.ifindex - kVlanIfIndexBase);
             for (const auto& [ifindex, port] : model.ports)
                 if (vlan != model.vlans.end() && port.mode == PortMode::trunk && model.interfaces.at(ifindex).up)
                     found.set(port.number(), vlan->second.egress.has(port.number()) &&
                                                  !i.snooping[protocol].no_router_ports.has(port.number()));
             return found.value();
         }},
        {5, [protocol](const Interface& i) { return i.snooping[protocol].no_router_ports.value(); }},
    };
}

// Configured ones stay; others are renewed by the answer to each query.
Value expiry(const Model& model, const Membership& member) {
    if (member.configured) return number(0);
    return ticks(kMembershipTime - (model.uptime() - member.since) % kQueryInterval);
}

void add_tables(const Model& model, TableStore& store, Protocol protocol) {
    const Words& words = words_of(protocol);
    const Snooping& known = model.snooping[protocol];
    const auto table = [&](const char* name, const char* keyed, KeyLayout key, Rows rows) {
        return Table{.name = std::string(words.tables) + name,
                     .keyed = std::string(words.show) + keyed,
                     .key = std::move(key),
                     .rows = std::move(rows)};
    };
    // With addresses behind that many numbers. The command says the protocol too, as the type of the first address.
    const auto address_table = [&](const char* name, const char* keyed, KeyLayout key, std::size_t numbers, Rows rows) {
        return Table{.name = std::string(words.tables) + name,
                     .keyed = fmt::format(fmt::runtime(keyed), fmt::arg("show", words.show),
                                          fmt::arg("source", words.show_source),
                                          fmt::arg("type", static_cast<std::uint32_t>(protocol)),
                                          fmt::arg("n", "{int}"), fmt::arg("address", "[{address}]")),
                     .key = std::move(key),
                     .rows = std::move(rows),
                     .arguments =
                         [numbers](const Index& index) {
                             return Index(index.begin(), index.begin() + static_cast<std::ptrdiff_t>(numbers));
                         },
                     .addresses_behind = numbers};
    };
    const auto one = [](const auto&) { return number(1); };
    const auto up = [&model](const Membership& m) { return ticks(model.uptime() - m.since); };
    const auto expires = [&model](const Membership& m) { return expiry(model, m); };

    store.add(table("Table", " interface {int} {int}", {{2}, {2}},
                    on_vlan_interfaces(model, protocol, vlan_columns(protocol))));
    store.add(table("MrouterTable", " mrouter {int} {int}", {{2}, {2}},
                    on_vlan_interfaces(model, protocol, router_columns(model, protocol))));
    store.add(table("FilterTable", " filter {int} {int} {int}", {{2}, {2}, {2}},
                    rows_of(known.limits, {{4, [](std::uint32_t limit) { return number(limit); }}})));
    store.add(table("AccGrpTable", " access-group {int} {int} {int}", {{2}, {2}, {2}},
                    rows_of(known.access_groups, {{4, [](const std::string& name) { return name; }}, {5, one}})));
    store.add(
        table("StatisticTable", " statistics {int} {int} {int}", {{2}, {2}, {2}}, statistics_rows(model, protocol)));

    store.add(address_table(
        "GroupTable", "{show} group {n} {n} {type} {address}", {{2}, {2}, {10}}, 2,
        rows_of(known.groups,
                {{5, one},
                 {6, [](const Membership& m) { return number(m.configured ? 1 : 2); }},
                 {7, up},
                 {8, expires},
                 {9, [](const Membership& m) { return number(m.configured ? 2 : 1); }},  // exclude, include
                 {10, [protocol](const Membership&) { return number(protocol == kIgmp ? 3 : 2); }},
                 {11, [](const Membership& m) { return m.reporter; }}})));
    store.add(address_table("GroupSrcTable", "{source} source {n} {n} {type} {address} {address}", {{2}, {2}, {13}}, 2,
                            rows_of(known.sources, {{2, one}, {3, up}, {4, expires}, {5, one}})));
    store.add(address_table("HostTable", "{show} host {n} {type} {address} {n} {address}", {{2}, {2}, {13}}, 2,
                            rows_of(known.hosts, {{5, [](const Value& mac) { return mac; }}})));
    const auto reports = [&model](Duration since) {
        return number(static_cast<std::uint32_t>((model.uptime() - since) / kQueryInterval) + 1);
    };
    store.add(address_table("StatisticGroupTable", "{show} statistics group {n} {type} {address}", {{2}, {10}}, 1,
                            rows_of(known.reports, {{4, reports}})));
}

// --- Lines -----------------------------------------------------------------------------------------------------------

// Lines of a VLAN interface's mode.
class VlanLines {
public:
    VlanLines(Model& model, CommandLine& lines, Protocol protocol)
        : model_(model), lines_(lines), protocol_(protocol) {}

    void flag(const std::string& line, bool VlanSnooping::*which) {
        for (const bool on : {true, false})
            add(on ? line : "no " + line, [=, protocol = protocol_](Interface& interface, const Arguments&) {
                interface.snooping[protocol].*which = on;
                return accepted;
            });
    }

    // A port list of three words, whose octets are in little-endian order.
    void ports(const char* line, PortList VlanSnooping::*which) {
        add(line + std::string(" {int} {int} {int} {int}"),
            [=, protocol = protocol_](Interface& interface, const Arguments& arguments) {
                if (arguments[0].number != interface.ifindex) return refused("it names another interface");
                auto& octets = (interface.snooping[protocol].*which).octets;
                for (std::size_t i = 0; i < octets.size(); ++i)
                    octets[i] = static_cast<unsigned char>(arguments[1 + i / 4].number >> 8 * (i % 4));
                return accepted;
            });
    }

    void static_groups(const Words& words) {
        const std::string line =
            fmt::format("{} static-group {} [source {}] interface {{word}}", words.lines, words.address, words.address);
        for (const bool on : {true, false})
            add(on ? line : "no " + line,
                [=, &model = model_, protocol = protocol_](Interface& interface, const Arguments& arguments) {
                    const Interface* port = model.find(arguments[2].text);
                    if (port == nullptr || port->port == nullptr) return refused("there is no such port");
                    const Index &group = arguments[0].address, &source = arguments[1].address;
                    if (protocol == kIgmp ? group[2] / 16 != 14 : group[2] != 255)
                        return refused("the group is no multicast address");
                    Snooping& known = model.snooping[protocol];
                    auto& rows = source.empty() ? known.groups : known.sources;
                    const Index index = join({{port->ifindex, interface.ifindex}, group, source});
                    const auto row = rows.find(index);
                    const bool is_configured = row != rows.end() && row->second.configured;
                    if (on && !is_configured)
                        rows.insert_or_assign(index, Membership{true, model.uptime(), octets({0, 0, 0, 0})});
                    if (!on && !is_configured) return refused("there is no such static group");
                    if (!on) rows.erase(row);
                    return accepted;
                });
    }

private:
    void add(const std::string& pattern, Setting set) {
        add_setting(model_, lines_, pattern.c_str(),
                    [set = std::move(set)](Interface& interface, const Arguments& arguments) {
                        if (interface.port != nullptr) return refused(interface.name + " is no VLAN interface");
                        return set(interface, arguments);
                    });
    }

    Model& model_;
    CommandLine& lines_;
    Protocol protocol_;
};

void add_port_lines(Model& model, CommandLine& lines, Protocol protocol) {
    const Words& words = words_of(protocol);
    // The last argument of each is the VLAN: together with the port it is a row.
    const auto setting = [&](const std::string& pattern, auto set) {
        add_port_setting(
            model, lines, pattern.c_str(), [&model, protocol, set](Port& port, const Arguments& arguments) {
                const std::uint32_t vid = arguments.back().number;
                if (!model.vlans.contains(vid)) return refused("there is no such VLAN");
                return set(model.snooping[protocol], {port.ifindex, kVlanIfIndexBase + vid, protocol}, arguments);
            });
    };
    setting(words.lines + std::string(" limit {1..2048} vlan {1..4094}"),
            [](Snooping& snooping, const Index& index, const Arguments& arguments) {
                snooping.limits[index] = arguments[0].number;
                return accepted;
            });
    setting(words.no_limit + std::string(" vlan {1..4094}"),
            [](Snooping& snooping, const Index& index, const Arguments&) {
                snooping.limits.erase(index);
                return accepted;
            });
    setting(words.lines + std::string(" access-group {word} vlan {1..4094}"),
            [](Snooping& snooping, const Index& index, const Arguments& arguments) {
                if (arguments[0].text.size() > kLongestAccessList)
                    return refused(fmt::format("the name of an access list has at most {} octets", kLongestAccessList));
                snooping.access_groups[index] = arguments[0].text;
                return accepted;
            });
    setting(std::string("no ") + words.lines + " access-group {word} vlan {1..4094}",
            [](Snooping& snooping, const Index& index, const Arguments& arguments) {
                const auto row = snooping.access_groups.find(index);
                if (row == snooping.access_groups.end() || row->second != arguments[0].text)
                    return refused("there is no such access group");
                snooping.access_groups.erase(row);
                return accepted;
            });
}

}  // namespace

void Model::forget_groups(std::uint32_t vid) {
    const oid vlan = kVlanIfIndexBase + vid;
    const auto forget = [vlan](auto& rows, std::size_t at) {
        std::erase_if(rows, [vlan, at](const auto& row) { return row.first[at] == vlan; });
    };
    for (Snooping* known : {&snooping.igmp, &snooping.mld}) {
        forget(known->groups, 1);
        forget(known->sources, 1);
        forget(known->hosts, 0);
        forget(known->reports, 0);
        forget(known->limits, 1);
        forget(known->access_groups, 1);
    }
}

void make_groups(Model& model, std::size_t count) {
    for (const Protocol protocol : {kIgmp, kMld}) {
        Snooping& known = model.snooping[protocol];
        const auto group = [protocol](oid n) { return group_address(protocol, n); };
        for (const std::uint32_t port : {1u, 2u}) learn(model, protocol, port, 1, group(1));
        for (const std::uint32_t port : {5u, 6u, 13u}) learn(model, protocol, port, 10, group(2));
        learn(model, protocol, 5, 10, group(3));
        for (oid n = 4; known.groups.size() < count; ++n) learn(model, protocol, n % 4 + 5, 10, group(n));
        known.limits[{kPortIfIndexBase + 5, kVlanIfIndexBase + 10, protocol}] = 64;
        known.access_groups[{kPortIfIndexBase + 6, kVlanIfIndexBase + 10, protocol}] = "office-channels";
        for (auto& [ifindex, interface] : model.interfaces)
            interface.snooping[protocol].router_ports.set(25, interface.port == nullptr);
    }
}

void add_snooping(Model& model, TableStore& store, CommandLine& lines) {
    for (const Protocol protocol : {kIgmp, kMld}) {
        const Words& words = words_of(protocol);
        add_tables(model, store, protocol);
        VlanLines on_vlan(model, lines, protocol);
        const std::string line = words.lines;
        on_vlan.flag(line, &VlanSnooping::enabled);
        on_vlan.flag(line + " querier", &VlanSnooping::querier);
        on_vlan.flag(line + " " + words.immediate_leave, &VlanSnooping::immediate_leave);
        on_vlan.flag(line + " host-based fast-leave", &VlanSnooping::host_based_leave);
        on_vlan.ports(words.designate, &VlanSnooping::router_ports);
        on_vlan.ports(words.forbid, &VlanSnooping::no_router_ports);
        on_vlan.static_groups(words);
        add_port_lines(model, lines, protocol);
    }
}

}  // namespace sw
