// What the library registers and exports, as a whole.
#include "support/recording_host.h"

#include <algorithm>
#include <set>

namespace tests {
namespace {

const std::vector<services::Registration>& registrations() { return loaded().registrations; }

std::string init_of(const std::string& module) {
    // The switch ports' init function has a capital of its own; ip's registers icmp as well.
    if (module == "switchPortMIB") return "SwitchPortMIB_snmp_init";
    if (module == "icmp") return "ip_snmp_init";
    return module + "_snmp_init";
}

}  // namespace

TEST(Registration, ModulesAreRegisteredUnderTheirOids) {
    const Oid vendor{1, 3, 6, 1, 4, 1, SWITCHMIB_VENDOR_ENTERPRISE, 10, 1, 100};
    const auto below = [](Oid root, const Oid& rest) {
        root.insert(root.end(), rest.begin(), rest.end());
        return root;
    };
    const struct {
        const char* descr;
        Oid oid;
        std::size_t entries;
    } modules[] = {
        {"switchPortMIB", below(vendor, {2, 1}), 12},
        {"ifMIB", {1, 3, 6, 1, 2, 1, 31}, 33},
        {"interfaces", {1, 3, 6, 1, 2, 1, 2}, 23},
        {"pellamVlanInterfaceMIB", below(vendor, {3, 4}), 4},
    };
    EXPECT_EQ(registrations().size(), std::size(modules));
    for (const auto& [descr, oid, entries] : modules) {
        SCOPED_TRACE(descr);
        const auto found = std::ranges::find(registrations(), descr, &services::Registration::descr);
        ASSERT_NE(found, registrations().end());
        EXPECT_EQ(found->module_oid, oid);
        EXPECT_EQ(found->count, entries);
    }
}

// The exported names follow from what is registered: no more, no less.
TEST(Registration, ExportsAreThoseOfTheModulesAndTheirTables) {
    std::set<std::string> expected;
    std::set<Oid> entries;  // of everything registered: the OIDs without their last sub-identifier
    for (const auto& registration : registrations()) {
        for (const char* suffix : {"_oid", "_oid_length", "_variables", "_variables_count", "_names"})
            expected.insert(registration.descr + suffix);
        expected.insert(init_of(registration.descr));
        for (std::size_t i = 0; i < registration.count; ++i) {
            const VariableEntry& entry = registration.entries[i];
            Oid oid = registration.module_oid;
            oid.insert(oid.end(), entry.name, entry.name + entry.namelen - 1);
            entries.insert(oid);
        }
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
    EXPECT_THAT(scalars, ElementsAre("ifNumber", "ifStackLastChange", "ifTableLastChange", "swPortTableNumber"));
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
