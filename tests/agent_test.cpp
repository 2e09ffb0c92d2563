// The agent over registered objects that a test scripts: encoding, operations, phases of a SET, the socket.
#include "agent/ber.h"
#include "agent/engine.h"
#include "agent/message.h"
#include "agent/output.h"
#include "agent/responder.h"
#include "agent/server.h"
#include "agent/standard_groups.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace tests {
namespace {

using namespace agent;
using ber::Octets;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::ThrowsMessage;

Octets from_hex(const std::string& text) {
    Octets octets;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        octets.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(i, 2), nullptr, 16)));
    return octets;
}

std::string to_hex(const Octets& octets) { return fmt::format("{:02x}", fmt::join(octets, "")); }

Octets octets_of(const std::string& text) { return {text.begin(), text.end()}; }

const Oid kRoot{1, 3, 6, 1, 4, 1, 32473, 7};

Oid below(Oid rest) {
    rest.insert(rest.begin(), kRoot.begin(), kRoot.end());
    return rest;
}

// --- encoding --------------------------------------------------------------------------------------------------------

TEST(Ber, ValuesAreEncodedInTheirShortestForm) {
    const std::vector<std::pair<Value, std::string>> cases{
        {Value::integer(0), "020100"},
        {Value::integer(127), "02017f"},
        {Value::integer(128), "02020080"},
        {Value::integer(-1), "0201ff"},
        {Value::integer(-128), "020180"},
        {Value::integer(-129), "0202ff7f"},
        {Value::integer(2147483647), "02047fffffff"},
        {Value::integer(-2147483647 - 1), "020480000000"},
        {Value::unsigned32(kGauge32, 0), "420100"},
        {Value::unsigned32(kCounter32, 128), "41020080"},
        {Value::unsigned32(kTimeTicks, 4294967295), "430500ffffffff"},
        {Value::counter64(0), "460100"},
        {Value::counter64(0x8000000000000000), "4609008000000000000000"},
        {Value::object_id({0, 0}), "060100"},
        {Value::object_id({1, 39, 128}), "06034f8100"},
        {Value::object_id({2, 999, 3}), "0603883703"},
        {Value::object_id({1, 3, 4294967295}), "06062b8fffffff7f"},
        {Value::object_id(Oid(128, 1)), "067f29" + to_hex(Octets(126, 1))},
        {Value::octet_string(Octets(128, 0)), "048180" + std::string(256, '0')},
        {{kIpAddress, {192, 0, 2, 1}}, "4004c0000201"},
        {{kEndOfMibView, {}}, "8200"},
    };
    for (const auto& [value, hex] : cases) {
        SCOPED_TRACE(hex);
        EXPECT_TRUE(ber::well_formed(value));
        Octets octets;
        ber::append_value(octets, value);
        EXPECT_EQ(to_hex(octets), hex);
        ber::Reader reader(octets);
        EXPECT_EQ(reader.value(), value);
        EXPECT_TRUE(reader.at_end());
    }
}

TEST(Ber, LongerFormsOfTheSameValueAreRead) {
    const std::vector<std::pair<std::string, Value>> cases{
        {"02040000007f", Value::integer(127)},
        {"0284000000017f", Value::integer(127)},
        {"028a000000000000000000017f", Value::integer(127)},
        {"0205ff80000000", Value::integer(-2147483647 - 1)},
        {"020a0000000000000000007f", Value::integer(127)},
        {"4205000000007f", Value::unsigned32(kGauge32, 127)},
        {"420700000000000001", Value::unsigned32(kGauge32, 1)},
        {"4609000000000000000001", Value::counter64(1)},
        {"460b000000ffffffffffffff00", Value::counter64(0xffffffffffffff00)},
    };
    for (const auto& [hex, value] : cases) EXPECT_EQ(ber::Reader(from_hex(hex)).value(), value) << hex;
}

TEST(Ber, WhatIsNotAValueIsRefused) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"no tag, or no length", {"", "02"}},
        {"a length of indefinite form", {"0280010000"}},
        {"a length that is cut short, or more than there is", {"0281", "02ff01", "0202", "020201", "0284ffffffff00"}},
        {"a length beyond 32 bits", {"0285000000000200", "02890000000100000000017f"}},
        {"an INTEGER that is empty, too large, or too small", {"0200", "02050080000000", "0205ff7fffffff"}},
        {"a Gauge32 that is empty, negative, or too large", {"4200", "4201ff", "42050100000000"}},
        {"a Counter64 that is too large", {"4609010000000000000000"}},
        {"an OBJECT IDENTIFIER that is empty or cut short", {"0600", "060181"}},
        {"a sub-identifier that begins with a zero or is too large", {"06028001", "06062b9080808000", "0603888080"}},
        {"an OBJECT IDENTIFIER that is too long", {"068180" + to_hex(Octets(128, 1))}},
        {"an IpAddress of another length", {"400103", "4005c000020100"}},
        {"a NULL or an exception with contents", {"050100", "800100"}},
        {"another tag", {"4401", "0c0161", "300100"}},
    };
    for (const auto& [what, encodings] : cases)
        for (const std::string& hex : encodings)
            EXPECT_THROW(ber::Reader(from_hex(hex)).value(), ber::Error) << what << ": " << hex;
}

