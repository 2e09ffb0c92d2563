// Requests of a registered object, and what a request needs of the host, made by hand.
#pragma once

#include "instant_host.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

// A registered object as a host calls it: its entry with the full OID, and a request for one of its instances.
struct Target {
    VariableEntry entry;
    std::vector<oid> index;
    oid name[136];
    std::size_t name_length;
    std::size_t value_length = 0;
    WriteMethod* writer = nullptr;

    Target(std::vector<oid> full, std::vector<oid> row) : index(std::move(row)) {
        for (const auto& module : instant::registered()) {
            for (std::size_t i = 0; i < module.count; ++i) {
                std::vector<oid> candidate = module.module_oid;
                const VariableEntry& found = module.entries[i];
                candidate.insert(candidate.end(), found.name, found.name + found.namelen);
                if (candidate != full) continue;
                entry = found;
                entry.namelen = static_cast<std::uint8_t>(full.size());
                std::memcpy(entry.name, full.data(), full.size() * sizeof(oid));
                ask();
                read(1);
                return;
            }
        }
        throw std::runtime_error("not registered");
    }
    void ask() {
        std::memcpy(name, entry.name, entry.namelen * sizeof(oid));
        std::memcpy(name + entry.namelen, index.data(), index.size() * sizeof(oid));
        name_length = entry.namelen + index.size();
    }
    unsigned char* read(int exact) { return entry.findVar(&entry, name, &name_length, exact, &value_length, &writer); }
    int write(int phase, void* value, unsigned char type, std::size_t length) {
        return writer(phase, static_cast<unsigned char*>(value), type, length, nullptr, name, name_length);
    }
};

// Where a key has a field, and the kind that the host converts it by.
struct Field {
    int kind;
    std::size_t offset;
};

// The index of a request into a key.
template <Field... fields>
void parse(const Target& target, int exact, void* key) {
    const oid* at = target.name + target.entry.namelen;
    if (!exact) snmp_oid_compare(target.name, target.name_length, target.entry.name, target.entry.namelen);
    for (const Field& field : std::array{fields...}) {
        const int size = uib_snmp_get_oid_size(at, field.kind);
        reinterpret_cast<uib_to_field*>(uib_oid_convert[std::ptrdiff_t{3} * field.kind])(
            at, size, static_cast<char*>(key) + field.offset);
        at += size;
    }
}

// And a key back into the answered OID.
template <Field... fields>
void build(Target& target, const void* key) {
    std::memcpy(target.name, target.entry.name, target.entry.namelen * sizeof(oid));
    oid* at = target.name + target.entry.namelen;
    for (const Field& field : std::array{fields...}) {
        const void* source = static_cast<const char*>(key) + field.offset;
        const int count = uib_snmp_set_oid_size(at, field.kind, source);
        reinterpret_cast<uib_to_oid*>(uib_oid_convert[3 * field.kind + 1])(at, source, count);
        at += count;
    }
    target.name_length = static_cast<std::size_t>(at - target.name);
}

inline void show(Target& target, const char* command, void* key, int key_size, int exact, const char* name) {
    uib_sh_show_request(2, command, ret_value, sizeof ret_value, &target.value_length, key, key_size, 1, exact, 0, name,
                        1);
}

// Texts and numbers, one after the other, as a command put together by hand has them.
inline char* append(char* at, std::string_view text) { return std::copy(text.begin(), text.end(), at); }
inline char* append(char* at, std::uint32_t number) { return std::to_chars(at, at + 10, number).ptr; }
template <class... Parts>
void join(char* line, Parts... parts) {
    ((line = append(line, parts)), ...);
    *line = '\0';
}

}  // namespace bench
