// What the library registers and exports, as a whole: each module and the exports as tests/golden has them.
#include "support/golden.h"
#include "support/recording_host.h"
#include "tool/format.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <set>
#include <sstream>

namespace tests {
namespace {

const std::vector<services::Registration>& registrations() { return loaded().registrations; }

std::string descr_suffixes[] = {"_oid",   "_oid_length", "_variables",   "_variables_count",
                                "_names", "_groups",     "_groups_count"};

// The library's own exports; "_": the toolchain's.
std::set<std::string> exports() {
    std::set<std::string> names;
    for (const std::string& name : loaded().library.exports())
        if (!name.starts_with("_")) names.insert(name);
    return names;
}

// Tables' OID arrays by the entry that they begin with. What follows is the column slot, which writes patch.
std::map<Oid, std::string> table_arrays() {
    std::set<Oid> entries;  // of everything registered: the OIDs without their last sub-identifier
    for (const services::Object& object : loaded().registry.objects()) {
        Oid oid = object.oid();
        oid.pop_back();
        entries.insert(oid);
    }
    std::map<Oid, std::string> arrays;
    for (const std::string& name : exports()) {
        if (!name.ends_with("TABLE_oid") || std::ranges::any_of(name.substr(0, name.size() - 4), ::islower)) continue;
        const oid* ids = loaded().symbol<oid>(name);
        const Oid* entry = nullptr;  // the longest
        for (const Oid& each : entries)
            // Number by number: an entry may be longer than the array.
            if (std::equal(each.begin(), each.end(), ids, std::equal_to<>()) &&
                (entry == nullptr || each.size() > entry->size()))
                entry = &each;
        if (entry == nullptr)
            ADD_FAILURE() << name << " is not a registered table's";
        else
            EXPECT_TRUE(arrays.emplace(*entry, name).second) << name << ": the table has another array already";
    }
    return arrays;
}

// Asks for what the golden files hold of an object: its first show command, and whether a GET hands out a write method.
class Asker : public RecordingHost {
public:
    void TestBody() override {}

    std::string first_command(const std::string& object) {
        forget();
        next(object);
        return shown.empty() ? "" : shown.front().command();
    }
    bool hands_out_writer(const std::string& object) {
        return std::ranges::any_of(std::vector<Oid>{{}, {0}, {1}, {5121}, {1, 1}}, [&](const Oid& index) {
            WriteMethod* writer = get(object, index).writer;
            return writer != kUntouched && writer != nullptr;
        });
    }
};

std::string described(const services::Registration& registration, const std::map<Oid, std::string>& arrays) {
    std::ostringstream text;
    text << registration.descr << " at " << tool::portable(registration.module_oid) << ", " << registration.count
         << " objects\n";
    const auto* names = loaded().symbol<const char* const>(registration.descr + "_names");
    const auto* groups = loaded().symbol<const GroupInfo>(registration.descr + "_groups");
    const auto count = *loaded().symbol<const std::size_t>(registration.descr + "_groups_count");
    Asker asker;
    for (const GroupInfo* group = groups; group != groups + count; ++group) {
        const VariableEntry* first = registration.entries + group->first;
        Oid entry = registration.module_oid;
        entry.insert(entry.end(), first->name, first->name + first->namelen - 1);
        const auto array = arrays.find(entry);
        text << "\n" << group->name << ": " << (array != arrays.end() ? array->second : "scalars");
        if (!group->answers) text << ", never answers";
        if (group->fields > 0) text << ", key of " << group->key_size << " octets, index";
        for (int i = 0; i < group->fields; ++i) text << ' ' << int{group->kind[i]} << '/' << int{group->octets[i]};
        text << "\n";
        for (std::size_t i = group->first; i < std::size_t{group->first} + group->objects; ++i) {
            const VariableEntry& object = registration.entries[i];
            const std::string command = asker.first_command(names[i]);
            text << services::to_string(Oid(object.name, object.name + object.namelen)) << "  " << names[i] << "  "
                 << tool::type_name(object.type) << "  " << (object.acl == ReadOnly ? "read-only" : "read-write")
                 << (asker.hands_out_writer(names[i]) ? "  writer" : "")
                 << (command.empty() ? "" : "  \"" + command + "\"") << "\n";
        }
    }
    return text.str();
}

}  // namespace

TEST(Registration, ModulesAreAsTheirGoldenFilesSay) {
    const auto arrays = table_arrays();
    std::set<std::filesystem::path> expected{kGolden / "exports.txt"};
    for (const services::Registration& registration : registrations()) {
        const auto path = kGolden / (registration.descr + ".txt");
        expected.insert(path);
        expect_golden(path, described(registration, arrays));
    }
    for (const auto& file : std::filesystem::directory_iterator(kGolden))
        EXPECT_TRUE(file.is_directory() || expected.contains(file.path()))
            << file.path() << " is of no registered module";
    // An init function registers its modules in this order.
    const auto descr = [](const char* name) {
        return std::ranges::find(registrations(), name, &services::Registration::descr);
    };
    EXPECT_EQ(descr("icmp") - descr("ip"), 1);
}

// docs/modules.md has a row for each module: its name, what it is for, its objects, and those that hand out a write
// method.
TEST(Registration, PageOfModulesHasTheirNumbers) {
    std::map<std::string, std::string> rows, page;
    std::size_t objects = 0;
    Asker asker;
    for (const services::Registration& registration : registrations()) {
        const auto* names = loaded().symbol<const char* const>(registration.descr + "_names");
        const auto writers = std::count_if(names, names + registration.count,
                                           [&](const char* name) { return asker.hands_out_writer(name); });
        EXPECT_EQ(*loaded().symbol<const std::size_t>(registration.descr + "_variables_count"), registration.count);
        rows[registration.descr] = std::to_string(registration.count) + " | " + std::to_string(writers) + " |";
        objects += registration.count;
    }
    EXPECT_EQ(rows.size(), 30u);
    EXPECT_EQ(objects, 1188u);
    std::ifstream file(kGolden / "../../docs/modules.md");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("| `"))
            page[line.substr(3, line.find('`', 3) - 3)] =
                line.substr(line.rfind("| ", line.rfind("| ", line.size() - 2) - 1) + 2);
    EXPECT_EQ(rows, page);
}

