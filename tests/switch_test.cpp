// The simulated switch: its table store over keys of every sort, its command line, and the two over the model.
#include "support/simulated_switch.h"

#include "switch/table_store.h"

#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace sw {
namespace {

// --- The table store -------------------------------------------------------------------------------------------------

struct KeySample {
    const char* what;
    KeyLayout layout;
    std::size_t size;            // as a compiler lays it out
    std::vector<Index> indexes;  // in order
};

std::vector<KeySample> key_samples() {
    const Index v4_low{1, 4, 9, 0, 0, 255}, v4_high{1, 4, 10, 0, 0, 1};
    const Index v6{2, 16, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    const auto join = [](std::vector<Index> parts) {
        Index joined;
        for (const Index& part : parts) joined.insert(joined.end(), part.begin(), part.end());
        return joined;
    };
    return {
        {"integer", {{2}}, 4, {{1}, {2}, {255}, {256}, {0x80000000}, {0xffffffff}}},
        {"integer, MAC", {{2}, {6}}, 12, {{1, 0, 255, 0, 0, 0, 0}, {1, 2, 0, 0, 0, 0, 1}, {256, 0, 0, 0, 0, 0, 1}}},
        {"integer, address", {{2}, {10}}, 32, {{7, 0, 0}, join({{7}, v4_low}), join({{7}, v4_high}), join({{7}, v6})}},
        {"prefix, policy, address",
         {{11}, {8}, {10}},
         64,
         {join({v4_low, {24, 2, 0, 0}, v4_low}), join({v4_low, {24, 2, 0, 0}, v4_high}),
          join({v4_low, {32, 2, 0, 0}, v4_low}), join({v6, {64, 2, 0, 0}, v6})}},
        {"address pair",
         {{2}, {13}},
         60,
         {join({{1}, v4_low, v4_high}), join({{1}, v4_high, v4_low}), join({{1}, v6, v6})}},
        {"addresses, interface", {{12}}, 60, {join({v4_low, {5121, 0}}), join({v4_low, {5121, 4, 1, 2, 3, 4}})}},
        {"counted string", {{2}, {14, 2}, {2}}, 12, {{1, 2, 8, 0, 3}, {1, 2, 8, 6, 2}, {3, 2, 0, 1, 1}}},
        {"fixed string", {{2}, {0, 8}}, 12, {{1, 0, 0, 0, 0, 0, 0, 0, 255}, {1, 1, 2, 3, 4, 5, 6, 7, 8}}},
        {"record longer than its index", {{{2}}, 8}, 8, {{1}, {2}}},
    };
}

// A GETNEXT from a clear key and on from each answered one meets every row once, in the order of the indexes, and a GET
// of each answered key has the same value.
TEST(TableStore, WalksEveryKindOfKeyInIndexOrder) {
    for (const KeySample& sample : key_samples()) {
        SCOPED_TRACE(sample.what);
        ASSERT_EQ(sample.layout.size(), sample.size);
        std::map<Index, std::uint32_t> rows;
        for (std::size_t i = sample.indexes.size(); i-- > 0;) rows[sample.indexes[i]] = static_cast<std::uint32_t>(i);
        TableStore store({});
        store.add({.name = "t",
                   .show = "show",
                   .key = sample.layout,
                   .rows = rows_of(rows, {{1, "value", [](std::uint32_t row) { return row; }}})});
        Key key(sample.size);
        for (std::size_t i = 0; i < sample.indexes.size(); ++i) {
            EXPECT_EQ(as_number(show(store, "t", "show", 1, key, false)), i);
            EXPECT_EQ(sample.layout.encode(key.data()), sample.indexes[i]);
            EXPECT_EQ(as_number(show(store, "t", "show", 1, key, true)), i);
        }
        EXPECT_FALSE(show(store, "t", "show", 1, key, false));
    }
}

TEST(TableStore, LooksAtNoOtherRowsOfALargeTable) {
    constexpr std::uint32_t kRows = 10000;
    std::map<Index, std::uint32_t> rows;
    for (std::uint32_t i = 0; i < kRows; ++i) rows[{1 + i % 100, 2, 0, 0, 0, i / 256, i % 256}] = i;
    std::uint32_t looked_at = 0;
    TableStore store({});
    store.add({.name = "fdb",
               .show = "show",
               .key = {kInteger, kMac},
               .rows = rows_of(rows, {{1, "value", [&](std::uint32_t row) {
                                           ++looked_at;
                                           return row;
                                       }}})});
    Key key(12);
    std::uint32_t visited = 0;
    while (show(store, "fdb", "show", 1, key, false)) ++visited;
    EXPECT_EQ(visited, kRows);
    EXPECT_EQ(looked_at, kRows);
}

class SmallStore : public testing::Test {
protected:
    SmallStore() {
        store_.add({.name = "t",
                    .show = "show t [{int}]",
                    .rows = rows_of(rows_, {{1, "value", [](std::uint32_t row) { return row; }},
                                            {2, "sparse",
                                             [](std::uint32_t row) -> std::optional<std::uint32_t> {
                                                 if (row % 20 != 0) return {};
                                                 return row;
                                             }},
                                            {3, "long", Value(100, 'x')}})});
    }
    std::optional<Value> ask(const std::string& name, const std::string& command, int magic, std::uint32_t index,
                             bool exact, std::size_t key_size = 4, int result_size = 64) {
        Key key(key_size);
        std::memcpy(key.data(), &index, sizeof index);
        const auto value = show(store_, name, command, magic, key, exact, result_size);
        std::memcpy(&answered_, key.data(), sizeof answered_);
        return value;
    }

    const std::map<std::uint32_t, std::uint32_t> rows_{{0, 5}, {1, 10}, {2, 20}, {3, 30}, {4, 40}};
    Log log_;
    std::uint32_t answered_ = 0;
    TableStore store_{[this](const std::string& line) { log_.push_back(line); }};
};

TEST_F(SmallStore, AnswersFirstNextAndExactRows) {
    EXPECT_EQ(as_number(ask("t", "show t", 1, 0, false)), 10u);
    EXPECT_EQ(as_number(ask("t", "show t 3", 1, 3, false)), 40u);
    EXPECT_EQ(as_number(ask("t", "show t 3", 1, 3, true)), 30u);
    // A row without a value in the column is passed over, and has none for a GET.
    EXPECT_EQ(as_number(ask("t", "show t", 2, 0, false)), 20u);
    EXPECT_EQ(answered_, 2u);
    EXPECT_FALSE(ask("t", "show t 1", 2, 1, true));
    // No row has a clear key, which means the first row of a GETNEXT: no walk could come past it.
    EXPECT_FALSE(ask("t", "show t", 1, 0, true));
    // No such row: nothing to complain of, and the key stays.
    EXPECT_FALSE(ask("t", "show t 9", 1, 9, true));
    EXPECT_FALSE(ask("t", "show t 4", 1, 4, false));
    EXPECT_EQ(answered_, 4u);
    EXPECT_FALSE(ask("t", "show t -1", 1, 0xffffffff, false));
    EXPECT_EQ(log_, Log());
}

TEST_F(SmallStore, RefusesWhatDoesNotFitAndSaysWhy) {
    const struct {
        std::string name, command;
        int magic;
        std::uint32_t index;
        std::size_t key_size;
        std::string reason;
    } cases[] = {
        {"u", "show t 1", 1, 1, 4, "no such table"},
        {"t", "show t 1", 9, 1, 4, "no such column"},
        {"t", "show u 1", 1, 1, 4, "expected 'show t [{int}]'"},
        {"t", "show t", 1, 1, 4, "its key names row 1"},
        {"t", "show t 0", 1, 0, 4, "its key names row 0"},
        {"t", "show t 2", 1, 1, 4, "its key names row 1"},
        {"t", "show t 1", 1, 1, 8, "8 octets instead of 4"},
        {"t", "show t 1", 3, 1, 4, "100 octets, and there is room for 64"},
    };
    for (const auto& refused : cases) {
        log_.clear();
        EXPECT_FALSE(ask(refused.name, refused.command, refused.magic, refused.index, true, refused.key_size));
        ASSERT_EQ(log_.size(), 1u) << refused.reason;
        EXPECT_TRUE(contains(log_[0], refused.reason)) << log_[0];
        EXPECT_TRUE(contains(log_[0], refused.command)) << log_[0];
    }
}

// --- Patterns --------------------------------------------------------------------------------------------------------

TEST(Pattern, FitsLinesFromEndToEnd) {
    const struct {
        const char *pattern, *line;
        std::optional<std::vector<std::string>> arguments;  // none: the line doesn't fit
    } cases[] = {
        {"no shutdown", "no shutdown", {{}}},
        {"no shutdown", "  no   shutdown ", {{}}},
        {"no shutdown", "no", {}},
        {"no shutdown", "no shutdown now", {}},
        {"no shutdown", "No shutdown", {}},
        {"speed auto [10|10,100] [copper|fiber]", "speed auto", {{"", ""}}},
        {"speed auto [10|10,100] [copper|fiber]", "speed auto fiber", {{"", "fiber"}}},
        {"speed auto [10|10,100] [copper|fiber]", "speed auto 10,100 copper", {{"10,100", "copper"}}},
        {"speed auto [10|10,100] [copper|fiber]", "speed auto copper 10", {}},
        {"size {64..128}", "size 64", {{"64"}}},
        {"size {64..128}", "size 129", {}},
        {"size {64..128}", "size -64", {}},
        {"size {64..128}", "size 064", {}},
        {"size {64..128}", "size 64k", {}},
        {"size {64..128}", "size 99999999999999999999", {}},
        {"index {int}", "index -2147483648", {{"-2147483648"}}},
        {"index {int}", "index 4294967296", {}},
        {"interface vlan{1..4094}", "interface vlan4094", {{"4094"}}},
        {"interface vlan{1..4094}", "interface vlan", {}},
        {"interface {word}", "interface", {}},
        {"ip route {ipv4/bits} {ipv4} [{0..255}]", "ip route  10.0.0.0/8  10.0.0.1 ", {{"10.0.0.0/8", "10.0.0.1", ""}}},
        {"ip route {ipv4/bits} {ipv4} [{0..255}]", "ip route 10.0.0.0/8 10.0.0.1 7", {{"10.0.0.0/8", "10.0.0.1", "7"}}},
        {"ip route {ipv4/bits} {ipv4} [{0..255}]", "ip route 10.0.0.0/33 10.0.0.1", {}},
        {"ip route {ipv4/bits} {ipv4} [{0..255}]", "ip route 10.0.0.0/ 10.0.0.1", {}},
        {"ip route {ipv4/bits} {ipv4} [{0..255}]", "ip route 10.0.0/8 10.0.0.1", {}},
        {"ip route {ipv4/bits} {ipv4} [{0..255}]", "ip route ::/8 10.0.0.1", {}},
        {"to [tunnel|vlan {1..9}] {ipv6}", "to vlan 9 fe80::1", {{"vlan", "9", "fe80::1"}}},
        {"to [tunnel|vlan {1..9}] {ipv6}", "to fe80::1", {{"", "", "fe80::1"}}},
        {"to [tunnel|vlan {1..9}] {ipv6}", "to vlan 10 fe80::1", {}},
        {"show [vrf {word}] {int} [{address}]", "show vrf red 1  ::1", {{"red", "1", "::1"}}},
        {"show [vrf {word}] {int} [{address}]", "show  0  ", {{"", "0", ""}}},
        {"desc {text}", "desc  two words ", {{" two words "}}},
        {"desc {text}", "desc ", {}},
    };
    for (const auto& item : cases) {
        const Pattern::Match match = Pattern(item.pattern).match(item.line);
        ASSERT_EQ(match.whole, item.arguments.has_value()) << item.pattern << " / " << item.line;
        if (!match.whole) continue;
        std::vector<std::string> arguments;
        for (const Argument& argument : match.arguments) arguments.emplace_back(argument.text);
        EXPECT_EQ(arguments, *item.arguments) << item.pattern << " / " << item.line;
    }
    EXPECT_EQ(Pattern("{int}").match("-1").arguments[0].number, 0xffffffff);
    using Ids = std::vector<std::uint32_t>;
    EXPECT_EQ(Pattern("{address/bits}").match("10.0.0.255/24").arguments[0].index(), (Ids{1, 4, 10, 0, 0, 255, 24}));
    EXPECT_EQ(Pattern("{address}").match("fe80::1").arguments[0].index(),
              (Ids{2, 16, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    for (const char* malformed :
         {"{text} more", "[copper", "copper]", "[a [b]", "[ a]", "{1..}", "{1..2", "{..}", "{ipv5}"})
        EXPECT_THROW(Pattern{malformed}, std::invalid_argument) << malformed;
}

// --- The switch ------------------------------------------------------------------------------------------------------

struct ShownTable {
    const char *name, *first, *keyed;
    std::uint32_t argument_base;
    std::size_t rows;
    std::string columns;  // the octets of each: 4, 8, or s for a text
};

const ShownTable kIfTable{"ifTable", "show interface_uib interfaces 0", "show interface_uib interfaces ", 0,
                          28,        "4s444s4444444444444448"};
const ShownTable kIfXTable{"ifXTable", "show interface_uib ifMIB 0", "show interface_uib ifMIB ", 0,
                           28,         "s4444888888884444s4"};
const ShownTable kPortTable{"swPortTable", "show swport swport_table", "show swport swport_table ", 0, 26,
                            "44444444444"};
const ShownTable kVlanTable{"nVlanInterfaceTable", "show vlan-interface", "show vlan-interface ", 1024, 2, "44s4"};

class Simulated : public SimulatedSwitchTest {
protected:
    std::optional<Value> cell(const ShownTable& table, int magic, std::uint32_t& index, bool exact) {
        Key key(sizeof index);
        std::memcpy(key.data(), &index, sizeof index);
        const std::string command =
            index == 0 ? table.first
                       : table.keyed + std::to_string(static_cast<std::int32_t>(index + table.argument_base));
        auto value = show(switch_, table.name, command, magic, key, exact);
        std::memcpy(&index, key.data(), sizeof index);
        return value;
    }
    std::optional<Value> get(const ShownTable& table, int magic, std::uint32_t index) {
        return cell(table, magic, index, true);
    }
    std::int32_t integer(const ShownTable& table, int magic, std::uint32_t index) {
        return static_cast<std::int32_t>(as_number(get(table, magic, index)));
    }
    std::optional<Value> lookup(const char* name, const std::string& command, int magic) {
        Key none;
        return show(switch_, name, command, magic, none, true, 4);
    }
    // Everything that the tables say.
    std::map<std::string, Value> snapshot() {
        std::map<std::string, Value> cells;
        for (const ShownTable* table : {&kIfTable, &kIfXTable, &kPortTable, &kVlanTable})
            for (int magic = 1; magic <= static_cast<int>(table->columns.size()); ++magic) {
                std::uint32_t index = 0;
                while (const auto value = cell(*table, magic, index, false))
                    cells[table->name + ("." + std::to_string(magic)) + "." + std::to_string(index)] = *value;
            }
        return cells;
    }
};

TEST_F(Simulated, TablesAreWalkedOnceInOrderAndAgreeWithGet) {
    for (const ShownTable* table : {&kIfTable, &kIfXTable, &kPortTable, &kVlanTable})
        for (std::size_t column = 0; column < table->columns.size(); ++column) {
            SCOPED_TRACE(table->name + (" " + std::to_string(column + 1)));
            const int magic = static_cast<int>(column) + 1;
            std::uint32_t index = 0, before = 0;
            std::size_t rows = 0;
            for (std::optional<Value> value; (value = cell(*table, magic, index, false)); before = index, ++rows) {
                ASSERT_GT(index, before);
                ASSERT_EQ(get(*table, magic, index), value);
                if (table->columns[column] != 's') {
                    ASSERT_EQ(value->size(), std::size_t(table->columns[column] - '0'));
                }
            }
            EXPECT_EQ(rows, table->rows);
        }
    EXPECT_EQ(log_, Log());
    // Index 0 is the first row of a GETNEXT, and none of a GET.
    EXPECT_FALSE(get(kIfTable, 1, 0));
    EXPECT_FALSE(get(kIfXTable, 1, 0));
    EXPECT_FALSE(get(kPortTable, 1, 0));
    EXPECT_FALSE(get(kVlanTable, 1, 0));
    EXPECT_FALSE(get(kVlanTable, 1, 5121 - 1024));
}

TEST_F(Simulated, ScalarsAndPortInformation) {
    EXPECT_EQ(as_number(lookup("interfacesGlobals", "show interface_uib interfaces_g", 1)), 28u);
    EXPECT_EQ(as_number(lookup("switchPortMIBGlobals", "show swport table_number", 1)), 26u);
    EXPECT_FALSE(lookup("switchPortMIBGlobals", "show swport number", 1));
    const auto information = [&](std::uint32_t port, int item) {
        return as_number(lookup("_get_port_info", "show swport type-medium " + std::to_string(5120 + port), item));
    };
    EXPECT_EQ(information(1, 1), 0u);
    EXPECT_EQ(information(1, 2), 1u);
    EXPECT_EQ(information(21, 1), 2u);
    EXPECT_EQ(information(21, 2), 1u);
    EXPECT_EQ(information(22, 2), 2u);
    EXPECT_EQ(information(25, 1), 64u | 1u << 28);
    EXPECT_EQ(information(26, 1), 64u | 128u);
    EXPECT_FALSE(lookup("_get_port_info", "show swport type-medium 5147", 1));
    EXPECT_EQ(switch_.interface_name(5146), "port26");
    EXPECT_EQ(switch_.interface_name(1034), "vlan10");
    EXPECT_FALSE(switch_.interface_name(1035));
}

TEST_F(Simulated, WhatIsSetReadsBack) {
    const struct {
        std::uint32_t port;
        const char* line;
        const ShownTable& table;
        int magic;
        std::int32_t value;
    } cases[] = {
        {1, "shutdown", kIfTable, 7, 2},
        {1, "no shutdown", kIfTable, 7, 1},
        {1, "linktrap 0", kIfXTable, 14, 2},
        {1, "linktrap 1", kIfXTable, 14, 1},
        {1, "duplex full", kPortTable, 2, 1},
        {1, "duplex half", kPortTable, 2, 2},
        {1, "duplex auto", kPortTable, 2, 3},
        {21, "duplex half copper", kPortTable, 2, 2},
        {1, "speed 1000 slave", kPortTable, 4, -2},
        {1, "speed 1000 master", kPortTable, 4, -1},
        {1, "speed 10", kPortTable, 4, 1},
        {1, "speed 10", kPortTable, 5, 1},
        {1, "speed 100", kPortTable, 4, 2},
        {1, "speed 1000", kPortTable, 4, 3},
        {1, "speed auto", kPortTable, 4, 6},
        {1, "speed auto 10", kPortTable, 4, 7},
        {1, "speed auto 100", kPortTable, 4, 8},
        {1, "speed auto 100", kIfXTable, 15, 100},
        {1, "speed auto 1000", kPortTable, 4, 9},
        {1, "speed auto 10,100", kPortTable, 4, 10},
        {1, "speed auto 10,1000", kPortTable, 4, 11},
        {1, "speed auto 100,1000", kPortTable, 4, 12},
        {21, "speed 10 copper", kPortTable, 4, 1},
        {21, "speed 1000 slave copper", kPortTable, 4, -2},
        {21, "speed auto 10,100 copper", kPortTable, 4, 10},
        {22, "speed 1000 fiber", kPortTable, 4, -3},
        {22, "speed auto fiber", kPortTable, 4, 6},
        {1, "flowcontrol send on", kPortTable, 6, 1},
        {1, "flowcontrol receive on", kPortTable, 7, 1},
        {1, "flowcontrol receive on", kPortTable, 8, 3},
        {1, "flowcontrol send off", kPortTable, 6, 0},
        {21, "flowcontrol send on copper", kPortTable, 6, 1},
        {22, "flowcontrol receive on fiber", kPortTable, 7, 1},
        {21, "media-type fiber auto-failover", kPortTable, 9, 1},
        {21, "media-type copper auto-failover", kPortTable, 9, 2},
        {21, "media-type fiber", kPortTable, 9, 3},
        {21, "media-type fiber", kIfTable, 8, 2},  // its cable is copper
        {21, "media-type copper", kPortTable, 9, 4},
        {21, "media-type copper", kIfTable, 8, 1},
        {26, "max-rcv-frame-size 12288", kPortTable, 11, 12288},
    };
    for (const auto& item : cases) {
        const std::uint32_t ifindex = 5120 + item.port;
        ASSERT_TRUE(configure(5, "interface port" + std::to_string(item.port)));
        EXPECT_TRUE(configure(-1, item.line)) << item.line;
        EXPECT_EQ(integer(item.table, item.magic, ifindex), item.value) << item.line;
    }
    EXPECT_TRUE(configure(5, "interface breakout port port25"));
    EXPECT_EQ(integer(kPortTable, 10, 5145), 1);
    EXPECT_TRUE(configure(5, "no interface breakout port port25"));
    EXPECT_EQ(integer(kPortTable, 10, 5145), 2);

    EXPECT_TRUE(configure(5, "interface vlan10"));
    EXPECT_TRUE(configure(-1, "desc uplink to the core"));
    EXPECT_EQ(*get(kIfXTable, 18, 1034), "uplink to the core");
    EXPECT_TRUE(configure(-1, "no desc"));
    EXPECT_EQ(*get(kIfXTable, 18, 1034), "");
    EXPECT_EQ(log_, Log());
}

TEST_F(Simulated, SettingsOfOneMediumLeaveTheOtherAlone) {
    EXPECT_TRUE(configure(5, "interface port21"));
    EXPECT_TRUE(configure(-1, "flowcontrol send on fiber"));
    EXPECT_TRUE(configure(-1, "speed 10 copper"));
    EXPECT_EQ(integer(kPortTable, 6, 5141), 0);
    EXPECT_TRUE(configure(-1, "media-type fiber"));
    EXPECT_EQ(integer(kPortTable, 6, 5141), 1);
    EXPECT_EQ(integer(kPortTable, 4, 5141), 6);
}

TEST_F(Simulated, VlanInterfacesComeAndGo) {
    const auto changed = [&] { return as_number(lookup("ifMIBGlobals", "show interface_uib ifMIB_g", 1)); };
    EXPECT_EQ(changed(), 0u);
    now_ = std::chrono::seconds(5);
    EXPECT_TRUE(configure(5, "interface vlan20"));
    EXPECT_TRUE(configure(-1, "shutdown"));
    EXPECT_EQ(changed(), 500u);
    EXPECT_EQ(integer(kVlanTable, 2, 20), 1044);
    EXPECT_EQ(integer(kIfTable, 7, 1044), 2);
    EXPECT_EQ(integer(kIfXTable, 19, 1044), 500);
    std::uint32_t index = 10;
    EXPECT_EQ(*cell(kVlanTable, 3, index, false), "vlan20");
    now_ = std::chrono::seconds(6);
    EXPECT_TRUE(configure(5, "interface vlan20"));  // just entered
    EXPECT_EQ(changed(), 500u);
    EXPECT_TRUE(configure(5, "no interface vlan20"));
    EXPECT_EQ(changed(), 600u);
    EXPECT_FALSE(get(kVlanTable, 1, 20));
    EXPECT_EQ(as_number(lookup("interfacesGlobals", "show interface_uib interfaces_g", 1)), 28u);
    EXPECT_FALSE(configure(-1, "no shutdown"));
}

TEST_F(Simulated, RefusedLinesSayWhyAndChangeNothing) {
    const struct {
        const char* enter;  // null: nothing is entered before
        int mode;
        const char *line, *reason;
    } cases[] = {
        {nullptr, -1, "shutdown", "no mode was entered"},
        {nullptr, 5, "shutdown", "unknown in global mode"},
        {nullptr, 5, "", "unknown in global mode"},
        {nullptr, 5, "interface port27", "no such interface"},
        {nullptr, 5, "interface vlan0", "no such interface"},
        {nullptr, 5, "interface vlan4095", "no such interface"},
        {nullptr, 5, "interface ", "ends too early, expected 'interface"},
        {nullptr, 5, "no interface vlan20", "no such interface"},
        {nullptr, 5, "no interface port1", "'port1' does not fit"},
        {nullptr, 5, "interface breakout port port1", "cannot be broken out"},
        {nullptr, 5, "interface breakout port vlan1", "no such port"},
        {nullptr, 4, "interface port1", "unknown in executive mode"},
        {nullptr, 3, "interface port1", "no such mode"},
        {"interface port1", -1, "duplex fast", "'fast' does not fit, expected 'duplex full|half|auto"},
        {"interface port1", -1, "duplex full copper", "only a combo port has media"},
        {"interface port1", -1, "linktrap 2", "'2' does not fit"},
        {"interface port1", -1, "speed 2500", "'2500' does not fit"},
        {"interface port1", -1, "media-type copper", "one medium"},
        {"interface port1", -1, "max-rcv-frame-size 63", "'63' does not fit"},
        {"interface port1", -1, "max-rcv-frame-size 12289", "'12289' does not fit"},
        {"interface port1", -1, "max-rcv-frame-size -1", "'-1' does not fit"},
        {"interface port1", -1, "desc", "ends too early"},
        {"interface port1", -1, "interface port2", "unknown in interface mode"},
        {"interface port1", -1, "desc 12345678901234567890123456789012345678901234567890123456789012345", "at most 64"},
        {"interface port21", -1, "duplex full", "names the medium"},
        {"interface port21", -1, "duplex half fiber", "always full duplex"},
        {"interface port21", -1, "speed 1000 copper", "no such speed"},
        {"interface port21", -1, "speed auto 10 fiber", "no such speed"},
        {"interface port25", -1, "speed 1000", "speed cannot be set"},
        {"interface port26", -1, "flowcontrol send on", "flow control cannot be set"},
        {"interface vlan1", -1, "duplex full", "vlan1 is no switch port"},
        {"interface port1", -1, "desc up\nshutdown", "control character"},
        {"interface port1", -1, "desc \r", "control character"},
        {"interface port1", -1, "desc \x7f", "control character"},
        // What does not come to stand in a mode, or in another than meant, is not applied to the last one.
        {"no interface breakout port port25", -1, "shutdown", "no mode was entered"},
    };
    const auto before = snapshot();
    for (const auto& item : cases) {
        SCOPED_TRACE(item.line);
        if (item.enter != nullptr) {
            ASSERT_TRUE(configure(5, item.enter));
        }
        log_.clear();
        EXPECT_FALSE(configure(item.mode, item.line));
        ASSERT_EQ(log_.size(), 1u);
        EXPECT_TRUE(contains(log_[0], item.reason)) << log_[0];
        EXPECT_TRUE(contains(log_[0], escape(item.line))) << log_[0];
        EXPECT_FALSE(has_control_character(log_[0])) << log_[0];
    }
    ASSERT_TRUE(configure(5, "interface port1"));
    EXPECT_FALSE(configure(5, "interface port99"));
    EXPECT_FALSE(configure(-1, "max-rcv-frame-size 9000"));
    EXPECT_EQ(snapshot(), before);
}

TEST_F(Simulated, CountersMoveWithTheClockWhileThePortIsUp) {
    constexpr int kInOctets = 10, kOutOctets = 16, kHighIn = 6;
    const auto high_in = [&](std::uint32_t ifindex) {
        std::uint64_t count = 0;
        std::memcpy(&count, get(kIfXTable, kHighIn, ifindex)->data(), sizeof count);
        return count;
    };
    EXPECT_EQ(integer(kIfTable, kInOctets, 5121), 0);
    now_ = std::chrono::hours(100);
    const std::uint64_t after = high_in(5121);
    EXPECT_GT(after, 0xffffffffu);
    EXPECT_EQ(as_number(get(kIfTable, kInOctets, 5121)), static_cast<std::uint32_t>(after));
    EXPECT_NE(high_in(5122), after);
    EXPECT_EQ(high_in(5124), 0u);  // no cable
    EXPECT_EQ(integer(kIfTable, kOutOctets, 5140), 0);

    // A port that goes down keeps its counts, and goes on from them when it comes back.
    ASSERT_TRUE(configure(5, "interface port1"));
    ASSERT_TRUE(configure(-1, "shutdown"));
    EXPECT_EQ(integer(kIfTable, 8, 5121), 2);
    EXPECT_EQ(integer(kIfTable, 9, 5121), 36'000'000);
    now_ += std::chrono::hours(1);
    EXPECT_EQ(high_in(5121), after);
    ASSERT_TRUE(configure(-1, "no shutdown"));
    EXPECT_EQ(high_in(5121), after);
    now_ += std::chrono::hours(100);
    EXPECT_EQ(high_in(5121), 2 * after);
}

}  // namespace
}  // namespace sw
