// ipv4InterfaceTable, ipv6InterfaceTable and ipv6RouterAdvertTable.
#include "support/recording_host.h"

namespace tests {
namespace {

const Oid kVlan10{1034};
const Oid kVlan20{1044};
// The first and last VLAN interface, and the indexes next to them.
const Oid kEnds[] = {{1025}, {5118}};
const Oid kOthers[] = {{0}, {1024}, {5119}, {5121}, {5211}, {4294967295}};

}  // namespace

class IpInterfaces : public RecordingHost {
protected:
    IpInterfaces() {
        set(status(destroy));  // forgets what other tests left
        forget();
    }
    static Assignment number(const char* parameter, std::int64_t value, const Oid& row = kVlan10) {
        return {std::string("ipv6RouterAdvert") + parameter, row, Unsigned32, integer(value)};
    }
    static Assignment flag(const char* parameter, int value, const Oid& row = kVlan10) {
        return {std::string("ipv6RouterAdvert") + parameter, row, Integer, integer(value)};
    }
    static Assignment status(int value, const Oid& row = kVlan10) { return flag("RowStatus", value, row); }
    using RecordingHost::set;
    int set(const Assignment& varbind) { return RecordingHost::set({varbind}); }

    // The lines of a row status and its error.
    Lines lines_of(int value, int error = noError, const Oid& row = kVlan10) {
        forget();
        EXPECT_EQ(set(status(value, row)), error);
        return lines();
    }
};

TEST_F(IpInterfaces, AreShownUpToTheLastPort) {
    const auto show_all = [this](const Oid& index) {
        for (const char* object : {"ipv4InterfaceReasmMaxSize", "ipv6InterfaceIdentifier", "ipv6RouterAdvertLinkMTU"})
            get(object, index);
    };
    for (const Oid& index : {Oid{5211}, Oid{4294967295}}) show_all(index);
    EXPECT_THAT(shown, IsEmpty());
    show_all({5210});
    EXPECT_THAT(commands(), ElementsAre("show ipinterface ifindex 5210", "show ipv6interface ifindex 5210",
                                        "show ipv6rtadv ifindex 5210"));
    EXPECT_EQ(get("ipv6InterfaceEnableStatus", {5211}).writer, kUntouched);
    EXPECT_EQ(get("ipv6RouterAdvertRowStatus", {5211}).writer, kUntouched);
    EXPECT_EQ(get("ipv4InterfaceEnableStatus", kVlan10).writer, kUntouched);
    EXPECT_EQ(get("ipv6InterfaceForwarding", kVlan10).writer, nullptr);
    EXPECT_EQ(get("ipv6RouterAdvertLinkMTU", kVlan10).writer, nullptr);
    answer("ipv6RouterAdvertTable", integer(600), integer(1044));
    EXPECT_EQ(next("ipv6RouterAdvertMaxInterval", kVlan10).name, oid_of("ipv6RouterAdvertMaxInterval", kVlan20));
}

TEST_F(IpInterfaces, ParametersOfRowsDoNotWaitForARowStatus) {
    const auto flag_of = [](const std::string& object) {
        return Writable(object, kVlan10, Integer, between(1, 2)).in_existing_row();
    };
    const auto number_of = [](const std::string& object) {
        return Writable(object, kVlan10, Unsigned32, any_number()).in_existing_row();
    };
    expect_checks({
        flag_of("ipv6InterfaceEnableStatus"),
        flag_of("ipv6RouterAdvertSendAdverts"),
        number_of("ipv6RouterAdvertMaxInterval"),
        number_of("ipv6RouterAdvertMinInterval"),
        flag_of("ipv6RouterAdvertManagedFlag"),
        flag_of("ipv6RouterAdvertOtherConfigFlag"),
        number_of("ipv6RouterAdvertReachableTime"),
        number_of("ipv6RouterAdvertRetransmitTime"),
        number_of("ipv6RouterAdvertCurHopLimit"),
        number_of("ipv6RouterAdvertDefaultLifetime"),
    });
    EXPECT_THAT(lines_of(createAndGo), ElementsAre("5 interface vlan10"));
    expect_checks({
        {"ipv6RouterAdvertRowStatus", kVlan10, Integer, between(4, 6).bad(5)},
        Writable("ipv6RouterAdvertManagedFlag", kVlan10, Integer, between(1, 2)).sends_nothing(),
        Writable("ipv6RouterAdvertCurHopLimit", kVlan10, Unsigned32, any_number()).sends_nothing(),
    });
}

TEST_F(IpInterfaces, OnlyVlanInterfacesAreConfigured) {
    Bytes value = integer(1);
    const auto write_all = [&](const Oid& row, int error) {
        EXPECT_EQ(write(action, "ipv6InterfaceEnableStatus", row, Integer, value), error);
        EXPECT_EQ(write(action, "ipv6RouterAdvertSendAdverts", row, Integer, value, value.data()), error);
        EXPECT_EQ(write(action, "ipv6RouterAdvertMinInterval", row, Unsigned32, value, value.data()), error);
        for (const int status : {createAndGo, destroy})
            EXPECT_EQ(write(action, "ipv6RouterAdvertRowStatus", row, Integer, integer(status)), error);
    };
    for (const Oid& row : kOthers) write_all(row, genErr);
    EXPECT_THAT(sent, IsEmpty());
    for (const Oid& row : kEnds) write_all(row, noError);
    EXPECT_EQ(lines()[0], "5 interface vlan1");
    EXPECT_EQ(lines()[9], "5 interface vlan4094");
    // What waits does so for any interface.
    forget();
    EXPECT_EQ(write(action, "ipv6RouterAdvertMinInterval", {5121}, Unsigned32, value), noError);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(IpInterfaces, NewRowTakesOneValueWithEachRowStatus) {
    // In whatever order they come.
    EXPECT_EQ(set({number("DefaultLifetime", 1800), number("CurHopLimit", 64), number("RetransmitTime", 0),
                   number("ReachableTime", 4294967295), flag("OtherConfigFlag", 2), flag("ManagedFlag", 1)}),
              noError);
    EXPECT_EQ(set({number("MinInterval", 200), number("MaxInterval", 600), flag("SendAdverts", 1)}), noError);
    EXPECT_THAT(sent, IsEmpty());
    Lines applied;
    for (Lines of_row; (of_row = lines_of(createAndGo)).size() > 1;) applied.push_back(of_row[1]);
    EXPECT_THAT(applied, ElementsAre("-1 no ipv6 nd suppress-ra", "-1 ipv6 nd ra-interval 600 200",
                                     "-1 ipv6 nd managed-config-flag", "-1 no ipv6 nd other-config-flag",
                                     "-1 ipv6 nd reachable-time -1", "-1 ipv6 nd retrans-timer 0",
                                     "-1 ipv6 hop-limit 64", "-1 ipv6 nd ra-lifetime 1800"));
    EXPECT_EQ(sent.back().caller, "write_ipv6RouterAdvertRowStatus");

    forget();
    EXPECT_EQ(set({number("MaxInterval", 600), number("MinInterval", 200), status(createAndGo)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface vlan10", "-1 ipv6 nd ra-interval 600 200"));
    set(number("MaxInterval", 700));
    EXPECT_EQ(lines_of(createAndGo).back(), "-1 ipv6 nd ra-interval 700") << "the minimum was used up";
    EXPECT_EQ(set({number("CurHopLimit", 1), flag("ManagedFlag", 1), status(createAndWait)}), wrongValue);
    EXPECT_THAT(lines_of(createAndGo), ElementsAre("5 interface vlan10")) << "a SET that is refused leaves nothing";
}

TEST_F(IpInterfaces, MinimumIntervalWaitsForTheMaximumOfItsInterface) {
    EXPECT_EQ(set({number("MinInterval", 200), number("MaxInterval", 900, kVlan20)}), noError);
    EXPECT_THAT(lines_of(createAndGo), ElementsAre("5 interface vlan10"));
    EXPECT_THAT(lines_of(createAndGo, noError, kVlan20),
                ElementsAre("5 interface vlan20", "-1 ipv6 nd ra-interval 900"));
    set(number("MaxInterval", 600));
    EXPECT_THAT(lines_of(createAndGo), ElementsAre("5 interface vlan10", "-1 ipv6 nd ra-interval 600 200"));
    // A parameter waits for one interface, the last one that it was written for.
    EXPECT_EQ(set({number("CurHopLimit", 1), number("CurHopLimit", 2, kVlan20)}), noError);
    EXPECT_THAT(lines_of(createAndGo), ElementsAre("5 interface vlan10"));
    EXPECT_THAT(lines_of(createAndGo, noError, kVlan20), ElementsAre("5 interface vlan20", "-1 ipv6 hop-limit 2"));
}

TEST_F(IpInterfaces, RefusedValueKeepsWaiting) {
    set({number("MaxInterval", 600), number("MinInterval", 200), number("CurHopLimit", 0)});
    refused_lines = {"interface vlan10"};
    EXPECT_THAT(lines_of(createAndGo, genErr), ElementsAre("5 interface vlan10"));
    refused_lines = {"ipv6 nd ra-interval 600 200"};
    lines_of(createAndGo, genErr);
    refused_lines = {"ipv6 hop-limit 0"};
    EXPECT_EQ(lines_of(createAndGo).back(), "-1 ipv6 nd ra-interval 600 200");
    lines_of(createAndGo, genErr);
    refused_lines = {};
    EXPECT_EQ(lines_of(createAndGo).back(), "-1 ipv6 hop-limit 0");
}

TEST_F(IpInterfaces, DestroyForgetsWhatWaitsForAnyInterface) {
    const auto stage = [this] {
        set({number("MaxInterval", 600), number("ReachableTime", 5), flag("ManagedFlag", 1)});
    };
    stage();
    refused_lines = {"interface vlan20"};
    lines_of(destroy, genErr, kVlan20);
    refused_lines = {};
    EXPECT_EQ(lines_of(createAndGo).size(), 2u) << "an interface that is refused forgets nothing";
    refused_lines = {"ipv6 nd suppress-ra"};
    EXPECT_THAT(lines_of(destroy, genErr, kVlan20), ElementsAre("5 interface vlan20", "-1 ipv6 nd suppress-ra"));
    EXPECT_THAT(lines_of(createAndGo), ElementsAre("5 interface vlan10"));
}

}  // namespace tests
