// The forwarding database by address and by VLAN, the time after which addresses age, multicast groups, static multicast
// addresses, and what ports do with frames to groups that are not registered.
#include "switch/forwarding.h"

#include <algorithm>

namespace sw {
namespace {

using std::chrono::seconds;

constexpr Duration kCycle = seconds(1200);
constexpr std::uint32_t kBehindAccess = 6, kBehindTagged = 4, kBehindTrunk = 60;  // stations on a port in a VLAN

Index row_of(std::uint32_t vid, const Mac& mac) { return join({{vid}, Index(mac.begin(), mac.end())}); }

// The address that frames to an IP multicast group have.
Mac group_mac(const Index& group) {
    const auto octet = [&](std::size_t from_end) { return static_cast<unsigned char>(group[group.size() - from_end]); };
    if (group[0] == 1) return {0x01, 0x00, 0x5e, static_cast<unsigned char>(octet(3) & 0x7f), octet(2), octet(1)};
    return {0x33, 0x33, octet(4), octet(3), octet(2), octet(1)};
}

}  // namespace

Forwarding::Forwarding(Switch& its_switch)
    : Area(its_switch),
      ports_(its_switch.area<Ports>()),
      vlans_(its_switch.area<Vlans>()),
      filtering_(ports_.each<Filtering>()) {
    add_station(kDefaultVlan, kOwnMac, {});
    for (const auto& [ifindex, port] : vlans_.ports())
        for (const std::uint32_t vid : {1u, 10u, 20u, 30u})
            if (vlans_.has(vid, ifindex))
                add_stations(vid, ifindex,
                             port.mode == PortMode::trunk    ? kBehindTrunk
                             : port.mode == PortMode::access ? kBehindAccess
                                                             : kBehindTagged);
    Group& clocks = groups_[row_of(kDefaultVlan, {0x01, 0x1b, 0x19, 0x00, 0x00, 0x00})];
    for (const std::uint32_t port : {25u, 26u}) clocks.fixed.set(port, true);
    // The rest are servers, which always talk.
    auto vlan = vlans_.all().begin();
    for (std::uint32_t n = 0; n < its_switch.size().fdb; ++n) {
        const auto octet = [n](int shift) { return static_cast<unsigned char>(n >> shift); };
        add_station(vlan->first, {0x02, 0x49, 0x00, octet(16), octet(8), octet(0)}, {kUplink, kCycle});
        if (++vlan == vlans_.all().end()) vlan = vlans_.all().begin();
    }
}

void Forwarding::add_station(std::uint32_t vid, const Mac& mac, const Station& station) {
    const auto entry = stations_.emplace(row_of(vid, mac), station).first;
    by_address_.emplace(Index(mac.begin(), mac.end()), Known{vid, &entry->second});
}

void Forwarding::add_stations(std::uint32_t vid, std::uint32_t ifindex, std::uint32_t number) {
    for (std::uint32_t n = 0; n < number; ++n) {
        const Mac mac{0x02,
                      0x48,
                      0x00,
                      static_cast<unsigned char>(n),
                      static_cast<unsigned char>(vid),
                      static_cast<unsigned char>(ifindex - kPortIfIndexBase)};
        const std::uint32_t spread = 7 * n + 3 * ifindex + vid;
        // The first one is always there.
        add_station(vid, mac,
                    {ifindex, n == 0 ? kCycle : seconds(400 + spread % 8 * 100), seconds(37 * spread % 1200)});
    }
}

// --- Learning and aging ----------------------------------------------------------------------------------------------

bool Forwarding::knows(std::uint32_t vid, const Station& station) const {
    if (station.ifindex == 0) return true;
    if (!ports_.interfaces().is_up(station.ifindex) || !vlans_.has(vid, station.ifindex)) return false;
    const Duration now = uptime();
    const Duration silent = std::max((now + station.shift) % kCycle - station.talks, Duration());
    return now - silent >= station.forgotten && (aging_ == Duration() || silent < aging_);
}

std::uint32_t Forwarding::count(std::uint32_t vid) const {
    return static_cast<std::uint32_t>(std::count_if(
        stations_.lower_bound({vid}), stations_.lower_bound({vid + 1}),
        [this](const auto& entry) { return entry.second.ifindex != 0 && knows(entry.first[0], entry.second); }));
}

void Forwarding::for_each_learned(const std::function<void(std::uint32_t, const Mac&)>& visit) const {
    for (const auto& [row, station] : stations_) {
        if (station.ifindex == 0 || !knows(row[0], station)) continue;
        Mac mac;
        std::transform(row.begin() + 1, row.end(), mac.begin(), [](oid id) { return static_cast<unsigned char>(id); });
        visit(station.ifindex, mac);
    }
}

// Addresses that have aged stay forgotten when they are kept longer from now on.
void Forwarding::set_aging(Duration time) {
    for (auto& [row, station] : stations_)
        if (!knows(row[0], station)) station.forgotten = uptime();
    aging_ = time;
}

void Forwarding::interface_went(std::uint32_t ifindex, bool) {
    for (auto& [row, station] : stations_)
        if (station.ifindex == ifindex) station.forgotten = uptime();
}

void Forwarding::vlan_removed(std::uint32_t vid) {
    for (auto station = stations_.lower_bound({vid}); station != stations_.lower_bound({vid + 1}); ++station)
        station->second.forgotten = uptime();
    groups_.erase(groups_.lower_bound({vid}), groups_.lower_bound({vid + 1}));
}

// --- Groups ----------------------------------------------------------------------------------------------------------

void Forwarding::join_group(std::uint32_t vid, std::uint32_t ifindex, const Index& group) {
    ++groups_[row_of(vid, group_mac(group))].members[ifindex - kPortIfIndexBase];
}

void Forwarding::leave_group(std::uint32_t vid, std::uint32_t ifindex, const Index& group) {
    const auto row = groups_.find(row_of(vid, group_mac(group)));
    if (row == groups_.end()) return;
    auto& members = row->second.members;
    const auto member = members.find(ifindex - kPortIfIndexBase);
    if (member != members.end() && --member->second == 0) members.erase(member);
    if (members.empty() && !row->second.is_fixed()) groups_.erase(row);
}

// Those that are up and in the VLAN.
PortList Forwarding::members(const Group& group, const Index& row, bool with_fixed) const {
    PortList list;
    for (const auto& [ifindex, port] : ports_.all())
        list.set(port.number, (group.members.contains(port.number) || (with_fixed && group.fixed.has(port.number))) &&
                                  ports_.interfaces().is_up(ifindex) && vlans_.has(row[0], ifindex));
    return list;
}

void Forwarding::set_fixed(const Arguments& arguments, bool fixed) {
    const Port* port = ports_.find(arguments[2].text);
    const std::uint32_t vid = arguments[1].number;
    require(vlans_.has(vid), "there is no such VLAN");
    require(port != nullptr, "there is no such port");
    require((arguments[0].octets[0] & 1) != 0, "the address is not a multicast address");
    const Index row = join({{vid}, arguments[0].index()});
    const auto group = groups_.find(row);
    require(fixed || (group != groups_.end() && group->second.fixed.has(port->number)),
            "the address is not static on that port");
    Group& changed = groups_[row];
    changed.fixed.set(port->number, fixed);
    if (changed.members.empty() && !changed.is_fixed()) groups_.erase(row);
}

void Forwarding::remove_fixed(const Arguments& arguments) {
    const auto group = groups_.find(join({{arguments[1].number}, arguments[0].index()}));
    require(group != groups_.end() && group->second.is_fixed(), "the address is not static");
    group->second.fixed = {};
    if (group->second.members.empty()) groups_.erase(group);
}

// --- Tables and lines ------------------------------------------------------------------------------------------------

// The IEEE's tables are the Q-bridge's with the bridge's component before the index, and other columns.

void Forwarding::describe(Description& d) {
    add_count_tables(d);
    add_station_tables(d);
    add_group_tables(d);
    add_static_tables(d);
    add_filtering_modes(d);
}

void Forwarding::add_count_tables(Description& d) {
    const auto aging = [this] { return std::chrono::duration_cast<seconds>(aging_).count(); };
    d.scalars("dot1dBridgeGlobals", "", {{19, "dot1dTpAgingTime", aging, "show mac address-table aging-time"}});
    const auto learned = [this](const Vlan&, const Index& index) { return count(index[0]); };
    d.table({.name = "dot1qFdbTable",
             .show = "show mac address-table count vlan {int}",
             .rows = rows_of(vlans_.all(), {{2, "dot1qFdbDynamicCount", learned}})});
    d.table({.name = "ieee8021QBridgeFdbTable",
             .show = "show snmp ieee fdb [{int:2}]",
             .key = {kInteger, kInteger},
             .rows = rows_of(vlans_.all(), {{3, "ieee8021QBridgeFdbDynamicCount", learned},
                                            {4, "ieee8021QBridgeFdbLearnedEntryDiscards", counter64(0)},
                                            {5, "ieee8021QBridgeFdbAgingTime", aging}})
                         .under({kComponent})});
    d.lines(*this).line("mac address-table aging-time {0..1000000}", [this](const Arguments& arguments) {
        const std::uint32_t time = arguments[0].number;
        require(time == 0 || time >= 10, "addresses are kept for 10 seconds at least");
        set_aging(seconds(time));
    });
}

void Forwarding::add_station_tables(Description& d) {
    // What is known of a station, and nothing when it is not known.
    const auto port = [this](std::uint32_t vid, const Station& station) -> std::optional<std::uint32_t> {
        if (!knows(vid, station)) return {};
        return station.ifindex != 0 ? station.ifindex - kPortIfIndexBase : 0;
    };
    const auto status = [this](std::uint32_t vid, const Station& station) -> std::optional<std::uint32_t> {
        if (!knows(vid, station)) return {};
        return station.ifindex != 0 ? 3 : 4;  // learned, self
    };
    const auto by_vlan = [&](const std::string& prefix) {
        const auto of_row = [](auto fact) {
            return [fact](const Station& station, const Index& row) { return fact(row[0], station); };
        };
        return rows_of(stations_,
                       {{2, prefix + "TpFdbPort", of_row(port)}, {3, prefix + "TpFdbStatus", of_row(status)}});
    };
    d.table({.name = "dot1qTpFdbTable",
             .show = "show uib mac address-table address {mac:2} vlan {int:1}",
             .key = {kInteger, kMac},
             .rows = by_vlan("dot1q")});
    d.table({.name = "ieee8021QBridgeTpFdbTable",
             .show = "show snmp ieee mac-address-table address {mac:3} vlan {int:2}",
             .key = {kInteger, kInteger, kMac},
             .rows = by_vlan("ieee8021QBridge").under({kComponent})});

    const auto known = [](auto fact) { return [fact](const Known& one) { return fact(one.vid, *one.station); }; };
    const auto address = [this](const Known& one, const Index& row) -> std::optional<Value> {
        if (!knows(one.vid, *one.station)) return {};
        return octets_of(row.data(), row.size());
    };
    d.table({.name = "dot1dTpFdbTable",
             .show = "show uib default mac address-table address {mac}",
             .key = {kMac},
             .rows = rows_of(by_address_, {{1, "dot1dTpFdbAddress", address},
                                           {2, "dot1dTpFdbPort", known(port)},
                                           {3, "dot1dTpFdbStatus", known(status)}})});
}

void Forwarding::add_group_tables(Description& d) {
    const auto groups = [this](const std::string& prefix) {
        const auto list = [this](bool with_fixed) {
            return [this, with_fixed](const Group& group, const Index& row) { return members(group, row, with_fixed); };
        };
        return rows_of(groups_,
                       {{2, prefix + "TpGroupEgressPorts", list(true)}, {3, prefix + "TpGroupLearnt", list(false)}});
    };
    d.table({.name = "dot1qTpGroupTable",
             .show = "show debugging mcast group_table [vlan {int} mac {mac}]",
             .key = {kInteger, kMac},
             .rows = groups("dot1q")});
    d.table({.name = "ieee8021QBridgeTpGroupTable",
             .show = "show snmp ieee mcast group-table [vlan {int:2} mac {mac:3}]",
             .key = {kInteger, kInteger, kMac},
             .rows = groups("ieee8021QBridge").under({kComponent})});
}

void Forwarding::add_static_tables(Description& d) {
    const auto fixed = [](auto fact) {
        return [fact](const Group& group) { return group.is_fixed() ? std::optional(fact(group)) : std::nullopt; };
    };
    // For frames from every port.
    const auto entries = [&](const std::string& prefix, int column, const std::string& status, int its_status) {
        return rows_of(groups_, {{3, prefix + "StaticMulticastStaticEgressPorts",
                                  fixed([](const Group& group) { return group.fixed; })},
                                 {column, prefix + status, fixed([its_status](const Group&) { return its_status; })}})
            .ending({0}, 7);
    };
    d.table({.name = "dot1qStaticMulticastTable",
             .show = "show debugging mcast static_table [vlan {int} mac {mac}]",
             .key = {kInteger, kMac, kInteger},
             .rows = entries("dot1q", 5, "StaticMulticastStatus", 3)});  // permanent
    d.table({.name = "ieee8021QBridgeStaticMulticastTable",
             .show = "show snmp ieee mcast static-table [vlan {int:2} mac {mac:3}]",
             .key = {kInteger, kInteger, kMac, kInteger},
             .rows = entries("ieee8021QBridge", 6, "StaticMulticastRowStatus", 1).under({kComponent})});  // active
    // An address that is not static yet has no ports.
    const FindRow<PortList> ports_of = [this](const Index& row) -> std::optional<std::pair<Index, PortList>> {
        const auto group = groups_.find(row);
        return std::pair{row, group != groups_.end() ? group->second.fixed : PortList()};
    };
    for (const char* show : {"show debugging mcast static_table egressport vlan {int} mac {mac}",
                             "show snmp ieee mcast static-table egressport vlan {int} mac {mac}"})
        d.lookup(show, rows_from(ports_of, {{3, "egress", [](const PortList& ports) { return ports; }}}));

    const Lines<Forwarding> global = d.lines(*this);
    for (const bool add : {true, false})
        global.line(std::string(add ? "" : "no ") + "mac address-table static {mac} vlan {1..4094} interface {word}",
                    [this, add](const Arguments& arguments) { set_fixed(arguments, add); });
    global.line("no mac address-table static {mac} vlan {1..4094}",
                [this](const Arguments& arguments) { remove_fixed(arguments); });
}

void Forwarding::add_filtering_modes(Description& d) {
    // The command has the port's name, and nothing for the first row.
    d.table({.name = "nL2FDBMulticastFilterModeTable",
             .show = "show debugging multicast filtering-mode [interface {word}]",
             .rows = rows_of(filtering_, {{2, "nL2FDBMcastFilterMode", &Filtering::mode}}),
             .agrees = [this](const Index& row, const Arguments& arguments) {
                 return row[0] == (arguments[0].present ? ports_.interfaces().find(arguments[0].text) : 0);
             }});
    ports_.lines(d)
        .of(filtering_)
        .choice("multicast filtering-mode forward-all|forward-unregistered|filter-unregistered", &Filtering::mode);
}

void add_forwarding(Switch& areas) { areas.area<Forwarding>(); }

}  // namespace sw
