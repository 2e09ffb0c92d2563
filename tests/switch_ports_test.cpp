// The hardware of the simulated switch, through the library: Ethernet statistics, power saving, transceivers
// and health.
#include "support/simulated_switch.h"

#include <algorithm>
#include <chrono>
#include <set>

namespace sw {
namespace {

using std::chrono::hours;
using std::chrono::seconds;

class Hardware : public OnSwitch {
protected:
    std::int64_t count(const char* object, std::uint32_t n) { return get(object, port(n)).number(); }
    std::string text(const char* object, std::uint32_t n) { return std::get<std::string>(get(object, port(n)).is); }
};

TEST_F(Hardware, KeepsWhatIsSet) {
    expect({
        {"dot3PauseAdminMode", port(1), 4},
        {"dot3PauseAdminMode", port(1), 2},
        {"dot3PauseAdminMode", port(1), 1},
        {"dot3PauseAdminMode", port(21), 4},
        {"dot3PauseAdminMode", port(21), 3},
        {"dot3PauseAdminMode", port(22), 4},
        {"dot3PauseAdminMode", port(26), 1, "flow control cannot be set"},
        {"swPowerSavingLEDState", {0}, 0},
        {"swPowerSavingLEDState", {0}, 1},
        {"swPortEnergyDetectState", port(1), 0},
        {"swPortEnergyDetectState", port(1), 1},
        {"swPortEEEState", port(21), 1},
        {"swPortEEEState", port(21), 0},
        {"swPortEEEState", port(25), 1, "the port has no copper"},
        {"swDdmTrapState", {0}, 0},
        {"swDdmTrapState", {0}, 1},
        {"swDdmTrapState", {0}, 2},
        {"swDdmTrapState", {0}, 3},
        {"swDdmHighAlarm", {5145, 1}, "80.5"},
        {"swDdmHighAlarm", {5145, 1}, "NA"},
        {"swDdmLowAlarm", {5145, 2}, "3.05"},
        {"swDdmHighWarning", {5145, 3}, "9"},
        {"swDdmHighWarning", {5145, 4}, "-1"},
        {"swDdmLowWarning", {5146, 5}, "-12.5"},
        {"swDdmHighAlarm", {5145, 1}, "hot", "a threshold is a number"},
        {"swDdmHighAlarm", {5121, 1}, "80", "the port has no transceiver"},
        {"swDdmPortState", port(25), 2},
        {"swDdmPortState", port(25), 1},
        {"swDdmPortShutdown", port(25), 1},
        {"swDdmPortShutdown", port(25), 2},
        {"swDdmPortShutdown", port(25), 3},
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
        const std::int64_t in = count("dot3StatsAlignmentErrors", n) + count("dot3StatsFCSErrors", n) +
                                count("dot3StatsFrameTooLongs", n) + count("dot3StatsInternalMacReceiveErrors", n);
        const std::int64_t out = count("dot3StatsLateCollisions", n) + count("dot3StatsExcessiveCollisions", n) +
                                 count("dot3StatsInternalMacTransmitErrors", n) +
                                 count("dot3StatsCarrierSenseErrors", n);
        EXPECT_GT(in, 0);
        EXPECT_LE(in, count("ifInErrors", n));
        EXPECT_GT(out, 0);
        EXPECT_LE(out, count("ifOutErrors", n));
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
    EXPECT_EQ(count("dot3PauseAdminMode", 1), 2);
    EXPECT_EQ(count("dot3PauseOperMode", 1), 2);
    now_ = hours(10);
    const std::int64_t paused = count("dot3HCOutPauseFrames", 1);
    EXPECT_GT(paused, 0);
    EXPECT_EQ(count("dot3InPauseFrames", 1), 0);
    expect({{"ifAdminStatus", port(1), 2}});
    EXPECT_EQ(count("dot3PauseAdminMode", 1), 2);
    EXPECT_EQ(count("dot3PauseOperMode", 1), 1);
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
    expect({{"swDdmPortState", port(25), 1},
            {"swDdmHighAlarm", {5145, 1}, "NA"},
            {"swDdmHighWarning", {5145, 1}, "NA"},
            {"swDdmLowWarning", {5145, 1}, "60"}});
    EXPECT_EQ(text("swDdmTemperature", 25), quiet + " -");

    std::set<std::string> voltages;
    for (; now_ < hours(1); now_ += std::chrono::minutes(5)) voltages.insert(text("swDdmVoltage", 22));
    EXPECT_GT(voltages.size(), 2u);
}

TEST_F(Hardware, HealthVariesWithinBounds) {
    std::set<std::int64_t> busy, degrees, fans;
    for (; now_ < hours(24); now_ += std::chrono::minutes(20)) {
        for (const char* object :
             {"systemCpuUtilization5Seconds", "systemCpuUtilization1Minute", "systemCpuUtilization5Minutes"}) {
            busy.insert(get(object).number());
        }
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

// A switch has counted since it started, not since its process did.
TEST(LongRunningSwitch, HasCountedSinceItStarted) {
    SimulatedSwitch old({[] { return hours(12); }, {}, {}});
    const auto ask = [&old](int magic) {
        std::uint32_t key = 5121, number = 0;
        std::size_t length = 0;
        services::ShowRequest request{2,          "show interface_uib interfaces 5121",
                                      &number,    sizeof number,
                                      &length,    &key,
                                      sizeof key, magic,
                                      1,          0,
                                      "ifTable",  1};
        EXPECT_TRUE(old.show(request));
        return number;
    };
    EXPECT_EQ(ask(9), 0u);
    EXPECT_GT(ask(11), 1'000'000u);
}

}  // namespace
}  // namespace sw
