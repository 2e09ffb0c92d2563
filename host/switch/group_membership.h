// Group membership on router interfaces: which multicast groups the hosts of a VLAN have joined, as the switch's router
// sees it.
#pragma once

#include "switch/vlan_interfaces.h"

#include <map>
#include <string>

namespace sw {

constexpr oid kIgmpType = 1;                    // of addresses and in keys, where MLD has 2
constexpr std::size_t kLongestAccessList = 32;  // octets of its name

// A group, or a source of one, on a port: configured or learned from reports.
struct Membership {
    bool configured = false;
    Duration since{};
    Value reporter{};  // IPv4 address of who reported it
};

class GroupMembership : public Area {
public:
    explicit GroupMembership(Switch&);
    void describe(Description&) override;
    void interface_made(std::uint32_t ifindex) override;
    void interface_removed(std::uint32_t ifindex) override;
    void vlan_removed(std::uint32_t vid) override;

    // Snooping has a row, or has it no longer: its index is port, VLAN interface, group and perhaps source.
    void joined(const Index& row, const Membership& member);
    void left(const Index& row);

private:
    // IGMP on a VLAN interface. The times are in seconds and tenths of seconds, as lines have them.
    struct Router {
        std::uint32_t query_interval = 125;  // seconds
        std::uint32_t version = 3;
        std::uint32_t max_response = 100;  // tenths
        std::uint32_t robustness = 2;
        std::uint32_t last_member_interval = 10;  // tenths
        Duration created{};
        std::uint32_t joins = 0;

        Duration interval() const { return std::chrono::seconds(query_interval); }
        Duration response() const { return std::chrono::milliseconds(100 * max_response); }
    };
    using Members = std::map<oid, Membership>;  // by the port's ifIndex

    // What can be limited, for each protocol.
    struct Access {
        const char *tables, *show, *type, *limit_line;
        std::map<std::uint32_t, std::uint32_t> limits{};  // groups at most, by ifIndex
        std::map<std::uint32_t, std::string> lists{};     // access list by ifIndex
    };

    void add_router_tables(Description&);
    void add_access(Description&, Access&);
    Duration expiry(const Members&, const Router&) const;

    VlanInterfaces& vlan_interfaces_;
    std::map<std::uint32_t, Router> routers_;  // by ifIndex
    std::map<Index, Members> groups_;          // by group, ifIndex; groups are type, length, octets
    std::map<Index, Value> by_interface_;      // the same groups' addresses, by ifIndex, group
    std::map<Index, Members> sources_;         // by group, ifIndex, source without its type
    Access igmp_{"mgmdIgmp", "igmp", "1", "ip igmp limit"};
    Access mld_{"mgmdMld", "mld", "2", "ipv6 mld limit"};
};

}  // namespace sw