// --- a scripted agent ------------------------------------------------------------------------------------------------

// Objects 1 to 6 below kRoot, with rows as a test says. 1 and 2 are INTEGERs, 3 a Counter64, 4 an OCTET STRING,
// 5 an OBJECT IDENTIFIER, the one that is registered read-only, and 6 an INTEGER; object n has magic n.
struct Script {
    std::map<Oid, Octets> rows;
    std::map<Oid, Oid> misplaced;               // a row's name in the answer to a GETNEXT
    std::vector<int> writable;                  // magics
    std::map<std::pair<int, int>, int> errors;  // by phase and magic
    std::vector<std::string> calls;             // of write methods: "phase magic"
    std::vector<Octets> values;
    std::vector<unsigned char*> states;
    int reads = 0;
};
Script script;

int write_row(int action, unsigned char* value, unsigned char, std::size_t length, unsigned char* state, oid* name,
              std::size_t) {
    const int magic = static_cast<int>(name[kRoot.size()]);
    script.calls.push_back(std::to_string(action) + " " + std::to_string(magic));
    script.values.emplace_back(value, value + length);
    script.states.push_back(state);
    if (length > 0) value[0] = 0xee;  // the next phase must not see this
    name[kRoot.size()] = 0xee;
    const auto error = script.errors.find({action, magic});
    return error == script.errors.end() ? 0 : error->second;
}

unsigned char* read_row(const VariableEntry* entry, oid* name, std::size_t* name_length, int exact,
                        std::size_t* value_length, WriteMethod** write_method) {
    ++script.reads;
    for (int i = 0; i < 8; ++i) EXPECT_EQ(name[*name_length + static_cast<std::size_t>(i)], 0u);
    if (std::ranges::find(script.writable, entry->magic) != script.writable.end()) *write_method = write_row;
    const Oid asked(name, name + *name_length);
    const auto row = exact ? script.rows.find(asked) : script.rows.upper_bound(asked);
    if (row == script.rows.end() || !std::equal(entry->name, entry->name + entry->namelen, row->first.begin()))
        return nullptr;
    const auto misplaced = script.misplaced.find(row->first);
    const Oid& answered = misplaced == script.misplaced.end() ? row->first : misplaced->second;
    std::ranges::copy(answered, name);
    *name_length = answered.size();
    *value_length = row->second.size();
    std::ranges::copy(row->second, ret_value);
    return ret_value;
}

class AgentTest : public ::testing::Test {
protected:
    AgentTest() {
        script = {};
        for (const oid row : {1u, 2u, 3u}) {
            for (const oid object : {1u, 2u, 6u})
                script.rows[below({object, row})] = Value::integer(static_cast<std::int32_t>(10 * object + row)).octets;
            script.rows[below({3, row})] = Value::counter64(0x100000000 + row).octets;
        }
        script.rows[below({4, 0})] = octets_of("hello");
    }

    Octets request(std::uint8_t pdu, const std::vector<Varbind>& varbinds, std::int32_t version = kVersion2c,
                   const std::string& community = "public", std::int32_t status = 0, std::int32_t index = 0) {
        return encode({version, community, pdu, 4711, status, index, varbinds});
    }
    Octets set_request(const std::vector<Varbind>& varbinds, std::int32_t version = kVersion2c) {
        return request(kSetRequest, varbinds, version, "private");
    }
    // The response to a request, which must come.
    Message ask(const Octets& datagram, std::size_t max_response = 65507) {
        const Octets octets = Responder(engine, {"public", "private", max_response}).respond(datagram).value();
        EXPECT_LE(octets.size(), max_response);
        Message response = decode(octets);
        EXPECT_EQ(response.pdu, kResponse);
        EXPECT_EQ(response.request_id, 4711);
        return response;
    }
    Message ask(std::uint8_t pdu, const std::vector<Oid>& names, std::int32_t version = kVersion2c) {
        return ask(request(pdu, unbound(names), version));
    }
    std::vector<std::string> after(const Oid& name, std::int32_t version = kVersion2c) {
        return shown(ask(kGetNextRequest, {name}, version));
    }
    Message bulk(std::int32_t non_repeaters, std::int32_t repetitions, const std::vector<Oid>& names,
                 std::size_t max_response = 65507) {
        return ask(request(kGetBulkRequest, unbound(names), kVersion2c, "public", non_repeaters, repetitions),
                   max_response);
    }
    static std::vector<Varbind> unbound(const std::vector<Oid>& names) {
        std::vector<Varbind> varbinds;
        for (const Oid& name : names) varbinds.push_back({name, {}});
        return varbinds;
    }
    // A SET put together by hand from varbinds as hex, the name as what follows kRoot and the value whole. One
    // level can have an element more than it should.
    enum class Level { none, varbind, varbinds, pdu, message };
    static Octets by_hand(const std::vector<std::pair<std::string, std::string>>& varbinds,
                          Level surplus = Level::none) {
        const auto element = [&](std::uint8_t tag, const std::string& contents, Level level) {
            Octets whole;
            ber::append(whole, tag, from_hex(contents + (level == surplus ? "0500" : "")));
            return to_hex(whole);
        };
        std::string list;
        for (const auto& [name, value] : varbinds) {
            const std::string oid = "2b0601040181fd5907" + name;
            const std::string head = fmt::format("06{:02x}", oid.size() / 2);
            list += element(ber::kSequence, head + oid + value, Level::varbind);
        }
        const std::string pdu = "02021267020100020100" + element(ber::kSequence, list, Level::varbinds);
        const std::string message = "020101040770726976617465" + element(kSetRequest, pdu, Level::pdu);
        return from_hex(element(ber::kSequence, message, Level::message));
    }
    // "1.2" for rows below kRoot, "1.2=end" for the end of the MIB.
    static std::vector<std::string> shown(const Message& response) {
        std::vector<std::string> shown;
        for (const auto& [name, value] : response.varbinds) {
            const bool ours = std::ranges::mismatch(kRoot, name).in1 == kRoot.end();
            const Oid rest = ours ? Oid(name.begin() + static_cast<std::ptrdiff_t>(kRoot.size()), name.end()) : name;
            shown.push_back(services::to_string(rest) + (value.tag == kEndOfMibView ? "=end" : ""));
        }
        return shown;
    }
    using Error = std::pair<int, int>;  // status and index
    static Error error(const Message& response) { return {response.error_status, response.error_index}; }

