// The parts of mibhost that need no network: arguments, indexes, printing, the trace, list, explain, walk and the
// command line.
#include "services/index_text.h"
#include "support/recording_host.h"
#include "tool/arguments.h"
#include "tool/command_line.h"
#include "tool/explain.h"
#include "tool/format.h"
#include "tool/list.h"
#include "tool/options.h"
#include "tool/trace.h"
#include "tool/walk.h"

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

namespace {

using agent::Value;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Bytes;
using tests::loaded;

// What a call complains about; empty when it does not.
template <typename Call>
std::string complaint(const Call& call) {
    try {
        call();
    } catch (const tool::UsageError& error) {
        return error.what();
    }
    return "";
}

// Of the cases, inputs and messages, each input is refused with its message.
void expect_complaints(const auto& cases, const auto& parse) {
    for (const auto& [input, message] : cases)
        EXPECT_THAT(complaint([&, &input = input] { parse(input); }), HasSubstr(message))
            << testing::PrintToString(input);
}

class Tool : public tests::RecordingHost {
protected:
    const services::Registry& registry = loaded().registry;
    const std::string port = "swPortSpeed[swPortIndex 5121]";
};

TEST_F(Tool, PrintsValuesByType) {
    const struct {
        Value value;
        std::string text;
    } cases[] = {
        {Value::integer(-5), "INTEGER: -5"},
        {Value::unsigned32(agent::kGauge32, 4294967295U), "Gauge32: 4294967295"},
        {Value::unsigned32(agent::kCounter32, 7), "Counter32: 7"},
        {Value::unsigned32(agent::kTimeTicks, 9005), "Timeticks: (9005) 0:01:30.05"},
        {Value::unsigned32(agent::kTimeTicks, 8640000 + 100), "Timeticks: (8640100) 1 day, 0:00:01.00"},
        {Value::counter64(1ULL << 40), "Counter64: 1099511627776"},
        {Value::octet_string(tests::text("say \"hi\" \\")), R"(STRING: "say \"hi\" \\")"},
        {Value::octet_string({}), "STRING: \"\""},
        {Value::octet_string({0, 0x1f, 0xff}), "Hex-STRING: 00 1f ff"},
        {Value::object_id({1, 3, 9}), "OID: 1.3.9"},
        {Value::object_id(oid_of("ifDescr", {2})), "OID: ifDescr[ifIndex 2]"},
        {{agent::kIpAddress, {192, 0, 2, 255}}, "IpAddress: 192.0.2.255"},
        {{agent::kIpAddress, {192, 0}}, "IpAddress: wrong size, 2 octets: c0 00"},
        {{agent::kObjectId, {1, 2, 3}}, "OID: 01 02 03"},
        {{agent::kNoSuchInstance, {}}, "noSuchInstance"},
        {{0x47, {1}}, "type 0x47: 01"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(tool::format_value(registry, value), text);
    EXPECT_EQ(tool::json_varbind(registry, {oid_of("swPortSpeed", {5121}), Value::integer(2)}),
              tool::Json::parse(R"({"oid": "1.3.6.1.4.1.)" + std::to_string(SWITCHMIB_VENDOR_ENTERPRISE) +
                                R"(.10.1.100.2.1.0.3.1.4.5121", "name": "swPortSpeed", "module": "switchPortMIB",
                                "table": "swPortTable", "column": 4, "kinds": [2], "magic": 4, "index": [5121],
                                "type": "INTEGER", "value": 2})"));
    EXPECT_EQ(tool::json_varbind(registry, {oid_of("ifNumber", {0}), {agent::kNoSuchInstance, {}}}),
              tool::Json::parse(R"({"oid": "1.3.6.1.2.1.2.1.0", "name": "ifNumber", "module": "interfaces",
                                "group": "interfacesGlobals", "scalar": "1", "magic": 1, "type": "noSuchInstance"})"));
    const auto route = tool::json_varbind(
        registry, {*registry.parse("inetCidrRouteType[10.0.0.0/8, 0.0, 192.0.2.1]"), Value::octet_string({0xff})});
    EXPECT_EQ(route["index"], (tool::Json{"10.0.0.0/8", "0.0", "192.0.2.1"}));
    EXPECT_EQ(route["octets"], "ff");
    EXPECT_EQ(tool::in_quotes("desc a\nno shutdown\x7f"), R"("desc a\x0ano shutdown\x7f")");
}

TEST_F(Tool, PrintsValuesByTexts) {
    const std::string path = testing::TempDir() + "texts.mosy";
    std::ofstream(path) << R"(%tc                  TruthValue       INTEGER         ""
%es                  TruthValue       true            1
nVlanObjects         corvinVlanMIB.1
%n0 nVlanObjects     object-id

swPortSpeed          swPortEntry.4    INTEGER         read-write      current
%ev                  swPortSpeed      slave           -2
%ev                  swPortSpeed      auto            6
nVlanPortIfTrunkNativeVlanTag nVlanPortIfCtrlEntry.3 TruthValue      read-write      current
swDdmTxPower         swDdmStatusEntry.5 MacAddress      read-only       current
ifDescr              ifEntry.2        InetAddress     read-only       current
ifAlias              ifXEntry.18      PortList        read-write      current
mvrSourcePortList    mvrPortEntry.2   MvrPortList     read-create     current
)";
    services::Registry with_texts(loaded().registrations, loaded().library);
    with_texts.set_syntaxes(services::read_syntaxes(path));

    const struct {
        const char* name;
        Value value;
        std::string text;
    } cases[] = {
        {"swPortSpeed", Value::integer(-2), "INTEGER: slave(-2)"},
        {"swPortSpeed", Value::integer(5), "INTEGER: 5"},
        {"swPortSpeed", {agent::kInteger, {6}}, "INTEGER: wrong size, 1 octet: 06"},
        {"swPortSpeed", Value::unsigned32(agent::kGauge32, 6), "Gauge32: 6"},
        {"swPortDuplex", Value::integer(1), "INTEGER: 1"},
        {"nVlanPortIfTrunkNativeVlanTag", Value::integer(1), "INTEGER: true(1)"},
        {"swDdmTxPower", Value::octet_string({2, 0, 0, 0xab, 0, 1}), "STRING: 02:00:00:ab:00:01"},
        {"swDdmTxPower", Value::octet_string({2, 0}), "Hex-STRING: 02 00"},
        {"ifDescr", Value::octet_string({192, 0, 2, 1}), "STRING: 192.0.2.1"},
        {"ifDescr", Value::octet_string({0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}),
         "STRING: 2001:db8::1"},
        {"ifDescr", Value::octet_string({}), "STRING: \"\""},
        {"ifAlias", Value::octet_string({0xf2, 0x01, 0x80}), "STRING: 1-4,7,16-17"},
        {"ifAlias", Value::octet_string({0, 0}), "STRING: none"},
        {"ifAlias", {agent::kNoSuchInstance, {}}, "noSuchInstance"},
        {"mvrSourcePortList", Value::octet_string({0, 0x80}), "STRING: 9"},
    };
    for (const auto& [name, value, text] : cases)
        EXPECT_EQ(tool::format_varbind(with_texts, {oid_of(name, {}), value}), std::string(name) + " = " + text);
    // As it is written, it has its ports after 640 other octets.
    EXPECT_THAT(
        tool::format_varbind(with_texts, {oid_of("mvrSourcePortList", {}), Value::octet_string(Bytes(652, 0x80))}),
        HasSubstr("= Hex-STRING: 80 80"));
    const auto json = tool::json_varbind(with_texts, {oid_of("swPortSpeed", {5121}), Value::integer(6)});
    EXPECT_EQ(json["value"], 6);
    EXPECT_EQ(json["text"], "auto(6)");

    for (const char* const line :
         {"%ev swPortSpeed auto six", "%es TruthValue", "an object with four words or six x"}) {
        std::ofstream(path) << "\n" << line << "\n";
        EXPECT_THAT([&] { services::read_syntaxes(path); },
                    testing::ThrowsMessage<std::runtime_error>(HasSubstr("texts.mosy, line 2: not what smidump")));
    }
    EXPECT_THAT([] { services::read_syntaxes("/nonexistent"); },
                testing::ThrowsMessage<std::runtime_error>(HasSubstr("cannot read /nonexistent: No such file")));
}

TEST_F(Tool, ParsesOids) {
    EXPECT_EQ(tool::parse_oid(registry, "swPortSpeed.5121"), oid_of("swPortSpeed", {5121}));
    EXPECT_EQ(tool::parse_oid(registry, port), oid_of("swPortSpeed", {5121}));
    EXPECT_EQ(tool::parse_oid(registry, "switchPortMIB::swPortSpeed[5121]"), oid_of("swPortSpeed", {5121}));
    for (const char* name : {"ipAddressIfIndex[::1]", "IP-MIB::ipAddressIfIndex[::1]"})
        EXPECT_EQ(registry.format(tool::parse_oid(registry, name)), "ipAddressIfIndex[::1]");
    EXPECT_EQ(tool::parse_oid(registry, "inetCidrRouteType[10.0.0.0/8]"),
              oid_of("inetCidrRouteType", {1, 4, 10, 0, 0, 0, 8}));
    EXPECT_EQ(tool::parse_oid(registry, ".1.3.6"), (services::Oid{1, 3, 6}));
    EXPECT_EQ(tool::parse_oid(registry, "interfaces"), (services::Oid{1, 3, 6, 1, 2, 1, 2}));

    std::string long_oid = "1";
    for (int i = 0; i < 128; ++i) long_oid += ".3";
    const std::pair<std::string, std::string> cases[] = {
        {"swPortSped.1", "unknown name 'swPortSped', did you mean 'swPortSpeed'"},
        {"IF-MIB::ifDesc.1", "unknown name 'ifDesc', did you mean 'ifDescr'"},
        {"IFDESCR", "did you mean 'ifDescr'"},
        {"AliasOfSomething", "unknown name 'AliasOfSomething'"},
        {"IP-MIB::ifDescr", "'ifDescr' is not in a module 'IP-MIB'"},
        {"IF-MIB", "'IF-MIB' is ambiguous, it is in "},
        {"swPortSpeed.x", "'x' is not a sub-identifier"},
        {"swPortSpeed.", "'' is not a sub-identifier"},
        {"swPortSpeed[5121", "'swPortSpeed[5121' has no ']' at its end"},
        {"swPortSpeed[port 5121]", "'port 5121' is not what part 1 of the index of swPortTable is: integer"},
        {"swPortSpeed[1, 2]", "the index of swPortTable has 1 part"},
        {"swPortTable[1]", "is not a column with an index in parts"},
        {"ifNumber[0]", "is not a column with an index in parts"},
        {"1.3.4294967296", "'4294967296' is not a sub-identifier"},
        {"1..3", "'' is not a sub-identifier"},
        {"", "not a sub-identifier"},
        {long_oid, "more than 128"},
    };
    expect_complaints(cases, [&](const auto& text) { tool::parse_oid(registry, text); });
}

// Every index and key of each kind, by its text.
TEST(ToolIndex, PartsOfIndexAndKey) {
    using tests::join, tests::integer, tests::address_record;
    const Bytes number = integer(4000000000), mac{0, 0x1b, 0xff, 4, 5, 6};
    const Bytes v6_octets{0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    const Bytes v4 = address_record({10, 0, 0, 1}), v6 = address_record(v6_octets), none = address_record({});
    Bytes prefix = tests::text("10.0.0.0");
    prefix.resize(sizeof(InetText::text));
    const services::Oid v6_ids = join({2, 16}, services::Oid(v6_octets.begin(), v6_octets.end()));
    const struct {
        services::IndexField field;
        services::Oid ids;
        std::string text;
        Bytes key;
        std::string key_text = text;  // where it is another one
    } cases[] = {
        {{2, 4}, {4000000000U}, "4000000000", number},
        {{6, 6}, {0, 0x1b, 0xff, 4, 5, 6}, "00:1b:ff:04:05:06", mac},
        {{0, 6}, {0, 0x1b, 0xff, 4, 5, 6}, "00:1b:ff:04:05:06", mac},
        {{14, 6}, {6, 0, 0x1b, 0xff, 4, 5, 6}, "00:1b:ff:04:05:06", mac},
        {{8, 4}, {3, 2, 0, 4000000000U}, "2.0.4000000000", number, "4000000000"},
        {{7, 72}, {1, 4, 10, 0, 0, 0, 24}, "10.0.0.0/24", join(join(integer(1), prefix), integer(24))},
        {{10, 28}, {1, 4, 10, 0, 0, 1}, "10.0.0.1", v4},
        {{10, 28}, v6_ids, "2001:db8::1", v6},
        {{10, 28}, {0, 0}, "none", none},
        {{11, 32}, join(v6_ids, {64}), "2001:db8::1/64", join(v6, integer(64))},
        {{12, 60}, {1, 4, 10, 0, 0, 1, 7, 4, 10, 0, 0, 1}, "10.0.0.1 7 10.0.0.1", join(join(v4, integer(7)), v4)},
        {{13, 56}, {1, 4, 10, 0, 0, 1, 0, 0}, "10.0.0.1 none", join(v4, none)},
    };
    for (const auto& [field, ids, text_of_index, key, text_of_key] : cases) {
        EXPECT_EQ(services::index_parts({field}, ids.data(), ids.size()), std::vector{text_of_index});
        EXPECT_EQ(services::index_parts({field}, ids.data(), ids.size() - 1), std::nullopt) << text_of_index;
        EXPECT_EQ(services::index_from_text(field, text_of_index), ids) << text_of_index;
        EXPECT_EQ(services::key_parts({field}, key.data(), key.size()), std::vector{text_of_key});
        EXPECT_EQ(services::key_parts({field}, key.data(), key.size() - 1), std::nullopt) << text_of_index;
    }

    // Fields are laid out in a key as in a C struct, and more may come after them.
    const std::uint8_t padded[] = {1, 2, 3, 4, 5, 6, 0xee, 0xee, 7, 0, 0, 0, 0xee};
    EXPECT_EQ(services::key_parts({{6, 6}, {2, 4}}, padded, sizeof padded),
              (std::vector<std::string>{"01:02:03:04:05:06", "7"}));
    Bytes unknown = v4;
    unknown[0] = 3;  // its type
    EXPECT_EQ(services::key_parts({{10, 28}}, unknown.data(), 28), std::nullopt);
    const services::Oid wrong[] = {{1, 4, 10, 0, 0, 256}, {1, 5, 1, 2, 3, 4, 5}, {3, 4, 1, 2, 3, 4}, {1, 0}, {}};
    for (const services::Oid& ids : wrong)
        EXPECT_EQ(services::index_parts({{10, 28}}, ids.data(), ids.size()), std::nullopt);

    const std::pair<services::IndexField, std::vector<std::string>> no_values[] = {
        {{2, 4}, {"-1", "4294967296", ""}},
        {{6, 6}, {"00:1b:ff:04:05", "001bff", "00:1b:ff:04:05:06:"}},
        {{14, 2}, {"xx"}},
        {{8, 4}, {"1..2"}},
        {{10, 28}, {"10.0.0"}},
        {{11, 32}, {"10.0.0.1", "10.0.0.0/x"}},
        {{13, 56}, {"10.0.0.1"}},
        {{12, 60}, {"10.0.0.1 10.0.0.1"}},
        {{99, 1}, {"1"}},
    };
    for (const auto& [field, texts] : no_values)
        for (const std::string& none_of : texts)
            EXPECT_EQ(services::index_from_text(field, none_of), std::nullopt) << none_of;
}

TEST_F(Tool, GroupsDescribeTables) {
    EXPECT_EQ(registry.group("swPortTable"), loaded().object("swPortSpeed").group);
    EXPECT_EQ(registry.group("swPortTable")->oid, *registry.parse("swPortTable"));
    // The first column can be set, so it is not an index.
    EXPECT_EQ(registry.group("dot1qPortVlanTable")->index_column, "");
    for (const services::Object& object : registry.objects()) {
        ASSERT_NE(object.group, nullptr) << object.name;
        EXPECT_EQ(object.group->module, object.module);
        EXPECT_EQ(registry.parse(object.name), object.oid()) << "a name is taken twice";
    }
}

TEST_F(Tool, ParsesTypedValues) {
    EXPECT_EQ(tool::parse_value(registry, "i", "-2147483648"), Value::integer(-2147483647 - 1));
    EXPECT_EQ(tool::parse_value(registry, "u", "4294967295"), Value::unsigned32(agent::kGauge32, 4294967295U));
    EXPECT_EQ(tool::parse_value(registry, "c", "1"), Value::unsigned32(agent::kCounter32, 1));
    EXPECT_EQ(tool::parse_value(registry, "t", "1"), Value::unsigned32(agent::kTimeTicks, 1));
    EXPECT_EQ(tool::parse_value(registry, "s", "a,b"), Value::octet_string(tests::text("a,b")));
    EXPECT_EQ(tool::parse_value(registry, "x", "00:1f-Ff 10"), Value::octet_string({0, 0x1f, 0xff, 0x10}));
    EXPECT_EQ(tool::parse_value(registry, "o", "ifDescr"), Value::object_id(oid_of("ifDescr")));
    EXPECT_EQ(tool::parse_value(registry, "a", "10.0.0.255"), (Value{agent::kIpAddress, {10, 0, 0, 255}}));

    const struct {
        std::string type, message;
        std::vector<std::string> texts;
    } cases[] = {
        {"i", " is not an INTEGER", {"2147483648", "", "1x"}},
        {"u", " is not an unsigned", {"-1"}},
        {"x", " is not a sequence of octets", {"0", "0g"}},
        {"a", " is not an IPv4 address", {"10.0.0.256", "10.0.0", "10.0.0.1."}},
    };
    for (const auto& [type, message, texts] : cases)
        for (const std::string& text : texts)
            EXPECT_THAT(complaint([&, &type = type] { tool::parse_value(registry, type, text); }),
                        HasSubstr('\'' + text + '\'' + message));
    EXPECT_THAT(complaint([&] { tool::parse_value(registry, "o", "nobody"); }), HasSubstr("unknown name 'nobody'"));
    for (const std::string type : {"q", ""})
        EXPECT_THAT(complaint([&] { tool::parse_value(registry, type, "1"); }),
                    HasSubstr("unknown type '" + type + '\''));

    const auto as_registered = [&](const char* object, const char* text) {
        return tool::parse_value(registry, loaded().object(object), text);
    };
    EXPECT_EQ(as_registered("swPortSpeed", "-2"), Value::integer(-2));
    EXPECT_EQ(as_registered("dot1qPvid", "2"), Value::unsigned32(agent::kGauge32, 2));
    EXPECT_EQ(as_registered("ifAlias", ""), Value::octet_string({}));
    EXPECT_EQ(as_registered("ifAlias", "text:hex:00"), Value::octet_string(tests::text("hex:00")));
    EXPECT_EQ(as_registered("ifAlias", "hex:00 ff"), Value::octet_string({0, 0xff}));
    EXPECT_EQ(as_registered("ipForwardDest", "10.0.0.1"), (Value{agent::kIpAddress, {10, 0, 0, 1}}));
    EXPECT_THAT(complaint([&] { as_registered("ifHCInOctets", "1"); }),
                HasSubstr("no SET can have the type Counter64"));
}

TEST_F(Tool, ScriptedAnswersComeInOrderAndTheLastOneStays) {
    tool::Script script;
    tool::parse_script("ifTable=7,text:up,hex:0102,4294967296,refused", script);
    tool::parse_script("config=ok,refused", script);
    tool::parse_script("nobody=1", script);
    answer("ifTable", tests::integer(99), {2, 0, 0, 0});
    std::vector<std::string> lines;
    tool::TracingBackend tracing(
        *this, registry, [&](const tool::Event& event) { lines.push_back(event.line()); }, script);
    services::Backend& backend = tracing;

    std::uint8_t result[6];
    std::size_t length = 0;
    std::uint32_t key = 1;
    const auto show = [&](int exact) {
        services::ShowRequest request{2, "show it", result, sizeof result, &length, &key, 4, 3, exact, 0, "ifTable", 1};
        return backend.show(request) ? std::optional(Bytes(result, result + length)) : std::nullopt;
    };
    EXPECT_EQ(show(1), tests::integer(7));
    EXPECT_EQ(key, 1U);
    EXPECT_EQ(show(0), tests::text("up")) << "a GETNEXT's value is scripted";
    EXPECT_EQ(key, 2U) << "its row is the backend's";
    EXPECT_EQ(show(1), (Bytes{1, 2}));
    EXPECT_EQ(show(1), (Bytes{0, 0, 0, 0, 1, 0})) << "cut to what the library has room for";
    for (int i = 0; i < 2; ++i) EXPECT_EQ(show(1), std::nullopt);

    EXPECT_TRUE(backend.configure({5, "interface port1", "write_it", 1}));
    for (const char* line : {"speed 100", "speed 10"}) EXPECT_FALSE(backend.configure({-1, line, "write_it", 1}));
    EXPECT_THAT(lines, Contains("show \"show it\" name ifTable magic 3 exact 0 key [ifIndex 1] (scripted) -> 2 octets "
                                "\"up\", row [ifIndex 2]"));
    EXPECT_THAT(lines, Contains("config mode -1 \"speed 100\" caller write_it (scripted) -> refused"));
    EXPECT_THAT(tracing.unused(), ElementsAre("nobody"));

    const std::pair<std::string, std::string> cases[] = {
        {"ifTable", "'ifTable' is not of the form NAME="},
        {"=1", "not of the form"},
        {"ifTable=", "ifTable=: an answer is"},
        {"ifTable=1,two", "ifTable=two: an answer is"},
        {"ifTable=hex:0", "ifTable=hex:0: an answer is"},
        {"config=1", "config=1: a configuration line"},
    };
    expect_complaints(cases, [&](const auto& text) { tool::parse_script(text, script); });
}

TEST_F(Tool, KeysOfAnotherLayoutAreShownAsOctets) {
    std::vector<tool::Event> events;
    tool::TracingBackend tracing(*this, registry, [&](const tool::Event& event) { events.push_back(event); });
    std::uint8_t result[4], key[52] = {};
    std::size_t length = 0;
    const auto shown_key = [&] {
        services::ShowRequest request{3, "show it", result, 4, &length, key, 52, 7, 1, 2, "inetCidrRouteTable", 1};
        static_cast<services::Backend&>(tracing).show(request);
        return events.back().line();
    };
    EXPECT_EQ(shown_key(),
              "show \"show it\" name inetCidrRouteTable magic 7 exact 1 key 52 zero octets class 3 index count 2 -> "
              "refused");
    key[0] = 1;
    EXPECT_THAT(shown_key(), HasSubstr("key 52 octets 01 00 00"));
    EXPECT_FALSE(events.back().json["key"].contains("index"));
}

TEST_F(Tool, ListSaysWhatIsWritableInFact) {
    for (const char* name : {"ifAdminStatus", "ifAlias", "ifStackStatus", "swPortSpeed", "nVlanInterfaceRowStatus"})
        EXPECT_TRUE(tool::writable(loaded().object(name))) << name;
    for (const char* name : {"ifNumber", "ifDescr", "ifName", "swPortIndex", "swPortTableNumber", "nVlanInterfaceVid"})
        EXPECT_FALSE(tool::writable(loaded().object(name))) << name;
    EXPECT_TRUE(shown.empty() && sent.empty()) << "the backend of the process is not asked";
}

TEST_F(Tool, ListsWhatPatternsSelect) {
    const auto names = [&](const std::vector<std::string>& patterns) {
        std::vector<std::string> selected;
        for (const services::Object* const object : tool::select(registry, patterns)) selected.push_back(object->name);
        return selected;
    };
    EXPECT_EQ(names({}).size(), registry.objects().size());
    EXPECT_THAT(names({"NVLANINTERFACETABLE"}), ElementsAre("nVlanInterfaceVid", "nVlanInterfaceIfIndex",
                                                            "nVlanInterfaceName", "nVlanInterfaceRowStatus"));
    EXPECT_THAT(names({"swport*speed"}), ElementsAre("swPortSpeed"));
    EXPECT_THAT(names({"portspeed", "ifNumber"}), ElementsAre("ifNumber", "swPortSpeed", "swPortSpeedStatus"));
    EXPECT_THAT(names({"IF-MIB"}), AllOf(Contains("ifNumber"), Contains("ifAlias"), Not(Contains("swPortSpeed"))));
    EXPECT_THAT(names({"interfaces::*Speed"}), ElementsAre("ifSpeed"));
    EXPECT_THAT(names({"1.3.6.1.2.1.2.1"}), ElementsAre("ifNumber"));
    EXPECT_EQ(complaint([&] { names({"ifNumbr"}); }),
              "no object, table or module is called 'ifNumbr', did you mean 'ifNumber'?");
    EXPECT_EQ(complaint([&] { names({"IP-MIB::swPort*"}); }), "no object, table or module is called 'IP-MIB::swPort*'");

    using Form = tool::ListForm;
    const auto lines = [&](const std::vector<std::string>& patterns, Form form) {
        std::istringstream text(tool::list(registry, tool::select(registry, patterns), form));
        std::vector<std::string> all;
        for (std::string line; std::getline(text, line);) all.push_back(line);
        return all;
    };
    EXPECT_THAT(lines({"nVlanInterfaceName", "ifTestId", "ip::ipforwardin?"}, Form::text),
                ElementsAre("ip 1.3.6.1.2.1.4 (IP-MIB, 1 object)", "  ipGlobals, scalars",
                            "    .1  ipForwarding  INTEGER    read-write, no writer", "",
                            "ifMIB 1.3.6.1.2.1.31 (IF-MIB, 1 object)", "  ifTestTable, index: integer, never answers",
                            "    .1.3.1.1  ifTestId  INTEGER    read-write", "",
                            HasSubstr("pellamVlanInterfaceMIB 1.3.6.1.4.1."),
                            "  nVlanInterfaceTable, index: integer nVlanInterfaceVid",
                            "    .1.1.1.3  nVlanInterfaceName  STRING     read-only"));
    EXPECT_THAT(lines({"swPortSpeed"}, Form::names),
                ElementsAre("swPortSpeed", "swPortSpeedStatus", "swPortTable", "switchPortMIB"));
    EXPECT_THAT(lines({"ifNumber"}, Form::modules), ElementsAre("interfaces 1.3.6.1.2.1.2 (IF-MIB, 1 object)"));
    EXPECT_THAT(lines({"ifNumber"}, Form::markdown), Contains("| .1 | ifNumber | INTEGER | read-only | no |"));
    EXPECT_THAT(lines({}, Form::text), Not(Contains(::testing::SizeIs(::testing::Gt(100u)))));
    EXPECT_THAT(lines({"swport*speed"}, Form::json),
                ElementsAre(AllOf(HasSubstr(R"("name":"swPortSpeed")"), HasSubstr(R"("access":"read-write")"),
                                  HasSubstr(R"("writable":true)"), HasSubstr(R"("table":"swPortTable")"))));
}

TEST_F(Tool, ExplainShowsEveryPhaseWithItsRequests) {
    answer("_get_port_info", tests::integer(1));
    refused_lines = {"speed 100"};
    agent::Engine engine(registry);
    const auto explained = [&](const std::vector<std::string>& words) {
        return tool::explain(tool::parse_explained(registry, words), engine, registry, *this);
    };
    const auto text = [&](const std::vector<std::string>& words) { return as_text(explained(words), registry); };

    std::vector<std::string> lines =
        text({"set", "swPortSpeed.5121=-3", "ifAlias.5122", "s", "x", "_get_port_info=1", "_get_port_info.1=16"});
    EXPECT_THAT(lines, Contains("SET " + port + " = INTEGER: -3"));
    EXPECT_THAT(lines, Contains("  RESERVE1 " + port + " -> noError"));
    EXPECT_THAT(lines, Contains("    config mode 5 \"interface port1\" caller write_swPortSpeed -> accepted"));
    EXPECT_THAT(lines, Contains("  ACTION " + port + " -> notWritable"));
    EXPECT_THAT(lines, Contains("  UNDO ifAlias[5122] -> noError, nothing asked or sent"));
    EXPECT_EQ(lines.back(), "answer notWritable (17) for varbind 1, " + port);
    EXPECT_THAT(lines, Not(Contains(::testing::SizeIs(::testing::Gt(100u)))));

    lines = text({"set", port + "=2"});
    EXPECT_THAT(lines, Contains("    config mode -1 \"speed 100\" caller write_swPortSpeed -> refused"));
    EXPECT_EQ(lines.back(), "answer genErr (5) for varbind 1, " + port);

    lines = text({"set", port + "=0", "_nobody=1"});
    EXPECT_THAT(lines, Contains("  FREE " + port + " -> wrongValue"));
    EXPECT_THAT(lines, Contains("answer wrongValue (10) for varbind 1, " + port));
    EXPECT_EQ(lines.back(), "note: no request was named '_nobody'");

    // Phases in which nothing happens are one line, with the varbinds where they are not all.
    answer("ifXTable", tests::text("old"));
    lines = text({"set", "ifAlias.5121=x", "ifAlias.5122", "i", "1"});
    EXPECT_THAT(lines, Contains("  RESERVE1 ifAlias[5121] -> noError, nothing asked or sent"));
    EXPECT_THAT(lines, Contains("  RESERVE1 ifAlias[5122] -> wrongType"));
    lines = text({"set", "ifAlias.5121=x", "ifAlias.5122=y"});
    EXPECT_THAT(lines, Contains("  RESERVE1, RESERVE2 -> noError, nothing asked or sent"));
    EXPECT_THAT(lines, Contains("  COMMIT -> noError, nothing asked or sent"));
    EXPECT_THAT(as_lines(explained({"set", "ifAlias.5121=x", "ifAlias.5122=y"})),
                ElementsAre("interface port1", "desc x", "interface port2", "desc y"));

    EXPECT_THAT(text({"get", "swPortSpeed.5121", "swPortTable=6"}),
                ElementsAre("GET " + port,
                            "    show \"show swport swport_table 5121\" name swPortTable magic 4 exact 1 key "
                            "[swPortIndex 5121]",
                            "        (scripted) -> 4 octets 6", "answer " + port + " = INTEGER: 6"));

    std::vector<std::string> events;
    for (const std::string& line : as_json(explained({"set", "ifAlias.5121=x"}), registry)) {
        const auto event = tool::Json::parse(line);
        events.push_back(event.value("event", "") + event.value("phase", "") + event.value("command", ""));
    }
    EXPECT_THAT(events, ElementsAre("set", "showREADshow interface_uib ifMIB 5121", "phaseREAD", "phaseRESERVE1",
                                    "phaseRESERVE2", "configACTIONinterface port1", "configACTIONdesc x", "phaseACTION",
                                    "phaseCOMMIT", "answer"));

    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "say get, next or set"},
        {{"put", port}, "say get, next or set, not 'put'"},
        {{"get"}, "explain get: an OID is missing"},
        {{"set", "ifAlias.1", "s"}, "ifAlias.1: a SET needs OID=VALUE, or OID TYPE VALUE"},
        {{"set", "swPortSpeed.5121=fast"}, port + ": 'fast' is not an INTEGER (-2147483648 to 2147483647)"},
        {{"set", "swPortSped.5121=2"}, "unknown name 'swPortSped', did you mean 'swPortSpeed'"},
        {{"set", "1.3.9.1=2"}, "1.3.9.1=2: no such object is registered"},
        {{"get", "--vfr", "red"}, "unknown option --vfr"},
    };
    expect_complaints(cases, [&](const auto& words) { tool::parse_explained(registry, words); });
}

