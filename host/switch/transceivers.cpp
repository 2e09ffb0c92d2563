// The optical transceivers in the fiber ports: what they measure, the thresholds of alarms and warnings, and what an
// alarm does. A reading that passes a threshold is marked: ++ high alarm, + high warning, - low warning, -- low alarm.
#include "switch/ports.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <numbers>

namespace sw {
namespace {

enum Quantity : std::uint32_t { kTemperature = 1, kVoltage, kBiasCurrent, kTxPower, kRxPower };

enum Limit : std::size_t { kHighAlarm, kLowAlarm, kHighWarning, kLowWarning };
using Thresholds = std::array<std::string, 4>;  // as texts; empty: there is none

// What a transceiver measures: around `usual`, as far as `swing` from it in the course of `period`.
struct Measured {
    Quantity quantity;
    double usual, swing;
    Duration period;
    Thresholds thresholds;
};
const std::array<Measured, 5> kMeasured{{
    {kTemperature, 41.5, 6.5, std::chrono::hours(24), {"75", "-5", "70", "0"}},          // degrees Celsius
    {kVoltage, 3.31, 0.02, std::chrono::minutes(47), {"3.63", "2.97", "3.46", "3.13"}},  // volts
    {kBiasCurrent, 7.2, 0.8, std::chrono::hours(11), {"12.5", "2.5", "11.5", "3.5"}},    // milliamperes
    {kTxPower, -2.4, 0.3, std::chrono::hours(5), {"1", "-8.5", "0", "-7.5"}},            // dBm
    {kRxPower, -5.6, 0.9, std::chrono::minutes(83), {"1", "-16.5", "0", "-14.5"}},       // dBm
}};
constexpr double kNoLight = -40;  // dBm

std::optional<double> number_of(std::string_view text) {
    double number;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(number)) return {};
    return number;
}

struct Transceiver {
    bool monitored = true;
    std::uint32_t shutdown = 3;  // by 1 alarms, 2 warnings, 3 neither
};

class Transceivers : public Area {
public:
    explicit Transceivers(Switch&);
    void describe(Description&) override;

private:
    double reading(std::uint32_t ifindex, const Measured& measured) const;
    std::string status(std::uint32_t ifindex, Quantity quantity) const;
    void add_lines(Description&);

