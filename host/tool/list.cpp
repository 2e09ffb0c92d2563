#include "tool/list.h"

#include "services/services.h"
#include "tool/format.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
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

struct Row {
    std::string oid, name, type, access;
    bool writable;
};

struct Module {
    std::string name, oid;
    std::vector<Row> rows;
};

// In the order of their first objects.
std::vector<Module> modules_of(const services::Registry& registry) {
    std::vector<Module> modules;
    for (const services::Object& object : registry.objects()) {
        auto module = std::ranges::find(modules, object.module, &Module::name);
        if (module == modules.end()) {
            const auto root = registry.parse(object.module).value_or(services::Oid{});
            module = modules.insert(module, {object.module, services::to_string(root), {}});
        }
        module->rows.push_back({services::to_string(object.oid()), object.name.empty() ? "-" : object.name,
                                type_name(object.entry.type), object.entry.acl == 2 ? "read-write" : "read-only",
                                writable(object)});
    }
    return modules;
}

std::string as_text(const std::vector<Module>& modules) {
    std::string text;
    for (const Module& module : modules) {
        std::size_t oid_width = 0;
        std::size_t name_width = 0;
        for (const Row& row : module.rows) {
            oid_width = std::max(oid_width, row.oid.size());
            name_width = std::max(name_width, row.name.size());
        }
        text += fmt::format("{}{} {} ({} objects)\n", text.empty() ? "" : "\n", module.name, module.oid,
                            module.rows.size());
        for (const Row& row : module.rows)
            text += fmt::format("  {:<{}}  {:<{}}  {:<10}  {:<10}  {}\n", row.oid, oid_width, row.name, name_width,
                                row.type, row.access, row.writable ? "writable" : "not writable");
    }
    return text;
}

std::string as_json(const std::vector<Module>& modules) {
    auto document = nlohmann::ordered_json::array();
    for (const Module& module : modules) {
        auto objects = nlohmann::ordered_json::array();
        for (const Row& row : module.rows)
            objects.push_back({{"oid", row.oid},
                               {"name", row.name},
                               {"type", row.type},
                               {"access", row.access},
                               {"writable", row.writable}});
        document.push_back({{"module", module.name}, {"oid", module.oid}, {"objects", std::move(objects)}});
    }
    return document.dump(2) + "\n";
}

std::string as_markdown(const std::vector<Module>& modules) {
    std::string text;
    for (const Module& module : modules) {
        text += fmt::format(
            "{}## {}\n\n`{}`, {} objects\n\n| OID | Name | Type | Access | Writable |\n|---|---|---|---|---|\n",
            text.empty() ? "" : "\n", module.name, module.oid, module.rows.size());
        for (const Row& row : module.rows)
            text += fmt::format("| {} | {} | {} | {} | {} |\n", row.oid, row.name, row.type, row.access,
                                row.writable ? "yes" : "no");
    }
    return text;
}

}  // namespace

bool writable(const services::Object& object) {
    // Scalars answer to .0, tables to the bare column (no row named); the rest is for read methods that look at the
    // index before they hand anything out: the first port, VLAN interface and port index.
    static constexpr std::array<std::pair<std::size_t, oid>, 5> kIndexes = {
        {{0, 0}, {1, 0}, {1, 1}, {1, 1025}, {1, 5121}}};

    RefusingBackend refusing;
    services::Services& host = services::services();
    services::Backend* const backend = std::exchange(host.backend, &refusing);
    auto log = std::exchange(host.log, nullptr);
    bool found = false;
    for (const auto& [count, index] : kIndexes) {
        std::array<oid, services::kNameRoom> name{};
        std::size_t length = object.entry.namelen;
        std::copy_n(object.entry.name, length, name.begin());
        if (count != 0) name[length++] = index;
        std::size_t value_length = 0;
        WriteMethod* write_method = nullptr;
        object.entry.findVar(&object.entry, name.data(), &length, 1, &value_length, &write_method);
        found = found || write_method != nullptr;
    }
    host.backend = backend;
    host.log = std::move(log);
    return found;
}

std::string list(const services::Registry& registry, const std::string& format) {
    const std::vector<Module> modules = modules_of(registry);
    return format == "json" ? as_json(modules) : format == "markdown" ? as_markdown(modules) : as_text(modules);
}

}  // namespace tool
