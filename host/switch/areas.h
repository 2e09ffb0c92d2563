// Every area, in alphabetical order. Each one's file defines `void add_AREA(Switch&)`, which makes it.
// clang-format off
#define SWITCH_AREAS(area) \
    area(addresses)        \
    area(bridge)           \
    area(classification)   \
    area(ethernet)         \
    area(forwarding)       \
    area(group_membership) \
    area(health)           \
    area(interfaces)       \
    area(ip_interfaces)    \
    area(multicast_routes) \
    area(mvr)              \
    area(neighbours)       \
    area(ports)            \
    area(power_saving)     \
    area(private_vlans)    \
    area(proxy_arp)        \
    area(routes)           \
    area(snooping)         \
    area(streams)          \
    area(time_sync)        \
    area(transceivers)     \
    area(tunnels)          \
    area(vlan_interfaces)  \
    area(vlans)            \
    area(voice_vlan)       \
    area(vrfs)
