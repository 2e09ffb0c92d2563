#include "instant_host.h"

#include <cstdio>
#include <cstring>

namespace instant {

std::vector<Registered>& registered() {
    static std::vector<Registered> all;
    return all;
}

Advance* advance = [](unsigned char*) { return true; };

bool count_up(unsigned char* number, std::uint32_t last) {
    std::uint32_t value;
    std::memcpy(&value, number, sizeof value);
    if (value == last) return false;
    ++value;
    std::memcpy(number, &value, sizeof value);
    return true;
}

}  // namespace instant

extern "C" {

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
        return 0;
    }
    return exact || instant::advance(static_cast<unsigned char*>(key)) ? 0 : -1;
}
int uib_sh_config_request(int, const char*, const char*, int) { return 0; }

int if_utl_ifindex_to_ifname(std::uint32_t ifindex, char* name) {
    std::snprintf(name, 21, "port%u", ifindex - 5120);
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
