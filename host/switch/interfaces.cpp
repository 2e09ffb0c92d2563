// Interfaces: ifTable and ifXTable over all there are, and the lines that enter one and set what all of them have.
#include "switch/interfaces.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace sw {
namespace {

constexpr std::size_t kLongestAlias = 64;

Direction direction(Duration up, std::uint64_t unicast_rate, std::uint64_t frame_size, std::uint64_t n) {
    const auto count = [&](std::uint64_t rate) { return rate * static_cast<std::uint64_t>(up.count()) / 1000; };
    Direction d{};
    d.unicast = count(unicast_rate);
    d.multicast = count(2 + n % 5);
    d.broadcast = count(1 + n % 3);
    d.not_unicast = d.multicast + d.broadcast;
    d.octets = d.unicast * frame_size + d.not_unicast * 90;
    d.discards = d.unicast / 50000;
    d.errors = d.unicast / 400000;
    return d;
}

// Capped where it does not fit.
std::uint32_t bits_per_second(const Interface& i) {
    constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
    return i.mbps > kMost / 1'000'000 ? kMost : i.mbps * 1'000'000;
}

}  // namespace

Traffic traffic(std::uint32_t ifindex, Duration up) {
    const std::uint64_t n = ifindex % kVlanIfIndexBase;  // port number or VLAN id
    return {direction(up, 90 + 37 * n, 420 + 11 * (n % 60), n), direction(up, 80 + 29 * n, 560 + 7 * (n % 60), n + 1)};
}

void Interfaces::make(std::uint32_t ifindex, Interface interface) {
    interface.created = changed_ = uptime();
    interfaces_.insert_or_assign(ifindex, std::move(interface));
    settle(ifindex);
    switch_.announce(&Area::interface_made, ifindex);
}

bool Interfaces::remove(std::uint32_t ifindex) {
    if (interfaces_.erase(ifindex) == 0) return false;
    changed_ = uptime();
    switch_.announce(&Area::interface_removed, ifindex);
    return true;
}

void Interfaces::link(std::uint32_t ifindex, bool carrier, std::uint32_t mbps) {
    const auto entry = interfaces_.find(ifindex);
    if (entry == interfaces_.end()) return;
    entry->second.carrier = carrier;
    entry->second.mbps = mbps;
    settle(ifindex);
}

void Interfaces::settle(std::uint32_t ifindex) {
    Interface& interface = interfaces_.at(ifindex);
    const bool up = interface.enabled && interface.carrier;
    if (up == interface.up.runs) return;
    interface.up.run(up, uptime());
    switch_.announce(&Area::interface_went, ifindex, up);
}

const Interface* Interfaces::find(std::uint32_t ifindex) const {
    const auto entry = interfaces_.find(ifindex);
    return entry == interfaces_.end() ? nullptr : &entry->second;
}

std::uint32_t Interfaces::find(std::string_view name) const {
    const auto entry = std::find_if(interfaces_.begin(), interfaces_.end(),
                                    [&](const auto& each) { return each.second.name == name; });
    return entry == interfaces_.end() ? 0 : entry->first;
}

bool Interfaces::is_up(std::uint32_t ifindex) const {
    const Interface* interface = find(ifindex);
    return interface != nullptr && interface->up.runs;
}

Lines<Interface> Interfaces::lines(Description& d) {
    return lines(d, 0, std::numeric_limits<std::uint32_t>::max(), "interface");
}

Lines<Interface> Interfaces::lines(Description& d, std::uint32_t low, std::uint32_t high, const std::string& kind) {
    const auto find = [this, low, high, kind](const Entered& entered) -> Interface& {
        const auto entry = interfaces_.find(entered.object);
        require(entry != interfaces_.end(), "the interface is gone");
        require(entered.object >= low && entered.object <= high,
                fmt::format("{} is not a {}", entry->second.name, kind));
        return entry->second;
    };
    return d.lines<Interface>({kInterface}, find, [this](const Entered& entered) { settle(entered.object); });
}

