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
    expect_checks({Writable("nVlanInterfaceRowStatus", {10}, Integer, between(active, destroy))
                       .sends({{active, {}},
                               {notInService, {}},
                               {notReady, {}},
                               {createAndGo, {"5 interface vlan10"}},
                               {createAndWait, {}},
                               {destroy, {"5 no interface vlan10"}}})});
    // An OID that ends at the column is the clear key, for writes too.
    EXPECT_EQ(write(action, "nVlanInterfaceRowStatus", {}, Integer, integer(createAndGo)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface vlan0"));
}

}  // namespace tests
