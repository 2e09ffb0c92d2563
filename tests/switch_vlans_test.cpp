// The simulated switch's VLANs through all the modules that show and set them: it is one VLAN model under them.
#include "support/simulated_switch.h"

namespace sw {
namespace {

Index ieee_port(std::uint32_t n) { return {1, 5120 + n}; }

// A VLAN list of 512 octets.
std::string vlans(std::initializer_list<std::uint32_t> members) {
    std::string list(512, '\0');
    for (const std::uint32_t vid : members)
        list[(vid - 1) / 8] = static_cast<char>(list[(vid - 1) / 8] | 0x80 >> (vid - 1) % 8);
    return list;
}

const Index kPhone{0x02, 0x50, 0, 0, 0, 1}, kOffice{1, 4, 10, 0, 10, 0, 24};
const Index kIpv6{1, 2, 0x86, 0xdd}, kIpx{5, 2, 0xe0, 0xe0}, kCorvinIpx{3, 2, 0xe0, 0xe0};

TEST_F(OnSwitch, KeepsVlanSettings) {
    expect({
        {"nVlanPortIfMode", port(1), {6, 5, 4, 3, 2, 1}},
        {"nVlanPortIfAcceptableFrameTypes", port(1), {2, 3, 1}},
        {"ieee8021QBridgePortAcceptableFrameTypes", ieee_port(2), {2, 3, 1}},
        {"nVlanPortIfVlanPrecedence", port(1), {1, 2}},
        {"nVlanPortIfTrunkNativeVlanTag", port(25), {1, 2}},
        {"ieee8021QBridgePortIngressFiltering", ieee_port(1), {1, 2}},
        {"ieee8021QBridgePortMvrpEnabledStatus", ieee_port(1), {1, 2}},
        {"ieee8021QBridgePortRestrictedVlanRegistration", ieee_port(1), {1, 2}},
        {"ieee8021QBridgeMvrpEnabledStatus", {1}, {1, 2}},
        {"nVlanPortIfTrunkNativeVlanTag", port(1), 1, "another mode"},
        {"ieee8021QBridgePvid", ieee_port(13), 20},
        {"ieee8021QBridgePvid", ieee_port(13), 99, "no such VLAN"},
        {"ieee8021QBridgeVlanStaticName", {1, 10}, "the office"},
        {"ieee8021QBridgeVlanStaticEgressPorts", {1, 20}, ports({9, 10, 11, 12, 15, 26})},
        // Each list is a whole one.
        {"nVlanPortIfTagAllowVlanLstFirst2K", port(25), vlans({10, 30})},
        {"nVlanPortIfTagAllowVlanLstSecond2K", port(25), vlans({10, 20})},
        {"nVlanPortIfTagAllowVlanLstFirst2K", port(14), vlans({10, 30})},
        {"nVlanPortIfUntagAllowVlanLstFirst2K", port(14), vlans({1})},
        {"nVlanPortIfUntagAllowVlanLstSecond2K", port(1), vlans({30})},
        {"nVlanPortIfTagAllowVlanLstFirst2K", port(14), vlans({10, 30, 4094}), "no such VLAN"},
        {"nVlanMacVlanId", kPhone, 10},
        {"nVlanMacVlanPriority", kPhone, 7},
        {"nVlanSubnetVlanId", kOffice, 20},
        {"nVlanSubnetVlanPriority", kOffice, 1},
        {"dot1vProtocolPortGroupVid", {5133, 1}, 30},
        {"ieee8021QBridgeProtocolPortGroupVid", {1, 5133, 1}, 20},
        {"nVlanProtocolVlanPriority", {5133, 1}, 5},
        {"nVlanProtocolVlanVlanId", {5133, 1}, 10},
        {"dot1vProtocolGroupId", kIpv6, 3},
        {"ieee8021QBridgeProtocolGroupId", {1, 5, 2, 0xe0, 0xe0}, 4},
        {"nVlanProtocolVlanGroupId", kCorvinIpx, 16},
        {"nVlanMacVlanId", {2, 0, 0, 0, 0, 9}, 10, "it has no VLAN"},
        {"dot1vProtocolGroupId", {2, 2, 8, 0}, 1, "'0' does not fit"},  // there is none to take it from
        {"nVlanProtocolVlanVlanId", {5133, 9}, 10, "no such profile"},
    });
    EXPECT_EQ(get("nVlanMacVlanId", kPhone), 10);
    EXPECT_EQ(get("nVlanProtocolVlanPriority", {5133, 1}), kNone);  // it went with the profile
}

TEST_F(OnSwitch, ShowsAVlanThroughEveryModule) {
    EXPECT_EQ(set_row({1, 100}, {{"ieee8021QBridgeVlanStaticName", "lab"},
                                 {"ieee8021QBridgeVlanStaticEgressPorts", ports({1, 13, 14, 25})},
                                 {"ieee8021QBridgeVlanStaticUntaggedPorts", ports({1, 14})},
                                 {"ieee8021QBridgeVlanStaticRowStatus", createAndGo}}),
              0);
    expect_row({100}, {{"dot1qVlanStaticName", "lab"}, {"dot1qVlanStaticEgressPorts", ports({1, 13, 14, 25})}});
    EXPECT_EQ(get("dot1qVlanCurrentUntaggedPorts", {0, 100}), ports({1, 14}));
    EXPECT_EQ(get("ieee8021QBridgeVlanCurrentEgressPorts", {0, 1, 100}), ports({1, 13, 14, 25}));
    EXPECT_EQ(get("ieee8021QBridgeNumVlans", {1}), 5);
    EXPECT_EQ(get("dot1qPvid", port(1)), 100);
    EXPECT_EQ(get("nVlanPortIfUntagAllowVlanLstFirst2K", port(1)), vlans({100}));
    EXPECT_EQ(get("nVlanPortIfTagAllowVlanLstFirst2K", port(13)), vlans({10, 100}));
    EXPECT_EQ(get("nVlanPortIfTagAllowVlanLstFirst2K", port(25)), vlans({10, 20, 30, 100}));
    // A trunk that tags its native VLAN sends everything with tags; a port of another mode has its own VLAN alone.
    expect({{"nVlanPortIfTrunkNativeVlanTag", port(25), 1}});
    EXPECT_EQ(get("nVlanPortIfUntagAllowVlanLstFirst2K", port(25)), vlans({}));
    expect({{"nVlanPortIfMode", port(25), 4}});
    EXPECT_EQ(get("nVlanPortIfTagAllowVlanLstFirst2K", port(25)), vlans({}));
    EXPECT_EQ(get("dot1qVlanStaticEgressPorts", {100}), ports({1, 13, 14}));
    expect({{"nVlanPortIfMode", port(25), 3}});
    EXPECT_EQ(get("dot1qVlanStaticEgressPorts", {100}), ports({1, 13, 14, 25}));
    // Frame types have three numberings.
    expect({{"dot1qPortAcceptableFrameTypes", port(1), 2}});
    EXPECT_EQ(get("ieee8021QBridgePortAcceptableFrameTypes", ieee_port(1)), 3);
    EXPECT_EQ(get("nVlanPortIfAcceptableFrameTypes", port(1)), 1);
    expect({{"ieee8021QBridgePortMvrpEnabledStatus", ieee_port(1), 1}});
    EXPECT_EQ(get("ieee8021QBridgePortMvrpLastPduOrigin", ieee_port(1)), std::string("\x02SW\x20\0\1", 6));
    remove_row("dot1qVlanStaticRowStatus", {100});
    EXPECT_EQ(get("ieee8021QBridgeVlanStaticName", {1, 100}), kNone);
    EXPECT_EQ(get("ieee8021QBridgePvid", ieee_port(1)), 1);
    EXPECT_EQ(get("ieee8021QBridgeVlanNumDeletes"), 1);
}

TEST_F(OnSwitch, MakesAndRemovesClassifications) {
    const Index mac{2, 0, 0, 0, 0, 9}, subnet6{2, 16, 0x20, 1, 0xd, 0xb8, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 48};
    EXPECT_EQ(set_row(mac, {{"nVlanMacVlanId", 30}, {"nVlanMacVlanPriority", 3}, {"nVlanMacVlanRowStatus", 4}}), 0);
    EXPECT_EQ(get("nVlanMacVlanPriority", mac), 3);
    EXPECT_EQ(set_row(subnet6, {{"nVlanSubnetVlanId", 30}, {"nVlanSubnetVlanRowStatus", createAndGo}}), 0);
    EXPECT_EQ(get("nVlanSubnetVlanId", subnet6), 30);
    // A group and its VLAN on a port, made by one module, is there for all of them.
    const Index arp{1, 2, 8, 6}, ieee_arp{1, 1, 2, 8, 6};
    const std::string ieee = "ieee8021QBridgeProtocol";
    EXPECT_EQ(set_row(ieee_arp, {{ieee + "GroupId", 7}, {ieee + "GroupRowStatus", createAndGo}}), 0);
    EXPECT_EQ(set_row({1, 5121, 7}, {{ieee + "PortGroupVid", 30}, {ieee + "PortRowStatus", createAndGo}}), 0);
    expect_row(arp, {{"dot1vProtocolGroupId", 7}, {"nVlanProtocolVlanGroupId", 7}});
    expect_row({5121, 7}, {{"dot1vProtocolPortGroupVid", 30}, {"nVlanProtocolVlanVlanId", 30}});
    EXPECT_EQ(get("nVlanProtocolVlanGroupId", kCorvinIpx), get("dot1vProtocolGroupId", kIpx));
    expect_rows(3, {"nVlanProtocolVlanGroupId"});
    // Removing the VLAN removes what was for it.
    remove_row("dot1qVlanStaticRowStatus", {30});
    EXPECT_EQ(get("nVlanMacVlanId", mac), kNone);
    EXPECT_EQ(get("nVlanSubnetVlanId", subnet6), kNone);
    EXPECT_EQ(get("nVlanProtocolVlanVlanId", {5121, 7}), kNone);
    EXPECT_EQ(get("nVlanProtocolVlanGroupId", arp), 7);
    expect_rows(2, {"nVlanMacVlanId"});
    remove_row("nVlanMacVlanRowStatus", kPhone);
    remove_row("nVlanSubnetVlanRowStatus", kOffice);
    remove_row("dot1vProtocolPortRowStatus", {5133, 1});
    remove_row("dot1vProtocolGroupRowStatus", arp);
    expect_rows(1, {"nVlanMacVlanId", "nVlanSubnetVlanId", "nVlanProtocolVlanVlanId"});
}

// --- private VLANs ---------------------------------------------------------------------------------------------------

class OnPrivateVlans : public OnSwitch {
protected:
    static constexpr int kPrimary = 1, kIsolated = 2, kCommunity = 3;

