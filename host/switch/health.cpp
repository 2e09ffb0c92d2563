// The switch's health: how busy the processor is, memory, fan and temperature. All of it follows the uptime.
#include "switch/area.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace sw {
namespace {

using std::chrono::seconds;

constexpr Duration kSample = seconds(5);                             // of the processor
constexpr std::uint32_t kMemory = 1024 * 1024, kFlash = 256 * 1024;  // kilobytes
constexpr std::uint32_t kUsedMemory = 388'000, kUsedFlash = 121'344;
constexpr std::uint32_t kSlowFan = 4200, kFastFan = 9800;  // revolutions a minute

class Health : public Area {
public:
    using Area::Area;
    void describe(Description&) override;

private:
    std::uint32_t cpu(std::uint32_t samples) const;  // percent, the mean of the last samples
    std::int32_t temperature() const;                // degrees Celsius

    std::int32_t low_ = 11, high_ = 79;  // thresholds of the temperature
};

// A number from 0 to 99 that seems random.
std::uint32_t scatter(std::uint64_t n) {
    n = (n ^ n >> 30) * 0xbf58476d1ce4e5b9;
    n = (n ^ n >> 27) * 0x94d049bb133111eb;
    return static_cast<std::uint32_t>((n ^ n >> 31) % 100);
}

std::uint32_t Health::cpu(std::uint32_t samples) const {
    const auto last = static_cast<std::uint64_t>(uptime() / kSample);
    std::uint32_t sum = 0;
    for (std::uint32_t back = 0; back < samples; ++back) {
        const std::uint32_t chance = scatter(last + 1000 - back);
        sum += 6 + chance / 9 + (chance > 92 ? 40 : 0);
    }
    return sum / std::max(samples, 1u);
}

std::int32_t Health::temperature() const {
    const double days = std::chrono::duration<double>(uptime()) / std::chrono::hours(24);
    return 41 + static_cast<std::int32_t>(std::lround(3 * std::sin(2 * std::numbers::pi * days))) +
           static_cast<std::int32_t>(cpu(12)) / 10;
}

void Health::describe(Description& d) {
    const std::string group = "pellamsysmonitorMIBGlobals";
    d.scalars(group, "",
              {{1, "systemCpuUtilization5Seconds", [this] { return cpu(1); }, "show cpu utilization 1"},
               {2, "systemCpuUtilization1Minute", [this] { return cpu(12); }, "show cpu utilization 2"},
               {3, "systemCpuUtilization5Minutes", [this] { return cpu(60); }, "show cpu utilization 3"},
               {4, "systemMemoryTotal", kMemory, "show unit 4"},
               {5, "systemMemoryUsed", [this] { return kUsedMemory + 512 * cpu(60); }, "show unit 5"},
               {6, "systemFlashTotal", kFlash, "show unit 6"},
               {7, "systemFlashUsed", kUsedFlash, "show unit 7"},
               {8, "systemFanSpeed",
                [this] {
                    if (temperature() > high_) return kFastFan;
                    return kSlowFan + 60 * static_cast<std::uint32_t>(temperature()) + cpu(1);
                },
                "show environment fan"},
               {9, "systemTemperature", [this] { return temperature(); }, "show environment temperature 9"},
               {10, "systemTemperatureOverheat", &low_, "show environment temperature 10"},
               {11, "systemTemperatureHeatdown", &high_, "show environment temperature 11"}});
    const Lines<Health> global = d.lines(*this);
    global.number("environment temperature threshold low {-100..200}", &Health::low_);
    global.number("environment temperature threshold high {-100..200}", &Health::high_);
}

}  // namespace

void add_health(Switch& areas) { areas.area<Health>(); }

}  // namespace sw