// Records that outlive a request, result buffers, readers, and init functions with names of their own; the rest follows
// from what is registered.
TEST(Registration, OtherExportsAreAsTheirGoldenFileSays) {
    std::set<std::string> others = exports();
    for (const services::Registration& registration : registrations()) {
        for (const std::string& suffix : descr_suffixes) EXPECT_EQ(others.erase(registration.descr + suffix), 1u);
        others.erase(registration.descr + "_snmp_init");
    }
    for (const auto& [entry, name] : table_arrays()) others.erase(name);
    std::set<std::string> lines;  // a set, because merging joins the lines of several authors
    for (const std::string& name : others) {
        Dl_info info;
        const ElfW(Sym)* symbol = nullptr;
        void* address = loaded().library.symbol(name);
        ASSERT_NE(dladdr1(address, &info, reinterpret_cast<void**>(const_cast<ElfW(Sym)**>(&symbol)), RTLD_DL_SYMENT),
                  0);
        const bool function = ELF64_ST_TYPE(symbol->st_info) == STT_FUNC;
        lines.insert(name + (function ? " function" : " " + std::to_string(symbol->st_size)));
    }
    const auto path = kGolden / "exports.txt";
    if (writes_golden()) {
        std::ofstream file(path);
        for (const std::string& line : lines) file << line << "\n";
        return;
    }
    std::set<std::string> golden;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) golden.insert(line);
    EXPECT_EQ(lines, golden) << "tools/golden writes it again";
}

TEST(Registration, TablesAndModulesAreKnownByName) {
    const services::Registry& registry = loaded().registry;
    EXPECT_EQ(registry.parse("ifXTable.1.1.7"), (Oid{1, 3, 6, 1, 2, 1, 31, 1, 1, 1, 1, 7}));
    EXPECT_EQ(registry.parse("interfaces"), (Oid{1, 3, 6, 1, 2, 1, 2}));
    EXPECT_EQ(registry.parse("ifYTable"), std::nullopt);
}

TEST(Registration, RefusalIsLoggedInTwoDebugLinesOnlyWhenDebuggingIsOn) {
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
