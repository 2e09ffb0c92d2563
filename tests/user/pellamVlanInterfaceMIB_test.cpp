#include "support/recording_host.h"

namespace tests {

class VlanInterfaces : public RecordingHost {};

TEST_F(VlanInterfaces, AreShownByInterfaceIndexAndKeyedByVlanId) {
    answer("nVlanInterfaceTable", text("vlan10"), integer(10));
    const ReadResult first = next("nVlanInterfaceName");
    EXPECT_EQ(first.value, text("vlan10"));
    EXPECT_EQ(first.name, oid_of("nVlanInterfaceName", {10}));
    next("nVlanInterfaceName", {10});
    get("nVlanInterfaceName", {10});
    EXPECT_THAT(commands(), ElementsAre("show vlan-interface", "show vlan-interface 1034", "show vlan-interface 1034"));
    EXPECT_EQ(shown[2].key, integer(10));
    EXPECT_EQ(shown[2].request.magic, 3);
}

TEST_F(VlanInterfaces, AreCreatedAndDeletedByRowStatus) {
    EXPECT_EQ(set("nVlanInterfaceRowStatus", {10}, Integer, integer(createAndGo)), noError);
    EXPECT_EQ(set("nVlanInterfaceRowStatus", {10}, Integer, integer(destroy)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface vlan10", "5 no interface vlan10"));
    EXPECT_EQ(sent[0].caller, "write_nVlanInterfaceRowStatus");
    forget();
    for (const auto status : {active, notInService, notReady, createAndWait})
        EXPECT_EQ(set("nVlanInterfaceRowStatus", {10}, Integer, integer(status)), noError);
    EXPECT_THAT(lines(), IsEmpty());
    refused_lines = {"interface vlan10"};
    EXPECT_EQ(set("nVlanInterfaceRowStatus", {10}, Integer, integer(createAndGo)), genErr);
}

TEST_F(VlanInterfaces, RefuseInTheOrderOfTheChecks) {
    const struct {
        std::uint8_t type;
        Bytes value;
        Oid index;
        int error;
    } cases[] = {
        {OctetString, {1, 2, 3}, {}, wrongType},    {Integer, {1, 2, 3}, {}, wrongLength},
        {Integer, integer(7), {10, 1}, noSuchName}, {Integer, integer(7), {10}, wrongValue},
        {Integer, integer(0), {10}, wrongValue},    {Integer, integer(-1), {10}, wrongValue},
    };
    for (const auto& [type, value, index, error] : cases)
        for (const int phase : {reserve1, action, undo})
            EXPECT_EQ(write(phase, "nVlanInterfaceRowStatus", index, type, value), error);
    Oid cut = oid_of("nVlanInterfaceRowStatus");
    cut.pop_back();
    EXPECT_EQ(write_name(reserve1, "nVlanInterfaceRowStatus", cut, Integer, integer(4)), noSuchName);
    EXPECT_THAT(sent, IsEmpty());
    // An OID that ends at the column is the clear key, for writes too.
    EXPECT_EQ(write(action, "nVlanInterfaceRowStatus", {}, Integer, integer(createAndGo)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface vlan0"));
}

}  // namespace tests
