// Streams with reserved bandwidth: how they are registered (MSRP), who talks, and the bandwidth of their two classes.
#include "switch/ports.h"

#include <fmt/format.h>

#include <array>

namespace sw {
namespace {

constexpr std::uint32_t kClasses = 2;                 // of streams: 0 is class A, 1 class B
constexpr std::uint32_t kAllBandwidth = 100'000'000;  // millionths of a percent

struct BridgeSettings {
    bool enabled = true;
    bool talker_pruning = false;
    std::uint32_t latency_max_frame = 2000;  // octets
};

struct PortSettings {
    bool enabled = true;
    std::uint32_t pvid = 2;                                        // VLAN of the streams
    std::array<std::uint32_t, kClasses> bandwidth{75'000'000, 0};  // millionths of a percent of the port's
};

struct Stream {
    Mac destination;
    std::uint32_t max_frame;  // octets
    std::uint32_t frames;     // in an interval
    bool emergency;
};

class Streams : public Area {
public:
    explicit Streams(Switch& its_switch)
        : Area(its_switch), ports_(its_switch.area<Ports>()), by_port_(ports_.each<PortSettings>()) {
        add_talker(2, 1, {{0x91, 0xe0, 0xf0, 0x00, 0x0e, 0x80}, 224, 1, false});   // a microphone
        add_talker(2, 2, {{0x91, 0xe0, 0xf0, 0x00, 0x0e, 0x81}, 224, 1, true});    // its alarm
        add_talker(3, 1, {{0x91, 0xe0, 0xf0, 0x00, 0x0e, 0x82}, 1470, 2, false});  // a camera
    }
    void describe(Description&) override;

private:
    void add_talker(unsigned char port, unsigned char number, const Stream& stream) {
        const Index id{0x02, 0x48, 0, 0, 1, port, 0, number};  // the port's first station, its stream
        streams_.emplace(join({{kComponent}, id, {kPortIfIndexBase + port}}), stream);
    }
    bool registers(std::uint32_t ifindex) const {
        return bridge_.at(kComponent).enabled && by_port_.at(ifindex).enabled && ports_.interfaces().is_up(ifindex);
    }
    Rows classes(Column<std::uint32_t> column) const;
    void add_streams(Description&);