TEST_F(Tool, WithoutNamesEverythingGoesByNumber) {
    const services::Registry bare(loaded().registrations);
    EXPECT_FALSE(bare.has_names());
    EXPECT_THAT(complaint([&] { tool::parse_oid(bare, "ifAlias.1"); }), HasSubstr("was built without names"));
    const services::Oid alias = oid_of("ifAlias", {5121});
    const auto request = tool::parse_explained(bare, {"set", services::to_string(alias) + "=x", "ifXTable.18=1"});
    ASSERT_EQ(request.varbinds.size(), 1u);
    EXPECT_EQ(request.varbinds.front(), (agent::Varbind{alias, Value::octet_string({'x'})}));
    EXPECT_TRUE(request.script.contains("ifXTable.18"));
    agent::Engine engine(bare);
    const auto lines = as_text(tool::explain(request, engine, bare, *this), bare);
    EXPECT_THAT(lines, Contains(HasSubstr("name ifXTable magic 18 exact 1 key 5121")));
    EXPECT_THAT(tool::list(bare, tool::select(bare, {"1.3.6.1.2.1.2.1"}), tool::ListForm::text),
                "interfaces 1.3.6.1.2.1.2 (IF-MIB, 1 object)\n    .1  -  INTEGER    read-only\n");
}

