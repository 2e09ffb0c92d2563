// Private VLANs: stations in an isolated or community VLAN reach those of its primary VLAN's promiscuous ports, and in a
// community one another. A port has pairs of a secondary VLAN and its primary one, and is in both.
#include "switch/vlans.h"

namespace sw {
namespace {

constexpr Mode kSpanningTree{"spanning tree"};

class PrivateVlans : public Area {
public:
    explicit PrivateVlans(Switch&);
    void describe(Description&) override;
    void port_changed(std::uint32_t ifindex) override;
    void vlan_removed(std::uint32_t vid) override { forget(vid); }

private:
    enum Type : std::uint32_t { kPrimary = 1, kIsolated, kCommunity };
    struct PrivateVlan {
        Type type = kPrimary;
        std::uint32_t primary = 0;  // of a secondary VLAN; 0: none
    };
    using Pairs = std::map<Index, std::uint32_t>;

    bool is_primary(std::uint32_t vid) const;
    bool is_secondary(std::uint32_t vid) const;
    void set_type(std::uint32_t vid, Type type);
    void associate(std::uint32_t vid, std::uint32_t primary);
    void forget(std::uint32_t vid);  // the VLAN, or only its type, is gone
    void map(std::uint32_t ifindex, std::uint32_t vid, std::uint32_t primary);
    Pairs::iterator unmap(Pairs::iterator pair);
    void add_lines(Description&);

