// IGMP and MLD snooping: every case holds for both. In its texts "@config" and its like are the protocol's words (see
// Snooping::words_), and several lines are in one text, each after a "|".
#include "user/igmp/multicast_host.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tests {
namespace {

// A table as it is read from its start and after a row: in its traces "@T" is its name, "#" the source line and
// "@command" the command.
struct Reading {
    const char* table;
    const char* column;  // the first that answers
    const char* result;
    std::size_t type;  // the number of the index that is forced to the protocol
    const char* index;
    const char* start_trace;
    const char* trace;
    const char* command_trace;
};
constexpr Reading kReadings[] = {
    {"Table", "State", "RETVALUE_mgmdSnpTable", 1, "5001.7", "@T # index:0 vp->magic:2", "@T # index:5001 vp->magic:2",
     "@T # cmd : @command "},
    {"GroupTable", "GroupStatus", "RETVALUE_mgmdSnpGroupTable", 2, "5121.1034.1.4.239.1.1.1", "@T # 0 v:0 type:0 @none",
     "@T # 5121 v:1034 type:1 239.1.1.1", "@T # cmd : @command m:5"},
    {"GroupSrcTable", "GroupSrcStatus", "RETVALUE_mgmdSnpGroupSrcTable", 2, "5121.1034.1.4.239.1.1.1.1.4.10.0.0.9",
     "type :0 adr:@none idx:0 src:@none magic:2$@T$#", "type :1 adr:239.1.1.1 idx:5121 src:10.0.0.9 magic:2$@T$#",
     "@T # cmd : @command m:2"},
    {"MrouterTable", "MrouterDesignate", "RETVALUE_mgmdSnpMrouterTable", 1, "1034", "@T # index:0 type:0 vp->magic:3",
     "@T # index:1034 type:0 vp->magic:3", "cmd:@command$@T$#"},
    {"FilterTable", "FilterLimit", "RETVALUE_mgmdSnpFilterTable", 2, "5121.1034.7", "@T # 0 v:0", "@T # 5121 v:1034",
     "@T # cmd : @command m:4"},
    {"AccGrpTable", "AccessGroup", "RETVALUE_mgmdSnpAccGrpTable", 2, "5121.1034.7", "@T # 0 v:0", "@T # 5121 v:1034",
     "@T # cmd : @command M:4"},
    {"HostTable", "HostAddress", "RETVALUE_mgmdSnpHostTable", 2, "10.5121.1.4.239.1.1.1.1.4.10.0.0.9",
     "@T # if:0 v:0 type:0 g:@none h:@none", "@T # if:5121 v:10 type:1 g:239.1.1.1 h:10.0.0.9",
     "@T # cmd : @command m:5"},
    {"StatisticTable", "StatisticColumn4", "RETVALUE_mgmdSnpStatisticsTable", 2, "5121.1034.7", "@T # 0 v:0",
     "@T # 5121 v:1034", "@T # cmd : @command M:4"},
    {"StatisticGroupTable", "StatisticGroupColumn4", "RETVALUE_mgmdSnpStatisticsGroupTable", 1, "1034.1.4.239.1.1.1",
     "@T # v:0 type:0 @none", "@T # v:1034 type:1 239.1.1.1", "@T # cmd : @command m:4"},
};

}  // namespace

class Snooping : public RecordingHost, public ::testing::WithParamInterface<bool> {
protected:
    const bool mld_ = GetParam();
    const std::uint32_t type_ = mld_ ? 2 : 1;
    std::string named(const std::string& suffix) const { return (mld_ ? "mgmdMldSnp" : "mgmdIgmpSnp") + suffix; }

