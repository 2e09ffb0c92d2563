// What the library costs for each request, beside its floor: the host calls that the request needs anyway, made by
// hand.
//
//     bench_library                     nanoseconds for each case (Google Benchmark's options apply)
//     bench_library --cases             the names of the cases
//     bench_library --count CASE        runs a case inside `counted`, for an instruction counter; prints by how many
//                                       requests or rows to divide
#include "instant_host.h"

#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kCounted = 1000;

void* load(const char* path) {
    void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(dlerror());
    return handle;
}

void initialise(void* handle, const char* init) {
    auto* function = reinterpret_cast<void (*)()>(dlsym(handle, init));
    if (function == nullptr) throw std::runtime_error(std::string("no ") + init);
    function();
}

// A registered object as a host calls it: its entry with the full OID, and a request for one of its instances.
struct Target {
    VariableEntry entry;
    std::vector<oid> index;
    oid name[136];
    std::size_t name_length;
    std::size_t value_length = 0;
    WriteMethod* writer = nullptr;

    Target(std::vector<oid> full, std::vector<oid> row) : index(std::move(row)) {
        for (const auto& module : instant::registered()) {
            for (std::size_t i = 0; i < module.count; ++i) {
                std::vector<oid> candidate = module.module_oid;
                const VariableEntry& found = module.entries[i];
                candidate.insert(candidate.end(), found.name, found.name + found.namelen);
                if (candidate != full) continue;
                entry = found;
                entry.namelen = static_cast<std::uint8_t>(full.size());
                std::memcpy(entry.name, full.data(), full.size() * sizeof(oid));
                ask();
                read(1);
                return;
            }
        }
        throw std::runtime_error("not registered");
    }
    void ask() {
        std::memcpy(name, entry.name, entry.namelen * sizeof(oid));
        std::memcpy(name + entry.namelen, index.data(), index.size() * sizeof(oid));
        name_length = entry.namelen + index.size();
    }
    unsigned char* read(int exact) { return entry.findVar(&entry, name, &name_length, exact, &value_length, &writer); }
};

// The floor of a table: size, compare, convert, one command, the show request, and back.
int to_field(int kind, const oid* first, int count, void* field) {
    return reinterpret_cast<uib_to_field*>(uib_oid_convert[3 * kind])(first, count, field);
}
int to_oid(int kind, oid* out, const void* field, int count) {
    return reinterpret_cast<uib_to_oid*>(uib_oid_convert[3 * kind + 1])(out, field, count);
}

template <class... Arguments>
__attribute__((noinline)) void floor_read(Target& target, int exact, int kind, void* key, int key_size,
                                          const char* format, Arguments... arguments) {
    char command[768];
    const oid* index = target.name + target.entry.namelen;
    const int size = uib_snmp_get_oid_size(index, kind);
    if (!exact) snmp_oid_compare(target.name, target.name_length, target.entry.name, target.entry.namelen);
    to_field(kind, index, size, key);
    std::snprintf(command, sizeof command, format, arguments()...);
    uib_sh_show_request(2, command, ret_value, sizeof ret_value, &target.value_length, key, key_size, 1, exact, 0, "",
                        1);
    if (exact) return;
    std::memcpy(target.name, target.entry.name, target.entry.namelen * sizeof(oid));
    oid* out = target.name + target.entry.namelen;
    const int count = uib_snmp_set_oid_size(out, kind, key);
    to_oid(kind, out, key, count);
    target.name_length = target.entry.namelen + static_cast<std::size_t>(count);
}

struct Case {
    std::string name;
    void (*run)();
    int rows = 1;  // that a run walks over
};

constexpr oid kArc = SWITCHMIB_VENDOR_ENTERPRISE;

Target& scalar() {
    static Target target({1, 3, 6, 1, 2, 1, 2, 1}, {0});
    return target;
}
Target& integer_table() {
    static Target target({1, 3, 6, 1, 4, 1, kArc, 10, 1, 100, 2, 1, 0, 3, 1, 2}, {5121});
    return target;
}
Target& row_status() {
    static Target target({1, 3, 6, 1, 4, 1, kArc, 10, 1, 100, 3, 4, 1, 1, 1, 4}, {10});
    return target;
}
Target& text_table() {
    static Target target({1, 3, 6, 1, 4, 1, kArc, 99, 1, 2, 3, 1, 1},
                         {1, 9, '1', '9', '2', '.', '0', '.', '2', '.', '1', 24});
    return target;
}