    const VariableEntry entries[6] = {
        {1, kInteger, 2, read_row, 1, {1}},   {2, kInteger, 2, read_row, 1, {2}},
        {3, kCounter64, 2, read_row, 1, {3}}, {4, kOctetString, 2, read_row, 1, {4}},
        {5, kObjectId, 1, read_row, 1, {5}},  {6, kInteger, 2, read_row, 1, {6}},
    };
    const services::Registration module{"scripted", kRoot, entries, std::size(entries)};
    const services::Registry registry{{module}};
    Engine engine{registry};
    Responder responder{engine, {"public", "private"}};
};

TEST_F(AgentTest, GetDistinguishesValuesFromWhatIsMissing) {
    const Message response =
        ask(kGetRequest, {below({1, 2}), below({3, 1}), below({4, 0}), below({1, 9}), below({9, 1})});
    EXPECT_EQ(error(response), Error());
    std::vector<Value> values;
    for (const Varbind& varbind : response.varbinds) values.push_back(varbind.value);
    EXPECT_THAT(values,
                ElementsAre(Value::integer(12), Value::counter64(0x100000001), Value::octet_string(octets_of("hello")),
                            Value{kNoSuchInstance, {}}, Value{kNoSuchObject, {}}));
}

TEST_F(AgentTest, Version1NamesTheFirstVarbindThatItCannotAnswer) {
    for (const Oid& name : {below({1, 9}), below({9, 1}), below({3, 1})}) {
        const Octets datagram = request(kGetRequest, unbound({below({1, 1}), name, below({9})}), kVersion1);
        const Message response = ask(datagram);
        EXPECT_EQ(error(response), Error(kNoSuchName, 2));
        EXPECT_EQ(response.varbinds, decode(datagram).varbinds);
    }
    EXPECT_EQ(error(ask(kGetNextRequest, {below({1}), below({6, 3})}, kVersion1)), Error(kNoSuchName, 2));
}

TEST_F(AgentTest, GetNextFollowsTheOrderOfOids) {
    for (const auto& [name, v2c, v1] : std::vector<std::tuple<Oid, const char*, const char*>>{
             {{0, 0}, "1.1", "1.1"},
             {below({1, 1}), "1.2", "1.2"},
             {below({1, 1, 7}), "1.2", "1.2"},
             {below({1, 3}), "2.1", "2.1"},
             {below({2, 3}), "3.1", "4.0"},  // SNMPv1 has no Counter64
             {below({4, 0}), "6.1", "6.1"},  // object 5 has no rows
             {below({6, 2}), "6.3", "6.3"}}) {
        EXPECT_THAT(after(name), ElementsAre(v2c));
        EXPECT_THAT(after(name, kVersion1), ElementsAre(v1));
    }
    script.reads = 0;
    after(below({2, 3}), kVersion1);
    EXPECT_EQ(script.reads, 2);  // objects 2 and 4; no row of object 3 is looked at
    Oid longest = below({1, 1});
    longest.resize(128, 9);
    EXPECT_THAT(after(longest), ElementsAre("1.2"));
    EXPECT_THAT(after(below({6, 3})), ElementsAre("6.3=end"));
    EXPECT_THAT(after({2, 5}), ElementsAre("2.5=end"));
}

