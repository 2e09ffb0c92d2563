// Multicast VLAN registration: the groups that a VLAN carries for the others, and its source and receiver ports.
#include "switch/ports.h"
#include "switch/vlans.h"

#include <map>

namespace sw {
namespace {

constexpr Mode kMvr{"MVR"};
constexpr std::uint32_t kMostGroups = 256;  // in a row

class Mvr : public Area {
public:
    explicit Mvr(Switch&);
    void describe(Description&) override;
    void vlan_removed(std::uint32_t vid) override;

private:
    struct Members {
        PortList source{};
        PortList receive{};
    };

    bool remove_group(const Index& vid_and_group);
    void add_lines(Description&);

    Vlans& vlans_;
    std::map<Index, Value> groups_;             // their first address, by VLAN, group, count
    std::map<std::uint32_t, Members> members_;  // by VLAN id
};

Mvr::Mvr(Switch& its_switch) : Area(its_switch), vlans_(its_switch.area<Vlans>()) {
    const Index first{1, 4, 239, 20, 0, 1};
    groups_.emplace(join({{20}, first, {8}}), octets_of(&first[2], 4));
    members_[20].source.set(25, true);
    for (const std::uint32_t n : {5u, 6u}) members_[20].receive.set(n, true);
}

void Mvr::vlan_removed(std::uint32_t vid) {
    std::erase_if(groups_, [vid](const auto& row) { return row.first[0] == vid; });
    members_.erase(vid);
}

bool Mvr::remove_group(const Index& vid_and_group) {
    const auto begins = [&](const auto& row) {
        return std::equal(vid_and_group.begin(), vid_and_group.end(), row.first.begin());
    };
    return std::erase_if(groups_, begins) != 0;
}

void Mvr::describe(Description& d) {
    d.table({.name = "mvrSourceVlanGroupTable",
             .show = "show mvr group snmp vlan {int} group [{address}]",
             .key = {kInteger, kAddress, kInteger},
             .rows = rows_of(groups_, {{1, "mvrSourceVlanGroupVlanId", from_index()},
                                       {2, "mvrSourceVlanGroupAddressType", from_index(1)},
                                       {3, "mvrSourceVlanGroupAddress", [](const Value& group) { return group; }},
                                       {4, "mvrSourceVlanGroupCount", from_index(7)},
                                       {5, "mvrSourceVlanGroupRowStatus", 1}})});  // active
    d.table({.name = "mvrPortTable",
             .show = "show mvr member snmp vlan {int}",
             .rows = rows_of(members_, {{1, "mvrPortVlanId", from_index()},
                                        {2, "mvrSourcePortList", &Members::source},
                                        {3, "mvrReceivePortList", &Members::receive},
                                        {4, "mvrPortRowStatus", 1}})});
    add_lines(d);
}

void Mvr::add_lines(Description& d) {
    const Lines<Mvr> global = d.lines(*this), mvr = d.lines(*this, kMvr);
    global.line("mvr", [] { return Entered{kMvr}; });
    mvr.line(fmt::format("mvr-group {{ipv4}} count {{1..{}}} vlan {{1..{}}}", kMostGroups, kLastVlan),
             [this](const Arguments& arguments) {
                 const Index vid{arguments[2].number}, group = arguments[0].index();
                 require(vlans_.has(vid[0]), "there is no such VLAN");
                 require(group[2] / 16 == 14, "the group is not a multicast address");
                 remove_group(join({vid, group}));
                 groups_.emplace(join({vid, group, {arguments[1].number}}), octets_of(&group[2], 4));
             });
    mvr.line(fmt::format("no mvr-group {{ipv4}} vlan {{1..{}}}", kLastVlan), [this](const Arguments& arguments) {
        require(remove_group(join({{arguments[1].number}, arguments[0].index()})), "there is no such group");
    });
    const auto ports = [&](const char* role, PortList Members::*list) {
        global.line(fmt::format("mvr snmp vlan {{1..{}}} {} {{int}} {{int}} {{int}}", kLastVlan, role),
                    [this, list](const Arguments& arguments) {
                        require(vlans_.has(arguments[0].number), "there is no such VLAN");
                        members_[arguments[0].number].*list = port_list(&arguments[1]);
                    });
    };
    ports("source", &Members::source);
    ports("receive", &Members::receive);
    // Managers cannot say whose ports: the line has "%d" where the VLAN would be.
    global.line("mvr snmp vlan %d remove all_port", [this] { members_.clear(); });
}

}  // namespace

void add_mvr(Switch& areas) { areas.area<Mvr>(); }

}  // namespace sw
