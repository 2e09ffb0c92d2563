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

bool register_module(Registration registration) {
    auto& taken = services().registrations;
    if (std::ranges::find(taken, registration.module_oid, &Registration::module_oid) != taken.end()) return false;
    if (services().may_register && !services().may_register(registration)) return false;
    taken.push_back(std::move(registration));
    return true;
}

namespace {

constexpr std::size_t kMaxInterfaceName = 20;

__attribute__((format(printf, 1, 0))) std::string formatted(const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);  // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(again);
    std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

bool is_logging() { return services().log && !services().quiet; }

// Completes `line` with its text and hands it to the log.
__attribute__((format(printf, 2, 0))) void log(LogLine line, const char* format, std::va_list arguments) {
    line.text = formatted(format, arguments);
    services().log(line);
}

const char* text_or_null(const std::optional<std::string>& text) { return text ? text->c_str() : nullptr; }

const char* text_or_empty(const char* text) { return text == nullptr ? "" : text; }

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

    const bool is_taken =
        services::register_module({descr, {module_oid, module_oid + module_oid_length}, variables, entries});
    return is_taken ? 0 : kRefused;
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
    if (!services::is_logging()) return;
    std::va_list arguments;
    va_start(arguments, format);
    services::log({"debug", token, 0, 0, {}}, format, arguments);
    va_end(arguments);
}

void debugmsg(const char* token, const char* format, ...) {
    if (!services::is_logging()) return;
    std::va_list arguments;
    va_start(arguments, format);
    services::log({"debug", token, 0, 0, {}}, format, arguments);
    va_end(arguments);
}

int uib_sh_show_request(std::uint64_t request_class, const char* command, void* result, int result_size,
                        std::size_t* value_length, void* key, int key_size, int magic, int exact, int index_count,
                        const char* name, int line) {
    if (services::services().backend == nullptr) return -1;
    // One for all requests, so that its texts keep their memory: a show request makes no other.
    static services::ShowRequest request;
    request.request_class = request_class;
    request.command = services::text_or_empty(command);
    request.result = result;
    request.result_size = result_size;
    request.value_length = value_length;
    request.key = key;
    request.key_size = key_size;
    request.magic = magic;
    request.exact = exact;
    request.index_count = index_count;
    request.name = services::text_or_empty(name);
    request.line = line;
    return services::services().backend->show(request) ? 0 : -1;
}

int uib_sh_config_request(int mode, const char* command, const char* caller, int line) {
    if (services::services().backend == nullptr) return -1;
    const services::ConfigRequest request{mode, services::text_or_empty(command), services::text_or_empty(caller),
                                          line};
    return services::services().backend->configure(request) ? 0 : -1;
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
    if (!services::is_logging()) return 0;
    std::va_list arguments;
    va_start(arguments, format);
    services::log({"an", {}, category, level, {}}, format, arguments);
    va_end(arguments);
    return 0;
}

int pal_log_output_ui_simple(const char* format, ...) {
    if (!services::is_logging()) return 0;
    std::va_list arguments;
    va_start(arguments, format);
    services::log({"ui", {}, 0, 0, {}}, format, arguments);
    va_end(arguments);
    return 0;
}

}  // extern "C"
