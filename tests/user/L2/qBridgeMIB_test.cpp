#include "support/recording_host.h"

namespace tests {
namespace {

// A port list of 12 octets.
Bytes ports(std::initializer_list<int> members) {
    Bytes list(12);
    for (const int port : members)
        list[static_cast<std::size_t>(port - 1) / 8] |= static_cast<std::uint8_t>(0x80 >> (port - 1) % 8);
    return list;
}

enum Mode { access = 1, hybrid = 2, trunk = 3, untagged_hybrid = 4 };

}  // namespace

class QBridge : public RecordingHost {
protected:
    // The record that outlives requests; its bytes as they are laid out.
    unsigned char* const record = loaded().symbol<unsigned char>("vlan_static");
    std::map<int, std::uint32_t> modes;  // by port; others are hybrid
    Bytes current_ports = ports({});     // of the VLAN that is asked for

    QBridge() {
        std::fill_n(record, 84, static_cast<unsigned char>(0));
        const auto lookup = [this](const services::ShowRequest& request) {
            if (request.command.ends_with("portlist")) return Answer{current_ports, {}};
            const int port = std::stoi(request.command.substr(request.command.rfind(' '))) - 5120;
            return Answer{integer(modes.contains(port) ? modes[port] : std::uint32_t{hybrid}), {}};
        };
        for (const char* writer : {"Name", "EgressPorts", "UntaggedPorts", "RowStatus"})
            answers[std::string("write_dot1qVlanStatic") + writer] = lookup;
        answers["write_dot1qPvid"] = lookup;
    }

