// Power saving: the port LEDs, and energy detection and Energy-Efficient Ethernet of the ports that have copper.
#include "switch/ports.h"

namespace sw {
namespace {

struct Saving {
    bool energy_detect = true;
    bool eee = false;
};

class PowerSaving : public Area {
public:
    explicit PowerSaving(Switch& its_switch) : Area(its_switch), ports_(its_switch.area<Ports>()) {
        for (const auto& [ifindex, port] : ports_.all())
            if (port.has_copper()) by_port_.emplace(ifindex, Saving());
    }
    void describe(Description&) override;

private:
    Ports& ports_;
    std::map<std::uint32_t, Saving> by_port_;  // by ifIndex
    bool leds_off_ = false;
};

void PowerSaving::describe(Description& d) {
    d.scalars("pellamPowerSavingMIBGlobals", "show ports leds configuration",
              {{1, "swPowerSavingLEDState", [this] { return leds_off_ ? 0 : 1; }}});
    d.table({.name = "swPowerSavingPortStatusTable",
             .show = "show port powersaving_table {int}",
             .rows = rows_of(by_port_, {{1, "swPowerSavingPort", from_index()},
                                        {2, "swPortEnergyDetectState", zero_or_one(&Saving::energy_detect)},
                                        {3, "swPortEEEState", zero_or_one(&Saving::eee)}})});

    d.lines(*this).flag("disable ports leds", &PowerSaving::leds_off_);
    const Lines<Saving> port = ports_.lines(d).of(by_port_, "the port has no copper");
    port.flag("green-ethernet energy-detect", &Saving::energy_detect);
    port.flag("eee enable", &Saving::eee);
}

}  // namespace

void add_power_saving(Switch& areas) { areas.area<PowerSaving>(); }

}  // namespace sw
