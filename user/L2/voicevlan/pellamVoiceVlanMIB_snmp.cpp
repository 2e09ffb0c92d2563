// Voice VLAN: the VLAN for IP phones, the OUIs that phones are known by, the ports that look for them, those detected.
#define MODULE pellamVoiceVlanMIB
#include "framework/address.h"
#include "framework/module.h"
#include "framework/write.h"

namespace switchmib::MODULE {

MODULE_OID(kVendor, 10, 1, 100, 2, 11);

// --- scalars ---------------------------------------------------------------------------------------------------------

Error write_dVoiceVlanVlanId(Set& set) {
    std::int32_t vid;
    TRY(set.integer(vid));
    if (!set.acting()) return noError;
    if (vid < 0) return genErr;
    return vid == 0 ? set.global("no voice vlan") : set.global({"voice vlan %d", vid});
}

// Any number goes into the line.
Error number_line(const Set& set, const char* word) {
    std::uint32_t number;
    TRY(set.unsigned32(number));
    return set.acting() ? set.global({"voice vlan %s %d", word, number}) : noError;
}
Error write_dVoiceVlanQos(Set& set) { return number_line(set, "qos"); }
Error write_dVoiceVlanAgingTime(Set& set) { return number_line(set, "aging"); }

constexpr Scalars pellamVoiceVlanMIBGlobals{
    .name = "pellamVoiceVlanMIBGlobals",
    .text = "show snmp voice-vlan",
    .scalars =
        {
            {{1, 1, 1}, "dVoiceVlanVlanId", Integer, ReadWrite, WRITER(write_dVoiceVlanVlanId)},
            {{1, 1, 2}, "dVoiceVlanQos", Gauge32, ReadWrite, WRITER(write_dVoiceVlanQos)},
            {{1, 1, 3}, "dVoiceVlanAgingTime", Gauge32, ReadWrite, WRITER(write_dVoiceVlanAgingTime)},
            {{1, 3, 1}, "dVoiceVlanStatusText1", OctetString, ReadOnly},
            {{1, 3, 2}, "dVoiceVlanStatusText2", OctetString, ReadOnly},
        },
};

// --- dVoiceVlanOuiTable ----------------------------------------------------------------------------------------------

TABLE(dVoiceVlanOuiTable, DVOICEVLANOUITABLE, 1, 1, 4, 1);

struct OuiKey {
    Mac address;
    Mac mask;
    static constexpr Kind index[] = {Kind::mac, Kind::mac};
};

// A row between varbinds and requests.
struct VoiceOui {
    unsigned char unused[12];
    char description[32];   // ends with a NUL when it is shorter
    std::uint32_t pending;  // a row status is in the request: the description leaves ACTION to it
};
static_assert(sizeof(VoiceOui) == 48 && offsetof(VoiceOui, pending) == 44);
SWITCHMIB_EXPORT VoiceOui voice_oui;
constinit VoiceOui voice_oui{};

Text<36> words(const OuiKey& row) { return {"%s %s", lower(row.address).c_str(), lower(row.mask).c_str()}; }

Error add_oui(const Set& set, const OuiKey& row, const char* description) {
    const char* word = description[0] != '\0' ? " description " : "";
    return set.global({"voice vlan mac-address %s%s%.32s", words(row).c_str(), word, description});
}

// Clears the record, its flag too: in a request, a row status has to come after its description.
Error write_dVoiceVlanOuiDes(Set& set) {
    OuiKey row;
    char description[sizeof voice_oui.description + 1];
    TRY(set.type(OctetString));
    TRY(set.row(row));
    TRY(set.text(description));
    if (set.phase == reserve1) {
        voice_oui = {};
        set.copy(voice_oui.description, sizeof voice_oui.description);
    }
    return set.acting() && !voice_oui.pending ? add_oui(set, row, description) : noError;
}

Error write_dVoiceVlanOuiRowStatus(Set& set) {
    std::int32_t status;
    OuiKey row;
    TRY(set.integer(status));
    TRY(set.row(row));
    TRY(set.row_status(status));
    if (status != createAndGo && status != destroy) return noError;
    if (set.phase == reserve1) voice_oui.pending = 1;
    if (!set.acting()) return noError;
    if (status == destroy) return set.global({"no voice vlan mac-address %s", words(row).c_str()});
    TRY(add_oui(set, row, voice_oui.description));
    voice_oui = {};
    return noError;
}

constexpr Table<OuiKey> dVoiceVlanOuiTable{
    .id = DVOICEVLANOUITABLE,
    .command = {"show snmp voice-vlan oui",
                [](const OuiKey& row) { return Command("show snmp voice-vlan oui %s", words(row).c_str()); }},
    .columns =
        {
            {1, "dVoiceVlanOuiAddress", OctetString, ReadOnly, never},
            {2, "dVoiceVlanOuiMask", OctetString, ReadOnly, never},
            {3, "dVoiceVlanOuiDes", OctetString, ReadWrite, WRITER(write_dVoiceVlanOuiDes)},
            {4, "dVoiceVlanOuiRowStatus", Integer, ReadWrite, WRITER(write_dVoiceVlanOuiRowStatus)},
        },
};

// --- dVoiceVlanInterfaceTable ----------------------------------------------------------------------------------------

TABLE(dVoiceVlanInterfaceTable, DVOICEVLANINTERFACETABLE, 1, 2, 1, 1);

Error write_dVoiceVlanIfEnabled(Set& set) {
    return set.interface_line({{1, "voice vlan enable"}, {2, "no voice vlan enable"}});
}

Error write_dVoiceVlanIfMode(Set& set) {
    return set.interface_line(
        {{1, "voice vlan mode auto untag"}, {2, "voice vlan mode auto tag"}, {3, "voice vlan mode manual"}});
}

constexpr Table<InterfaceKey> dVoiceVlanInterfaceTable{
    .id = DVOICEVLANINTERFACETABLE,
    .command = {"show snmp voice-vlan port", "show snmp voice-vlan port %d"},
    .columns =
        {
            {1, "dVoiceVlanIfIndex", Integer, ReadOnly},
            {2, "dVoiceVlanIfEnabled", Integer, ReadWrite, WRITER(write_dVoiceVlanIfEnabled)},
            {3, "dVoiceVlanIfMode", Integer, ReadWrite, WRITER(write_dVoiceVlanIfMode)},
        },
};

// --- detected phones -------------------------------------------------------------------------------------------------

TABLE(dVoiceVlanDeviceTable, DVOICEVLANDEVICETABLE, 1, 3, 3, 1);
TABLE(dVoiceVlanLldpMedDeviceTable, DVOICEVLANLLDPMEDDEVICETABLE, 1, 3, 4, 1);

struct DeviceKey {
    std::uint32_t ifindex;
    Mac mac;
    static constexpr Kind index[] = {Kind::integer, Kind::mac};
};
struct LldpMedKey {
    std::uint32_t number;
    static constexpr Kind index[] = {Kind::integer};
};

constexpr Table<DeviceKey> dVoiceVlanDeviceTable{
    .id = DVOICEVLANDEVICETABLE,
    .command = {"show snmp voice-vlan device",
                [](const DeviceKey& row) {
                    return Command("show snmp voice-vlan device %d %s", row.ifindex, lower(row.mac).c_str());
                }},
    .columns =
        {
            {1, "dVoiceVlanDeviceIfIndex", Integer, ReadOnly},
            {2, "dVoiceVlanDeviceMac", OctetString, ReadOnly},
            {3, "dVoiceVlanDeviceColumn3", OctetString, ReadOnly},
        },
};

constexpr Table<LldpMedKey> dVoiceVlanLldpMedDeviceTable{
    .id = DVOICEVLANLLDPMEDDEVICETABLE,
    .command = {"show snmp voice-vlan lldpmed device", "show snmp voice-vlan lldpmed device %d"},
    .columns =
        {
            {1, "dVoiceVlanLldpMedDeviceIndex", Gauge32, ReadOnly, never},
            {2, "dVoiceVlanLldpMedDeviceColumn2", Integer, ReadOnly},
            {3, "dVoiceVlanLldpMedDeviceColumn3", Integer, ReadOnly},
            {4, "dVoiceVlanLldpMedDeviceColumn4", OctetString, ReadOnly},
            {5, "dVoiceVlanLldpMedDeviceColumn5", Integer, ReadOnly},
            {6, "dVoiceVlanLldpMedDeviceColumn6", OctetString, ReadOnly},
            {7, "dVoiceVlanLldpMedDeviceColumn7", OctetString, ReadOnly},
            {8, "dVoiceVlanLldpMedDeviceColumn8", Gauge32, ReadOnly},
        },
};

MODULE_END(23, pellamVoiceVlanMIBGlobals, dVoiceVlanOuiTable, dVoiceVlanInterfaceTable, dVoiceVlanDeviceTable,
           dVoiceVlanLldpMedDeviceTable);

}  // namespace switchmib::MODULE
