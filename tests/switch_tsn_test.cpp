// The simulated switch's streams and its clock through the library.
#include "support/simulated_switch.h"

namespace sw {
namespace {

constexpr std::int64_t kPercent = 1'000'000;

Index stream(std::uint32_t talker, std::uint32_t number) {
    return {1, 0x02, 0x48, 0, 0, 1, talker, 0, number, 5120 + talker};
}

TEST_F(OnSwitch, KeepsStreamSettings) {
    EXPECT_EQ(get("ieee8021FqtssDeltaBandwidth", {5121, 0}), 75 * kPercent);
    expect({
        {"ieee8021SrpBridgeBaseMsrpTalkerPruning", {1}, {1, 2}},
        {"ieee8021SrpBridgeBaseMsrpLatencyMaxFrameSize", {1}, 1522},
        {"ieee8021SrpBridgeBaseMsrpLatencyMaxFrameSize", {1}, 2001, "'2001' does not fit"},
        {"ieee8021SrpBridgePortMsrpEnabledStatus", port(1), {2, 1}},
        {"ieee8021SrpBridgePortSrPvid", port(2), 20},
        {"ieee8021FqtssDeltaBandwidth", {5121, 1}, 25 * kPercent},
        {"ieee8021FqtssDeltaBandwidth", {5121, 0}, 76 * kPercent, "more than all of it"},
        {"ieee8021FqtssDeltaBandwidth", {5121, 0}, 0},
        {"ieee8021FqtssDeltaBandwidth", {5121, 1}, 100 * kPercent},
        {"ieee8021AsDefaultDSPriority2", {0}, 200},
        {"ieee8021AsDefaultDSPriority1", {0}, 300, "'300' does not fit"},
    });
    EXPECT_EQ(get("ieee8021FqtssDeltaBandwidth", {5122, 1}), 0);
    EXPECT_EQ(get("ieee8021SrpStreamVlanId", stream(2, 1)), 20);
    EXPECT_EQ(get("ieee8021SrpStreamVlanId", stream(3, 1)), 2);
}

TEST_F(OnSwitch, ShowsStreamsWhileTheirTalkersRegister) {
    const std::vector<Index> all{stream(2, 1), stream(2, 2), stream(3, 1)};
    EXPECT_EQ(rows("ieee8021SrpStreamRank"), all);
    EXPECT_EQ(get("ieee8021SrpStreamId", all[1]), std::string("\x02\x48\0\0\1\2\0\2", 8));
    EXPECT_EQ(get("ieee8021FqtssSrpBoundaryPort", {5122, 0}), 2);
    expect({{"ieee8021SrpBridgePortMsrpEnabledStatus", port(2), 2}});
    EXPECT_EQ(rows("ieee8021SrpStreamRank"), std::vector<Index>{all[2]});
    EXPECT_EQ(get("ieee8021FqtssSrpBoundaryPort", {5122, 0}), 1);
    expect({{"ifAdminStatus", port(3), 2}});
    expect_rows(0, {"ieee8021SrpStreamRank"});
    expect({{"ieee8021SrpBridgePortMsrpEnabledStatus", port(2), 1}});
    expect({{"ieee8021SrpBridgeBaseMsrpEnabledStatus", {1}, 2}});
    expect_rows(0, {"ieee8021SrpStreamRank"});
    // Bridge-wide switches are taken in whatever mode was entered last.
    EXPECT_TRUE(configure(5, "interface port1"));
    expect({{"ieee8021SrpBridgeBaseMsrpEnabledStatus", {1}, 1}});
    EXPECT_EQ(rows("ieee8021SrpStreamRank").size(), 2u);
}

TEST_F(OnSwitch, FollowsTheBestClock) {
    constexpr int kDisabled = 3, kMaster = 6, kSlave = 9;
    const auto syncs = [this](const char* way, std::uint32_t n) {
        return get(std::string("ieee8021AsPortStat") + way + "SyncCount", port(n)).number();
    };
    const auto role = [this](std::uint32_t n) { return get("ieee8021AsPortDSPortRole", port(n)); };
    EXPECT_EQ(role(25), kSlave);
    EXPECT_EQ(role(1), kMaster);
    EXPECT_EQ(role(4), kDisabled);  // no cable
    expect_row({0}, {{"ieee8021AsParentDSGrandmasterPriority1", 100}, {"ieee8021AsCurrentDSStepsRemoved", 1}});
    now_ = seconds(10);
    EXPECT_EQ(syncs("Rx", 25), 80);
    EXPECT_EQ(syncs("Tx", 1), 80);
    EXPECT_EQ(syncs("Tx", 4), 0);

    expect({{"ieee8021AsDefaultDSPriority1", {0}, 99}});  // now the switch is better
    EXPECT_EQ(get("ieee8021AsParentDSGrandmasterIdentity"), get("ieee8021AsDefaultDSClockIdentity"));
    expect_row({0}, {{"ieee8021AsCurrentDSStepsRemoved", 0}, {"ieee8021AsCurrentDSGmChangeCount", 1}});
    EXPECT_EQ(get("ieee8021AsCurrentDSTimeOfLastGmChangeEvent"), 1000);
    EXPECT_EQ(role(25), kMaster);
    now_ += seconds(10);
    EXPECT_EQ(syncs("Rx", 25), 80);
    EXPECT_EQ(syncs("Tx", 25), 80);
    EXPECT_EQ(syncs("Tx", 1), 160);

    expect({{"ieee8021AsDefaultDSPriority1", {0}, 246}, {"ifAdminStatus", port(25), 2}});
    expect_row({0}, {{"ieee8021AsCurrentDSGmChangeCount", 3}, {"ieee8021AsParentDSGrandmasterPriority1", 246}});
    EXPECT_EQ(role(25), kDisabled);
}

}  // namespace
}  // namespace sw