TEST_F(AgentTest, ObjectsThatAnswerWronglyArePassedOver) {
    for (const Oid& misplaced : {below({2}), below({1, 3}), below({2, 0xffffffff}), below({3, 1}), Oid{1, 3}, Oid()}) {
        script.misplaced = {{below({2, 1}), misplaced}};
        EXPECT_THAT(after(below({1, 3})), ElementsAre(misplaced == below({2, 0xffffffff}) ? "2.4294967295" : "3.1"))
            << services::to_string(misplaced);
    }
    script.misplaced = {{below({2, 2}), below({2, 1})}};  // not after the request
    EXPECT_THAT(after(below({2, 1})), ElementsAre("3.1"));

    script.misplaced = {};
    for (const Octets& value : {Octets(), Octets(3), Octets(5), Octets(8)}) {
        script.rows[below({2, 1})] = value;  // no INTEGER
        EXPECT_THAT(after(below({1, 3})), ElementsAre("3.1"));
        EXPECT_EQ(ask(kGetRequest, {below({2, 1})}).varbinds[0].value.tag, kNoSuchInstance);
    }
    script.rows[below({5, 1})] = Value::object_id({1, 40}).octets;  // no OBJECT IDENTIFIER
    EXPECT_THAT(after(below({4, 0})), ElementsAre("6.1"));
}

TEST_F(AgentTest, GetBulkRepeatsRowByRow) {
    EXPECT_THAT(shown(bulk(1, 2, {below({1}), below({1, 1}), below({6})})),
                ElementsAre("1.1", "1.2", "6.1", "1.3", "6.2"));
    EXPECT_THAT(shown(bulk(-5, 1, {below({1}), below({2})})), ElementsAre("1.1", "2.1"));
    EXPECT_THAT(shown(bulk(9, 5, {below({1}), below({2})})), ElementsAre("1.1", "2.1"));
    EXPECT_THAT(shown(bulk(1, -1, {below({1}), below({2})})), ElementsAre("1.1"));
    EXPECT_THAT(shown(bulk(0, 0, {below({1})})), IsEmpty());
    // An ended column does not move until all have ended.
    EXPECT_THAT(shown(bulk(0, 2147483647, {below({6, 1}), below({6, 3})})),
                ElementsAre("6.2", "6.3=end", "6.3", "6.3=end", "6.3=end", "6.3=end"));
}

TEST_F(AgentTest, GetBulkIsBoundedByTheResponsesSize) {
    for (oid row = 10; row < 2000; ++row) script.rows[below({1, row})] = Value::integer(0).octets;
    for (const std::size_t limit : {40u, 60u, 100u, 484u, 485u, 486u, 1472u}) {
        script.reads = 0;
        const Message part = bulk(0, 2147483647, {below({1})}, limit);
        const auto rows = static_cast<std::int32_t>(part.varbinds.size());
        EXPECT_EQ(script.reads, rows + 1);  // no more than what shows that it is full
        EXPECT_EQ(part.varbinds, bulk(0, rows, {below({1})}).varbinds);
        EXPECT_GT(encode(bulk(0, rows + 1, {below({1})})).size(), limit);
    }
    script.reads = 0;
    bulk(0, 2147483647, std::vector<Oid>(100, below({1})), 1472);
    EXPECT_LT(script.reads, 200);
}

TEST_F(AgentTest, TheCostOfARequestIsBoundedByItsVarbinds) {
    script.writable = {1};
    ResponderOptions options{"public", "private"};
    options.max_varbinds = 3;
    options.max_bulk_varbinds = 5;
    Responder bounded(engine, options);
    const auto answer = [&](std::uint8_t pdu, std::size_t varbinds, std::int32_t repetitions = 0) {
        script.reads = 0;
        const auto bound = std::vector<Varbind>(varbinds, {below({1, 1}), Value::integer(1)});
        return decode(bounded.respond(request(pdu, bound, kVersion2c, "private", 0, repetitions)).value());
    };
    for (const std::uint8_t pdu : {kGetRequest, kGetNextRequest, kSetRequest, kGetBulkRequest}) {
        EXPECT_EQ(error(answer(pdu, 3)), Error());
        EXPECT_EQ(error(answer(pdu, 4)), Error(kTooBig, 0));
        EXPECT_EQ(script.reads, 0);
    }
    EXPECT_THAT(shown(answer(kGetBulkRequest, 2, 2147483647)), ElementsAre("1.2", "1.2", "1.3", "1.3", "2.1"));
    EXPECT_EQ(script.reads, 6);  // one more at the end of object 1

    EXPECT_EQ(error(ask(kGetRequest, std::vector<Oid>(128, below({1, 1})))), Error());
    EXPECT_EQ(error(ask(kGetRequest, std::vector<Oid>(129, below({1, 1})))), Error(kTooBig, 0));
}