    Assignment name(std::uint32_t vid, const std::string& value) {
        return {"dot1qVlanStaticName", {vid}, OctetString, text(value)};
    }
    Assignment egress(std::uint32_t vid, const Bytes& list) {
        return {"dot1qVlanStaticEgressPorts", {vid}, OctetString, list};
    }
    Assignment untagged(std::uint32_t vid, const Bytes& list) {
        return {"dot1qVlanStaticUntaggedPorts", {vid}, OctetString, list};
    }
    Assignment status(std::uint32_t vid, int value) {
        return {"dot1qVlanStaticRowStatus", {vid}, Integer, integer(value)};
    }
    bool pending() const { return record[76] != 0; }
    bool record_is_clear() const {
        return std::all_of(record, record + 84, [](unsigned char octet) { return octet == 0; });
    }
};

TEST_F(QBridge, ConstantsComeFromTheLibrary) {
    EXPECT_EQ(get("dot1qVlanVersionNumber", {0}).value, integer(1));
    EXPECT_EQ(get("dot1qMaxVlanId", {0}).value, integer(4094));
    EXPECT_EQ(get("dot1qMaxSupportedVlans", {0}).value, integer(4094));
    EXPECT_EQ(get("dot1qNextFreeLocalVlanIndex", {0}).value, integer(4096));
    EXPECT_THAT(shown, IsEmpty());
    answer("qBridgeMIBGlobals", integer(7));
    const ReadResult vlans = get("dot1qNumVlans", {0});
    get("dot1qVlanNumDeletes", {0});
    EXPECT_THAT(commands(), ElementsAre("show snmp vlan number", "show snmp vlan-delete-num"));
    EXPECT_EQ(shown[1].request.magic, 6);
    EXPECT_EQ(shown[0].request.result_size, 512);
    EXPECT_NE(vlans.address, ret_value);
}

TEST_F(QBridge, SomeObjectsAreOnlyWritten) {
    for (const char* object : {"dot1qGvrpStatus", "dot1qConstraintSetDefault", "dot1qConstraintTypeDefault"}) {
        const ReadResult result = get(object, {0});
        EXPECT_EQ(result.value, std::nullopt) << object;
        EXPECT_TRUE(result.writer != nullptr && result.writer != kUntouched) << object;
    }
    for (const char* object :
         {"dot1qVlanForbiddenEgressPorts", "dot1qPortGvrpStatus", "dot1qPortRestrictedVlanRegistration"})
        EXPECT_EQ(get(object, {1}).value, std::nullopt) << object;
    EXPECT_THAT(shown, IsEmpty());
    const std::vector<int> always{0, 1, 2, 3, 4, 5, 6};
    expect_checks({
        Writable("dot1qGvrpStatus", {0}, Integer, any_number()).sends_nothing(),
        Writable("dot1qConstraintSetDefault", {0}, Integer, any_number()).refused(),
        Writable("dot1qConstraintTypeDefault", {0}, Integer, between(1, 2)).refused(),
        // Refused before any check.
        Writable("dot1qPortGvrpStatus", {1, 2, 3}, Counter64, any_octets()).order({}).refused(always),
        Writable("dot1qPortRestrictedVlanRegistration", {1}, Integer, any_number()).order({}).refused(always),
    });
}

TEST_F(QBridge, TablesAreAskedForByVlanAndByInterface) {
    get("dot1qVlanFdbId", {0, 0});
    get("dot1qVlanFdbId", {9, 0});  // the time mark is not looked at
    get("dot1qVlanFdbId", {9, 10});
    get("dot1qVlanStaticName", {10});
    next("dot1qVlanStaticName");
    get("dot1qPvid", {5121});
    next("dot1qPvid");
    EXPECT_THAT(commands(), ElementsAre("show snmp vlan-current", "show snmp vlan-current", "show snmp vlan-current 10",
                                        "show snmp vlan-static 10", "show snmp vlan-static", "show snmp port-vlan 5121",
                                        "show snmp port-vlan"));
    EXPECT_EQ(shown[2].request.key_size, 8);
}

TEST_F(QBridge, RowIsAppliedByItsStatus) {
    modes = {{1, access}, {2, hybrid}, {3, trunk}, {4, untagged_hybrid}, {5, access}};
    EXPECT_EQ(set({name(10, "office"), egress(10, ports({1, 2, 3, 4, 5})), untagged(10, ports({2, 5})),
                   status(10, createAndGo)}),
              noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "-1 name office",  //
                                     "5 interface port2", "-1 switchport hybrid allowed vlan add untagged 10",
                                     "5 interface port5", "-1 switchport access vlan 10", "5 interface port1",
                                     "-1 switchport access vlan 10", "5 interface port3",
                                     "-1 switchport trunk allowed vlan add 10", "5 interface port4",
                                     "-1 switchport hybrid allowed vlan add untagged 10"));
    for (const Sent& line : sent) EXPECT_EQ(line.caller, "write_dot1qVlanStaticRowStatus");
    EXPECT_EQ(shown.back().request.name, "write_dot1qVlanStaticRowStatus");
    EXPECT_EQ(shown.back().command(), "show snmp vlan-mode 5124");
    EXPECT_EQ(shown.back().request.magic, 0);
    EXPECT_TRUE(record_is_clear());
}

