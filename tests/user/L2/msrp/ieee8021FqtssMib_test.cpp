#include "support/recording_host.h"

namespace tests {

class StreamQueuing : public RecordingHost {};

TEST_F(StreamQueuing, ClassesAreAskedForByPortAndClass) {
    answer("ieee8021FqtssBapTable", integer(75), {1, 20, 0, 0, 1, 0, 0, 0});  // 5121, 1
    answer("ieee8021FqtssSrpRegenOverrideTable", integer(1), {1, 20, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(next("ieee8021FqtssDeltaBandwidth").name, oid_of("ieee8021FqtssDeltaBandwidth", {5121, 1}));
    EXPECT_EQ(next("ieee8021FqtssSrpBoundaryPort").name, oid_of("ieee8021FqtssSrpBoundaryPort", {5121, 0}));
    get("ieee8021FqtssDeltaBandwidth", {5121, 0});
    get("ieee8021FqtssSrpBoundaryPort", {5121, 1});
    get("ieee8021FqtssDeltaBandwidth", {0, 1});  // port 0, whatever the class
    EXPECT_THAT(commands(),
                ElementsAre("show snmp ieee8021fqtss-bap 0 0", "show snmp ieee8021fqtss-srp-regen-override 0 0",
                            "show snmp ieee8021fqtss-bap 5121 0", "show snmp ieee8021fqtss-srp-regen-override 5121 1",
                            "show snmp ieee8021fqtss-bap 0 0"));
    EXPECT_EQ(shown[3].key, (Bytes{1, 20, 0, 0, 1, 0, 0, 0}));
}

TEST_F(StreamQueuing, OnlyTwoColumnsHaveValues) {
    for (const char* object :
         {"ieee8021FqtssBAPTrafficClass", "ieee8021FqtssOperIdleSlopeMs", "ieee8021FqtssOperIdleSlopeLs",
          "ieee8021FqtssAdminIdleSlopeMs", "ieee8021FqtssAdminIdleSlopeLs", "ieee8021FqtssBapRowStatus",
          "ieee8021FqtssTrafficClass", "ieee8021FqtssSrClassPriority", "ieee8021FqtssPriorityRegenOverride"}) {
        EXPECT_EQ(next(object).value, std::nullopt) << object;
        EXPECT_EQ(get(object, {5121, 0}).writer, kUntouched) << object;
    }
    EXPECT_EQ(next("ieee8021FqtssTxSelectionAlgorithmID").value, std::nullopt);
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(StreamQueuing, BandwidthIsSetPerClassAndSelectionIsRefused) {
    expect_checks({
        Writable("ieee8021FqtssDeltaBandwidth", {5121, 0}, Unsigned32, any_number())
            .sends({{40, {"5 msrp_snmp interface 5121 delta-bandwidth class-a 40"}}}),
        Writable("ieee8021FqtssDeltaBandwidth", {5121, 1}, Unsigned32, any_number())
            .sends({{75, {"5 msrp_snmp interface 5121 delta-bandwidth class-b 75"}}}),
        Writable("ieee8021FqtssDeltaBandwidth", {5121, 2}, Unsigned32, any_number()).refused(),
        Writable("ieee8021FqtssTxSelectionAlgorithmID", {1, 5121, 0}, Unsigned32, any_number())
            .order(unparsed())
            .refused(),
    });
}

}  // namespace tests
