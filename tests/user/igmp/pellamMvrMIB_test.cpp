#include "support/recording_host.h"

namespace tests {

class MulticastVlans : public RecordingHost {
protected:
    std::string log() const override {
        std::string log;
        for (const services::LogLine& entry : logged) {
            EXPECT_EQ(entry.channel, "ui");
            log += "|" + entry.text;
        }
        return log;
    }
    // A port list as it is written: what counts are the last 12 octets of 652.
    static Bytes area(const Bytes& ports) { return join(Bytes(640, 0x55), ports); }
};

TEST_F(MulticastVlans, AreShownByVlanAndGroup) {
    const Oid row{100, 1, 4, 239, 1, 1, 1, 4};
    const auto key = [](std::uint8_t last, int count) {
        return join(integer(100), join(address_record({239, 1, 1, last}), integer(count)));
    };
    answer("mvrSourceVlanGroupTable", integer(4), key(2, 8));
    answer("mvrPortTable", integer(4), integer(200));
    EXPECT_EQ(next("mvrSourceVlanGroupCount").name, oid_of("mvrSourceVlanGroupCount", {100, 1, 4, 239, 1, 1, 2, 8}));
    for (const char* column : {"mvrSourceVlanGroupVlanId", "mvrSourceVlanGroupAddress", "mvrSourceVlanGroupCount"})
        EXPECT_EQ(get(column, row).writer, kUntouched);
    get("mvrSourceVlanGroupRowStatus", {100, 3, 4, 239, 1, 1, 1, 4});  // an address of no known type
    EXPECT_EQ(next("mvrPortVlanId", {100}).name, oid_of("mvrPortVlanId", {200}));
    const std::string command = "show mvr group snmp vlan 100 group 239.1.1.1";
    EXPECT_THAT(commands(), ElementsAre("show mvr group snmp vlan 0 group 0.0.0.0", command, command, command,
                                        "show mvr group snmp vlan 100 group  ", "show mvr member snmp vlan 100"));
    EXPECT_EQ(shown[1].key, key(1, 4));
    EXPECT_EQ(shown[5].key, integer(100));
    EXPECT_EQ(log(), "");
}

TEST_F(MulticastVlans, TakeGroupsAndPorts) {
    const std::string remove = "5 mvr snmp vlan %d remove all_port";
    const Bytes more = area(Bytes(20, 0xff));
    const auto port_list = [&more](const std::string& role) {
        const std::string line = "5 mvr snmp vlan  100 " + role;
        return Writable(role == "source" ? "mvrSourcePortList" : "mvrReceivePortList", {100}, OctetString,
                        any_octets().good(area({3, 0, 0, 0, 0, 0, 0, 0x80, 1, 2})).good(more).good(Bytes(12, 0xff)))
            .sends({{area({3, 0, 0, 0, 0, 0, 0, 0x80, 1, 2}), {line + " 3 -2147483648 513"}},
                    {more, {line + " -1 -1 -1"}},  // cut
                    {Bytes(12, 0xff), {line + " 0 0 0"}}});
    };
    expect_checks({
        Writable("mvrSourceVlanGroupRowStatus", {100, 1, 4, 239, 1, 1, 1, 4}, Integer, between(1, 6))
            .sends({{createAndGo, {"5 mvr", "-1 mvr-group 239.1.1.1 count 4 vlan 100"}},
                    {destroy, {"5 mvr", "-1 no mvr-group 239.1.1.1 vlan 100"}},
                    {active, {"5 mvr"}},
                    {createAndWait, {"5 mvr"}}}),
        Writable("mvrSourceVlanGroupRowStatus", {100}, Integer, between(1, 6))
            .sends({{destroy, {"5 mvr", "-1 no mvr-group 0.0.0.0 vlan 100"}}}),
        Writable("mvrSourceVlanGroupRowStatus", {100, 3, 4, 239, 1, 1, 1, 4}, Integer, between(1, 6))
            .sends({{destroy, {"5 mvr", "-1 no mvr-group   vlan 100"}}}),
        port_list("source"),
        port_list("receive"),
        Writable("mvrPortRowStatus", {100}, Integer, between(1, 6))
            .sends({{destroy, {remove}}, {createAndGo, {}}, {active, {}}}),
    });
}

TEST_F(MulticastVlans, ShowOperatorsTheLinesOfPortListsInEveryPhase) {
    for (const int phase : {0, 1, 2, 3, 4, 5, 6}) {
        forget();
        EXPECT_EQ(write(phase, "mvrReceivePortList", {100}, OctetString, area({7})), noError);
        ASSERT_EQ(logged.size(), 1u);
        const std::string text = log(), front = "|[write_mvrReceivePortList,";
        EXPECT_TRUE(text.starts_with(front) && std::stoi(text.substr(front.size())) > 0) << text;
        EXPECT_TRUE(text.ends_with("]cmd[mvr snmp vlan  100 receive 7 0 0]\n")) << text;
        EXPECT_EQ(sent.size(), phase == action ? 1u : 0u);
    }
}

}  // namespace tests
