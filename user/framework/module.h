// A module's exports and its registration. A module's source says its name before everything else:
//
//     #define MODULE interfaces
//     #include "framework/module.h"
//     namespace switchmib::MODULE {
//     MODULE_OID(kMib2, 2);                       its OID, below one of the roots that follow
//     TABLE(ifTable, IFTABLE, 2, 1);              before a table, its name and its entry's OID in the module
//     ...
//     MODULE_END(23, interfacesGlobals, ifTable);     the objects that it registers, in order, and how many they are
//     }
#pragma once

#include "framework/host.h"
#include "framework/read.h"
#include "framework/table.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace switchmib {

// An exported array of sub-identifiers; to whoever looks it up a plain `oid name[length]`.
template <std::size_t length>
struct OidArray {
    oid ids[length];
};

template <std::size_t length, class... Ids>
constexpr auto join(const OidArray<length>& prefix, Ids... ids) {
    OidArray<length + sizeof...(Ids)> joined{};
    std::size_t at = 0;
    for (const oid id : prefix.ids) joined.ids[at++] = id;
    ((joined.ids[at++] = static_cast<oid>(ids)), ...);
    return joined;
}

inline constexpr OidArray<6> kMib2{{1, 3, 6, 1, 2, 1}};
inline constexpr OidArray<7> kIeee8021{{1, 3, 111, 2, 802, 1, 1}};
inline constexpr OidArray<7> kVendor{{1, 3, 6, 1, 4, 1, SWITCHMIB_VENDOR_ENTERPRISE}};
inline constexpr OidArray<7> kSecondVendor{{1, 3, 6, 1, 4, 1, SWITCHMIB_SECOND_ENTERPRISE}};

// An exported array with one element for each object of a module; to whoever looks it up a plain `Element name[size]`.
template <class Element, std::size_t size>
struct PerObject {
    Element elements[size];
};

template <const auto&... groups>
inline constexpr std::size_t object_count = (groups.objects().size() + ...);

template <const auto&... groups>
consteval auto make_variables() {
    PerObject<VariableEntry, object_count<groups...>> variables{};
    VariableEntry* entry = variables.elements;
    const auto add = [&entry]<const auto & group>() {
        std::uint8_t magic = 0;
        for (const auto& object : group.objects()) {
            entry->magic = ++magic;
            entry->type = object.type;
            entry->acl = object.access;
            entry->findVar = read_method<group>();
            group.for_each_sub_id(object, [entry](oid id) { entry->name[entry->namelen++] = id; });
            ++entry;
        }
    };
    (add.template operator()<groups>(), ...);
    return variables;
}

template <const auto&... groups>
consteval auto make_names() {
    PerObject<const char*, object_count<groups...>> names{};
    const char** name = names.elements;
    const auto add = [&name](const auto& group) {
        for (const auto& object : group.objects()) *name++ = object.name;
    };
    (add(groups), ...);
    return names;
}

// A scalar group or table, for tools: which of the module's objects are its, and what its index is.
template <const auto& group>
consteval GroupInfo describe(std::size_t first) {
    GroupInfo info{};
    info.name = group.group_name();
    info.first = static_cast<std::uint16_t>(first);
    info.objects = static_cast<std::uint16_t>(group.objects().size());
    for (const auto& object : group.objects()) info.answers |= object.source.answers;
    if constexpr (requires { group.id; }) {
        using Table = std::remove_cvref_t<decltype(group)>;
        if (!group.answers) info.answers = 0;
        constexpr KeyShape shape = shape_of<typename Table::KeyType>;
        info.key_size =
            std::is_same_v<typename Table::RecordType, NoRecord> ? shape.size : sizeof(typename Table::RecordType);
        info.fields = shape.count;
        for (int i = 0; i < shape.count; ++i) {
            info.kind[i] = shape.fields[i].kind;
            info.octets[i] = shape.fields[i].octets;
        }
    }
    return info;
}

template <const auto&... groups>
consteval auto make_groups() {
    PerObject<GroupInfo, sizeof...(groups)> infos{};
    GroupInfo* info = infos.elements;
    std::size_t first = 0;
    ((*info++ = describe<groups>(first), first += groups.objects().size()), ...);
    return infos;
}

// What a module hands to the agent.
struct Registration {
    const char* descr;
    const VariableEntry* variables;
    std::size_t entries;
    const oid* module_oid;
    std::size_t module_oid_length;
};

// A source file's path in the project, without its ending: "user/L2/qBridgeMIB_snmp".
template <std::size_t size>
struct Path {
    char text[size] = {};
    consteval Path(const char (&path)[size]) {
        const std::string_view whole(path);
        std::size_t from = whole.rfind("user/");
        if (from == whole.npos) from = whole.rfind('/') + 1;
        whole.substr(from, whole.rfind('.') - from).copy(text, size);
    }
};
// Registers a module. When the agent refuses and debugging is on, says so in two debug lines.
void register_module(const Registration& module, const char* init, const char* source, int line);

}  // namespace switchmib

#define SWITCHMIB_EXPORT extern "C" __attribute__((visibility("default")))

