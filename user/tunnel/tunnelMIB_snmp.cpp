// TUNNEL-MIB: IPv6-over-IPv4 tunnels, their ends, and rows that create and destroy them. The older table of tunnels by
// IPv4 addresses is registered and never answers.
#define MODULE tunnelMIB
#include "framework/address.h"
#include "framework/ifindex.h"
#include "framework/module.h"
#include "framework/write.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace switchmib::MODULE {

MODULE_OID(kMib2, 10, 131);

// --- the log ---------------------------------------------------------------------------------------------------------

// 1: errors alone, 2: all but errors, else everything. For a debugger to change.
volatile int log_switch = 1;

enum LogLevel : int { kInformation = 101, kError = 104 };

bool logs(LogLevel level) { return log_switch != (level == kError ? 2 : 1); }

// One line, which begins with the number of a source line.
#define LOG_AT(level, line, text, ...)                                                                           \
    do {                                                                                                         \
        if (logs(level)) anprintf(92, 0, level, 0, "<MIB_TNL>(%d):" text "\n", line __VA_OPT__(, ) __VA_ARGS__); \
    } while (false)
#define LOG(level, ...) LOG_AT(level, __LINE__, __VA_ARGS__)

void log_command(const Read&, const char*, const Command& command) { LOG(kInformation, "%s", command.c_str()); }

// Sends a line, and logs it; once more when it is refused.
Error send(const Set& set, Mode mode, const Command& line, int source_line = __builtin_LINE()) {
    LOG_AT(kInformation, source_line, "%s", line.c_str());
    const Error error = set.line(mode, line, source_line);
    if (error != noError) LOG_AT(kError, source_line, "!%s", line.c_str());
    return error;
}

// Takes a tunnel away whose creation fails; it does not matter whether that succeeds.
void undo_creation(const Set& set, std::uint32_t tunnel) {
    const Command line("no interface tunnel %d", tunnel);
    LOG(kInformation, "%s", line.c_str());
    static_cast<void>(set.global(line));
}

// --- tunnelIfTable ---------------------------------------------------------------------------------------------------

TABLE(tunnelIfTable, TUNNELIFTABLE, 1, 1, 1, 1);

// Sets one end of a tunnel to an IPv4 address, 0.0.0.0 for none. A tunnel that is not there yet is created.
Error write_end(const Set& set, const char* end, const char* label) {
    constexpr std::size_t kOctets = 4;
    InterfaceKey row;
    TRY(set.type(OctetString));
    TRY(set.row(row));
    if (set.length_given != kOctets) {  // genErr, unlike other lengths
        LOG(kError, "!invalid length");
        return genErr;
    }
    const unsigned char* octets = set.value;
    const Text<16> address("%d.%d.%d.%d", octets[0], octets[1], octets[2], octets[3]);
    LOG(kInformation, "%s:%s", label, address.c_str());
    if (!set.acting()) return noError;

    const std::uint32_t tunnel = row.ifindex - kTunnelIfIndexBase;
    const Command probe("show interface tunnel%d", tunnel);
    LOG(kInformation, "%s", probe.c_str());
    const bool is_new = set.executive(probe) != noError;
    TRY(send(set, kGlobalMode, {"interface tunnel %d", tunnel}));
    const bool has_address = std::any_of(octets, octets + kOctets, [](unsigned char octet) { return octet != 0; });
    const Command line = has_address ? Command("tunnel %s %s", end, address.c_str()) : Command("no tunnel %s", end);
    const Error error = send(set, kSubMode, line);
    if (error != noError && is_new) undo_creation(set, tunnel);
    return error;
}

Error write_tunnelIfLocalInetAddress(Set& set) { return write_end(set, "source", "src_addr"); }
Error write_tunnelIfRemoteInetAddress(Set& set) { return write_end(set, "destination", "dest_addr"); }

// An InetAddressType, which changes nothing. The row may be any.
Error write_tunnelIfAddressType(Set& set) {
    constexpr std::int32_t kUnknown = 0, kIpv6z = 4, kDns = 16;
    std::int32_t type;
    TRY(set.integer(type));
    TRY(set.column());
    return type == kDns ? noError : set.range(type, kUnknown, kIpv6z);
}

constexpr Table<InterfaceKey> tunnelIfTable{
    .id = TUNNELIFTABLE,
    .command = "show snmp tunnel if %d",
    .formed = log_command,
    .columns =
        {
            {1, "tunnelIfLocalAddress", IpAddress, ReadOnly},
            {2, "tunnelIfRemoteAddress", IpAddress, ReadOnly},
            {3, "tunnelIfEncapsMethod", Integer, ReadOnly},
            {4, "tunnelIfHopLimit", Integer, ReadWrite, refuses()},
            {5, "tunnelIfSecurity", Integer, ReadOnly},
            {6, "tunnelIfTOS", Integer, ReadWrite, refuses()},
            {7, "tunnelIfFlowLabel", Integer, ReadWrite, refuses()},
            {8, "tunnelIfAddressType", Integer, ReadWrite, WRITER(write_tunnelIfAddressType)},
            {9, "tunnelIfLocalInetAddress", OctetString, ReadWrite, WRITER(write_tunnelIfLocalInetAddress)},
            {10, "tunnelIfRemoteInetAddress", OctetString, ReadWrite, WRITER(write_tunnelIfRemoteInetAddress)},
            {11, "tunnelIfEncapsLimit", Integer, ReadWrite, refuses()},
        },
};

// --- tunnelConfigTable -----------------------------------------------------------------------------------------------

TABLE(tunnelConfigTable, TUNNELCONFIGTABLE, 1, 1, 2, 1);

