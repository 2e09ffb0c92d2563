#include "instant_host.h"

#include <dlfcn.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace instant {

std::vector<Registered>& registered() {
    static std::vector<Registered> all;
    return all;
}

bool same_row(unsigned char*) { return true; }

bool count_up(unsigned char* number, std::uint32_t last) {
    std::uint32_t value;
    std::memcpy(&value, number, sizeof value);
    if (value == last) return false;
    ++value;
    std::memcpy(number, &value, sizeof value);
    return true;
}

namespace {

// Two lines each, names and numbers.
constexpr const char* kSnmp =
    "Ip: Forwarding DefaultTTL InReceives InHdrErrors InAddrErrors ForwDatagrams InUnknownProtos InDiscards InDelivers "
    "OutRequests OutDiscards OutNoRoutes ReasmTimeout ReasmReqds ReasmOKs ReasmFails FragOKs FragFails FragCreates\n"
    "Ip: 1 64 43187329 0 12 8812 0 0 43178432 39872211 20 40 0 0 0 0 0 0 0\n"
    "Icmp: InMsgs InErrors InCsumErrors InDestUnreachs InTimeExcds InParmProbs InSrcQuenchs InRedirects InEchos "
    "InEchoReps\n"
    "Icmp: 12843 3 0 9217 0 0 0 0 3612 14\n"
    "Tcp: RtoAlgorithm RtoMin RtoMax MaxConn ActiveOpens PassiveOpens AttemptFails EstabResets CurrEstab InSegs "
    "OutSegs RetransSegs InErrs OutRsts\n"
    "Tcp: 1 200 120000 -1 91827 4411 310 512 18 40121887 38712091 1022 0 8711\n"
    "Udp: InDatagrams NoPorts InErrors OutDatagrams RcvbufErrors SndbufErrors\n"
    "Udp: 3041771 918 0 3199211 0 0\n";

// As many lines as a kernel has.
const std::string& snmp6() {
    static const std::string text = [] {
        std::string lines;
        const auto add = [&lines](const std::string& prefix, std::initializer_list<const char*> names) {
            for (const char* name : names) lines += (prefix + name).append(36, ' ') + "\t120311\n";
        };
        add("Ip6",
            {"InReceives",      "InHdrErrors",  "InTooBigErrors", "InNoRoutes",       "InAddrErrors", "InUnknownProtos",
             "InTruncatedPkts", "InDiscards",   "InDelivers",     "OutForwDatagrams", "OutRequests",  "OutDiscards",
             "OutNoRoutes",     "ReasmTimeout", "ReasmReqds",     "ReasmOKs",         "ReasmFails",   "FragOKs",
             "FragFails",       "FragCreates",  "InMcastPkts",    "OutMcastPkts",     "InOctets",     "OutOctets"});
        for (const char* direction : {"In", "Out"})
            add(std::string("Icmp6") + direction,
                {"Msgs", "Errors", "DestUnreachs", "PktTooBigs", "TimeExcds", "ParmProblems", "Echos", "EchoReplies",
                 "GroupMembQueries", "GroupMembResponses", "GroupMembReductions", "RouterSolicits",
                 "RouterAdvertisements", "NeighborSolicits", "NeighborAdvertisements", "Redirects", "MLDv2Reports"});
        add("Udp6", {"InDatagrams", "NoPorts", "InErrors", "OutDatagrams"});
        return lines;
    }();
    return text;
}

std::string_view proc_file(std::string_view path) {
    if (path == "/proc/net/snmp") return kSnmp;
    if (path == "/proc/net/snmp6") return snmp6();
    if (path == kForwarding) return "1\n";
    if (path == kHopLimit) return "64\n";
    return {};
}

}  // namespace
}  // namespace instant

extern "C" {

std::FILE* fopen(const char* path, const char* mode) {
    const std::string_view text = instant::proc_file(path);
    if (!text.empty()) return fmemopen(const_cast<char*>(text.data()), text.size(), mode);
    static auto* const next = reinterpret_cast<decltype(&std::fopen)>(dlsym(RTLD_NEXT, "fopen"));
    return next(path, mode);
}

unsigned char ret_value[8192];

int register_mib(const char*, const VariableEntry* variables, std::size_t, std::size_t entries, const oid* module_oid,
                 std::size_t module_oid_length) {
    instant::registered().push_back({variables, entries, {module_oid, module_oid + module_oid_length}});
    return 0;
}

int header_generic(const VariableEntry* entry, oid* name, std::size_t* name_length, int, std::size_t* value_length,
                   WriteMethod** write_method) {
    std::memcpy(name, entry->name, entry->namelen * sizeof(oid));
    name[entry->namelen] = 0;
    *name_length = entry->namelen + 1u;
    *value_length = 4;
    *write_method = nullptr;
    return 0;
}

int snmp_oid_compare(const oid* a, std::size_t a_length, const oid* b, std::size_t b_length) {
    for (std::size_t i = 0; i < a_length && i < b_length; ++i)
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    return a_length == b_length ? 0 : a_length < b_length ? -1 : 1;
}

int uib_sh_show_request(std::uint64_t, const char*, void* result, int result_size, std::size_t* value_length, void* key,
                        int, int, int exact, int, const char*, int) {
    *value_length = 4;
    if (key == nullptr) {
        const bool ports = result_size == static_cast<int>(sizeof instant::port_list);
        if (ports || result_size == static_cast<int>(sizeof instant::port_mode))
            std::memcpy(result, ports ? instant::port_list : instant::port_mode, static_cast<std::size_t>(result_size));
        else if (result_size == static_cast<int>(sizeof instant::vlan_list))
            std::memcpy(result, instant::vlan_list, sizeof instant::vlan_list);
        return 0;
    }
    return exact || instant::advance(static_cast<unsigned char*>(key)) ? 0 : -1;
}
int uib_sh_config_request(int, const char*, const char*, int) { return 0; }

int if_utl_ifindex_to_ifname(std::uint32_t ifindex, char* name) {
    std::memcpy(name, "port", 4);
    *std::to_chars(name + 4, name + 20, ifindex - 5120).ptr = '\0';
    return 0;
}
const char* SNMPD_Get_Cur_VrfName(void) { return nullptr; }
const char* SNMPD_Get_Cur_ContextName(void) { return nullptr; }

int snmp_get_do_debugging(void) { return 0; }
void debugmsgtoken(const char*, const char*, ...) {}
void debugmsg(const char*, const char*, ...) {}
int anprintf(int, int, int, int, const char*, ...) { return 0; }
int pal_log_output_ui_simple(const char*, ...) { return 0; }

}  // extern "C"
