// What the contract is shown with: rows of tables, and SETs of several varbinds.
#pragma once

#include <array>

namespace tool {

// An index in parts, as in brackets after an object's name. Tables that are not here get port 1, or the number 1, and
// an address of each family.
struct ExampleRow {
    const char* table;
    const char* index;
};

struct Example {
    const char* title;
    const char* words;  // as after `mibhost explain`, with answers where it takes unusual ones
};

// Interfaces: 5121 is port 1, 1034 that of VLAN 10, 897 tunnel 1.
inline constexpr ExampleRow kExampleRows[] = {
    {"ipv4InterfaceTable", "1034"},
    {"ipv6InterfaceTable", "1034"},
    {"ipv6RouterAdvertTable", "1034"},
    {"ipSystemStatsTable", "1"},
    {"ipSystemStatsTable", "2"},
    {"ipAddressPrefixTable", "1034, 192.0.2.0/24"},
    {"ipAddressPrefixTable", "1034, 2001:db8::/64"},
    {"ipNetToPhysicalTable", "1034, 192.0.2.9"},
    {"ipNetToPhysicalTable", "1034, 2001:db8::9"},
    {"icmpStatsTable", "1"},
    {"icmpStatsTable", "2"},
    {"icmpMsgStatsTable", "1, 8"},
    {"icmpMsgStatsTable", "2, 128"},
    {"tunnelIfTable", "897"},
    {"tunnelInetConfigTable", "192.0.2.1, 198.51.100.1, 12, 1"},
    {"tunnelInetConfigTable", "192.0.2.1, 198.51.100.1, 1, 1"},
    {"tunnelInetConfigTable", "192.0.2.1, none, 11, 1"},
    {"tunnelInetConfigTable", "192.0.2.1, none, 13, 1"},
    {"dot1dBasePortTable", "1"},
    {"dot1dPortCapabilitiesTable", "1"},
    {"dot1qFdbTable", "10"},
    {"dot1qTpFdbTable", "10, 02:50:00:00:00:01"},
    {"dot1qTpGroupTable", "10, 01:00:5e:01:00:01"},
    {"dot1qForwardAllTable", "10"},
    {"dot1qForwardUnregisteredTable", "10"},
    {"dot1qStaticUnicastTable", "10, 02:50:00:00:00:01, 0"},
    {"dot1qStaticMulticastTable", "10, 01:00:5e:01:00:01, 0"},
    {"dot1qVlanCurrentTable", "0, 10"},
    {"dot1qVlanStaticTable", "10"},
    {"dot1qLearningConstraintsTable", "10, 1"},
    {"dot1vProtocolGroupTable", "1, 08:00"},
    {"dot1vProtocolGroupTable", "2, 08:00"},
    {"dot1vProtocolGroupTable", "5, 08:00"},
    {"ifStackTable", "5121, 0"},
    {"ipMcastInterfaceTable", "1, 1034"},
    {"ipMcastInterfaceTable", "2, 1034"},
    {"ipMcastRouteTable", "239.1.1.1/32, 192.0.2.9/32"},
    {"ipMcastRouteTable", "ff3e::1/128, 2001:db8::9/128"},
    {"ipMcastRouteNextHopTable", "239.1.1.1/32, 192.0.2.9/32, 1034, 192.0.2.1"},
    {"ipMcastRouteNextHopTable", "ff3e::1/128, 2001:db8::9/128, 1034, 2001:db8::1"},
    {"mgmdRouterInterfaceTable", "1034, 1"},
    {"mgmdRouterInterfaceTable", "1034, 2"},
    {"mgmdRouterCacheTable", "239.1.1.1, 1034"},
    {"mgmdRouterCacheTable", "ff3e::1, 1034"},
    {"mgmdInverseRouterCacheTable", "1034, 239.1.1.1"},
    {"mgmdInverseRouterCacheTable", "1034, ff3e::1"},
    {"mgmdRouterSrcListTable", "239.1.1.1 1034 192.0.2.9"},
    {"mgmdRouterSrcListTable", "ff3e::1 1034 2001:db8::9"},
    {"mgmdIgmpSnpTable", "1034, 1"},
    {"mgmdIgmpSnpGroupTable", "5121, 1034, 239.1.1.1"},
    {"mgmdIgmpSnpGroupSrcTable", "5121, 1034, 239.1.1.1 192.0.2.9"},
    {"mgmdIgmpSnpMrouterTable", "1034"},
    {"mgmdIgmpSnpFilterTable", "5121, 1034, 1"},
    {"mgmdIgmpSnpAccGrpTable", "5121, 1034, 1"},
    {"mgmdIgmpSnpHostTable", "10, 5121, 239.1.1.1 192.0.2.9"},
    {"mgmdIgmpSnpStatisticTable", "5121, 1034, 1"},
    {"mgmdIgmpSnpStatisticGroupTable", "10, 239.1.1.1"},
    {"mgmdMldSnpTable", "1034, 2"},
    {"mgmdMldSnpGroupTable", "5121, 1034, ff3e::1"},
    {"mgmdMldSnpGroupSrcTable", "5121, 1034, ff3e::1 2001:db8::9"},
    {"mgmdMldSnpMrouterTable", "1034"},
    {"mgmdMldSnpFilterTable", "5121, 1034, 2"},
    {"mgmdMldSnpAccGrpTable", "5121, 1034, 2"},
    {"mgmdMldSnpHostTable", "10, 5121, ff3e::1 2001:db8::9"},
    {"mgmdMldSnpStatisticTable", "5121, 1034, 2"},
    {"mgmdMldSnpStatisticGroupTable", "10, ff3e::1"},
    {"mgmdIgmpLimitTable", "1034"},
    {"mgmdIgmpAccGrpTable", "1034"},
    {"mgmdMldLimitTable", "1034"},
    {"mgmdMldAccGrpTable", "1034"},
    {"nPrivateVlanVlanTable", "10"},
    {"nPrivateVlanIfVlanMapTable", "5121, 11"},
    {"nVlanMacVlanTable", "02:50:00:00:00:01"},
    {"nVlanProtocolVlanGroupTable", "1, 08:00"},
    {"nVlanProtocolVlanGroupTable", "2, 08:00"},
    {"nVlanProtocolVlanGroupTable", "3, 08:00"},
    {"dVoiceVlanOuiTable", "02:50:00:00:00:00, ff:ff:ff:00:00:00"},
    {"mvrSourceVlanGroupTable", "10, 239.1.1.1, 4"},
    {"mvrPortTable", "10"},
    {"nVlanInterfaceTable", "10"},
    {"swDdmThresholdMgmtTable", "5121, 1"},
    {"swDdmThresholdMgmtTable", "5121, 2"},
    {"swDdmThresholdMgmtTable", "5121, 3"},
    {"swDdmThresholdMgmtTable", "5121, 4"},
    {"swDdmThresholdMgmtTable", "5121, 5"},
    {"proxyARPTable", "1034"},
    {"localproxyARPTable", "1034"},
    {"ieee8021QBridgeTable", "1"},
    {"ieee8021QBridgeFdbTable", "1, 10"},
    {"ieee8021QBridgeTpFdbTable", "1, 10, 02:50:00:00:00:01"},
    {"ieee8021QBridgeTpGroupTable", "1, 10, 01:00:5e:01:00:01"},
    {"ieee8021QBridgeStaticMulticastTable", "1, 10, 01:00:5e:01:00:01, 0"},
    {"ieee8021QBridgeVlanCurrentTable", "1, 0, 10"},
    {"ieee8021QBridgeVlanStaticTable", "1, 10"},
    {"ieee8021QBridgePortVlanTable", "1, 5121"},
    {"ieee8021QBridgeProtocolGroupTable", "1, 1, 08:00"},
    {"ieee8021QBridgeProtocolGroupTable", "1, 2, 08:00"},
    {"ieee8021QBridgeProtocolPortTable", "1, 5121, 3"},
    {"ieee8021SrpBridgeBaseTable", "1"},
    {"ieee8021SrpStreamTable", "1, 02:50:00:00:00:01:00:01, 5121"},
    {"ieee8021AsAcceptableMasterTableDSMasterTable", "1"},
};

inline constexpr Example kExamples[] = {
    {"an IPv4 address on the interface of VLAN 10",
     "set ipAddressIfIndex[192.0.2.1]=1034 ipAddressRowStatus[192.0.2.1]=4"},
    {"the same address goes", "set ipAddressIfIndex[192.0.2.1]=1034 ipAddressRowStatus[192.0.2.1]=6"},
    {"an IPv6 address on the interface of VLAN 10",
     "set ipAddressIfIndex[2001:db8::1]=1034 ipAddressRowStatus[2001:db8::1]=4"},
    {"a static neighbour",
     "set ipNetToPhysicalPhysAddress[1034,192.0.2.9]=hex:025000000001 "
     "ipNetToPhysicalType[1034,192.0.2.9]=4 ipNetToPhysicalRowStatus[1034,192.0.2.9]=4 ipNetToPhysicalTable=refused"},
    {"an IPv6 neighbour goes", "set ipNetToPhysicalRowStatus[1034,2001:db8::9]=6"},
    {"router advertisements with an interval",
     "set ipv6RouterAdvertMaxInterval.1034=600 ipv6RouterAdvertMinInterval.1034=200 "
     "ipv6RouterAdvertRowStatus.1034=4 ipv6RouterAdvertTable=refused"},
    {"an IPv4 route with a metric",
     "set inetCidrRouteMetric1[198.51.100.0/24,0.0,192.0.2.9]=5 "
     "inetCidrRouteStatus[198.51.100.0/24,0.0,192.0.2.9]=4 inetCidrRouteTable=refused"},
    {"an IPv6 route over the interface of VLAN 10",
     "set inetCidrRouteIfIndex[2001:db8:1::/64,0.0,2001:db8::9]=1034 "
     "inetCidrRouteStatus[2001:db8:1::/64,0.0,2001:db8::9]=4 inetCidrRouteTable=refused"},
    {"a tunnel for IPv6", "set tunnelInetConfigStatus[192.0.2.1,198.51.100.1,12,1]=4"},
    {"a VLAN with a name and ports",
     "set dot1qVlanStaticName.10=office dot1qVlanStaticEgressPorts.10=hex:c00000000000000000000000 "
     "dot1qVlanStaticUntaggedPorts.10=hex:400000000000000000000000 dot1qVlanStaticRowStatus.10=4 "
     "write_dot1qVlanStaticRowStatus=2"},
    {"a protocol in a group", "set dot1vProtocolGroupId[1,08:00]=3 dot1vProtocolGroupRowStatus[1,08:00]=4"},
    {"a group's VLAN on a port", "set dot1vProtocolPortGroupVid.5121.3=10 dot1vProtocolPortRowStatus.5121.3=4"},
    {"a VLAN with a name and ports, by the IEEE's table",
     "set ieee8021QBridgeVlanStaticName.1.10=office "
     "ieee8021QBridgeVlanStaticEgressPorts.1.10=hex:c00000000000000000000000 "
     "ieee8021QBridgeVlanStaticUntaggedPorts.1.10=hex:400000000000000000000000 "
     "ieee8021QBridgeVlanStaticRowStatus.1.10=4 write_ieee8021QBridgeVlanStaticRowStatus=2"},
    {"a protocol in a group, by the IEEE's table",
     "set ieee8021QBridgeProtocolGroupId[1,1,08:00]=3 "
     "ieee8021QBridgeProtocolGroupRowStatus[1,1,08:00]=4"},
    {"the VLAN of a MAC address",
     "set nVlanMacVlanId[02:50:00:00:00:01]=10 nVlanMacVlanPriority[02:50:00:00:00:01]=5 "
     "nVlanMacVlanRowStatus[02:50:00:00:00:01]=4"},
    {"the VLAN of an IPv4 subnet",
     "set nVlanSubnetVlanId[192.0.2.0/24]=10 nVlanSubnetVlanPriority[192.0.2.0/24]=5 "
     "nVlanSubnetVlanRowStatus[192.0.2.0/24]=4"},
    {"the VLAN of an IPv6 subnet", "set nVlanSubnetVlanId[2001:db8::/64]=10 nVlanSubnetVlanRowStatus[2001:db8::/64]=4"},
    {"a protocol in a group, with LLC frames",
     "set nVlanProtocolVlanGroupId[3,08:00]=3 nVlanProtocolVlanGroupRowStatus[3,08:00]=4"},
    {"a group's VLAN and priority on a port",
     "set nVlanProtocolVlanVlanId.5121.3=10 nVlanProtocolVlanPriority.5121.3=5 "
     "nVlanProtocolVlanRowStatus.5121.3=4"},
    {"a primary private VLAN", "set nPrivateVlanVlanType.10=1 nPrivateVlanVlanRowStatus.10=4"},
    {"a community VLAN of it",
     "set nPrivateVlanVlanType.11=3 nPrivateVlanVlanAssocPriVlan.11=10 nPrivateVlanVlanRowStatus.11=4"},
    {"a port of the community", "set nPrivateVlanIfVlanMapPriVlan.5121.11=10 nPrivateVlanIfVlanMapRowStatus.5121.11=4"},
    {"an OUI of phones",
     "set dVoiceVlanOuiDes[02:50:00:00:00:00,ff:ff:ff:00:00:00]=phones "
     "dVoiceVlanOuiRowStatus[02:50:00:00:00:00,ff:ff:ff:00:00:00]=4"},
    {"an access group of snooping",
     "set mgmdIgmpSnpAccessGroup.5121.1034.1=video mgmdIgmpSnpAccGrpStatus.5121.1034.1=4"},
    {"an access group of MLD snooping",
     "set mgmdMldSnpAccessGroup.5121.1034.2=video mgmdMldSnpAccGrpStatus.5121.1034.2=4"},
    {"an access group of IGMP", "set mgmdIgmpAccessGroup.1034=video mgmdIgmpAccGrpStatus.1034=4"},
    {"groups of a multicast VLAN", "set mvrSourceVlanGroupRowStatus[10,239.1.1.1,4]=4"},
};

}  // namespace tool
