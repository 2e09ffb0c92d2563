// The agent, backend, context and logging services: thin forwards to what is plugged into services().
#include "services/services.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <iterator>

namespace services {

Services& services() {
    static Services instance;
    return instance;
}

namespace {

constexpr std::size_t kMaxInterfaceName = 20;

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

// Completes `line` with its text and hands it to the log.
__attribute__((format(printf, 2, 0))) void log(LogLine line, const char* format, std::va_list arguments) {
    if (!services().log) return;
    line.text = formatted(format, arguments);
    services().log(line);
}

const char* text_or_null(const std::optional<std::string>& text) { return text ? text->c_str() : nullptr; }

std::string copy(const char* text) { return text == nullptr ? std::string() : std::string(text); }

}  // namespace
}  // namespace services

extern "C" {

unsigned char ret_value[8192];

int register_mib(const char* descr, const VariableEntry* variables, std::size_t entry_size, std::size_t entries,
                 const oid* module_oid, std::size_t module_oid_length) {
    constexpr int kRefused = -1;
    if (descr == nullptr || variables == nullptr || module_oid == nullptr || entry_size != sizeof(VariableEntry))
        return kRefused;
    for (std::size_t i = 0; i < entries; ++i)
        if (variables[i].findVar == nullptr || module_oid_length + variables[i].namelen >= services::kMaxSubIds)
            return kRefused;

    services::Registration registration{descr, {module_oid, module_oid + module_oid_length}, variables, entries};
    auto& taken = services::services().registrations;
    if (std::ranges::find(taken, registration.module_oid, &services::Registration::module_oid) != taken.end())
        return kRefused;
    if (services::services().may_register && !services::services().may_register(registration)) return kRefused;
    taken.push_back(std::move(registration));
    return 0;
}

int header_generic(const VariableEntry* entry, oid* name, std::size_t* name_length, int exact,
                   std::size_t* value_length, WriteMethod** write_method) {
    oid instance[sizeof entry->name / sizeof(oid) + 1];
    const std::size_t length = std::size_t{entry->namelen} + 1;
    if (length > std::size(instance)) return -1;
    std::copy_n(entry->name, entry->namelen, instance);
    instance[entry->namelen] = 0;
    const int order = snmp_oid_compare(name, *name_length, instance, length);
    if (exact ? order != 0 : order >= 0) return -1;
    std::copy_n(instance, length, name);
    *name_length = length;
    *write_method = nullptr;
    *value_length = sizeof(std::uint32_t);
    return 0;
}

int snmp_oid_compare(const oid* a, std::size_t a_length, const oid* b, std::size_t b_length) {
    const std::size_t common = std::min(a_length, b_length);
    for (std::size_t i = 0; i < common; ++i)
        if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
    return a_length == b_length ? 0 : a_length < b_length ? -1 : 1;
}

int snmp_get_do_debugging() { return services::services().context.debugging ? 1 : 0; }

void debugmsgtoken(const char* token, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    services::log({"debug", token, 0, 0, {}}, format, arguments);
    va_end(arguments);
}

void debugmsg(const char* token, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    services::log({"debug", token, 0, 0, {}}, format, arguments);
    va_end(arguments);
}

int uib_sh_show_request(std::uint64_t request_class, const char* command, void* result, int result_size,
                        std::size_t* value_length, void* key, int key_size, int magic, int exact, int index_count,
                        const char* name, int line) {
    if (services::services().backend == nullptr) return -1;
    services::ShowRequest request{
        request_class, services::copy(command), result, result_size, value_length, key, key_size, magic, exact,
        index_count,   services::copy(name),    line};
    return services::services().backend->show(request) ? 0 : -1;
}

int uib_sh_config_request(int mode, const char* command, const char* caller, int line) {
    if (services::services().backend == nullptr) return -1;
    return services::services().backend->configure({mode, services::copy(command), services::copy(caller), line}) ? 0
                                                                                                                  : -1;
}

int if_utl_ifindex_to_ifname(std::uint32_t ifindex, char* name) {
    if (services::services().backend == nullptr) return -1;
    const auto found = services::services().backend->interface_name(ifindex);
    if (!found) return -1;
    const std::size_t length = found->copy(name, services::kMaxInterfaceName);
    name[length] = '\0';
    return 0;
}

const char* SNMPD_Get_Cur_VrfName() { return services::text_or_null(services::services().context.vrf); }

const char* SNMPD_Get_Cur_ContextName() { return services::text_or_null(services::services().context.snmp_context); }

int anprintf(int category, int, int level, int, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    services::log({"an", {}, category, level, {}}, format, arguments);
    va_end(arguments);
    return 0;
}

int pal_log_output_ui_simple(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    services::log({"ui", {}, 0, 0, {}}, format, arguments);
    va_end(arguments);
    return 0;
}

}  // extern "C"
