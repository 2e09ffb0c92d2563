// The simulated switch's VLANs, routes and multicast snooping: their tables as the library asks for them, and the lines
// that change what the tables say.
#include "support/simulated_switch.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <map>
#include <tuple>

namespace sw {
namespace {

constexpr int kGlobal = 5;
constexpr int kEntered = -1;

// A table, and what the library makes of a key record for it.
struct Asked {
    std::string name;
    std::size_t key_size;
    std::function<Index(const Key&)> index;
    std::function<std::string(const Index&)> command;
    std::string columns;  // from magic 1 on: the octets of each, c for 12, s for any; blank: there is none
    std::size_t rows;
    std::uint32_t type = 0;   // forced into a record at this place
    std::size_t type_at = 0;  // in octets
    bool is_record = false;   // asked with an empty record: only the command says which row is meant
};

// The address at a place of an index as text.
std::string address_text(const Index& index, std::size_t at) {
    unsigned char octets[16] = {};
    for (std::size_t i = 0; i < std::min<std::size_t>(index[at + 1], 16); ++i)
        octets[i] = static_cast<unsigned char>(index[at + 2 + i]);
    char text[INET6_ADDRSTRLEN] = "";
    if (index[at] != 0) inet_ntop(index[at] == 1 ? AF_INET : AF_INET6, octets, text, sizeof text);
    return text;
}

std::size_t behind_address(const Index& index, std::size_t at) { return at + 2 + index[at + 1]; }

struct RouteRecord {
    std::uint32_t type, hop_type;
    unsigned char destination4[4], destination6[16];
    std::uint32_t bits;
    unsigned char hop4[4], hop6[16];
};

Index route_index(const Key& key) {
    RouteRecord row{};
    std::memcpy(&row, key.data(), sizeof row);
    Index index;
    const auto add = [&index](std::uint32_t type, const unsigned char* v4, const unsigned char* v6) {
        const std::uint32_t length = type == 1 ? 4 : type == 2 ? 16 : 0;
        index.insert(index.end(), {type, length});
        index.insert(index.end(), type == 1 ? v4 : v6, (type == 1 ? v4 : v6) + length);
    };
    add(row.type, row.destination4, row.destination6);
    index.push_back(row.bits);
    add(row.hop_type, row.hop4, row.hop6);
    return index;
}

std::string route_command(const Index& index, const std::string& vrf) {
    const std::size_t bits = behind_address(index, 0), hop = bits + 1;
    const std::string destination = index[0] == 0 ? " " : fmt::format(" {}/{}", address_text(index, 0), index[bits]);
    if (index[0] == 2)
        return fmt::format("show inetcidr6-table {} 2 {}", destination,
                           index[hop] == 0 ? "::" : address_text(index, hop));
    return fmt::format("show inetcidr-table {} {} {} {} {}", vrf.empty() ? "" : "vrf " + vrf, index[0], destination,
                       index[hop], address_text(index, hop));
}

Asked routes(const std::string& vrf, std::size_t rows) {
    return {.name = "inetCidrRouteTable",
            .key_size = 52,
            .index = route_index,
            .command = [vrf](const Index& index) { return route_command(index, vrf); },
            .columns = "4s484s44444444444",
            .rows = rows,
            .is_record = true};
}

Asked plain(const char* name, KeyLayout layout, std::function<std::string(const Index&)> command, const char* columns,
            std::size_t rows) {
    const std::size_t size = layout.size();
    return {name,    size, [layout](const Key& key) { return layout.encode(key.data()); }, std::move(command),
            columns, rows};
}

std::vector<Asked> vlan_tables(std::size_t vlans = 4) {
    const auto numbered = [](const char* command, std::size_t at) {
        return [command, at](const Index& i) {
            return i[at] == 0 ? std::string(command) : fmt::format("{} {}", command, i[at]);
        };
    };
    return {plain("dot1qVlanCurrentTable", {{2}, {2}}, numbered("show snmp vlan-current", 1), "  4cc44", vlans),
            plain("dot1qVlanStaticTable", {{2}}, numbered("show snmp vlan-static", 0), "sc c4", vlans),
            plain("dot1qPortVlanTable", {{2}}, numbered("show snmp port-vlan", 0), "444", 26)};
}

std::vector<Asked> snooping_tables(std::uint32_t type, std::size_t groups = 6) {
    const std::string prefix = type == 1 ? "mgmdIgmpSnp" : "mgmdMldSnp";
    const std::string word = type == 1 ? "igmp" : "mld";
    const auto add = [&](std::string table, KeyLayout layout, std::size_t type_at, auto command, const char* columns,
                         std::size_t rows) {
        Asked asked = plain("", std::move(layout), {}, columns, rows);
        asked.name = prefix + table;
        asked.type = type;
        asked.type_at = type_at;
        asked.command = [command, word](const Index& index) {
            const std::string text = command(index);
            return fmt::format("show debugging {} {}", word, text);
        };
        return asked;
    };
    const std::string none = type == 1 ? "0.0.0.0" : "0:0:0:0:0:0:0:0";
    const auto address = [none](const Index& i, std::size_t at) { return i[at] == 0 ? none : address_text(i, at); };
    const auto three = [](const char* words) {
        return [words](const Index& i) { return fmt::format("snooping snmp {} {} {} {}", words, i[0], i[1], i[2]); };
    };
    const auto two = [](const char* words) {
        return [words](const Index& i) { return fmt::format("snooping snmp {} {} {}", words, i[0], i[1]); };
    };
    return {
        add("Table", {{2}, {2}}, 4, two("interface"), " 444444", 2),
        add("MrouterTable", {{2}, {2}}, 4, two("mrouter"), "  ccc", 2),
        add("FilterTable", {{2}, {2}, {2}}, 8, three("filter"), "   4", 1),
        add("AccGrpTable", {{2}, {2}, {2}}, 8, three("access-group"), "   s4", 1),
        add("StatisticTable", {{2}, {2}, {2}}, 8, three("statistics"), "   44444444", 28),
        add(
            "GroupTable", {{2}, {2}, {10}}, 8,
            [=](const Index& i) {
                return fmt::format("snooping snmp group {} {} {} {}", i[0], i[1], i[2], address(i, 2));
            },
            "    4444444", groups),
        add(
            "GroupSrcTable", {{2}, {2}, {13}}, 8,
            [=](const Index& i) {
                return fmt::format("snp snmp source {} {} {} {} {}", i[0], i[1], i[2], address(i, 2),
                                   address(i, behind_address(i, 2)));
            },
            " 4444", groups),
        add(
            "HostTable", {{2}, {2}, {13}}, 8,
            [=](const Index& i) {
                return fmt::format("snooping snmp host {} {} {} {} {}", i[0], i[2], address(i, 2), i[1],
                                   address(i, behind_address(i, 2)));
            },
            "    s", groups),
        add(
            "StatisticGroupTable", {{2}, {10}}, 4,
            [=](const Index& i) {
                return fmt::format("snooping snmp statistics group {} {} {}", i[0], i[1], address(i, 1));
            },
            "   4", groups < 6 ? 0 : groups - 3),
    };
}

std::vector<Asked> all_tables() {
    std::vector<Asked> tables = vlan_tables();
    tables.push_back(routes("", 8));
    tables.push_back(routes("red", 5));
    for (const std::uint32_t type : {1u, 2u})
        for (Asked& table : snooping_tables(type)) tables.push_back(std::move(table));
    return tables;
}

class SwitchTables : public SimulatedSwitchTest {
protected:
    // Shows what a key asks for; a GETNEXT moves the key.
    std::optional<Value> ask(const Asked& table, int magic, Key& key, bool exact) {
        if (table.type != 0) std::memcpy(&key[table.type_at], &table.type, sizeof table.type);
        const std::string command = table.command(table.index(key));
        if (!table.is_record) return show(switch_, table.name, command, magic, key, exact);
        Key record(table.key_size);
        const auto value = show(switch_, table.name, command, magic, record, exact);
        if (value && !exact) key = record;
        return value;
    }
    // Every row with its value.
    std::map<Index, Value> walk(const Asked& table, int magic) {
        std::map<Index, Value> rows;
        Key key(table.key_size);
        while (const auto value = ask(table, magic, key, false)) {
            const Index index = table.index(key);
            EXPECT_TRUE(rows.empty() || rows.rbegin()->first < index)
                << table.name << ' ' << fmt::format("{}", fmt::join(index, "."));
            if (!rows.emplace(index, *value).second) break;
            EXPECT_EQ(ask(table, magic, key, true), value) << table.name;
        }
        return rows;
    }
    // One cell of a table of the walks, by its name and index.
    std::optional<Value> cell(const std::string& name, int magic, const Index& index, const std::string& vrf = "") {
        for (const Asked& table : vrf.empty() ? all_tables() : std::vector{routes(vrf, 0)}) {
            if (table.name != name) continue;
            const auto rows = walk(table, magic);
            const auto row = rows.find(index);
            if (row == rows.end()) return {};
            return row->second;
        }
        ADD_FAILURE() << name;
        return {};
    }
    std::map<std::string, Value> snapshot() {
        std::map<std::string, Value> cells;
        for (const Asked& table : all_tables())
            for (std::size_t i = 0; i < table.columns.size(); ++i) {
                if (table.columns[i] == ' ') continue;
                for (const auto& [index, value] : walk(table, static_cast<int>(i) + 1))
                    cells[fmt::format("{} {} {}", table.command(index), i + 1, fmt::join(index, "."))] = value;
            }
        return cells;
    }
    std::optional<Value> lookup(const std::string& command, int magic, int size = 12) {
        Key none;
        return show(switch_, "write_something", command, magic, none, true, size);
    }
    std::uint32_t scalar(const char* group, const char* command, int magic) {
        Key none;
        return as_number(show(switch_, group, command, magic, none, true));
    }
    // The line, in the mode that another one enters.
    void apply(const std::string& enter, const std::string& line) {
        ASSERT_TRUE(configure(kGlobal, enter)) << enter;
        EXPECT_TRUE(configure(kEntered, line)) << line;
    }
};

Value ports(std::initializer_list<std::uint32_t> members) {
    Value list(12, '\0');
    for (const std::uint32_t n : members)
        list[(n - 1) / 8] = static_cast<char>(list[(n - 1) / 8] | 0x80 >> (n - 1) % 8);
    return list;
}

TEST_F(SwitchTables, AreWalkedOnceInOrderAndAgreeWithGet) {
    for (const Asked& table : all_tables())
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            const char width = table.columns[i];
            if (width == ' ') continue;
            SCOPED_TRACE(fmt::format("{} {}", table.name, i + 1));
            const auto rows = walk(table, static_cast<int>(i) + 1);
            EXPECT_EQ(rows.size(), table.rows);
            for (const auto& [index, value] : rows) {
                if (width != 's') {
                    ASSERT_EQ(value.size(), width == 'c' ? 12u : std::size_t(width - '0'));
                }
            }
        }
    EXPECT_EQ(log_, Log());
    Key key(52);
    EXPECT_FALSE(ask(routes("", 0), 7, key, true));  // there is no row 0
}

// --- VLANs -----------------------------------------------------------------------------------------------------------

TEST_F(SwitchTables, VlansAreMadeNamedAndRemovedWithTheirPorts) {
    const char* names = "dot1qVlanStaticTable";
    now_ = std::chrono::seconds(7);
    EXPECT_TRUE(configure(kGlobal, "vlan 100"));
    EXPECT_EQ(cell(names, 1, {100}), "VLAN0100");
    EXPECT_TRUE(configure(kEntered, "name the lab "));
    EXPECT_TRUE(configure(kGlobal, "vlan 100"));  // just entered
    EXPECT_EQ(cell(names, 1, {100}), "the lab ");
    EXPECT_EQ(as_number(cell("dot1qVlanCurrentTable", 7, {0, 100})), 700u);
    EXPECT_EQ(scalar("qBridgeMIBGlobals", "show snmp vlan number", 4), 5u);

    apply("interface port1", "switchport access vlan 100");
    apply("interface port13", "switchport hybrid allowed vlan add tagged 100");
    apply("interface port14", "switchport hybrid native vlan 100");
    apply("interface port17", "switchport hybrid allowed vlan add untagged 100");
    apply("interface port25", "switchport trunk allowed vlan add 100");
    apply("interface port26", "switchport trunk native vlan 100");
    EXPECT_EQ(lookup("show snmp vlan-static 100 portlist", 2), ports({1, 13, 14, 17, 25, 26}));
    EXPECT_EQ(lookup("show snmp vlan-static 100 portlist", 4), ports({1, 14, 17, 26}));
    EXPECT_EQ(cell(names, 2, {100}), ports({1, 13, 14, 17, 25, 26}));
    EXPECT_EQ(cell("dot1qVlanCurrentTable", 5, {0, 100}), ports({1, 14, 17, 26}));
    const auto pvid = [&](std::uint32_t port) { return as_number(cell("dot1qPortVlanTable", 1, {5120 + port})); };
    const std::pair<std::uint32_t, std::uint32_t> pvids[] = {{1, 100}, {13, 1}, {14, 100}, {17, 1}, {25, 1}, {26, 100}};
    for (const auto& [port, vid] : pvids) EXPECT_EQ(pvid(port), vid) << port;
    // An access port is in one VLAN; a trunk keeps its former native one with tags.
    EXPECT_EQ(lookup("show snmp vlan-static 1 portlist", 4),
              ports({2, 3, 4, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25}));
    EXPECT_EQ(lookup("show snmp vlan-static 1 portlist", 2),
              ports({2, 3, 4, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26}));

    apply("interface port13", "switchport hybrid allowed vlan remove 100");
    apply("interface port25", "switchport trunk allowed vlan remove 100");
    apply("interface port1", "no switchport access vlan");
    EXPECT_EQ(pvid(1), 1u);
    EXPECT_EQ(lookup("show snmp vlan-static 100 portlist", 2), ports({14, 17, 26}));

    EXPECT_TRUE(configure(kGlobal, "no vlan 100"));
    EXPECT_FALSE(cell(names, 1, {100}));
    EXPECT_EQ(pvid(14), 1u);
    EXPECT_EQ(pvid(26), 1u);
    EXPECT_FALSE(lookup("show snmp vlan-static 100 portlist", 2));
    EXPECT_EQ(scalar("qBridgeMIBGlobals", "show snmp vlan-delete-num", 6), 1u);
    EXPECT_TRUE(configure(kGlobal, "vlan 100"));
    EXPECT_EQ(cell(names, 2, {100}), ports({}));
    EXPECT_EQ(log_, Log());

    // What snooping knew of a VLAN goes with it, and its interface is down.
    EXPECT_TRUE(configure(kGlobal, "no vlan 10"));
    const auto snooping = snooping_tables(2);
    const std::tuple<std::size_t, int, std::size_t> left[] = {{2, 4, 0}, {3, 4, 0}, {5, 5, 2},
                                                              {6, 2, 2}, {7, 5, 2}, {8, 4, 1}};
    for (const auto& [table, magic, rows] : left)
        EXPECT_EQ(walk(snooping[table], magic).size(), rows) << snooping[table].name;
    Key key{0x0a, 0x04, 0, 0};
    EXPECT_EQ(as_number(show(switch_, "ifTable", "show interface_uib interfaces 1034", 8, key, true)), 2u);
}

TEST_F(SwitchTables, PortsSayTheirVlanModeAndSettings) {
    const std::pair<std::uint32_t, std::uint32_t> modes[] = {{1, 1},  {12, 1}, {13, 2}, {16, 2},
                                                             {17, 4}, {18, 4}, {19, 1}, {25, 3}};
    for (const auto& [port, mode] : modes)
        EXPECT_EQ(as_number(lookup(fmt::format("show snmp vlan-mode {}", 5120 + port), 0, 4)), mode) << port;
    EXPECT_FALSE(lookup("show snmp vlan-mode 5147", 0, 4));

    const std::tuple<const char*, int, std::uint32_t> lines[] = {{"acceptable-frame tagged-only", 2, 2},
                                                                 {"acceptable-frame untagged-only", 2, 3},
                                                                 {"acceptable-frame admit-all", 2, 1},
                                                                 {"no ingress-checking", 3, 2},
                                                                 {"ingress-checking", 3, 1}};
    for (const auto& [line, magic, value] : lines) {
        apply("interface port2", line);
        EXPECT_EQ(as_number(cell("dot1qPortVlanTable", magic, {5122})), value) << line;
    }
}

// --- Routes ----------------------------------------------------------------------------------------------------------

const Index kLab{1, 4, 10, 20, 0, 0, 16, 1, 4, 192, 0, 2, 9};
const Index kLab6{2, 16, 0x20, 1, 0xd, 0xb8, 0, 0x20, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 48,
                  2, 16, 0x20, 1, 0xd, 0xb8, 0, 0,    0, 1, 0, 0, 0, 0, 0, 0, 0, 9};

TEST_F(SwitchTables, StaticRoutesComeAndGo) {
    const char* table = "inetCidrRouteTable";
    const auto count = [&] { return scalar("ipForwardGlobals", "show inetcidr-table summary", 3); };
    const auto field = [&](const Index& route, int magic) { return as_number(cell(table, magic, route)); };
    EXPECT_EQ(count(), 8u);
    EXPECT_TRUE(configure(kGlobal, "ip route 10.20.0.0/16 192.0.2.9 "));
    EXPECT_EQ(count(), 9u);
    EXPECT_EQ(field(kLab, 7), 1025u);  // the interface of the network that the next hop is in
    EXPECT_EQ(field(kLab, 8), 4u);
    EXPECT_EQ(field(kLab, 9), 3u);
    EXPECT_EQ(field(kLab, 12), 1u);
    now_ += std::chrono::seconds(90);
    EXPECT_EQ(field(kLab, 10), 90u);
    EXPECT_TRUE(configure(kGlobal, "ip route 10.20.0.0/16 192.0.2.9 30"));
    EXPECT_EQ(field(kLab, 12), 30u);
    EXPECT_EQ(field(kLab, 10), 90u);
    EXPECT_EQ(count(), 9u);

    EXPECT_TRUE(configure(kGlobal, "ipv6 route 2001:db8:20::/48  vlan 10 2001:db8:0:1::9 5"));
    EXPECT_EQ(field(kLab6, 7), 1034u);
    EXPECT_EQ(field(kLab6, 12), 5u);
    EXPECT_TRUE(configure(kGlobal, "ipv6 route 2001:db8:20::/48  tunnel 127 2001:db8:0:1::9"));
    EXPECT_EQ(field(kLab6, 7), 1023u);
    EXPECT_TRUE(configure(kGlobal, "ipv6 route 2001:db8:20::/48 2001:db8:0:1::9 "));
    EXPECT_EQ(field(kLab6, 7), 1025u);

    EXPECT_TRUE(configure(kGlobal, "no ip route 10.20.0.0/16 192.0.2.9"));
    EXPECT_FALSE(cell(table, 7, kLab));
    EXPECT_TRUE(configure(kGlobal, "no ipv6 route 2001:db8:20::/48  vlan 10 2001:db8:0:1::9"));
    EXPECT_FALSE(cell(table, 7, kLab6));
    EXPECT_EQ(count(), 8u);
    EXPECT_EQ(log_, Log());
}

TEST_F(SwitchTables, RoutesOfAVrfAreItsOwnAndIpv6OnesTheDefaultOnes) {
    const char* table = "inetCidrRouteTable";
    apply("vrf context red", "ip route 10.20.0.0/16 192.0.2.9 7");
    EXPECT_FALSE(cell(table, 12, kLab));
    EXPECT_EQ(as_number(cell(table, 12, kLab, "red")), 7u);
    apply("vrf context red", "ipv6 route 2001:db8:20::/48 2001:db8:0:1::9");
    EXPECT_FALSE(cell(table, 12, kLab6, "red"));
    apply("vrf context red", "no ip route 10.20.0.0/16 192.0.2.9");
    EXPECT_FALSE(cell(table, 12, kLab, "red"));

    // Behind the last IPv4 route comes the first IPv6 one, in an unknown VRF at once.
    EXPECT_EQ(walk(routes("red", 0), 7).size(), 5u);
    EXPECT_EQ(walk(routes("blue", 0), 7).size(), 3u);
    EXPECT_EQ(log_, Log());
    Key record(52);
    const char* commands[] = {"show inetcidr-table  0 10.0.0.0/8 0 ", "show inetcidr-table  1  10.0.0.0/8 2 10.0.0.1",
                              "show inetcidr-table  1  ::/8 0 ",
                              "show inetcidr6-table  10.0.0.0/8 2 ::", "show inetcidr6-table vrf red  ::/8 2 ::"};
    for (const char* command : commands) {
        log_.clear();
        EXPECT_FALSE(show(switch_, table, command, 7, record, false)) << command;
        ASSERT_EQ(log_.size(), 1u) << command;
        EXPECT_TRUE(contains(log_[0], "contradict")) << log_[0];
    }
}

// --- Snooping --------------------------------------------------------------------------------------------------------

struct Twin {
    std::uint32_t type;
    std::string tables, lines, immediate, designate, forbid, no_limit, group, source;
    Index group_index, source_index;
};

const Twin kTwins[] = {
    {1,
     "mgmdIgmpSnp",
     "ip igmp snooping",
     "immediate-leave",
     "debugging igmp snooping snmp designate mrouter",
     "debugging igmp snooping snmp not mrouter",
     "no limit filter vlan 10",
     "239.9.9.9",
     "10.0.0.7",
     {1, 4, 239, 9, 9, 9},
     {1, 4, 10, 0, 0, 7}},
    {2,
     "mgmdMldSnp",
     "ipv6 mld snooping",
     "fast-leave",
     "debugging mld snooping snmp mrouter",
     "debugging mld snooping snmp mrouter forbidden",
     "no ipv6 mld snooping limit vlan 10",
     "ff0e::9",
     "fe80::7",
     {2, 16, 0xff, 0x0e, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9},
     {2, 16, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7}},
};

TEST_F(SwitchTables, SnoopingOfAVlanReadsBack) {
    for (const Twin& twin : kTwins) {
        SCOPED_TRACE(twin.tables);
        const Index vlan10{1034, twin.type};
        const std::pair<std::string, int> flags[] = {{twin.lines, 2},
                                                     {twin.lines + " querier", 3},
                                                     {twin.lines + " " + twin.immediate, 5},
                                                     {twin.lines + " host-based fast-leave", 7}};
        for (const auto& [line, magic] : flags)
            for (const bool on : {false, true}) {
                const auto before = snapshot();
                apply("interface vlan10", on ? line : "no " + line);
                EXPECT_EQ(as_number(cell(twin.tables + "Table", magic, vlan10)), on ? 1u : 2u) << line;
                // It is the only one that changes, but for the querier's own column.
                auto after = snapshot();
                std::size_t changed = 0;
                for (const auto& [name, value] : after) changed += before.at(name) != value;
                EXPECT_LE(changed, magic == 3 ? 2u : 1u) << line;
            }
        apply("interface vlan10", twin.designate + " 1034  1 0 -2147483648");
        apply("interface vlan10", twin.forbid + " 1034  0 513 0");
        EXPECT_EQ(cell(twin.tables + "MrouterTable", 3, vlan10), Value("\1\0\0\0\0\0\0\0\0\0\0\x80", 12));
        EXPECT_EQ(cell(twin.tables + "MrouterTable", 5, vlan10), Value("\0\0\0\0\1\2\0\0\0\0\0\0", 12));
        EXPECT_EQ(cell(twin.tables + "MrouterTable", 4, vlan10), ports({25}));
        apply("interface vlan10", twin.forbid + " 1034  -2147483648 0 0");  // octet 3: port 25
        EXPECT_EQ(cell(twin.tables + "MrouterTable", 4, vlan10), ports({}));
    }
    EXPECT_EQ(log_, Log());
}

TEST_F(SwitchTables, SnoopingRowsOfPortsComeAndGo) {
    for (const Twin& twin : kTwins) {
        SCOPED_TRACE(twin.tables);
        const Index on_port = join({{5122, 1034}, twin.group_index}), from = join({on_port, twin.source_index});
        const std::string group = twin.lines + " static-group " + twin.group;
        now_ = std::chrono::seconds(20);
        apply("interface vlan10", group + " interface port2");
        now_ = std::chrono::seconds(21);
        EXPECT_EQ(as_number(cell(twin.tables + "GroupTable", 5, on_port)), 1u);
        EXPECT_EQ(as_number(cell(twin.tables + "GroupTable", 7, on_port)), 100u);
        EXPECT_FALSE(cell(twin.tables + "GroupSrcTable", 2, from));
        apply("interface vlan10", group + " source " + twin.source + " interface port2");
        EXPECT_EQ(as_number(cell(twin.tables + "GroupSrcTable", 2, from)), 1u);
        apply("interface vlan10", "no " + group + " interface port2");
        EXPECT_FALSE(cell(twin.tables + "GroupTable", 5, on_port));
        EXPECT_TRUE(cell(twin.tables + "GroupSrcTable", 2, from));
        apply("interface vlan10", "no " + group + " source " + twin.source + " interface port2");
        EXPECT_FALSE(cell(twin.tables + "GroupSrcTable", 2, from));

        const Index row{5122, 1034, twin.type};
        apply("interface port2", twin.lines + " limit 2048 vlan 10");
        EXPECT_EQ(as_number(cell(twin.tables + "FilterTable", 4, row)), 2048u);
        apply("interface port2", twin.no_limit);
        EXPECT_FALSE(cell(twin.tables + "FilterTable", 4, row));
        apply("interface port2", twin.lines + " access-group channels vlan 10");
        EXPECT_EQ(cell(twin.tables + "AccGrpTable", 4, row), "channels");
        apply("interface port2", "no " + twin.lines + " access-group channels vlan 10");
        EXPECT_FALSE(cell(twin.tables + "AccGrpTable", 4, row));
    }
    EXPECT_EQ(log_, Log());
}

TEST_F(SwitchTables, SnoopingTimersAndCountersMove) {
    for (const Twin& twin : kTwins) {
        const Index learned = join({{5125, 1034}, walk(snooping_tables(twin.type)[8], 4).rbegin()->first});
        Index group = learned;
        group.erase(group.begin() + 2);  // the VLAN interface in front of the group
        now_ = std::chrono::seconds(100);
        EXPECT_EQ(as_number(cell(twin.tables + "GroupTable", 7, group)), 10000u);
        EXPECT_EQ(as_number(cell(twin.tables + "GroupTable", 8, group)), 16000u);
        const std::uint32_t count = as_number(cell(twin.tables + "StatisticTable", 4, {5125, 1034, twin.type}));
        now_ = std::chrono::seconds(135);  // a query, and an answer, later
        EXPECT_EQ(as_number(cell(twin.tables + "GroupTable", 8, group)), 25000u);
        EXPECT_GT(as_number(cell(twin.tables + "StatisticTable", 4, {5125, 1034, twin.type})), count);
        now_ = {};
    }
}

// The library forces an address's type in the key, but not in the command's text: a walk from the index of another type
// goes on behind it, and finds nothing under it.
TEST_F(SwitchTables, WalksGoOnFromAddressesOfOtherTypes) {
    const Asked groups = snooping_tables(1)[5];
    const auto rows = walk(groups, 5);
    const Index first = rows.begin()->first, second = std::next(rows.begin())->first;
    const auto ask_for = [&](const std::string& address, std::uint32_t length, bool exact) -> Index {
        Key key(36);
        const std::uint32_t fields[] = {first[0], first[1], 1, length};
        std::memcpy(key.data(), fields, sizeof fields);
        key[16] = 0xff;
        const std::string command =
            fmt::format("show debugging igmp snooping snmp group {} {} 1 {}", first[0], first[1], address);
        return show(switch_, groups.name, command, 5, key, exact) ? groups.index(key) : Index();
    };
    EXPECT_EQ(ask_for("0.0.0.0", 0, false), first);
    EXPECT_EQ(ask_for("ff00::", 16, false), second);
    EXPECT_EQ(ask_for(" ", 0, false), second);
    EXPECT_EQ(ask_for("ff00::", 16, true), Index());
    EXPECT_EQ(log_, Log());
    EXPECT_EQ(ask_for("239.1.1.1", 4, false), Index());
    EXPECT_EQ(log_.size(), 1u);  // the key has another group
}

// --- All of them -----------------------------------------------------------------------------------------------------

TEST_F(SwitchTables, RefusedLinesSayWhyAndChangeNothing) {
    const struct {
        const char *enter, *line, *reason;  // without a line, the first one is refused
    } cases[] = {
        {"vlan 0", nullptr, "'0' does not fit"},
        {"vlan 4095", nullptr, "'4095' does not fit"},
        {"no vlan 1", nullptr, "default VLAN"},
        {"no vlan 99", nullptr, "no such VLAN"},
        {"vlan 10", "name 123456789012345678901234567890123", "at most 32"},
        {"vlan 10", "shutdown", "unknown in VLAN mode"},
        {"interface vlan10", "switchport access vlan 20", "vlan10 is no switch port"},
        {"interface port1", "switchport access vlan 99", "no such VLAN"},
        {"interface port1", "switchport hybrid allowed vlan add tagged 10", "another mode"},
        {"interface port13", "switchport access vlan 10", "another mode"},
        {"interface port13", "no switchport access vlan", "another mode"},
        {"interface port13", "switchport trunk allowed vlan add 10", "another mode"},
        {"interface port13", "switchport hybrid allowed vlan remove 30", "not in that VLAN"},
        {"interface port17", "switchport hybrid allowed vlan add tagged 10", "sends no tags"},
        {"interface port17", "switchport hybrid native vlan 5137", "'5137' does not fit"},
        {"interface port25", "switchport trunk native vlan 99", "no such VLAN"},
        {"interface port25", "switchport hybrid native vlan 10", "another mode"},
        {"interface port1", "acceptable-frame none", "'none' does not fit"},
        {"vrf context blue", nullptr, "no such VRF"},
        {"vrf context red", "ip route 10.0.0.0/8 0.0.0.0", "no host"},
        {"vrf context red", "no ip route 0.0.0.0/0 192.0.2.254", "no such static route"},
        {"ip route 10.0.0.1/8 192.0.2.9", nullptr, "after its prefix"},
        {"ip route 10.0.0.0/8 fe80::1", nullptr, "'fe80::1' does not fit"},
        {"ip route 10.0.0.0/8 192.0.2.9 256", nullptr, "'256' does not fit"},
        {"ip route 198.51.100.0/24 10.0.10.2", nullptr, "no static one"},
        {"no ip route 198.51.100.0/24 10.0.10.2", nullptr, "no such static route"},
        {"no ip route 10.0.0.0/8 192.0.2.9", nullptr, "no such static route"},
        {"ipv6 route 2001:db8::/32  vlan 99 fe80::1", nullptr, "no such VLAN"},
        {"ipv6 route 2001:db8::/32  tunnel 128 fe80::1", nullptr, "no such tunnel"},
        {"ipv6 route 2001:db8::/32 ::", nullptr, "no host"},
        {"interface port1", "ip igmp snooping", "port1 is no VLAN interface"},
        {"interface vlan10", "ip igmp snooping fast-leave", "'fast-leave' does not fit"},
        {"interface vlan10", "debugging igmp snooping snmp designate mrouter 1025  1 0 0", "another interface"},
        {"interface vlan10", "debugging mld snooping snmp mrouter 1034  1 0", "ends too early"},
        {"interface vlan10", "ip igmp snooping static-group 240.0.0.1 interface port1", "no multicast address"},
        {"interface vlan10", "ip igmp snooping static-group ff0e::1 interface port1", "'ff0e::1' does not fit"},
        {"interface vlan10", "ipv6 mld snooping static-group fe80::1 interface port1", "no multicast address"},
        {"interface vlan10", "ip igmp snooping static-group 239.0.0.1 interface vlan1", "no such port"},
        {"interface vlan10", "ip igmp snooping static-group 239.0.0.1 interface ", "ends too early"},
        {"interface vlan10", "no ip igmp snooping static-group 239.1.0.2 interface port5", "no such static group"},
        {"interface port1", "ip igmp snooping limit 2049 vlan 10", "'2049' does not fit"},
        {"interface port1", "ip igmp snooping limit 0 vlan 10", "'0' does not fit"},
        {"interface port1", "ip igmp snooping limit 1 vlan 99", "no such VLAN"},
        {"interface port1", "no limit filter vlan 99", "no such VLAN"},
        {"interface port1", "ipv6 mld snooping access-group 123456789012345678901234567890123 vlan 10", "at most 32"},
        {"interface port6", "no ip igmp snooping access-group others vlan 10", "no such access group"},
    };
    const auto before = snapshot();
    for (const auto& item : cases) {
        SCOPED_TRACE(item.line != nullptr ? item.line : item.enter);
        log_.clear();
        EXPECT_EQ(configure(kGlobal, item.enter), item.line != nullptr);
        if (item.line != nullptr) {
            EXPECT_FALSE(configure(kEntered, item.line));
        }
        ASSERT_EQ(log_.size(), 1u);
        EXPECT_TRUE(contains(log_[0], item.reason)) << log_[0];
    }
    EXPECT_EQ(snapshot(), before);
}

class LargeTables : public SwitchTables {
protected:
    LargeTables() : large_{{[this] { return now_; }, {}, {.vlans = 4094, .routes = 10000, .groups = 10000}}} {}
    std::size_t rows(const Asked& table, int magic) {
        std::size_t count = 0;
        Key key(table.key_size);
        for (;; ++count) {
            Key asked(table.key_size);
            if (table.type != 0) std::memcpy(&key[table.type_at], &table.type, sizeof table.type);
            const std::string command = table.command(table.index(key));
            if (!table.is_record) asked = key;
            if (!show(large_, table.name, command, magic, asked, false)) return count;
            key = asked;
        }
    }
    SimulatedSwitch large_;
};

TEST_F(LargeTables, AreAsLargeAsAskedFor) {
    EXPECT_EQ(rows(vlan_tables()[1], 1), 4094u);
    EXPECT_EQ(rows(routes("", 0), 7), 10000u);
    for (const std::uint32_t type : {1u, 2u}) {
        const auto tables = snooping_tables(type);
        for (const std::size_t table : {5u, 6u, 7u}) EXPECT_EQ(rows(tables[table], table == 6 ? 2 : 5), 10000u);
    }
}

}  // namespace
}  // namespace sw
