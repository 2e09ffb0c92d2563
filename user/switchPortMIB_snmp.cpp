// The switch ports' physical settings: duplex, speed, flow control, medium, breakout and frame size. What a port takes
// depends on what it is: its type flags and its active medium.
#define MODULE switchPortMIB
#include "framework/module.h"
#include "framework/port.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 2, 1);

constexpr Scalars switchPortMIBGlobals{
    .name = "switchPortMIBGlobals",
    .text = "show swport table_number",
    .scalars = {{{0, 2}, "swPortTableNumber", Gauge32, ReadOnly}},
};

// --- swPortTable -----------------------------------------------------------------------------------------------------

TABLE(swPortTable, SWPORTTABLE, 0, 3, 1);

// What every writer here begins with.
struct Port {
    std::uint32_t ifindex;
    InterfaceName name;

    std::uint32_t type() const { return port_info(ifindex, PortItem::type); }
    std::uint32_t medium() const { return port_info(ifindex, PortItem::medium); }
};

Error parse(Set& set, std::int32_t& value, Port& port) {
    InterfaceKey row;
    TRY(set.integer(value));
    TRY(set.row(row));
    port.ifindex = row.ifindex;
    return set.interface_name(row.ifindex, port.name);
}

Error write_swPortDuplex(Set& set) {
    static constexpr const char* kWords[] = {"full", "half", "auto"};
    std::int32_t duplex;
    Port port;
    TRY(parse(set, duplex, port));
    const std::uint32_t type = port.type();
    if (port.medium() != kCopper) return notWritable;
    TRY(set.range(duplex, 1, 3));
    if (!set.acting()) return noError;
    TRY(set.enter(port.name));
    return set.sub({"duplex %s%s", kWords[duplex - 1], medium_word(type, kCopper)});
}

// A speed, and the medium that must be active for it on a combo port, whose line names it, and on another port.
enum Needs : std::uint32_t { anyMedium = 0, copper = kCopper, fiber = kFiber, refused };
struct Speed {
    const char* words;
    Needs combo;
    Needs other;
};

Error write_swPortSpeed(Set& set) {
    constexpr std::int32_t kLowest = -3, kHighest = 12;
    static constexpr Speed kSpeeds[] = {
        {"1000", fiber, anyMedium},          // -3
        {"1000 slave", copper, anyMedium},   // -2
        {"1000 master", copper, anyMedium},  // -1
        {nullptr, refused, refused},         // 0, which doesn't come so far
        {"10", copper, anyMedium},           // 1
        {"100", copper, anyMedium},          // 2
        {"1000", refused, anyMedium},        // 3: a combo port refuses it in ACTION only
        {nullptr, refused, refused},         // 4 and 5: every port refuses them in ACTION only
        {nullptr, refused, refused},         // 5
        {"auto", anyMedium, anyMedium},      // 6
        {"auto 10", copper, copper},         // 7
        {"auto 100", copper, copper},        // 8
        {"auto 1000", copper, copper},       // 9
        {"auto 10,100", copper, copper},     // 10
        {"auto 10,1000", copper, copper},    // 11
        {"auto 100,1000", copper, copper},   // 12
    };
    std::int32_t value;
    Port port;
    TRY(parse(set, value, port));
    const std::uint32_t type = port.type();
    const std::uint32_t medium = port.medium();
    TRY(set.range(value, kLowest, kHighest));
    if (value == 0) return wrongValue;
    if (!set.acting()) return noError;
    TRY(set.enter(port.name));
    // Refused only now, after the interface line, as is a medium that doesn't fit.
    if (type & kSpeedFixed) return notWritable;
    const bool combo = type & kComboPort;
    const Speed& speed = kSpeeds[value - kLowest];
    const Needs needs = combo ? speed.combo : speed.other;
    if (needs == refused || (needs != anyMedium && needs != medium)) return wrongValue;
    return set.sub({"speed %s%s", speed.words, medium_word(type, medium)});
}

Error write_flow_control(Set& set, const char* direction) {
    std::int32_t on;
    Port port;
    TRY(parse(set, on, port));
    const std::uint32_t type = port.type();
    const std::uint32_t medium = port.medium();
    if (type & kFlowControlFixed) return notWritable;
    TRY(set.range(on, 0, 1));
    if (!set.acting()) return noError;
    TRY(set.enter(port.name));
    return set.sub({"flowcontrol %s %s%s", direction, on ? "on" : "off", medium_word(type, medium)});
}

Error write_swPortFlowControlSend(Set& set) { return write_flow_control(set, "send"); }
Error write_swPortFlowControlReceive(Set& set) { return write_flow_control(set, "receive"); }

Error write_swPortMedium(Set& set) {
    static constexpr const char* kLines[] = {
        "media-type fiber auto-failover",
        "media-type copper auto-failover",
        "media-type fiber",
        "media-type copper",
    };
    std::int32_t medium;
    Port port;
    TRY(parse(set, medium, port));
    const std::uint32_t type = port.type();
    TRY(set.range(medium, 1, 4));
    if (!set.acting()) return noError;
    TRY(set.enter(port.name));
    // Unlike the other capabilities, this one is looked at after the interface line.
    if (!(type & kComboPort)) return notWritable;
    return set.sub(kLines[medium - 1]);
}

Error write_swPortBreakout(Set& set) {
    std::int32_t breakout;
    Port port;
    TRY(parse(set, breakout, port));
    if (!(port.type() & kCanBreakOut)) return notWritable;
    TRY(set.range(breakout, 0, 2));
    if (!set.acting()) return noError;
    switch (breakout) {
        case 1: return set.global({"interface breakout port %s", port.name.text});
        case 2: return set.global({"no interface breakout port %s", port.name.text});
        default: return wrongValue;  // 0 passes the range, and is refused here on purpose
    }
}

Error write_swPortMaxRcvFrameSize(Set& set) {
    std::int32_t octets;
    Port port;
    TRY(parse(set, octets, port));
    if (!set.acting()) return noError;
    static_cast<void>(
        set.enter(port.name));  // its refusal doesn't count here: the frame-size line is what the backend answers for
    return set.sub({"max-rcv-frame-size %d", octets});
}

constexpr Table<InterfaceKey> swPortTable{
    .id = SWPORTTABLE,
    .command = {"show swport swport_table", "show swport swport_table %d"},
    .columns =
        {
            {1, "swPortIndex", Integer, ReadOnly},
            {2, "swPortDuplex", Integer, ReadWrite, WRITER(write_swPortDuplex)},
            {3, "swPortDuplexStatus", Integer, ReadOnly},
            {4, "swPortSpeed", Integer, ReadWrite, WRITER(write_swPortSpeed)},
            {5, "swPortSpeedStatus", Integer, ReadOnly},
            {6, "swPortFlowControlSend", Integer, ReadWrite, WRITER(write_swPortFlowControlSend)},
            {7, "swPortFlowControlReceive", Integer, ReadWrite, WRITER(write_swPortFlowControlReceive)},
            {8, "swPortFlowControlStatus", Integer, ReadOnly},
            {9, "swPortMedium", Integer, ReadWrite, WRITER(write_swPortMedium)},
            {10, "swPortBreakout", Integer, ReadWrite, WRITER(write_swPortBreakout)},
            {11, "swPortMaxRcvFrameSize", Integer, ReadWrite, WRITER(write_swPortMaxRcvFrameSize)},
        },
};

// The init function's capital S is kept: hosts find it by this name.
MODULE_END_AS(SwitchPortMIB_snmp_init, 12, switchPortMIBGlobals, swPortTable);

}  // namespace switchmib::MODULE
