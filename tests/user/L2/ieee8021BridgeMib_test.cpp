#include "support/recording_host.h"

namespace tests {

class Ieee8021Bridge : public RecordingHost {};

TEST_F(Ieee8021Bridge, TimersAreAskedForByInterfaceAlone) {
    answer("ieee8021BridgePortMrpTable", integer(20), integer(5121));
    EXPECT_EQ(next("ieee8021BridgePortMrpJoinTime").name, oid_of("ieee8021BridgePortMrpJoinTime", {5121}));
    get("ieee8021BridgePortMrpLeaveTime", {5121});
    EXPECT_THAT(commands(), ElementsAre("show snmp mrp timer 0", "show snmp mrp timer 5121"));
}

TEST_F(Ieee8021Bridge, TimersTakeAnyTimeAndNeedNoInterface) {
    interfaces_have_names = false;
    expect_checks({
        Writable("ieee8021BridgePortMrpJoinTime", {5121}, Integer, any_number())
            .sends({{-20, {"5 mrp_snmp timer join -20 ifindex 5121"}}, {0, {"5 mrp_snmp timer join 0 ifindex 5121"}}}),
        Writable("ieee8021BridgePortMrpLeaveTime", {5121}, Integer, any_number())
            .sends({{60, {"5 mrp_snmp timer leave 60 ifindex 5121"}}}),
        Writable("ieee8021BridgePortMrpLeaveAllTime", {5121}, Integer, any_number())
            .sends({{1000, {"5 mrp_snmp timer leave-all 1000 ifindex 5121"}}}),
    });
}

// Everything else has no value, and whatever is writable refuses.
TEST_F(Ieee8021Bridge, OtherTablesOnlyRefuse) {
    const auto module = std::ranges::find(loaded().registrations, "ieee8021BridgeMib", &services::Registration::descr);
    ASSERT_NE(module, loaded().registrations.end());
    const auto* names = loaded().symbol<const char* const>("ieee8021BridgeMib_names");
    std::vector<Writable> refused;
    for (std::size_t i = 0; i < module->count; ++i) {
        const std::string name = names[i];
        if (name.starts_with("ieee8021BridgePortMrp")) continue;
        EXPECT_EQ(get(name, {1, 1}).value, std::nullopt) << name;
        EXPECT_EQ(next(name).value, std::nullopt) << name;
        if (module->entries[i].acl != ReadWrite) continue;
        const std::uint8_t type = module->entries[i].type;
        Values values = type == OctetString           ? any_octets()
                        : name.ends_with("RowStatus") ? between(active, destroy)
                                                      : any_number();
        refused.push_back(Writable(name, {1}, type, std::move(values)).order(unparsed()).refused());
    }
    EXPECT_THAT(shown, IsEmpty());
    EXPECT_EQ(refused.size(), 24u);
    expect_checks(refused);
}

}  // namespace tests
