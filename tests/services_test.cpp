// The host's C symbols as the library sees them, and what loads it and lists its objects.
#include "services/services.h"
#include "services/library.h"
#include "services/registry.h"
#include "support/checks.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <elf.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <numeric>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace tests {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

template <class Record>
Bytes bytes_of(const Record& record) {
    Bytes bytes(sizeof record);
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

InetAddress ipv4(unsigned char a, unsigned char b, unsigned char c, unsigned char d) { return {1, 4, {a, b, c, d}, 0}; }

InetText inet_text(std::uint32_t type, const char* text, std::uint32_t prefix_length) {
    InetText field{type, {}, prefix_length};
    std::strncpy(field.text, text, sizeof field.text);
    return field;
}

int to_oid(int kind, oid* out, const void* field, int count) {
    return reinterpret_cast<uib_to_oid*>(uib_oid_convert[3 * kind + 1])(out, field, count);
}

// A field of any kind with what an index puts there. Nothing follows it, so that a sanitizer sees a step beyond it.
class Field {
public:
    Field(int kind, std::size_t octets, const Oid& index) : memory_(octets, 0xee) {
        if (kind == 14) counted_ = {0, static_cast<std::uint32_t>(octets), memory_.data()};
        place_ = kind == 14 ? static_cast<void*>(&counted_) : memory_.data();
        auto* const convert = reinterpret_cast<uib_to_field*>(uib_oid_convert[3 * kind]);
        EXPECT_EQ(convert(index.data(), static_cast<int>(index.size()), place_), 0);
    }
    void* place() { return place_; }
    const Bytes& octets() const { return memory_; }
    CountedString& counted() { return counted_; }

private:
    Bytes memory_;
    CountedString counted_{};
    void* place_;
};

struct Conversion {
    int kind;
    Oid index;
    Bytes field;
};

const std::vector<Conversion>& conversions() {
    static const InetAddress v6{2, 16, {0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 0};
    static const Oid v6_index{2, 16, 0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    static const std::vector<Conversion> all{
        {2, {4294967295}, bytes_of(std::uint32_t{4294967295})},
        {6, {0, 1, 2, 253, 254, 255}, {0, 1, 2, 253, 254, 255}},
        {7, {1, 4, 192, 0, 2, 0, 24}, bytes_of(inet_text(1, "192.0.2.0", 24))},
        {7, join(v6_index, Oid{64}), bytes_of(inet_text(2, "2001:db8::1", 64))},
        {7, {16, 3, 'a', '.', 'b', 0}, bytes_of(inet_text(16, "a.b", 0))},
        {8, {2, 0, 70000}, bytes_of(std::uint32_t{70000})},
        {10, {1, 4, 10, 0, 0, 255}, bytes_of(ipv4(10, 0, 0, 255))},
        {10, v6_index, bytes_of(v6)},
        {10, {0, 0}, Bytes(28, 0)},
        {11, {1, 4, 10, 0, 0, 0, 8}, bytes_of(InetPrefix{ipv4(10, 0, 0, 0), 8})},
        {11, join(v6_index, Oid{128}), bytes_of(InetPrefix{v6, 128})},
        {12,
         {1, 4, 239, 1, 1, 1, 1025, 4, 10, 0, 0, 9},
         bytes_of(InetPairOnInterface{ipv4(239, 1, 1, 1), 1025, ipv4(10, 0, 0, 9)})},
        {13, join(Oid{1, 4, 239, 1, 1, 1}, v6_index), join(bytes_of(ipv4(239, 1, 1, 1)), bytes_of(v6))},
        {14, {5, 'h', 'e', 'l', 'l', 'o'}, {'h', 'e', 'l', 'l', 'o'}},
    };
    return all;
}

TEST(IndexConversion, EveryKindConvertsToItsFieldAndBack) {
    for (const auto& [kind, index, octets] : conversions()) {
        SCOPED_TRACE("kind " + std::to_string(kind) + " " + services::to_string(index));
        const int count = static_cast<int>(index.size());
        ASSERT_EQ(uib_snmp_get_oid_size(index.data(), kind), count);
        Field field(kind, octets.size(), index);
        EXPECT_EQ(field.octets(), octets);

        ASSERT_EQ(uib_snmp_set_oid_size(nullptr, kind, field.place()), count);
        Oid back(index.size());
        EXPECT_EQ(to_oid(kind, back.data(), field.place(), count), 0);
        EXPECT_EQ(back, index);
    }
}

TEST(IndexConversion, AFixedStringIsSizedOnly) {
    EXPECT_EQ(uib_snmp_get_oid_size(nullptr, 0), 8);
    EXPECT_EQ(uib_snmp_set_oid_size(nullptr, 0, nullptr), 8);
    for (int slot : {0, 1}) EXPECT_EQ(uib_oid_convert[slot], nullptr);
}

TEST(IndexConversion, WhatIsNotGivenIsZero) {
    for (const auto& [kind, index, octets] : conversions())
        for (std::size_t given = 0; given < index.size(); ++given) {
            SCOPED_TRACE("kind " + std::to_string(kind) + ", " + std::to_string(given) + " given");
            const Oid cut(index.begin(), index.begin() + static_cast<std::ptrdiff_t>(given));
            Oid padded = cut;
            padded.resize(index.size());
            Bytes expected = Field(kind, octets.size(), padded).octets();
            // The second address of kind 12 has the first one's type only where it is reached.
            if (kind == 12 && given <= 7) expected[offsetof(InetPairOnInterface, second.type)] = 0;
            EXPECT_EQ(Field(kind, octets.size(), cut).octets(), expected);
        }
}

TEST(IndexConversion, HostileCountsStayWithinBounds) {
    const oid hostile[] = {0,  1,   3,   4,     15,         16,         17,         64,
                           65, 255, 256, 65536, 0x7fffffff, 0x80000000, 4000000000, 0xffffffff};
    for (const auto& [kind, index, octets] : conversions())
        for (const oid a : hostile)
            for (const oid b : hostile)
                for (const int given : {1, 2, 3, 9, 100}) {
                    // A request of `given` sub-identifiers and what a host keeps readable after a longest one.
                    Oid request(static_cast<std::size_t>(given) + 32, 300);
                    request[0] = a;
                    request[1] = b;
                    const int size = uib_snmp_get_oid_size(request.data(), kind);
                    ASSERT_GT(size, 0);
                    ASSERT_LT(size, INT_MAX / 4);
                    request.resize(static_cast<std::size_t>(std::min(given, size)));
                    request.shrink_to_fit();
                    Field field(kind, octets.size(), request);
                    const int needed = uib_snmp_set_oid_size(nullptr, kind, field.place());
                    ASSERT_LE(needed, 128);
                    Oid out(static_cast<std::size_t>(needed));
                    to_oid(kind, out.data(), field.place(), needed);
                }
}

TEST(IndexConversion, AWrongAddressLengthFitsNoRequestAndKeepsItsOrder) {
    const Oid address{1, 17, 10, 0, 0, 1};
    EXPECT_EQ(Field(10, sizeof(InetAddress), address).octets(), bytes_of(InetAddress{1, 17, {10, 0, 0, 1}, 0}));
    for (const int kind : {12, 13}) EXPECT_GT(uib_snmp_get_oid_size(address.data(), kind), 128);
}

TEST(IndexConversion, ASubIdentifierThatIsNotAnOctetSortsAfterEveryOctet) {
    EXPECT_THAT(Field(6, 6, {0, 1, 300, 3, 4, 5}).octets(), ElementsAre(0, 1, 255, 255, 255, 255));
}

TEST(IndexConversion, ACountedStringIsCutToItsCapacity) {
    Field field(14, 5, {7, 'a', 'b', 'c', 'd', 'e', 'f', 'g'});
    EXPECT_EQ(field.counted().length, 5u);
    EXPECT_THAT(field.octets(), ElementsAre('a', 'b', 'c', 'd', 'e'));
    field.counted().length = 4000000000;
    EXPECT_EQ(uib_snmp_set_oid_size(nullptr, 14, field.place()), 6);
}

TEST(Addresses, AreSpelledByTheirType) {
    const InetAddress v6{2, 16, {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 0};
    const struct {
        InetAddress address;
        int size;
        bool done;
        std::string text;
    } cases[] = {
        {ipv4(192, 0, 2, 255), 46, true, "192.0.2.255"}, {v6, 46, true, "fe80::1"}, {{}, 46, true, ""},
        {{3, 4, {1, 2, 3, 4}, 0}, 46, false, "before"},  {v6, 7, false, "before"},  {{}, 0, false, "before"},
    };
    for (const auto& [address, size, done, text] : cases) {
        SCOPED_TRACE("type " + std::to_string(address.type) + " size " + std::to_string(size));
        char buffer[46] = "before";
        EXPECT_EQ(UIB_SNMP_Inet_Addr_To_Str(&address, buffer, size) == 0, done);
        EXPECT_EQ(buffer, text);
    }
}

TEST(Lists, MembersAreCountedFromTheFirstOctetsHighestBit) {
    EXPECT_NE(PORTLIST_chk_empty(Bytes(12).data()), 0);
    Bytes list{0x80, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01};
    EXPECT_EQ(PORTLIST_chk_empty(list.data()), 0);
    std::vector<int> members;
    for (int port = -200; port < 300; ++port)
        if (PORTLIST_chk_port_exist(list.data(), port)) members.push_back(port);
    EXPECT_THAT(members, ElementsAre(1, 16, 96));
    PORTLIST_clear_all(list.data());
    EXPECT_NE(PORTLIST_chk_empty(list.data()), 0);
}

TEST(Lists, ResultsMayBeSources) {
    const struct {
        std::size_t size;
        decltype(&PORTLIST_and) both, either;
    } kinds[] = {{12, PORTLIST_and, PORTLIST_xor}, {512, VLANLIST_and, VLANLIST_xor}};
    for (const auto& [size, both, either] : kinds) {
        Bytes a(size), b(size, 0x3c);
        std::iota(a.begin(), a.end(), static_cast<unsigned char>(1));
        Bytes common(size), differing(size);
        std::ranges::transform(a, b, common.begin(), std::bit_and<>());
        std::ranges::transform(a, b, differing.begin(), std::bit_xor<>());
        Bytes first = a;
        both(first.data(), b.data(), first.data());
        EXPECT_EQ(first, common);
        Bytes second = b;
        either(a.data(), second.data(), second.data());
        EXPECT_EQ(second, differing);
    }
}

// Every test finds the host without anything plugged in, and leaves it as it was.
class HostTest : public ::testing::Test, protected services::Backend {
protected:
    HostTest() : before_(std::exchange(services::services(), {})) {}
    ~HostTest() override { services::services() = before_; }

    bool show(services::ShowRequest& request) override {
        shown.push_back(request);
        return accepts;
    }
    bool configure(const services::ConfigRequest& request) override {
        configured.push_back(request);
        return accepts;
    }
    std::optional<std::string> interface_name(std::uint32_t ifindex) override {
        if (ifindex == 0) return std::nullopt;
        return std::string(ifindex, 'x');
    }

    bool accepts = true;
    std::vector<services::ShowRequest> shown;
    std::vector<services::ConfigRequest> configured;

private:
    services::Services before_;
};

unsigned char* read_nothing(const VariableEntry*, oid*, std::size_t*, int, std::size_t*, WriteMethod**) {
    return nullptr;
}

int write_nothing(int, unsigned char*, unsigned char, std::size_t, unsigned char*, oid*, std::size_t) { return 0; }

VariableEntry variable(const Oid& name, ReadMethod* read = read_nothing) {
    VariableEntry entry{1, 2, 1, read, static_cast<std::uint8_t>(name.size()), {}};
    std::ranges::copy(name, entry.name);
    return entry;
}

TEST_F(HostTest, RequestsReachTheBackendAsTheyWereSent) {
    std::size_t length = 0;
    std::uint32_t key = 7;
    const auto show = [&] {
        return uib_sh_show_request(1ull << 40, "show it 7", ret_value, 8192, &length, &key, 4, 3, 0, 2, "aTable", 99);
    };
    const auto configure = [] { return uib_sh_config_request(-1, "speed 100", "write_it", 12); };
    EXPECT_NE(show(), 0);  // no backend
    EXPECT_NE(configure(), 0);

    services::services().backend = this;
    EXPECT_EQ(show(), 0);
    EXPECT_EQ(configure(), 0);
    accepts = false;
    EXPECT_NE(show(), 0);
    EXPECT_NE(configure(), 0);

    ASSERT_EQ(shown.size(), 2u);
    const services::ShowRequest& request = shown.front();
    EXPECT_EQ(std::tie(request.request_class, request.command, request.result_size, request.key_size, request.magic,
                       request.exact, request.index_count, request.name, request.line),
              std::make_tuple(1ull << 40, "show it 7", 8192, 4, 3, 0, 2, "aTable", 99));
    EXPECT_TRUE(request.result == ret_value && request.key == &key && request.value_length == &length);
    ASSERT_EQ(configured.size(), 2u);
    EXPECT_EQ(std::tie(configured[0].mode, configured[0].command, configured[0].caller, configured[0].line),
              std::make_tuple(-1, "speed 100", "write_it", 12));
}

TEST_F(HostTest, InterfaceNamesTakeAtMost21Octets) {
    Bytes name(21, 'u');
    auto* text = reinterpret_cast<char*>(name.data());
    EXPECT_LT(if_utl_ifindex_to_ifname(3, text), 0);  // no backend
    services::services().backend = this;
    EXPECT_LT(if_utl_ifindex_to_ifname(0, text), 0);
    EXPECT_EQ(name, Bytes(21, 'u'));
    EXPECT_GE(if_utl_ifindex_to_ifname(5, text), 0);
    EXPECT_STREQ(text, "xxxxx");
    EXPECT_GE(if_utl_ifindex_to_ifname(30, text), 0);
    EXPECT_EQ(std::string(text), std::string(20, 'x'));
}

TEST_F(HostTest, TheContextIsThatOfTheRequest) {
    EXPECT_EQ(SNMPD_Get_Cur_VrfName(), nullptr);
    EXPECT_EQ(SNMPD_Get_Cur_ContextName(), nullptr);
    EXPECT_EQ(snmp_get_do_debugging(), 0);
    services::services().context = {"red", "", true};
    EXPECT_STREQ(SNMPD_Get_Cur_VrfName(), "red");
    EXPECT_STREQ(SNMPD_Get_Cur_ContextName(), "");
    EXPECT_NE(snmp_get_do_debugging(), 0);
}

TEST_F(HostTest, LogLinesAreFormattedWhole) {
    debugmsg("token", "nobody %s", "listens");
    std::vector<std::string> lines;
    services::services().log = [&](const services::LogLine& line) {
        lines.push_back(fmt::format("{}|{}|{}|{}|{}", line.channel, line.token, line.category, line.level, line.text));
    };
    const std::string longer(5000, 'x');
    debugmsgtoken("trace", "%d:%s", 1, longer.c_str());
    debugmsg("trace", "plain");
    EXPECT_EQ(anprintf(62, 0, 104, 0, "MGMD$%d$%s", 7, "t"), 0);
    pal_log_output_ui_simple("%s\n", "to the terminal");
    EXPECT_THAT(lines, ElementsAre("debug|trace|0|0|1:" + longer, "debug|trace|0|0|plain", "an||62|104|MGMD$7$t",
                                   "ui||0|0|to the terminal\n"));
}

TEST_F(HostTest, AScalarHasOneInstance) {
    const VariableEntry entry = variable({1, 3, 6, 1, 2, 1, 2, 1});
    const Oid instance{1, 3, 6, 1, 2, 1, 2, 1, 0};
    const struct {
        Oid request;
        int exact;
        bool matches;
    } cases[] = {
        {instance, 1, true},  {{1, 3, 6, 1, 2, 1, 2, 1}, 1, false},       {{1, 3, 6, 1, 2, 1, 2, 1, 1}, 1, false},
        {instance, 0, false}, {{1, 3, 6, 1, 2, 1, 2, 1}, 0, true},        {{1, 3, 6, 1, 2, 1, 2, 2}, 0, false},
        {{1, 3}, 0, true},    {{1, 3, 6, 1, 2, 1, 2, 1, 0, 0}, 1, false}, {{1, 3, 6, 1, 2, 1, 2, 1, 0, 0}, 0, false},
    };
    for (const auto& [request, exact, matches] : cases) {
        SCOPED_TRACE(services::to_string(request) + (exact ? " exact" : " next"));
        oid name[136] = {};
        std::ranges::copy(request, name);
        std::size_t length = request.size();
        std::size_t value_length = 99;
        WriteMethod* writer = write_nothing;
        EXPECT_EQ(header_generic(&entry, name, &length, exact, &value_length, &writer), matches ? 0 : -1);
        EXPECT_EQ(Oid(name, name + length), matches ? instance : request);
        EXPECT_EQ(value_length, matches ? 4u : 99u);
        EXPECT_EQ(writer == nullptr, matches);
    }
}

TEST_F(HostTest, OidsSortByTheirSubIdentifiersAsUnsignedNumbers) {
    const std::vector<Oid> sorted{{}, {1}, {1, 0}, {1, 2}, {1, 2, 0}, {1, 0x80000000}, {2}};
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = 0; j < sorted.size(); ++j) {
            const int order = snmp_oid_compare(sorted[i].data(), sorted[i].size(), sorted[j].data(), sorted[j].size());
            EXPECT_EQ(order < 0, i < j);
            EXPECT_EQ(order > 0, i > j);
        }
}

TEST_F(HostTest, RegistrationsAreCheckedBeforeTheyAreTaken) {
    const VariableEntry entries[] = {variable({1}), variable({2})};
    const VariableEntry unreadable = variable({1}, nullptr);
    const Oid module{1, 3, 6, 1, 4, 1, 32473, 1};
    const Oid other{1, 3, 6, 1, 4, 1, 32473, 2};
    const auto add = [](const VariableEntry* variables, std::size_t size, std::size_t count, const Oid& oid) {
        return register_mib("it", variables, size, count, oid.data(), oid.size()) == 0;
    };
    EXPECT_FALSE(add(entries, sizeof *entries - 4, 2, module));
    EXPECT_FALSE(add(entries, sizeof *entries, 2, Oid(128, 1)));
    EXPECT_FALSE(add(&unreadable, sizeof unreadable, 1, module));
    EXPECT_TRUE(add(entries, sizeof *entries, 2, module));
    EXPECT_FALSE(add(entries, sizeof *entries, 2, module));  // a second time
    services::services().may_register = [](const services::Registration&) { return false; };
    EXPECT_FALSE(add(entries, sizeof *entries, 2, other));
    ASSERT_EQ(services::services().registrations.size(), 1u);
    EXPECT_EQ(services::services().registrations[0].module_oid, module);
}

TEST_F(HostTest, RegisteredObjectsAreInOidOrderUnderTheirFullNames) {
    const VariableEntry late[] = {variable({2, 1}), variable({10}), variable({2})};
    const VariableEntry early[] = {variable({5})};
    const services::Registry registry({{"late", {1, 3, 2}, late, 2}, {"early", {1, 3, 1}, early, 1}});
    std::vector<std::string> names;
    for (const services::Object& object : registry.objects())
        names.push_back(object.module + " " + services::to_string(object.oid()));
    EXPECT_THAT(names, ElementsAre("early 1.3.1.5", "late 1.3.2.2.1", "late 1.3.2.10"));
    EXPECT_EQ(registry.modules(), 2u);
    EXPECT_EQ(registry.find({1, 3, 2, 2, 1, 7}), &registry.objects()[1]);
    EXPECT_EQ(registry.find({1, 3, 2, 2, 2}), nullptr);
    EXPECT_EQ(registry.locate(Oid{1, 3, 2, 2, 1}).after, 2u);
    EXPECT_EQ(registry.format({1, 3, 2, 10, 4}), "1.3.2.10.4");  // no library, no names
    EXPECT_EQ(registry.parse("late.3"), (Oid{1, 3, 2, 3}));
}

TEST_F(HostTest, OidsAreReadFromNumbersAndNames) {
    services::Library library(SWITCHMIB_LIBRARY);
    library.initialise();
    const services::Registry registry(services::services().registrations, library);
    const std::string longest = services::to_string(Oid(128, 1));
    const Oid if_descr{1, 3, 6, 1, 2, 1, 2, 2, 1, 2};
    const std::pair<const char*, Oid> parsed[] = {
        {"1.3.6.1", {1, 3, 6, 1}},
        {".1.3.4294967295", {1, 3, 4294967295}},
        {"0", {0}},
        {"ifDescr", if_descr},
        {"ifDescr.5121", join(if_descr, Oid{5121})},
        {"interfaces", {1, 3, 6, 1, 2, 1, 2}},
        {"ifDescr[5121]", join(if_descr, Oid{5121})},
        {"IF-MIB::ifNumber.0", {1, 3, 6, 1, 2, 1, 2, 1, 0}},
        {"interfaces::ifTable", {1, 3, 6, 1, 2, 1, 2, 2}},
        {"Q-BRIDGE-MIB", {1, 3, 6, 1, 2, 1, 17, 7}},
        {"interfaces.2", {1, 3, 6, 1, 2, 1, 2, 2}},
    };
    for (const auto& [text, oid] : parsed) EXPECT_EQ(registry.parse(text), oid) << text;
    EXPECT_TRUE(registry.parse(longest));
    const std::vector<std::string> malformed{
        "",   ".",  "1..3",     "1.",         "..1",       "4294967296", "-1",           "1.3x",
        " 1", "+1", "ifDescr.", "ifDescr..1", "ifDescr.x", "noSuchName", longest + ".1", "ifDescr." + longest};
    for (const std::string& text : malformed) EXPECT_FALSE(registry.parse(text)) << text;

    EXPECT_EQ(registry.format(join(if_descr, Oid{5121})), "ifDescr[ifIndex 5121]");
    EXPECT_EQ(registry.format(join(if_descr, Oid{5121, 1})), "ifDescr.5121.1");
    EXPECT_EQ(registry.format(if_descr), "ifDescr");
    EXPECT_EQ(registry.format({1, 3, 6, 1, 2, 1, 2, 2}), "1.3.6.1.2.1.2.2");
}

TEST_F(HostTest, ALibrarysExportsAreItsOwn) {
    const services::Library library(SWITCHMIB_LIBRARY);
    EXPECT_TRUE(std::ranges::is_sorted(library.exports()));
    EXPECT_THAT(library.exports(), ::testing::Contains("interfaces_snmp_init"));
    EXPECT_THAT(library.exports(), ::testing::Not(::testing::Contains("register_mib")));  // imported
    EXPECT_NE(library.symbol("interfaces_oid"), nullptr);
    EXPECT_EQ(library.symbol("memcpy"), nullptr);  // one of what the library needs itself
}

void expect_refusal(const std::string& path, const std::string& reason) {
    EXPECT_THAT([&] { const services::Library library(path); },
                ThrowsMessage<std::runtime_error>(AllOf(HasSubstr(path), HasSubstr(reason))));
}

TEST_F(HostTest, FilesThatAreNotAModuleLibraryAreNamed) {
    expect_refusal("", "empty");
    expect_refusal("/nonexistent/lib.so", "no such file");
    expect_refusal(::testing::TempDir(), "not a file");
#ifdef __x86_64__  // under emulation the file of libc cannot be seen
    expect_refusal("libc.so.6", "_snmp_init");
#endif

    std::ifstream stream(SWITCHMIB_LIBRARY, std::ios::binary);
    const std::string whole(std::istreambuf_iterator<char>(stream), {});
    const auto with = [&](std::size_t offset, char octet) {
        std::string changed = whole;
        changed[offset] = octet;
        return changed;
    };
    const bool is_32_bit = sizeof(void*) == 4;
    const std::pair<std::string, const char*> files[] = {
        {"", "not an ELF file"},
        {"\x7f", "not an ELF file"},
        {"not an ELF file\n", "not an ELF file"},
        // Cut anywhere, also between what is mapped and the section headers at the end.
        {whole.substr(0, 8), "cut short"},
        {whole.substr(0, 100), "cut short"},
        {whole.substr(0, whole.size() / 2), "cut short"},
        {whole.substr(0, whole.size() - 1), "cut short"},
        {with(offsetof(Elf32_Ehdr, e_machine), EM_SPARC), "another machine"},
        {with(EI_DATA, ELFDATA2MSB), "another machine"},
        {with(EI_CLASS, is_32_bit ? ELFCLASS64 : ELFCLASS32), is_32_bit ? "64-bit" : "32-bit"},
        {with(offsetof(Elf32_Ehdr, e_type), ET_EXEC), "not a shared library"},
    };
    const std::string path = ::testing::TempDir() + "no_library.so";
    for (const auto& [octets, reason] : files) {
        std::ofstream(path, std::ios::binary) << octets;
        expect_refusal(path, reason);
    }
}

}  // namespace
}  // namespace tests
