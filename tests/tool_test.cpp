// The parts of mibhost that need no network: arguments, printing, the trace, list, explain, walk and the options.
#include "support/recording_host.h"
#include "tool/arguments.h"
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
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
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

class Tool : public tests::RecordingHost {
protected:
    const services::Registry& registry = loaded().registry;
    const std::string port = "swPortSpeed.5121";
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
        {Value::object_id(oid_of("ifDescr", {2})), "OID: ifDescr.2"},
        {{agent::kIpAddress, {192, 0, 2, 255}}, "IpAddress: 192.0.2.255"},
        {{agent::kIpAddress, {192, 0}}, "IpAddress: wrong size, 2 octets: c0 00"},
        {{agent::kInteger, {}}, "INTEGER: wrong size, 0 octets: "},
        {{agent::kObjectId, {1, 2, 3}}, "OID: 01 02 03"},
        {{agent::kNoSuchInstance, {}}, "noSuchInstance"},
        {{0x47, {1}}, "type 0x47: 01"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(tool::format_value(registry, value), text);
    EXPECT_EQ(tool::quoted("desc a\nno shutdown\x7f"), R"("desc a\x0ano shutdown\x7f")");
}

TEST_F(Tool, ParsesOids) {
    EXPECT_EQ(tool::parse_oid(registry, port), oid_of("swPortSpeed", {5121}));
    EXPECT_EQ(tool::parse_oid(registry, ".1.3.6"), (services::Oid{1, 3, 6}));
    EXPECT_EQ(tool::parse_oid(registry, "interfaces"), (services::Oid{1, 3, 6, 1, 2, 1, 2}));

    std::string long_oid = "1";
    for (int i = 0; i < 128; ++i) long_oid += ".3";
    const std::pair<std::string, std::string> cases[] = {
        {"swPortSped.1", "unknown name 'swPortSped', did you mean 'swPortSpeed'"},
        {"IFDESCR", "did you mean 'ifDescr'"},
        {"AliasOfSomething", "unknown name 'AliasOfSomething'"},
        {"swPortSpeed.x", "'x' is not a sub-identifier"},
        {"swPortSpeed.", "'' is not a sub-identifier"},
        {"1.3.4294967296", "'4294967296' is not a sub-identifier"},
        {"1..3", "'' is not a sub-identifier"},
        {"", "not a sub-identifier"},
        {long_oid, "more than 128"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_THAT(complaint([&] { tool::parse_oid(registry, text); }), HasSubstr(message)) << text;
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

    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"i", "2147483648", "'2147483648' is not an INTEGER"},
        {"i", "", "'' is not an INTEGER"},
        {"i", "1x", "'1x' is not an INTEGER"},
        {"u", "-1", "'-1' is not an unsigned"},
        {"x", "0", "'0' is not a sequence of octets"},
        {"x", "0g", "'0g' is not a sequence"},
        {"a", "10.0.0.256", "'10.0.0.256' is not an IPv4 address"},
        {"a", "10.0.0", "'10.0.0' is not"},
        {"a", "10.0.0.1.", "'10.0.0.1.' is not"},
        {"o", "nobody", "unknown name 'nobody'"},
        {"q", "1", "unknown type 'q'"},
        {"", "1", "unknown type ''"},
    };
    for (const auto& [type, text, message] : cases)
        EXPECT_THAT(complaint([&] { tool::parse_value(registry, type, text); }), HasSubstr(message)) << type << text;
}

TEST_F(Tool, ScriptedAnswersComeInOrderAndTheLastOneStays) {
    tool::Script script;
    tool::parse_script("ifTable=7,text:up,hex:0102,4294967296,refused", script);
    tool::parse_script("config=ok,refused", script);
    tool::parse_script("nobody=1", script);
    answer("ifTable", tests::integer(99), {2, 0, 0, 0});
    std::vector<std::string> told;
    tool::TracingBackend tracing(
        *this, [&](const std::string& line) { told.push_back(line); }, script);
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
    EXPECT_EQ(show(1), std::nullopt);
    EXPECT_EQ(show(1), std::nullopt);

    EXPECT_TRUE(backend.configure({5, "interface port1", "write_it", 1}));
    EXPECT_FALSE(backend.configure({-1, "speed 100", "write_it", 1}));
    EXPECT_FALSE(backend.configure({-1, "speed 10", "write_it", 1}));
    EXPECT_THAT(told,
                Contains("show \"show it\" name ifTable magic 3 exact 0 key 1 (scripted) -> 2 octets \"up\", row 2"));
    EXPECT_THAT(told, Contains("config mode -1 \"speed 100\" caller write_it (scripted) -> refused"));
    EXPECT_THAT(tracing.unused(), ElementsAre("nobody"));

    const std::pair<std::string, std::string> cases[] = {
        {"ifTable", "'ifTable' is not of the form NAME="},
        {"=1", "not of the form"},
        {"ifTable=", "ifTable=: an answer is"},
        {"ifTable=1,two", "ifTable=two: an answer is"},
        {"ifTable=hex:0", "ifTable=hex:0: an answer is"},
        {"config=1", "config=1: a configuration line"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_THAT(complaint([&] { tool::parse_script(text, script); }), HasSubstr(message)) << text;
}

TEST_F(Tool, ListTellsWhatIsWritableInFact) {
    for (const char* name : {"ifAdminStatus", "ifAlias", "ifStackStatus", "swPortSpeed", "nVlanInterfaceRowStatus"})
        EXPECT_TRUE(tool::writable(loaded().object(name))) << name;
    for (const char* name : {"ifNumber", "ifDescr", "ifName", "swPortIndex", "swPortTableNumber", "nVlanInterfaceVid"})
        EXPECT_FALSE(tool::writable(loaded().object(name))) << name;
    EXPECT_TRUE(shown.empty() && sent.empty()) << "the backend of the process is not asked";

    std::size_t objects = 0;
    const auto document = nlohmann::json::parse(tool::list(registry, "json"));
    for (const auto& module : document) {
        objects += module["objects"].size();
        for (const auto& object : module["objects"]) {
            EXPECT_EQ(registry.parse(object["name"].get<std::string>()),
                      registry.parse(object["oid"].get<std::string>()));
            if (object["name"] == "swPortSpeed") {
                EXPECT_EQ(object["type"], "INTEGER");
                EXPECT_EQ(object["access"], "read-write");
                EXPECT_EQ(object["writable"], true);
            }
        }
    }
    EXPECT_EQ(objects, registry.objects().size());
    const auto lines_in = [&](const char* format, const std::string& start) {
        const std::string text = tool::list(registry, format);
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find("\n" + start, at)) != std::string::npos; ++at) ++count;
        return count;
    };
    EXPECT_EQ(lines_in("text", "  1."), objects);
    EXPECT_EQ(lines_in("markdown", "| 1."), objects);
}

TEST_F(Tool, ExplainTellsEveryPhaseWithItsRequests) {
    answer("_get_port_info", tests::integer(1));
    refused_lines = {"speed 100"};
    agent::Engine engine(registry);
    std::vector<std::string> told;
    const auto explain = [&](const std::vector<std::string>& words) {
        told.clear();
        tool::explain(tool::parse_explained(registry, words), engine, registry, *this,
                      [&](const std::string& line) { told.push_back(line); });
    };

    explain({"set", port, "i", "-3", "ifAlias.5122", "s", "x", "_get_port_info=1", "_get_port_info.1=16"});
    EXPECT_THAT(told, Contains("  RESERVE1 1 -> noError"));
    EXPECT_THAT(told, Contains("    config mode 5 \"interface port1\" caller write_swPortSpeed -> accepted"));
    EXPECT_THAT(told, Contains("  ACTION 1 -> notWritable"));
    EXPECT_THAT(told, Contains("  UNDO 2 -> noError"));
    EXPECT_EQ(told.back(), "answer notWritable (17) for varbind 1, " + port);

    explain({"set", port, "i", "2"});
    EXPECT_THAT(told, Contains("    config mode -1 \"speed 100\" caller write_swPortSpeed -> refused"));
    EXPECT_EQ(told.back(), "answer genErr (5) for varbind 1, " + port);

    explain({"set", port, "i", "0", "nobody=1"});
    EXPECT_THAT(told, Contains("  FREE 1 -> wrongValue"));
    EXPECT_THAT(told, Contains("answer wrongValue (10) for varbind 1, " + port));
    EXPECT_EQ(told.back(), "note: no request was named 'nobody'");

    explain({"get", port, "swPortTable=6"});
    EXPECT_THAT(told,
                ElementsAre("GET " + port,
                            "    show \"show swport swport_table 5121\" name swPortTable magic 4 exact 1 key 5121 "
                            "(scripted) -> 4 octets 6",
                            "answer " + port + " = INTEGER: 6"));

    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "say get, next or set"},
        {{"put", port}, "say get, next or set, not 'put'"},
        {{"get"}, "explain get: an OID is missing"},
        {{"set", port, "i"}, port + ": a SET needs TYPE and VALUE"},
        {{"get", "--vfr", "red"}, "unknown option --vfr"},
        {{"get", "ifDescription"}, "unknown name 'ifDescription'"},
    };
    for (const auto& [words, message] : cases)
        EXPECT_THAT(complaint([&] { tool::parse_explained(registry, words); }), HasSubstr(message));
}