    Ports& ports_;
    std::map<std::uint32_t, Transceiver> by_port_;  // by ifIndex
    std::map<Index, Thresholds> thresholds_;        // by ifIndex, quantity
    std::uint32_t traps_ = 3;                       // of 0 nothing, 1 alarms, 2 warnings, 3 both
};

Transceivers::Transceivers(Switch& its_switch) : Area(its_switch), ports_(its_switch.area<Ports>()) {
    for (const auto& [ifindex, port] : ports_.all()) {
        if (port.has_copper() && !port.fiber.cable) continue;
        by_port_.emplace(ifindex, Transceiver());
        for (const Measured& measured : kMeasured) thresholds_[{ifindex, measured.quantity}] = measured.thresholds;
    }
}

double Transceivers::reading(std::uint32_t ifindex, const Measured& measured) const {
    if (measured.quantity == kRxPower && !ports_.all().at(ifindex).fiber.cable) return kNoLight;
    const std::chrono::duration<double> time = uptime(), period = measured.period;
    const double own = static_cast<double>(ifindex % 7) / 7;  // no two transceivers are the same
    return measured.usual + measured.swing * (std::sin(2 * std::numbers::pi * (time / period + own)) + own) / 2;
}

std::string Transceivers::status(std::uint32_t ifindex, Quantity quantity) const {
    const double value = reading(ifindex, kMeasured[quantity - 1]);
    const Thresholds& thresholds = thresholds_.at({ifindex, quantity});
    const auto passes = [&](Limit limit, bool high) {
        const std::optional<double> threshold = number_of(thresholds[limit]);
        return threshold && (high ? value > *threshold : value < *threshold);
    };
    const char* mark = !by_port_.at(ifindex).monitored ? ""
                       : passes(kHighAlarm, true)      ? " ++"
                       : passes(kLowAlarm, false)      ? " --"
                       : passes(kHighWarning, true)    ? " +"
                       : passes(kLowWarning, false)    ? " -"
                                                       : "";
    return fmt::format("{:.2f}{}", value, mark);
}

void Transceivers::describe(Description& d) {
    const auto shows = [this](Quantity quantity) {
        return [this, quantity](const Transceiver&, const Index& row) { return status(row[0], quantity); };
    };
    d.scalars("swDdmMIBGlobals", "show ddm-snmp trap", {{1, "swDdmTrapState", &traps_}});
    d.table({.name = "swDdmStatusTable",
             .show = "show ddm-snmp status [{int}]",
             .rows = rows_of(by_port_, {{1, "swDdmPort", from_index()},
                                        {2, "swDdmTemperature", shows(kTemperature)},
                                        {3, "swDdmVoltage", shows(kVoltage)},
                                        {4, "swDdmBiasCurrent", shows(kBiasCurrent)},
                                        {5, "swDdmTxPower", shows(kTxPower)},
                                        {6, "swDdmRxPower", shows(kRxPower)}})});
    const auto threshold = [](Limit limit) {
        return [limit](const Thresholds& t) { return t[limit].empty() ? "NA" : t[limit]; };
    };
    d.table({.name = "swDdmThresholdMgmtTable",
             .show = "show ddm-snmp configuration [{int} {int}]",
             .key = {kInteger, kInteger},
             .rows = rows_of(thresholds_, {{1, "swDdmThresholdType", from_index(1)},
                                           {2, "swDdmHighAlarm", threshold(kHighAlarm)},
                                           {3, "swDdmLowAlarm", threshold(kLowAlarm)},
                                           {4, "swDdmHighWarning", threshold(kHighWarning)},
                                           {5, "swDdmLowWarning", threshold(kLowWarning)}})});
    d.table({.name = "swDdmPortMgmtTable",
             .show = "show ddm-snmp portmgmt [{int}]",
             .rows = rows_of(by_port_, {{1, "swDdmPortState", &Transceiver::monitored},
                                        {2, "swDdmPortShutdown", &Transceiver::shutdown}})});
    add_lines(d);
}

void Transceivers::add_lines(Description& d) {
    const Lines<Transceivers> global = d.lines(*this);
    const std::string traps = "snmp-server enable traps transceiver-monitoring";
    global.set("no " + traps, &Transceivers::traps_, 0);
    global.choice(traps + " alarm|warning", &Transceivers::traps_);
    global.set(traps, &Transceivers::traps_, 3);

    const Lines<Transceiver> port = ports_.lines(d).of(by_port_, "the port has no transceiver");
    port.flag("transceiver-monitoring enable", &Transceiver::monitored);
    port.choice("transceiver-monitoring action shutdown alarm|warning", &Transceiver::shutdown);
    port.set("no transceiver-monitoring action shutdown", &Transceiver::shutdown, 3);

    const std::pair<const char*, Quantity> quantities[] = {{"temperature", kTemperature},
                                                           {"voltage", kVoltage},
                                                           {"bias-current", kBiasCurrent},
                                                           {"tx-power", kTxPower},
                                                           {"rx-power", kRxPower}};
    const std::pair<const char*, Limit> limits[] = {{"high alarm", kHighAlarm},
                                                    {"low alarm", kLowAlarm},
                                                    {"high warning", kHighWarning},
                                                    {"low warning", kLowWarning}};
    for (const auto& [quantity, number] : quantities)
        for (const auto& [words, limit] : limits) {
            const std::string line = fmt::format("transceiver-monitoring {} {}", quantity, words);
            const auto of = [this, number = number, limit = limit](const Entered& entered) -> std::string& {
                return thresholds_[{entered.object, number}][limit];
            };
            port.line(line + " {word}", [of](Transceiver&, const Arguments& arguments, const Entered& entered) {
                require(number_of(arguments[0].text).has_value(), "a threshold is a number");
                of(entered) = arguments[0].text;
            });
            port.line("no " + line,
                      [of](Transceiver&, const Arguments&, const Entered& entered) { of(entered).clear(); });
        }
}

}  // namespace

void add_transceivers(Switch& areas) { areas.area<Transceivers>(); }

}  // namespace sw
