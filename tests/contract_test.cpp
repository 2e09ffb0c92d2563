// The contract with the backend: as tests/golden/contract has it for each module, whatever was staged, and printed.
#include "tool/contract.h"
#include "support/golden.h"
#include "support/recording_host.h"

#include <set>

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using tests::loaded;

std::vector<tool::Json> contract_of(const std::string& pattern) {
    const services::Registry& registry = loaded().registry;
    return tool::contract(registry, loaded().library, tool::select(registry, {pattern}));
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
    EXPECT_THAT(
        tool::contract_text(entries, tool::ListForm::text),
        AllOf(HasSubstr("row [10]: \"show snmp vlan-static 10\", magics 1-2,4-5, class 2, result of 512 octets, "
                        "key \"0a 00 00 00\"\n"),
              HasSubstr("mode -1 \"name <value>\" from write_dot1qVlanStaticName\n")));
    EXPECT_THAT(tool::contract_text(contract_of("dot1qPvid"), tool::ListForm::text),
                HasSubstr("qBridgeMIB 1.3.6.1.2.1.17.7 (Q-BRIDGE-MIB, 1 object)\n"));
    EXPECT_THAT(tool::contract_text(entries, tool::ListForm::markdown),
                AllOf(HasSubstr("## qBridgeMIB 1.3.6.1.2.1.17.7 (Q-BRIDGE-MIB, 5 objects)\n"),
                      HasSubstr("  - mode 5 `vlan 10` from write_dot1qVlanStaticRowStatus\n")));
}

}  // namespace