TEST_F(Tool, WalkPrintsWhatIsUnderTheRoot) {
    // Two rows; the row after the last is refused.
    answers["nVlanInterfaceTable"] = [](const services::ShowRequest& request) {
        std::uint32_t vid;
        std::memcpy(&vid, request.key, sizeof vid);
        if (vid == 10) return Answer{std::nullopt, {}};
        const std::uint8_t next = vid == 0 ? 1 : 10;
        return Answer{tests::integer(next), {next, 0, 0, 0}};
    };
    agent::Engine engine(registry);
    const auto walked = [&](const std::string& root) {
        std::FILE* const file = std::tmpfile();
        EXPECT_TRUE(tool::walk(engine, registry, tool::parse_oid(registry, root), file));
        std::string text(static_cast<std::size_t>(std::ftell(file)), '\0');
        std::rewind(file);
        EXPECT_EQ(std::fread(text.data(), 1, text.size(), file), text.size());
        std::fclose(file);
        return text;
    };
    EXPECT_EQ(walked("nVlanInterfaceVid"),
              "nVlanInterfaceVid.1 = Gauge32: 1\nnVlanInterfaceVid.10 = Gauge32: 10\n2 variables\n");
    EXPECT_EQ(walked("1.3.9"), "0 variables\n");
}