TEST_F(Tool, WalkFindsWhatIsUnderTheRoot) {
    // Two rows; the row after the last is refused.
    answers["nVlanInterfaceTable"] = [](const services::ShowRequest& request) {
        std::uint32_t vid;
        std::memcpy(&vid, request.key, sizeof vid);
        const Bytes next = tests::integer(vid == 0 ? 1 : 10);
        return vid == 10 ? Answer{} : Answer{next, next};
    };
    agent::Engine engine(registry);
    const auto walked = [&](const std::string& root) {
        std::vector<std::string> found;
        const std::size_t count = tool::walk(
            engine, registry, tool::parse_oid(registry, root),
            [&](const agent::Varbind& varbind) { found.push_back(tool::format_varbind(registry, varbind)); });
        EXPECT_EQ(count, found.size());
        return found;
    };
    EXPECT_THAT(walked("nVlanInterfaceVid"), ElementsAre("nVlanInterfaceVid[nVlanInterfaceVid 1] = Gauge32: 1",
                                                         "nVlanInterfaceVid[nVlanInterfaceVid 10] = Gauge32: 10"));
    EXPECT_TRUE(walked("1.3.9").empty());
}

std::string parse_words(const std::vector<std::string>& words) { return tool::CommandLine().parse(words).value_or(""); }

