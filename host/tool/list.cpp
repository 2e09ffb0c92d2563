#include "tool/list.h"

#include "services/services.h"
#include "tool/arguments.h"
#include "tool/format.h"
#include "tool/probe.h"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace tool {
namespace {

// Refuses every request, but knows every interface: some read methods look at the name before they go on.
class RefusingBackend : public services::Backend {
public:
    bool show(services::ShowRequest&) override { return false; }
    bool configure(const services::ConfigRequest&) override { return false; }
    std::optional<std::string> interface_name(std::uint32_t) override { return "port1"; }
};

// --- Rows that may exist ---------------------------------------------------------------------------------------------

std::vector<services::Oid> sample_indexes(const services::Object& object) {
    constexpr oid kFirstVlanInterface = 1025;
    constexpr oid kFirstPort = 5121;
    const services::Group* const group = object.group;
    if (group != nullptr && !group->is_table) return {{0}};
    std::vector<services::Oid> indexes{{}};  // no row named
    if (group == nullptr) indexes.push_back({0});
    for (const oid first : {oid{1}, kFirstVlanInterface, kFirstPort}) {
        if (group == nullptr) {
            indexes.push_back({first});
            continue;
        }
        indexes.push_back(sample_index(*group, first, 1));
        indexes.push_back(sample_index(*group, first, first));
    }
    return indexes;
}

// --- Selection -------------------------------------------------------------------------------------------------------

bool same(const std::string& a, const std::string& b) { return fnmatch(a.c_str(), b.c_str(), FNM_CASEFOLD) == 0; }

class Pattern {
public:
    Pattern(const services::Registry& registry, const std::string& text) : name_(text) {
        if (const auto oid = services::oid_from_numbers(text)) {
            oid_ = *oid;
            return;
        }
        if (const std::size_t colons = text.find("::"); colons != std::string::npos) {
            module_ = text.substr(0, colons);
            name_ = text.substr(colons + 2);
        }
        const bool whole = std::ranges::any_of(registry.objects(), [&](const services::Object& object) {
            return same(name_, object.module) || same(name_, services::published_module(object.module)) ||
                   (object.group != nullptr && same(name_, object.group->name));
        });
        if (!whole && name_.find_first_of("*?[") == std::string::npos) name_ = '*' + name_ + '*';
        by_module_ = whole;
    }

    bool selects(const services::Object& object) const {
        if (!oid_.empty()) {
            const services::Oid oid = object.oid();
            return oid.size() >= oid_.size() && std::equal(oid_.begin(), oid_.end(), oid.begin());
        }
        const std::string published = services::published_module(object.module);
        if (!module_.empty() && !same(module_, object.module) && !same(module_, published)) return false;
        if (by_module_ && (same(name_, object.module) || same(name_, published))) return true;
        return same(name_, object.name) || (object.group != nullptr && same(name_, object.group->name));
    }

private:
    services::Oid oid_;
    std::string module_, name_;
    bool by_module_ = false;  // the pattern is a module or table as a whole
};

// --- Output ----------------------------------------------------------------------------------------------------------

constexpr std::size_t kHeadingWidth = 80;

// The access that the object is registered with, and whether it is so.
std::string true_access(const services::Object& object) {
    const bool can_write = writable(object);
    if (object.entry.acl == 2 && !can_write) return "read-write, no writer";
    if (object.entry.acl != 2 && can_write) return "read-only, has a writer";
    return access(object);
}

// "IF-MIB, " where the module is published under another name.
std::string published(const std::string& module) {
    const std::string name = services::published_module(module);
    return name == module ? "" : name + ", ";
}

// The name of a group and its index, on a second line where both are long.
std::string heading(const services::Group& group) {
    std::string text = group.name + (group.is_table ? "" : ", scalars");
    std::string index;
    for (std::size_t i = 0; i < group.fields.size(); ++i)
        index += (i == 0 ? "index: " : ", ") + services::kind_name(group.fields[i]);
    if (!group.index_column.empty()) index += ' ' + group.index_column;
    if (!index.empty()) text += (text.size() + index.size() > kHeadingWidth ? ",\n    " : ", ") + index;
    return text + (group.answers ? "" : ", never answers");
}

std::string relative(const Module& module, const services::Object& object) {
    const services::Oid oid = object.oid();
    return '.' + services::to_string({oid.begin() + static_cast<std::ptrdiff_t>(module.oid.size()), oid.end()});
}

std::string module_line(const Module& module) {
    return fmt::format("{} {} ({}{})\n", module.name, services::to_string(module.oid), published(module.name),
                       counted(module.objects, "object"));
}

std::string name_of(const services::Object& object) { return object.name.empty() ? "-" : object.name; }

std::string as_text(const std::vector<Module>& modules) {
    std::string text;
    for (const Module& module : modules) {
        text += (text.empty() ? "" : "\n") + module_line(module);
        for (const Module::Part& part : module.parts) {
            std::size_t oid_width = 0;
            std::size_t name_width = 0;
            for (const services::Object* const object : part.objects) {
                oid_width = std::max(oid_width, relative(module, *object).size());
                name_width = std::max(name_width, name_of(*object).size());
            }
            if (part.group != nullptr) text += fmt::format("  {}\n", heading(*part.group));
            for (const services::Object* const object : part.objects)
                text += fmt::format("    {:<{}}  {:<{}}  {:<9}  {}\n", relative(module, *object), oid_width,
                                    name_of(*object), name_width, type_name(object->entry.type), true_access(*object));
        }
    }
    return text;
}

std::string as_json(const std::vector<const services::Object*>& objects) {
    std::string text;
    for (const services::Object* const object : objects) {
        Json json{{"oid", services::to_string(object->oid())}};
        json.update(json_object(*object));
        json["type"] = type_name(object->entry.type);
        json["access"] = access(*object);
        json["writable"] = writable(*object);
        if (object->group != nullptr) json["answers"] = object->group->answers;
        text += json_line(json) + '\n';
    }
    return text;
}

std::string as_markdown(const std::vector<Module>& modules) {
    std::string text;
    for (const Module& module : modules) {
        text += fmt::format("{}## {}\n\n`{}`, {}{}\n", text.empty() ? "" : "\n", module.name,
                            services::to_string(module.oid), published(module.name), counted(module.objects, "object"));
        for (const Module::Part& part : module.parts) {
            if (part.group != nullptr) text += fmt::format("\n### {}\n", heading(*part.group));
            text += "\n| OID | Name | Type | Access | Writable |\n|---|---|---|---|---|\n";
            for (const services::Object* const object : part.objects)
                text += fmt::format("| {} | {} | {} | {} | {} |\n", relative(module, *object), name_of(*object),
                                    type_name(object->entry.type), access(*object), writable(*object) ? "yes" : "no");
        }
    }
    return text;
}

std::string as_names(const std::vector<const services::Object*>& objects) {
    std::set<std::string> names;
    for (const services::Object* const object : objects) {
        names.insert({object->module, services::published_module(object->module), name_of(*object)});
        if (object->group != nullptr && object->group->is_table) names.insert(object->group->name);
    }
    names.erase("-");
    return fmt::format("{}\n", fmt::join(names, "\n"));
}

}  // namespace

