#include "support/recording_host.h"

namespace tests {

class ProxyArp : public RecordingHost {
protected:
    struct Protocol {
        std::string table, show, line;
    };
    const Protocol protocols_[2] = {{"proxyARP", "proxy-arp", "ip proxy-arp"},
                                    {"localproxyARP", "local-proxy-arp", "ip local-proxy-arp"}};
};

TEST_F(ProxyArp, IsShownByInterface) {
    answer("proxyARPMIBGlobals", integer(3));
    EXPECT_EQ(get("proxyARPNumber", {0}).value, integer(3));
    EXPECT_EQ(get("localproxyARPNumber", {0}).value, integer(3));
    EXPECT_THAT(commands(), ElementsAre("show ip snmp proxy-arp num", "show ip snmp proxy-arp num"));
    EXPECT_EQ(shown[1].request.magic, 2);
    for (const Protocol& protocol : protocols_) {
        forget();
        answer(protocol.table + "Table", integer(1), integer(1034));
        EXPECT_EQ(next(protocol.table + "RowStatus").name, oid_of(protocol.table + "RowStatus", {1034}));
        get(protocol.table + "IfIndex", {1034});
        EXPECT_THAT(commands(), ElementsAre("show ip snmp " + protocol.show + " entry 0",
                                            "show ip snmp " + protocol.show + " entry 1034"));
    }
}

TEST_F(ProxyArp, IsSwitchedByRowStatus) {
    const std::vector<int> checking = {reserve1, commit};
    for (const Protocol& protocol : protocols_) {
        const std::string status = protocol.table + "RowStatus";
        expect_checks({Writable(status, {1034}, Integer, between(active, destroy))
                           .order({step::column, step::index, step::type.in(checking), step::length.in(checking),
                                   step::value.in({action})})
                           .sends({{active, {}},
                                   {notInService, {}},
                                   {notReady, {}},
                                   {createAndGo, {"5 interface vlan10", "-1 " + protocol.line}},
                                   {createAndWait, {}},
                                   {destroy, {"5 interface vlan10", "-1 no " + protocol.line}}})});
        // In ACTION a value is what up to four of its octets make, whatever its type.
        forget();
        EXPECT_EQ(write(action, status, {1034}, OctetString, {4}), noError);
        EXPECT_EQ(write(action, status, {1034}, Gauge32, {6, 0, 0, 0, 1}), noError);
        EXPECT_EQ(write(action, status, {1034}, Integer, {}), wrongValue);
        EXPECT_THAT(lines(), ElementsAre("5 interface vlan10", "-1 " + protocol.line, "5 interface vlan10",
                                         "-1 no " + protocol.line));
        // Only a line needs a name.
        forget();
        interfaces_have_names = false;
        EXPECT_EQ(set(status, {1034}, Integer, integer(createAndGo)), wrongValue);
        EXPECT_EQ(set(status, {1034}, Integer, integer(destroy)), wrongValue);
        EXPECT_EQ(set(status, {1034}, Integer, integer(createAndWait)), noError);
        EXPECT_THAT(sent, IsEmpty());
        interfaces_have_names = true;
    }
}

}  // namespace tests