std::uint32_t integer_key;
InetText text_key;

void library_read(Target& target, int exact) {
    target.ask();
    benchmark::DoNotOptimize(target.read(exact));
}
void floor_integer(int exact) {
    Target& target = integer_table();
    target.ask();
    floor_read(target, exact, 2, &integer_key, sizeof integer_key, "show swport swport_table %d",
               [] { return integer_key; });
}
void floor_text(int exact) {
    Target& target = text_table();
    target.ask();
    floor_read(
        target, exact, 7, &text_key, sizeof text_key, "text %u %.64s %u", [] { return text_key.type; },
        [] { return text_key.text; }, [] { return text_key.prefix_length; });
}

// Walks over tables of any size: per row they cost the same. `rows` is what the backend has.
std::uint32_t rows;

void walk(const std::vector<oid>& column, std::size_t index_length, instant::Advance* advance, std::uint32_t count) {
    static std::vector<std::pair<std::vector<oid>, Target>> targets;
    const auto known = std::ranges::find(targets, column, [](const auto& entry) { return entry.first; });
    Target& target = known != targets.end() ? known->second : targets.emplace_back(column, Target(column, {})).second;
    instant::Advance* const before = std::exchange(instant::advance, advance);
    rows = count;
    target.ask();
    std::uint32_t answered = 0;
    while (target.read(0) != nullptr) ++answered;
    if (answered != count || target.name_length != target.entry.namelen + index_length) std::abort();
    instant::advance = before;
}

template <std::uint32_t count>
void walk_vlans() {
    walk(
        {1, 3, 6, 1, 2, 1, 17, 7, 1, 4, 3, 1, 1}, 1, [](unsigned char* key) { return instant::count_up(key, rows); },
        count);
}

// The record that stands in for a route's key comes clear each time: the row goes by a count of its own.
template <std::uint32_t count>
void walk_routes() {
    static std::uint32_t row;
    row = 0;
    const auto advance = [](unsigned char* record) {
        if (row == rows) return false;
        ++row;
        record[0] = record[4] = 1;  // IPv4
        record[8] = 10;
        record[9] = static_cast<unsigned char>(row >> 8);
        record[10] = static_cast<unsigned char>(row);
        record[28] = 24;
        record[32] = 192;
        record[35] = 1;
        return true;
    };
    walk({1, 3, 6, 1, 2, 1, 4, 24, 7, 1, 10}, 16, advance, count);
}

// Rows by VLAN and MAC address, as a forwarding database has them.
template <std::uint32_t count>
void walk_fdb() {
    const auto advance = [](unsigned char* key) {
        key[0] = 1;
        return instant::count_up(key + 4, rows);
    };
    walk({1, 3, 6, 1, 4, 1, kArc, 99, 1, 2, 2, 1, 1}, 7, advance, count);
}

// A port-list SET in ACTION: 90 ports change, or none.
void set_ports(unsigned char current) {
    static Target target({1, 3, 6, 1, 2, 1, 17, 7, 1, 4, 3, 1, 2}, {10});
    unsigned char wanted[sizeof instant::port_list];
    std::memset(wanted, 0xff, sizeof wanted);
    std::memset(instant::port_list, current, sizeof instant::port_list);
    target.ask();
    if (target.writer(2, wanted, 4, sizeof wanted, nullptr, target.name, target.name_length) != 0) std::abort();
}

