// Voice VLAN: the VLAN for phones, the OUIs that phones are known by, and the phones among the stations that the ports
// have learned.
#include "switch/forwarding.h"

#include <fmt/format.h>

namespace sw {
namespace {

constexpr std::size_t kLongestDescription = 32;

// What can be set for a port.
struct VoicePort {
    bool enabled = false;
    std::uint32_t mode = 1;  // 1 auto without tags, 2 auto with tags, 3 manual
};

class VoiceVlan : public Area {
public:
    explicit VoiceVlan(Switch&);
    void describe(Description&) override;
    void vlan_removed(std::uint32_t vid) override {
        if (vid == vid_) vid_ = 0;
    }

private:
    struct Phone {
        Mac mac;
        std::string kind;  // its OUI's description
    };
    std::optional<std::string> kind_of(const Mac& mac) const;  // none: it is not a phone
    std::map<Index, Phone> phones() const;                     // by ifIndex, MAC address
    Rows phone_rows(std::size_t index_length, Columns<Phone> columns) const;
    void add_phones(Description&);

    Ports& ports_;
    Vlans& vlans_;
    Forwarding& forwarding_;
    std::uint32_t vid_ = 20;  // 0: there is none
    std::uint32_t priority_ = 5;
    std::uint32_t aging_ = 720;  // minutes
    std::map<Index, std::string> ouis_;
    std::map<std::uint32_t, VoicePort> by_port_;  // by ifIndex
};

VoiceVlan::VoiceVlan(Switch& its_switch)
    : Area(its_switch),
      ports_(its_switch.area<Ports>()),
      vlans_(its_switch.area<Vlans>()),
      forwarding_(its_switch.area<Forwarding>()),
      ouis_{{{0x02, 0x48, 0, 0, 0, 0, 0xff, 0xff, 0xff, 0xff, 0, 0}, "desk phones"}},
      by_port_(ports_.each<VoicePort>()) {
    for (const std::uint32_t n : {9u, 10u, 11u, 12u}) by_port_[kPortIfIndexBase + n].enabled = true;
}

std::optional<std::string> VoiceVlan::kind_of(const Mac& mac) const {
    for (const auto& [oui, description] : ouis_) {
        bool is_one = true;
        for (std::size_t i = 0; i < mac.size(); ++i) is_one = is_one && (mac[i] & oui[6 + i]) == oui[i];
        if (is_one) return description;
    }
    return {};
}

std::map<Index, VoiceVlan::Phone> VoiceVlan::phones() const {
    std::map<Index, Phone> phones;
    if (vid_ == 0) return phones;
    forwarding_.for_each_learned([&](std::uint32_t ifindex, const Mac& mac) {
        if (!by_port_.at(ifindex).enabled) return;
        if (auto kind = kind_of(mac))
            phones[join({{ifindex}, Index(mac.begin(), mac.end())})] = {mac, *std::move(kind)};
    });
    return phones;
}

void VoiceVlan::describe(Description& d) {
    d.scalars("pellamVoiceVlanMIBGlobals", "show snmp voice-vlan",
              {{1, "dVoiceVlanVlanId", &vid_},
               {2, "dVoiceVlanQos", &priority_},
               {3, "dVoiceVlanAgingTime", &aging_},
               {4, "dVoiceVlanStatusText1", [this] { return vid_ == 0 ? "disabled" : "enabled"; }},
               {5, "dVoiceVlanStatusText2", [this] { return fmt::format("{} phones", phones().size()); }}});
    d.table(
        {.name = "dVoiceVlanOuiTable",
         .show = "show snmp voice-vlan oui [{mac} {mac}]",
         .key = {kMac, kMac},
         .rows = rows_of(ouis_, {{3, "dVoiceVlanOuiDes", [](const std::string& description) { return description; }},
                                 {4, "dVoiceVlanOuiRowStatus", 1}})});  // active
    d.table({.name = "dVoiceVlanInterfaceTable",
             .show = "show snmp voice-vlan port [{int}]",
             .rows = rows_of(by_port_, {{1, "dVoiceVlanIfIndex", from_index()},
                                        {2, "dVoiceVlanIfEnabled", &VoicePort::enabled},
                                        {3, "dVoiceVlanIfMode", &VoicePort::mode}})});
    add_phones(d);

    const Lines<VoiceVlan> global = d.lines(*this);
    global.line("voice vlan {1..4094}", [this](const Arguments& arguments) {
        require(vlans_.has(arguments[0].number), "there is no such VLAN");
        vid_ = arguments[0].number;
    });
    global.set("no voice vlan", &VoiceVlan::vid_, 0);
    global.number("voice vlan qos {0..7}", &VoiceVlan::priority_);
    global.number("voice vlan aging {1..65535}", &VoiceVlan::aging_);
    global.line("voice vlan mac-address {mac} {mac} [description {text}]", [this](const Arguments& arguments) {
        require(arguments[2].text.size() <= kLongestDescription,
                fmt::format("it has at most {} octets", kLongestDescription));
        ouis_[join({arguments[0].index(), arguments[1].index()})] = arguments[2].text;
    });
    global.line("no voice vlan mac-address {mac} {mac}", [this](const Arguments& arguments) {
        require(ouis_.erase(join({arguments[0].index(), arguments[1].index()})) > 0, "there is no such OUI");
    });
    const Lines<VoicePort> port = ports_.lines(d).of(by_port_);
    port.flag("voice vlan enable", &VoicePort::enabled);
    port.set("voice vlan mode auto untag", &VoicePort::mode, 1);
    port.set("voice vlan mode auto tag", &VoicePort::mode, 2);
    port.set("voice vlan mode manual", &VoicePort::mode, 3);
}

// The phones as they are now, by the beginning of their index.
Rows VoiceVlan::phone_rows(std::size_t index_length, Columns<Phone> columns) const {
    const FindRow<Phone> from = [this, index_length](const Index& index) -> std::optional<std::pair<Index, Phone>> {
        for (auto& [row, phone] : phones()) {
            Index its_index(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(index_length));
            if (its_index >= index) return std::pair{std::move(its_index), phone};
        }
        return {};
    };
    return rows_from(from, std::move(columns));
}

void VoiceVlan::add_phones(Description& d) {
    d.table({.name = "dVoiceVlanDeviceTable",
             .show = "show snmp voice-vlan device [{int} {mac}]",
             .key = {kInteger, kMac},
             .rows = phone_rows(7, {{1, "dVoiceVlanDeviceIfIndex", from_index()},
                                    {2, "dVoiceVlanDeviceMac", &Phone::mac},
                                    {3, "dVoiceVlanDeviceColumn3", &Phone::kind}})});
    // One phone a port announces itself: its port's ifIndex, its chassis and its port, both by MAC address, the text of
    // its system, and for how many seconds that holds.
    constexpr std::uint32_t kByMacAddress = 4, kPortByMacAddress = 3, kSeconds = 120;
    d.table({.name = "dVoiceVlanLldpMedDeviceTable",
             .show = "show snmp voice-vlan lldpmed device [{int}]",
             .rows = phone_rows(1, {{2, "dVoiceVlanLldpMedDeviceColumn2", from_index()},
                                    {3, "dVoiceVlanLldpMedDeviceColumn3", kByMacAddress},
                                    {4, "dVoiceVlanLldpMedDeviceColumn4", &Phone::mac},
                                    {5, "dVoiceVlanLldpMedDeviceColumn5", kPortByMacAddress},
                                    {6, "dVoiceVlanLldpMedDeviceColumn6", &Phone::mac},
                                    {7, "dVoiceVlanLldpMedDeviceColumn7", &Phone::kind},
                                    {8, "dVoiceVlanLldpMedDeviceColumn8", kSeconds}})});
}

}  // namespace

void add_voice_vlan(Switch& areas) { areas.area<VoiceVlan>(); }

}  // namespace sw
