// The index codec where no table reaches: OIDs as long as they may be, and requests shorter than the prefix.
#include "framework/index.h"

#include <gmock/gmock.h>

#include <numeric>
#include <vector>

namespace tests {
namespace {

using switchmib::build_name;
using switchmib::Kind;
using switchmib::parse_index;
using ::testing::ElementsAre;

constexpr std::size_t kLongest = 128;

struct Two {
    std::uint32_t first;
    std::uint32_t second;
    static constexpr Kind index[] = {Kind::integer, Kind::integer};
};
constexpr auto kTwo = switchmib::shape_of<Two>;

std::vector<oid> prefix_of(std::size_t length) {
    std::vector<oid> prefix(length);
    std::iota(prefix.begin(), prefix.end(), oid{1});
    return prefix;
}

}  // namespace

TEST(Index, FieldsThatNoLongerFitTheNameAreLeftOut) {
    const Two key{7, 8};
    for (const std::size_t length : {kLongest - 3, kLongest - 2, kLongest - 1, kLongest}) {
        const std::vector<oid> prefix = prefix_of(length);
        oid name[kLongest + 8] = {};
        std::size_t name_length = 0;
        build_name(prefix.data(), length, name, &name_length, kTwo, &key);
        EXPECT_EQ(name_length, std::min(length + 2, kLongest));
        EXPECT_EQ(std::vector<oid>(name, name + length), prefix);
        EXPECT_EQ(name[length], length < kLongest ? 7u : 0u);
        EXPECT_EQ(name[length + 1], length < kLongest - 1 ? 8u : 0u);
    }
}

TEST(Index, RequestsBeforeThePrefixParseNothing) {
    const std::vector<oid> prefix = prefix_of(10);
    std::vector<oid> name = prefix_of(12);
    const auto parse = [&](std::size_t length, int exact) {
        Two key{};
        const int result = parse_index(prefix.data(), prefix.size(), name.data(), &length, kTwo, &key, exact);
        return std::vector<oid>{static_cast<oid>(result), static_cast<oid>(length), key.first, key.second};
    };
    constexpr oid kRefused = 0xffffffff;
    EXPECT_THAT(parse(12, 1), ElementsAre(0, 12, 11, 12));
    EXPECT_THAT(parse(11, 1), ElementsAre(0, 11, 11, 0));
    EXPECT_THAT(parse(11, 0), ElementsAre(0, 11, 11, 0));
    for (const int exact : {0, 1}) EXPECT_THAT(parse(10, exact), ElementsAre(0, 10, 0, 0));
    EXPECT_THAT(parse(9, 1), ElementsAre(kRefused, 9, 0, 0));
    EXPECT_THAT(parse(9, 0), ElementsAre(0, 10, 0, 0));
    --name[9];  // sorts before the prefix
    EXPECT_THAT(parse(12, 0), ElementsAre(0, 10, 0, 0));
}

}  // namespace tests
