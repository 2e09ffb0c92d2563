#include "support/recording_host.h"

namespace tests {

class IeeeQBridge : public RecordingHost {
protected:
    const Oid entry{1, 10, 1, 0, 94, 0, 0, 5, 0};  // VLAN 10, MAC address, any receive port
    Bytes current = port_list({});                 // of a static multicast entry

    IeeeQBridge() {
        answers["write_ieee8021QBridgeStaticMulticastStaticEgressPorts"] = [this](const services::ShowRequest&) {
            return Answer{current, {}};
        };
        write(reserve1, "ieee8021QBridgeStaticMulticastStaticEgressPorts", entry, OctetString, {});
    }
    Assignment ports(const Bytes& list) {
        return {"ieee8021QBridgeStaticMulticastStaticEgressPorts", entry, OctetString, list};
    }
    Assignment status(int value) { return {"ieee8021QBridgeStaticMulticastRowStatus", entry, Integer, integer(value)}; }
    int act(const Assignment& varbind) {
        return write(action, varbind.object, varbind.index, varbind.type, varbind.value);
    }
};

TEST_F(IeeeQBridge, FirstRowsAreThoseWithoutAVlanInterfaceOrFrameTypeWhateverTheComponent) {
    get("ieee8021QBridgeNumVlans", {2});
    get("ieee8021QBridgeFdbDynamicCount", {1, 0});
    next("ieee8021QBridgeTpGroupLearnt", {1});
    next("ieee8021QBridgeStaticMulticastRowStatus", {1, 0});
    get("ieee8021QBridgeVlanFdbId", {9, 1, 0});
    get("ieee8021QBridgeVlanFdbId", {9, 1, 10});
    get("ieee8021QBridgeVlanStaticName", {1, 0});
    get("ieee8021QBridgePvid", {1, 0});
    next("ieee8021QBridgeProtocolGroupId", {1, 0});
    next("ieee8021QBridgeProtocolPortGroupVid", {1, 0, 7});
    get("ieee8021QBridgeTpFdbPort", {1, 10, 0, 1, 2, 3, 0xab, 0xcd});
    EXPECT_THAT(commands(),
                ElementsAre("show snmp ieee bridge 2", "show snmp ieee fdb", "show snmp ieee mcast group-table",
                            "show snmp ieee mcast static-table", "show snmp ieee vlan-current",
                            "show snmp ieee vlan-current 10", "show snmp ieee vlan-static", "show snmp ieee port-vlan",
                            "show snmp ieee protocol-group", "show snmp ieee protocol-vlan",
                            "show snmp ieee mac-address-table address 00-01-02-03-ab-cd vlan 10"));
}

// Of these only the write method is there, and that for a row alone.
TEST_F(IeeeQBridge, ColumnsWithoutAValueAreWritableInARow) {
    for (const char* object :
         {"ieee8021QBridgeStaticMulticastForbiddenEgressPorts", "ieee8021QBridgeStaticMulticastStorageType"}) {
        EXPECT_NE(get(object, entry).writer, kUntouched) << object;
        EXPECT_EQ(get(object, {1, 10, 1}).writer, kUntouched) << object;
    }
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(IeeeQBridge, OnlyComponentOneIsWritten) {
    const struct {
        const char* object;
        Oid rest;  // of the index, after the component
        std::uint8_t type;
    } cases[] = {
        {"ieee8021QBridgeMvrpEnabledStatus", {}, Integer},
        {"ieee8021QBridgeFdbAgingTime", {10}, Integer},
        {"ieee8021QBridgeStaticMulticastStaticEgressPorts", {10, 1, 0, 94, 0, 0, 5, 0}, OctetString},
        {"ieee8021QBridgeStaticMulticastRowStatus", {10, 1, 0, 94, 0, 0, 5, 0}, Integer},
        {"ieee8021QBridgeVlanStaticName", {10}, OctetString},
        {"ieee8021QBridgeVlanStaticEgressPorts", {10}, OctetString},
        {"ieee8021QBridgeVlanForbiddenEgressPorts", {10}, OctetString},
        {"ieee8021QBridgeVlanStaticUntaggedPorts", {10}, OctetString},
        {"ieee8021QBridgeVlanStaticRowStatus", {10}, Integer},
        {"ieee8021QBridgePvid", {5121}, Gauge32},
        {"ieee8021QBridgePortAcceptableFrameTypes", {5121}, Integer},
        {"ieee8021QBridgePortIngressFiltering", {5121}, Integer},
        {"ieee8021QBridgePortMvrpEnabledStatus", {5121}, Integer},
        {"ieee8021QBridgePortRestrictedVlanRegistration", {5121}, Integer},
        {"ieee8021QBridgeProtocolGroupId", {1, 2, 8, 0}, Integer},
        {"ieee8021QBridgeProtocolGroupRowStatus", {1, 2, 8, 0}, Integer},
        {"ieee8021QBridgeProtocolPortGroupVid", {5121, 7}, Integer},
        {"ieee8021QBridgeProtocolPortRowStatus", {5121, 7}, Integer},
    };
    for (const auto& [object, rest, type] : cases) {
        const Bytes good = type == OctetString ? Bytes() : integer(1), bad = type == OctetString ? Bytes() : integer(9);
        for (const oid component : {0u, 2u}) {
            Oid index = rest;
            index.insert(index.begin(), component);
            for (int phase = reserve1; phase <= undo; ++phase) {
                EXPECT_EQ(write(phase, object, index, type, good), noSuchName) << object << phase;
                EXPECT_EQ(write(phase, object, index, type, bad), noSuchName) << object << phase;
            }
        }
        EXPECT_EQ(write(reserve1, object, {}, type, good), noSuchName) << object;  // component 0
    }
}

TEST_F(IeeeQBridge, ChecksOfTheColumns) {
    const auto on_port = [](const char* object, int last) {
        return Writable(object, {1, 5121}, Integer, between(1, last)).order(on_interface());
    };
    expect_checks({
        {"ieee8021QBridgeMvrpEnabledStatus", {1}, Integer, between(1, 2)},
        Writable("ieee8021QBridgeFdbAgingTime", {1, 10}, Integer, between(0, 1000000).good(10).bad(1).bad(9))
            .order({step::type, step::length, step::column, step::index, step::value.in({reserve1, reserve2})}),
        on_port("ieee8021QBridgePortAcceptableFrameTypes", 3),
        on_port("ieee8021QBridgePortIngressFiltering", 2),
        on_port("ieee8021QBridgePortMvrpEnabledStatus", 2),
        on_port("ieee8021QBridgePortRestrictedVlanRegistration", 2),
        Writable("ieee8021QBridgeStaticMulticastForbiddenEgressPorts", entry, OctetString, octets(0, 12))
            .order(unparsed())
            .refused(),
        Writable("ieee8021QBridgeStaticMulticastStorageType", entry, Integer, between(1, 5))
            .order(unparsed())
            .refused(),
        {"ieee8021QBridgeStaticMulticastStaticEgressPorts", entry, OctetString, octets(0, 12)},
        {"ieee8021QBridgeStaticMulticastRowStatus", entry, Integer, between(active, destroy)},
    });
}

TEST_F(IeeeQBridge, AgingTimeOutOfRangeIsCaughtBeforeActionAlone) {
    EXPECT_EQ(write(action, "ieee8021QBridgeFdbAgingTime", {1, 10}, Integer, integer(5)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 mac address-table aging-time 5"));
}

TEST_F(IeeeQBridge, RefusedColumnsLeaveTheColumnSlot) {
    oid* const ids = loaded().symbol<oid>("IEEE8021QBRIDGESTATICMULTICASTTABLE_oid");
    write(reserve1, "ieee8021QBridgeStaticMulticastRowStatus", entry, Integer, integer(active));
    write(reserve1, "ieee8021QBridgeStaticMulticastStorageType", entry, Integer, integer(3));
    write(reserve1, "ieee8021QBridgeStaticMulticastForbiddenEgressPorts", entry, OctetString, {});
    EXPECT_EQ(ids[12], 6u);
}

TEST_F(IeeeQBridge, MvrpLinesAreTraced) {
    int& debugging = *loaded().symbol<int>("mvrp_mib_dbg");
    const auto set_all = [this] {
        forget();
        for (const int value : {1, 2}) {
            set("ieee8021QBridgeMvrpEnabledStatus", {1}, Integer, integer(value));
            set("ieee8021QBridgePortMvrpEnabledStatus", {1, 5121}, Integer, integer(value));
            set("ieee8021QBridgePortRestrictedVlanRegistration", {1, 5121}, Integer, integer(value));
            set("ieee8021QBridgePortIngressFiltering", {1, 5121}, Integer, integer(value));
        }
    };
    EXPECT_EQ(debugging, 0);
    set_all();
    EXPECT_THAT(logged, IsEmpty());
    debugging = -1;
    refused_lines = {"mvrp global"};  // traced nevertheless
    set_all();
    debugging = 0;
    const std::string bridge = "write_ieee8021QBridgeMvrpEnabledStatus: ";
    const std::string port = "write_ieee8021QBridgePortMvrpEnabledStatus: ";
    const std::string registration = "write_ieee8021QBridgePortRestrictedVlanRegistration: ";
    std::string expected;
    for (const std::string no : {"", "no "})
        for (const std::string& line : {bridge + no + "mvrp global\n", port + no + "mvrp enable\n",
                                        registration + no + "mvrp registration forbidden\n"})
            expected += line + line;
    EXPECT_EQ(log(), expected);
}

TEST_F(IeeeQBridge, StaticPortsWaitForTheRowStatus) {
    EXPECT_EQ(set({ports(port_list({2, 90, 91})), status(createAndGo)}), noError);
    const std::string line = "5 mac address-table static 01-00-5e-00-00-05 vlan 10 interface ";
    EXPECT_THAT(lines(), ElementsAre(line + "port2", line + "port90"));
    EXPECT_EQ(sent[0].caller, "write_ieee8021QBridgeStaticMulticastRowStatus");
    forget();
    EXPECT_EQ(act(status(createAndGo)), noError);
    EXPECT_THAT(lines(), IsEmpty());  // the list went with it
    // Another status leaves the flag, which ends the next ACTION of the ports; staging them clears it.
    EXPECT_EQ(set({ports(port_list({3})), status(destroy)}), noError);
    EXPECT_EQ(act(ports(port_list({3}))), noError);
    EXPECT_THAT(lines(), ElementsAre("5 no mac address-table static 01-00-5e-00-00-05 vlan 10"));
    forget();
    refused_line = 0;  // a refused line keeps list and flag
    EXPECT_EQ(act(status(createAndGo)), genErr);
    refused_line.reset();
    EXPECT_EQ(act(status(createAndGo)), noError);
    EXPECT_THAT(lines(), ElementsAre(line + "port3", line + "port3"));
    EXPECT_EQ(set({status(active), ports(port_list({4}))}), noError);
    EXPECT_EQ(lines().back(), line + "port4");
    // What is pending for VLANs does not count here.
    EXPECT_EQ(write(reserve1, "ieee8021QBridgeVlanStaticRowStatus", {1, 10}, Integer, integer(active)), noError);
    EXPECT_EQ(act(ports(port_list({6}))), noError);
    EXPECT_EQ(lines().back(), line + "port6");
}

TEST_F(IeeeQBridge, StaticPortsAreChangedPortByPort) {
    current = port_list({1, 3});
    EXPECT_EQ(set({ports(port_list({2, 3}))}), noError);
    const std::string line = "mac address-table static 01-00-5e-00-00-05 vlan 10 interface ";
    EXPECT_THAT(lines(), ElementsAre("5 " + line + "port2", "5 no " + line + "port1"));
    forget();
    interfaces_have_names = false;
    EXPECT_EQ(set({ports(port_list({2, 3}))}), genErr);
    interfaces_have_names = true;
    answers.clear();  // this lookup must be answered
    EXPECT_EQ(set({ports(port_list({2}))}), genErr);
    EXPECT_THAT(lines(), IsEmpty());
}

}  // namespace tests
