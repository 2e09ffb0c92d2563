#include "support/recording_host.h"

namespace tests {

class PBridge : public RecordingHost {};

TEST_F(PBridge, DeviceCapabilitiesComeFromTheLibrary) {
    EXPECT_EQ(get("dot1dDeviceCapabilities", {0}).value, (Bytes{0x12}));
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(PBridge, TablesHaveABufferOfTheirOwn) {
    answer("dot1dPortCapabilitiesTable", {0xe0}, integer(2));
    const ReadResult first = next("dot1dPortCapabilities");
    EXPECT_EQ(first.name, oid_of("dot1dPortCapabilities", {2}));
    get("dot1dPortCapabilities", {2});
    EXPECT_THAT(commands(), ElementsAre("show port-capabilities", "show port-capabilities 2"));
    EXPECT_EQ(shown[0].request.result_size, 512);
    EXPECT_EQ(shown[0].request.request_class, 2u);
    EXPECT_NE(first.address, ret_value);
}

TEST_F(PBridge, PrioritiesAreAskedForInAClassOfTheirOwn) {
    next("dot1dPortDefaultUserPriority");
    get("dot1dPortDefaultUserPriority", {5210});
    get("dot1dPortNumTrafficClasses", {5121});
    get("dot1dRegenUserPriority", {5121, 7});
    next("dot1dRegenUserPriority", {5121});
    next("dot1dRegenUserPriority");
    EXPECT_THAT(commands(),
                ElementsAre("show qos interface cos 0", "show qos interface cos 5210", "", "show qos cos regen 5121 7",
                            "show qos cos regen 5121 0", "show qos cos regen 0 0"));
    std::vector<int> index_counts;
    for (const Shown& request : shown) {
        EXPECT_EQ(request.request.request_class, 16384u);
        EXPECT_EQ(request.request.result_size, 512);
        index_counts.push_back(request.request.index_count);
    }
    EXPECT_THAT(index_counts, ElementsAre(0, 0, 0, 2, 1, 0));
    EXPECT_EQ(shown[3].request.key_size, 8);
}

TEST_F(PBridge, RowsOutsideTheirRangesHaveNothing) {
    const std::pair<const char*, Oid> outside[] = {{"dot1dPortDefaultUserPriority", {5211}},
                                                   {"dot1dPortNumTrafficClasses", {0x80000000}},
                                                   {"dot1dRegenUserPriority", {5211, 0}},
                                                   {"dot1dRegenUserPriority", {5121, 8}}};
    for (const auto& [object, index] : outside) {
        const ReadResult result = get(object, index);
        EXPECT_EQ(result.value, std::nullopt) << object;
        EXPECT_EQ(result.writer, kUntouched) << object;
    }
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(PBridge, DefaultPriorityIsCheckedBeforeActionAndRefusedWithGenErr) {
    expect_checks({
        Writable("dot1dPortDefaultUserPriority", {5121}, Integer, between(0, 7))
            .order({step::type, step::length, step::column, step::index, step::interface,
                    step::value.answers(genErr).in({reserve1, reserve2})})
            .sends({{0, {"5 interface port1", "-1 mls qos cos 0"}}, {7, {"5 interface port1", "-1 mls qos cos 7"}}}),
    });
}

TEST_F(PBridge, TrafficClassesGarpAndGmrpOnlyRefuse) {
    for (const char* object : {"dot1dTrafficClassesEnabled", "dot1dGmrpStatus"})
        EXPECT_EQ(get(object, {0}).value, std::nullopt) << object;
    for (const char* object :
         {"dot1dUserPriority", "dot1dTrafficClass", "dot1dPortOutboundAccessPriority", "dot1dPortGmrpLastPduOrigin"})
        EXPECT_EQ(get(object, {1, 1}).value, std::nullopt) << object;
    EXPECT_EQ(get("dot1dPortGarpJoinTime", {1}).writer, kUntouched);
    EXPECT_THAT(shown, IsEmpty());

    const std::vector<int> always{0, 1, 2, 3, 4, 5, 6};
    std::vector<Writable> refused;
    for (const char* scalar : {"dot1dTrafficClassesEnabled", "dot1dGmrpStatus"})
        refused.push_back(Writable(scalar, {0}, Integer, between(1, 2)).order(unparsed()).refused(always));
    for (const char* number : {"dot1dPortNumTrafficClasses", "dot1dRegenUserPriority", "dot1dTrafficClass"})
        refused.push_back(Writable(number, {1}, Integer, any_number()).order(unparsed()).refused(always));
    for (const char* state : {"dot1dPortGmrpStatus", "dot1dPortRestrictedGroupRegistration"})
        refused.push_back(Writable(state, {1}, Integer, between(1, 2)).order(unparsed()).refused(always));
    expect_checks(refused);
}

}  // namespace tests
