// The registered variables of all modules as one list in OID order: what an agent's GETNEXT walks over.
#pragma once

#include "services/index_text.h"
#include "services/services.h"
#include "services/syntax.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace services {

class Library;

// A scalar group or a table, as the library's `<module>_groups` describe it.
struct Group {
    std::string module;  // descr of its registration
    std::string name;    // as show requests name it: "swPortTable", "switchPortMIBGlobals"
    bool is_table;
    bool answers;          // false: registered, and never answers
    std::size_t key_size;  // octets of the record that a show request gets
    std::vector<IndexField> fields;
    std::string index_column;  // the column that is the index, where a single integer is; else empty
    Oid oid;                   // a table's OID (the entry's without its last sub-identifier); the scalars' module's
};

// One registered object. `entry` is a copy whose name is the full OID, as read methods expect it.
struct Object {
    std::string module;  // descr of its registration
    std::string name;    // "ifDescr"; empty when the library was built without names
    VariableEntry entry;
    const Group* group;              // null when the library was built without names
    const Syntax* syntax = nullptr;  // of its values; null where no text says it
    Oid oid() const { return Oid(entry.name, entry.name + entry.namelen); }
};

// The name of the published module that a registration serves, "IF-MIB" for "interfaces"; descr itself for a private
// module.
std::string published_module(const std::string& descr);

// Whether an OID is an entry's full name or is below it.
bool is_under(std::span<const oid> oid, const VariableEntry& entry);

class Registry {
public:
    // Takes what services().registrations holds; names and groups that a registration lacks come from the library's
    // `<module>_names` and `<module>_groups`.
    Registry(const std::vector<Registration>& registrations, const Library& library)
        : Registry(registrations, &library) {}
    // The same without a library.
    explicit Registry(const std::vector<Registration>& registrations) : Registry(registrations, nullptr) {}
    Registry(const Registry&) = delete;
    Registry(Registry&&) = default;

    const std::vector<Object>& objects() const { return objects_; }  // in OID order
    const std::deque<Group>& groups() const { return groups_; }      // in the order of registration
    std::size_t modules() const { return modules_; }
    // False when the library was built without names: objects go by number then, and there are no groups.
    bool has_names() const { return has_names_; }
    // What texts say of the objects, by name.
    void set_syntaxes(Syntaxes syntaxes);
    // Where an OID is: the index of the first object that sorts after it, and the object that it is in, null when
    // nothing is registered there.
    struct Place {
        std::size_t after;
        const Object* within;
    };
    Place locate(std::span<const oid> oid) const;
    const Object* find(const Oid& oid) const { return locate(oid).within; }

    // The scalar group or table that show requests name so, null when there is none.
    const Group* group(std::string_view name) const;

    // An OID by number ("1.3.6.1.2.1.2", ".1.3...") or name ("ifDescr.5", "ifDescr[5]", "IF-MIB::ifDescr"). Modules
    // ("interfaces", "BRIDGE-MIB") and tables ("ifTable") are their roots. The parts of an index in brackets are those that `format`
    // writes; the last ones may be left out. None when the text is no OID; `reason`, when given, then says why.
    std::optional<Oid> parse(std::string_view text, std::string* reason = nullptr) const;
    // Whether an object, table or module is called so, and all such names.
    bool knows(std::string_view name) const { return names_.find(name) != names_.end(); }
    std::vector<std::string> names() const;
    // "ifDescr[ifIndex 5]" where the OID is an instance of a registered object, "ifDescr.5.1" where its index is not
    // one of the table, else the plain numbers.
    std::string format(const Oid& oid) const;

private:
    Registry(const std::vector<Registration>& registrations, const Library* library);
    void add_groups(const Registration& module, std::size_t first_object, const Library* library);
    Oid named(std::string_view module, std::string_view name) const;
    Oid bracketed(const Oid& column, std::string_view parts) const;

    struct Named {
        std::string module;
        Oid oid;
    };
    std::vector<Object> objects_;
    std::deque<Group> groups_;  // objects point into it, and into
    Syntaxes syntaxes_;
    std::multimap<std::string, Named, std::less<>> names_;
    std::size_t modules_ = 0;
    bool has_names_ = true;
};

// "[ifIndex 5121]", "[10, 10.0.0.1]"
std::string bracketed(const Group& group, const std::vector<std::string>& parts);

std::string to_string(const Oid& oid);                       // "1.3.6.1"
std::optional<Oid> oid_from_numbers(std::string_view text);  // "1.3.6.1" or ".1.3.6.1"; none when malformed

}  // namespace services