TEST_F(AgentTest, WhatDoesNotFitIsTooBig) {
    script.rows[below({4, 0})] = Octets(1000, 'x');
    for (const std::uint8_t pdu : {kGetRequest, kGetNextRequest}) {
        const Oid name = pdu == kGetRequest ? below({4, 0}) : below({4});
        const Message v2c = ask(request(pdu, unbound({name})), 500);
        EXPECT_EQ(error(v2c), Error(kTooBig, 0));
        EXPECT_THAT(v2c.varbinds, IsEmpty());
        const Message v1 = ask(request(pdu, unbound({name}), kVersion1), 500);
        EXPECT_EQ(error(v1), Error(kTooBig, 0));
        EXPECT_EQ(v1.varbinds, unbound({name}));
    }
    script.writable = {4};
    const std::vector<Varbind> large{{below({4, 0}), Value::octet_string(Octets(1000, 'y'))}};
    EXPECT_EQ(error(ask(set_request(large), 500)), Error(kTooBig, 0));
    EXPECT_THAT(script.calls, IsEmpty());

    Responder small(engine, {"public", "private", 500});
    EXPECT_FALSE(small.respond(set_request(large, kVersion1)));
    EXPECT_EQ(small.counters().unanswerable, 1u);
}

TEST_F(AgentTest, CommunitiesReadAndWrite) {
    script.writable = {1};
    const std::vector<Varbind> value{{below({1, 1}), Value::integer(5)}};
    EXPECT_EQ(error(ask(request(kSetRequest, value))), Error(kNoAccess, 1));
    EXPECT_EQ(error(ask(request(kSetRequest, value, kVersion1))), Error(kNoSuchName, 1));
    EXPECT_EQ(error(ask(request(kSetRequest, {}))), Error(kNoAccess, 0));
    EXPECT_THAT(script.calls, IsEmpty());
    EXPECT_EQ(ask(set_request(value)).varbinds, value);
    EXPECT_EQ(ask(request(kGetRequest, value, kVersion2c, "private")).varbinds[0].value, Value::integer(11));

    for (const std::string community : {"", "publi", "public ", "Public"})
        EXPECT_FALSE(responder.respond(request(kGetRequest, value, kVersion2c, community)));
    EXPECT_EQ(responder.counters().wrong_community, 4u);
    EXPECT_FALSE(Responder(engine, {}).respond(set_request(value)));

    const std::pair<ResponderOptions, const char*> refused[] = {
        {{"", "private"}, "the community is empty"},
        {{"public", ""}, "the write community is empty"},
        {{"public", "public"}, "another"},
    };
    for (const auto& refusal : refused)
        EXPECT_THAT([&] { const Responder created(engine, refusal.first); },
                    ThrowsMessage<std::invalid_argument>(HasSubstr(refusal.second)));
}

