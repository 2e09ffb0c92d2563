// The contract with the backend: each module's as tests/golden/contract has it, and how it is found and printed.
#include "tool/contract.h"
#include "support/golden.h"
#include "support/recording_host.h"

#include <algorithm>
#include <set>

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using tests::loaded;
using tool::Json;

std::vector<Json> contract_of(const std::string& pattern) {
    const services::Registry& registry = loaded().registry;
    return tool::contract(registry, loaded().library, tool::select(registry, {pattern}));
}

// The entries of an object or group.
std::vector<Json> entries(const char* kind, const std::string& name) {
    std::vector<Json> found = contract_of(name);
    std::erase_if(found, [&](const Json& entry) { return entry["entry"] != kind || entry["name"] != name; });
    return found;
}

std::filesystem::path golden_file(const services::Registration& registration) {
    return tests::kGolden / "contract" / (registration.descr + ".json");
}

// In parts that run side by side, for it takes long under the sanitizers.
class GoldenContract : public ::testing::TestWithParam<std::size_t> {};
constexpr std::size_t kParts = 4;
INSTANTIATE_TEST_SUITE_P(Part, GoldenContract, ::testing::Range(std::size_t{0}, kParts));

TEST_P(GoldenContract, OfEachModule) {
    std::filesystem::create_directories(tests::kGolden / "contract");
    const auto& modules = loaded().registrations;
    for (std::size_t i = GetParam(); i < modules.size(); i += kParts)
        tests::expect_golden(golden_file(modules[i]),
                             tool::contract_text(contract_of(modules[i].descr), tool::ListForm::json));
}

TEST(Contract, GoldenFilesAreOfModules) {
    std::set<std::filesystem::path> expected;
    for (const services::Registration& registration : loaded().registrations)
        expected.insert(golden_file(registration));
    for (const auto& file : std::filesystem::directory_iterator(tests::kGolden / "contract"))
        EXPECT_TRUE(expected.contains(file.path())) << file.path() << " is of no registered module";
}

TEST(Contract, FindsTheEndsOfWhatIsTaken) {
    const auto values = [](const char* kind, const std::string& name) {
        std::vector<std::string> all;
        for (const Json& entry : entries(kind, name))
            if (entry.contains("values")) all.push_back(entry["values"].dump());
        all.erase(std::unique(all.begin(), all.end()), all.end());
        return all;
    };
    EXPECT_THAT(values("write", "mgmdIgmpSnpFilterLimit"), ElementsAre("0", "\"1..2048\""));
    EXPECT_THAT(values("refusal", "mgmdIgmpSnpFilterLimit"), ElementsAre("\"2049..4294967295\""));
    EXPECT_THAT(values("write", "dot1qVlanStaticRowStatus"), ElementsAre("\"1..3\"", "4", "5", "6"));
    // A text, nothing, and the one control character that goes through.
    EXPECT_THAT(values("write", "ifAlias"), ElementsAre("\"any text\"", "\"\""));
    EXPECT_EQ(entries("object", "ifAlias")[0]["takes"], Json::parse(R"({"types": ["STRING"], "sizes": ["0..64"]})"));
}

TEST(Contract, NamesTheValueInItsLinesAndWhatTheyDependOn) {
    const auto writes = entries("write", "dot1qPvid");
    ASSERT_FALSE(writes.empty());
    EXPECT_EQ(writes[0]["sends"], Json::parse(R"([
        {"mode": 5, "line": "interface port1", "caller": "write_dot1qPvid"},
        {"mode": -1, "line": "switchport hybrid native vlan <value>", "caller": "write_dot1qPvid"}])"));
    EXPECT_EQ(writes[0]["asks"][0]["answer"], 2);
    const auto refusals = entries("refusal", "dot1qPvid");
    const auto line = std::ranges::find_if(refusals, [](const Json& entry) { return entry.contains("line"); });
    ASSERT_NE(line, refusals.end());
    EXPECT_EQ((*line)["error"], "genErr");
}

// Where requests hold no key, the record's layout is seen in what becomes of it.
TEST(Contract, ShowsRecordsByTheirFields) {
    const Json key = entries("table", "inetCidrRouteTable")[0]["key"];
    std::vector<std::string> fields;
    for (const Json& field : key["record"])
        fields.push_back(field["is"].get<std::string>() + " of " + field["part"].dump() + " at " +
                         field["offset"].dump() + ", " + field["octets"].dump());
    EXPECT_THAT(fields,
                ElementsAre("type of 1 at 0, 4", "type of 3 at 4, 4", "address of 1 at 8, 4", "address of 1 at 12, 16",
                            "prefix length of 1 at 28, 4", "address of 3 at 32, 4", "address of 3 at 36, 16"));
    const Json plain = entries("table", "dot1qTpFdbTable")[0]["key"];
    EXPECT_EQ(plain["fields"][1]["offset"], 4);
    EXPECT_EQ(plain["octets"], 12);
}

class ContractAfterRequests : public tests::RecordingHost {};

// Staged rows outlive requests, but not here: the library is as after its load, for each request and afterwards.
TEST_F(ContractAfterRequests, IsTheSameWhateverWasStagedBefore) {
    const auto first = contract_of("dot1qVlanStaticTable");
    services::services().backend = this;
    set("dot1qVlanStaticName", {10}, switchmib::OctetString, tests::text("office"));
    set("dot1qVlanStaticRowStatus", {10}, switchmib::Integer, tests::integer(switchmib::active));
    EXPECT_EQ(contract_of("dot1qVlanStaticTable"), first);
    services::services().backend = this;
    forget();
    set("dot1qVlanStaticRowStatus", {20}, switchmib::Integer, tests::integer(switchmib::createAndGo));
    EXPECT_THAT(lines(), ElementsAre("5 vlan 20"));
}

TEST(Contract, IsPrintedForPeople) {
    const auto entries = contract_of("dot1qVlanStaticTable");
    const std::string text = tool::contract_text(entries, tool::ListForm::text);
    EXPECT_THAT(text,
                HasSubstr("row [10]: \"show snmp vlan-static 10\", magics 1-2,4-5, class 2, result of 512 octets, "
                          "key \"0a 00 00 00\"\n"));
    EXPECT_THAT(text, HasSubstr("mode -1 \"name <value>\" from write_dot1qVlanStaticName\n"));
    const std::string markdown = tool::contract_text(entries, tool::ListForm::markdown);
    EXPECT_THAT(markdown, HasSubstr("## qBridgeMIB 1.3.6.1.2.1.17.7 (Q-BRIDGE-MIB, 5 objects)\n"));
    EXPECT_THAT(markdown, HasSubstr("  - mode 5 `vlan 10` from write_dot1qVlanStaticRowStatus\n"));
}

}  // namespace