TEST_F(QBridge, DefaultNameIsNotSentByTheRowStatus) {
    EXPECT_EQ(set({name(10, "VLAN0010"), status(10, createAndGo)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10"));
    forget();
    EXPECT_EQ(set({name(10, "VLAN0010")}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "-1 name VLAN0010"));
    EXPECT_EQ(sent[1].caller, "write_dot1qVlanStaticName");
}

TEST_F(QBridge, StagedRowGoesUnderTheStatusOwnVlan) {
    EXPECT_EQ(set({name(10, "office"), status(20, createAndGo)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 20", "-1 name office"));
}

TEST_F(QBridge, PendingStatusSilencesTheColumnsUntilOneIsStagedAgain) {
    EXPECT_EQ(set({status(10, active)}), noError);
    EXPECT_EQ(set({status(10, createAndWait)}), noError);
    EXPECT_TRUE(pending());
    // A column in front of its own row status does nothing; one behind it clears the flag by being staged.
    EXPECT_EQ(set({name(10, "a"), status(10, notReady)}), noError);
    EXPECT_THAT(lines(), IsEmpty());
    EXPECT_TRUE(pending());
    EXPECT_EQ(write(action, "dot1qVlanStaticName", {10}, OctetString, text("b")), noError);
    EXPECT_THAT(lines(), IsEmpty());
    EXPECT_EQ(set({status(10, active), name(10, "b")}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "-1 name b"));
    EXPECT_FALSE(pending());
}

TEST_F(QBridge, PortListsAreChangedPortByPort) {
    modes = {{1, access}, {2, hybrid}, {3, trunk}, {4, untagged_hybrid}};
    current_ports = ports({1, 2, 3, 4, 8});
    EXPECT_EQ(set({egress(10, ports({8, 90}))}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 no switchport access vlan",  //
                                     "5 interface port2", "-1 switchport hybrid allowed vlan remove 10",
                                     "5 interface port3", "-1 switchport trunk allowed vlan remove 10",
                                     "5 interface port4", "-1 switchport hybrid allowed vlan remove 10",
                                     "5 interface port90", "-1 switchport hybrid allowed vlan add tagged 10"));
    EXPECT_EQ(shown[1].command(), "show snmp vlan-static 10 portlist");
    EXPECT_EQ(shown[1].request.magic, 2);
    EXPECT_EQ(shown[1].request.result_size, 12);
    EXPECT_EQ(shown[1].request.name, "write_dot1qVlanStaticEgressPorts");

    forget();
    EXPECT_EQ(set({egress(10, current_ports)}), noError);
    EXPECT_EQ(set({egress(10, Bytes{0xf1})}), noError);  // a shorter list is padded with zero bits
    current_ports = ports({});
    EXPECT_EQ(set({egress(10, ports({91, 96}))}), noError);  // ports behind 90 are never acted on
    EXPECT_THAT(sent, IsEmpty());

    std::fill_n(record, 84, static_cast<unsigned char>(0));  // or the staged egress list would be looked at
    EXPECT_EQ(set({untagged(10, ports({1, 2, 4}))}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 switchport access vlan 10",  //
                                     "5 interface port2", "-1 switchport hybrid allowed vlan add untagged 10",
                                     "5 interface port4", "-1 switchport hybrid allowed vlan add untagged 10"));
    EXPECT_EQ(shown.at(shown.size() - 4).request.magic, 4);
}

TEST_F(QBridge, ListWritesStopAtTheFirstFailure) {
    modes = {{2, trunk}, {3, 9}};
    EXPECT_EQ(write(action, "dot1qVlanStaticUntaggedPorts", {10}, OctetString, ports({1, 2, 4})), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 switchport hybrid allowed vlan add untagged 10",
                                     "5 interface port2"));
    forget();
    EXPECT_EQ(write(action, "dot1qVlanStaticEgressPorts", {10}, OctetString, ports({3, 4})), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port3"));
    forget();
    refused_lines = {"interface port4"};
    EXPECT_EQ(write(action, "dot1qVlanStaticEgressPorts", {10}, OctetString, ports({4, 5})), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port4"));
    answers.clear();  // a refused mode counts as 0, which is none
    refused_lines.clear();
    EXPECT_EQ(write(action, "dot1qVlanStaticEgressPorts", {10}, OctetString, ports({4})), genErr);
}

TEST_F(QBridge, UntaggedPortsMustBeEgressPorts) {
    EXPECT_EQ(set({egress(10, ports({1})), untagged(10, ports({1, 2})), status(10, createAndGo)}), genErr);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_TRUE(pending());  // a refused RESERVE1 leaves the flag set
    // Without a row status the check waits for RESERVE2, and an empty egress list is no reason.
    EXPECT_EQ(set({egress(10, ports({1})), untagged(10, ports({2}))}), genErr);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_EQ(set({egress(10, ports({})), untagged(10, ports({2}))}), noError);
    // The row status looks at what is staged, whatever its value.
    EXPECT_EQ(write(reserve1, "dot1qVlanStaticRowStatus", {10}, Integer, integer(active)), genErr);
}

TEST_F(QBridge, UndoRemovesTheVlan) {
    may_configure_in.insert(undo);
    refused_lines = {"vlan 10"};
    EXPECT_EQ(set({name(10, "a"), status(10, createAndGo)}), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10"));  // nothing to take away
    EXPECT_TRUE(record_is_clear());
    forget();
    refused_lines = {"name a"};
    EXPECT_EQ(set({name(10, "a"), status(10, createAndGo)}), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "-1 name a", "5 no vlan 10"));
    forget();
    EXPECT_EQ(write(undo, "dot1qVlanStaticRowStatus", {10}, Integer, integer(active)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 no vlan 10"));
    EXPECT_EQ(set({status(10, destroy)}), noError);
    EXPECT_EQ(sent.size(), 2u);
}

TEST_F(QBridge, ColumnsAreCheckedThenStagedOrSent) {
    may_configure_in.insert(undo);
    const std::string longest(32, 'x');
    const auto clear = [this] { std::fill_n(record, 84, static_cast<unsigned char>(0)); };
    expect_checks({
        Writable("dot1qVlanStaticName", {10}, OctetString, words(32))
            .before(clear)
            .sends({{longest, {"5 vlan 10", "-1 name " + longest}}}),
        Writable("dot1qVlanStaticEgressPorts", {10}, OctetString, octets(0, 12)).before(clear),
        Writable("dot1qVlanForbiddenEgressPorts", {10}, OctetString, octets(0, 12)).before(clear).sends_nothing(),
        Writable("dot1qVlanStaticUntaggedPorts", {10}, OctetString, octets(0, 12)).before(clear),
        Writable("dot1qVlanStaticRowStatus", {10}, Integer, between(active, destroy))
            .before(clear)
            .sends({{active, {}},
                    {notInService, {}},
                    {notReady, {}},
                    {createAndGo, {"5 vlan 10"}},
                    {createAndWait, {}},
                    {destroy, {"5 no vlan 10"}}}),
    });
    clear();
    for (const int phase : {reserve1, action}) {  // nothing is staged before the index is right
        write(phase, "dot1qVlanStaticName", {1, 2}, OctetString, text("x"));
        write(phase, "dot1qVlanForbiddenEgressPorts", {1, 2}, OctetString, ports({7}));
    }
    EXPECT_TRUE(record_is_clear());
    const Bytes all(12, 0xff);
    EXPECT_EQ(write(reserve1, "dot1qVlanForbiddenEgressPorts", {1}, OctetString, all), noError);
    EXPECT_EQ(Bytes(record + 48, record + 62),
              (Bytes{0, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 0}));
}

TEST_F(QBridge, Pvid) {
    modes = {{1, access}, {2, hybrid}, {3, trunk}, {4, untagged_hybrid}};
    EXPECT_EQ(set("dot1qPvid", {5122}, Gauge32, integer(77)), noError);
    EXPECT_EQ(set("dot1qPvid", {5123}, Gauge32, integer(5000)), noError);
    EXPECT_EQ(set("dot1qPvid", {5124}, Gauge32, integer(77)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port2", "-1 switchport hybrid native vlan 77",  //
                                     "5 interface port3", "-1 switchport trunk native vlan 5000", "5 interface port4",
                                     "-1 switchport hybrid native vlan 5124"));
    forget();
    EXPECT_EQ(set("dot1qPvid", {5121}, Gauge32, integer(77)), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1"));
    expect_checks({Writable("dot1qPvid", {5122}, Gauge32, any_number()).order(on_interface())});
}

TEST_F(QBridge, FrameTypesAndIngressFiltering) {
    expect_checks({
        Writable("dot1qPortAcceptableFrameTypes", {5121}, Integer, between(1, 3))
            .order(on_interface())
            .sends({{1, {"5 interface port1", "-1 acceptable-frame admit-all"}},
                    {2, {"5 interface port1", "-1 acceptable-frame tagged-only"}},
                    {3, {"5 interface port1", "-1 acceptable-frame untagged-only"}}}),
        Writable("dot1qPortIngressFiltering", {5121}, Integer, between(1, 2))
            .order(on_interface())
            .sends({{1, {"5 interface port1", "-1 ingress-checking"}},
                    {2, {"5 interface port1", "-1 no ingress-checking"}}}),
    });
}

}  // namespace tests