TEST_F(AgentTest, WhatIsNotARequestIsDroppedAndCounted) {
    const Octets good = request(kGetRequest, unbound({below({1, 1})}));
    std::vector<std::string> dropped;
    int messages = 0;
    responder.on_dropped = [&](const std::string& reason) { dropped.push_back(reason); };
    responder.on_message = [&](const Message&) { ++messages; };

    std::vector<Octets> malformed;
    for (std::size_t length = 0; length < good.size(); ++length)
        malformed.emplace_back(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
    malformed.push_back(good);
    malformed.back().push_back(0);
    ASSERT_TRUE(responder.respond(by_hand({{"0101", "0500"}})));
    for (const Level level : {Level::varbind, Level::varbinds, Level::pdu, Level::message})
        malformed.push_back(by_hand({{"0101", "0500"}}, level));
    for (const Value& value : {Value::counter64(1), Value{kNoSuchInstance, {}}, Value{kEndOfMibView, {}}}) {
        ASSERT_TRUE(responder.respond(request(kGetRequest, {{below({1, 1}), value}})));
        malformed.push_back(request(kGetRequest, {{below({1, 1}), value}}, kVersion1));
    }
    for (const char* hex : {"3003020101", "300b02010104067075626c6963", "3080020101", "05000500"})
        malformed.push_back(from_hex(hex));
    for (const Octets& datagram : malformed) EXPECT_FALSE(responder.respond(datagram)) << to_hex(datagram);
    EXPECT_EQ(responder.counters().malformed, malformed.size());

    for (const std::int32_t version : {2, 3, -1}) EXPECT_FALSE(responder.respond(request(kGetRequest, {}, version)));
    for (const int pdu : {0xa2, 0xa4, 0xa6, 0xa7, 0xa8, 0x30})
        EXPECT_FALSE(responder.respond(request(static_cast<std::uint8_t>(pdu), {})));
    EXPECT_FALSE(responder.respond(request(kGetBulkRequest, {}, kVersion1)));
    EXPECT_EQ(responder.counters().unsupported_version, 3u);
    EXPECT_EQ(responder.counters().unsupported_pdu, 7u);
    EXPECT_EQ(dropped.size(), malformed.size() + 10);
    EXPECT_THAT(dropped.back(), HasSubstr("PDU"));
    EXPECT_EQ(messages, 2 * 4);  // the well-formed requests and their responses
    EXPECT_EQ(responder.counters().answered, 4u);
    EXPECT_EQ(responder.counters().received, dropped.size() + 4);
}

// --- SET -------------------------------------------------------------------------------------------------------------

class SetTest : public AgentTest {
protected:
    SetTest() { script.writable = {1, 2, 4}; }

    SetResult set(const std::vector<int>& magics) {
        std::vector<Varbind> varbinds;
        for (const int magic : magics)
            varbinds.push_back({below({static_cast<oid>(magic), 1}), Value::integer(0x01020304)});
        return engine.set(varbinds);
    }
};

TEST_F(SetTest, PhasesRunOverAllVarbindsInRequestOrder) {
    EXPECT_EQ(set({2, 1}).status, kNoError);
    EXPECT_THAT(script.calls, ElementsAre("0 2", "0 1", "1 2", "1 1", "2 2", "2 1", "3 2", "3 1"));
    EXPECT_THAT(script.values, ::testing::Each(Value::integer(0x01020304).octets));
}

TEST_F(SetTest, TheFirstErrorEndsTheRequest) {
    const struct {
        int phase, magic, error, status;
        std::size_t index;
        const char* calls;
    } cases[] = {
        {0, 2, kWrongType, kWrongType, 2, "0 1, 0 2, 4 1, 4 2, 4 4"},
        {1, 1, kWrongValue, kWrongValue, 1, "0 1, 0 2, 0 4, 1 1, 4 1, 4 2, 4 4"},
        {2, 2, kGenErr, kGenErr, 2, "0 1, 0 2, 0 4, 1 1, 1 2, 1 4, 2 1, 2 2, 5 1, 5 2, 5 4"},
        {3, 1, kCommitFailed, kCommitFailed, 1, "0 1, 0 2, 0 4, 1 1, 1 2, 1 4, 2 1, 2 2, 2 4, 3 1, 3 2, 3 4"},
        {0, 1, -1, kGenErr, 1, "0 1, 4 1, 4 2, 4 4"},
        {0, 1, 19, kGenErr, 1, "0 1, 4 1, 4 2, 4 4"},
    };
    for (const auto& [phase, magic, error, status, index, calls] : cases) {
        SCOPED_TRACE("error " + std::to_string(error) + " in phase " + std::to_string(phase));
        script.calls.clear();
        // An error while an error is handled changes nothing.
        script.errors = {{{phase, magic}, error}, {{4, 1}, kUndoFailed}, {{5, 1}, kUndoFailed}};
        const SetResult result = set({1, 2, 4});
        EXPECT_EQ(std::tie(result.status, result.index), std::tie(status, index));
        EXPECT_EQ(fmt::format("{}", fmt::join(script.calls, ", ")), calls);
    }
}

TEST_F(SetTest, WhatHasNoWriteMethodIsRefusedBeforeAnyPhase) {
    script.rows[below({5, 1})] = Value::object_id({1, 3}).octets;
    const std::map<Oid, int> statuses{{below({6, 1}), kNotWritable},
                                      {below({6, 99}), kNoCreation},
                                      {below({5, 1}), kNotWritable},
                                      {below({5, 99}), kNotWritable},
                                      {below({9, 1}), kNotWritable}};
    for (const auto& [name, status] : statuses) {
        const std::vector<Varbind> varbinds{{below({1, 1}), Value::integer(1)}, {name, Value::integer(1)}};
        EXPECT_EQ(error(ask(set_request(varbinds))), Error(status, 2));
        EXPECT_EQ(error(ask(set_request(varbinds, kVersion1))), Error(kNoSuchName, 2));
    }
    EXPECT_THAT(script.calls, IsEmpty());
    EXPECT_EQ(engine.set({}).status, kNoError);
}

TEST_F(SetTest, TheStateIsWhatTheReadMethodReturned) {
    EXPECT_EQ(engine.set({{below({1, 1}), Value::integer(1)}, {below({1, 99}), Value::integer(1)}}).status, kNoError);
    unsigned char* const row = ret_value;
    EXPECT_THAT(script.states, ElementsAre(row, nullptr, row, nullptr, row, nullptr, row, nullptr));
}

TEST_F(SetTest, TheObserverSeesEveryStep) {
    std::vector<std::string> steps;
    engine.set_phase_observer([&](int phase, std::size_t index, int error) {
        steps.push_back(std::to_string(phase) + " " + std::to_string(index) + " " + std::to_string(error));
    });
    script.errors = {{{1, 2}, kWrongValue}};
    set({1, 2});
    EXPECT_THAT(steps, ElementsAre("-1 0 0", "-1 1 0", "0 0 0", "0 1 0", "1 0 0", "1 1 10", "4 0 0", "4 1 0"));
}

TEST_F(SetTest, Version1HasFewerErrors) {
    const std::vector<std::pair<int, int>> statuses{
        {kTooBig, kTooBig},          {kNoSuchName, kNoSuchName},      {kBadValue, kBadValue},
        {kGenErr, kGenErr},          {kNoAccess, kNoSuchName},        {kWrongType, kBadValue},
        {kWrongLength, kBadValue},   {kWrongEncoding, kBadValue},     {kWrongValue, kBadValue},
        {kNoCreation, kNoSuchName},  {kInconsistentValue, kBadValue}, {kResourceUnavailable, kGenErr},
        {kCommitFailed, kGenErr},    {kUndoFailed, kGenErr},          {kAuthorizationError, kNoSuchName},
        {kNotWritable, kNoSuchName}, {kInconsistentName, kNoSuchName}};
    const std::vector<Varbind> varbinds{{below({1, 1}), Value::integer(1)}, {below({2, 1}), Value::integer(1)}};
    for (const auto& [v2c, v1] : statuses) {
        script.errors = {{{0, 2}, v2c}};
        // SNMPv2c has noCreation where a write method says noSuchName.
        EXPECT_EQ(error(ask(set_request(varbinds))), Error(v2c == kNoSuchName ? kNoCreation : v2c, 2));
        EXPECT_EQ(error(ask(set_request(varbinds, kVersion1))), Error(v1, 2));
    }
}

TEST_F(SetTest, ValuesArriveInMachineOrder) {
    const Octets datagram = by_hand({{"0102", "0201fe"}, {"0201", "420500ee6b2800"}, {"0401", "04026162"}});
    EXPECT_EQ(error(ask(datagram)), Error());
    ASSERT_EQ(script.values.size(), 12u);
    EXPECT_EQ(script.values[0], Value::integer(-2).octets);
    EXPECT_EQ(script.values[1], Value::unsigned32(kGauge32, 4000000000).octets);
    EXPECT_EQ(script.values[2], octets_of("ab"));
}

// --- the agent's own groups ------------------------------------------------------------------------------------------

const Oid kContact{1, 3, 6, 1, 2, 1, 1, 4, 0};
const Oid kName{1, 3, 6, 1, 2, 1, 1, 5, 0};

class StandardGroupsTest : public AgentTest {
protected:
    StandardGroupsTest() {
        groups.counters = &own_responder.counters();
        script.writable = {1};
    }
    Error set(const std::vector<Varbind>& varbinds) {
        return error(decode(own_responder.respond(set_request(varbinds)).value()));
    }
    Value get(const Oid& name) { return own_engine.get(name).value; }

    static std::vector<services::Registration> with(services::Registration module) {
        auto all = StandardGroups::registrations();
        all.push_back(std::move(module));
        return all;
    }

    StandardGroups groups{{module}, [] { return std::chrono::milliseconds(123456); }};
    const services::Registry own_registry{with(module)};
    Engine own_engine{own_registry};
    Responder own_responder{own_engine, {"public", "private"}};
};

TEST_F(StandardGroupsTest, AreWalkedBeforeTheModules) {
    Engine::Walk walk(own_engine, Oid{0, 0});
    for (const char* name :
         {"1.1.0", "1.2.0", "1.3.0", "1.4.0", "1.5.0", "1.6.0", "1.7.0", "1.8.0", "1.9.1.2.1", "1.9.1.3.1", "1.9.1.4.1",
          "11.1.0", "11.3.0", "11.4.0", "11.5.0", "11.6.0", "11.30.0", "11.31.0", "11.32.0"})
        EXPECT_EQ(services::to_string(walk.next().copy().name), std::string("1.3.6.1.2.1.") + name);
    EXPECT_EQ(walk.next().copy().name, below({1, 1}));

    EXPECT_EQ(get({1, 3, 6, 1, 2, 1, 1, 3, 0}), Value::unsigned32(kTimeTicks, 12345));
    EXPECT_EQ(get({1, 3, 6, 1, 2, 1, 1, 9, 1, 2, 1}), Value::object_id(kRoot));
    EXPECT_EQ(get({1, 3, 6, 1, 2, 1, 1, 9, 1, 3, 1}), Value::octet_string(octets_of("scripted")));
    for (const Oid& index : {Oid{0}, Oid{2}, Oid{1, 0}, Oid{4294967295}, Oid{}}) {
        Oid name{1, 3, 6, 1, 2, 1, 1, 9, 1, 2};
        name.insert(name.end(), index.begin(), index.end());
        EXPECT_EQ(get(name).tag, kNoSuchInstance) << services::to_string(name);
        EXPECT_GT(own_engine.next(name).name, name);
    }
}

TEST_F(StandardGroupsTest, TextsAreSetAsAWholeRequestOrNotAtAll) {
    const auto value = [](const std::string& octets) { return Value::octet_string(octets_of(octets)); };
    EXPECT_EQ(set({{kName, value("lab")}, {kContact, value(std::string(255, 'x'))}}), Error());
    EXPECT_EQ(get(kName), value("lab"));
    EXPECT_EQ(get(kContact), value(std::string(255, 'x')));
    EXPECT_EQ(set({{kContact, value("")}}), Error());
    EXPECT_EQ(get(kContact), value(""));

    EXPECT_EQ(set({{kName, Value::integer(1)}}), Error(kWrongType, 1));
    EXPECT_EQ(set({{kName, value(std::string(256, 'x'))}}), Error(kWrongLength, 1));
    EXPECT_EQ(set({{kName, value("caf\xc3\xa9")}}), Error(kWrongValue, 1));
    EXPECT_EQ(set({{{1, 3, 6, 1, 2, 1, 1, 5, 1}, value("x")}}), Error(kNoCreation, 1));
    EXPECT_EQ(set({{{1, 3, 6, 1, 2, 1, 1, 1, 0}, value("x")}}), Error(kNotWritable, 1));

    // Undone with the rest of the request, also where the request sets it twice.
    script.errors = {{{kAction, 1}, kGenErr}};
    EXPECT_EQ(set({{kName, value("a")}, {kName, value("b")}, {below({1, 1}), Value::integer(1)}}), Error(kGenErr, 3));
    EXPECT_EQ(get(kName), value("lab"));
}

TEST_F(StandardGroupsTest, SnmpCountsWhatCameIn) {
    own_responder.respond(octets_of("garbage"));
    own_responder.respond(request(kGetRequest, {{below({1, 1}), Value::counter64(1)}}, kVersion1));
    for (int i = 0; i < 3; ++i) own_responder.respond(request(kGetRequest, {}, 7));
    for (int i = 0; i < 4; ++i) own_responder.respond(request(kGetRequest, {}, kVersion2c, "stranger"));
    for (int i = 0; i < 5; ++i) own_responder.respond(request(kSetRequest, {}));
    for (const auto& [object, count] : std::map<oid, std::uint32_t>{{1, 14}, {3, 3}, {4, 4}, {5, 5}, {6, 2}})
        EXPECT_EQ(get({1, 3, 6, 1, 2, 1, 11, object, 0}), Value::unsigned32(kCounter32, count)) << object;
}

// --- the socket and the log ------------------------------------------------------------------------------------------

// Sends datagrams and returns the first answer that comes from where they were sent to; empty when none comes.
Octets answer_from(const std::string& address, std::uint16_t port, const std::vector<Octets>& datagrams) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* to = nullptr;
    if (::getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &to) != 0) return {};
    const int socket = ::socket(to->ai_family, SOCK_DGRAM, 0);
    const timeval limit{5, 0};
    ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    EXPECT_EQ(::connect(socket, to->ai_addr, to->ai_addrlen), 0) << address;
    ::freeaddrinfo(to);
    for (const Octets& datagram : datagrams) ::send(socket, datagram.data(), datagram.size(), 0);
    Octets answer(1500);
    const ssize_t size = ::recv(socket, answer.data(), answer.size(), 0);
    answer.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    ::close(socket);
    return answer;
}

