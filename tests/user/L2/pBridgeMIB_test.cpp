#include "support/recording_host.h"

namespace tests {

class PBridge : public RecordingHost {};

TEST_F(PBridge, DeviceCapabilitiesComeFromTheLibrary) {
    EXPECT_EQ(get("dot1dDeviceCapabilities", {0}).value, (Bytes{0x12}));
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(PBridge, RowsEndWithTheLastPortAndPriority) {
    const struct {
        const char* object;
        Oid last, outside;
        std::string command;
    } cases[] = {
        {"dot1dPortDefaultUserPriority", {5210}, {5211}, "show qos interface cos 5210"},
        {"dot1dPortNumTrafficClasses", {5210}, {0x80000000}, ""},
        {"dot1dRegenUserPriority", {5210, 7}, {5211, 0}, "show qos cos regen 5210 7"},
        {"dot1dRegenUserPriority", {5121, 7}, {5121, 8}, "show qos cos regen 5121 7"},
    };
    for (const auto& [object, last, outside, command] : cases) {
        SCOPED_TRACE(object);
        forget();
        get(object, last);
        EXPECT_EQ(get(object, outside).writer, kUntouched);
        EXPECT_THAT(commands(), ElementsAre(command));
    }
}

TEST_F(PBridge, RequestsCountTheIndexOfRegeneratedPrioritiesAlone) {
    answer("dot1dPortCapabilitiesTable", {0xe0});
    EXPECT_NE(get("dot1dPortCapabilities", {2}).address, ret_value);
    get("dot1dPortDefaultUserPriority", {5121});
    next("dot1dRegenUserPriority", {5121});
    get("dot1dRegenUserPriority", {5121, 7});
    std::vector<int> index_counts;
    for (const Shown& request : shown) index_counts.push_back(request.request.index_count);
    EXPECT_THAT(index_counts, ElementsAre(0, 0, 1, 2));
}

TEST_F(PBridge, PrioritiesAndRefusalsAreCheckedInTheirOrder) {
    const std::vector<int> always{0, 1, 2, 3, 4, 5, 6};
    expect_checks({
        // Before ACTION alone, and not wrongValue.
        Writable("dot1dPortDefaultUserPriority", {5121}, Integer, between(0, 7))
            .order({step::type, step::length, step::column, step::index, step::interface,
                    step::value.answers(genErr).in({reserve1, reserve2})}),
        Writable("dot1dGmrpStatus", {0}, Integer, between(1, 2)).order(unparsed()).refused(always),
        Writable("dot1dPortGmrpStatus", {1}, Integer, between(1, 2)).order(unparsed()).refused(always),
        Writable("dot1dTrafficClass", {1}, Integer, any_number()).order(unparsed()).refused(always),
    });
}

}  // namespace tests
