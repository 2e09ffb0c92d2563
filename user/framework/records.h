// What modules export besides their registrations: records that outlive a request, and readers; as C11 and as C++.
// Integrators get this header as a part of exports.h, which the build makes of it and of the library's symbols.
#pragma once

#include "host.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// ---------------------------------------------------------------------------------------------------------------------
// qBridgeMIB

typedef struct VlanStatic {  // the row of dot1qVlanStaticTable that a request is creating
    uint32_t vid;
    char name[33];
    unsigned char egress[12];  // port lists
    unsigned char forbidden[12];
    unsigned char untagged[12];
    uint32_t pending;  // 1: the request has a row status, the other columns leave ACTION to it
    uint32_t create_failed;
} VlanStatic;
extern VlanStatic vlan_static;

// ---------------------------------------------------------------------------------------------------------------------
// Protocol VLANs of all VLAN modules

typedef struct ProtoGroup {  // the row of a protocol group table that a request is creating
    uint32_t frame_type;
    unsigned char protocol[2];
    unsigned char zero[2];
    uint32_t group;
    uint32_t pending;  // 1: the request has a row status, the other columns leave ACTION to it
} ProtoGroup;
extern ProtoGroup proto_group;

typedef struct ProtoPort {  // the same for a group's VLAN on a port
    uint32_t ifindex;
    uint32_t group;
    uint32_t vid;
    uint32_t priority;
    uint32_t pending;
} ProtoPort;
extern ProtoPort proto_port;

// ---------------------------------------------------------------------------------------------------------------------
// corvinVlanMIB

typedef struct MacVlan {  // the row of nVlanMacVlanTable that a request is creating
    unsigned char mac[6];
    uint32_t vid;
    uint32_t priority;
    uint32_t pending;
} MacVlan;
extern MacVlan mac_vlan;

typedef struct SubnetVlan {  // the row of nVlanSubnetVlanTable
    uint32_t type;           // of the address: 1 IPv4, 2 IPv6
    char text[64];
    uint32_t prefix_length;
    uint32_t vid;
    uint32_t priority;
    uint32_t pending;
} SubnetVlan;
extern SubnetVlan subnet_vlan;

// ---------------------------------------------------------------------------------------------------------------------
// corvinPrivateVlanMIB

typedef struct PrivateVlan {  // the row of nPrivateVlanVlanTable that requests collect; nothing clears it
    uint32_t vid;
    uint32_t type;  // 1 primary, 2 isolated, 3 community
    uint32_t primary;
    uint32_t pending;
} PrivateVlan;
extern PrivateVlan private_vlan;

typedef struct PrivateVlanPort {  // the row of nPrivateVlanIfVlanMapTable
    uint32_t zero[2];
    uint32_t primary;
    uint32_t pending;
} PrivateVlanPort;
extern PrivateVlanPort private_vlan_port;

// ---------------------------------------------------------------------------------------------------------------------
// pellamVoiceVlanMIB

typedef struct VoiceOui {  // the row of dVoiceVlanOuiTable that a request is creating
    unsigned char unused[12];
    char description[32];  // ends with a NUL when it is shorter
    uint32_t pending;
} VoiceOui;
extern VoiceOui voice_oui;

// ---------------------------------------------------------------------------------------------------------------------
// ieee8021QBridgeMib

extern int mvrp_mib_dbg;  // not 0: configuration lines of MVRP are traced, with the token "mvrp"

// ---------------------------------------------------------------------------------------------------------------------
// ip: the kernel's statistics

typedef struct IpStatistics {
    uint32_t counters[20];
} IpStatistics;
typedef struct IcmpStatistics {
    uint32_t counters[26];  // 13 in, then 13 out
} IcmpStatistics;
typedef struct Ip6Statistics {
    uint32_t counters[24];  // forwarding and hop limit, then IPv6's counters
} Ip6Statistics;
typedef struct Icmp6Statistics {
    uint32_t counters[34];  // 17 in, then 17 out
} Icmp6Statistics;
typedef struct TcpStatistics {
    uint32_t counters[14];
    uint16_t in_errs_valid;   // 1 when the kernel gives InErrs
    uint16_t out_rsts_valid;  // 1 when it gives OutRsts
} TcpStatistics;
typedef struct UdpStatistics {
    uint32_t counters[4];  // IPv4 and IPv6 together: InDatagrams, NoPorts, InErrors, OutDatagrams
} UdpStatistics;

// Fill a record from the kernel; without `force` from what was read in the last seconds. -1, and a record of zeros, when
// the kernel's file cannot be read.
int ip_snmp_linux_read_ip_stat(IpStatistics* record, int force);
int ip_snmp_linux_read_icmp_stat(IcmpStatistics* record, int force);
int ip_snmp_linux_read_ip6_stat(Ip6Statistics* record, int force);
int ip_snmp_linux_read_icmp6_stat(Icmp6Statistics* record, int force);
int ip_snmp_linux_read_tcp_stat(TcpStatistics* record, int force);
int ip_snmp_linux_read_udp_stat(UdpStatistics* record, int force);

// Read a setting of IPv6. -1: the file cannot be opened.
int ip6_snmp_hop_limit_get(unsigned long* hops);
int ip6_snmp_forwarding_get(unsigned long* forwards);
extern char proc_ipv6_hoplimit[256];  // the paths of those files; a host may change them
extern char proc_ipv6_forwarding[256];

// ---------------------------------------------------------------------------------------------------------------------
// ip: what was written last for a row of ipAddressTable, and for which row

extern uint32_t ipAddressTable_ifindex;
extern uint32_t ipAddressTable_type;
extern uint32_t ipAddressTable_status;
extern InetAddress key_ifindex;
extern InetAddress key_type;
extern InetAddress key_status;

#ifdef __cplusplus
}  // extern "C"
#endif
