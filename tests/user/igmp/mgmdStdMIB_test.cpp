#include "user/igmp/multicast_host.h"

#include <cstring>

namespace tests {
namespace {

// A table as it is read: by GETNEXT from its start, and by GET of a row. In the logs "@command" is the command.
struct RouterReading {
    const char* table;
    const char* column;  // the first that answers
    std::size_t type;    // where an index has its address type
    const char* index;
    const char* start_log;
    const char* log;
};

constexpr RouterReading kRouterReadings[] = {
    {"mgmdRouterInterfaceTable", "mgmdRouterInterfaceQuerier", 1, "1034.1",
     "|idx:0 type:0 magic:3|cmd:@command|exact:0 key.idx:0 qr_type:0 var_len=4",
     "|idx:1034 type:1 magic:3|cmd:@command|exact:1 key.idx:1034 qr_type:1 var_len=4"},
    {"mgmdRouterCacheTable", "mgmdRouterCacheLastReporter", 0, "1.4.239.1.1.1.1034",
     "|type :0 adr:0.0.0.0 idx:0 magic:4|cmd:@command|exact:0 ifidx:0 ",
     "|type :1 adr:239.1.1.1 idx:1034 magic:4|cmd:@command|exact:1 ifidx:1034 "},
    {"mgmdInverseRouterCacheTable", "mgmdInverseRouterCacheAddress", 1, "1034.1.4.239.1.1.1",
     "|type :0 adr:0.0.0.0 idx:0 magic:3|cmd:@command|exact:0 ifidx:0 ",
     "|type :1 adr:239.1.1.1 idx:1034 magic:3|cmd:@command|exact:1 ifidx:1034 "},
    {"mgmdRouterSrcListTable", "mgmdRouterSrcListExpire", 0, "1.4.239.1.1.1.1034.4.10.0.0.9",
     "|type :0 adr:0.0.0.0 idx:0 src:0.0.0.0 magic:5|cmd:@command|exact:0 ifidx:0 ",
     "|type :1 adr:239.1.1.1 idx:1034 src:10.0.0.9 magic:5|cmd:@command|exact:1 ifidx:1034 "},
};

std::string filled(std::string text, const std::string& command) {
    return text.replace(text.find("@command"), std::strlen("@command"), command);
}

}  // namespace

class MulticastRouter : public MulticastHost {};

TEST_F(MulticastRouter, ReadsTraceAndUseTheirOwnBuffers) {
    for (const auto& [table, column, type, index, start_log, row_log] : kRouterReadings) {
        SCOPED_TRACE(table);
        answer(table, integer(7));  // and leaves the key as it came
        for (const bool start : {true, false}) {
            forget();
            const ReadResult result = start ? next(column) : get(column, index_of(index));
            EXPECT_EQ(log(), filled(start ? start_log : row_log, commands().at(0)));
            EXPECT_THAT(loggers(), ElementsAre(table));
            EXPECT_EQ(result.value, integer(7));
            EXPECT_EQ(result.address, loaded().symbol<unsigned char>(std::string("RETVALUE_") + table));
        }
        forget();
        answers.erase(table);
        EXPECT_EQ(next(column).value, std::nullopt);
        EXPECT_TRUE(log().ends_with("|return NULL")) << log();
        forget();
        EXPECT_EQ(get(column, Oid(40, 1)).value, std::nullopt);
        EXPECT_EQ(log(), "|!get idx fail ret:-1");
    }
}

TEST_F(MulticastRouter, ContextNamesAreCutWithTheirCommands) {
    services::services().context.snmp_context = std::string(80, 'c');
    next("mgmdRouterInterfaceQuerier");
    EXPECT_THAT(commands(), ElementsAre("show debugging igmp snmp interface 0 0 " + std::string(60, 'c')));
}

TEST_F(MulticastRouter, RequestsForOtherProtocolsAreNotAskedFor) {
    for (const RouterReading& reading : kRouterReadings) {
        SCOPED_TRACE(reading.table);
        answer(reading.table, integer(7));
        Oid index = index_of(reading.index);
        const bool interfaces = index.size() == 2;
        for (const oid type : {0u, 1u, 2u, 3u})
            for (const int exact : {0, 1}) {
                SCOPED_TRACE(type);
                forget();
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
    // What the backend answers is passed on, whatever its type.
    answer("mgmdRouterInterfaceTable", integer(7), join(integer(1034), integer(2)));
    EXPECT_EQ(next("mgmdRouterInterfaceQuerier", {5, 1}).name, oid_of("mgmdRouterInterfaceQuerier", {1034, 2}));
    EXPECT_TRUE(log().ends_with("|exact:0 key.idx:1034 qr_type:2 var_len=4")) << log();
}

TEST_F(MulticastRouter, SettingsCheckInTheirOrderAndLog) {
    const auto setting = [](const char* column, const Values& values) {
        return Writable(column, {1034, 1}, Unsigned32, values)
            .logs(refusals({"", "", "", "|!get idx fail ret:-1", "|key.idx:1034 qr_type:1"}));
    };
    expect_checks({
        setting("mgmdRouterInterfaceQueryInterval", between(1, 31744)),
        setting("mgmdRouterInterfaceQueryMaxResponseTime", between(10, 250)),
        setting("mgmdRouterInterfaceRobustness", between(1, 7)),
        setting("mgmdRouterInterfaceLastMemberQueryInterval", between(10, 250)),
        setting("mgmdRouterInterfaceVersion", any_number()),
        Writable("mgmdHostInterfaceVersion", {1034, 1}, Unsigned32, any_number())
            .order(unparsed())
            .refused({0, 1, 2, 3, 4, 5, 6})
            .logs(refusals({})),
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
