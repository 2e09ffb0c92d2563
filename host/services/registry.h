// The registered variables of all modules as one list in OID order: what an agent's GETNEXT walks over.
#pragma once

#include "services/services.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace services {

class Library;

using Oid = std::vector<oid>;

// One registered object. `entry` is a copy whose name is the full OID, as read methods expect it.
struct Object {
    std::string module;  // descr of its registration
    std::string name;    // "ifDescr"; empty when the library was built without names
    VariableEntry entry;
    Oid oid() const { return Oid(entry.name, entry.name + entry.namelen); }
};

class Registry {
public:
    // Takes what services().registrations holds; names come from the library's `<module>_names`.
    Registry(const std::vector<Registration>& registrations, const Library& library)
        : Registry(registrations, &library) {}
    // The same without names.
    explicit Registry(const std::vector<Registration>& registrations) : Registry(registrations, nullptr) {}

    const std::vector<Object>& objects() const { return objects_; }  // in OID order
    std::size_t modules() const { return modules_; }
    // Index of the first object that sorts behind an OID.
    std::size_t behind(const Oid& oid) const;
    // The object under which an OID lies, null when nothing is registered there.
    const Object* find(const Oid& oid) const;

    // "1.3.6.1.2.1.2.2.1.2.5", ".1.3...", "ifDescr.5", "ifDescr". Modules ("interfaces") and tables ("ifTable", in any
    // letter case) are their roots. None when a name is unknown or a number malformed.
    std::optional<Oid> parse(std::string_view text) const;
    // "ifDescr.5" where the OID lies under a registered object, else the plain numbers.
    std::string format(const Oid& oid) const;

private:
    Registry(const std::vector<Registration>& registrations, const Library* library);
    void add_tables(const Library& library);

    std::vector<Object> objects_;
    std::vector<std::pair<std::string, Oid>> roots_;
    std::size_t modules_ = 0;
};

std::string to_string(const Oid& oid);                       // "1.3.6.1"
std::optional<Oid> oid_from_numbers(std::string_view text);  // "1.3.6.1" or ".1.3.6.1"; none when malformed

}  // namespace services