TEST(ToolOptions, CommandLine) {
    tool::CommandLine line;
    EXPECT_EQ(line.parse({"explain", "--vrf", "red", "set", "ifAlias.1", "s", "-x", "--json"}), std::nullopt);
    EXPECT_EQ(line.options().command, tool::Command::explain);
    EXPECT_EQ(line.options().vrf, "red");
    EXPECT_TRUE(line.options().json);
    EXPECT_THAT(line.options().explained, ElementsAre("set", "ifAlias.1", "s", "-x"));

    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "say serve, list, contract, explain or walk"},
        {{"wlak"}, "unknown command 'wlak', did you mean 'walk'?"},
        {{"--jsn"}, "--jsn: a command comes first"},
        {{"--", "walk"}, "--: a command comes first"},
        {{"list", "--jsn"}, "list has no option --jsn, did you mean '--json'?"},
        {{"walk", "a", "b"}, "walk does not take the word 'b'"},
        {{"serve", "--vlans", "4095"}, "--vlans"},
        {{"serve", "--vlans", "many"}, "--vlans"},
        {{"serve", "--listen"}, "--listen"},
    };
    expect_complaints(cases, parse_words);
    EXPECT_THAT(parse_words({"--version"}), HasSubstr("mibhost "));
    const std::vector<std::string> asking_for_help[] = {
        {"-h"}, {"serve", "--help"}, {"list", "--help"}, {"explain", "--help"}, {"walk", "--help"}};
    for (const auto& words : asking_for_help) {
        std::istringstream help(parse_words(words));
        for (std::string text; std::getline(help, text);) EXPECT_LE(text.size(), 100u) << text;
    }
}