    Ports& ports_;
    std::map<std::uint32_t, BridgeSettings> bridge_{{kComponent, {}}};
    std::map<std::uint32_t, PortSettings> by_port_;  // by ifIndex
    std::map<Index, Stream> streams_;                // by component, stream, the talker's ifIndex
};

// A row for each port and class, whose fact is the class.
Rows Streams::classes(Column<std::uint32_t> column) const {
    const FindRow<std::uint32_t> from = [this](const Index& index) -> std::optional<std::pair<Index, std::uint32_t>> {
        for (auto port = lower_bound(by_port_, {index[0]}); port != by_port_.end(); ++port)
            for (std::uint32_t n = 0; n < kClasses; ++n)
                if (Index row{port->first, n}; row >= index) return std::pair{std::move(row), n};
        return {};
    };
    return rows_from(from, {std::move(column)});
}

void Streams::describe(Description& d) {
    d.table({.name = "ieee8021SrpBridgeBaseTable",
             .show = "show snmp ieee8021srp-bridge [{int}]",
             .rows = rows_of(
                 bridge_, {{1, "ieee8021SrpBridgeBaseMsrpEnabledStatus", &BridgeSettings::enabled},
                           {2, "ieee8021SrpBridgeBaseMsrpTalkerPruning", &BridgeSettings::talker_pruning},
                           {4, "ieee8021SrpBridgeBaseMsrpLatencyMaxFrameSize", &BridgeSettings::latency_max_frame}})});
    d.table({.name = "ieee8021SrpBridgePortTable",
             .show = "show snmp ieee8021srp-bridge interface [{int}]",
             .rows = rows_of(by_port_, {{1, "ieee8021SrpBridgePortMsrpEnabledStatus", &PortSettings::enabled},
                                        {4, "ieee8021SrpBridgePortSrPvid", &PortSettings::pvid}})});
    add_streams(d);
    const KeyLayout port_and_class{kInteger, kInteger};
    d.table({.name = "ieee8021FqtssBapTable",
             .show = "show snmp ieee8021fqtss-bap {int} {int}",
             .key = port_and_class,
             .rows = classes({2, "ieee8021FqtssDeltaBandwidth", [this](std::uint32_t n, const Index& row) {
                                  return by_port_.at(row[0]).bandwidth[n];
                              }})});
    // The stream domain ends at ports that do not register, or whose neighbours do not.
    d.table({.name = "ieee8021FqtssSrpRegenOverrideTable",
             .show = "show snmp ieee8021fqtss-srp-regen-override {int} {int}",
             .key = port_and_class,
             .rows = classes({3, "ieee8021FqtssSrpBoundaryPort", [this](std::uint32_t, const Index& row) {
                                  return !registers(row[0]) || row[0] % 5 == 0;
                              }})});

    const auto bridge = [this](const Entered&) -> BridgeSettings& { return bridge_.at(kComponent); };
    const Lines<BridgeSettings> anywhere = d.lines<BridgeSettings>({kAny}, bridge);
    anywhere.flag("msrp global", &BridgeSettings::enabled);
    anywhere.flag("msrp talker-pruning", &BridgeSettings::talker_pruning);
    d.lines<BridgeSettings>({kGlobal}, bridge)
        .number("msrp latency-frame-size {64..2000}", &BridgeSettings::latency_max_frame);
    const Lines<PortSettings> port = ports_.lines(d).of(by_port_);
    port.flag("msrp enable", &PortSettings::enabled);
    port.number("msrp sr-pvid {1..4094}", &PortSettings::pvid);
    d.lines(*this).line(
        fmt::format("msrp_snmp interface {{int}} delta-bandwidth class-a|class-b {{0..{}}}", kAllBandwidth),
        [this](const Arguments& arguments) {
            const auto entry = by_port_.find(arguments[0].number);
            require(entry != by_port_.end(), "there is no such port");
            auto& bandwidth = entry->second.bandwidth;
            const bool is_b = arguments[1].text == "class-b";
            require(bandwidth[is_b ? 0 : 1] + arguments[2].number <= kAllBandwidth,
                    "both classes together have more than all of it");
            bandwidth[is_b ? 1 : 0] = arguments[2].number;
        });
}

void Streams::add_streams(Description& d) {
    // A stream is there while its talker's port registers.
    const auto while_registered = [this](auto fact) {
        return [this, fact](const Stream& stream, const Index& row) -> std::optional<Value> {
            if (!registers(row.back())) return {};
            if constexpr (std::is_invocable_v<decltype(fact), const Index&>)
                return value_of(fact(row));
            else
                return value_of(std::invoke(fact, stream));
        };
    };
    d.table(
        {.name = "ieee8021SrpStreamTable",
         .show = "show snmp ieee8021srp-stream {int} {octets} {int}",
         .key = {kInteger, fixed_string(8), kInteger},
         .rows = rows_of(
             streams_,
             {{1, "ieee8021SrpStreamId", while_registered([](const Index& row) { return octets_of(&row[1], 8); })},
              {2, "ieee8021SrpStreamDestinationAddress", while_registered(&Stream::destination)},
              {3, "ieee8021SrpStreamVlanId",
               while_registered([this](const Index& row) { return by_port_.at(row.back()).pvid; })},
              {4, "ieee8021SrpStreamTspecMaxFrameSize", while_registered(&Stream::max_frame)},
              {5, "ieee8021SrpStreamTspecMaxIntervalFrames", while_registered(&Stream::frames)},
              // 0 emergency, 1 not
              {7, "ieee8021SrpStreamRank", while_registered([](const Stream& s) { return s.emergency ? 0 : 1; })}})});
}

}  // namespace

void add_streams(Switch& areas) { areas.area<Streams>(); }

}  // namespace sw
