// What holds for every object of the library, on the simulated switch: GET, GETNEXT and GETBULK say the same, no read
// asks the backend more often than it must, and what is registered writable can be set or says why not.
#include "agent/responder.h"
#include "framework/snmp.h"
#include "support/fake_proc.h"
#include "support/simulated_switch.h"
#include "tool/explain.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>

namespace sw {
namespace {

using Oid = services::Oid;
using Asked = std::map<std::pair<std::string, int>, std::size_t>;  // how often, by group and magic number

class Whole : public OnSwitch, public services::Backend {
protected:
    Whole() {
        now_ = std::chrono::hours(100);
        machine_.files = {{"/proc/net/snmp",
                           "Ip: -\nIp: 1 64 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19\n"
                           "Icmp: -\nIcmp: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26\n"},
                          {"/proc/net/snmp6", "Ip6InReceives 1\nIp6OutRequests 2\nIcmp6InMsgs 3\nIcmp6InEchos 4\n"},
                          {"/proc/sys/net/ipv6/conf/all/forwarding", "1\n"},
                          {"/proc/sys/net/ipv6/conf/default/hop_limit", "64\n"}};
        services::services().backend = this;
    }

    bool show(services::ShowRequest& request) override {
        ++asked_[{request.name, request.magic}];
        return switch_.show(request);
    }
    bool configure(const services::ConfigRequest& request) override { return switch_.configure(request); }
    std::optional<std::string> interface_name(std::uint32_t ifindex) override {
        return switch_.interface_name(ifindex);
    }
    using OnSwitch::configure;

    std::vector<agent::Varbind> walk() {
        std::vector<agent::Varbind> found;
        for (Oid at{0, 0};; at = found.back().name) {
            const agent::Varbind next = engine_.next(at);
            if (next.value.is_exception()) return found;
            found.push_back(next);
        }
    }
    std::vector<agent::Varbind> walk_in_bulk(std::int32_t repetitions) {
        agent::Responder responder(engine_, {});
        agent::Message request{.community = "public",
                               .pdu = agent::kGetBulkRequest,
                               .error_index = repetitions,
                               .varbinds = {{{0, 0}, {}}}};
        std::vector<agent::Varbind> found;
        while (const auto response = responder.respond(agent::encode(request))) {
            for (agent::Varbind& varbind : agent::decode(*response).varbinds) {
                if (varbind.value.is_exception()) return found;
                found.push_back(std::move(varbind));
            }
            request.varbinds[0].name = found.back().name;
        }
        return found;
    }

