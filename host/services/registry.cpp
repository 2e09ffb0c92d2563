#include "services/registry.h"

#include "services/library.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace services {
namespace {

bool before(const Object& a, const Object& b) {
    return snmp_oid_compare(a.entry.name, a.entry.namelen, b.entry.name, b.entry.namelen) < 0;
}

// Standard modules by the descr of their registrations.
constexpr std::array<std::pair<std::string_view, std::string_view>, 19> kPublished = {{
    {"dot1dBridge", "BRIDGE-MIB"},
    {"dot3", "EtherLike-MIB"},
    {"icmp", "IP-MIB"},
    {"ieee8021AsTimeSyncMib", "IEEE8021-AS-MIB"},
    {"ieee8021BridgeMib", "IEEE8021-BRIDGE-MIB"},
    {"ieee8021FqtssMib", "IEEE8021-FQTSS-MIB"},
    {"ieee8021QBridgeMib", "IEEE8021-Q-BRIDGE-MIB"},
    {"ieee8021SrpMib", "IEEE8021-SRP-MIB"},
    {"ifMIB", "IF-MIB"},
    {"interfaces", "IF-MIB"},
    {"ip", "IP-MIB"},
    {"ipForward", "IP-FORWARD-MIB"},
    {"ipMcastMIB", "IPMCAST-MIB"},
    {"mgmdStdMIB", "MGMD-STD-MIB"},
    {"pBridgeMIB", "P-BRIDGE-MIB"},
    {"qBridgeMIB", "Q-BRIDGE-MIB"},
    {"snmp", "SNMPv2-MIB"},
    {"system", "SNMPv2-MIB"},
    {"tunnelMIB", "TUNNEL-MIB"},
}};

// A column that is the index itself: the first one of a table whose index is an integer, if it can only be read.
bool is_index(const VariableEntry& first, const GroupInfo& info) {
    constexpr int kIntegerKind = 2;
    return info.fields == 1 && info.kind[0] == kIntegerKind && first.acl == 1 && first.name[first.namelen - 1] == 1 &&
           (first.type == 0x02 || first.type == 0x42);
}

std::string trimmed(std::string_view text) {
    while (text.starts_with(' ')) text.remove_prefix(1);
    while (text.ends_with(' ')) text.remove_suffix(1);
    return std::string(text);
}

// What is wrong with sub-identifiers that `oid_from_numbers` does not take, as a message about the whole text.
std::invalid_argument malformed(std::string_view text, std::string_view numbers) {
    if (numbers.starts_with('.')) numbers.remove_prefix(1);
    while (true) {
        const std::size_t dot = numbers.find('.');
        const std::string_view number = numbers.substr(0, dot);
        if (number.find('.') != std::string_view::npos || !oid_from_numbers(number) || number.empty())
            return std::invalid_argument(
                fmt::format("'{}': '{}' is not a sub-identifier (a number from 0 to 4294967295)", text, number));
        if (dot == std::string_view::npos) break;
        numbers.remove_prefix(dot + 1);
    }
    return std::invalid_argument(fmt::format("'{}' has more than {} sub-identifiers", text, kMaxSubIds));
}

}  // namespace

bool is_under(std::span<const oid> oid, const VariableEntry& entry) {
    return oid.size() >= entry.namelen && std::equal(entry.name, entry.name + entry.namelen, oid.begin());
}

std::string published_module(const std::string& descr) {
    const auto* const found =
        std::ranges::find(kPublished, descr, &std::pair<std::string_view, std::string_view>::first);
    return found != kPublished.end() ? std::string(found->second) : descr;
}

