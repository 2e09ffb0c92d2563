#include "support/recording_host.h"

namespace tests {

class FilteringMode : public RecordingHost {};

TEST_F(FilteringMode, IsShownByTheInterfacesName) {
    answer("nL2FDBMulticastFilterModeTable", integer(2), integer(5121));
    const ReadResult first = next("nL2FDBMcastFilterMode");
    EXPECT_EQ(first.value, integer(2));
    EXPECT_EQ(first.name, oid_of("nL2FDBMcastFilterMode", {5121}));
    get("nL2FDBMcastFilterMode", {5121});
    EXPECT_EQ(get("nL2FDBMcastFilterModeIfIndex", {5121}).value, std::nullopt);
    // Without a name there is nothing to ask, but the write method is there.
    const ReadResult unknown = get("nL2FDBMcastFilterMode", {99});
    EXPECT_EQ(unknown.value, std::nullopt);
    EXPECT_EQ(unknown.writer, first.writer);
    EXPECT_THAT(commands(), ElementsAre("show debugging multicast filtering-mode",
                                        "show debugging multicast filtering-mode interface port1"));
}

TEST_F(FilteringMode, IsSetOnThePort) {
    const auto mode = [](int value, const std::string& word) {
        return Writable::Sending{value, {"5 interface port1", "-1 multicast filtering-mode " + word}};
    };
    expect_checks(
        {Writable("nL2FDBMcastFilterMode", {5121}, Integer, between(1, 3))
             .order(on_interface())
             .sends({mode(1, "forward-all"), mode(2, "forward-unregistered"), mode(3, "filter-unregistered")})});
}

}  // namespace tests
