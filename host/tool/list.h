// `mibhost list`: what the library registered.
#pragma once

#include "services/registry.h"

#include <string>
#include <vector>

namespace tool {

// Objects by module and group, in the order of their first objects.
struct Module {
    struct Part {
        const services::Group* group;
        std::vector<const services::Object*> objects;
    };
    std::string name;
    services::Oid oid;
    std::vector<Part> parts;
    std::size_t objects = 0;
};
std::vector<Module> modules_of(const services::Registry& registry, const std::vector<const services::Object*>& objects);

// "read-only" or "read-write", as an object is registered.
std::string access(const services::Object& object);
// Whether a SET of this object would find a write method: its read method is asked for rows that may well exist, with a
// backend that refuses everything, and the write-method slot shows it. Replaces services().backend and log meanwhile.
bool writable(const services::Object& object);

// The objects, in OID order, that one of the patterns selects; all of them without a pattern. A pattern is an OID, the
// name of a module or table, a part of an object's or table's name, or such a name with * and ?, in any letter case;
// MODULE:: before it keeps to a module. Throws UsageError, with the pattern, when one selects nothing.
std::vector<const services::Object*> select(const services::Registry& registry,
                                            const std::vector<std::string>& patterns);

enum class ListForm { text, json, markdown, modules, names };

// The objects by module and table; as JSON one object a line; the modules alone; the names alone, one a line, with
// those of their modules and tables.
std::string list(const services::Registry& registry, const std::vector<const services::Object*>& objects,
                 ListForm form);

}  // namespace tool