std::vector<Module> modules_of(const services::Registry& registry,
                               const std::vector<const services::Object*>& objects) {
    std::vector<Module> modules;
    for (const services::Object* const object : objects) {
        auto module = std::ranges::find(modules, object->module, &Module::name);
        if (module == modules.end())
            module =
                modules.insert(module, {object->module, registry.parse(object->module).value_or(services::Oid{}), {}});
        auto part = std::ranges::find(module->parts, object->group, &Module::Part::group);
        if (part == module->parts.end()) part = module->parts.insert(part, {object->group, {}});
        part->objects.push_back(object);
        ++module->objects;
    }
    return modules;
}

std::string access(const services::Object& object) { return object.entry.acl == 2 ? "read-write" : "read-only"; }

bool writable(const services::Object& object) {
    RefusingBackend refusing;
    services::Services& host = services::services();
    services::Backend* const backend = std::exchange(host.backend, &refusing);
    auto log = std::exchange(host.log, nullptr);
    bool found = false;
    for (const services::Oid& index : sample_indexes(object))
        found = found || call(object, index, 1).write_method != nullptr;
    host.backend = backend;
    host.log = std::move(log);
    return found;
}

std::vector<const services::Object*> select(const services::Registry& registry,
                                            const std::vector<std::string>& patterns) {
    std::vector<const services::Object*> selected;
    std::vector<Pattern> selections;
    for (const std::string& text : patterns) {
        selections.emplace_back(registry, text);
        if (std::ranges::none_of(registry.objects(),
                                 [&](const auto& object) { return selections.back().selects(object); }))
            throw UsageError(
                fmt::format("no object, table or module is called '{}'{}", text, suggestion(registry.names(), text)));
    }
    for (const services::Object& object : registry.objects())
        if (selections.empty() ||
            std::ranges::any_of(selections, [&](const Pattern& pattern) { return pattern.selects(object); }))
            selected.push_back(&object);
    return selected;
}

std::string list(const services::Registry& registry, const std::vector<const services::Object*>& objects,
                 ListForm form) {
    if (form == ListForm::json) return as_json(objects);
    if (form == ListForm::names) return as_names(objects);
    const std::vector<Module> modules = modules_of(registry, objects);
    if (form == ListForm::markdown) return as_markdown(modules);
    if (form == ListForm::text) return as_text(modules);
    std::string text;
    for (const Module& module : modules) text += module_line(module);
    return text;
}

}  // namespace tool