TEST(ToolOptions, ConfigurationFile) {
    const std::string path = ::testing::TempDir() + "/mibhost_options.json";
    const auto read = [&](const std::string& content, tool::Options& options, const std::string& given = "") {
        std::ofstream(path) << content;
        return complaint(
            [&] { tool::read_config(path, options, [&](const std::string& name) { return name == given; }); });
    };
    tool::Options options;
    options.vrf = "blue";
    EXPECT_EQ(read(R"({"community": "c", "write-community": "w", "vrf": "red", "verbose": true})", options, "vrf"), "");
    EXPECT_EQ(options.community, "c");
    EXPECT_EQ(options.write_community, "w");
    EXPECT_EQ(options.vrf, "blue") << "the command line wins";
    EXPECT_TRUE(options.verbose);
    EXPECT_EQ(options.listen, "127.0.0.1:1161");

    const std::pair<std::string, std::string> cases[] = {
        {R"({"port": 1})", "unknown key 'port'"},
        {R"({"listen": 1161})", "'listen' is a number, not a string"},
        {R"({"verbose": "yes"})", "'verbose' is a string"},
        {R"({"vrf": null})", "'vrf' is a null"},
        {R"(["listen"])", "not a JSON object"},
        {"{", "is not JSON"},
    };
    for (const auto& [content, message] : cases) EXPECT_THAT(read(content, options, "vrf"), HasSubstr(message));
    std::remove(path.c_str());
    for (const std::string& unreadable : {path, ::testing::TempDir()})
        EXPECT_THAT(
            complaint([&] { tool::read_config(unreadable, options, [](const std::string&) { return false; }); }),
            HasSubstr("cannot read the configuration file " + unreadable));
}

TEST(ToolOptions, ListenAddress) {
    EXPECT_EQ(tool::parse_listen("127.0.0.1:0").port, 0);
    EXPECT_EQ(tool::parse_listen("[::1]:65535").host, "::1");
    const std::pair<std::string, std::string> cases[] = {
        {"127.0.0.1", "has no port"},          {"127.0.0.1:", "'' is not a port"},
        {"127.0.0.1:65536", "'65536' is not"}, {"localhost:1161", "'localhost' is not an IP address"},
        {"127.0.0.1:16x", "'16x' is not"},     {":1161", "'' is not an IP address"},
    };
    for (const auto& [text, message] : cases)
        EXPECT_THAT(complaint([&] { tool::parse_listen(text); }), HasSubstr(message)) << text;
}

}  // namespace
