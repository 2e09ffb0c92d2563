// The library forms its commands with a formatter of its own: every text is printf's.
#include "framework/command.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace tests {
namespace {

using switchmib::format_number;
using switchmib::NumberFormat;
using switchmib::Text;

// Both give the same text, in buffers that are long enough and in short ones.
template <std::size_t capacity, class... Arguments>
void expect_printf(const char* format, Arguments... arguments) {
    char expected[capacity];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-truncation"
    std::snprintf(expected, capacity, format, arguments...);
    EXPECT_STREQ(Text<capacity>(format, arguments...).c_str(), expected) << format;
#pragma GCC diagnostic pop
}
template <class... Arguments>
void expect_printf_everywhere(const char* format, Arguments... arguments) {
    expect_printf<200>(format, arguments...);
    expect_printf<12>(format, arguments...);
    expect_printf<5>(format, arguments...);
    expect_printf<1>(format, arguments...);
}

std::uint32_t number(std::mt19937& random) {
    static constexpr std::uint32_t kEdges[] = {0,   1,    9,     10,         99,         100,
                                               101, 1000, 65535, 0x7fffffff, 0x80000000, 0xffffffff};
    const std::uint32_t any = static_cast<std::uint32_t>(random());
    return any % 3 == 0 ? kEdges[any / 3 % std::size(kEdges)] : any >> any % 32;
}

std::string text(std::mt19937& random) {
    std::string octets(random() % 40, '\0');
    for (char& octet : octets) octet = static_cast<char>(1 + random() % 255);
    return octets;
}

}  // namespace

TEST(Command, IsPrintfsTextForWhatCommandsUse) {
    std::mt19937 random(7);
    static const char* const kNumbers[] = {"%d",   "a%d",     "ab%d", "abc %d", "show swport swport_table %d",
                                           "%u.",  "%x",      "%X",   "%02x",   "%02X",
                                           "%04d", "%2.2x",   "%5d",  "%05u",   "%.3d",
                                           "%8x",  "100%%%d", "%1d"};
    for (int round = 0; round < 20000; ++round) {
        const std::uint32_t value = number(random);
        expect_printf_everywhere(kNumbers[random() % std::size(kNumbers)], value);
        if (round % 8 != 0) continue;
        const std::string string = text(random);
        expect_printf_everywhere("%s", string.c_str());
        expect_printf_everywhere("name %.64s|", string.c_str());
        expect_printf_everywhere("desc %.*s|", static_cast<int>(random() % 45) - 2, string.c_str());
        expect_printf_everywhere("%9s %d %s%u", string.c_str(), value, "", number(random));
    }
    expect_printf_everywhere("interface");
    expect_printf_everywhere("");
    expect_printf_everywhere("%02x-%02x-%02X %s/%d vlan %d ", 0u, 0x1fu, 0xabu, "10.0.0.0", 24, 4094);
}

TEST(Command, CutInTwoWhenCompiledIsTheSame) {
    static constexpr NumberFormat kInTheMiddle("show vlan %d members"), kAlone("%d");
    for (const std::uint32_t value : {0u, 7u, 10u, 4094u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        const std::string printed = std::to_string(static_cast<std::int32_t>(value));
        const std::string words = "show vlan " + printed + " members";
        EXPECT_EQ(Text<60>(kInTheMiddle, value).c_str(), words);
        EXPECT_EQ(Text<14>(kInTheMiddle, value).c_str(), words.substr(0, 13));
        EXPECT_EQ(Text<60>(kAlone, value).c_str(), printed);
    }
}

}  // namespace tests
