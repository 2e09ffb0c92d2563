// The simulated switch's table store over keys of every sort, its patterns, and its command line.
#include "support/simulated_switch.h"
#include "switch/command_line.h"
#include "switch/table_store.h"

#include <fmt/format.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace sw {
namespace {

using Key = std::vector<unsigned char>;
using Log = std::vector<std::string>;

// One show request over memory of its own. `key` is moved by a GETNEXT; an empty one is sent as null.
std::optional<Value> show(const TableStore& store, const std::string& name, const std::string& command, int magic,
                          Key& key, bool exact, int result_size = 512) {
    unsigned char result[512];
    std::size_t length = 0;
    services::ShowRequest request{
        2,     command, result, result_size, &length, key.empty() ? nullptr : key.data(), static_cast<int>(key.size()),
        magic, exact,   0,      name,        1};
    if (!store.show(request)) return {};
    return Value(reinterpret_cast<const char*>(result), length);
}

std::uint32_t as_number(const std::optional<Value>& value) {
    std::uint32_t number = 0;
    EXPECT_TRUE(value && value->size() == sizeof number);
    if (value && value->size() == sizeof number) std::memcpy(&number, value->data(), sizeof number);
    return number;
}

// --- The table store -------------------------------------------------------------------------------------------------

const Index kV6{2, 16, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

// A GETNEXT from a clear key and on from each answered one meets every row once, in the order of the indexes, and a GET
// of each answered key has the same value.
TEST(TableStore, WalksEveryKindOfKeyInIndexOrder) {
    const Index low{1, 4, 9, 0, 0, 255}, high{1, 4, 10, 0, 0, 1};
    const auto prefix = [](const Index& address, oid bits) { return join({address, {bits, 2, 0, 0}}); };
    const struct {
        KeyLayout layout;
        std::size_t size;            // as a compiler lays it out
        std::vector<Index> indexes;  // in order
    } samples[] = {
        {{kInteger}, 4, {{1}, {2}, {255}, {256}, {0x80000000}, {0xffffffff}}},
        {{kInteger, kMac}, 12, {{1, 0, 255, 0, 0, 0, 0}, {1, 2, 0, 0, 0, 0, 1}, {256, 0, 0, 0, 0, 0, 1}}},
        {{kInteger, kAddress}, 32, {{7, 0, 0}, join({{7}, low}), join({{7}, high}), join({{7}, kV6})}},
        {{kPrefix, kPolicy, kAddress},
         64,
         {join({prefix(low, 24), low}), join({prefix(low, 24), high}), join({prefix(low, 32), low}),
          join({prefix(kV6, 64), kV6})}},
        {{kInteger, kAddressPair}, 60, {join({{1}, low, high}), join({{1}, high, low}), join({{1}, kV6, kV6})}},
        {{kAddressesOnInterface}, 60, {join({low, {5121, 0}}), join({low, {5121, 4, 1, 2, 3, 4}})}},
        {{kInteger, counted_string(2), kInteger}, 12, {{1, 2, 8, 0, 3}, {1, 2, 8, 6, 2}, {3, 2, 0, 1, 1}}},
        {{kInteger, fixed_string(8)}, 12, {{1, 0, 0, 0, 0, 0, 0, 0, 255}, {1, 1, 2, 3, 4, 5, 6, 7, 8}}},
        {{{kInteger}, 8}, 8, {{1}, {2}}},  // a record longer than its index
        {{kInteger, kSplitAddress}, 28, {{7, 0, 0}, join({{7}, low}), join({{7}, kV6})}},
    };
    for (const auto& sample : samples) {
        SCOPED_TRACE(fmt::format("{}", fmt::join(sample.indexes[0], ".")));
        ASSERT_EQ(sample.layout.size(), sample.size);
        std::map<Index, std::uint32_t> rows;
        for (std::size_t i = sample.indexes.size(); i-- > 0;) rows[sample.indexes[i]] = static_cast<std::uint32_t>(i);
        TableStore store({});
        const auto value = [](std::uint32_t row) { return row; };
        store.add({.name = "t", .show = "show", .key = sample.layout, .rows = rows_of(rows, {{1, "value", value}})});
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
    const auto look = [&](std::uint32_t row) {
        ++looked_at;
        return row;
    };
    store.add({.name = "t", .show = "show", .key = {kInteger, kMac}, .rows = rows_of(rows, {{1, "value", look}})});
    Key key(12);
    std::uint32_t visited = 0;
    while (show(store, "t", "show", 1, key, false)) ++visited;
    EXPECT_EQ(visited, kRows);
    EXPECT_EQ(looked_at, kRows);
}

class SmallStore : public testing::Test {
protected:
    SmallStore() {
        const auto value = [](std::uint32_t row) { return row; };
        const auto sparse = [](std::uint32_t row) { return row % 20 == 0 ? std::optional(row) : std::nullopt; };
        store_.add(
            {.name = "t",
             .show = "show t [{int}]",
             .rows = rows_of(rows_, {{1, "value", value}, {2, "sparse", sparse}, {3, "long", Value(100, 'x')}})});
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
        {"t", "show t 1", 1, 1, 8, "8 octets, not 4"},
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

// --- The comparison of keys and commands -----------------------------------------------------------------------------

// A command that says something else than the key is refused, whatever its words are.
TEST(TableStore, ComparesEveryPartOfAKeyThatACommandNames) {
    const Index v4{1, 4, 192, 0, 2, 1};
    const struct {
        KeyLayout key;
        const char* pattern;
        Index index;
        std::vector<const char*> fitting, others;
    } cases[] = {
        {{kInteger}, "row [{int}]", {0}, {"row"}, {"row 0", "row 1"}},
        {{kInteger}, "row [{int}]", {7}, {"row 7"}, {"row", "row 8"}},
        {{kInteger}, "row {int+1024}", {7}, {"row 1031"}, {"row 7"}},
        {{kInteger, kInteger}, "row {int:2} {int:1}", {7, 8}, {"row 8 7"}, {"row 7 8"}},
        {{kInteger, kInteger}, "row [vlan {int:2}]", {7, 0}, {"row"}, {"row vlan 0"}},
        // The first part decides; a module may look at all of them.
        {{kInteger, kInteger}, "row [{int} {int}]", {0, 7}, {"row", "row 0 7"}, {"row 0 8"}},
        {{kInteger, kInteger}, "row [{int} {int}]", {7, 0}, {"row 7 0"}, {"row"}},
        {{kInteger, kMac},
         "row {mac} vlan {int:1}",
         {7, 0, 0x1b, 0xff, 3, 4, 5},
         {"row 00-1b-ff-03-04-05 vlan 7", "row 00-1B-FF-03-04-05 vlan 7", "row 00:1b:ff:03:04:05 vlan 7"},
         {"row 00-1b-ff-03-04-06 vlan 7", "row 00-1b-ff-03-04-05 vlan 8", "row 00-1b-ff-03-04 vlan 7",
          "row 00-1b:ff-03-04-05 vlan 7", "row 0-1b-ff-03-04-05 vlan 7", "row 001bff030405 vlan 7"}},
        {{fixed_string(8)},
         "row {octets}",
         {1, 2, 3, 4, 5, 6, 7, 8},
         {"row 01:02:03:04:05:06:07:08"},
         {"row 01:02:03:04:05:06:07:09", "row 01:02:03:04:05:06:07"}},
        {{kInteger, counted_string(2)}, "row {int} {octets}", {1, 2, 8, 6}, {"row 1 08-06"}, {"row 1 08-07"}},
        {{kAddress}, "row {int} [{address}]", v4, {"row 1 192.0.2.1"}, {"row 1 192.0.2.2", "row 1", "row 2 192.0.2.1"}},
        {{kAddress}, "row [{address}]", kV6, {"row fe80::1", "row FE80:0::1"}, {"row fe80::2", "row 0.0.0.1", "row"}},
        {{kAddress}, "row [{address}]", {0, 0}, {"row", "row 0.0.0.0", "row ::"}, {"row 0.0.0.1"}},
        {{kSplitAddress}, "row {int} {address}", v4, {"row 1 192.0.2.1"}, {"row 1 192.0.2.2"}},
        {{kPrefix}, "row {address/bits}", join({v4, {24}}), {"row 192.0.2.1/24"}, {"row 192.0.2.1/25", "row 0/0"}},
        {{kTextPrefix}, "row {int} {address/bits}", {0, 0, 0}, {"row 0 0/0"}, {"row 1 0/0", "row 0 0.0.0.1/0"}},
        {{kAddressPair},
         "row {address} {address}",
         join({v4, {1, 4, 10, 0, 0, 1}}),
         {"row 192.0.2.1 10.0.0.1"},
         {"row 192.0.2.1 192.0.2.1"}},
        {{kAddressesOnInterface},
         "row {int} {address} {int} {address}",
         join({v4, {7, 4, 10, 0, 0, 1}}),
         {"row 1 192.0.2.1 7 10.0.0.1"},
         {"row 1 192.0.2.1 8 10.0.0.1", "row 1 192.0.2.1 7 10.0.0.2"}},
    };
    for (const auto& item : cases) {
        Log log;
        TableStore store([&](const std::string& line) { log.push_back(line); });
        const std::map<Index, int> rows;
        store.add({.name = "t", .show = item.pattern, .key = item.key, .rows = rows_of(rows, {{1, "value", 1}})});
        const auto refused_when = [&](const char* command) {
            Key key(item.key.size());
            item.key.decode(item.index, key.data());
            log.clear();
            EXPECT_FALSE(show(store, "t", command, 1, key, false));
            return !log.empty();
        };
        for (const char* command : item.fitting) EXPECT_FALSE(refused_when(command)) << command << ": " << log[0];
        for (const char* command : item.others) EXPECT_TRUE(refused_when(command)) << command;
    }
    const std::map<Index, int> rows;
    TableStore store({});
    EXPECT_THROW(store.add({.name = "t", .show = "row {mac}", .rows = rows_of(rows, {{1, "value", 1}})}),
                 std::invalid_argument);
}

// The same rows under other indexes, met from every place between them.
TEST(Rows, AreShownUnderOtherIndexes) {
    std::map<std::uint32_t, int> map;
    for (const std::uint32_t n : {1u, 5u, 6u, 9u}) map[n] = 1;
    const Rows rows = rows_of(map, {{1, "value", 1}});
    const struct {
        Rows rows;
        std::vector<Index> indexes;
    } cases[] = {
        {rows.under({3}), {{3, 1}, {3, 5}, {3, 6}, {3, 9}}},
        {rows.ending({2}), {{1, 2}, {5, 2}, {6, 2}, {9, 2}}},
        {rows.within(5, 8), {{5}, {6}}},
        {rows.within(5, 9, 4), {{1}, {2}, {5}}},
    };
    for (const auto& item : cases) {
        std::vector<Index> met;
        for (auto row = item.rows.from(0, {}); row; row = item.rows.after(0, row->index)) met.push_back(row->index);
        EXPECT_EQ(met, item.indexes);
        for (oid first = 0; first < 11; ++first)
            for (oid second = 0; second < 4; ++second)
                for (const Index& index : {Index{first}, Index{first, second}, Index{first, second, 0}}) {
                    const auto at_or_after = std::lower_bound(met.begin(), met.end(), index);
                    const auto found = item.rows.from(0, index);
                    ASSERT_EQ(found ? found->index : Index(), at_or_after == met.end() ? Index() : *at_or_after);
                    ASSERT_EQ(item.rows.at(0, index).has_value(), std::binary_search(met.begin(), met.end(), index));
                }
    }
}

// --- Patterns --------------------------------------------------------------------------------------------------------

TEST(Pattern, FitsLinesFromEndToEnd) {
    using Words = std::vector<std::string>;
    const struct {
        const char* pattern;
        std::vector<std::pair<const char*, Words>> fitting;  // with the arguments
        std::vector<const char*> others;
    } cases[] = {
        {"no shutdown", {{"no shutdown", {}}, {"  no   shutdown ", {}}}, {"no", "no shutdown now", "No shutdown"}},
        {"speed auto [10|10,100] [copper|fiber]",
         {{"speed auto", {"", ""}},
          {"speed auto fiber", {"", "fiber"}},
          {"speed auto 10,100 copper", {"10,100", "copper"}}},
         {"speed auto copper 10"}},
        {"size {64..128}",
         {{"size 64", {"64"}}},
         {"size 129", "size -64", "size 064", "size 64k", "size 99999999999999999999"}},
        {"index {int}", {{"index -2147483648", {"-2147483648"}}}, {"index 4294967296"}},
        {"interface vlan{1..4094}", {{"interface vlan4094", {"4094"}}}, {"interface vlan"}},
        {"interface {word}", {}, {"interface"}},
        {"ip route {ipv4/bits} {ipv4} [{0..255}]",
         {{"ip route  10.0.0.0/8  10.0.0.1 ", {"10.0.0.0/8", "10.0.0.1", ""}},
          {"ip route 10.0.0.0/8 10.0.0.1 7", {"10.0.0.0/8", "10.0.0.1", "7"}}},
         {"ip route 10.0.0.0/33 10.0.0.1", "ip route 10.0.0.0/ 10.0.0.1", "ip route 10.0.0/8 10.0.0.1",
          "ip route ::/8 10.0.0.1"}},
        {"to [tunnel|vlan {1..9}] {ipv6}",
         {{"to vlan 9 fe80::1", {"vlan", "9", "fe80::1"}}, {"to fe80::1", {"", "", "fe80::1"}}},
         {"to vlan 10 fe80::1"}},
        {"show [vrf {word}] {int} [{address}]",
         {{"show vrf red 1  ::1", {"red", "1", "::1"}}, {"show  0  ", {"", "0", ""}}},
         {}},
        {"desc {text}", {{"desc  two words ", {" two words "}}}, {"desc "}},
    };
    for (const auto& item : cases) {
        const Pattern pattern(item.pattern);
        for (const auto& [line, words] : item.fitting) {
            const Pattern::Match match = pattern.match(line);
            EXPECT_TRUE(match.whole) << item.pattern << " / " << line;
            Words arguments;
            for (const Argument& argument : match.arguments) arguments.emplace_back(argument.text);
            EXPECT_EQ(arguments, words) << item.pattern << " / " << line;
        }
        for (const char* line : item.others) EXPECT_FALSE(pattern.match(line).whole) << item.pattern << " / " << line;
    }
    EXPECT_EQ(Pattern("{int}").match("-1").arguments[0].number, 0xffffffff);
    using Ids = std::vector<std::uint32_t>;
    EXPECT_EQ(Pattern("{address/bits}").match("10.0.0.255/24").arguments[0].index(), (Ids{1, 4, 10, 0, 0, 255, 24}));
    EXPECT_EQ(Pattern("{address}").match("fe80::1").arguments[0].index(), kV6);
    for (const char* malformed :
         {"{text} more", "[copper", "copper]", "[a [b]", "[ a]", "{1..}", "{1..2", "{..}", "{ipv5}"})
        EXPECT_THROW(Pattern{malformed}, std::invalid_argument) << malformed;
}

// --- The command line ------------------------------------------------------------------------------------------------

struct Thing {
    bool on = false;
    std::uint32_t size = 0, kind = 0;
    std::string name{};
};

TEST(Lines, SetMembersOfTheirObject) {
    std::map<std::uint32_t, Thing> things{{1, {}}, {2, {}}};
    Log log;
    CommandLine line([&](const std::string& text) { log.push_back(text); });
    const auto run = [&](int mode, const char* text) { return line.run({mode, text, "test", 1}); };
    static constexpr Mode kThing{"thing"};
    const Lines<Thing> thing(line, {kThing}, [&](const Entered& entered) -> Thing& {
        require(things.contains(entered.object), "it is gone");
        return things[entered.object];
    });
    thing.flag("on", &Thing::on);
    thing.number("size {1..9}", &Thing::size);
    thing.choice("kind small|large", &Thing::kind);
    thing.text("name {text}", &Thing::name, 4);
    line.add(kGlobal, "thing {word}",
             [](const Entered&, const Arguments&) -> std::optional<Entered> { refuse("it has no number"); });
    line.add(kGlobal, "thing {int}", [](const Entered&, const Arguments& a) { return Entered{kThing, a[0].number}; });
    line.add(kAny, "anywhere", [](const Entered&, const Arguments&) { return std::nullopt; });

    EXPECT_TRUE(run(5, "thing 2"));  // the more exact pattern takes it
    for (const char* text : {"on", "size 9", "kind large", "name a b", "anywhere"}) EXPECT_TRUE(run(-1, text)) << text;
    const Thing& second = things[2];
    EXPECT_EQ(std::tie(second.on, second.size, second.kind, second.name), std::tuple(true, 9u, 2u, "a b"));
    EXPECT_FALSE(things[1].on);
    EXPECT_TRUE(run(-1, "no on"));
    EXPECT_FALSE(second.on);
    EXPECT_TRUE(log.empty());
    EXPECT_FALSE(run(-1, "name abcde"));
    things.erase(2);
    EXPECT_FALSE(run(-1, "on"));
    EXPECT_TRUE(contains(log.back(), "it is gone")) << log.back();
    EXPECT_FALSE(run(5, "thing one"));
    EXPECT_FALSE(run(-1, "on"));  // nothing is entered
    EXPECT_TRUE(run(-1, "anywhere"));
    EXPECT_FALSE(run(4, "anywhere"));
}

// Settings that the library does not send, or not so.
TEST_F(OnSwitch, TakesLinesOfEitherMedium) {
    ASSERT_TRUE(configure(5, "interface port21"));
    for (const char* line : {"flowcontrol send on fiber", "speed 10 copper"}) EXPECT_TRUE(configure(-1, line)) << line;
    EXPECT_EQ(get("swPortFlowControlSend", {5141}), 0);
    EXPECT_TRUE(configure(-1, "media-type fiber"));
    EXPECT_EQ(get("swPortFlowControlSend", {5141}), 1);
    EXPECT_EQ(get("swPortSpeed", {5141}), 6);
}

TEST_F(OnSwitch, RefusesLinesWithAReasonAndChangesNothing) {
    const char* const port1 = "interface port1";
    const char* const port13 = "interface port13";
    const char* const vlan10 = "interface vlan10";
    const struct {
        const char* enter;  // null: nothing is entered before
        int mode;
        std::vector<const char*> lines;
        const char* reason;
    } cases[] = {
        {nullptr, -1, {"shutdown"}, "no mode was entered"},
        {nullptr, 5, {"shutdown", ""}, "unknown in global mode"},
        {nullptr, 5, {"interface port27", "interface vlan0", "interface vlan4095"}, "no such interface"},
        {nullptr, 5, {"interface "}, "ends too early, expected 'interface"},
        {nullptr, 5, {"no interface vlan20"}, "no such interface"},
        {nullptr, 5, {"no interface port1"}, "'port1' does not fit"},
        {nullptr, 5, {"interface breakout port port1"}, "cannot be broken out"},
        {nullptr, 5, {"interface breakout port vlan1"}, "no such port"},
        {nullptr, 4, {"interface port1"}, "unknown in executive mode"},
        {nullptr, 3, {"interface port1"}, "no such mode"},
        {port1, -1, {"duplex fast"}, "'fast' does not fit, expected 'duplex full|half|auto"},
        {port1, -1, {"linktrap 2", "speed 2500"}, "does not fit"},
        {port1, -1, {"max-rcv-frame-size 63", "max-rcv-frame-size 12289"}, "does not fit"},
        {port1, -1, {"duplex full copper"}, "only a combo port has media"},
        {port1, -1, {"media-type copper"}, "one medium"},
        {port1, -1, {"interface port99"}, "no such interface"},
        {port1, -1, {"desc 12345678901234567890123456789012345678901234567890123456789012345"}, "at most 64"},
        {port1, -1, {"desc up\nshutdown", "desc \x7f"}, "control character"},
        {"interface port21", -1, {"duplex full"}, "names the medium"},
        {"interface port21", -1, {"duplex half fiber"}, "always full duplex"},
        {"interface port21", -1, {"speed 1000 copper", "speed auto 10 fiber"}, "no such speed"},
        {"interface port25", -1, {"speed 1000"}, "speed cannot be set"},
        {"interface port26", -1, {"flowcontrol send on"}, "flow control cannot be set"},
        {"interface vlan1", -1, {"duplex full"}, "vlan1 is not a switch port"},
        // A line whose mode was refused is not applied in the mode that was entered before.
        {"no interface breakout port port25", -1, {"shutdown"}, "no mode was entered"},
        {nullptr, 5, {"vlan 0", "vlan 4095"}, "does not fit"},
        {nullptr, 5, {"no vlan 1"}, "default VLAN"},
        {nullptr, 5, {"no vlan 99"}, "no such VLAN"},
        {"vlan 10", -1, {"name 123456789012345678901234567890123"}, "at most 32"},
        {"vlan 10", -1, {"shutdown"}, "unknown in VLAN mode"},
        {port1, -1, {"switchport hybrid allowed vlan add tagged 10"}, "another mode"},
        {port13, -1, {"switchport access vlan 10", "no switchport access vlan"}, "another mode"},
        {port13, -1, {"switchport trunk allowed vlan add 10"}, "another mode"},
        {port13, -1, {"switchport hybrid allowed vlan remove 30"}, "not in that VLAN"},
        {"interface port17", -1, {"switchport hybrid allowed vlan add tagged 10"}, "sends no tags"},
        {"interface port17", -1, {"switchport hybrid native vlan 5137"}, "'5137' does not fit"},
        {"interface port25", -1, {"switchport hybrid native vlan 10"}, "another mode"},
        {"vrf context red", -1, {"ip route 10.0.0.0/8 0.0.0.0"}, "not a host"},
        {"vrf context red", -1, {"no ip route 0.0.0.0/0 192.0.2.254"}, "no such static route"},
        {nullptr, 5, {"ip route 10.0.0.1/8 192.0.2.9"}, "after its prefix"},
        {nullptr, 5, {"ip route 10.0.0.0/8 fe80::1", "ip route 10.0.0.0/8 192.0.2.9 256"}, "does not fit"},
        {nullptr, 5, {"ip route 198.51.100.0/24 10.0.10.2"}, "not static"},
        {nullptr, 5, {"no ip route 198.51.100.0/24 10.0.10.2"}, "no such static route"},
        {nullptr, 5, {"ipv6 route 2001:db8::/32  vlan 99 fe80::1"}, "no such VLAN"},
        {nullptr, 5, {"ipv6 route 2001:db8::/32  tunnel 128 fe80::1"}, "no such tunnel"},
        {nullptr, 5, {"ipv6 route 2001:db8::/32 ::"}, "not a host"},
        {port1, -1, {"ip igmp snooping"}, "port1 is not a VLAN interface"},
        {vlan10, -1, {"ip igmp snooping fast-leave"}, "'fast-leave' does not fit"},
        {vlan10, -1, {"debugging igmp snooping snmp designate mrouter 1025  1 0 0"}, "another interface"},
        {vlan10, -1, {"ip igmp snooping static-group 240.0.0.1 interface port1"}, "not a multicast address"},
        {vlan10, -1, {"ip igmp snooping static-group ff0e::1 interface port1"}, "'ff0e::1' does not fit"},
        {vlan10, -1, {"ipv6 mld snooping static-group fe80::1 interface port1"}, "not a multicast address"},
        {vlan10, -1, {"ip igmp snooping static-group 239.0.0.1 interface vlan1"}, "no such port"},
        {port1, -1, {"ip igmp snooping limit 2049 vlan 10", "ip igmp snooping limit 0 vlan 10"}, "does not fit"},
        {port1, -1, {"no limit filter vlan 99"}, "no such VLAN"},
        {port1, -1, {"ipv6 mld snooping access-group 123456789012345678901234567890123 vlan 10"}, "at most 32"},
        {"interface port6", -1, {"no ip igmp snooping access-group others vlan 10"}, "no such access group"},
    };
    const auto before = everything();
    for (const auto& item : cases)
        for (const char* line : item.lines) {
            SCOPED_TRACE(line);
            EXPECT_TRUE(item.enter == nullptr || configure(5, item.enter));
            EXPECT_FALSE(configure(item.mode, line));
            ASSERT_EQ(log_.size(), 1u);
            EXPECT_TRUE(contains(log_[0], escape(line))) << log_[0];
            EXPECT_FALSE(has_control_character(log_[0])) << log_[0];
            EXPECT_TRUE(contains(log_[0], item.reason)) << log_[0];
            log_.clear();
        }
    ASSERT_TRUE(configure(5, "interface port1"));
    expect_refused(5, "interface port99", "no such interface");
    expect_refused(-1, "max-rcv-frame-size 9000", "no mode was entered");
    EXPECT_EQ(everything(), before);
}

}  // namespace
}  // namespace sw