Registry::Registry(const std::vector<Registration>& registrations, const Library* library)
    : modules_(registrations.size()) {
    for (const Registration& module : registrations) {
        const char* const* names = module.names;
        if (names == nullptr && library != nullptr)
            names = static_cast<const char* const*>(library->symbol(module.descr + "_names"));
        if (names == nullptr) has_names_ = false;
        const std::size_t first = objects_.size();
        for (std::size_t i = 0; i < module.count; ++i) {
            Object object{module.descr, names != nullptr ? names[i] : "", module.entries[i], nullptr};
            VariableEntry& entry = object.entry;
            const VariableEntry& relative = module.entries[i];
            std::ranges::copy(module.module_oid, entry.name);
            std::copy_n(relative.name, relative.namelen, entry.name + module.module_oid.size());
            entry.namelen = static_cast<std::uint8_t>(module.module_oid.size() + relative.namelen);
            if (!object.name.empty()) names_.emplace(object.name, Named{module.descr, object.oid()});
            objects_.push_back(std::move(object));
        }
        names_.emplace(module.descr, Named{module.descr, module.module_oid});
        if (const std::string published = published_module(module.descr); published != module.descr)
            names_.emplace(published, Named{module.descr, module.module_oid});
        add_groups(module, first, library);
    }
    std::ranges::stable_sort(objects_, before);
}

void Registry::add_groups(const Registration& module, std::size_t first_object, const Library* library) {
    std::span<const GroupInfo> infos = module.groups;
    if (infos.empty() && library != nullptr) {
        const auto* const first = static_cast<const GroupInfo*>(library->symbol(module.descr + "_groups"));
        const auto* const count = static_cast<const std::size_t*>(library->symbol(module.descr + "_groups_count"));
        if (first != nullptr && count != nullptr) infos = {first, *count};
    }
    for (const GroupInfo& info : infos) {
        const std::size_t begin = first_object + info.first;
        if (info.objects == 0 || begin + info.objects > objects_.size()) continue;
        Group& group = groups_.emplace_back(Group{
            module.descr, info.name, info.fields != 0, info.answers != 0, info.key_size, {}, {}, module.module_oid});
        for (std::size_t field = 0; field < info.fields; ++field)
            group.fields.push_back({info.kind[field], info.octets[field]});
        if (!group.is_table) {  // a table that never answers has no fields either, but every table exports its OID
            std::string symbol = group.name;
            std::ranges::transform(symbol, symbol.begin(), [](unsigned char c) { return std::toupper(c); });
            group.is_table = library != nullptr && library->symbol(symbol + "_oid") != nullptr;
        }
        if (group.is_table) {
            const VariableEntry& column = objects_[begin].entry;
            group.oid.assign(column.name, column.name + column.namelen - 2);
            if (is_index(column, info)) group.index_column = objects_[begin].name;
            names_.emplace(group.name, Named{module.descr, group.oid});
        }
        for (std::size_t at = begin; at < begin + info.objects; ++at) objects_[at].group = &group;
    }
}

void Registry::set_syntaxes(Syntaxes syntaxes) {
    syntaxes_ = std::move(syntaxes);
    for (Object& object : objects_) {
        const auto syntax = syntaxes_.find(object.name);
        object.syntax = syntax != syntaxes_.end() ? &syntax->second : nullptr;
    }
}

Registry::Place Registry::locate(std::span<const oid> oid) const {
    const auto sorts_before = [](std::span<const ::oid> name, const Object& object) {
        return snmp_oid_compare(name.data(), name.size(), object.entry.name, object.entry.namelen) < 0;
    };
    const auto found = std::upper_bound(objects_.begin(), objects_.end(), oid, sorts_before);
    const auto after = static_cast<std::size_t>(found - objects_.begin());
    return {after, after > 0 && is_under(oid, objects_[after - 1].entry) ? &objects_[after - 1] : nullptr};
}

const Group* Registry::group(std::string_view name) const {
    const auto found = std::ranges::find(groups_, name, &Group::name);
    return found != groups_.end() ? &*found : nullptr;
}

std::vector<std::string> Registry::names() const {
    std::vector<std::string> names;
    for (const auto& [name, named] : names_)
        if (names.empty() || names.back() != name) names.push_back(name);
    return names;
}

