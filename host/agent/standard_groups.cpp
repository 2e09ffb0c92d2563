#include "agent/standard_groups.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace agent {
namespace {

StandardGroups* serving = nullptr;

constexpr oid kSystem[] = {1, 3, 6, 1, 2, 1, 1};
constexpr oid kSnmp[] = {1, 3, 6, 1, 2, 1, 11};

constexpr char kDescription[] = "Simulated Layer 2/3 Ethernet switch, mibhost " MIBHOST_VERSION;
constexpr oid kObject[] = {1, 3, 6, 1, 4, 1, SWITCHMIB_VENDOR_ENTERPRISE};
constexpr std::uint32_t kLayers2And3 = 2 + 4;
constexpr std::uint32_t kTrapsDisabled = 2;
constexpr std::size_t kMaxText = 255;

// Objects by their sub-identifier in the group, columns by that of the column.
enum SystemObject : std::uint8_t {
    kDescr = 1,
    kObjectID,
    kUpTime,
    kContact,
    kName,
    kLocation,
    kServices,
    kORLastChange,
};
enum OrColumn : std::uint8_t { kORID = 2, kORDescr, kORUpTime };
enum SnmpObject : std::uint8_t {
    kInPkts = 1,
    kInBadVersions = 3,
    kInBadCommunityNames,
    kInBadCommunityUses,
    kInASNParseErrs,
    kEnableAuthenTraps = 30,
    kSilentDrops,
    kProxyDrops,
};

unsigned char* answer(const void* octets, std::size_t size, std::size_t* value_length) {
    *value_length = size;
    return static_cast<unsigned char*>(const_cast<void*>(octets));
}

}  // namespace

// What the registered entries name.
struct StandardGroups::Methods {
    static unsigned char* number(std::uint64_t value, std::size_t* value_length) {
        serving->number_ = static_cast<std::uint32_t>(value);
        return answer(&serving->number_, sizeof serving->number_, value_length);
    }

    static unsigned char* text(const std::string& value, std::size_t* value_length) {
        return answer(value.data(), value.size(), value_length);
    }

    static Text& text_of(std::uint32_t object) {
        if (object == kContact) return serving->contact_;
        return object == kName ? serving->name_ : serving->location_;
    }

    static unsigned char* read_system(const VariableEntry* entry, oid* name, std::size_t* name_length, int exact,
                                      std::size_t* value_length, WriteMethod** write_method) {
        if (serving == nullptr || header_generic(entry, name, name_length, exact, value_length, write_method) != 0)
            return nullptr;
        switch (entry->magic) {
            case kDescr: return answer(kDescription, sizeof kDescription - 1, value_length);
            case kObjectID: return answer(kObject, sizeof kObject, value_length);
            case kUpTime: {
                const auto time = serving->up_time ? serving->up_time() : std::chrono::milliseconds(0);
                return number(static_cast<std::uint64_t>(time.count() / 10), value_length);
            }
            case kServices: return number(kLayers2And3, value_length);
            case kORLastChange: return number(0, value_length);
            default: *write_method = write_text; return text(text_of(entry->magic).value, value_length);
        }
    }

    static int write_text(int phase, unsigned char* value, unsigned char type, std::size_t length, unsigned char*,
                          oid* name, std::size_t) {
        return text_of(name[std::size(kSystem)]).write(phase, type, value, length);
    }

    // A row for each module, from 1 on, all of them since the start.
    static unsigned char* read_or_table(const VariableEntry* entry, oid* name, std::size_t* name_length, int exact,
                                        std::size_t* value_length, WriteMethod**) {
        if (serving == nullptr) return nullptr;
        const std::size_t column = entry->namelen;
        std::size_t row = *name_length > column ? name[column] : 0;
        if (exact) {
            if (*name_length != column + 1) return nullptr;
        } else if (row == UINT32_MAX) {
            return nullptr;
        } else {
            ++row;
        }
        if (row == 0 || row > serving->modules_.size()) return nullptr;
        name[column] = static_cast<oid>(row);
        *name_length = column + 1;

        const Module& module = serving->modules_[row - 1];
        switch (entry->magic) {
            case kORID: return answer(module.oid.data(), module.oid.size() * sizeof(oid), value_length);
            case kORDescr: return text(module.name, value_length);
            default: return number(0, value_length);
        }
    }

    static unsigned char* read_snmp(const VariableEntry* entry, oid* name, std::size_t* name_length, int exact,
                                    std::size_t* value_length, WriteMethod** write_method) {
        if (serving == nullptr || header_generic(entry, name, name_length, exact, value_length, write_method) != 0)
            return nullptr;
        static constexpr Counters kNone;
        const Counters& counters = serving->counters != nullptr ? *serving->counters : kNone;
        switch (entry->magic) {
            case kInPkts: return number(counters.received, value_length);
            case kInBadVersions: return number(counters.unsupported_version, value_length);
            case kInBadCommunityNames: return number(counters.wrong_community, value_length);
            case kInBadCommunityUses: return number(counters.bad_community_uses, value_length);
            case kInASNParseErrs: return number(counters.malformed, value_length);
            case kEnableAuthenTraps: return number(kTrapsDisabled, value_length);
            case kSilentDrops: return number(counters.unanswerable, value_length);
            default: return number(0, value_length);
        }
    }

