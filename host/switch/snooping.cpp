// IGMP and MLD snooping, one description of both: what it is set to on VLAN interfaces, the groups, sources and hosts
// on ports, router ports, limits, access groups and statistics.
#include "switch/forwarding.h"
#include "switch/group_membership.h"
#include "switch/vlan_interfaces.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

namespace sw {
namespace {

using std::chrono::seconds;

constexpr Duration kQueryInterval = seconds(125);
constexpr Duration kMembershipTime = seconds(260);

// Where the two differ.
struct Words {
    oid type;
    const char *show, *show_source, *tables, *lines, *immediate_leave, *designate, *forbid, *no_limit, *address;
};
constexpr Words kIgmp{kIgmpType,
                      "show debugging igmp snooping snmp",
                      "show debugging igmp snp snmp",
                      "mgmdIgmpSnp",
                      "ip igmp snooping",
                      "immediate-leave",
                      "debugging igmp snooping snmp designate mrouter",
                      "debugging igmp snooping snmp not mrouter",
                      "no limit filter",
                      "{ipv4}"};
constexpr Words kMld{2,
                     "show debugging mld snooping snmp",
                     "show debugging mld snp snmp",
                     "mgmdMldSnp",
                     "ipv6 mld snooping",
                     "fast-leave",
                     "debugging mld snooping snmp mrouter",
                     "debugging mld snooping snmp mrouter forbidden",
                     "no ipv6 mld snooping limit",
                     "{ipv6}"};

// What can be set on a VLAN interface.
struct VlanSnooping {
    bool enabled = true;
    bool querier = false;
    bool immediate_leave = false;
    bool host_based_leave = false;
    PortList router_ports{};     // set to be ones
    PortList no_router_ports{};  // set not to become ones
};

Index group_address(oid type, oid n) {
    if (type == kIgmpType) return {1, 4, 239, 1 + n / 0x10000, n / 0x100 % 0x100, n % 0x100};
    return {2, 16, 0xff, 0x3e, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, n / 0x10000, n / 0x100 % 0x100, n % 0x100};
}

Index host_address(oid type, oid vid, oid n) {
    if (type == kIgmpType) return {1, 4, 10, 0, vid % 0x100, n};
    return {2, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, vid % 0x100, 0, 0, 0, 0, 0, 0, 0, n};
}

Value octets(std::initializer_list<oid> values) { return octets_of(values.begin(), values.size()); }

class Snooping {
public:
    Snooping(Switch&, const Words&);
    void describe(Description&);
    void vlan_interface_made(std::uint32_t ifindex) { interfaces_[ifindex]; }
    void vlan_interface_removed(std::uint32_t ifindex) { interfaces_.erase(ifindex); }
    void forget(std::uint32_t vid);

private:
    void learn(oid port, oid vid, const Index& group);
    void add_interface_tables(Description&);
    void add_group_tables(Description&);
    void add_interface_lines(Description&);
    void add_port_lines(Description&);
    PortList found_routers(const VlanSnooping&, oid ifindex) const;
    Duration expiry(const Membership&) const;
    Rows statistics() const;
    void static_group(const Entered&, const Arguments&, bool add);
    std::string name(const char* object) const { return std::string(words_.tables) + object; }