std::optional<Oid> Registry::parse(std::string_view text, std::string* reason) const {
    try {
        if (text.empty() || text.front() == '.' || (text.front() >= '0' && text.front() <= '9')) {
            const auto oid = oid_from_numbers(text);
            return oid ? oid : throw malformed(text, text);
        }
        const std::size_t colons = text.substr(0, text.find('[')).find("::");  // an address may have them too
        const bool qualified = colons != std::string_view::npos;
        const std::string_view module = qualified ? text.substr(0, colons) : "";
        const std::string_view local = qualified ? text.substr(colons + 2) : text;
        const std::size_t end = std::min(local.find_first_of(".["), local.size());
        Oid oid = named(module, local.substr(0, end));
        if (end == local.size()) return oid;
        std::optional<Oid> index;
        if (local[end] == '[') {
            if (!local.ends_with(']')) throw std::invalid_argument(fmt::format("'{}' has no ']' at its end", text));
            index = bracketed(oid, local.substr(end + 1, local.size() - end - 2));
        } else if (local.substr(end).starts_with("..") || !(index = oid_from_numbers(local.substr(end + 1)))) {
            throw malformed(text, local.substr(end + 1));
        }
        if (oid.size() + index->size() > kMaxSubIds)
            throw std::invalid_argument(fmt::format("'{}' has more than {} sub-identifiers", text, kMaxSubIds));
        oid.insert(oid.end(), index->begin(), index->end());
        return oid;
    } catch (const std::invalid_argument& error) {
        if (reason != nullptr) *reason = error.what();
        return std::nullopt;
    }
}

Oid Registry::named(std::string_view module, std::string_view name) const {
    const auto [begin, end] = names_.equal_range(name);
    if (module.empty() && std::distance(begin, end) > 1) {
        std::string modules;
        for (auto at = begin; at != end; ++at) modules += (at == begin ? "" : " and ") + at->second.module;
        throw std::invalid_argument(fmt::format("'{}' is ambiguous, it is in {}", name, modules));
    }
    for (auto at = begin; at != end; ++at)
        if (module.empty() || at->second.module == module || published_module(at->second.module) == module)
            return at->second.oid;
    if (begin != end) throw std::invalid_argument(fmt::format("'{}' is not in a module '{}'", name, module));
    throw std::invalid_argument(has_names() ? fmt::format("unknown name '{}'", name)
                                            : fmt::format("unknown name '{}': the library was built without names, so "
                                                          "objects go by number",
                                                          name));
}

// The index whose parts are given, with or without the name of the column that it is.
Oid Registry::bracketed(const Oid& column, std::string_view parts) const {
    const Object* const object = find(column);
    if (object == nullptr || object->entry.namelen != column.size() || object->group == nullptr ||
        object->group->fields.empty())
        throw std::invalid_argument(fmt::format("{} is not a column with an index in parts", format(column)));
    const Group& group = *object->group;
    Oid index;
    for (std::size_t field = 0;; ++field) {
        if (field == group.fields.size())
            throw std::invalid_argument(
                fmt::format("the index of {} has {} part{}", group.name, field, field == 1 ? "" : "s"));
        const std::size_t comma = parts.find(',');
        std::string part = trimmed(parts.substr(0, comma));
        if (!group.index_column.empty() && part.starts_with(group.index_column + ' '))
            part = trimmed(part.substr(group.index_column.size()));
        const auto ids = index_from_text(group.fields[field], part);
        if (!ids)
            throw std::invalid_argument(fmt::format("'{}' is not what part {} of the index of {} is: {}", part,
                                                    field + 1, group.name, kind_name(group.fields[field])));
        index.insert(index.end(), ids->begin(), ids->end());
        if (comma == std::string_view::npos) return index;
        parts.remove_prefix(comma + 1);
    }
}

std::string Registry::format(const Oid& oid) const {
    const Object* object = find(oid);
    if (object == nullptr || object->name.empty()) return to_string(oid);
    const std::size_t length = object->entry.namelen;
    if (object->group != nullptr && !object->group->fields.empty() && oid.size() > length)
        if (const auto parts = index_parts(object->group->fields, oid.data() + length, oid.size() - length))
            return object->name + services::bracketed(*object->group, *parts);
    std::string text = object->name;
    for (std::size_t i = length; i < oid.size(); ++i) text += '.' + std::to_string(oid[i]);
    return text;
}

std::string bracketed(const Group& group, const std::vector<std::string>& parts) {
    return fmt::format("[{}{}{}]", group.index_column, group.index_column.empty() ? "" : " ", fmt::join(parts, ", "));
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