TEST_F(AgentTest, TheServerAnswersDatagramsUntilItIsStopped) {
    const Octets asked = request(kGetRequest, unbound({below({1, 1})}));
    const Octets answer = encode(ask(asked));
    Server server(responder, "127.0.0.1", 0);
    EXPECT_EQ(server.endpoint(), "127.0.0.1:" + std::to_string(server.port()));
    std::thread thread([&] { server.run(); });

    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(answer_from("127.0.0.1", server.port(), {octets_of("garbage"), {}, asked}), answer);
    server.stop();
    thread.join();
    EXPECT_EQ(responder.counters().malformed, 6u);
}

TEST_F(AgentTest, AnswersLeaveFromTheAddressThatWasAsked) {
    const Octets asked = request(kGetRequest, unbound({below({1, 1})}));
    const Octets answer = encode(ask(asked));
    for (const auto& [listen, addresses] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"0.0.0.0", {"127.0.0.1", "127.0.0.2"}}, {"::", {"::1", "127.0.0.2"}}}) {
        std::optional<Server> server;
        try {
            server.emplace(responder, listen, std::uint16_t{0});
        } catch (const std::runtime_error&) {
            if (listen == "0.0.0.0") throw;
            continue;  // a machine without IPv6
        }
        std::thread thread([&] { server->run(); });
        for (const std::string& address : addresses)
            EXPECT_EQ(answer_from(address, server->port(), {asked}), answer) << listen << " asked at " << address;
        server->stop();
        thread.join();
    }
}