    static constexpr std::uint16_t kReadOnly = 1;
    static constexpr std::uint16_t kReadWrite = 2;

    static constexpr VariableEntry kSystemEntries[] = {
        {kDescr, kOctetString, kReadOnly, read_system, 1, {kDescr}},
        {kObjectID, kObjectId, kReadOnly, read_system, 1, {kObjectID}},
        {kUpTime, kTimeTicks, kReadOnly, read_system, 1, {kUpTime}},
        {kContact, kOctetString, kReadWrite, read_system, 1, {kContact}},
        {kName, kOctetString, kReadWrite, read_system, 1, {kName}},
        {kLocation, kOctetString, kReadWrite, read_system, 1, {kLocation}},
        {kServices, kInteger, kReadOnly, read_system, 1, {kServices}},
        {kORLastChange, kTimeTicks, kReadOnly, read_system, 1, {kORLastChange}},
        {kORID, kObjectId, kReadOnly, read_or_table, 3, {9, 1, kORID}},
        {kORDescr, kOctetString, kReadOnly, read_or_table, 3, {9, 1, kORDescr}},
        {kORUpTime, kTimeTicks, kReadOnly, read_or_table, 3, {9, 1, kORUpTime}},
    };
    static constexpr const char* kSystemNames[] = {
        "sysDescr",    "sysObjectID",     "sysUpTime", "sysContact", "sysName",     "sysLocation",
        "sysServices", "sysORLastChange", "sysORID",   "sysORDescr", "sysORUpTime",
    };
    static_assert(std::size(kSystemNames) == std::size(kSystemEntries));
    // Name, first object, objects, no key, answers; then index fields with their kinds and octets.
    static constexpr GroupInfo kSystemGroups[] = {
        {"system", 0, 8, 0, 1, 0, {}, {}},
        {"sysORTable", 8, 3, 0, 1, 1, {2}, {4}},
    };

    // The agent sends no traps, so what enables them is not to be set.
    static constexpr VariableEntry kSnmpEntries[] = {
        {kInPkts, kCounter32, kReadOnly, read_snmp, 1, {kInPkts}},
        {kInBadVersions, kCounter32, kReadOnly, read_snmp, 1, {kInBadVersions}},
        {kInBadCommunityNames, kCounter32, kReadOnly, read_snmp, 1, {kInBadCommunityNames}},
        {kInBadCommunityUses, kCounter32, kReadOnly, read_snmp, 1, {kInBadCommunityUses}},
        {kInASNParseErrs, kCounter32, kReadOnly, read_snmp, 1, {kInASNParseErrs}},
        {kEnableAuthenTraps, kInteger, kReadOnly, read_snmp, 1, {kEnableAuthenTraps}},
        {kSilentDrops, kCounter32, kReadOnly, read_snmp, 1, {kSilentDrops}},
        {kProxyDrops, kCounter32, kReadOnly, read_snmp, 1, {kProxyDrops}},
    };
    static constexpr const char* kSnmpNames[] = {
        "snmpInPkts",         "snmpInBadVersions",     "snmpInBadCommunityNames", "snmpInBadCommunityUses",
        "snmpInASNParseErrs", "snmpEnableAuthenTraps", "snmpSilentDrops",         "snmpProxyDrops",
    };
    static_assert(std::size(kSnmpNames) == std::size(kSnmpEntries));
    static constexpr GroupInfo kSnmpGroups[] = {
        {"snmp", 0, std::size(kSnmpEntries), 0, 1, 0, {}, {}},
    };
};

StandardGroups::StandardGroups(const std::vector<services::Registration>& modules, Clock clock)
    : up_time(std::move(clock)) {
    for (const services::Registration& module : modules) modules_.push_back({module.descr, module.module_oid});
    serving = this;
}

StandardGroups::~StandardGroups() {
    if (serving == this) serving = nullptr;
}

std::vector<services::Registration> StandardGroups::registrations() {
    return {
        {"system",
         {std::begin(kSystem), std::end(kSystem)},
         Methods::kSystemEntries,
         std::size(Methods::kSystemEntries),
         Methods::kSystemNames,
         Methods::kSystemGroups},
        {"snmp",
         {std::begin(kSnmp), std::end(kSnmp)},
         Methods::kSnmpEntries,
         std::size(Methods::kSnmpEntries),
         Methods::kSnmpNames,
         Methods::kSnmpGroups},
    };
}

int StandardGroups::Text::write(int phase, std::uint8_t type, const unsigned char* octets, std::size_t length) {
    switch (phase) {
        case kReserve1:
            if (type != kOctetString) return kWrongType;
            if (length > kMaxText) return kWrongLength;
            // A DisplayString is ASCII.
            if (std::any_of(octets, octets + length, [](unsigned char octet) { return octet > 0x7f; }))
                return kWrongValue;
            break;
        case kAction:
            if (!before) before = value;
            value.assign(reinterpret_cast<const char*>(octets), length);
            break;
        case kUndo:
            if (before) value = *before;
            before.reset();
            break;
        case kCommit: before.reset(); break;
        default: break;
    }
    return kNoError;
}

}  // namespace agent