void Interfaces::describe(Description& d) {
    d.scalars("interfacesGlobals", "show interface_uib interfaces_g",
              {{1, "ifNumber", [this] { return interfaces_.size(); }}});
    d.scalars("ifMIBGlobals", "show interface_uib ifMIB_g",
              {{1, "ifTableLastChange", &changed_}, {2, "ifStackLastChange", Duration()}});

    const auto counter = [this](Direction Traffic::*way, std::uint64_t Direction::*what) {
        return [this, way, what](const Interface& i, const Index& index) {
            return traffic(index[0], i.up.total(uptime())).*way.*what;
        };
    };
    const auto in = [&](auto what) { return counter(&Traffic::in, what); };
    const auto out = [&](auto what) { return counter(&Traffic::out, what); };
    d.table({.name = "ifTable",
             .show = "show interface_uib interfaces {int}",
             .rows = rows_of(interfaces_, {{1, "ifIndex", from_index()},
                                           {2, "ifDescr", &Interface::description},
                                           {3, "ifType", &Interface::type},
                                           {4, "ifMtu", 1500},
                                           {5, "ifSpeed", bits_per_second},
                                           {6, "ifPhysAddress", &Interface::mac},
                                           {7, "ifAdminStatus", &Interface::enabled},
                                           {8, "ifOperStatus", [](const Interface& i) { return i.up.runs; }},
                                           {9, "ifLastChange", [](const Interface& i) { return i.up.since; }},
                                           {10, "ifInOctets", in(&Direction::octets)},
                                           {11, "ifInUcastPkts", in(&Direction::unicast)},
                                           {12, "ifInNUcastPkts", in(&Direction::not_unicast)},
                                           {13, "ifInDiscards", in(&Direction::discards)},
                                           {14, "ifInErrors", in(&Direction::errors)},
                                           {15, "ifInUnknownProtos", 0},
                                           {16, "ifOutOctets", out(&Direction::octets)},
                                           {17, "ifOutUcastPkts", out(&Direction::unicast)},
                                           {18, "ifOutNUcastPkts", out(&Direction::not_unicast)},
                                           {19, "ifOutDiscards", out(&Direction::discards)},
                                           {20, "ifOutErrors", out(&Direction::errors)},
                                           {21, "ifOutQLen", 0},
                                           {22, "ifSpecific", object_id({0, 0})}})});
    d.table({.name = "ifXTable",
             .show = "show interface_uib ifMIB {int}",
             .rows = rows_of(interfaces_, {{1, "ifName", &Interface::name},
                                           {2, "ifInMulticastPkts", in(&Direction::multicast)},
                                           {3, "ifInBroadcastPkts", in(&Direction::broadcast)},
                                           {4, "ifOutMulticastPkts", out(&Direction::multicast)},
                                           {5, "ifOutBroadcastPkts", out(&Direction::broadcast)},
                                           {6, "ifHCInOctets", wide(in(&Direction::octets))},
                                           {7, "ifHCInUcastPkts", wide(in(&Direction::unicast))},
                                           {8, "ifHCInMulticastPkts", wide(in(&Direction::multicast))},
                                           {9, "ifHCInBroadcastPkts", wide(in(&Direction::broadcast))},
                                           {10, "ifHCOutOctets", wide(out(&Direction::octets))},
                                           {11, "ifHCOutUcastPkts", wide(out(&Direction::unicast))},
                                           {12, "ifHCOutMulticastPkts", wide(out(&Direction::multicast))},
                                           {13, "ifHCOutBroadcastPkts", wide(out(&Direction::broadcast))},
                                           {14, "ifLinkUpDownTrapEnable", &Interface::link_trap},
                                           {15, "ifHighSpeed", &Interface::mbps},
                                           {16, "ifPromiscuousMode", false},
                                           {17, "ifConnectorPresent", &Interface::connector},
                                           {18, "ifAlias", &Interface::alias},
                                           {19, "ifCounterDiscontinuityTime", &Interface::created}})});

    for (const Mode& mode : {kGlobal, kInterface})
        d.lines(*this, mode).line("interface {word}", [this](const Arguments& arguments) {
            const std::uint32_t ifindex = find(arguments[0].text);
            require(ifindex != 0, "there is no such interface");
            return Entered{kInterface, ifindex};
        });
    const Lines<Interface> interface = lines(d);
    interface.set("shutdown", &Interface::enabled, false);
    interface.set("no shutdown", &Interface::enabled, true);
    interface.number("linktrap {0..1}", &Interface::link_trap);
    interface.text("desc {text}", &Interface::alias, kLongestAlias);
    interface.set("no desc", &Interface::alias, "");
}

void add_interfaces(Switch& areas) { areas.area<Interfaces>(); }

}  // namespace sw