    int create(std::uint32_t vid, int type, std::uint32_t primary) {
        const std::string vlan = "nPrivateVlanVlan";
        return set_row({vid}, {{vlan + "Type", type}, {vlan + "AssocPriVlan", primary}, {vlan + "RowStatus", 4}});
    }
    int remove(std::uint32_t vid, int type) {
        return set_row({vid}, {{"nPrivateVlanVlanType", type}, {"nPrivateVlanVlanRowStatus", destroy}});
    }
    int map(std::uint32_t n, std::uint32_t vid, std::uint32_t primary) {
        const std::string pair = "nPrivateVlanIfVlanMap";
        return set_row({5120 + n, vid}, {{pair + "PriVlan", primary}, {pair + "RowStatus", createAndGo}});
    }
    void expect_port(std::uint32_t n, std::initializer_list<std::uint32_t> in, int pvid) {
        expect_row(port(n), {{"nVlanPortIfUntagAllowVlanLstFirst2K", vlans(in)}, {"dot1qPvid", pvid}});
    }
};

TEST_F(OnPrivateVlans, HaveTypesAndPrimaryVlans) {
    EXPECT_EQ(create(100, kPrimary, 0), 0);
    EXPECT_EQ(create(101, kCommunity, 100), 0);
    expect_row({101}, {{"nPrivateVlanVlanType", kCommunity}, {"nPrivateVlanVlanAssocPriVlan", 100}});
    EXPECT_EQ(get("dot1qVlanStaticName", {101}), "VLAN0101");  // it was made
    EXPECT_NE(create(101, kCommunity, 100), 0);
    expect({{"nPrivateVlanVlanType", {101}, kIsolated},
            {"nPrivateVlanVlanAssocPriVlan", {101}, 10},
            {"nPrivateVlanVlanAssocPriVlan", {101}, 30, "not a primary VLAN"},
            {"nPrivateVlanVlanAssocPriVlan", {100}, 10, "not a secondary VLAN"},
            {"nPrivateVlanVlanType", {1}, kPrimary, "default VLAN"}});
    EXPECT_EQ(set({{"nPrivateVlanSyncSecVlans", {0}, 1}}), 0);
    expect_refused(remove(101, kCommunity), "of another type");
    EXPECT_EQ(remove(101, kIsolated), 0);
    EXPECT_EQ(get("nPrivateVlanVlanType", {101}), kNone);
    // What becomes secondary is not a primary VLAN of others.
    expect({{"nPrivateVlanVlanType", {10}, kIsolated}});
    EXPECT_EQ(get("nPrivateVlanVlanAssocPriVlan", {30}), 0);
}

TEST_F(OnPrivateVlans, PortsAreInBothVlansOfTheirPairs) {
    expect_port(19, {10, 30}, 30);  // a host
    expect_port(20, {10, 30}, 10);  // what it reaches
    EXPECT_EQ(create(40, kCommunity, 10), 0);
    expect_refused(map(19, 40, 10), "another pair");            // a host has one
    expect_refused(map(1, 40, 10), "not a private VLAN port");  // and an access port none
    expect_refused(map(20, 40, 30), "not associated");
    EXPECT_EQ(map(20, 40, 10), 0);
    expect_port(20, {10, 30, 40}, 10);
    remove_row("nPrivateVlanIfVlanMapRowStatus", {5140, 30});
    expect_port(20, {10, 40}, 10);
    remove_row("nPrivateVlanIfVlanMapRowStatus", {5139, 30});
    expect_port(19, {1}, 1);
    expect({{"nVlanPortIfMode", port(1), 5}});
    EXPECT_EQ(map(1, 40, 10), 0);
    expect_port(1, {10, 40}, 40);
    // Another mode ends the pairs, the same one too.
    expect({{"nVlanPortIfMode", port(1), 5}});
    expect_port(1, {1}, 1);
    EXPECT_EQ(get("nPrivateVlanIfVlanMapPriVlan", {5121, 40}), kNone);
    expect({{"nVlanPortIfMode", port(20), 1}});
    expect_port(20, {1}, 1);
    expect_rows(0, {"nPrivateVlanIfVlanMapPriVlan"});
}

TEST_F(OnPrivateVlans, GoWithTheirVlans) {
    remove_row("dot1qVlanStaticRowStatus", {30});
    EXPECT_EQ(get("nPrivateVlanVlanType", {30}), kNone);
    expect_rows(0, {"nPrivateVlanIfVlanMapPriVlan"});
    for (const std::uint32_t n : {19u, 20u}) expect_port(n, {1}, 1);
    EXPECT_EQ(create(31, kIsolated, 10), 0);
    EXPECT_EQ(map(19, 31, 10), 0);
    remove_row("ieee8021QBridgeVlanStaticRowStatus", {1, 10});
    EXPECT_EQ(get("nPrivateVlanVlanAssocPriVlan", {31}), 0);
    expect_port(19, {1}, 1);
}

}  // namespace
}  // namespace sw
