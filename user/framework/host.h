// Everything that the library takes from the process that loads it, and the layouts that both sides share; as C11 and
// as C++. Integrators get this header installed: a host implements what is listed under "Services".
//
// Strings are NUL-terminated; numbers are in machine order; addresses are octets in network order.
#pragma once

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// ---------------------------------------------------------------------------------------------------------------------
// Types

typedef uint32_t oid;  // one sub-identifier

typedef struct VariableEntry VariableEntry;

// One phase of a SET for one varbind. `value` points to `length` octets: INTEGER, Unsigned32, Counter32 and TimeTicks
// are 4 octets in machine order, an OBJECT IDENTIFIER 4 octets a sub-identifier, an IpAddress 4 octets in network
// order. `state` is what the read method returned for the same row just before the phases began. Returns an SNMP error
// number.
typedef int WriteMethod(int action, unsigned char* value, unsigned char type, size_t length, unsigned char* state,
                        oid* name, size_t name_length);

// A GET (exact 1) or GETNEXT (exact 0) of one object. `entry` has the object's full OID. A GETNEXT writes the
// answered OID over `name`, which has room for 128 sub-identifiers and 8 readable ones after them. Returns the value,
// `*value_length` octets, or null when there is no such instance.
typedef unsigned char* ReadMethod(const VariableEntry* entry, oid* name, size_t* name_length, int exact,
                                  size_t* value_length, WriteMethod** write_method);

#pragma pack(push, 4)
struct VariableEntry {
    uint8_t magic;  // the object's number within its read method, from 1
    uint8_t type;   // ASN.1 tag of the value
    uint16_t acl;   // 1 read-only, 2 read-write
    ReadMethod* findVar;
    uint8_t namelen;                           // sub-identifiers in `name`
    oid name[sizeof(void*) == 4 ? 130 : 129];  // relative to the module OID in a registration, full in a read
};
#pragma pack(pop)

static_assert(sizeof(VariableEntry) == 532 && offsetof(VariableEntry, findVar) == 4, "the host's layout");
static_assert(offsetof(VariableEntry, namelen) == 4 + sizeof(void*) &&
                  offsetof(VariableEntry, name) == 8 + sizeof(void*),
              "the host's layout");

// What index conversion works on, besides a u32 and plain octets.

typedef struct InetAddress {   // kind 10; a pair of them is kind 13
    uint32_t type;             // 1 IPv4, 2 IPv6, 0 none
    uint32_t length;           // 4, 16 or 0
    unsigned char octets[16];  // network order, unused ones zero
    uint32_t zone;
} InetAddress;
typedef struct InetPrefix {  // kind 11
    InetAddress address;
    uint32_t length;  // prefix length in bits
} InetPrefix;
typedef struct InetPairOnInterface {  // kind 12
    InetAddress first;
    uint32_t ifindex;
    InetAddress second;
} InetPairOnInterface;
typedef struct InetText {  // kind 7
    uint32_t type;
    char text[64];  // NUL-padded
    uint32_t prefix_length;
} InetText;
typedef struct CountedString {  // kind 14: kept outside the key; `data` points to its octets in the key
    uint32_t length;
    uint32_t capacity;
    unsigned char* data;
} CountedString;

static_assert(sizeof(InetAddress) == 28 && sizeof(InetPrefix) == 32 && sizeof(InetPairOnInterface) == 60 &&
                  sizeof(InetText) == 72,
              "the host's layout");

// What tools read of a module, `<module>_groups`: one record for each scalar group and table, in the order of the
// module's entries.
typedef struct {
    const char* name;   // what show requests name: "swPortTable", "switchPortMIBGlobals"
    uint16_t first;     // its first object in `<module>_variables`
    uint16_t objects;   // how many
    uint16_t key_size;  // octets of the record that a show request gets; 0 for a scalar group
    uint8_t answers;    // 0: registered, and never answers
    uint8_t fields;     // index fields, at most 4; 0 for a scalar group
    uint8_t kind[4];    // the index kind of each field
    uint8_t octets[4];  // its octets in the key
} GroupInfo;
static_assert(offsetof(GroupInfo, first) == sizeof(char*) && offsetof(GroupInfo, kind) == sizeof(char*) + 8 &&
                  offsetof(GroupInfo, octets) == sizeof(char*) + 12 && sizeof(GroupInfo) == sizeof(char*) + 16,
              "the tools' layout");