    Ports& ports_;
    Vlans& vlans_;
    std::map<std::uint32_t, PrivateVlan> types_;  // by VLAN id
    Pairs pairs_;                                 // primary VLAN by ifIndex, secondary VLAN
};

// The guests are isolated from each other in the office's network.
PrivateVlans::PrivateVlans(Switch& its_switch)
    : Area(its_switch), ports_(its_switch.area<Ports>()), vlans_(its_switch.area<Vlans>()) {
    types_ = {{10, {kPrimary, 0}}, {30, {kIsolated, 10}}};
    for (const auto& [ifindex, port] : vlans_.ports())
        if (is_private(port.mode)) map(ifindex, 30, 10);
}

bool PrivateVlans::is_primary(std::uint32_t vid) const {
    const auto vlan = types_.find(vid);
    return vlan != types_.end() && vlan->second.type == kPrimary;
}

bool PrivateVlans::is_secondary(std::uint32_t vid) const { return types_.contains(vid) && !is_primary(vid); }

// A VLAN that was primary or becomes it loses what it was associated with.
void PrivateVlans::set_type(std::uint32_t vid, Type type) {
    require(vid != kDefaultVlan, "the default VLAN cannot be private");
    if (types_.contains(vid) && is_primary(vid) != (type == kPrimary)) forget(vid);
    types_[vid].type = type;
}

void PrivateVlans::associate(std::uint32_t vid, std::uint32_t primary) {
    require(is_secondary(vid), "it is not a secondary VLAN");
    require(is_primary(primary), "it is not a primary VLAN");
    for (auto pair = pairs_.begin(); pair != pairs_.end();)
        pair = pair->first[1] == vid && pair->second != primary ? unmap(pair) : std::next(pair);
    types_[vid].primary = primary;
}

void PrivateVlans::forget(std::uint32_t vid) {
    types_.erase(vid);
    for (auto& [secondary, vlan] : types_)
        if (vlan.primary == vid) vlan.primary = 0;
    for (auto pair = pairs_.begin(); pair != pairs_.end();)
        pair = pair->first[1] == vid || pair->second == vid ? unmap(pair) : std::next(pair);
}

// A host's own VLAN is its secondary one, a promiscuous port's the primary one. A host has one pair, a promiscuous port
// several of one primary VLAN.
void PrivateVlans::map(std::uint32_t ifindex, std::uint32_t vid, std::uint32_t primary) {
    const auto port = vlans_.ports().find(ifindex);
    require(port != vlans_.ports().end() && is_private(port->second.mode), "it is not a private VLAN port");
    require(is_secondary(vid) && types_[vid].primary == primary, "the VLANs are not associated");
    const bool is_host = port->second.mode == PortMode::private_host;
    for (const auto& [row, other] : pairs_)
        require(row[0] != ifindex || row[1] == vid || (!is_host && other == primary), "the port has another pair");
    pairs_[{ifindex, vid}] = primary;
    vlans_.set_native(ifindex, is_host ? vid : primary);
    vlans_.join(ifindex, is_host ? primary : vid, true);
}

// Returns the pair after it. A port without pairs is in the default VLAN.
PrivateVlans::Pairs::iterator PrivateVlans::unmap(Pairs::iterator pair) {
    const std::uint32_t ifindex = pair->first[0], vid = pair->first[1], primary = pair->second;
    const auto next = pairs_.erase(pair);
    if (vlans_.has(vid)) vlans_.leave(ifindex, vid);
    const auto other = pairs_.lower_bound({ifindex});
    if (other != pairs_.end() && other->first[0] == ifindex) return next;
    if (vlans_.has(primary)) vlans_.leave(ifindex, primary);
    vlans_.set_native(ifindex, kDefaultVlan);
    return next;
}

// A port whose mode was set has left its VLANs but one, and has no pairs.
void PrivateVlans::port_changed(std::uint32_t ifindex) {
    const bool can_have_pairs = is_private(vlans_.ports().at(ifindex).mode);
    const std::size_t lost = std::erase_if(pairs_, [&](const auto& pair) {
        const bool is_in_both = vlans_.has(pair.first[1], ifindex) && vlans_.has(pair.second, ifindex);
        return pair.first[0] == ifindex && !(can_have_pairs && is_in_both);
    });
    if (lost > 0) vlans_.set_native(ifindex, kDefaultVlan);
}

void PrivateVlans::describe(Description& d) {
    const Rows vlans = rows_of(types_, {{2, "nPrivateVlanVlanType", &PrivateVlan::type},
                                        {3, "nPrivateVlanVlanAssocPriVlan", &PrivateVlan::primary},
                                        {4, "nPrivateVlanVlanRowStatus", 1}});  // active
    d.table({.name = "nPrivateVlanVlanTable", .show = "show snmp pvlan {int}", .rows = vlans});
    d.lookup("show snmp pvlan {int}", vlans);
    d.table(
        {.name = "nPrivateVlanIfVlanMapTable",
         .show = "show snmp pvlan interface {int} {int}",
         .key = KeyLayout({kInteger, kInteger}, 16),
         .rows = rows_of(pairs_, {{3, "nPrivateVlanIfVlanMapPriVlan", [](std::uint32_t primary) { return primary; }},
                                  {4, "nPrivateVlanIfVlanMapRowStatus", 1}})});
    add_lines(d);
}

void PrivateVlans::add_lines(Description& d) {
    const Lines<Vlan> vlan = vlans_.lines(d);
    const std::pair<Type, std::string> types[] = {
        {kPrimary, "primary"}, {kIsolated, "isolated"}, {kCommunity, "community"}};
    for (const auto& [type, word] : types) {
        vlan.line("private-vlan " + word, [this, type = type](Vlan&, const Arguments&, const Entered& entered) {
            set_type(entered.object, type);
        });
        vlan.line("no private-vlan " + word, [this, type = type](Vlan&, const Arguments&, const Entered& entered) {
            const auto its = types_.find(entered.object);
            require(its != types_.end() && its->second.type == type, "the VLAN is of another type");
            forget(entered.object);
        });
    }
    vlan.line("private-vlan association add {1..4094}",
              [this](Vlan&, const Arguments& arguments, const Entered& entered) {
                  associate(arguments[0].number, entered.object);
              });

    const Lines<PrivateVlans> global = d.lines(*this);
    global.line("pvlan modify association {1..4094} {1..4094}",
                [this](const Arguments& arguments) { associate(arguments[0].number, arguments[1].number); });
    global.line("pvlan port-association create|modify {int} {1..4094} {1..4094}", [this](const Arguments& arguments) {
        map(arguments[1].number, arguments[2].number, arguments[3].number);
    });
    global.line("pvlan port-association destroy {int} {1..4094}", [this](const Arguments& arguments) {
        const auto pair = pairs_.find({arguments[0].number, arguments[1].number});
        require(pair != pairs_.end(), "the port has no such pair");
        unmap(pair);
    });
    // Secondary VLANs are in the spanning tree of their primary one: there is just one tree.
    global.line("spanning-tree mst configuration", [] { return Entered{kSpanningTree}; });
    d.lines(*this, kSpanningTree).line("private-vlan synchronize", [] {});
}

}  // namespace

void add_private_vlans(Switch& areas) { areas.area<PrivateVlans>(); }

}  // namespace sw
