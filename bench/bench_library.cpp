// What the library costs for each request, with two floors: the host calls that the request needs anyway, with each
// command made by snprintf ("floor") or put together by hand ("least").
//
//     bench_library                     nanoseconds for each case (Google Benchmark's options apply)
//     bench_library --count             under callgrind (see ratios.py): dumps the cost of one case after the other, and
//                                       prints by how many requests or rows to divide it
#include "target.h"

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <sys/sysinfo.h>
#include <valgrind/callgrind.h>

#include <cstdlib>
#include <string>

namespace bench {
namespace {

constexpr int kCounted = 100;

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

constexpr oid kArc = SWITCHMIB_VENDOR_ENTERPRISE;
constexpr int kAction = 2;
constexpr unsigned char kInteger = 2, kOctetString = 4;
constexpr std::uint32_t kPort1 = 5121;
constexpr std::size_t kLine = 768;  // octets of a command's buffer

// How a floor makes a command: its format and values, or its parts.
enum class Made { printed, joined };

// --- reads -----------------------------------------------------------------------------------------------------------

void library_read(Target& target, int exact, instant::Advance* advance = instant::same_row) {
    instant::advance = advance;
    target.ask();
    benchmark::DoNotOptimize(target.read(exact));
}

Target& scalar() {
    static Target target({1, 3, 6, 1, 2, 1, 2, 1}, {0});
    return target;
}
void floor_scalar() {
    Target& target = scalar();
    target.ask();
    header_generic(&target.entry, target.name, &target.name_length, 1, &target.value_length, &target.writer);
    show(target, "show interface_uib interfaces_g", nullptr, 0, 1, "interfacesGlobals");
}

// A table with one number for its index: swPortTable.
Target& integer() {
    static Target target({1, 3, 6, 1, 4, 1, kArc, 10, 1, 100, 2, 1, 0, 3, 1, 2}, {kPort1});
    return target;
}
template <Made made>
void floor_integer(int exact) {
    instant::advance = instant::same_row;
    constexpr Field kIfIndex{2, 0};
    Target& target = integer();
    std::uint32_t key = 0;
    char command[kLine];
    target.ask();
    parse<kIfIndex>(target, exact, &key);
    if constexpr (made == Made::printed)
        std::snprintf(command, sizeof command, "show swport swport_table %d", static_cast<int>(key));
    else
        join(command, "show swport swport_table ", key);
    show(target, command, &key, sizeof key, exact, "swPortTable");
    if (!exact) build<kIfIndex>(target, &key);
}

// inetCidrRouteTable: the backend gets a record of its own in place of the key.
struct RouteKey {
    InetPrefix destination;
    std::uint32_t policy;
    InetAddress next_hop;
};
struct RouteRecord {
    std::uint32_t destination_type, next_hop_type;
    unsigned char destination_ipv4[4], destination_ipv6[16];
    std::uint32_t prefix_length;
    unsigned char next_hop_ipv4[4], next_hop_ipv6[16];
};
bool next_route(unsigned char* octets) {
    static constexpr RouteRecord kNext{1, 1, {10, 0, 2, 0}, {}, 24, {192, 0, 2, 1}, {}};
    std::memcpy(octets, &kNext, sizeof kNext);
    return true;
}
const std::vector<oid> kRoute{1, 3, 6, 1, 2, 1, 4, 24, 7, 1, 10};

Target& route() {
    static Target target(kRoute, {1, 4, 10, 0, 1, 0, 24, 2, 0, 0, 1, 4, 192, 0, 2, 1});
    return target;
}
template <Made made>
void floor_route(int exact) {
    instant::advance = next_route;
    constexpr Field kDestination{11, 0}, kPolicy{8, 32}, kNextHop{10, 36};
    Target& target = route();
    RouteKey key{};
    RouteRecord record{};
    char command[kLine];
    char destination[46], next_hop[46];
    target.ask();
    parse<kDestination, kPolicy, kNextHop>(target, exact, &key);
    UIB_SNMP_Inet_Addr_To_Str(&key.destination.address, destination, sizeof destination);
    UIB_SNMP_Inet_Addr_To_Str(&key.next_hop, next_hop, sizeof next_hop);
    const char* vrf = SNMPD_Get_Cur_VrfName();
    if (vrf == nullptr) vrf = "";
    const std::uint32_t type = key.destination.address.type;
    if constexpr (made == Made::printed)
        std::snprintf(command, sizeof command, "show inetcidr-table %s %u  %s/%u %u %s", vrf, type, destination,
                      key.destination.length, key.next_hop.type, next_hop);
    else
        join(command, "show inetcidr-table ", vrf, " ", type, "  ", destination, "/", key.destination.length, " ",
             key.next_hop.type, " ", next_hop);
    show(target, command, &record, sizeof record, exact, "inetCidrRouteTable");
    if (exact) return;
    key.destination.address = {record.destination_type, 4, {}, 0};
    std::memcpy(key.destination.address.octets, record.destination_ipv4, 4);
    key.destination.length = record.prefix_length;
    key.next_hop = {record.next_hop_type, 4, {}, 0};
    std::memcpy(key.next_hop.octets, record.next_hop_ipv4, 4);
    build<kDestination, kPolicy, kNextHop>(target, &key);
}

// ipAddressTable and ipNetToPhysicalTable: the backend gets the address in a record with a place for each type, in the
// latter after the interface index.
struct AddressRecord {
    std::uint32_t type;
    unsigned char ipv4[4], ipv6[16];
};
struct NeighbourRecord {
    std::uint32_t ifindex;
    AddressRecord address;
};
const std::vector<oid> kNeighbour{1, 3, 6, 1, 2, 1, 4, 35, 1, 4};
constexpr std::uint32_t kVlan10 = 1034;

Target& address() {
    static Target target({1, 3, 6, 1, 2, 1, 4, 34, 1, 3}, {1, 4, 10, 0, 10, 1});
    return target;
}
Target& neighbour() {
    static Target target(kNeighbour, {kVlan10, 1, 4, 10, 0, 10, 77});
    return target;
}
template <bool on_interface, Made made>
void floor_address(int exact) {
    instant::advance = instant::same_row;
    constexpr Field kIfIndex{2, 0}, kAddress{10, 4};
    struct {
        std::uint32_t ifindex;
        InetAddress address;
    } key{};
    NeighbourRecord record{};
    Target& target = on_interface ? neighbour() : address();
    char command[kLine];
    char text[46];
    target.ask();
    if constexpr (on_interface)
        parse<kIfIndex, kAddress>(target, exact, &key);
    else
        parse<kAddress>(target, exact, &key);
    record = {key.ifindex, {key.address.type, {}, {}}};
    std::memcpy(record.address.ipv4, key.address.octets, 4);
    UIB_SNMP_Inet_Addr_To_Str(&key.address, text, sizeof text);
    const char* vrf = SNMPD_Get_Cur_VrfName();
    if (vrf == nullptr) vrf = "";
    if constexpr (on_interface) {
        if constexpr (made == Made::printed)
            std::snprintf(command, sizeof command, "show ipnettophysical ifindex %u %u %s%s", key.ifindex,
                          key.address.type, text, vrf);
        else
            join(command, "show ipnettophysical ifindex ", key.ifindex, " ", key.address.type, " ", text, vrf);
        show(target, command, &record, sizeof record, exact, "ipNetToPhysicalTable");
    } else {
        if constexpr (made == Made::printed)
            std::snprintf(command, sizeof command, "show ipaddress %u %s%s", key.address.type, text, vrf);
        else
            join(command, "show ipaddress ", key.address.type, " ", text, vrf);
        show(target, command, &record.address, sizeof record.address, exact, "ipAddressTable");
    }
    if (exact) return;
    key = {record.ifindex, {record.address.type, 4, {}, 0}};
    std::memcpy(key.address.octets, record.address.ipv4, 4);
    if constexpr (on_interface)
        build<kIfIndex, kAddress>(target, &key);
    else
        build<kAddress>(target, &key);
}

// mgmdIgmpSnpGroupTable: two numbers and an address, and every step logged.
Target& group() {
    static Target target({1, 3, 6, 1, 4, 1, kArc, 10, 1, 100, 2, 7, 1, 3, 1, 7}, {kPort1, 1034, 1, 4, 239, 1, 2, 3});
    return target;
}
template <Made made>
void floor_group(int exact) {
    instant::advance = instant::same_row;
    constexpr Field kPort{2, 0}, kVlan{2, 4}, kGroup{10, 8};
    struct {
        std::uint32_t port, vlan;
        InetAddress group;
    } key{};
    constexpr const char* kName = "mgmdIgmpSnpGroupTable";
    Target& target = group();
    char command[kLine];
    char text[46];
    target.ask();
    parse<kPort, kVlan, kGroup>(target, exact, &key);
    UIB_SNMP_Inet_Addr_To_Str(&key.group, text, sizeof text);
    anprintf(62, 0, 101, 0, "%s %d %u v:%u type:%u %s\n", kName, 1, key.port, key.vlan, key.group.type, text);
    if constexpr (made == Made::printed)
        std::snprintf(command, sizeof command, "show debugging %s snooping snmp group %u %u %d %s", "igmp", key.port,
                      key.vlan, 1, text);
    else
        join(command, "show debugging igmp snooping snmp group ", key.port, " ", key.vlan, " 1 ", text);
    anprintf(62, 0, 101, 0, "%s %d cmd : %s m:%d\n", kName, 1, command, target.entry.magic);
    show(target, command, &key, sizeof key, exact, kName);
    if (!exact) build<kPort, kVlan, kGroup>(target, &key);
}

// Scalars from the kernel's statistics. A GET reads the file again.
Target& ipv4() {
    static Target target({1, 3, 6, 1, 2, 1, 4, 1}, {0});
    return target;
}
Target& ipv6() {
    static Target target({1, 3, 6, 1, 2, 1, 4, 25}, {0});
    return target;
}

template <Made made>
std::uint32_t number_at(const char*& text) {
    if constexpr (made == Made::printed) {
        char* end;
        const auto value = std::strtoull(text, &end, 10);
        text = end;
        return static_cast<std::uint32_t>(value);
    } else {
        std::uint32_t value = 0;
        while (*text == ' ') ++text;
        while (*text >= '0' && *text <= '9') value = value * 10 + static_cast<std::uint32_t>(*text++ - '0');
        return value;
    }
}

template <class Take>
void for_each_line(const char* path, Take take) {
    std::FILE* file = std::fopen(path, "r");
    char line[1024];
    while (std::fgets(line, sizeof line, file) != nullptr) take(static_cast<const char*>(line));
    std::fclose(file);
}

void begin_scalar(Target& target) {
    struct sysinfo info;
    target.ask();
    header_generic(&target.entry, target.name, &target.name_length, 1, &target.value_length, &target.writer);
    sysinfo(&info);
}

template <Made made>
void floor_ipv4() {
    std::uint32_t counters[19];
    begin_scalar(ipv4());
    for_each_line("/proc/net/snmp", [&](const char* text) {
        if (std::strncmp(text, "Ip: ", 4) != 0 || text[4] < '0' || text[4] > '9') return;
        text += 4;
        for (std::uint32_t& counter : counters) counter = number_at<made>(text);
    });
    benchmark::DoNotOptimize(counters);
}

// With each line the two settings are read, as the library must.
template <Made made>
void floor_ipv6() {
    std::uint32_t counters[24];
    std::size_t at = 2;
    begin_scalar(ipv6());
    for_each_line("/proc/net/snmp6", [&](const char* text) {
        for_each_line(instant::kForwarding, [&](const char* setting) { counters[0] = number_at<made>(setting); });
        for_each_line(instant::kHopLimit, [&](const char* setting) { counters[1] = number_at<made>(setting); });
        if (std::strncmp(text, "Ip6", 3) != 0) return;
        text = std::strchr(text, ' ');
        if (at < std::size(counters)) counters[at++] = number_at<made>(text);
    });
    benchmark::DoNotOptimize(counters);
}

// --- SETs ------------------------------------------------------------------------------------------------------------

// A SET of one varbind in ACTION alone, or in all its phases.
enum class Phases { acting, all };

template <Phases phases, class Write>
void for_each_phase(Write write) {
    if constexpr (phases == Phases::all)
        for (const int phase : {0, 1}) write(phase);
    write(kAction);
    if constexpr (phases == Phases::all) write(3);
}

template <Phases phases>
void library_set(Target& target, const void* value, unsigned char type, std::size_t length) {
    unsigned char octets[sizeof instant::vlan_list];
    std::memcpy(octets, value, length);
    target.ask();
    for_each_phase<phases>([&](int phase) {
        if (target.write(phase, octets, type, length) != 0) std::abort();
    });
}

// A floor's phases: in each the index is converted, in ACTION `act` sends the lines.
template <Phases phases, class Act>
void floor_set(Target& target, Act act) {
    target.ask();
    for_each_phase<phases>([&](int phase) {
        std::uint32_t key;
        parse<Field{2, 0}>(target, 1, &key);
        if (phase == kAction) act(key);
    });
}

template <Made made>
void enter(std::uint32_t ifindex) {
    char name[22];
    char line[kLine];
    if_utl_ifindex_to_ifname(ifindex, name);
    if constexpr (made == Made::printed)
        std::snprintf(line, sizeof line, "interface %s", name);
    else
        join(line, "interface ", name);
    uib_sh_config_request(5, line, "_enter_intf", 1);
}

Target& vlan_interface() {
    static Target target({1, 3, 6, 1, 4, 1, kArc, 10, 1, 100, 3, 4, 1, 1, 1, 4}, {10});
    return target;
}
template <Phases phases>
void library_vlan_interface() {
    constexpr std::int32_t kCreateAndGo = 4;
    library_set<phases>(vlan_interface(), &kCreateAndGo, kInteger, sizeof kCreateAndGo);
}
template <Phases phases, Made made>
void floor_vlan_interface() {
    floor_set<phases>(vlan_interface(), [](std::uint32_t vid) {
        char line[kLine];
        if constexpr (made == Made::printed)
            std::snprintf(line, sizeof line, "interface vlan%u", vid);
        else
            join(line, "interface vlan", vid);
        uib_sh_config_request(5, line, "write_nVlanInterfaceRowStatus", 1);
    });
}

Target& admin_status() {
    static Target target({1, 3, 6, 1, 2, 1, 2, 2, 1, 7}, {kPort1});
    return target;
}
template <Phases phases>
void library_admin_status() {
    constexpr std::int32_t kDown = 2;
    library_set<phases>(admin_status(), &kDown, kInteger, sizeof kDown);
}
template <Phases phases, Made made>
void floor_admin_status() {
    floor_set<phases>(admin_status(), [](std::uint32_t ifindex) {
        enter<made>(ifindex);
        uib_sh_config_request(-1, "shutdown", "write_ifAdminStatus", 1);
    });
}

constexpr std::string_view kAlias = "uplink to the core";
Target& alias() {
    static Target target({1, 3, 6, 1, 2, 1, 31, 1, 1, 1, 18}, {kPort1});
    return target;
}
template <Phases phases>
void library_alias() {
    library_set<phases>(alias(), kAlias.data(), kOctetString, kAlias.size());
}
template <Phases phases, Made made>
void floor_alias() {
    floor_set<phases>(alias(), [](std::uint32_t ifindex) {
        char line[kLine];
        enter<made>(ifindex);
        if constexpr (made == Made::printed)
            std::snprintf(line, sizeof line, "desc %.*s", static_cast<int>(kAlias.size()), kAlias.data());
        else
            join(line, "desc ", kAlias);
        uib_sh_config_request(-1, line, "write_ifAlias", 1);
    });
}

// A port list, dot1qVlanStaticEgressPorts: all of 90 ports change, or none.
enum class Change { none, all };
constexpr unsigned char kAllPorts[sizeof instant::port_list] = {255, 255, 255, 255, 255, 255,
                                                                255, 255, 255, 255, 255, 255};
constexpr std::uint32_t kPorts = 90;

Target& port_list() {
    static Target target({1, 3, 6, 1, 2, 1, 17, 7, 1, 4, 3, 1, 2}, {10});
    return target;
}
template <Change change>
void library_port_list() {
    std::memset(instant::port_list, change == Change::all ? 0 : 0xff, sizeof instant::port_list);
    library_set<Phases::acting>(port_list(), kAllPorts, kOctetString, sizeof kAllPorts);
}
template <Change change, Made made>
void floor_port_list() {
    std::memset(instant::port_list, change == Change::all ? 0 : 0xff, sizeof instant::port_list);
    floor_set<Phases::acting>(port_list(), [](std::uint32_t vid) {
        char line[kLine];
        unsigned char current[sizeof kAllPorts], common[sizeof kAllPorts], added[sizeof kAllPorts],
            removed[sizeof kAllPorts];
        std::size_t length;
        if constexpr (made == Made::printed)
            std::snprintf(line, sizeof line, "show snmp vlan-static %u portlist", vid);
        else
            join(line, "show snmp vlan-static ", vid, " portlist");
        uib_sh_show_request(2, line, current, sizeof current, &length, nullptr, 0, 2, 1, 0, "", 1);
        PORTLIST_and(current, kAllPorts, common);
        PORTLIST_xor(common, kAllPorts, added);
        PORTLIST_xor(common, current, removed);
        if constexpr (change == Change::none) return;
        for (std::uint32_t port = 1; port <= kPorts; ++port) {
            const std::uint32_t ifindex = 5120 + port;
            unsigned char mode[sizeof instant::port_mode];
            if constexpr (made == Made::printed)
                std::snprintf(line, sizeof line, "show snmp vlan-mode %u", ifindex);
            else
                join(line, "show snmp vlan-mode ", ifindex);
            uib_sh_show_request(2, line, mode, sizeof mode, &length, nullptr, 0, 0, 1, 0, "", 1);
            enter<made>(ifindex);
            if constexpr (made == Made::printed)
                std::snprintf(line, sizeof line, "switchport hybrid allowed vlan add tagged %u", vid);
            else
                join(line, "switchport hybrid allowed vlan add tagged ", vid);
            uib_sh_config_request(-1, line, "", 1);
        }
    });
}

// A VLAN list, nVlanPortIfTagAllowVlanLstFirst2K: so many VLANs come into an empty one, or none into the full one.
Target& vlan_list() {
    static Target target({1, 3, 6, 1, 4, 1, kArc, 10, 1, 100, 2, 9, 1, 3, 1, 6}, {kPort1});
    return target;
}
template <std::uint32_t added>
const unsigned char* wanted_vlans() {
    static unsigned char list[sizeof instant::vlan_list];
    std::memset(list, added == 0 ? 0xff : 0, sizeof list);
    for (std::uint32_t vid = 0; vid < added; ++vid)
        list[vid / 8] = static_cast<unsigned char>(list[vid / 8] | 0x80 >> vid % 8);
    return list;
}
template <std::uint32_t added>
void library_vlan_list() {
    static const unsigned char* const list = wanted_vlans<added>();
    std::memset(instant::vlan_list, added == 0 ? 0xff : 0, sizeof instant::vlan_list);
    library_set<Phases::acting>(vlan_list(), list, kOctetString, sizeof instant::vlan_list);
}
template <std::uint32_t added, Made made>
void floor_vlan_list() {
    static const unsigned char* const list = wanted_vlans<added>();
    std::memset(instant::vlan_list, added == 0 ? 0xff : 0, sizeof instant::vlan_list);
    floor_set<Phases::acting>(vlan_list(), [](std::uint32_t ifindex) {
        char line[kLine];
        unsigned char wanted[sizeof instant::vlan_list], current[sizeof wanted], common[sizeof wanted],
            more[sizeof wanted], less[sizeof wanted], mode[sizeof instant::port_mode];
        std::size_t length;
        std::memcpy(wanted, list, sizeof wanted);
        if constexpr (made == Made::printed)
            std::snprintf(line, sizeof line, "show snmp vlan-port %u", ifindex);
        else
            join(line, "show snmp vlan-port ", ifindex);
        uib_sh_show_request(2, line, current, sizeof current, &length, nullptr, 0, 6, 1, 0, "", 1);
        VLANLIST_and(current, wanted, common);
        VLANLIST_xor(common, wanted, more);
        VLANLIST_xor(common, current, less);
        uib_sh_show_request(2, line, mode, sizeof mode, &length, nullptr, 0, 2, 1, 0, "", 1);
        enter<made>(ifindex);
        for (std::uint32_t vid = 1; vid <= added; ++vid) {
            if constexpr (made == Made::printed)
                std::snprintf(line, sizeof line, "switchport hybrid allowed vlan add tagged %u", vid);
            else
                join(line, "switchport hybrid allowed vlan add tagged ", vid);
            uib_sh_config_request(-1, line, "", 1);
        }
    });
}

// --- walks -----------------------------------------------------------------------------------------------------------

// Over tables of any size: a row costs the same. `rows` is what the backend has.
std::uint32_t rows;

void walk(const std::vector<oid>& column, std::size_t index_length, instant::Advance* advance, std::uint32_t count) {
    static std::vector<std::pair<std::vector<oid>, Target>> targets;
    const auto known = std::ranges::find(targets, column, [](const auto& entry) { return entry.first; });
    Target& target = known != targets.end() ? known->second : targets.emplace_back(column, Target(column, {})).second;
    instant::advance = advance;
    rows = count;
    target.ask();
    std::uint32_t answered = 0;
    while (target.read(0) != nullptr) ++answered;
    if (answered != count || target.name_length != target.entry.namelen + index_length) std::abort();
}

template <std::uint32_t count>
void walk_vlans() {
    walk(
        {1, 3, 6, 1, 2, 1, 17, 7, 1, 4, 3, 1, 1}, 1, [](unsigned char* key) { return instant::count_up(key, rows); },
        count);
}

// The record that the backend gets comes clear each time: the row goes by a count of its own.
template <std::uint32_t count>
void walk_routes() {
    static std::uint32_t row;
    row = 0;
    const auto advance = [](unsigned char* record) {
        if (row == rows) return false;
        ++row;
        next_route(record);
        record[9] = static_cast<unsigned char>(row >> 8);
        record[10] = static_cast<unsigned char>(row);
        return true;
    };
    walk(kRoute, 16, advance, count);
}

// The forwarding database by address.
template <std::uint32_t count>
void walk_addresses() {
    const auto advance = [](unsigned char* mac) {
        std::uint32_t row = 0;
        for (int i = 2; i < 6; ++i) row = row << 8 | mac[i];
        if (row == rows) return false;
        ++row;
        for (int i = 5; i >= 2; --i, row >>= 8) mac[i] = static_cast<unsigned char>(row);
        return true;
    };
    walk({1, 3, 6, 1, 2, 1, 17, 4, 3, 1, 2}, 6, advance, count);
}

template <std::uint32_t count>
void walk_neighbours() {
    const auto advance = [](unsigned char* record) {
        NeighbourRecord next;
        std::memcpy(&next, record, sizeof next);
        unsigned char* octets = next.address.ipv4;
        std::uint32_t row = 0;
        for (int i = 1; i < 4; ++i) row = row << 8 | octets[i];
        if (row == rows) return false;
        ++row;
        next.ifindex = kVlan10;
        next.address.type = 1;
        octets[0] = 100;
        for (int i = 3; i >= 1; --i, row >>= 8) octets[i] = static_cast<unsigned char>(row);
        std::memcpy(record, &next, sizeof next);
        return true;
    };
    walk(kNeighbour, 7, advance, count);
}

// --- the cases -------------------------------------------------------------------------------------------------------

struct Request {
    const char* name;
    void (*library)();
    void (*floor)();
    void (*least)();
};
const Request kRequests[] = {
    {"get scalar", [] { library_read(scalar(), 1); }, floor_scalar, floor_scalar},
    {"get integer", [] { library_read(integer(), 1); }, [] { floor_integer<Made::printed>(1); },
     [] { floor_integer<Made::joined>(1); }},
    {"getnext integer", [] { library_read(integer(), 0); }, [] { floor_integer<Made::printed>(0); },
     [] { floor_integer<Made::joined>(0); }},
    {"get route", [] { library_read(route(), 1, next_route); }, [] { floor_route<Made::printed>(1); },
     [] { floor_route<Made::joined>(1); }},
    {"getnext route", [] { library_read(route(), 0, next_route); }, [] { floor_route<Made::printed>(0); },
     [] { floor_route<Made::joined>(0); }},
    {"get address", [] { library_read(address(), 1); }, [] { floor_address<false, Made::printed>(1); },
     [] { floor_address<false, Made::joined>(1); }},
    {"getnext address", [] { library_read(address(), 0); }, [] { floor_address<false, Made::printed>(0); },
     [] { floor_address<false, Made::joined>(0); }},
    {"get neighbour", [] { library_read(neighbour(), 1); }, [] { floor_address<true, Made::printed>(1); },
     [] { floor_address<true, Made::joined>(1); }},
    {"getnext neighbour", [] { library_read(neighbour(), 0); }, [] { floor_address<true, Made::printed>(0); },
     [] { floor_address<true, Made::joined>(0); }},
    {"get group", [] { library_read(group(), 1); }, [] { floor_group<Made::printed>(1); },
     [] { floor_group<Made::joined>(1); }},
    {"getnext group", [] { library_read(group(), 0); }, [] { floor_group<Made::printed>(0); },
     [] { floor_group<Made::joined>(0); }},
    {"get IPv4 statistic", [] { library_read(ipv4(), 1); }, floor_ipv4<Made::printed>, floor_ipv4<Made::joined>},
    {"get IPv6 statistic", [] { library_read(ipv6(), 1); }, floor_ipv6<Made::printed>, floor_ipv6<Made::joined>},
    {"action VLAN interface", library_vlan_interface<Phases::acting>,
     floor_vlan_interface<Phases::acting, Made::printed>, floor_vlan_interface<Phases::acting, Made::joined>},
    {"set VLAN interface", library_vlan_interface<Phases::all>, floor_vlan_interface<Phases::all, Made::printed>,
     floor_vlan_interface<Phases::all, Made::joined>},
    {"action ifAdminStatus", library_admin_status<Phases::acting>, floor_admin_status<Phases::acting, Made::printed>,
     floor_admin_status<Phases::acting, Made::joined>},
    {"set ifAdminStatus", library_admin_status<Phases::all>, floor_admin_status<Phases::all, Made::printed>,
     floor_admin_status<Phases::all, Made::joined>},
    {"action ifAlias", library_alias<Phases::acting>, floor_alias<Phases::acting, Made::printed>,
     floor_alias<Phases::acting, Made::joined>},
    {"set ifAlias", library_alias<Phases::all>, floor_alias<Phases::all, Made::printed>,
     floor_alias<Phases::all, Made::joined>},
    {"action same ports", library_port_list<Change::none>, floor_port_list<Change::none, Made::printed>,
     floor_port_list<Change::none, Made::joined>},
    {"action 90 ports", library_port_list<Change::all>, floor_port_list<Change::all, Made::printed>,
     floor_port_list<Change::all, Made::joined>},
    {"action same VLANs", library_vlan_list<0>, floor_vlan_list<0, Made::printed>, floor_vlan_list<0, Made::joined>},
    {"action one VLAN", library_vlan_list<1>, floor_vlan_list<1, Made::printed>, floor_vlan_list<1, Made::joined>},
};

// The same walk over few rows and over many, or the same list with few new members and with many.
struct Walk {
    const char* name;
    void (*few)();
    int few_rows;
    void (*many)();
    int many_rows;
};
const Walk kWalks[] = {
    {"walk VLANs", walk_vlans<100>, 100, walk_vlans<4094>, 4094},
    {"walk routes", walk_routes<100>, 100, walk_routes<10000>, 10000},
    {"list of VLANs", library_vlan_list<100>, 100, library_vlan_list<4094>, 4094},
    {"walk addresses", walk_addresses<100>, 100, walk_addresses<10000>, 10000},
    {"walk 100000 addresses", walk_addresses<100>, 100, walk_addresses<100000>, 100000},
    {"walk neighbours", walk_neighbours<100>, 100, walk_neighbours<10000>, 10000},
    {"walk 100000 neighbours", walk_neighbours<100>, 100, walk_neighbours<100000>, 100000},
};

struct Case {
    std::string name;  // "get route/floor"
    void (*run)();
    int rows = 1;  // that a run walks over
};
std::vector<Case> cases() {
    std::vector<Case> all;
    for (const Request& request : kRequests) {
        const std::string name = request.name;
        all.push_back({name + "/library", request.library});
        all.push_back({name + "/floor", request.floor});
        all.push_back({name + "/least", request.least});
    }
    for (const Walk& walk : kWalks) {
        const std::string name = walk.name;
        all.push_back({name + "/few", walk.few, walk.few_rows});
        all.push_back({name + "/many", walk.many, walk.many_rows});
    }
    return all;
}

const char* const kInits[] = {"interfaces_snmp_init",
                              "ifMIB_snmp_init",
                              "SwitchPortMIB_snmp_init",
                              "pellamVlanInterfaceMIB_snmp_init",
                              "qBridgeMIB_snmp_init",
                              "corvinVlanMIB_snmp_init",
                              "dot1dBridge_snmp_init",
                              "ipForward_snmp_init",
                              "ip_snmp_init",
                              "harrowMgmdSnoopingMIB_snmp_init"};

void load_for_good() {
    static const bool loaded = [] {
        instant::registered().clear();
        void* library = load(SWITCHMIB_LIBRARY);
        for (const char* init : kInits) initialise(library, init);
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
}  // namespace bench

extern "C" __attribute__((noinline)) void counted(void (*run)(), int rounds) {
    for (int i = 0; i < rounds; ++i) run();
}

int main(int argc, char** argv) try {
    using namespace bench;
    if (argc == 2 && std::string_view(argv[1]) == "--count") {
        load_for_good();
        for (const Case& one : cases()) {
            one.run();  // the first call binds symbols and allocates
            const int rounds = one.rows > 1 ? 1 : kCounted;
            CALLGRIND_ZERO_STATS;
            counted(one.run, rounds);
            CALLGRIND_DUMP_STATS;
            std::printf("%d %s\n", rounds * one.rows, one.name.c_str());
        }
        return 0;
    }
    // First, while nothing else has the library open, so that each round loads it.
    benchmark::RegisterBenchmark("load_and_register", load_and_register);
    for (const Case& one : cases())
        benchmark::RegisterBenchmark(one.name.c_str(), [one](benchmark::State& state) {
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
