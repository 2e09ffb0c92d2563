// The simulated switch through the library: tunnels, proxy ARP and multicast routing.
#include "support/simulated_switch.h"

namespace sw {
namespace {

// A row of tunnelInetConfigTable, from 192.0.2.1 to 203.0.113.n.
Index tunnel(oid n, oid method, oid id) { return {1, 4, 192, 0, 2, 1, 1, 4, 203, 0, 113, n, method, id}; }
const std::string kHome("\xc0\x00\x02\x01", 4), kFar("\xcb\x00\x71\x0a", 4), kNowhere(4, '\0');

TEST_F(OnSwitch, TunnelsComeAndGoWithTheirInterfaces) {
    const Index row = tunnel(10, 12, 7);
    const std::int64_t interfaces = get("ifNumber").number();
    now_ = seconds(5);
    make_row("tunnelInetConfigStatus", row);
    EXPECT_EQ(get("tunnelInetConfigIfIndex", row), 903);
    expect_row({903}, {{"tunnelIfLocalInetAddress", kHome}, {"tunnelIfRemoteAddress", kFar}});
    expect_row({903}, {{"ifDescr", "IPv6 over IPv4 tunnel7"}, {"ifType", 131}, {"ifOperStatus", 1}});
    EXPECT_EQ(get("tunnelIfEncapsMethod", {903}), 12);
    expect_row({0}, {{"ifNumber", interfaces + 1}, {"ifTableLastChange", 500}});
    expect({{"ifAlias", {903}, "to the lab"}, {"tunnelIfRemoteInetAddress", {903}, kNowhere}});
    EXPECT_EQ(get("ifOperStatus", {903}), 2);  // it ends nowhere
    EXPECT_EQ(get("tunnelInetConfigStatus", row), kNone);
    expect({{"tunnelIfRemoteInetAddress", {903}, kFar}});
    remove_row("tunnelInetConfigStatus", row);
    expect_row({903}, {{"tunnelIfHopLimit", kNone}, {"ifAlias", kNone}});
    EXPECT_EQ(get("ifNumber"), interfaces);

    // The methods that there are, and what cannot be.
    for (const oid method : {1u, 11u, 13u}) {
        const Index other = tunnel(10, method, 127);
        make_row("tunnelInetConfigStatus", other);
        expect_row({1023}, {{"tunnelIfEncapsMethod", method}, {"ifOperStatus", method == 1 ? 2 : 1}});
        remove_row("tunnelInetConfigStatus", other);
    }
    expect({{"tunnelInetConfigStatus", tunnel(10, 12, 1), 4, "such a tunnel already"},
            {"tunnelInetConfigStatus", tunnel(9, 12, 3), 4, "a tunnel with these ends"},
            {"tunnelInetConfigStatus", tunnel(10, 12, 1), 6, "no such tunnel"},
            {"tunnelInetConfigStatus", tunnel(9, 12, 3), 6, "no such tunnel"}});
}

TEST_F(OnSwitch, EndOfATunnelMakesItUnlessItIsRefused) {
    const Index made{960};
    EXPECT_EQ(set({{"tunnelIfLocalInetAddress", made, kHome}}), 0);
    expect_row(made, {{"tunnelIfLocalAddress", kHome}, {"ifName", "tunnel64"}});
    log_.clear();  // the probe for a tunnel that is not there
    expect({{"tunnelIfLocalInetAddress", made, kNowhere}});
    // A tunnel that was made for an address which is then refused goes again; one that was there stays.
    const std::string group("\xef\x01\x01\x01", 4);
    expect_refused(set({{"tunnelIfLocalInetAddress", {961}, group}}), "not one of a host");
    EXPECT_EQ(get("ifName", {961}), kNone);
    expect_refused(set({{"tunnelIfLocalInetAddress", made, group}}), "not one of a host");
    EXPECT_EQ(get("tunnelIfLocalInetAddress", made), kNowhere);
    EXPECT_NE(set({{"tunnelIfLocalInetAddress", {5121}, kHome}}), 0);
    EXPECT_TRUE(configure(5, "interface port1"));
    expect_refused(-1, "tunnel source 192.0.2.1", "port1 is not a tunnel");
}

TEST_F(OnSwitch, TunnelTakesItsAddressesWithIt) {
    const Index address{1, 4, 10, 99, 0, 1}, network{1, 4, 10, 99, 0, 0, 24};
    const Index connected = join({network, {2, 0, 0, 1, 4, 0, 0, 0, 0}});
    EXPECT_EQ(set({{"ipAddressIfIndex", address, 897}, {"ipAddressRowStatus", address, 4}}), 0);
    EXPECT_EQ(get("ipAddressIfIndex", address), 897);
    EXPECT_EQ(get("ipAddressPrefixOrigin", join({{897}, network})), 2);
    EXPECT_EQ(get("inetCidrRouteIfIndex", connected), 897);
    remove_row("tunnelInetConfigStatus", tunnel(9, 12, 1));
    EXPECT_EQ(get("ipAddressIfIndex", address), kNone);
    EXPECT_EQ(get("inetCidrRouteIfIndex", connected), kNone);
    // Nor can a route go through it any more.
    expect_refused(5, "ipv6 route 2001:db8::/32 tunnel 1 fe80::1", "no such tunnel");
}

TEST_F(OnSwitch, SwitchesProxyArpPerInterface) {
    for (const std::string table : {"proxyARP", "localproxyARP"}) {
        const std::string status = table + "RowStatus";
        EXPECT_EQ(set({{"nVlanInterfaceRowStatus", {30}, 4}, {status, {1054}, 4}}), 0);
        EXPECT_EQ(get(status, {1054}), 1);
        EXPECT_EQ(get(table + "Number"), 2);
        remove_row(status, {1054});
        EXPECT_EQ(set({{status, {1054}, 4}, {"nVlanInterfaceRowStatus", {30}, 6}}), 0);
        EXPECT_EQ(get(status, {1054}), kNone);
        EXPECT_EQ(get(table + "Number"), 1);
    }
    expect({{"proxyARPRowStatus", {5121}, 4, "port1 is not a VLAN interface"}});
}

// --- Multicast routing -----------------------------------------------------------------------------------------------

const Index kFirst{1, 4, 239, 1, 0, 1, 32, 1, 4, 10, 0, 10, 10, 32};

TEST_F(OnSwitch, RoutesMulticastInEachVrf) {
    const std::pair<const char*, std::size_t> vrfs[] = {{"", 3}, {"red", 1}, {"blue", 0}};
    for (const auto& [vrf, count] : vrfs) {
        services::services().context.vrf = vrf;
        EXPECT_EQ(get("ipMcastRouteEntryCount"), count);
        expect_rows(count, {"ipMcastRouteProtocol", "ipMcastRouteNextHopState"});
    }
    services::services().context.vrf = "red";
    EXPECT_EQ(rows("ipMcastInterfaceTtl"), (std::vector<Index>{{1, 898}, {1, 1054}}));
    EXPECT_EQ(get("ipMcastRouteInIfIndex", kFirst), kNone);
    services::services().context.vrf.reset();
    EXPECT_EQ(get("ipMcastRouteInIfIndex", kFirst), 1034);
    EXPECT_EQ(get("ipMcastRouteGroup", kFirst), std::string("\xef\x01\x00\x01", 4));
    now_ = seconds(100);  // 40 seconds after data was seen
    EXPECT_EQ(get("ipMcastRouteExpiryTime", kFirst), 17000);
    // A walk goes on from an index that is cut short or of no row.
    const std::vector<Index> all = rows("ipMcastRouteProtocol"), hops = rows("ipMcastRouteNextHopState");
    for (std::size_t length = 1; length < hops.front().size(); ++length) {
        const Index cut(hops.front().begin(), hops.front().begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(next("ipMcastRouteNextHopState", cut), hops[0]);
        EXPECT_EQ(next("ipMcastRouteProtocol", cut), length < all[0].size() ? all[0] : all[1]);
    }
    EXPECT_EQ(next("ipMcastRouteProtocol", {1, 4, 239, 1, 0, 2, 0, 1, 4, 1, 2, 3, 4, 32}), all[1]);
    EXPECT_EQ(next("ipMcastRouteNextHopState", {1, 4, 0, 0, 0, 0, 8}), hops[0]);
}

TEST_F(OnSwitch, ForgetsMulticastRoutesWithTheirInterfacesAndWhenSwitchedOff) {
    expect({{"ipMcastInterfaceTtl", {1, 1034}, 1}, {"ipMcastInterfaceRateLimit", {1, 1034}, 0}});
    expect({{"ipMcastInterfaceStorageType", {1, 1034}, 5}});
    now_ = seconds(7);
    expect({{"ipMcastEnabled", {0}, 2}});
    EXPECT_EQ(get("ipMcastRouteEntryCount"), 0);
    expect_rows(0, {"ipMcastRouteNextHopState"});
    expect({{"ipMcastEnabled", {0}, 1}});
    EXPECT_EQ(get("ipMcastRouteTimeStamp", kFirst), 700);
    // Where hosts cannot be reached, a next hop is pruned.
    const Index hop = rows("ipMcastRouteNextHopState").front();
    EXPECT_EQ(get("ipMcastRouteNextHopState", hop), 2);
    expect({{"ifAdminStatus", {1025}, 2}});
    EXPECT_EQ(get("ipMcastRouteNextHopState", hop), 1);
    remove_row("nVlanInterfaceRowStatus", {10});
    expect_rows(2, {"ipMcastRouteInIfIndex"});
    expect_rows(0, {"ipMcastRouteNextHopState"});
    EXPECT_EQ(rows("ipMcastInterfaceTtl"), (std::vector<Index>{{1, 1025}}));
    make_row("nVlanInterfaceRowStatus", {10});
    expect_rows(2, {"ipMcastInterfaceTtl"});
}

}  // namespace
}  // namespace sw