    const Words& words_;
    Switch& switch_;
    VlanInterfaces& vlan_interfaces_;
    Vlans& vlans_;
    Ports& ports_;
    Forwarding& forwarding_;
    GroupMembership& router_;
    std::map<std::uint32_t, VlanSnooping> interfaces_;  // by the ifIndex of a VLAN interface
    // The others by the index of their tables, where VLANs are their interfaces' ifIndex and addresses type, length,
    // octets.
    std::map<Index, Membership> groups_;          // port, VLAN, group
    std::map<Index, Membership> sources_;         // port, VLAN, group, source
    std::map<Index, Value> hosts_;                // MAC address by VLAN, port, group, host
    std::map<Index, Duration> reports_;           // since when, by VLAN, group
    std::map<Index, std::uint32_t> limits_;       // groups at most, by port, VLAN, type
    std::map<Index, std::string> access_groups_;  // access list by port, VLAN, type
};

Snooping::Snooping(Switch& its_switch, const Words& words)
    : words_(words),
      switch_(its_switch),
      vlan_interfaces_(its_switch.area<VlanInterfaces>()),
      vlans_(its_switch.area<Vlans>()),
      ports_(its_switch.area<Ports>()),
      forwarding_(its_switch.area<Forwarding>()),
      router_(its_switch.area<GroupMembership>()) {
    const auto group = [&](oid n) { return group_address(words_.type, n); };
    for (const oid port : {1u, 2u}) learn(port, 1, group(1));
    for (const oid port : {5u, 6u, 13u}) learn(port, 10, group(2));
    learn(5, 10, group(3));
    for (oid n = 4; groups_.size() < its_switch.size().groups; ++n) learn(n % 4 + 5, 10, group(n));
    limits_[{kPortIfIndexBase + 5, kVlanIfIndexBase + 10, words_.type}] = 64;
    access_groups_[{kPortIfIndexBase + 6, kVlanIfIndexBase + 10, words_.type}] = "office-channels";
    for (const auto& [ifindex, interface] : its_switch.area<Interfaces>().all())
        if (VlanInterfaces::is_one(ifindex)) interfaces_[ifindex].router_ports.set(25, true);
}

// A host on a port has reported a group, and a source that it asks for.
void Snooping::learn(oid port, oid vid, const Index& group) {
    const Index on_port{kPortIfIndexBase + port}, on_vlan{kVlanIfIndexBase + vid};
    const Membership member{false, Duration(), octets({10, 0, vid, 100 + port})};
    forwarding_.join_group(vid, kPortIfIndexBase + port, group);
    for (const auto& [rows, source] : {std::pair{&groups_, Index()}, {&sources_, host_address(words_.type, vid, 10)}}) {
        const Index row = join({on_port, on_vlan, group, source});
        rows->emplace(row, member);
        router_.joined(row, member);
    }
    hosts_.emplace(join({on_vlan, on_port, group, host_address(words_.type, vid, 100 + port)}),
                   octets({0x02, 0x48, 0x00, 0x00, vid, port}));
    reports_.emplace(join({on_vlan, group}), Duration());
}

void Snooping::forget(std::uint32_t vid) {
    const auto from = [vlan = kVlanIfIndexBase + vid](auto& rows, std::size_t at) {
        std::erase_if(rows, [vlan, at](const auto& row) { return row.first[at] == vlan; });
    };
    from(groups_, 1);
    from(sources_, 1);
    from(hosts_, 0);
    from(reports_, 0);
    from(limits_, 1);
    from(access_groups_, 1);
}

// --- Tables ----------------------------------------------------------------------------------------------------------

// The routers are on trunks.
PortList Snooping::found_routers(const VlanSnooping& on_vlan, oid ifindex) const {
    PortList found;
    for (const auto& [port, settings] : vlans_.ports()) {
        const oid n = port - kPortIfIndexBase;
        if (settings.mode == PortMode::trunk && ports_.interfaces().is_up(port))
            found.set(n, vlans_.has(ifindex - kVlanIfIndexBase, port) && !on_vlan.no_router_ports.has(n));
    }
    return found;
}

// Configured ones stay; others are renewed by the answer to each query.
Duration Snooping::expiry(const Membership& member) const {
    if (member.configured) return {};
    return kMembershipTime - (switch_.uptime() - member.since) % kQueryInterval;
}

// Every port in every VLAN that it is a member of and that has an interface. What counts there has steady rates that
// differ from column to column.
Rows Snooping::statistics() const {
    struct Nothing {};
    const FindRow<Nothing> from = [this](const Index& index) -> std::optional<std::pair<Index, Nothing>> {
        for (auto port = lower_bound(ports_.all(), {index[0]}); port != ports_.all().end(); ++port)
            for (const auto& [vlan, snooping] : interfaces_) {
                Index row{port->first, vlan, words_.type};
                if (row >= index && vlans_.has(vlan - kVlanIfIndexBase, port->first))
                    return std::pair{std::move(row), Nothing{}};
            }
        return {};
    };
    Columns<Nothing> columns;
    for (int magic = 4; magic <= 11; ++magic)
        columns.emplace_back(magic, fmt::format("{}StatisticColumn{}", words_.tables, magic),
                             [this, magic](const Nothing&, const Index& index) {
                                 const auto queries = static_cast<std::uint32_t>(switch_.uptime() / kQueryInterval);
                                 const oid rate = 1 + (index[0] + index[1] + static_cast<oid>(magic)) % 7;
                                 return queries * rate & 0x7fffffff;
                             });
    return rows_from(from, std::move(columns));
}

void Snooping::add_interface_tables(Description& d) {
    d.table({.name = name("Table"),
             .show = fmt::format("{} interface {{int}} {{int}}", words_.show),
             .key = {kInteger, kInteger},
             .rows = rows_of(interfaces_, {{2, name("State"), &VlanSnooping::enabled},
                                           {3, name("QuerierState"), &VlanSnooping::querier},
                                           {4, name("Column4"), &VlanSnooping::querier},  // there is no other querier
                                           {5, name("ImmediateLeave"), &VlanSnooping::immediate_leave},
                                           {6, name("MinimumVersion"), 1},  // any
                                           {7, name("HostBaseFastLeave"), &VlanSnooping::host_based_leave}})
                         .ending({words_.type})});
    d.table({.name = name("MrouterTable"),
             .show = fmt::format("{} mrouter {{int}} {{int}}", words_.show),
             .key = {kInteger, kInteger},
             .rows = rows_of(interfaces_, {{3, name("MrouterDesignate"), &VlanSnooping::router_ports},
                                           {4, name("MrouterLearned"),
                                            [this](const VlanSnooping& on_vlan, const Index& index) {
                                                return found_routers(on_vlan, index[0]);
                                            }},
                                           {5, name("MrouterNotAllowed"), &VlanSnooping::no_router_ports}})
                         .ending({words_.type})});
}

void Snooping::add_group_tables(Description& d) {
    const KeyLayout three{kInteger, kInteger, kInteger};
    d.table({.name = name("FilterTable"),
             .show = fmt::format("{} filter {{int}} {{int}} {{int}}", words_.show),
             .key = three,
             .rows = rows_of(limits_, {{4, name("FilterLimit"), [](std::uint32_t limit) { return limit; }}})});
    d.table({.name = name("AccGrpTable"),
             .show = fmt::format("{} access-group {{int}} {{int}} {{int}}", words_.show),
             .key = three,
             .rows = rows_of(access_groups_, {{4, name("AccessGroup"), [](const std::string& list) { return list; }},
                                              {5, name("AccGrpStatus"), 1}})});
    d.table({.name = name("StatisticTable"),
             .show = fmt::format("{} statistics {{int}} {{int}} {{int}}", words_.show),
             .key = three,
             .rows = statistics()});

    const auto up_time = [this](const Membership& m) { return switch_.uptime() - m.since; };
    const auto expires = [this](const Membership& m) { return expiry(m); };
    d.table(
        {.name = name("GroupTable"),
         .show = fmt::format("{} group {{int}} {{int}} {{int}} [{{address}}]", words_.show),
         .key = {kInteger, kInteger, kAddress},
         .rows = rows_of(groups_, {{5, name("GroupStatus"), 1},
                                   {6, name("GroupColumn6"), [](const Membership& m) { return m.configured ? 1 : 2; }},
                                   {7, name("GroupUpTime"), up_time},
                                   {8, name("GroupExpiryTime"), expires},
                                   // exclude, include
                                   {9, name("GroupColumn9"), [](const Membership& m) { return m.configured ? 2 : 1; }},
                                   {10, name("GroupColumn10"), words_.type == kIgmpType ? 3 : 2},
                                   {11, name("GroupLastReporter"), &Membership::reporter}}),
         .forced_type = true});
    d.table({.name = name("GroupSrcTable"),
             .show = fmt::format("{} source {{int}} {{int}} {{int}} [{{address}}] [{{address}}]", words_.show_source),
             .key = {kInteger, kInteger, kAddressPair},
             .rows = rows_of(sources_, {{2, name("GroupSrcStatus"), 1},
                                        {3, name("GroupSrcUpTime"), up_time},
                                        {4, name("GroupSrcExpiryTime"), expires},
                                        {5, name("GroupSrcColumn5"), 1}}),
             .forced_type = true});
    d.table({.name = name("HostTable"),
             .show = fmt::format("{} host {{int}} {{int:3}} [{{address}}] {{int:2}} [{{address:6}}]", words_.show),
             .key = {kInteger, kInteger, kAddressPair},
             .rows = rows_of(hosts_, {{5, name("HostAddress"), [](const Value& mac) { return mac; }}}),
             .forced_type = true});
    d.table({.name = name("StatisticGroupTable"),
             .show = fmt::format("{} statistics group {{int}} {{int}} [{{address}}]", words_.show),
             .key = {kInteger, kAddress},
             .rows = rows_of(reports_,
                             {{4, name("StatisticGroupColumn4"),
                               [this](Duration since) { return (switch_.uptime() - since) / kQueryInterval + 1; }}}),
             .forced_type = true});
}

// --- Lines -----------------------------------------------------------------------------------------------------------

void Snooping::static_group(const Entered& entered, const Arguments& arguments, bool add) {
    const oid port = switch_.area<Interfaces>().find(arguments[2].text);
    require(ports_.all().contains(port), "there is no such port");
    const Index group = arguments[0].index();
    require(words_.type == kIgmpType ? group[2] / 16 == 14 : group[2] == 255, "the group is not a multicast address");
    auto& rows = arguments[1].present ? sources_ : groups_;
    const Index index = join({{port, entered.object}, group, arguments[1].index()});
    const auto row = rows.find(index);
    const bool is_configured = row != rows.end() && row->second.configured;
    const std::uint32_t vid = entered.object - kVlanIfIndexBase;
    if (add && row == rows.end() && !arguments[1].present) forwarding_.join_group(vid, port, group);
    if (add && !is_configured) {
        const Membership member{true, switch_.uptime(), octets({0, 0, 0, 0})};
        rows.insert_or_assign(index, member);
        router_.joined(index, member);
    }
    require(add || is_configured, "there is no such static group");
    if (add) return;
    rows.erase(row);
    router_.left(index);
    if (!arguments[1].present) forwarding_.leave_group(vid, port, group);
}

void Snooping::add_interface_lines(Description& d) {
    const Lines<VlanSnooping> on_vlan = vlan_interfaces_.lines(d).of(interfaces_);
    const std::string line = words_.lines;
    on_vlan.flag(line, &VlanSnooping::enabled);
    on_vlan.flag(line + " querier", &VlanSnooping::querier);
    on_vlan.flag(line + " " + words_.immediate_leave, &VlanSnooping::immediate_leave);
    on_vlan.flag(line + " host-based fast-leave", &VlanSnooping::host_based_leave);

    // The interface, and a port list of three words, whose octets are in little-endian order.
    const auto ports = [&](const char* words, PortList VlanSnooping::*which) {
        on_vlan.line(fmt::format("{} {{int}} {{int}} {{int}} {{int}}", words),
                     [which](VlanSnooping& s, const Arguments& arguments, const Entered& entered) {
                         require(arguments[0].number == entered.object, "it names another interface");
                         s.*which = port_list(&arguments[1]);
                     });
    };
    ports(words_.designate, &VlanSnooping::router_ports);
    ports(words_.forbid, &VlanSnooping::no_router_ports);

    for (const bool add : {true, false})
        on_vlan.line(fmt::format("{}{} static-group {} [source {}] interface {{word}}", add ? "" : "no ", words_.lines,
                                 words_.address, words_.address),
                     [this, add](VlanSnooping&, const Arguments& arguments, const Entered& entered) {
                         static_group(entered, arguments, add);
                     });
}

void Snooping::add_port_lines(Description& d) {
    // The last argument of each is the VLAN: together with the port it is a row.
    const Lines<Port> port = ports_.lines(d);
    const auto row_line = [&](const std::string& pattern, auto set) {
        port.line(pattern + " vlan {1..4094}", [this, set](Port&, const Arguments& arguments, const Entered& entered) {
            const oid vid = arguments.back().number;
            require(vlans_.has(vid), "there is no such VLAN");
            set(Index{entered.object, kVlanIfIndexBase + vid, words_.type}, arguments);
        });
    };
    row_line(fmt::format("{} limit {{1..2048}}", words_.lines),
             [this](const Index& row, const Arguments& arguments) { limits_[row] = arguments[0].number; });
    row_line(words_.no_limit, [this](const Index& row, const Arguments&) { limits_.erase(row); });
    row_line(fmt::format("{} access-group {{word}}", words_.lines),
             [this](const Index& row, const Arguments& arguments) {
                 require(arguments[0].text.size() <= kLongestAccessList,
                         fmt::format("the name of an access list has at most {} octets", kLongestAccessList));
                 access_groups_[row] = arguments[0].text;
             });
    row_line(fmt::format("no {} access-group {{word}}", words_.lines), [this](const Index& row,
                                                                              const Arguments& arguments) {
        const auto known = access_groups_.find(row);
        require(known != access_groups_.end() && known->second == arguments[0].text, "there is no such access group");
        access_groups_.erase(known);
    });
}

void Snooping::describe(Description& d) {
    add_interface_tables(d);
    add_group_tables(d);
    add_interface_lines(d);
    add_port_lines(d);
}

class BothSnoopings : public Area {
public:
    explicit BothSnoopings(Switch& its_switch) : Area(its_switch), igmp_(its_switch, kIgmp), mld_(its_switch, kMld) {}
    void describe(Description& d) override {
        igmp_.describe(d);
        mld_.describe(d);
    }
    void interface_made(std::uint32_t ifindex) override {
        if (!VlanInterfaces::is_one(ifindex)) return;
        igmp_.vlan_interface_made(ifindex);
        mld_.vlan_interface_made(ifindex);
    }
    void interface_removed(std::uint32_t ifindex) override {
        igmp_.vlan_interface_removed(ifindex);
        mld_.vlan_interface_removed(ifindex);
    }
    void vlan_removed(std::uint32_t vid) override {
        igmp_.forget(vid);
        mld_.forget(vid);
    }

private:
    Snooping igmp_, mld_;
};

}  // namespace

void add_snooping(Switch& areas) { areas.area<BothSnoopings>(); }

}  // namespace sw
