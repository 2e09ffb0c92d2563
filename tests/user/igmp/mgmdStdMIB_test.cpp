#include "user/igmp/multicast_host.h"

#include <cstring>

namespace tests {
namespace {

// A table as it is read: by GETNEXT from its start, and by GET of a row. In the texts "@command" is the command.
struct RouterReading {
    const char* table;
    int columns;
    int first;           // the first column that answers; those after it do too
    const char* column;  // its name
    std::size_t type;    // where an index has its address type
    Oid index;
    Bytes key;
    const char* start_log;
    const char* start_command;
    const char* log;
    const char* command;
};

const RouterReading kRouterReadings[] = {
    {"mgmdRouterInterfaceTable",
     18,
     3,
     "mgmdRouterInterfaceQuerier",
     1,
     {1034, 1},
     join(integer(1034), integer(1)),
     "|idx:0 type:0 magic:3|cmd:@command|exact:0 key.idx:0 qr_type:0 var_len=4",
     "show debugging igmp snmp interface 0 0 blue",
     "|idx:1034 type:1 magic:3|cmd:@command|exact:1 key.idx:1034 qr_type:1 var_len=4",
     "show debugging igmp snmp interface 1034 1 blue"},
    {"mgmdRouterCacheTable",
     10,
     4,
     "mgmdRouterCacheLastReporter",
     0,
     {1, 4, 239, 1, 1, 1, 1034},
     join(address_record({239, 1, 1, 1}), integer(1034)),
     "|type :0 adr:0.0.0.0 idx:0 magic:4|cmd:@command|exact:0 ifidx:0 ",
     "show debugging igmp snmp group 0 0.0.0.0 0 blue",
     "|type :1 adr:239.1.1.1 idx:1034 magic:4|cmd:@command|exact:1 ifidx:1034 ",
     "show debugging igmp snmp group 1 239.1.1.1 1034 blue"},
    {"mgmdInverseRouterCacheTable",
     3,
     3,
     "mgmdInverseRouterCacheAddress",
     1,
     {1034, 1, 4, 239, 1, 1, 1},
     join(integer(1034), address_record({239, 1, 1, 1})),
     "|type :0 adr:0.0.0.0 idx:0 magic:3|cmd:@command|exact:0 ifidx:0 ",
     "show debugging igmp snmp inv group 0 0 0.0.0.0 blue",
     "|type :1 adr:239.1.1.1 idx:1034 magic:3|cmd:@command|exact:1 ifidx:1034 ",
     "show debugging igmp snmp inv group 1034 1 239.1.1.1 blue"},
    {"mgmdRouterSrcListTable",
     5,
     5,
     "mgmdRouterSrcListExpire",
     0,
     {1, 4, 239, 1, 1, 1, 1034, 4, 10, 0, 0, 9},
     join(address_record({239, 1, 1, 1}), join(integer(1034), address_record({10, 0, 0, 9}))),
     "|type :0 adr:0.0.0.0 idx:0 src:0.0.0.0 magic:5|cmd:@command|exact:0 ifidx:0 ",
     "show debugging igmp snmp source 0 0.0.0.0 0 0.0.0.0 blue",
     "|type :1 adr:239.1.1.1 idx:1034 src:10.0.0.9 magic:5|cmd:@command|exact:1 ifidx:1034 ",
     "show debugging igmp snmp source 1 239.1.1.1 1034 10.0.0.9 blue"},
};

std::string filled(std::string text, const std::string& command) {
    return text.replace(text.find("@command"), std::strlen("@command"), command);
}

}  // namespace

class MulticastRouter : public MulticastHost {};

TEST_F(MulticastRouter, ReadsTraceCarryTheContextAndUseTheirOwnBuffers) {
    services::services().context.snmp_context = "blue";
    for (const RouterReading& reading : kRouterReadings) {
        SCOPED_TRACE(reading.table);
        answer(reading.table, integer(7));  // and leaves the key as it came
        for (const bool start : {true, false}) {
            forget();
            const ReadResult result = start ? next(reading.column) : get(reading.column, reading.index);
            const std::string command = start ? reading.start_command : reading.command;
            EXPECT_THAT(commands(), ElementsAre(command));
            EXPECT_EQ(log(), filled(start ? reading.start_log : reading.log, command));
            EXPECT_THAT(loggers(), ElementsAre(reading.table));
            EXPECT_EQ(result.value, integer(7));
            EXPECT_EQ(result.address, loaded().symbol<unsigned char>(std::string("RETVALUE_") + reading.table));
            EXPECT_EQ(shown.at(0).key, start ? Bytes(reading.key.size()) : reading.key);
            EXPECT_EQ(shown[0].request.result_size, 100);
        }
        // The columns of the index, and what is not a column, are traced, but not served.
        for (int magic = 0; magic <= reading.columns + 1; ++magic) {
            forget();
            const bool served = magic >= reading.first && magic <= reading.columns;
            EXPECT_EQ(read(reading.column, reading.index, 1, magic).value.has_value(), served);
            EXPECT_EQ(shown.size(), served ? 1u : 0u);
            EXPECT_EQ(logged.size(), served ? 3u : 2u);
        }
        forget();
        answers.erase(reading.table);
        EXPECT_EQ(next(reading.column).value, std::nullopt);
        EXPECT_TRUE(log().ends_with("|return NULL")) << log();
        forget();
        EXPECT_EQ(get(reading.column, Oid(40, 1)).value, std::nullopt);
        EXPECT_EQ(log(), "|!get idx fail ret:-1");
    }
    services::services().context.snmp_context = std::string(80, 'c');  // cut with the command
    forget();
    next("mgmdRouterInterfaceQuerier");
    EXPECT_EQ(commands().at(0), "show debugging igmp snmp interface 0 0 " + std::string(60, 'c'));
    services::services().context = {};
    next("mgmdRouterInterfaceQuerier");
    EXPECT_EQ(commands().at(1), "show debugging igmp snmp interface 0 0 ");
}

TEST_F(MulticastRouter, RequestsForOtherProtocolsAreNotAskedFor) {
    for (const RouterReading& reading : kRouterReadings) {
        SCOPED_TRACE(reading.table);
        answer(reading.table, integer(7));
        const bool interfaces = reading.type == 1 && reading.index.size() == 2;
        for (const oid type : {0u, 1u, 2u, 3u})
            for (const int exact : {0, 1}) {
                SCOPED_TRACE(type);
                forget();
                Oid index = reading.index;
                index[reading.type] = type;
                const bool served = exact ? type == 1 : type <= 1 || interfaces;
                const ReadResult result = read(reading.column, index, exact);
                EXPECT_EQ(result.value.has_value(), served);
                EXPECT_EQ(shown.size(), served ? 1u : 0u);
                EXPECT_EQ(logged.size(), served ? 3u : 1u);
                EXPECT_EQ(result.name, oid_of(reading.column, index));
                const std::string front = interfaces ? "|idx:1034 type:3 " : "|type :3 adr:  idx:1034 ";
                EXPECT_EQ(log().starts_with(front), type == 3) << log();
            }
    }
    EXPECT_EQ(get("mgmdRouterInterfaceQueryInterval", {5001, 2}).writer, kUntouched);
    EXPECT_NE(get("mgmdRouterInterfaceQueryInterval", {5001, 1}).writer, kUntouched);
    // What the backend answers is passed on, whatever its type.
    Bytes row = integer(1034);
    row.resize(8);
    row[4] = 2;
    answer("mgmdRouterInterfaceTable", integer(7), row);
    EXPECT_EQ(next("mgmdRouterInterfaceQuerier", {5, 1}).name, oid_of("mgmdRouterInterfaceQuerier", {1034, 2}));
    EXPECT_TRUE(log().ends_with("|exact:0 key.idx:1034 qr_type:2 var_len=4")) << log();
}

TEST_F(MulticastRouter, HostTablesNeverAnswerAndHandOutTheirWritersByMagicAlone) {
    for (const char* column :
         {"mgmdHostInterfaceQuerier", "mgmdHostCacheUpTime", "mgmdInverseHostCacheAddress", "mgmdHostSrcListExpire"})
        for (const int exact : {0, 1}) EXPECT_EQ(read(column, {}, exact).value, std::nullopt);
    for (int magic = 0; magic <= 9; ++magic)
        EXPECT_EQ(read("mgmdHostInterfaceQuerier", {1, 2, 3, 4}, 1, magic).writer != kUntouched,
                  magic == 4 || magic == 5 || magic == 8);
    EXPECT_THAT(shown, IsEmpty());
    EXPECT_EQ(log(), "");
}

TEST_F(MulticastRouter, SettingsCheckInTheirOrderAndLog) {
    const auto setting = [](const char* column, std::int64_t low, std::int64_t high, const std::string& line) {
        const Lines first{"5 interface vlan10", "-1 ip igmp " + line + " " + std::to_string(low)};
        const Lines last{"5 interface vlan10", "-1 ip igmp " + line + " " + std::to_string(high)};
        return Writable(column, {1034, 1}, Unsigned32, between(low, high))
            .sends({{low, first}, {high, last}})
            .logs(refusals({"", "", "", "|!get idx fail ret:-1", "|key.idx:1034 qr_type:1"}));
    };
    const auto unsupported = [](const char* column, Asn type, const Values& values) {
        const std::vector<int> kPhases{0, 1, 2, 3, 4, 5, 6};
        return Writable(column, {1034, 1}, type, values).order(unparsed()).refused(kPhases).logs(refusals({}));
    };
    expect_checks({
        setting("mgmdRouterInterfaceQueryInterval", 1, 31744, "query-interval"),
        setting("mgmdRouterInterfaceQueryMaxResponseTime", 10, 250, "query-max-response-time"),
        setting("mgmdRouterInterfaceRobustness", 1, 7, "robustness-variable"),
        setting("mgmdRouterInterfaceLastMemberQueryInterval", 10, 250, "last-member-query-interval"),
        Writable("mgmdRouterInterfaceVersion", {1034, 1}, Unsigned32, any_number())
            .sends({{3, {"5 interface vlan10", "-1 ip igmp version 3"}},
                    {4294967295, {"5 interface vlan10", "-1 ip igmp version -1"}}}),
        unsupported("mgmdRouterInterfaceStatus", Integer, between(1, 6)),
        unsupported("mgmdRouterInterfaceProxyIfIndex", Integer, any_number()),
        unsupported("mgmdHostInterfaceStatus", Integer, between(1, 6)),
        unsupported("mgmdHostInterfaceVersion", Unsigned32, any_number()),
        unsupported("mgmdHostInterfaceVersion3Robustness", Unsigned32, any_number()),
    });
}

TEST_F(MulticastRouter, SettingsTraceEachStepAndEnterInterfacesOfOtherTypesTwice) {
    const auto write_robustness = [this](int phase, const Oid& row) {
        const int error = write_phase(phase, "mgmdRouterInterfaceRobustness", row, Unsigned32, integer(5));
        EXPECT_THAT(loggers(), ElementsAre("write_mgmdRouterInterfaceRobustness"));
        return std::to_string(error) + log();
    };
    const std::string steps = "0|key.idx:1034 qr_type:1|value:5|vlan_name:vlan10 action:";
    EXPECT_EQ(write_robustness(undo, {1034, 1}), steps + "5");
    EXPECT_EQ(write_robustness(action, {1034, 1}), steps + "2|cmd:interface vlan10|cmd:ip igmp robustness-variable 5");
    // A write method that was handed out for one row is called for another.
    EXPECT_EQ(write_robustness(action, {1, 2}),
              "0|key.idx:1 qr_type:2|value:5|vlan_name: action:2|cmd:interface |cmd:interface ");
    EXPECT_THAT(lines(), ElementsAre("5 interface ", "-1 interface "));
    refused_lines = {"interface vlan10"};
    EXPECT_EQ(write_robustness(action, {1034, 0}),
              "5|key.idx:1034 qr_type:0|value:5|vlan_name:vlan10 action:2|cmd:interface vlan10");
}

}  // namespace tests
