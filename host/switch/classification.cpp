// VLANs of frames by what they carry: by source address, by IP subnet, and by protocol for each port.
#include "switch/vlans.h"

#include <array>

namespace sw {
namespace {

enum Frame : std::uint32_t { kEthernet2 = 1, kSnap = 2, kLlc = 5 };

// The octets of a protocol value in commands, in which the low digit comes first; none where it is another text.
std::optional<Index> protocol_of(std::string_view digits) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    if (digits.size() != 4) return {};
    Index protocol{2, 0, 0};
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const std::size_t digit = kDigits.find(digits[i]);
        if (digit == kDigits.npos) return {};
        protocol[1 + i / 2] |= static_cast<oid>(digit << 4 * (i % 2));
    }
    return protocol;
}

// The frame type and the protocol value that a show command ends with.
std::optional<Index> protocol_row(const Arguments& arguments) {
    const std::optional<Index> protocol = protocol_of(arguments[1].text);
    return protocol ? std::optional(join({{arguments[0].number}, *protocol})) : std::nullopt;
}

// Rows by frame type as a table has them that numbers LLC with 3.
Rows with_llc_as_3(const Rows& rows) {
    return {rows.objects(), [rows](std::size_t column, Index index, bool exact) -> std::optional<Answer> {
                if (!index.empty() && index[0] > 3) return {};
                if (!index.empty() && index[0] == 3) index[0] = kLlc;
                std::optional<Answer> answer = exact ? rows.at(column, index) : rows.from(column, index);
                if (answer && answer->index[0] == kLlc) answer->index[0] = 3;
                return answer;
            }};
}

class Classification : public Area {
public:
    explicit Classification(Switch&);
    void describe(Description&) override;
    void vlan_removed(std::uint32_t vid) override;

private:
    struct Class {
        std::uint32_t vid;
        std::uint32_t priority;
    };
    using Classes = std::map<Index, Class>;

    // The VLAN and the priority that a line ends with.
    void classify(Classes& classes, const Index& index, const Argument& vid, const Argument& priority);
    static void forget(Classes& classes, const Index& index);
    void remove_group(std::uint32_t group);
    void add_protocols(Description&);

    Ports& ports_;
    Vlans& vlans_;
    Classes macs_;                           // by MAC address
    Classes subnets_;                        // by address type, address, prefix length
    std::map<Index, std::uint32_t> groups_;  // by frame type, protocol
    Classes bindings_;                       // by ifIndex, group
};

Classification::Classification(Switch& its_switch)
    : Area(its_switch), ports_(its_switch.area<Ports>()), vlans_(its_switch.area<Vlans>()) {
    macs_ = {{{0x02, 0x50, 0, 0, 0, 1}, {20, 5}}, {{0x02, 0x50, 0, 0, 0, 2}, {20, 5}}};  // phones
    subnets_ = {{{1, 4, 10, 0, 10, 0, 24}, {10, 0}},
                {{2, 16, 0x20, 1, 0xd, 0xb8, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 64}, {10, 0}}};
    groups_ = {{{kEthernet2, 2, 0x86, 0xdd}, 1}, {{kLlc, 2, 0xe0, 0xe0}, 2}};  // IPv6, IPX
    bindings_ = {{{kPortIfIndexBase + 13, 1}, {10, 0}}, {{kPortIfIndexBase + 14, 2}, {20, 3}}};
}

void Classification::vlan_removed(std::uint32_t vid) {
    for (Classes* classes : {&macs_, &subnets_, &bindings_})
        std::erase_if(*classes, [vid](const auto& entry) { return entry.second.vid == vid; });
}

void Classification::classify(Classes& classes, const Index& index, const Argument& vid, const Argument& priority) {
    require(vlans_.has(vid.number), "there is no such VLAN");
    classes[index] = {vid.number, priority.number};
}

void Classification::forget(Classes& classes, const Index& index) {
    require(classes.erase(index) > 0, "it has no VLAN");
}

// With the protocols that are in it and its VLANs on ports.
void Classification::remove_group(std::uint32_t group) {
    const std::size_t removed = std::erase_if(groups_, [group](const auto& entry) { return entry.second == group; });
    require(removed > 0, "there is no such profile");
    std::erase_if(bindings_, [group](const auto& entry) { return entry.first[1] == group; });
}

void Classification::describe(Description& d) {
    const auto last = [](const Arguments& arguments) { return arguments.back().index(); };
    const Rows macs = rows_of(macs_, {{2, "nVlanMacVlanId", &Class::vid},
                                      {3, "nVlanMacVlanPriority", &Class::priority},
                                      {4, "nVlanMacVlanStatus", 1},       // in use
                                      {5, "nVlanMacVlanRowStatus", 1}});  // active
    d.table({.name = "nVlanMacVlanTable", .show = "show snmp mac-vlan {mac}", .key = {kMac}, .rows = macs});
    d.lookup("show snmp mac-vlan {mac}", macs, last);
    const Rows subnets = rows_of(subnets_, {{4, "nVlanSubnetVlanId", &Class::vid},
                                            {5, "nVlanSubnetVlanPriority", &Class::priority},
                                            {6, "nVlanSubnetVlanRowStatus", 1}});
    d.table({.name = "nVlanSubnetVlanTable",
             .show = "show snmp subnet-vlan {int} {address/bits}",
             .key = {kTextPrefix},
             .rows = subnets});
    d.lookup("show snmp subnet-vlan {int} {address/bits}", subnets, last);

    const Lines<Classification> global = d.lines(*this);
    const std::pair<std::string, Classes*> kinds[] = {{"mac-vlan {mac}", &macs_},
                                                      {"subnet-vlan ipv4 {ipv4/bits}", &subnets_},
                                                      {"subnet-vlan ipv6 {ipv6/bits}", &subnets_}};
    for (const auto& [what, classes] : kinds) {
        global.line(what + " vlan {1..4094} priority {0..7}", [this, classes = classes](const Arguments& arguments) {
            classify(*classes, arguments[0].index(), arguments[1], arguments[2]);
        });
        global.line("no " + what,
                    [classes = classes](const Arguments& arguments) { forget(*classes, arguments[0].index()); });
    }
    add_protocols(d);
}