// Both are made from what --help shows.
TEST(ToolOptions, ManualPageAndCompletion) {
    const tool::CommandLine line;
    EXPECT_THAT(line.manual_page(), AllOf(HasSubstr("\n.SH MIBHOST EXPLAIN\n"), HasSubstr("\\-\\-write\\-community"),
                                          HasSubstr("\n.SH MIBHOST WALK\n"), HasSubstr("where to listen"),
                                          HasSubstr("\n.SS Size of the simulated switch, at least\n")));
    EXPECT_THAT(line.bash_completion(),
                AllOf(HasSubstr("\"serve list contract explain walk --help --version\""), HasSubstr("--log-json"),
                      HasSubstr("--library|--config|--texts) _filedir"), Not(HasSubstr("manual"))));
}

TEST(ToolOptions, ConfigurationFile) {
    const std::string path = ::testing::TempDir() + "/mibhost_options.conf";
    const auto read = [&](const std::string& content) {
        std::ofstream(path) << content;
        tool::CommandLine line;
        line.parse({"serve", "--config", path, "--vrf", "blue"});
        return line.options();
    };
    const tool::Options options =
        read("community = \"c\"\nwrite-community = w\nvrf = red  # no\nverbose = true\nvlans = 12\n");
    EXPECT_EQ(options.community, "c");
    EXPECT_EQ(options.write_community, "w");
    EXPECT_EQ(options.vrf, "blue") << "the command line overrides it";
    EXPECT_TRUE(options.verbose);
    EXPECT_EQ(options.size.vlans, 12u);
    EXPECT_EQ(options.listen, "127.0.0.1:1161");

    const std::pair<std::string, std::string> cases[] = {
        {"lissten = x\n", path + ": serve has no option --lissten, did you mean '--listen'?"},
        {"[serve]\nlisten = x\n", path + ": it has a section [serve], but options go without one"},
        {"config = x\n", "serve has no option --config"},
        {"verbose = maybe\n", "maybe"},
        {"vlans = 4095\n", "--vlans"},
    };
    expect_complaints(cases, read);
    std::remove(path.c_str());
    for (const std::string& unreadable : {path, ::testing::TempDir()})
        EXPECT_THAT(complaint([&] { parse_words({"serve", "--config", unreadable}); }), HasSubstr(unreadable));
}

TEST(ToolOptions, ListenAddress) {
    EXPECT_EQ(tool::parse_listen("127.0.0.1:0").port, 0);
    EXPECT_EQ(tool::parse_listen("[::1]:65535").host, "::1");
    const std::pair<std::string, std::string> cases[] = {
        {"127.0.0.1", "has no port"},          {"127.0.0.1:", "'' is not a port"},
        {"127.0.0.1:65536", "'65536' is not"}, {"localhost:1161", "'localhost' is not an IP address"},
        {"127.0.0.1:16x", "'16x' is not"},     {":1161", "'' is not an IP address"},
    };
    expect_complaints(cases, tool::parse_listen);
}

}  // namespace