struct OldTunnelKey {
    Octets<4> local;
    Octets<4> remote;
    std::uint32_t method;
    std::uint32_t id;
    static constexpr Kind index[] = {Kind::fixed_string(4), Kind::fixed_string(4), Kind::integer, Kind::integer};
};

constexpr Table<OldTunnelKey> tunnelConfigTable{
    .id = TUNNELCONFIGTABLE,
    .answers = false,
    .columns =
        {
            {1, "tunnelConfigLocalAddress", IpAddress, ReadOnly},
            {2, "tunnelConfigRemoteAddress", IpAddress, ReadOnly},
            {3, "tunnelConfigEncapsMethod", Integer, ReadOnly},
            {4, "tunnelConfigID", Integer, ReadOnly},
            {5, "tunnelConfigIfIndex", Integer, ReadOnly},
            {6, "tunnelConfigStatus", Integer, ReadWrite, refuses(active, destroy)},
        },
};

// --- tunnelInetConfigTable -------------------------------------------------------------------------------------------

TABLE(tunnelInetConfigTable, TUNNELINETCONFIGTABLE, 1, 1, 3, 1);

struct TunnelKey {
    InetAddress local;
    InetAddress remote;
    std::uint32_t method;
    std::uint32_t id;
    static constexpr Kind index[] = {Kind::address, Kind::address, Kind::integer, Kind::integer};
};
static_assert(sizeof(TunnelKey) == 64);

// Encapsulation methods and their lines.
constexpr struct {
    std::uint32_t number;
    const char* line;
} kMethods[] = {
    {1, "no tunnel mode"},  // other
    {11, "tunnel mode ipv6ip 6to4"},
    {12, "tunnel mode ipv6ip"},  // IPv6 over IPv4
    {13, "tunnel mode ipv6ip isatap"},
};

Command inet_config_command(const TunnelKey& row) {
    constexpr const char* kUnspecified = "0.0.0.0";
    AddressText local, remote;
    if (!to_text(row.local, local)) {
        LOG(kError, "!src_str");
        return no_answer;
    }
    if (!to_text(row.remote, remote)) {
        LOG(kError, "!dest_str");
        return no_answer;
    }
    return {"show snmp tunnel inetconfig %s %s %d %d", *local.text == '\0' ? kUnspecified : local.text,
            *remote.text == '\0' ? kUnspecified : remote.text, row.method, row.id};
}

// Creates the tunnel of a row. When one of its settings is refused, the tunnel goes again.
Error create(const Set& set, const TunnelKey& row, const char* local, const char* remote, const char* mode) {
    TRY(send(set, kExecutiveMode, {"snmp check tunnel create %s %s %d %d", local, remote, row.method, row.id}));
    TRY(send(set, kGlobalMode, {"interface tunnel %d", row.id}));
    const Command settings[] = {{"tunnel source %s", local}, {"tunnel destination %s", remote}, {"%s", mode}};
    for (const Command& line : settings)
        if (const Error error = send(set, kSubMode, line); error != noError) {
            undo_creation(set, row.id);
            return error;
        }
    return noError;
}

Error write_tunnelInetConfigStatus(Set& set) {
    constexpr std::uint32_t kLastTunnel = 127;
    std::int32_t status;
    TunnelKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    const auto method = std::find_if(std::begin(kMethods), std::end(kMethods),
                                     [&row](const auto& each) { return each.number == row.method; });
    if (method == std::end(kMethods)) {
        LOG(kError, "!EncapsMethod %d", row.method);
        return genErr;
    }
    if (row.id < 1 || row.id > kLastTunnel) {
        LOG(kError, "!ID %d", row.id);
        return genErr;
    }
    if (const Error error = set.row_status(status); error != noError) {
        LOG(kError, "!invalid value %d", status);
        return error;
    }
    if (!set.acting() || (status != createAndGo && status != destroy)) return noError;

    // Addresses of other types are empty texts, in the lines as well.
    AddressText local, remote;
    if (row.local.type == kIpv4 && !to_text(row.local, local)) {
        LOG(kError, "!src_str");
        return genErr;
    }
    if (row.remote.type == kIpv4 && !to_text(row.remote, remote)) {
        LOG(kError, "!dest_str");
        return genErr;
    }
    if (status == createAndGo) return create(set, row, local.text, remote.text, method->line);
    TRY(send(set, kExecutiveMode,
             {"snmp check tunnel destroy %s %s %d %d", local.text, remote.text, row.method, row.id}));
    return send(set, kGlobalMode, {"no interface tunnel %d", row.id});
}

constexpr Table<TunnelKey> tunnelInetConfigTable{
    .id = TUNNELINETCONFIGTABLE,
    .command = inet_config_command,
    .formed = log_command,
    .columns =
        {
            {1, "tunnelInetConfigAddressType", Integer, ReadOnly},
            {2, "tunnelInetConfigLocalAddress", OctetString, ReadOnly},
            {3, "tunnelInetConfigRemoteAddress", OctetString, ReadOnly},
            {4, "tunnelInetConfigEncapsMethod", Integer, ReadOnly},
            {5, "tunnelInetConfigID", Integer, ReadOnly},
            {6, "tunnelInetConfigIfIndex", Integer, ReadOnly},
            {7, "tunnelInetConfigStatus", Integer, ReadWrite, WRITER(write_tunnelInetConfigStatus)},
            {8, "tunnelInetConfigStorageType", Integer, ReadWrite, refuses(1, 5)},
        },
};

MODULE_END(25, tunnelIfTable, tunnelConfigTable, tunnelInetConfigTable);

}  // namespace switchmib::MODULE