const Case kCases[] = {
    {"get/scalar/library", [] { library_read(scalar(), 1); }},
    {"get/scalar/floor",
     [] {
         Target& target = scalar();
         target.ask();
         header_generic(&target.entry, target.name, &target.name_length, 1, &target.value_length, &target.writer);
         uib_sh_show_request(2, "show interface_uib interfaces_g", ret_value, sizeof ret_value, &target.value_length,
                             nullptr, 0, 1, 1, 0, "interfacesGlobals", 1);
     }},
    {"get/integer/library", [] { library_read(integer_table(), 1); }},
    {"get/integer/floor", [] { floor_integer(1); }},
    {"getnext/integer/library", [] { library_read(integer_table(), 0); }},
    {"getnext/integer/floor", [] { floor_integer(0); }},
    {"get/text/library", [] { library_read(text_table(), 1); }},
    {"get/text/floor", [] { floor_text(1); }},
    {"getnext/text/library", [] { library_read(text_table(), 0); }},
    {"getnext/text/floor", [] { floor_text(0); }},
    {"set/integer/library",
     [] {
         Target& target = row_status();
         std::int32_t create = 4;
         target.ask();
         target.writer(2, reinterpret_cast<unsigned char*>(&create), 2, 4, nullptr, target.name, target.name_length);
     }},
    {"set/integer/floor",
     [] {
         Target& target = row_status();
         target.ask();
         const oid* index = target.name + target.entry.namelen;
         char line[768];
         to_field(2, index, uib_snmp_get_oid_size(index, 2), &integer_key);
         std::snprintf(line, sizeof line, "interface vlan%d", integer_key);
         uib_sh_config_request(5, line, "write_nVlanInterfaceRowStatus", 1);
     }},
    {"set/90 ports", [] { set_ports(0x00); }},
    {"set/no port", [] { set_ports(0xff); }},
    {"walk/vlans/100", walk_vlans<100>, 100},
    {"walk/vlans/4094", walk_vlans<4094>, 4094},
    {"walk/routes/100", walk_routes<100>, 100},
    {"walk/routes/10000", walk_routes<10000>, 10000},
    {"walk/fdb/100", walk_fdb<100>, 100},
    {"walk/fdb/10000", walk_fdb<10000>, 10000},
};

const char* const kInits[] = {"interfaces_snmp_init",    "ifMIB_snmp_init",
                              "SwitchPortMIB_snmp_init", "pellamVlanInterfaceMIB_snmp_init",
                              "qBridgeMIB_snmp_init",    "ipForward_snmp_init"};

void load_for_good() {
    static const bool loaded = [] {
        instant::registered().clear();
        void* library = load(SWITCHMIB_LIBRARY);
        for (const char* init : kInits) initialise(library, init);
        initialise(load(PROBE_LIBRARY), "probe_snmp_init");  // for its tables with a text and a MAC index
        return true;
    }();
    static_cast<void>(loaded);
}

void load_and_register(benchmark::State& state) {
    for (auto _ : state) {
        instant::registered().clear();
        void* handle = load(SWITCHMIB_LIBRARY);
        for (const char* init : kInits) initialise(handle, init);
        state.PauseTiming();
        dlclose(handle);
        state.ResumeTiming();
    }
}

}  // namespace

extern "C" __attribute__((noinline)) void counted(void (*run)(), int rounds) {
    for (int i = 0; i < rounds; ++i) run();
}

int main(int argc, char** argv) try {
    const std::string option = argc > 1 ? argv[1] : "";
    if (option == "--cases") {
        for (const Case& one : kCases) std::puts(one.name.c_str());
        return 0;
    }
    if (option == "--count") {
        load_for_good();
        for (const Case& one : kCases) {
            if (argc < 3 || one.name != argv[2]) continue;
            one.run();  // the first call binds symbols and allocates
            const int rounds = one.rows > 1 ? 1 : kCounted;
            counted(one.run, rounds);
            std::printf("%d\n", rounds * one.rows);
            return 0;
        }
        std::fprintf(stderr, "bench_library: no case \"%s\"; --cases lists them\n", argc < 3 ? "" : argv[2]);
        return 2;
    }
    // First, while nothing else has the library open, so that each round loads it anew.
    benchmark::RegisterBenchmark("load_and_register", load_and_register);
    for (const Case& one : kCases)
        benchmark::RegisterBenchmark(one.name.c_str(), [&one](benchmark::State& state) {
            load_for_good();
            for (auto _ : state) one.run();
            state.SetItemsProcessed(state.iterations() * one.rows);
        });
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
} catch (const std::exception& error) {
    std::fprintf(stderr, "bench_library: %s\n", error.what());
    return 1;
}
