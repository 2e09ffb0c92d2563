// Limits and access groups of router interfaces; what is said of both protocols holds for each.
#include "user/igmp/multicast_host.h"

namespace tests {

class RouterLimits : public MulticastHost, public ::testing::WithParamInterface<bool> {
protected:
    const bool mld_ = GetParam();
    const std::string limit_ = mld_ ? "ipv6 mld limit" : "ip igmp limit";
    std::string named(const std::string& suffix) const { return (mld_ ? "mgmdMld" : "mgmdIgmp") + suffix; }
};

INSTANTIATE_TEST_SUITE_P(Protocols, RouterLimits, ::testing::Bool(),
                         [](const auto& mld) { return mld.param ? "mld" : "igmp"; });

TEST_P(RouterLimits, HaveTheirOwnBuffersAndTraceAccessGroups) {
    answer(named("LimitTable"), integer(7));
    answer(named("AccGrpTable"), integer(7));
    EXPECT_EQ(get(named("Limit"), {5001}).address, loaded().symbol<unsigned char>("RETVALUE_mgmdLimitTable"));
    EXPECT_EQ(get(named("Limit"), {1, 1}).value, std::nullopt);
    EXPECT_EQ(log(), "");
    for (const char* row : {"", "5001"}) {
        forget();
        const ReadResult group = next(named("AccessGroup"), index_of(row));
        EXPECT_EQ(group.address, loaded().symbol<unsigned char>("RETVALUE_mgmdAccGrpTable"));
        EXPECT_EQ(log(), std::string("|idx:") + (*row ? row : "0") + " magic:3|cmd:" + commands().at(0));
        EXPECT_THAT(loggers(), ElementsAre(named("AccGrpTable")));
    }
    forget();
    EXPECT_EQ(get(named("AccessGroup"), {1, 1}).value, std::nullopt);
    EXPECT_EQ(log(), "|!get idx fail ret:-1");
}

TEST_P(RouterLimits, CheckInTheirOrderAndLogInTheirOwnWords) {
    const std::string index = "|!get idx fail ret:-1", name = "|!MIB-ERR$SNMP_ERR_NOSUCHNAME";
    expect_checks({
        Writable(named("Limit"), {1034}, Unsigned32, between(0, 2048))
            .logs(refusals({"|!SNMP_ERR_WRONGTYPE", "|!SNMP_ERR_WRONGLENGTH", "", index, "|key.idx:1034"})),
        Writable(named("AccessGroup"), {1034}, OctetString, any_words())
            .sends_nothing()
            .logs(refusals({"", "", "|!SNMP_ERR_NOSUCHNAME", "|!SNMP_ERR_NOSUCHNAME", ""})),
        Writable(named("AccGrpStatus"), {1035}, Integer, between(1, 6))
            .sends_nothing()
            .logs(refusals({"|!MIB-ERR$SNMP_ERR_WRONGTYPE", name, name, name, ""})),
    });
}

TEST_P(RouterLimits, TraceALimitButNotItsRemoval) {
    const auto write_limit = [this](int phase, int limit) {
        const int error = write_phase(phase, named("Limit"), {1034}, Unsigned32, integer(limit));
        EXPECT_THAT(loggers(), ElementsAre("write_" + named("Limit")));
        return std::to_string(error) + log();
    };
    const std::string set = "|cmd:interface vlan10|cmd:" + limit_ + " 64";
    EXPECT_EQ(write_limit(reserve1, 64), "0|key.idx:1034|value:64|vlan_name:vlan10 action:0");
    EXPECT_EQ(write_limit(action, 64), "0|key.idx:1034|value:64|vlan_name:vlan10 action:2" + set);
    EXPECT_EQ(write_limit(action, 0), "0|key.idx:1034|value:0|vlan_name:vlan10 action:2");
    refused_lines = {"interface vlan10"};
    EXPECT_EQ(write_limit(action, 64), "5|key.idx:1034|value:64|vlan_name:vlan10 action:2|cmd:interface vlan10");
}

TEST_P(RouterLimits, AccessGroupsAreNamedFirstAndAppliedByTheStatusOfTheSameRow) {
    const auto write_name = [this](int phase, oid row, const std::string& name) {
        EXPECT_EQ(write_phase(phase, named("AccessGroup"), {row}, OctetString, text(name)), noError);
        return joined(lines()) + log();
    };
    const auto write_status = [this](oid row, int status) {
        const int error = write_phase(action, named("AccGrpStatus"), {row}, Integer, integer(status));
        return std::to_string(error) + joined(lines()) + log();
    };
    const std::string interface = "|5 interface vlan10", traced = "|MIB$interface vlan10";
    const std::string line = "ip igmp access-group video", removal = "no ip igmp access-group";
    write_name(action, 1035, "audio");
    EXPECT_EQ(write_name(reserve1, 1034, "video"), "");
    EXPECT_EQ(write_status(1034, createAndGo), "0");  // only ACTION keeps a name
    EXPECT_EQ(write_name(action, 1034, "video"), "|SNPMIB$video 1034 ");
    EXPECT_THAT(loggers(), ElementsAre("write_" + named("AccessGroup")));
    for (const int again : {1, 2}) {  // never cleared
        SCOPED_TRACE(again);
        EXPECT_EQ(write_status(1034, createAndGo), "0" + interface + "|-1 " + line + traced + "|MIB$" + line);
        EXPECT_EQ(sent.at(1).caller, "write_" + named("AccGrpStatus"));
        EXPECT_EQ(write_status(1034, destroy), "0" + interface + "|-1 " + removal + "|!MIB$" + removal);
    }
    EXPECT_THAT(loggers(), ElementsAre("write_" + named("AccGrpStatus")));
    EXPECT_EQ(write_status(1035, createAndGo), "0");
    for (const int status : {active, notInService, notReady, createAndWait}) EXPECT_EQ(write_status(1034, status), "0");
    refused_lines = {line, removal};
    const std::string failed = "|!MIB-ERR$SNMP_ERR_GENERR";
    EXPECT_EQ(write_status(1034, createAndGo), "5" + interface + "|-1 " + line + traced + "|MIB$" + line + failed);
    EXPECT_EQ(write_status(1034, destroy), "5" + interface + "|-1 " + removal + "|!MIB$" + removal + failed);
    refused_lines = {"interface vlan10"};
    EXPECT_EQ(write_status(1034, createAndGo), "5" + interface + traced + failed);
    refused_lines.clear();
    // A name is 32 octets; the other protocol's status finds it under the same row, and sends the same.
    forget();
    const std::string other = mld_ ? "mgmdIgmpAccGrpStatus" : "mgmdMldAccGrpStatus";
    EXPECT_EQ(set({{named("AccessGroup"), {1034}, OctetString, text(std::string(40, 'n'))},
                   {other, {1034}, Integer, integer(createAndGo)}}),
              noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface vlan10", "-1 ip igmp access-group " + std::string(32, 'n')));
}

}  // namespace tests