// Defines and exports a constant of the type of its value.
#define SWITCHMIB_EXPORT_CONST(name, ...)                                   \
    SWITCHMIB_EXPORT const std::remove_cvref_t<decltype(__VA_ARGS__)> name; \
    constinit const std::remove_cvref_t<decltype(__VA_ARGS__)> name = __VA_ARGS__

// Exports `<module>_oid` and `<module>_oid_length`: a root arc and the sub-identifiers below it.
#define SWITCHMIB_MODULE_OID(module, root, ...)                          \
    constexpr auto module##_root = ::switchmib::join(root, __VA_ARGS__); \
    SWITCHMIB_EXPORT_CONST(module##_oid, module##_root);                 \
    SWITCHMIB_EXPORT_CONST(module##_oid_length, std::size(module##_root.ids))

// Exports `<TABLE>_oid`, the table's entry OID and a column slot, and names it TABLE for the table's data.
#define SWITCHMIB_TABLE(module, table, TABLE_NAME, ...)                                                       \
    SWITCHMIB_EXPORT decltype(::switchmib::join(module##_root, __VA_ARGS__, 0)) TABLE_NAME##_oid;             \
    constinit decltype(TABLE_NAME##_oid) TABLE_NAME##_oid = ::switchmib::join(module##_root, __VA_ARGS__, 0); \
    constexpr ::switchmib::TableId TABLE_NAME {                                                               \
#table, {__VA_ARGS__ }, TABLE_NAME##_oid.ids, std::size(TABLE_NAME##_oid.ids)                         \
    }

// Exports a module's own result buffer, for the `.result` of its tables. The backend may put numbers into it.
#define RESULT_BUFFER(buffer, octets)              \
    SWITCHMIB_EXPORT unsigned char buffer[octets]; \
    alignas(std::uint32_t) constinit unsigned char buffer[octets] = {}

#ifdef SWITCHMIB_NO_NAMES
#define SWITCHMIB_NAMES(module, ...) static_assert(true)
#else
#define SWITCHMIB_NAMES(module, ...)                                                  \
    SWITCHMIB_EXPORT_CONST(module##_names, ::switchmib::make_names<__VA_ARGS__>());   \
    SWITCHMIB_EXPORT_CONST(module##_groups, ::switchmib::make_groups<__VA_ARGS__>()); \
    SWITCHMIB_EXPORT_CONST(module##_groups_count, std::size(module##_groups.elements))
#endif

// Exports `<module>_variables` and `<module>_variables_count`, the objects of the groups named, and for tools
// `<module>_names`, `<module>_groups` and `<module>_groups_count`.
#define SWITCHMIB_VARIABLES(module, entries, ...)                                                                  \
    static_assert(::switchmib::object_count<__VA_ARGS__> == entries, "another number of objects than registered"); \
    SWITCHMIB_EXPORT_CONST(module##_variables, ::switchmib::make_variables<__VA_ARGS__>());                        \
    SWITCHMIB_EXPORT_CONST(module##_variables_count, std::size_t{entries});                                        \
    SWITCHMIB_NAMES(module, __VA_ARGS__)

// Hands a module to the agent, in its init function.
#define SWITCHMIB_REGISTER(module)                                                                                   \
    do {                                                                                                             \
        static constexpr ::switchmib::Path source_(__FILE__);                                                        \
        ::switchmib::register_module(                                                                                \
            {#module, module##_variables.elements, module##_variables_count, module##_oid.ids, module##_oid_length}, \
            __func__, source_.text, __LINE__);                                                                       \
    } while (false)

// An ordinary module's exported init function; `init` is its name.
#define SWITCHMIB_MODULE_END(module, init, entries, ...) \
    SWITCHMIB_VARIABLES(module, entries, __VA_ARGS__);   \
    SWITCHMIB_EXPORT void init() { SWITCHMIB_REGISTER(module); }

// The same for the module that the source file is: a second step, so that MODULE is replaced by its value.
#define SWITCHMIB_EXPAND(macro, ...) macro(__VA_ARGS__)
#define SWITCHMIB_JOIN_(a, b) a##b
#define SWITCHMIB_JOIN(a, b) SWITCHMIB_JOIN_(a, b)
#define MODULE_OID(...) SWITCHMIB_EXPAND(SWITCHMIB_MODULE_OID, MODULE, __VA_ARGS__)
#define TABLE(table, TABLE_NAME, ...) SWITCHMIB_EXPAND(SWITCHMIB_TABLE, MODULE, table, TABLE_NAME, __VA_ARGS__)
#define VARIABLES(entries, ...) SWITCHMIB_EXPAND(SWITCHMIB_VARIABLES, MODULE, entries, __VA_ARGS__)
#define REGISTER() SWITCHMIB_EXPAND(SWITCHMIB_REGISTER, MODULE)
#define MODULE_INIT SWITCHMIB_JOIN(MODULE, _snmp_init)
#define MODULE_END(entries, ...) MODULE_END_AS(MODULE_INIT, entries, __VA_ARGS__)
#define MODULE_END_AS(init, entries, ...) \
    SWITCHMIB_EXPAND(SWITCHMIB_MODULE_END, MODULE, init, entries, __VA_ARGS__) static_assert(true)
