#include "support/recording_host.h"

namespace tests {

class Interfaces : public RecordingHost {};

TEST_F(Interfaces, ShowTheKeyedCommandForTheFirstRowToo) {
    answer("ifTable", integer(6), integer(5121));
    const ReadResult first = next("ifType");
    EXPECT_EQ(first.name, oid_of("ifType", {5121}));
    get("ifType", {5122});
    answer("ifXTable", text("port1"), integer(5121));
    EXPECT_EQ(next("ifName").value, text("port1"));
    answer("interfacesGlobals", integer(30));
    get("ifNumber", {0});
    answer("ifMIBGlobals", integer(1));
    get("ifStackLastChange", {0});
    EXPECT_THAT(commands(), ElementsAre("show interface_uib interfaces 0", "show interface_uib interfaces 5122",
                                        "show interface_uib ifMIB 0", "show interface_uib interfaces_g",
                                        "show interface_uib ifMIB_g"));
    EXPECT_EQ(shown[3].request.key, nullptr);
    EXPECT_EQ(shown[4].request.magic, 2);
}

TEST_F(Interfaces, WritesEnterTheInterfaceAndSendTheirLine) {
    const std::string longest(64, 'x');
    expect_checks({
        Writable("ifAdminStatus", {5121}, Integer, between(1, 3))
            .sends({{1, {"5 interface port1", "-1 no shutdown"}},
                    {2, {"5 interface port1", "-1 shutdown"}},
                    {3, {"5 interface port1"}}}),
        Writable("ifLinkUpDownTrapEnable", {5121}, Integer, between(1, 2))
            .sends({{1, {"5 interface port1", "-1 linktrap 1"}}, {2, {"5 interface port1", "-1 linktrap 0"}}}),
        // The index comes before the length.
        Writable("ifAlias", {5121}, OctetString, words(64).good("\r").bad("\xff"))
            .order({step::type, step::column, step::index, step::length, step::value})
            .sends({{"", {"5 interface port1", "-1 no desc"}},
                    {"\r", {"5 interface port1", "-1 desc \r"}},
                    {"50%s %n", {"5 interface port1", "-1 desc 50%s %n"}},
                    {longest, {"5 interface port1", "-1 desc " + longest}},
                    {text({"ab\0cd", 5}), {"5 interface port1", "-1 desc ab"}}}),
    });
}

TEST_F(Interfaces, UnknownIfIndexIsLeftToTheBackend) {
    refused_lines = {"interface "};
    EXPECT_EQ(set("ifAdminStatus", {9999}, Integer, integer(1)), genErr);
    EXPECT_EQ(set("ifAlias", {9999}, OctetString, text("x")), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface ", "5 interface "));
    EXPECT_EQ(sent[0].caller, "_enter_intf");
}

TEST_F(Interfaces, UnsupportedColumnsPassTheirChecksAndFailInAction) {
    expect_checks({
        Writable("ifPromiscuousMode", {1}, Integer, between(1, 2)).refused(),
        Writable("ifStackStatus", {1}, Integer, between(1, 6)).order(unparsed()).refused(),
        Writable("ifTestId", {1}, Integer, any_number()).order(unparsed()).refused(),
        Writable("ifTestStatus", {1}, Integer, between(1, 2)).order(unparsed()).refused(),
        Writable("ifTestType", {1}, ObjectIdentifier, any_number()).order(unparsed()).refused(),
        Writable("ifTestOwner", {1}, OctetString, any_octets()).order(unparsed()).refused(),
        Writable("ifRcvAddressStatus", {1}, Integer, between(1, 6)).order(unparsed()).refused(),
        Writable("ifRcvAddressType", {1}, Integer, between(1, 3)).order(unparsed()).refused(),
    });
}

TEST_F(Interfaces, EmptyTablesHandOutTheirWritersAndAskNothing) {
    for (const char* object : {"ifStackStatus", "ifTestId", "ifTestOwner", "ifRcvAddressType"}) {
        const ReadResult result = get(object, {1, 2});
        EXPECT_EQ(result.value, std::nullopt);
        EXPECT_NE(result.writer, kUntouched) << object;
    }
    EXPECT_EQ(get("ifStackHigherLayer", {1, 2}).writer, kUntouched);
    EXPECT_EQ(next("ifTestResult").value, std::nullopt);
    EXPECT_THAT(shown, IsEmpty());
}

}  // namespace tests
