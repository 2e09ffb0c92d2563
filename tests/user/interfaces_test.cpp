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

TEST_F(Interfaces, AdminStatusEntersTheInterfaceAndSendsItsLine) {
    EXPECT_EQ(set("ifAdminStatus", {5121}, Integer, integer(1)), noError);
    EXPECT_EQ(set("ifAdminStatus", {5121}, Integer, integer(2)), noError);
    EXPECT_EQ(set("ifAdminStatus", {5121}, Integer, integer(3)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 no shutdown", "5 interface port1", "-1 shutdown",
                                     "5 interface port1"));
    EXPECT_EQ(sent[0].caller, "_enter_intf");
    EXPECT_EQ(sent[1].caller, "write_ifAdminStatus");
    EXPECT_EQ(set("ifAdminStatus", {5121}, Integer, integer(4)), wrongValue);
    EXPECT_EQ(set("ifAdminStatus", {5121}, Integer, integer(0)), wrongValue);
}

TEST_F(Interfaces, UnknownIfIndexIsLeftToTheBackend) {
    refused_lines = {"interface "};
    EXPECT_EQ(set("ifAdminStatus", {9999}, Integer, integer(1)), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface "));
}

TEST_F(Interfaces, LinkTrapTakesAnArgument) {
    EXPECT_EQ(set("ifLinkUpDownTrapEnable", {5121}, Integer, integer(1)), noError);
    EXPECT_EQ(set("ifLinkUpDownTrapEnable", {5121}, Integer, integer(2)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 linktrap 1", "5 interface port1", "-1 linktrap 0"));
    EXPECT_EQ(sent[3].caller, "write_ifLinkUpDownTrapEnable");
}

TEST_F(Interfaces, AliasIsSentAsText) {
    const std::string longest(64, 'x');
    const struct {
        std::string alias;
        std::string line;
    } cases[] = {
        {"", "-1 no desc"},
        {"uplink", "-1 desc uplink"},
        {"\r", "-1 desc \r"},
        {"50%s %n", "-1 desc 50%s %n"},
        {longest, "-1 desc " + longest},
        {std::string("ab\0cd", 5), "-1 desc ab"},
    };
    for (const auto& [alias, line] : cases) {
        forget();
        EXPECT_EQ(set("ifAlias", {5121}, OctetString, text(alias)), noError);
        EXPECT_THAT(lines(), ElementsAre("5 interface port1", line));
    }
    forget();
    EXPECT_EQ(set("ifAlias", {5121}, Integer, text("x")), wrongType);
    EXPECT_EQ(set("ifAlias", {5121}, OctetString, text(longest + "x")), wrongLength);
    EXPECT_EQ(set("ifAlias", {5121}, OctetString, text("\xff")), wrongValue);
    EXPECT_EQ(set("ifAlias", {5121}, OctetString, text("\rx")), wrongValue);
    // The index comes before the text.
    EXPECT_EQ(write(reserve1, "ifAlias", {5121, 1}, OctetString, text(longest + "x")), noSuchName);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(Interfaces, UnsupportedColumnsPassTheirChecksAndFailInAction) {
    const struct {
        const char* object;
        std::uint8_t type;
        Bytes good;
        Bytes bad;  // empty: every value is good
    } cases[] = {
        {"ifPromiscuousMode", Integer, integer(1), integer(3)},
        {"ifStackStatus", Integer, integer(6), integer(7)},
        {"ifTestId", Integer, integer(-5), {}},
        {"ifTestStatus", Integer, integer(2), integer(0)},
        {"ifTestType", ObjectIdentifier, integer(1), {}},
        {"ifTestOwner", OctetString, text("somebody"), {}},
        {"ifRcvAddressStatus", Integer, integer(1), integer(-1)},
        {"ifRcvAddressType", Integer, integer(3), integer(4)},
    };
    for (const auto& [object, type, good, bad] : cases) {
        SCOPED_TRACE(object);
        EXPECT_EQ(write(reserve1, object, {1}, type, good), noError);
        EXPECT_EQ(write(reserve2, object, {1}, type, good), noError);
        EXPECT_EQ(write(action, object, {1}, type, good), genErr);
        EXPECT_EQ(write(reserve1, object, {1}, IpAddress, good), wrongType);
        if (!bad.empty()) {
            EXPECT_EQ(write(reserve1, object, {1}, type, bad), wrongValue);
            EXPECT_EQ(write(action, object, {1}, type, bad), wrongValue);
        }
        if (type != OctetString) {
            EXPECT_EQ(write(reserve1, object, {1}, type, {1, 2, 3}), wrongLength);
        }
        Oid cut = oid_of(object);
        cut.pop_back();
        EXPECT_EQ(write_name(reserve1, object, cut, type, good), noSuchName);
    }
    EXPECT_THAT(sent, IsEmpty());
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