void Classification::add_protocols(Description& d) {
    const auto groups = [this](int column, const std::string& name) {
        return rows_of(groups_, {{column, name + "GroupId", [](std::uint32_t group) { return group; }},
                                 {column + 1, name + "GroupRowStatus", 1}});
    };
    // Whether the digits of a command are the protocol that the key ends with.
    const auto agrees = [](const Index& index, const Arguments& arguments) {
        if (!arguments[1].present) return true;
        const std::optional<Index> protocol = protocol_of(arguments[1].text);
        return protocol && std::equal(protocol->rbegin(), protocol->rend(), index.rbegin());
    };
    const KeyLayout key{kInteger, counted_string(2)};
    const Rows qbridge = groups(3, "dot1vProtocol"), ieee = groups(4, "ieee8021QBridgeProtocol"),
               corvin = with_llc_as_3(groups(3, "nVlanProtocolVlan"));
    d.table({.name = "dot1vProtocolGroupTable",
             .show = "show snmp qbridge protocol-group [{int} 0x{word}]",
             .key = key,
             .rows = qbridge,
             .agrees = agrees});
    d.table({.name = "ieee8021QBridgeProtocolGroupTable",
             .show = "show snmp ieee protocol-group [{int:2} 0x{word}]",
             .key = {kInteger, kInteger, counted_string(2)},
             .rows = ieee.under({kComponent}),
             .agrees = agrees});
    d.table({.name = "nVlanProtocolVlanGroupTable",
             .show = "show snmp protocol-group [{int} 0x{word}]",
             .key = key,
             .rows = corvin,
             .agrees = agrees});
    d.lookup("show snmp qbridge protocol-group-id {int} 0x{word}", qbridge, protocol_row);
    d.lookup("show snmp ieee protocol-group-id {int} 0x{word}", ieee, protocol_row);
    d.lookup("show snmp protocol-group-id {int} 0x{word}", corvin, protocol_row);

    const auto bindings = [this](const std::string& vid, const std::string& status) {
        return rows_of(bindings_, {{2, vid, &Class::vid}, {3, status, 1}});
    };
    d.table({.name = "dot1vProtocolPortTable",
             .show = "show snmp qbridge protocol-vlan [{int} {int}]",
             .key = {kInteger, kInteger},
             .rows = bindings("dot1vProtocolPortGroupVid", "dot1vProtocolPortRowStatus")});
    d.table({.name = "ieee8021QBridgeProtocolPortTable",
             .show = "show snmp ieee protocol-vlan [{int:2} {int:3}]",
             .key = {kInteger, kInteger, kInteger},
             .rows = bindings("ieee8021QBridgeProtocolPortGroupVid", "ieee8021QBridgeProtocolPortRowStatus")
                         .under({kComponent})});
    const Rows with_priority = rows_of(bindings_, {{3, "nVlanProtocolVlanVlanId", &Class::vid},
                                                   {4, "nVlanProtocolVlanPriority", &Class::priority},
                                                   {5, "nVlanProtocolVlanRowStatus", 1}});
    d.table({.name = "nVlanProtocolVlanIfCtrlTable",
             .show = "show snmp protocol-vlan [{int} {int}]",
             .key = {kInteger, kInteger},
             .rows = with_priority});
    d.lookup("show snmp protocol-vlan {int} {int}", with_priority);

    const Lines<Classification> global = d.lines(*this);
    global.line("protocol-vlan profile {1..16} frame-type ethernet2|snap|llc ether-type 0x{word}",
                [this](const Arguments& arguments) {
                    const std::optional<Index> protocol = protocol_of(arguments[2].text);
                    require(protocol.has_value(), "the protocol value has four digits");
                    const std::string_view frame = arguments[1].text;
                    groups_[join({{frame == "llc"    ? kLlc
                                   : frame == "snap" ? kSnap
                                                     : kEthernet2},
                                  *protocol})] = arguments[0].number;
                });
    global.line("no protocol-vlan profile {1..16}",
                [this](const Arguments& arguments) { remove_group(arguments[0].number); });
    const Lines<Port> port = ports_.lines(d);
    port.line("protocol-vlan profile {1..16} vlan {1..4094} [priority {0..7}]",
              [this](Port&, const Arguments& arguments, const Entered& entered) {
                  const std::uint32_t group = arguments[0].number;
                  require(std::any_of(groups_.begin(), groups_.end(),
                                      [group](const auto& entry) { return entry.second == group; }),
                          "there is no such profile");
                  classify(bindings_, {entered.object, group}, arguments[1], arguments[2]);
              });
    port.line("no protocol-vlan profile {1..16}", [this](Port&, const Arguments& arguments, const Entered& entered) {
        forget(bindings_, {entered.object, arguments[0].number});
    });
}

}  // namespace

void add_classification(Switch& areas) { areas.area<Classification>(); }

}  // namespace sw
