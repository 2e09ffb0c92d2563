// The smallest host: it loads the library, registers one module and reads one object. Every service does nothing.
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>
#include <switchmib/exports.h>
#include <switchmib/host.h>
#include <switchmib/snmp.h>

static const VariableEntry* registered;
static size_t registered_entries;

int register_mib(const char* descr, const VariableEntry* variables, size_t entry_size, size_t entries,
                 const oid* module_oid, size_t module_oid_length) {
    printf("%s: %zu objects\n", descr, entries);
    registered = variables;
    registered_entries = entries;
    return entry_size == sizeof *variables && module_oid[module_oid_length - 1] != 0 ? 0 : -1;
}
int header_generic(const VariableEntry* entry, oid* name, size_t* name_length, int exact, size_t* value_length,
                   WriteMethod** write_method) {
    (void)entry, (void)name, (void)name_length, (void)exact, (void)value_length, (void)write_method;
    return -1;
}
int snmp_oid_compare(const oid* a, size_t a_length, const oid* b, size_t b_length) {
    (void)a, (void)a_length, (void)b, (void)b_length;
    return 0;
}
int snmp_get_do_debugging(void) { return 0; }
void debugmsgtoken(const char* token, const char* format, ...) { (void)token, (void)format; }
void debugmsg(const char* token, const char* format, ...) { (void)token, (void)format; }

unsigned char ret_value[8192];
int uib_sh_show_request(uint64_t request_class, const char* command, void* result, int result_size,
                        size_t* value_length, void* key, int key_size, int magic, int exact, int index_count,
                        const char* name, int line) {
    (void)request_class, (void)result, (void)result_size, (void)value_length, (void)key, (void)key_size;
    (void)exact, (void)index_count, (void)line;
    printf("%s, column %d: %s\n", name, magic, command);
    return -1;
}
int uib_sh_config_request(int mode, const char* command, const char* caller, int line) {
    (void)mode, (void)command, (void)caller, (void)line;
    return -1;
}

static int to_field(const oid* first, int count, void* field) {
    memcpy(field, first, count > 0 ? sizeof *first : 0);
    return 0;
}
uib_convert uib_oid_convert[45] = {0, 0, 0, 0, 0, 0, (uib_convert)to_field};
int uib_snmp_get_oid_size(const oid* first, int kind) { return first != 0 && kind == 2 ? 1 : 0; }
int uib_snmp_set_oid_size(const oid* at, int kind, const void* field) {
    return at != 0 && field != 0 && kind == 2 ? 1 : 0;
}

int if_utl_ifindex_to_ifname(uint32_t ifindex, char* name) {
    (void)ifindex, (void)name;
    return -1;
}
int UIB_SNMP_Inet_Addr_To_Str(const void* address_record, char* text, int size) {
    (void)address_record, (void)text, (void)size;
    return -1;
}
const char* SNMPD_Get_Cur_VrfName(void) { return 0; }
const char* SNMPD_Get_Cur_ContextName(void) { return 0; }

void PORTLIST_copy(const void* from, void* to) { (void)from, (void)to; }
void PORTLIST_and(const void* a, const void* b, void* result) { (void)a, (void)b, (void)result; }
void PORTLIST_xor(const void* a, const void* b, void* result) { (void)a, (void)b, (void)result; }
void PORTLIST_clear_all(void* list) { (void)list; }
int PORTLIST_chk_port_exist(const void* list, int port) { return list == 0 || port == 0; }
int PORTLIST_chk_empty(const void* list) { return list == 0; }
void VLANLIST_and(const void* a, const void* b, void* result) { (void)a, (void)b, (void)result; }
void VLANLIST_xor(const void* a, const void* b, void* result) { (void)a, (void)b, (void)result; }

int anprintf(int category, int reserved1, int level, int reserved2, const char* format, ...) {
    (void)category, (void)reserved1, (void)level, (void)reserved2, (void)format;
    return 0;
}
int pal_log_output_ui_simple(const char* format, ...) {
    (void)format;
    return 0;
}

// A symbol of the library, with the type that exports.h declares.
#define LOOK_UP(library, name) ((__typeof__(&name))(uintptr_t)dlsym(library, #name))

int main(void) {
    void* library = dlopen(LIBRARY, RTLD_NOW);
    if (library == 0) {
        fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    printf("switchmib %s\n", *LOOK_UP(library, switchmib_version));
    LOOK_UP(library, interfaces_snmp_init)();
    if (registered != *LOOK_UP(library, interfaces_variables) ||
        registered_entries != sizeof interfaces_variables / sizeof *interfaces_variables)
        return 1;

    // The last object is a column of ifTable; with the full OID it is read for ifIndex 7.
    VariableEntry entry = registered[registered_entries - 1];
    const size_t module_length = sizeof interfaces_oid / sizeof *interfaces_oid;
    oid name[136] = {0};
    size_t name_length, value_length;
    WriteMethod* write_method = 0;
    memmove(entry.name + module_length, entry.name, entry.namelen * sizeof(oid));
    memcpy(entry.name, *LOOK_UP(library, interfaces_oid), sizeof interfaces_oid);
    entry.namelen = (uint8_t)(entry.namelen + module_length);
    memcpy(name, entry.name, entry.namelen * sizeof(oid));
    name[entry.namelen] = 7;
    name_length = entry.namelen + 1u;
    return entry.findVar(&entry, name, &name_length, 1, &value_length, &write_method) == 0 ? 0 : 1;
}