    tests::FakeProc machine_;
    Asked asked_;
};

// The switch refuses nothing that a walk asks for.
TEST_F(Whole, IsReadAlikeByGetGetNextAndGetBulk) {
    const std::vector<agent::Varbind> all = walk();
    EXPECT_GT(all.size(), 8000u);
    EXPECT_TRUE(log_.empty()) << log_.front();
    for (const agent::Varbind& varbind : all)
        ASSERT_EQ(engine_.get(varbind.name), varbind) << registry_.format(varbind.name);
    for (const std::int32_t repetitions : {1, 10, 100}) EXPECT_EQ(walk_in_bulk(repetitions), all) << repetitions;
}

TEST_F(Whole, AsksAtMostOnceForARequest) {
    for (const services::Object& object : registry_.objects()) {
        SCOPED_TRACE(object.name);
        for (const Index& index : std::vector<Index>{{}, {0}, {1}, {5121}, {1, 1}, next(object.name, {})}) {
            const Oid name = join({object.oid(), index});
            asked_.clear();
            engine_.get(name);
            EXPECT_LE(asked_.size(), object.group->answers ? 1u : 0u);
            for (const auto& [what, times] : asked_) EXPECT_EQ(times, 1u);
            asked_.clear();
            engine_.next(name);  // perhaps in a later object
            for (const auto& [what, times] : asked_) EXPECT_EQ(times, 1u) << what.first;
            EXPECT_TRUE(object.group->answers || !asked_.contains({object.group->name, object.entry.magic}));
        }
    }
    log_.clear();  // the switch refuses some of these indexes
}

// A walk of a column with n rows costs n requests and the one that finds its end, a scalar one; what the library
// answers by itself, or never, costs none.
TEST_F(Whole, AsksOnceForEachInstanceOfAWalk) {
    std::map<std::string, std::size_t> rows;
    for (const agent::Varbind& varbind : walk()) ++rows[registry_.find(varbind.name)->name];
    std::set<std::string> by_itself;
    for (const services::Object& object : registry_.objects()) {
        const auto asked = asked_.find({object.group->name, object.entry.magic});
        if (asked != asked_.end()) {
            EXPECT_EQ(asked->second, object.group->is_table ? rows[object.name] + 1 : 1) << object.name;
        } else if (rows.contains(object.name)) {
            by_itself.insert(object.group->name);
        }
    }
    // Statistics of the kernel, and constants.
    EXPECT_THAT(by_itself,
                testing::ElementsAre("corvinPrivateVlanMIBGlobals", "icmpMsgStatsTable", "icmpStatsTable", "ipGlobals",
                                     "ipSystemStatsTable", "pBridgeMIBGlobals", "qBridgeMIBGlobals"));
}

// --- Access ----------------------------------------------------------------------------------------------------------

// What is registered writable and not listed here takes the value that it shows, and sends it to the switch. Each of
// these SETs, as `mibhost explain set` takes them, is accepted with all its lines; by themselves some of their varbinds
// only wait for a row status, or change nothing.
using Words = std::vector<std::string>;
const Words kSets[] = {
    {"dot1qVlanStaticName.100=lab", "dot1qVlanStaticEgressPorts.100=hex:000800800000000000000000",
     "dot1qVlanStaticUntaggedPorts.100=hex:000800000000000000000000", "dot1qVlanStaticRowStatus.100=4"},
    {"dot1qPvid.5133=20"},
    {"dot1qStaticMulticastStaticEgressPorts.10.1.0.94.0.0.99.0=hex:0c0000000000000000000000"},
    {"dot1qStaticMulticastStatus.1.1.27.25.0.0.0.0=2"},
    {"dot1vProtocolGroupId.1.2.128.0=9", "dot1vProtocolGroupRowStatus.1.2.128.0=4"},
    {"dot1vProtocolPortRowStatus.5133.1=6"},
    {"ieee8021QBridgeVlanStaticName.1.100=lab",
     "ieee8021QBridgeVlanStaticEgressPorts.1.100=hex:000800800000000000000000",
     "ieee8021QBridgeVlanStaticUntaggedPorts.1.100=hex:000800000000000000000000",
     "ieee8021QBridgeVlanStaticRowStatus.1.100=4"},
    {"ieee8021QBridgePvid.1.5133=20"},
    {"ieee8021QBridgeFdbAgingTime.1.10=60"},
    {"ieee8021QBridgeStaticMulticastStaticEgressPorts.1.10.1.0.94.0.0.99.0=hex:0c0000000000000000000000",
     "ieee8021QBridgeStaticMulticastRowStatus.1.10.1.0.94.0.0.99.0=4"},
    {"ieee8021QBridgeProtocolGroupId.1.1.2.128.0=9", "ieee8021QBridgeProtocolGroupRowStatus.1.1.2.128.0=4"},
    {"ieee8021QBridgeProtocolPortRowStatus.1.5133.1=6"},
    {"nVlanMacVlanRowStatus.2.80.0.0.0.1=6"},
    {"nVlanSubnetVlanRowStatus.1.4.10.0.10.0.24=6"},
    {"nVlanProtocolVlanGroupRowStatus.3.2.224.224=6"},
    {"nVlanProtocolVlanRowStatus.5133.1=6"},
    {"nVlanPortIfTrunkNativeVlanTag.5145=1"},
    {"nVlanInterfaceRowStatus.20=4"},
    {"nPrivateVlanVlanType.20=2", "nPrivateVlanVlanRowStatus.20=4"},
    {"nPrivateVlanVlanAssocPriVlan.30=10"},
    {"nPrivateVlanIfVlanMapRowStatus.5139.30=6"},
    {"dVoiceVlanOuiDes.2.73.0.0.0.0.255.255.255.255.0.0=phones",
     "dVoiceVlanOuiRowStatus.2.73.0.0.0.0.255.255.255.255.0.0=4"},
    {"ipAddressIfIndex.1.4.198.51.100.1=1034", "ipAddressType.1.4.198.51.100.1=1", "ipAddressStatus.1.4.198.51.100.1=1",
     "ipAddressRowStatus.1.4.198.51.100.1=4"},
    {"ipNetToPhysicalType.1025.1.4.192.0.2.123=4", "ipNetToPhysicalRowStatus.1025.1.4.192.0.2.123=6"},
    {"ipv6RouterAdvertMaxInterval.1034=600", "ipv6RouterAdvertRowStatus.1034=4"},
    {"proxyARPRowStatus.1025=4"},
    {"localproxyARPRowStatus.1025=4"},
    {"tunnelInetConfigStatus.1.4.192.0.2.1.1.4.203.0.113.10.12.7=4"},
    {"swPortMedium.5141=1"},
    {"swPortBreakout.5145=1"},
    {"inetCidrRouteIfIndex.1.4.198.51.100.0.24.2.0.0.1.4.10.0.0.254=1034",
     "inetCidrRouteStatus.1.4.198.51.100.0.24.2.0.0.1.4.10.0.0.254=4"},
    {"mgmdIgmpSnpGroupStatus.5133.1034.1.4.239.1.1.9=4"},
    {"mgmdMldSnpGroupStatus.5133.1034.2.16.255.30.0.0.0.0.0.0.0.0.0.0.0.0.0.9=4"},
    {"mgmdIgmpSnpGroupSrcStatus.5133.1034.1.4.239.1.1.9.1.4.10.0.10.9=4"},
    {"mgmdMldSnpGroupSrcStatus.5133.1034.2.16.255.30.0.0.0.0.0.0.0.0.0.0.0.0.0.9."
     "2.16.254.128.0.0.0.0.0.0.0.0.0.0.0.0.0.9=4"},
    {"mgmdIgmpSnpAccessGroup.5133.1034.1=cameras", "mgmdIgmpSnpAccGrpStatus.5133.1034.1=4"},
    {"mgmdMldSnpAccessGroup.5133.1034.2=cameras", "mgmdMldSnpAccGrpStatus.5133.1034.2=4"},
    {"mgmdIgmpAccessGroup.1025=cameras", "mgmdIgmpAccGrpStatus.1025=4"},
    {"mgmdMldAccessGroup.1025=cameras", "mgmdMldAccGrpStatus.1025=4"},
    {"mvrPortRowStatus.20=6"},
    {"mgmdIgmpSnpMinimumVersion.1034.1", "u", "0"},  // as another type than it is registered with
    {"mgmdMldSnpMinimumVersion.1034.2", "u", "0"},
};

// Objects, or all other writable ones of a table, whose SETs send nothing, with the error of a right value. Where no
// row shows one, and some value of the type will not do, it is given.
struct Refused {
    int status;
    const char* reason;
    const char* objects;
};
const Refused kRefused[] = {
    {agent::kNotWritable, "another table has its rows", "ipNetToMediaTable ipForwardTable ipCidrRouteTable"},
    {agent::kNotWritable, "shown, and not set",
     "ipForwarding ipDefaultTTL ipv6IpForwarding ipv6IpDefaultHopLimit mvrSourceVlanGroupCount "
     "ieee8021AsParentDSGrandmasterPriority1 ieee8021AsParentDSGrandmasterPriority2 "
     "ieee8021AsPortDSInitialLogAnnounceInterval ieee8021AsPortDSInitialLogSyncInterval "
     "ieee8021AsPortDSInitialLogPdelayReqInterval"},
    {agent::kNotWritable, "neither shown nor set",
     "ipv4InterfaceTable ipv6InterfaceForwarding ipAddressSpinLock ipAddressStorageType ipv6RouterAdvertSpinLock "
     "ipv6RouterAdvertLinkMTU dot1dPortGarpTable ipMcastSsmRangeTable mgmdIgmpSnpGlobal mgmdMldSnpGlobal "
     "ieee8021FqtssAdminIdleSlopeMs ieee8021FqtssAdminIdleSlopeLs ieee8021FqtssBapRowStatus "
     "ieee8021FqtssPriorityRegenOverride ieee8021SrpBridgeBaseMsrpMaxFanInPorts ieee8021AsPortDSNupMs "
     "ieee8021AsPortDSNupLs ieee8021AsPortDSNdownMs ieee8021AsPortDSNdownLs "
     "ieee8021AsPortDSAcceptableMasterTableEnabled ieee8021AsAcceptableMasterTableDSActualTableSize"},
    {agent::kGenErr, "the table has no rows",
     "dot1dStpPortTable dot1dStaticTable dot1dTrafficClassTable dot1dPortGmrpTable dot1qForwardAllTable "
     "dot1qForwardUnregisteredTable dot1qStaticUnicastTable dot1qLearningConstraintsTable ifStackTable ifTestTable "
     "ifRcvAddressTable ipMcastBoundaryTable ipMcastScopeNameTable mgmdHostInterfaceTable tunnelConfigTable "
     "ieee8021BridgeBaseTable ieee8021BridgeBasePortTable ieee8021BridgePortPriorityTable "
     "ieee8021BridgeUserPriorityRegenTable ieee8021BridgeTrafficClassTable ieee8021BridgePortDecodingTable "
     "ieee8021BridgePortEncodingTable ieee8021BridgeServiceAccessPriorityTable ieee8021BridgePortMmrpTable "
     "ieee8021BridgeILanIfTable ieee8021BridgeDot1dPortTable ieee8021FqtssTxSelectionAlgorithmTable "
     "ieee8021AsAcceptableMasterTableDSMasterTable"},
    {agent::kGenErr, "the switch has no command for it",
     "dot1dStpPriority dot1dStpBridgeMaxAge dot1dStpBridgeHelloTime dot1dStpBridgeForwardDelay "
     "dot1dPortNumTrafficClasses dot1dRegenUserPriority dot1dTrafficClassesEnabled dot1dGmrpStatus "
     "dot1qPortGvrpStatus dot1qPortRestrictedVlanRegistration dot1qConstraintSetDefault dot1qConstraintTypeDefault "
     "ifPromiscuousMode tunnelIfHopLimit tunnelIfTOS tunnelIfFlowLabel tunnelIfEncapsLimit "
     "tunnelInetConfigStorageType mgmdRouterInterfaceStatus mgmdRouterInterfaceProxyIfIndex "
     "ipMcastDeviceConfigStorageType nVlanScalar6 nVlanScalar7 ieee8021AsPortDSIfTable "
     "dot1qStaticMulticastForbiddenEgressPorts ieee8021QBridgeStaticMulticastForbiddenEgressPorts "
     "ieee8021QBridgeStaticMulticastStorageType"},
    {agent::kNoError, "checked, and not used",
     "inetCidrRouteType inetCidrRouteNextHopAS inetCidrRouteMetric2 inetCidrRouteMetric3 inetCidrRouteMetric4 "
     "inetCidrRouteMetric5 dot1qGvrpStatus dot1qVlanForbiddenEgressPorts "
     "ieee8021QBridgeVlanForbiddenEgressPorts.1.10=text: tunnelIfAddressType ipMcastInterfaceTtl "
     "ipMcastInterfaceRateLimit ipMcastInterfaceStorageType nPrivateVlanSyncSecVlans"},
};

tool::Explained set_of(const agent::Varbind& varbind) { return {tool::Explained::Kind::set, {varbind}, {}}; }

TEST_F(Whole, WhatIsWritableIsSetOrSaysWhyNot) {
    std::set<std::string> covered;
    const auto run = [&](const tool::Explained& request) {
        SimulatedSwitch fresh({[this] { return now_; }, [this](const std::string& line) { log_.push_back(line); }, {}});
        log_.clear();
        const tool::Explanation explanation = tool::explain(request, engine_, registry_, fresh);
        services::services().backend = this;
        return explanation;
    };
    const auto accepted = [&](const tool::Explained& request) {
        const tool::Explanation explanation = run(request);
        EXPECT_EQ(explanation.result.status, agent::kNoError) << tool::outcome(explanation, registry_);
        EXPECT_FALSE(tool::as_lines(explanation).empty()) << "nothing is sent";
        EXPECT_TRUE(log_.empty()) << log_.front();
        for (const agent::Varbind& varbind : request.varbinds) covered.insert(registry_.find(varbind.name)->name);
    };
    const auto own_value = [this](const services::Object& object) -> std::optional<agent::Varbind> {
        const Index row = next(object.name, {});
        return row.empty() ? std::nullopt : std::optional(engine_.get(join({object.oid(), row})));
    };
    const auto is_left = [&](const services::Object& object) {
        return object.entry.acl == switchmib::ReadWrite && !covered.contains(object.name);
    };

    for (Words words : kSets) {
        SCOPED_TRACE(words.front());
        words.insert(words.begin(), "set");
        accepted(tool::parse_explained(registry_, words));
    }
    for (const Refused& refused : kRefused) {
        std::istringstream names(refused.objects);
        for (std::string name; names >> name;) {
            const std::string object_name = name.substr(0, name.find_first_of(".["));
            std::size_t found = 0;
            for (const services::Object& object : registry_.objects()) {
                if (!is_left(object) || (object.name != object_name && object.group->name != object_name)) continue;
                ++found;
                const agent::Varbind some{join({object.oid(), {object.group->is_table ? 1u : 0u}}),
                                          {object.entry.type, {1, 0, 0, 0}}};
                const tool::Explanation explanation =
                    run(name != object_name ? tool::parse_explained(registry_, {"set", name})
                                            : set_of(own_value(object).value_or(some)));
                int status = explanation.result.status;
                if (status == agent::kNoCreation) status = agent::kNotWritable;
                EXPECT_EQ(status, refused.status) << object.name << ": " << refused.reason;
                EXPECT_THAT(tool::as_lines(explanation), testing::IsEmpty()) << object.name;
                covered.insert(object.name);
            }
            EXPECT_GT(found, 0u) << name;
        }
    }
    for (const services::Object& object : registry_.objects()) {
        if (!is_left(object)) continue;
        SCOPED_TRACE(object.name);
        if (const auto value = own_value(object))
            accepted(set_of(*value));
        else
            ADD_FAILURE() << "has no row whose value could be set";
    }
}

}  // namespace
}  // namespace sw