// ---------------------------------------------------------------------------------------------------------------------
// Services: the agent

// Registers `entries` variables of `entry_size` octets each under a module OID. 0: registered.
int register_mib(const char* descr, const VariableEntry* variables, size_t entry_size, size_t entries,
                 const oid* module_oid, size_t module_oid_length);

// Matches a request against a scalar: 0 when it is meant (the OID is then the answered one, the value length 4, the
// write-method slot clear), -1 when not.
int header_generic(const VariableEntry* entry, oid* name, size_t* name_length, int exact, size_t* value_length,
                   WriteMethod** write_method);

// Negative, zero or positive as `a` sorts before, with or after `b`.
int snmp_oid_compare(const oid* a, size_t a_length, const oid* b, size_t b_length);

int snmp_get_do_debugging(void);  // nonzero: debugging is on
void debugmsgtoken(const char* token, const char* format, ...) __attribute__((format(printf, 2, 3)));
void debugmsg(const char* token, const char* format, ...) __attribute__((format(printf, 2, 3)));

// ---------------------------------------------------------------------------------------------------------------------
// Services: the management backend

extern unsigned char ret_value[8192];  // the result buffer of most show requests, valid until the next one

// Runs a show command and takes one column (`magic`) of one row from it: the row of `key` with exact 1, the row after
// it with exact 0 (the first one for a clear key), which `key` then names. 0: `result` holds `*value_length` octets.
int uib_sh_show_request(uint64_t request_class, const char* command, void* result, int result_size,
                        size_t* value_length, void* key, int key_size, int magic, int exact, int index_count,
                        const char* name, int line);

// Runs one configuration line. Mode 5: from global configuration mode; -1: in the mode that the line before entered;
// 4: from the privileged executive mode. 0: accepted.
int uib_sh_config_request(int mode, const char* command, const char* caller, int line);

// ---------------------------------------------------------------------------------------------------------------------
// Services: index conversion, by kind

int uib_snmp_get_oid_size(const oid* first, int kind);                  // sub-ids that the field at `first` occupies
int uib_snmp_set_oid_size(const oid* at, int kind, const void* field);  // sub-ids that the field will need

typedef void (*uib_convert)(void);                                   // a slot, to be cast to the slot's own type:
typedef int uib_to_field(const oid* first, int count, void* field);  // slot 3 * kind
typedef int uib_to_oid(oid* out, const void* field, int count);      // slot 3 * kind + 1
extern uib_convert uib_oid_convert[45];                              // null where a kind has no conversion (kind 0)

// ---------------------------------------------------------------------------------------------------------------------
// Services: interfaces, addresses, request context

// Writes the command-line name of an interface, at most 21 octets. Negative: no such interface, `name` untouched.
int if_utl_ifindex_to_ifname(uint32_t ifindex, char* name);

// Writes an address (an InetAddress, or a record that begins with one) as text. 0: done.
int UIB_SNMP_Inet_Addr_To_Str(const void* address_record, char* text, int size);

const char* SNMPD_Get_Cur_VrfName(void);      // VRF of the request; null or "" for none
const char* SNMPD_Get_Cur_ContextName(void);  // SNMP context of the request; null or "" for none

// ---------------------------------------------------------------------------------------------------------------------
// Services: port lists (12 octets) and VLAN lists (512 octets). Member n, from 1, is octet (n - 1) / 8, mask
// 0x80 >> (n - 1) % 8. A result may be one of its sources.

void PORTLIST_copy(const void* from, void* to);
void PORTLIST_and(const void* a, const void* b, void* result);
void PORTLIST_xor(const void* a, const void* b, void* result);
void PORTLIST_clear_all(void* list);
int PORTLIST_chk_port_exist(const void* list, int port);  // nonzero: member
int PORTLIST_chk_empty(const void* list);                 // nonzero: no member
void VLANLIST_and(const void* a, const void* b, void* result);
void VLANLIST_xor(const void* a, const void* b, void* result);

// ---------------------------------------------------------------------------------------------------------------------
// Services: logging

// Category 62: multicast group management, 92: tunnels. Level 101: trace, 104: error.
int anprintf(int category, int reserved1, int level, int reserved2, const char* format, ...)
    __attribute__((format(printf, 5, 6)));
int pal_log_output_ui_simple(const char* format, ...) __attribute__((format(printf, 1, 2)));

#ifdef __cplusplus
}  // extern "C"
#endif
