// A module with a table for each thing that the framework can do, so that its steps are tested apart from what the
// switch's own modules happen to use.
#define MODULE probe
#include "framework/module.h"
#include "framework/write.h"

#include <cstring>

namespace switchmib::MODULE {

MODULE_OID(kVendor, 99, 1);

unsigned char own_result[12];

unsigned char* seven(const Read& read) {
    static std::int32_t cell;
    cell = 7;
    *read.value_length = sizeof cell;
    return reinterpret_cast<unsigned char*>(&cell);
}

constexpr Scalars probeGlobals{
    .name = "probeGlobals",
    .text = "show probe",
    .result = own_result,
    .scalars =
        {
            {{1, 1}, "probeShown", Integer, ReadOnly},
            {{1, 2}, "probeOwnText", Integer, ReadOnly, shows("show probe two")},
            {{1, 3}, "probeNever", Integer, ReadWrite, refuses(), never},
            {{1, 4}, "probeComputed", Integer, ReadOnly, cleared, computes(seven)},
        },
};

constexpr Scalars probeFormedGlobals{
    .name = "probeFormedGlobals",
    .command = [](const Read& read) { return Command("show probe %d", read.entry->magic); },
    .scalars = {{{1, 5}, "probeFormed", Integer, ReadOnly}},
};

// One table for each index kind, and a text key that shows the bytes of the field.
#define KIND_TABLE(TABLE_NAME, Key, number, command_of_key)                                             \
    TABLE(Key, TABLE_NAME, 2, number, 1);                                                               \
    constexpr Table<Key> Key##Table {                                                                   \
        .id = TABLE_NAME, .command = command_of_key, .columns = {{1, #Key "Value", Integer, ReadOnly}}, \
    }

struct Two {
    std::uint32_t first;
    std::uint32_t second;
    std::uint32_t after;  // part of the backend's key, not of the index
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};
struct MacAfterInteger {
    std::uint32_t vlan;
    Mac mac;
    static constexpr Kind index[] = {Kind::integer, Kind::mac};
};
struct Texts {
    InetText text;
    static constexpr Kind index[] = {Kind::inet_text};
};
struct Policy {
    InetPrefix destination;
    std::uint32_t policy;
    InetAddress next_hop;
    static constexpr Kind index[] = {Kind::prefix, Kind::object_id, Kind::address};
};
struct OnInterface {
    InetPairOnInterface pair;
    static constexpr Kind index[] = {Kind::pair_on_interface};
};
struct Pair {
    std::uint32_t ifindex;
    InetAddress group;
    InetAddress source;
    static constexpr Kind index[] = {Kind::integer, Kind::address_pair};
};
struct Stream {
    std::uint32_t first;
    Octets<8> id;
    std::uint32_t last;
    static constexpr Kind index[] = {Kind::integer, Kind::fixed_string(8), Kind::integer};
};
struct Protocol {
    std::uint32_t frame_type;
    Octets<2> value;
    static constexpr Kind index[] = {Kind::integer, Kind::counted_string(2)};
};

KIND_TABLE(PROBETWOTABLE, Two, 1,
           [](const Two& key) { return Command("two %u %u %u", key.first, key.second, key.after); });
KIND_TABLE(PROBEMACTABLE, MacAfterInteger, 2, [](const MacAfterInteger& key) {
    return Command("mac %u %02x%02x", key.vlan, key.mac.octets[0], key.mac.octets[5]);
});
KIND_TABLE(PROBETEXTTABLE, Texts, 3, [](const Texts& key) {
    return Command("text %u %.64s %u", key.text.type, key.text.text, key.text.prefix_length);
});
KIND_TABLE(PROBEPOLICYTABLE, Policy, 4, [](const Policy& key) {
    return Command("policy %u %u/%u %u %u %u", key.destination.address.type, key.destination.address.octets[3],
                   key.destination.length, key.policy, key.next_hop.type, key.next_hop.octets[3]);
});
KIND_TABLE(PROBEONINTERFACETABLE, OnInterface, 5, [](const OnInterface& key) {
    return Command("on %u.%u %u %u.%u", key.pair.first.type, key.pair.first.octets[3], key.pair.ifindex,
                   key.pair.second.type, key.pair.second.octets[3]);
});
KIND_TABLE(PROBEPAIRTABLE, Pair, 6, [](const Pair& key) {
    return Command("pair %u %u.%u %u.%u", key.ifindex, key.group.type, key.group.octets[3], key.source.type,
                   key.source.octets[3]);
});
KIND_TABLE(PROBESTREAMTABLE, Stream, 7, [](const Stream& key) {
    return Command("stream %u %02x%02x %u", key.first, key.id.octets[0], key.id.octets[7], key.last);
});
KIND_TABLE(PROBEPROTOCOLTABLE, Protocol, 8, [](const Protocol& key) {
    return Command("protocol %u %02x%02x", key.frame_type, key.value.octets[0], key.value.octets[1]);
});

// Everything at once: another request class, the index count, a row record, a row filter, a trace, refused commands.
struct Record {
    std::uint32_t zero;
    std::uint32_t number;
};
struct Number {
    std::uint32_t number;
    std::uint32_t forced;
    static constexpr Kind index[] = {Kind::integer};
};

TABLE(probeOddTable, PROBEODDTABLE, 3, 1);

Error write_probeOdd(Set& set) {
    std::uint32_t value;
    Number row;
    TRY(set.unsigned32(value));
    TRY(set.row(row));
    if (!set.acting()) return noError;
    if (row.number == 4) return set.executive({"probe %u", row.number});
    return set.global({"odd %u %u", row.number, value});
}

constexpr Table<Number, Record> probeOddTable{
    .id = PROBEODDTABLE,
    .accepts = [](Number& key, const Read&) { return key.number <= 100; },
    .command =
        [](Number& key, const Read&) {
            key.forced = 5;
            return key.number == 13 ? Command(no_answer) : Command("odd %u %u", key.number, key.forced);
        },
    .fill = [](const Number& key, Record& record) { record.number = key.number; },
    .take = [](const Record& record, Number& key) { key.number = record.number; },
    .formed = [](const Read& read, const char*,
                 const Command&) { anprintf(1, 0, 101, 0, "odd %d\n", read.entry->magic); },
    .bad_index = [](const Read&, const char*, int result) { anprintf(1, 0, 104, 0, "bad index %d\n", result); },
    .shown = [](const Read&, const char*, const Number& key,
                bool answered) { anprintf(1, 0, 101, 0, "%s %u\n", answered ? "row" : "none", key.number); },
    .request_class = 16384,
    .counts_index = true,
    .columns =
        {
            {1, "probeOddNever", Integer, ReadOnly, never},
            {2, "probeOdd", Unsigned32, ReadWrite, WRITER(write_probeOdd)},
            {3, "probeOddCleared", Integer, ReadOnly, cleared},
            {4, "probeOddText", Integer, ReadOnly, shows("odd text")},
        },
};

// A table that the library answers itself: rows 1 and 2.
TABLE(probeComputedTable, PROBECOMPUTEDTABLE, 4, 1);

struct Version {
    std::uint32_t version;
    static constexpr Kind index[] = {Kind::integer};
};

constexpr Table<Version> probeComputedTable{
    .id = PROBECOMPUTEDTABLE,
    .fetch = [](Version& key, const Read& read, const void*) -> unsigned char* {
        if (!read.exact) ++key.version;
        return key.version == 1 || key.version == 2 ? seven(read) : nullptr;
    },
    .columns = {{1, "probeComputedValue", Integer, ReadOnly}},
};

MODULE_END(18, probeGlobals, probeFormedGlobals, TwoTable, MacAfterIntegerTable, TextsTable, PolicyTable,
           OnInterfaceTable, PairTable, StreamTable, ProtocolTable, probeOddTable, probeComputedTable);

}  // namespace switchmib::MODULE
