// Proxy ARP: the VLAN interfaces that answer ARP requests for other networks, and those that do for their own.
#include "switch/vlan_interfaces.h"

namespace sw {
namespace {

class ProxyArp : public Area {
public:
    explicit ProxyArp(Switch& its_switch) : Area(its_switch), vlan_interfaces_(its_switch.area<VlanInterfaces>()) {}
    void describe(Description&) override;
    void interface_removed(std::uint32_t ifindex) override {
        proxies_.erase(ifindex);
        local_proxies_.erase(ifindex);
    }

private:
    struct On {};
    using Proxies = std::map<std::uint32_t, On>;  // by ifIndex
    void add(Description&, Proxies&, const std::string& name, const std::string& word, int number_magic);

    VlanInterfaces& vlan_interfaces_;
    Proxies proxies_{{kVlanIfIndexBase + 10, {}}};
    Proxies local_proxies_{{kVlanIfIndexBase + 1, {}}};
};

void ProxyArp::add(Description& d, Proxies& proxies, const std::string& name, const std::string& word,
                   int number_magic) {
    d.scalars("proxyARPMIBGlobals", "show ip snmp proxy-arp num",
              {{number_magic, name + "Number", [&proxies] { return proxies.size(); }}});
    d.table({.name = name + "Table",
             .show = "show ip snmp " + word + " entry {int}",
             .rows = rows_of(proxies, {{1, name + "IfIndex", from_index()}, {2, name + "RowStatus", 1}})});  // active

    const Lines<Interface> interface = vlan_interfaces_.lines(d);
    interface.line("ip " + word,
                   [&proxies](Interface&, const Arguments&, const Entered& entered) { proxies[entered.object]; });
    interface.line("no ip " + word,
                   [&proxies](Interface&, const Arguments&, const Entered& entered) { proxies.erase(entered.object); });
}

void ProxyArp::describe(Description& d) {
    add(d, proxies_, "proxyARP", "proxy-arp", 1);
    add(d, local_proxies_, "localproxyARP", "local-proxy-arp", 2);
}

}  // namespace

void add_proxy_arp(Switch& areas) { areas.area<ProxyArp>(); }

}  // namespace sw