    std::string filled(std::string text, const std::string& table = "", const std::string& command = "") const {
        const std::pair<const char*, std::string> words[] = {
            {"@command", command},
            {"@T", table},
            {"@show", mld_ ? "mld" : "igmp"},
            {"@type", std::to_string(type_)},
            {"@none", mld_ ? "0:0:0:0:0:0:0:0" : "0.0.0.0"},
            {"@unlimit", mld_ ? "no @config limit" : "no limit filter"},
            {"@config", mld_ ? "ipv6 mld snooping" : "ip igmp snooping"},
            {"@leave", mld_ ? "fast-leave" : "immediate-leave"},
            {"@designate",
             mld_ ? "debugging mld snooping snmp mrouter" : "debugging igmp snooping snmp designate mrouter"},
            {"@forbid",
             mld_ ? "debugging mld snooping snmp mrouter forbidden" : "debugging igmp snooping snmp not mrouter"},
        };
        for (const auto& [word, value] : words)
            for (std::size_t at; (at = text.find(word)) != text.npos;) text.replace(at, std::strlen(word), value);
        return text;
    }

    // The log: errors with "!" before them. "MGMD$SNPMIB" is left out, the source line, which follows the name of a
    // table, group or writer, is "#", and what ends a writer's line, "$write_<column>$#", is left out too.
    std::string log() const override {
        std::string log;
        for (const services::LogLine& entry : logged) {
            EXPECT_EQ(entry.channel + std::to_string(entry.category), "an62");
            const bool error = entry.text.find("-ERR$") != entry.text.npos;
            EXPECT_EQ(entry.level, error ? 104 : 101);
            std::string text = entry.text;
            EXPECT_EQ(text.back(), '\n');
            text.pop_back();
            if (const auto name = std::min(text.find("mgmd"), text.find("harrow")); name != text.npos) {
                const auto line = text.find_first_of(" :$", name) + 1;
                EXPECT_GT(std::atoi(&text[line]), 0) << text;
                text.replace(line, std::min(text.find_first_not_of("0123456789", line), text.size()) - line, "#");
            }
            if (text.ends_with("$#")) text.erase(std::min(text.find("$write_"), text.size()));
            for (const std::string front : {"MGMD$SNPMIB$", "MGMD$SNPMIB-ERR$"})
                if (text.starts_with(front)) text.erase(0, front.size());
            log += (error ? "|!" : "|") + text;
        }
        return log;
    }

    int write_phase(int phase, const char* column, const char* index, std::uint8_t type, const Bytes& value) {
        forget();
        return write(phase, named(column), index_of(index), type, value);
    }
};

INSTANTIATE_TEST_SUITE_P(Protocols, Snooping, ::testing::Bool(),
                         [](const auto& mld) { return mld.param ? "mld" : "igmp"; });

TEST_P(Snooping, GlobalsAreNeverServed) {
    EXPECT_EQ(get(named("Global"), {0}).writer, nullptr);
    EXPECT_EQ(log(), "");
    EXPECT_EQ(get(named("Global"), {1}).value, std::nullopt);
    EXPECT_EQ(log(), "|!return NULL$harrowMgmdSnoopingMIBGlobals$#");
}

TEST_P(Snooping, ReadsTraceForceTheProtocolAndUseTheirOwnBuffers) {
    for (const Reading& reading : kReadings) {
        const std::string table = named(reading.table), column = named(reading.column);
        SCOPED_TRACE(table);
        answer(table, integer(7));  // and leaves the key as it came
        const Oid row = index_of(reading.index);
        for (const bool start : {true, false}) {
            forget();
            const ReadResult result = next(column, start ? Oid() : row);
            const std::string trace = std::string("|") + (start ? reading.start_trace : reading.trace);
            EXPECT_EQ(log(), filled(trace + "|" + reading.command_trace, table, commands().at(0)));
            EXPECT_EQ(result.address, loaded().symbol<unsigned char>(reading.result));
            if (start) continue;
            Oid name = row;
            if (reading.type < row.size()) name[reading.type] = type_;
            EXPECT_EQ(result.name, oid_of(column, name));
        }
        forget();
        EXPECT_EQ(get(column, Oid(40, 1)).value, std::nullopt);
        EXPECT_EQ(log(), (table == named("HostTable") ? "|!ret:-1$" : "|!ret < 0$") + table + "$#");
    }
}

