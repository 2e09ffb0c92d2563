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

TEST_F(MulticastVlans, GroupsOfNoKnownAddressTypeAreShownBlank) {
    get("mvrSourceVlanGroupRowStatus", {100, 3, 4, 239, 1, 1, 1, 4});
    EXPECT_THAT(commands(), ElementsAre("show mvr group snmp vlan 100 group  "));
    EXPECT_EQ(log(), "");
}

TEST_F(MulticastVlans, TakeGroupsAndPorts) {
    const Bytes some = area({3, 0, 0, 0, 0, 0, 0, 0x80, 1, 2}), more = area(Bytes(20, 0xff));
    const auto port_list = [&](const char* object, const std::string& role) {
        const std::string line = "5 mvr snmp vlan  100 " + role;
        return Writable(object, {100}, OctetString, any_octets())
            .sends({{some, {line + " 3 -2147483648 513"}},
                    {more, {line + " -1 -1 -1"}},  // cut
                    {Bytes(12, 0xff), {line + " 0 0 0"}}});
    };
    expect_checks({
        Writable("mvrSourceVlanGroupRowStatus", {100, 1, 4, 239, 1, 1, 1, 4}, Integer, between(1, 6)),
        Writable("mvrSourceVlanGroupRowStatus", {100}, Integer, between(1, 6))
            .sends({{destroy, {"5 mvr", "-1 no mvr-group 0.0.0.0 vlan 100"}}}),
        Writable("mvrSourceVlanGroupRowStatus", {100, 3, 4, 239, 1, 1, 1, 4}, Integer, between(1, 6))
            .sends({{destroy, {"5 mvr", "-1 no mvr-group   vlan 100"}}}),
        port_list("mvrSourcePortList", "source"),
        port_list("mvrReceivePortList", "receive"),
        Writable("mvrPortRowStatus", {100}, Integer, between(1, 6)),
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
