// What the library registers and exports, as a whole.
#include "support/recording_host.h"

#include <algorithm>
#include <set>

namespace tests {
namespace {

// Every registration of the whole library: where, how many entries, and how many of them there are so far.
struct Module {
    const char* descr;
    Oid oid;
    std::size_t entries;
    std::size_t so_far;
    std::string init;
};

Oid below(Oid root, const Oid& rest) {
    root.insert(root.end(), rest.begin(), rest.end());
    return root;
}
Oid vendor(const Oid& rest) { return below({1, 3, 6, 1, 4, 1, SWITCHMIB_VENDOR_ENTERPRISE, 10, 1, 100}, rest); }
Oid second(const Oid& rest) { return below({1, 3, 6, 1, 4, 1, SWITCHMIB_SECOND_ENTERPRISE, 10, 120, 100}, rest); }
Oid mib2(const Oid& rest) { return below({1, 3, 6, 1, 2, 1}, rest); }
Oid ieee(const Oid& rest) { return below({1, 3, 111, 2, 802, 1, 1}, rest); }

const Module kCatalogue[] = {
    // The switch ports' init function has a capital of its own.
    {"switchPortMIB", vendor({2, 1}), 12, 12, "SwitchPortMIB_snmp_init"},
    {"pellamPowerSavingMIB", vendor({1, 5}), 4, 0, ""},
    {"corvinVlanMIB", vendor({2, 9}), 31, 0, ""},
    {"ifMIB", mib2({31}), 33, 33, ""},
    {"interfaces", mib2({2}), 23, 23, ""},
    {"dot3", mib2({10, 7}), 35, 0, ""},
    {"pBridgeMIB", mib2({17, 6}), 18, 0, ""},
    {"qBridgeMIB", mib2({17, 7}), 71, 28, ""},
    {"ieee8021QBridgeMib", ieee({4}), 54, 0, ""},
    {"pellamL2FDB", vendor({2, 15}), 2, 0, ""},
    {"corvinPrivateVlanMIB", vendor({2, 8}), 9, 0, ""},
    {"ipForward", mib2({4, 24}), 52, 52, ""},
    {"ip", mib2({4}), 197, 128, ""},
    {"icmp", mib2({5}), 35, 35, "ip_snmp_init"},
    {"ipMcastMIB", mib2({168}), 82, 0, ""},
    {"dot1dBridge", mib2({17}), 47, 0, ""},
    {"swDdmMIB", vendor({8, 1}), 14, 0, ""},
    {"harrowProxyArpMIB", second({2, 14}), 6, 0, ""},
    {"pellamVlanInterfaceMIB", vendor({3, 4}), 4, 4, ""},
    {"tunnelMIB", mib2({10, 131}), 25, 0, ""},
    {"pellamVoiceVlanMIB", vendor({2, 11}), 23, 0, ""},
    {"pellamsysmonitorMIB", vendor({1, 4}), 11, 0, ""},
    {"mgmdStdMIB", mib2({185}), 58, 0, ""},
    {"harrowMgmdMIB", vendor({3, 1}), 14, 0, ""},
    {"harrowMgmdSnoopingMIB", vendor({2, 7}), 116, 116, ""},
    {"pellamMvrMIB", vendor({2, 16}), 9, 0, ""},
    {"ieee8021BridgeMib", ieee({2}), 62, 0, ""},
    {"ieee8021SrpMib", ieee({19}), 25, 0, ""},
    {"ieee8021FqtssMib", ieee({16}), 12, 0, ""},
    {"ieee8021AsTimeSyncMib", ieee({20}), 104, 0, ""},
};

std::string init_of(const Module& module) {
    return module.init.empty() ? std::string(module.descr) + "_snmp_init" : module.init;
}

// What modules export besides their registrations and tables: records that outlive a request, result buffers, readers.
const char* const kOthers[] = {
    "RETVALUE_mgmdSnpAccGrpTable",
    "RETVALUE_mgmdSnpFilterTable",
    "RETVALUE_mgmdSnpGroupSrcTable",
    "RETVALUE_mgmdSnpGroupTable",
    "RETVALUE_mgmdSnpHostTable",
    "RETVALUE_mgmdSnpMrouterTable",
    "RETVALUE_mgmdSnpStatisticsGroupTable",
    "RETVALUE_mgmdSnpStatisticsTable",
    "RETVALUE_mgmdSnpTable",
    "ip6_snmp_forwarding_get",
    "ip6_snmp_hop_limit_get",
    "ip_snmp_linux_read_icmp6_stat",
    "ip_snmp_linux_read_icmp_stat",
    "ip_snmp_linux_read_ip6_stat",
    "ip_snmp_linux_read_ip_stat",
    "ip_snmp_linux_read_tcp_stat",
    "ip_snmp_linux_read_udp_stat",
    "proc_ipv6_forwarding",
    "proc_ipv6_hoplimit",
    "vlan_static",
};

const std::vector<services::Registration>& registrations() { return loaded().registrations; }

}  // namespace

TEST(Registration, ModulesAreRegisteredUnderTheirOids) {
    std::size_t found = 0;
    for (const Module& module : kCatalogue) {
        SCOPED_TRACE(module.descr);
        const auto registered = std::ranges::find(registrations(), module.descr, &services::Registration::descr);
        EXPECT_EQ(registered != registrations().end(), module.so_far > 0);
        if (registered == registrations().end()) continue;
        ++found;
        EXPECT_EQ(registered->module_oid, module.oid);
        EXPECT_EQ(registered->count, module.so_far);
    }
    EXPECT_EQ(registrations().size(), found);
    // An init function registers its modules in the catalogue's order.
    const auto descr = [](const char* name) {
        return std::ranges::find(registrations(), name, &services::Registration::descr);
    };
    EXPECT_EQ(descr("icmp") - descr("ip"), 1);
}

// The exported names follow from what is registered: no more, no less.
TEST(Registration, ExportsAreThoseOfTheModulesAndTheirTables) {
    std::set<std::string> expected(std::begin(kOthers), std::end(kOthers));
    for (const Module& module : kCatalogue) {
        if (module.so_far == 0) continue;
        for (const char* suffix :
             {"_oid", "_oid_length", "_variables", "_variables_count", "_names", "_groups", "_groups_count"})
            expected.insert(std::string(module.descr) + suffix);
        expected.insert(init_of(module));
    }
    std::set<Oid> entries;  // of everything registered: the OIDs without their last sub-identifier
    for (const services::Object& object : loaded().registry.objects()) {
        Oid oid = object.oid();
        oid.pop_back();
        entries.insert(oid);
    }
    std::set<Oid> tables;
    for (const std::string& name : loaded().library.exports()) {
        if (name.starts_with("_") || expected.erase(name) > 0) continue;  // "_": the toolchain's own
        // What is left must be a table's OID array: upper case, a registered entry and a column slot.
        ASSERT_TRUE(name.ends_with("_oid")) << name;
        EXPECT_TRUE(std::ranges::none_of(name.substr(0, name.size() - 4), ::islower)) << name;
        const oid* ids = loaded().symbol<oid>(name);
        // The longest entry that the array begins with; what stands behind it is the column slot, which writes patch.
        auto entry = entries.end();
        for (auto it = entries.begin(); it != entries.end(); ++it)
            if (std::equal(it->begin(), it->end(), ids, std::equal_to<>()) &&
                (entry == entries.end() || it->size() > entry->size()))
                entry = it;
        ASSERT_NE(entry, entries.end()) << name;
        EXPECT_TRUE(tables.insert(*entry).second) << name << " stands for a table that has an array already";
    }
    EXPECT_THAT(expected, IsEmpty());
    // What is no column of an exported table is a scalar.
    const auto is_scalar = [&](const services::Object& object) {
        Oid entry = object.oid();
        entry.pop_back();
        return !tables.contains(entry);
    };
    std::set<std::string> scalars;
    for (const services::Object& object : loaded().registry.objects())
        if (is_scalar(object)) scalars.insert(object.name);
    EXPECT_EQ(scalars.size(), 1u + 2 + 1 + 9 + 4 + 2 + 27 + 26);
    EXPECT_THAT(scalars,
                ::testing::IsSupersetOf({"ifNumber", "ifStackLastChange", "ifTableLastChange", "swPortTableNumber",
                                         "dot1qVlanNumDeletes", "inetCidrRouteNumber", "mgmdMldSnpGlobal"}));
}

TEST(Registration, TablesAndModulesAreKnownByName) {
    const services::Registry& registry = loaded().registry;
    EXPECT_EQ(registry.parse("ifXTable.1.1.7"), (Oid{1, 3, 6, 1, 2, 1, 31, 1, 1, 1, 1, 7}));
    EXPECT_EQ(registry.parse("interfaces"), (Oid{1, 3, 6, 1, 2, 1, 2}));
    EXPECT_EQ(registry.parse("ifYTable"), std::nullopt);
}

TEST(Registration, EntriesCarryDenseMagicsTypesAndAccess) {
    for (const auto& registration : registrations()) {
        const auto* count = loaded().symbol<const std::size_t>(registration.descr + "_variables_count");
        EXPECT_EQ(*count, registration.count);
        int magic = 0;
        const VariableEntry* before = nullptr;
        for (const VariableEntry* entry = registration.entries; entry != registration.entries + registration.count;
             ++entry) {
            // Within a group magics count from 1 and OIDs rise; a new group begins at 1 again.
            if (entry->magic == 1) {
                magic = 0;
            } else {
                EXPECT_TRUE(std::lexicographical_compare(before->name, before->name + before->namelen, entry->name,
                                                         entry->name + entry->namelen));
            }
            EXPECT_EQ(entry->magic, ++magic) << registration.descr;
            EXPECT_TRUE(entry->acl == ReadOnly || entry->acl == ReadWrite);
            before = entry;
        }
    }
}

TEST(Registration, RefusalIsToldInTwoDebugLinesOnlyWhenDebuggingIsOn) {
    auto& host = services::services();
    std::vector<std::string> lines;
    host.log = [&](const services::LogLine& line) { lines.push_back(line.token + "|" + line.text); };
    host.may_register = [](const services::Registration&) { return false; };
    auto* init = reinterpret_cast<void (*)()>(loaded().library.symbol("interfaces_snmp_init"));
    init();
    EXPECT_THAT(lines, IsEmpty());
    host.context.debugging = true;
    init();
    EXPECT_THAT(lines, ElementsAre(::testing::StartsWith("trace|interfaces_snmp_init(): user/interfaces_snmp, "),
                                   ::testing::_, "register_mib|interfaces registration failed\n", ::testing::_));
    EXPECT_EQ(lines[0], lines[1]);
    EXPECT_EQ(lines[2], lines[3]);
    host.may_register = nullptr;
    host.context = {};
    host.log = nullptr;
    EXPECT_THAT(host.registrations, IsEmpty());
}

}  // namespace tests