TEST_P(Snooping, AddressesThatAreNoTextAreShownBlankAndNotWritten) {
    next(named("GroupStatus"), index_of("1.2.3.4.10.0.0.1"));
    next(named("GroupSrcStatus"), index_of("1.2.3.4.10.0.0.1.0.0"));
    next(named("HostAddress"), index_of("1.2.1.4.10.0.0.1.3.4.10.0.0.2"));
    EXPECT_THAT(commands(), ElementsAre(filled("show debugging @show snooping snmp group 1 2 @type  "),
                                        filled("show debugging @show snp snmp source 1 2 @type   @none"),
                                        filled("show debugging @show snooping snmp host 1 @type 10.0.0.1 2  ")));
    const std::pair<const char*, const char*> rows[] = {{"GroupStatus", "1.2.3.4.10.0.0.1"},
                                                        {"GroupSrcStatus", "1.2.3.4.10.0.0.1.1.4.10.0.0.2"},
                                                        {"GroupSrcStatus", "1.2.1.4.10.0.0.1.3.4.10.0.0.2"}};
    for (const auto& [column, index] : rows)
        EXPECT_EQ(write_phase(reserve1, column, index, Integer, integer(9)), noSuchName);
    EXPECT_THAT(logged, IsEmpty());
}

TEST_P(Snooping, WritesSendTheirLinesAndTraceThem) {
    const char kGroup[] = "5121.1034.1.4.239.1.1.1", kSource[] = "5121.1034.1.4.239.1.1.1.1.4.10.0.0.9";
    const Bytes ports{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80}, few{0x78, 0x56, 0x34, 0x12, 0xff}, many(40, 0xff);
    const std::string vlan = "|1034| interface vlan10| ", routers = "|key.idx:1005 qr_type:0| interface vlan5";
    const std::string numbers = routers + "|portlist.p[0]:1|  1|  0|portlist.p[2]:80000000|  -2147483648| ";
    const std::string group = "|@T:# idx:5121 v_idx:1034 g:239.1.1.1", add = "|@T:# cmd:interface vlan10|@T:# cmd:";
    const std::string limit = "|5121 type:1|port1 v:10 ";
    const struct {
        const char* column;
        const char* index;
        std::uint8_t type;
        Bytes value;
        std::string enters;
        std::string sends;
        std::string traces;  // before the line that is sent
    } cases[] = {
        {"State", "1034.7", Integer, integer(1), "vlan10", "@config", vlan},
        {"State", "1034", Integer, integer(2), "vlan10", "no @config", vlan},
        {"ImmediateLeave", "1034.1", Integer, integer(1), "vlan10", "@config @leave", vlan},
        {"State", "1", Integer, integer(1), "", "@config", "|1| interface | "},  // no such interface
        {"GroupStatus", kGroup, Integer, integer(destroy), "vlan10",
         "no @config static-group 239.1.1.1 interface port1", group + add},
        {"GroupSrcStatus", kSource, Integer, integer(createAndGo), "vlan10",
         "@config static-group 239.1.1.1 source 10.0.0.9 interface port1", group + " s:10.0.0.9" + add},
        {"MrouterDesignate", "1005", OctetString, ports, "vlan5", "@designate 1005  1 0 -2147483648", numbers},
        {"MrouterDesignate", "1005", OctetString, few, "vlan5", "@designate 1005  305419896 255 0",
         routers + "|portlist.p[0]:12345678|  305419896|portlist.p[1]:ff|  255|  0| "},
        {"MrouterNotAllowed", "1005", OctetString, many, "vlan5", "@forbid 1005  -1 -1 -1",  // cut
         routers + "|portlist.p[0]:ffffffff|  -1|portlist.p[1]:ffffffff|  -1|portlist.p[2]:ffffffff|  -1| "},
        {"FilterLimit", "5121.1034.1", Unsigned32, integer(2048), "port1", "@config limit 2048 vlan 10",
         limit + "2048|interface port1|"},
        {"FilterLimit", "5121.1034.1", Unsigned32, integer(0), "port1", "@unlimit vlan 10",
         limit + "0|interface port1|"},
    };
    interface_names[1005] = "vlan5";
    for (const auto& [column, index, type, value, enters, sends, traces] : cases) {
        SCOPED_TRACE(column + (" " + sends));
        const std::string writer = "write_" + named(column), line = filled(sends);
        EXPECT_EQ(write_phase(action, column, index, type, value), noError);
        EXPECT_THAT(lines(), ElementsAre("5 interface " + enters, "-1 " + line));
        EXPECT_EQ(sent.at(0).caller + sent.at(1).caller, writer + writer);
        EXPECT_EQ(log(), filled(traces, writer) + line);
        // A refused line is logged by the limits only.
        refused_lines = {line};
        EXPECT_EQ(write_phase(action, column, index, type, value), genErr);
        EXPECT_EQ(log().ends_with("|!SNMP_ERR_GENERR"), column == std::string("FilterLimit"));
        refused_lines.clear();
    }
    for (const int value : {active, notInService, notReady, createAndWait})
        EXPECT_EQ(write_phase(action, "GroupStatus", kGroup, Integer, integer(value)), noError);
    EXPECT_THAT(sent, IsEmpty());
    // No version reaches the backend: the interface line is sent twice.
    EXPECT_EQ(write_phase(action, "MinimumVersion", "1034.1", Unsigned32, integer(0)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface vlan10", "-1 interface vlan10"));
    EXPECT_EQ(log(), "| interface vlan10");
}

TEST_P(Snooping, ChecksRefuseInTheirOrderAndLogInTheirOwnWords) {
    const std::string type = "|!SNMP_ERR_WRONGTYPE", name = "|!SNMP_ERR_NOSUCHNAME", value = "|!SNMP_ERR_WRONGVALUE";
    const std::string vlan = "|1034| interface vlan10", leave_type = "|!IGMP$SNPMIB-ERR$SNMP_ERR_WRONGTYPE";
    const std::string length = "|!SNMP_ERR_WRONGLENGTH", group = "|@T:# idx:1 v_idx:2 g:10.0.0.1";
    // What the refusals of type, length, a short OID, the index and the value log.
    const auto writable = [this](const char* column, const char* row, Asn tag, const Values& values,
                                 std::vector<std::string> logs) {
        for (std::string& log : logs) log = filled(log, "write_" + named(column));
        return Writable(named(column), index_of(row), tag, values).logs(refusals(logs));
    };
    expect_checks({
        writable("State", "1034.1", Integer, between(1, 2), {type, length, name, name, vlan}),
        writable("QuerierState", "1034.1", Integer, between(1, 2), {type, length, name, name, vlan}),
        writable("ImmediateLeave", "1034.1", Integer, between(1, 2), {leave_type, name, name, name, vlan}),
        writable("HostBaseFastLeave", "1034.1", Integer, between(1, 2), {leave_type, name, name, name, vlan}),
        writable("MinimumVersion", "1034.1", Unsigned32, between(0, 0), {}),
        writable("GroupStatus", "1.2.1.4.10.0.0.1", Integer, between(1, 6), {"", "", "", "", group}),
        writable("GroupSrcStatus", "1.2.1.4.10.0.0.1.1.4.10.0.0.2", Integer, between(1, 6),
                 {"", "", "", "", group + " s:10.0.0.2"}),
        writable("MrouterDesignate", "1034", OctetString, any_octets(), {type, "", name, name}),
        writable("MrouterNotAllowed", "1034", OctetString, any_octets(), {type, "", name, name}),
        writable("FilterLimit", "5121.1034.1", Unsigned32, between(0, 2048),
                 {type, name, name, "", "|5121 type:1" + value}),
        writable("AccessGroup", "1.2.3", OctetString, any_words(), {type}).sends_nothing(),
        writable("AccGrpStatus", "1.2.4", Integer, between(1, 6), {type, name}).sends_nothing(),
    });
    // VLAN 0 has no limit.
    EXPECT_EQ(write_phase(reserve1, "FilterLimit", "5121.1024.1", Unsigned32, integer(1)), wrongValue);
    EXPECT_EQ(log(), "|5121 type:1" + value);
}

TEST_P(Snooping, AccessGroupsAreNamedFirstAndAppliedByTheStatusOfTheSameRow) {
    const auto write_name = [this](int phase, const char* row, const std::string& name) {
        EXPECT_EQ(write_phase(phase, "AccessGroup", row, OctetString, text(name)), noError);
        return joined(lines()) + log();
    };
    const auto write_status = [this](const char* row, int status) {
        const int error = write_phase(action, "AccGrpStatus", row, Integer, integer(status));
        return std::to_string(error) + joined(lines()) + log();
    };
    const std::string line = filled("@config access-group video vlan 10");
    write_name(action, "5121.1035.1", "audio");
    EXPECT_EQ(write_name(reserve1, "5121.1034.1", "video"), "");
    EXPECT_EQ(write_status("5121.1034.1", createAndGo), "0");  // only ACTION keeps a name
    EXPECT_EQ(write_name(action, "5121.1034.1", "video"), "|video 5121 v:1034");
    for (const int again : {1, 2}) {  // never cleared
        SCOPED_TRACE(again);
        EXPECT_EQ(write_status("5121.1034.1", createAndGo),
                  "0|5 interface port1|-1 " + line + "|interface port1|" + line);
        EXPECT_EQ(sent.at(1).caller, "write_" + named("AccGrpStatus"));
        EXPECT_EQ(write_status("5121.1034.1", destroy), "0|5 interface port1|-1 no " + line + "|no " + line);
    }
    for (const char* row : {"5121.1035.1", "5122.1034.1", "5121.1034.2", "5121.1034", "5121.1024.1"})
        EXPECT_EQ(write_status(row, createAndGo), "0");
    for (const int status : {active, notInService, notReady, createAndWait})
        EXPECT_EQ(write_status("5121.1034.1", status), "0");
    EXPECT_EQ(write_phase(commit, "AccGrpStatus", "5121.1034.1", Integer, integer(createAndGo)), noError);
    EXPECT_THAT(sent, IsEmpty());
    refused_lines = {line};
    EXPECT_EQ(write_status("5121.1034.1", createAndGo),
              "5|5 interface port1|-1 " + line + "|interface port1|" + line + "|!SNMP_ERR_GENERR");
    refused_lines = {"interface port1"};
    EXPECT_EQ(write_status("5121.1034.1", destroy), "5|5 interface port1|!SNMP_ERR_GENERR");
    refused_lines.clear();
    // A row of VLAN 0 can be named, but not applied.
    write_name(action, "5121.1024.1", "video");
    EXPECT_EQ(write_status("5121.1024.1", destroy), "10|!SNMP_ERR_WRONGVALUE");
    // A name is 32 octets and ends at a NUL; the other protocol's status finds it under the same row.
    forget();
    const std::string other = mld_ ? "mgmdIgmpSnpAccGrpStatus" : "mgmdMldSnpAccGrpStatus";
    for (const std::string& name : {std::string(40, 'n'), std::string("a\0b", 3)})
        EXPECT_EQ(set({{named("AccessGroup"), {5121, 1034, 1}, OctetString, text(name)},
                       {other, {5121, 1034, 1}, Integer, integer(createAndGo)}}),
                  noError);
    const std::string config = mld_ ? "-1 ip igmp snooping access-group " : "-1 ipv6 mld snooping access-group ";
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", config + std::string(32, 'n') + " vlan 10",
                                     "5 interface port1", config + "a vlan 10"));
}

}  // namespace tests
