// The simulated switch's forwarding database: the same by address, by VLAN and as its ports are, whatever happens.
#include "support/simulated_switch.h"

#include <algorithm>
#include <map>

namespace sw {
namespace {

const Index kLearned{10, 1, 0, 94, 1, 0, 2};  // VLAN and address of 239.1.0.2

}  // namespace

class Forwarded : public OnSwitch {
protected:
    explicit Forwarded(const Size& size = {}) : OnSwitch(size) { now_ = seconds(100000); }

    struct Entry {
        std::int64_t port;
        oid vid;
        bool operator==(const Entry&) const = default;
    };
    using Database = std::map<Index, Entry>;  // by address

    // Everything, which has to agree.
    Database all() {
        Database database;
        std::map<oid, std::int64_t> counts;
        for (const Index& row : rows("dot1qTpFdbPort")) {
            const Entry entry{get("dot1qTpFdbPort", row).number(), row[0]};
            EXPECT_TRUE(database.emplace(Index(row.begin() + 1, row.end()), entry).second);
            counts[row[0]] += entry.port != 0;  // the switch's own address was not learned
            EXPECT_EQ(get("ieee8021QBridgeTpFdbPort", join({{1}, row})), entry.port);
        }
        EXPECT_EQ(rows("ieee8021QBridgeTpFdbStatus").size(), database.size());
        const std::vector<Index> by_address = rows("dot1dTpFdbAddress");
        EXPECT_EQ(by_address.size(), database.size());
        for (const Index& mac : by_address) {
            EXPECT_EQ(get("dot1dTpFdbAddress", mac), std::string(mac.begin(), mac.end()));
            EXPECT_TRUE(database.contains(mac) && get("dot1dTpFdbPort", mac) == database[mac].port);
        }
        for (const Index& vlan : rows("dot1qFdbDynamicCount"))
            for (const auto& [object, row] :
                 {std::pair("dot1qFdbDynamicCount", vlan), {"ieee8021QBridgeFdbDynamicCount", join({{1}, vlan})}})
                EXPECT_EQ(get(object, row), counts[vlan[0]]) << object;
        return database;
    }
    static std::ptrdiff_t on_port(const Database& database, std::int64_t port) {
        return std::count_if(database.begin(), database.end(),
                             [port](const auto& entry) { return entry.second.port == port; });
    }
    void expect_group(const Index& group, std::initializer_list<std::uint32_t> egress,
                      std::initializer_list<std::uint32_t> learned) {
        const Index ieee = join({{1}, group});
        expect_row(group, {{"dot1qTpGroupEgressPorts", ports(egress)}, {"dot1qTpGroupLearnt", ports(learned)}});
        EXPECT_EQ(get("ieee8021QBridgeTpGroupEgressPorts", ieee), ports(egress));
        EXPECT_EQ(get("ieee8021QBridgeTpGroupLearnt", ieee), ports(learned));
    }
};

TEST_F(Forwarded, IsTheSameByAddressAndByVlanWhileItChanges) {
    const Database first = all();
    EXPECT_GT(first.size(), 200u);
    EXPECT_EQ(on_port(first, 4), 0);  // has no cable
    EXPECT_EQ(first.at({2, 83, 87, 16, 0, 0}), (Entry{0, 1}));
    std::size_t gone = 0, learned = 0;
    Database before = first;
    for (int i = 0; i < 8; ++i) {
        now_ += seconds(150);
        const Database now = all();
        for (const auto& [mac, entry] : before) gone += !now.contains(mac);
        for (const auto& [mac, entry] : now) learned += !before.contains(mac);
        before = now;
    }
    EXPECT_GT(gone, 20u);
    EXPECT_GT(learned, 20u);
    EXPECT_EQ(before, first);  // the stations repeat themselves
}

TEST_F(Forwarded, FollowsPortsAndVlans) {
    EXPECT_GT(on_port(all(), 5), 0);
    EXPECT_EQ(set({{"ifAdminStatus", {5125}, 2}}), 0);
    EXPECT_EQ(on_port(all(), 5), 0);
    EXPECT_EQ(set({{"ifAdminStatus", {5125}, 1}}), 0);
    const std::ptrdiff_t talking = on_port(all(), 5);  // the silent ones are not known yet
    EXPECT_TRUE(talking > 0 && talking < 6) << talking;
    ASSERT_TRUE(configure(5, "interface port5") && configure(-1, "switchport access vlan 20"));
    EXPECT_EQ(on_port(all(), 5), 0);
    remove_row("dot1qVlanStaticRowStatus", {10});
    for (const auto& [mac, entry] : all()) EXPECT_NE(entry.vid, 10u);
}

TEST_F(Forwarded, PhonesAreStationsWithAKnownOui) {
    const Index oui{2, 0x48, 0, 0, 0, 0, 255, 255, 255, 255, 0, 0}, other{2, 0x48, 0, 0, 10, 0, 255, 255, 0, 0, 255, 0};
    EXPECT_EQ(rows("dVoiceVlanDeviceMac").size(), 3u);  // port 12 has no cable
    for (const Index& row : rows("dVoiceVlanDeviceMac")) {
        const Index mac(row.begin() + 1, row.end());
        EXPECT_EQ(get("dVoiceVlanDeviceMac", row), std::string(mac.begin(), mac.end()));
        EXPECT_EQ(get("dot1dTpFdbPort", mac), row[0] - 5120);
        EXPECT_EQ(get("dVoiceVlanLldpMedDeviceColumn4", {row[0]}), get("dVoiceVlanDeviceMac", row));
    }
    EXPECT_EQ(get("dVoiceVlanStatusText2"), "3 phones");
    // A port that looks for phones finds what its stations' addresses say.
    expect({{"dVoiceVlanIfEnabled", {5129}, 2}, {"dVoiceVlanIfEnabled", {5125}, 1}});
    EXPECT_EQ(rows("dVoiceVlanDeviceMac").front()[0], 5125u);
    EXPECT_EQ(set_row(other, {{"dVoiceVlanOuiDes", "office phones"}, {"dVoiceVlanOuiRowStatus", createAndGo}}), 0);
    EXPECT_GT(rows("dVoiceVlanDeviceMac").size(), 3u);
    EXPECT_EQ(get("dVoiceVlanOuiDes", other), "office phones");
    expect({{"dVoiceVlanOuiDes", oui, "phones at desks"}});
    EXPECT_EQ(get("dVoiceVlanDeviceColumn3", {5130, 2, 0x48, 0, 0, 20, 10}), "phones at desks");
    for (const Index& row : {oui, other}) remove_row("dVoiceVlanOuiRowStatus", row);
    expect_rows(0, {"dVoiceVlanDeviceMac"});
    expect({
        {"dVoiceVlanIfMode", {5121}, {2, 3, 1}},
        {"dVoiceVlanQos", {0}, 7},
        {"dVoiceVlanQos", {0}, 8, "'8' does not fit"},
        {"dVoiceVlanAgingTime", {0}, 30},
        {"dVoiceVlanVlanId", {0}, {0, 30}},
        {"dVoiceVlanVlanId", {0}, 99, "no such VLAN"},
        {"dVoiceVlanIfMode", {1034}, 1, "not a switch port"},
    });
    remove_row("dot1qVlanStaticRowStatus", {30});
    expect_row({0}, {{"dVoiceVlanVlanId", 0}, {"dVoiceVlanStatusText1", "disabled"}});
    expect_refused(5, "no voice vlan mac-address 02-48-00-00-00-00 ff-ff-ff-ff-00-00", "no such OUI");
}

TEST_F(Forwarded, AgingTimeDecidesHowLongSilentStationsStay) {
    const std::size_t usual = all().size();
    expect({{"dot1dTpAgingTime", {0}, 10}});
    const std::size_t few = all().size();
    EXPECT_LT(few, usual);
    expect({{"ieee8021QBridgeFdbAgingTime", {1, 10}, 0}});  // of all VLANs
    EXPECT_EQ(get("dot1dTpAgingTime"), 0);
    EXPECT_EQ(all().size(), few);  // what has aged has to be learned again
    now_ += seconds(1200);
    EXPECT_GT(all().size(), usual);
    expect_refused(5, "mac address-table aging-time 9", "10 seconds at least");
}

TEST_F(Forwarded, GroupsAreThoseOfSnoopingAndTheStaticOnes) {
    expect_group(kLearned, {5, 6, 13}, {5, 6, 13});
    EXPECT_EQ(set({{"ifAdminStatus", {5126}, 2}}), 0);
    expect_group(kLearned, {5, 13}, {5, 13});
    const Index fixed{10, 1, 0, 94, 1, 0, 2, 0};
    expect({{"dot1qStaticMulticastStaticEgressPorts", fixed, ports({6, 7})}});
    expect_group(kLearned, {5, 7, 13}, {5, 13});
    EXPECT_EQ(set({{"dot1qStaticMulticastStatus", fixed, 2}}), 0);
    EXPECT_EQ(get("dot1qStaticMulticastStatus", fixed), kNone);
    expect_group(kLearned, {5, 13}, {5, 13});

    const Index ieee{1, 20, 1, 0, 94, 1, 0, 9, 0}, same{20, 1, 0, 94, 1, 0, 9, 0};
    const std::string table = "ieee8021QBridgeStaticMulticast";
    EXPECT_EQ(set_row(ieee, {{table + "StaticEgressPorts", ports({9, 13})}, {table + "RowStatus", createAndGo}}), 0);
    EXPECT_EQ(get("dot1qStaticMulticastStaticEgressPorts", same), ports({9, 13}));
    expect({{table + "StaticEgressPorts", ieee, ports({13, 25})}});
    EXPECT_EQ(get("dot1qStaticMulticastStaticEgressPorts", same), ports({13, 25}));
    EXPECT_EQ(get(table + "RowStatus", ieee), 1);
    remove_row("ieee8021QBridgeStaticMulticastRowStatus", ieee);
    EXPECT_EQ(get("dot1qStaticMulticastStatus", same), kNone);

    const Index member{5125, 1034, 1, 4, 239, 1, 0, 99}, group{10, 1, 0, 94, 1, 0, 99};
    make_row("mgmdIgmpSnpGroupStatus", member);
    expect_group(group, {5}, {5});
    remove_row("mgmdIgmpSnpGroupStatus", member);
    EXPECT_EQ(get("dot1qTpGroupLearnt", group), kNone);

    const std::string fix = "mac address-table static 01-00-5e-00-00-63 vlan ";
    expect_refused(5, "mac address-table static 00-00-5e-00-00-63 vlan 10 interface port7", "not a multicast address");
    expect_refused(5, fix + "11 interface port7", "no such VLAN");
    expect_refused(5, fix + "10 interface port70", "no such port");
    expect_refused(5, "no " + fix + "10 interface port7", "not static on that port");
    expect_refused(5, "no " + fix + "10", "the address is not static");
}

TEST_F(Forwarded, KeepsPrioritiesTimersAndFilteringModes) {
    expect({
        {"dot1dPortDefaultUserPriority", {5123}, 7},
        {"ieee8021BridgePortMrpJoinTime", {5123}, 40},
        {"ieee8021BridgePortMrpLeaveTime", {5123}, 120},
        {"ieee8021BridgePortMrpLeaveAllTime", {5123}, 2000},
        {"ieee8021BridgePortMrpJoinTime", {5123}, -1, "expected"},
        {"ieee8021BridgePortMrpJoinTime", {1}, 40, "no such port"},
        {"nL2FDBMcastFilterMode", {5123}, {1, 3, 2}},
        {"nL2FDBMcastFilterMode", {1034}, 1, "not a switch port"},
    });
    // A row index that ends early is not passed over.
    EXPECT_EQ(next("dot1dRegenUserPriority", {5123}), (Index{5123, 0}));
    EXPECT_EQ(get("dot1dPortNumTrafficClasses", {5123}), 8);
}

struct ForwardedMany : Forwarded {
    ForwardedMany() : Forwarded({.fdb = 3000}) {}
};

TEST_F(ForwardedMany, HaveTheAddressesThatWereAskedFor) { EXPECT_GE(all().size(), 3000u); }

}  // namespace sw
