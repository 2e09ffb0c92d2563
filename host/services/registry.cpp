#include "services/registry.h"

#include "services/library.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <functional>

namespace services {
namespace {

bool is_under(const Oid& oid, const VariableEntry& entry) {
    return oid.size() >= entry.namelen && std::equal(entry.name, entry.name + entry.namelen, oid.begin());
}

bool before(const Object& a, const Object& b) {
    return snmp_oid_compare(a.entry.name, a.entry.namelen, b.entry.name, b.entry.namelen) < 0;
}

// Letter case apart: tables are exported in upper case.
auto is_called(std::string_view name) {
    return [name](const std::pair<std::string, Oid>& root) {
        return std::ranges::equal(root.first, name, {}, ::tolower, ::tolower);
    };
}

}  // namespace

Registry::Registry(const std::vector<Registration>& registrations, const Library* library)
    : modules_(registrations.size()) {
    for (const Registration& module : registrations) {
        void* const symbol = library != nullptr ? library->symbol(module.descr + "_names") : nullptr;
        const auto* names = static_cast<const char* const*>(symbol);
        for (std::size_t i = 0; i < module.count; ++i) {
            Object object{module.descr, names != nullptr ? names[i] : "", module.entries[i]};
            VariableEntry& entry = object.entry;
            const VariableEntry& relative = module.entries[i];
            std::ranges::copy(module.module_oid, entry.name);
            std::copy_n(relative.name, relative.namelen, entry.name + module.module_oid.size());
            entry.namelen = static_cast<std::uint8_t>(module.module_oid.size() + relative.namelen);
            objects_.push_back(std::move(object));
        }
        roots_.emplace_back(module.descr, module.module_oid);
    }
    std::ranges::stable_sort(objects_, before);
    if (library != nullptr) add_tables(*library);
}

// A table's exported array is its entry's OID and a column slot: the longest one above a registered object.
void Registry::add_tables(const Library& library) {
    for (const std::string& symbol : library.exports()) {
        if (!symbol.ends_with("TABLE_oid") || symbol.starts_with("__")) continue;  // "__": a sanitizer's own
        const auto* ids = static_cast<const ::oid*>(library.symbol(symbol));
        std::size_t entry = 0;
        for (const Object& object : objects_) {
            const std::size_t length = object.entry.namelen - 1u;
            if (length > entry && std::equal(object.entry.name, object.entry.name + length, ids, std::equal_to<>()))
                entry = length;
        }
        if (entry > 1) roots_.emplace_back(symbol.substr(0, symbol.size() - 4), Oid(ids, ids + entry - 1));
    }
}

std::size_t Registry::behind(const Oid& oid) const {
    const auto sorts_before = [](const Oid& name, const Object& object) {
        return snmp_oid_compare(name.data(), name.size(), object.entry.name, object.entry.namelen) < 0;
    };
    const auto found = std::upper_bound(objects_.begin(), objects_.end(), oid, sorts_before);
    return static_cast<std::size_t>(found - objects_.begin());
}

const Object* Registry::find(const Oid& oid) const {
    const std::size_t after = behind(oid);
    return after > 0 && is_under(oid, objects_[after - 1].entry) ? &objects_[after - 1] : nullptr;
}

std::optional<Oid> Registry::parse(std::string_view text) const {
    if (text.empty() || text.front() == '.' || (text.front() >= '0' && text.front() <= '9'))
        return oid_from_numbers(text);
    const std::size_t dot = text.find('.');
    const std::string_view name = text.substr(0, dot);
    Oid oid;
    if (const auto object = std::ranges::find(objects_, name, &Object::name); object != objects_.end())
        oid = object->oid();
    else if (const auto root = std::ranges::find_if(roots_, is_called(name)); root != roots_.end())
        oid = root->second;
    else
        return std::nullopt;
    if (dot == std::string_view::npos) return oid;
    if (dot + 1 < text.size() && text[dot + 1] == '.') return std::nullopt;
    const auto index = oid_from_numbers(text.substr(dot + 1));
    if (!index || oid.size() + index->size() > kMaxSubIds) return std::nullopt;
    oid.insert(oid.end(), index->begin(), index->end());
    return oid;
}

std::string Registry::format(const Oid& oid) const {
    const Object* object = find(oid);
    if (object == nullptr || object->name.empty()) return to_string(oid);
    std::string text = object->name;
    for (std::size_t i = object->entry.namelen; i < oid.size(); ++i) text += '.' + std::to_string(oid[i]);
    return text;
}

std::string to_string(const Oid& oid) {
    std::string text;
    for (const ::oid id : oid) text += (text.empty() ? "" : ".") + std::to_string(id);
    return text;
}

std::optional<Oid> oid_from_numbers(std::string_view text) {
    if (text.starts_with('.')) text.remove_prefix(1);
    Oid oid;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (true) {
        ::oid id = 0;
        const auto [next, error] = std::from_chars(at, end, id);
        if (error != std::errc() || oid.size() == kMaxSubIds) return std::nullopt;
        oid.push_back(id);
        if (next == end) return oid;
        if (*next != '.') return std::nullopt;
        at = next + 1;
    }
}

}  // namespace services