TEST_F(AgentTest, AnAddressThatCannotBeListenedOnIsNamed) {
    const Server first(responder, "127.0.0.1", 0);
    const std::map<std::string, std::uint16_t> endpoints{{"300.0.0.1", 0}, {"127.0.0.1", first.port()}};
    for (const auto& endpoint : endpoints)
        EXPECT_THAT([&] { const Server server(responder, endpoint.first, endpoint.second); },
                    ThrowsMessage<std::runtime_error>(HasSubstr(endpoint.first)));
}

TEST(LineLimit, CountsWhatItLeavesOut) {
    std::vector<std::string> lines;
    std::chrono::steady_clock::time_point now{};
    LineLimit limit(
        2, [&](const std::string& line) { lines.push_back(line); }, [&] { return now; });
    const auto limited = [&](const char* line) {
        if (limit.pass()) lines.push_back(line);
    };
    for (const char* line : {"a", "b", "c"}) limited(line);
    now += std::chrono::milliseconds(999);
    limited("d");
    now += std::chrono::milliseconds(1);
    for (const char* line : {"e", "f", "g"}) limited(line);
    limit.flush();
    limit.flush();
    EXPECT_THAT(lines, ElementsAre("a", "b", "2 lines left out: more than 2 a second", "e", "f",
                                   "1 line left out: more than 2 a second"));
}

}  // namespace
}  // namespace tests
