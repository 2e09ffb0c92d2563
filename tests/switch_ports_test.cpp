// The hardware of the simulated switch, through the library: Ethernet statistics, power saving, transceivers
// and health.
#include "support/simulated_switch.h"

#include <set>

namespace sw {
namespace {

class Hardware : public OnSwitch {
protected:
    std::int64_t count(const char* object, std::uint32_t n) { return get(object, port(n)).number(); }
    std::int64_t sum(std::uint32_t n, std::initializer_list<const char*> objects) {
        std::int64_t total = 0;
        for (const char* object : objects) total += count(object, n);
        return total;
    }
    std::string text(const char* object, std::uint32_t n) { return std::get<std::string>(get(object, port(n)).is); }
};

TEST_F(Hardware, KeepsWhatIsSet) {
    expect({
        {"dot3PauseAdminMode", port(1), {4, 2, 1}},
        {"dot3PauseAdminMode", port(21), {4, 3}},
        {"dot3PauseAdminMode", port(22), 4},
        {"dot3PauseAdminMode", port(26), 1, "flow control cannot be set"},
        {"swPowerSavingLEDState", {0}, {0, 1}},
        {"swPortEnergyDetectState", port(1), {0, 1}},
        {"swPortEEEState", port(21), {1, 0}},
        {"swPortEEEState", port(25), 1, "the port has no copper"},
        {"swDdmTrapState", {0}, {0, 1, 2, 3}},
        {"swDdmHighAlarm", {5145, 1}, {"80.5", "NA"}},
        {"swDdmLowAlarm", {5145, 2}, "3.05"},
        {"swDdmHighWarning", {5145, 3}, "9"},
        {"swDdmHighWarning", {5145, 4}, "-1"},
        {"swDdmLowWarning", {5146, 5}, "-12.5"},
        {"swDdmHighAlarm", {5145, 1}, "hot", "a threshold is a number"},
        {"swDdmHighAlarm", {5121, 1}, "80", "the port has no transceiver"},
        {"swDdmPortState", port(25), {2, 1}},
        {"swDdmPortShutdown", port(25), {1, 2, 3}},
        {"systemTemperatureOverheat", {0}, -5},
        {"systemTemperatureHeatdown", {0}, 70},
        {"systemTemperatureHeatdown", {0}, 201, "'201' does not fit"},
    });
    // One threshold leaves the others alone.
    EXPECT_EQ(get("swDdmHighAlarm", {5145, 2}), "3.63");
    EXPECT_EQ(get("swDdmHighAlarm", {5146, 1}), "75");
    EXPECT_EQ(get("systemTemperatureOverheat"), -5);
    EXPECT_EQ(get("swPortEEEState", port(25)), kNone);
}

TEST_F(Hardware, CountsErrorsAsAPartOfTheInterfaces) {
    now_ = hours(100);
    for (const std::uint32_t n : {1u, 15u, 25u}) {
        const std::int64_t in = sum(n, {"dot3StatsAlignmentErrors", "dot3StatsFCSErrors", "dot3StatsFrameTooLongs",
                                        "dot3StatsInternalMacReceiveErrors"});
        const std::int64_t out = sum(n, {"dot3StatsLateCollisions", "dot3StatsExcessiveCollisions",
                                         "dot3StatsInternalMacTransmitErrors", "dot3StatsCarrierSenseErrors"});
        EXPECT_TRUE(in > 0 && in <= count("ifInErrors", n)) << in;
        EXPECT_TRUE(out > 0 && out <= count("ifOutErrors", n)) << out;
        EXPECT_EQ(count("dot3HCStatsFCSErrors", n), count("dot3StatsFCSErrors", n));
    }
    EXPECT_EQ(count("dot3StatsFCSErrors", 4), 0);  // no cable
    EXPECT_EQ(count("dot3StatsDuplexStatus", 4), 1);
}

TEST_F(Hardware, HasCollisionsInHalfDuplexAlone) {
    const auto collisions = [this](std::uint32_t n) { return count("dot3StatsSingleCollisionFrames", n); };
    now_ = hours(1);
    EXPECT_GT(collisions(15), 0);
    EXPECT_EQ(count("swPortDuplexStatus", 15), 2);
    EXPECT_EQ(collisions(1), 0);
    expect({{"swPortSpeed", port(1), 2}, {"swPortDuplex", port(1), 2}});
    EXPECT_EQ(count("dot3StatsDuplexStatus", 1), 2);
    EXPECT_EQ(collisions(1), 0);
    now_ = hours(2);
    const std::int64_t before = collisions(1);
    EXPECT_GT(before, 0);
    expect({{"swPortDuplex", port(1), 1}});
    EXPECT_EQ(count("dot3StatsDuplexStatus", 1), 3);
    now_ = hours(3);
    EXPECT_EQ(collisions(1), before);
}

TEST_F(Hardware, PausesWhileItIsSetAndUp) {
    expect({{"swPortFlowControlSend", port(1), 1}});
    expect_row(port(1), {{"dot3PauseAdminMode", 2}, {"dot3PauseOperMode", 2}});
    now_ = hours(10);
    const std::int64_t paused = count("dot3HCOutPauseFrames", 1);
    EXPECT_GT(paused, 0);
    EXPECT_EQ(count("dot3InPauseFrames", 1), 0);
    expect({{"ifAdminStatus", port(1), 2}});
    expect_row(port(1), {{"dot3PauseAdminMode", 2}, {"dot3PauseOperMode", 1}});
    now_ = hours(20);
    EXPECT_EQ(count("dot3OutPauseFrames", 1), paused);
}

TEST_F(Hardware, MarksReadingsThatPassAThreshold) {
    EXPECT_EQ(rows("swDdmTemperature"), (std::vector<Index>{port(22), port(25), port(26)}));
    const std::string quiet = text("swDdmTemperature", 25);
    EXPECT_EQ(quiet.find(' '), quiet.npos) << quiet;
    EXPECT_EQ(text("swDdmRxPower", 26), "-40.00 --");  // no cable
    // The alarm comes before the warning, and nothing is marked without a threshold or monitoring.
    expect({{"swDdmHighWarning", {5145, 1}, "20"}});
    EXPECT_EQ(text("swDdmTemperature", 25), quiet + " +");
    expect({{"swDdmHighAlarm", {5145, 1}, "30"}});
    EXPECT_EQ(text("swDdmTemperature", 25), quiet + " ++");
    expect({{"swDdmPortState", port(25), 2}});
    EXPECT_EQ(text("swDdmTemperature", 25), quiet);
    expect({{"swDdmPortState", port(25), 1}, {"swDdmHighAlarm", {5145, 1}, "NA"}});
    expect({{"swDdmHighWarning", {5145, 1}, "NA"}, {"swDdmLowWarning", {5145, 1}, "60"}});
    EXPECT_EQ(text("swDdmTemperature", 25), quiet + " -");

    std::set<std::string> voltages;
    for (; now_ < hours(1); now_ += std::chrono::minutes(5)) voltages.insert(text("swDdmVoltage", 22));
    EXPECT_GT(voltages.size(), 2u);
}

TEST_F(Hardware, HealthVariesWithinBounds) {
    std::set<std::int64_t> busy, degrees, fans;
    for (; now_ < hours(24); now_ += std::chrono::minutes(20)) {
        for (const char* period : {"5Seconds", "1Minute", "5Minutes"})
            busy.insert(get(std::string("systemCpuUtilization") + period).number());
        degrees.insert(get("systemTemperature").number());
        fans.insert(get("systemFanSpeed").number());
        EXPECT_LT(get("systemMemoryUsed").number(), get("systemMemoryTotal").number());
    }
    EXPECT_GE(*busy.begin(), 1);
    EXPECT_LE(*busy.rbegin(), 100);
    EXPECT_GT(busy.size(), 5u);
    EXPECT_GT(degrees.size(), 3u);
    EXPECT_LT(*degrees.rbegin(), 79);
    EXPECT_GT(fans.size(), 3u);
    // The fan runs at full speed above the high threshold.
    expect({{"systemTemperatureHeatdown", {0}, 20}});
    EXPECT_GT(get("systemFanSpeed").number(), *fans.rbegin());
}

struct LongRunningSwitch : OnSwitch {
    LongRunningSwitch() : OnSwitch({}, hours(12)) {}
};

// A switch has counted since it started, not since its process did.
TEST_F(LongRunningSwitch, HasCountedSinceItStarted) {
    EXPECT_EQ(get("ifLastChange", port(1)), 0);
    EXPECT_GT(get("ifInUcastPkts", port(1)).number(), 1'000'000);
}

}  // namespace
}  // namespace sw
