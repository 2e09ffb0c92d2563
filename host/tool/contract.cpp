#include "tool/contract.h"

#include "services/services.h"
#include "tool/arguments.h"
#include "tool/contract_examples.h"
#include "tool/explain.h"
#include "tool/probe.h"
#include "tool/trace.h"
#include "tool/writes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <utility>

namespace tool {
namespace {

using services::Group;
using services::Object;
using services::Oid;

// Requests without a VRF and a context, and with each.
const struct {
    const char* name;
    services::Context context;
} kSettings[] = {
    {"", {}},
    {"vrf", {"red", std::nullopt, false}},
    {"context", {std::nullopt, "blue", false}},
};

// "1-3,5"
std::string ranges(const std::vector<int>& numbers) {
    std::string text;
    for (std::size_t at = 0; at < numbers.size();) {
        std::size_t last = at;
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) ++last;
        text += fmt::format("{}{}", text.empty() ? "" : ",", numbers[at]);
        if (last != at) text += fmt::format("-{}", numbers[last]);
        at = last + 1;
    }
    return text;
}

std::vector<std::string> words_of(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

Json index_json(const Group& group, const Oid& index) {
    const auto parts = services::index_parts(group.fields, index.data(), index.size());
    return parts ? json_index(group, *parts) : Json(services::to_string(index));
}

// What a traced show request was answered: a number, octets or "refused".
Json answer_json(const Json& show) {
    if (!show["done"].get<bool>()) return "refused";
    const Json& value = show["value"];
    return value.contains("integer") ? value["integer"] : value["octets"];
}

// --- Records in place of keys ----------------------------------------------------------------------------------------

// Answers a GETNEXT with a record.
class RecordingKeys : public services::Backend {
public:
    bool show(services::ShowRequest& request) override {
        if (static_cast<std::size_t>(request.key_size) != record.size()) return false;
        std::ranges::copy(record, static_cast<std::uint8_t*>(request.key));
        *request.value_length = sizeof(std::uint32_t);
        return true;
    }
    bool configure(const services::ConfigRequest&) override { return false; }
    std::optional<std::string> interface_name(std::uint32_t) override { return std::nullopt; }

    std::vector<std::uint8_t> record;
};

// The layout of a record that is no key: which part of the index each octet gets into.
class RecordLayout {
public:
    RecordLayout(const Object& object, std::size_t size) : object_(object), size_(size) {}

    Json fields() {
        services::Services& host = services::services();
        services::Backend* const before = std::exchange(host.backend, &backend_);
        const Parts none = parts_with({});
        // What makes an address of a part is its type.
        for (std::size_t at = 0; at + kNumber <= size_; at += kNumber) {
            const Parts parts = parts_with({{at, 1}});
            for (std::size_t part = 0; part < parts.size() && parts.size() == none.size(); ++part)
                if (none[part].starts_with("none") && !parts[part].starts_with("none")) types_.emplace_back(at, part);
        }
        for (const auto& [at, part] : types_) add(at, kNumber, part, "type", "");
        for (const std::uint8_t family : {std::uint8_t{1}, std::uint8_t{2}}) add_octets(family);
        host.backend = before;
        std::ranges::stable_sort(found_, {}, &Found::offset);
        Json json = Json::array();
        for (const Found& found : found_) {
            Json field{{"part", found.part + 1}, {"is", found.is}, {"offset", found.offset}, {"octets", found.octets}};
            if (!found.family.empty()) field["family"] = found.family;
            json.push_back(field);
        }
        return json;
    }

private:
    static constexpr std::size_t kNumber = sizeof(std::uint32_t);
    using Parts = std::vector<std::string>;
    struct Found {
        std::size_t offset, octets, part;
        std::string is, family;
    };

    // The parts of the answered index for a record of zeros and these octets.
    Parts parts_with(const std::vector<std::pair<std::size_t, std::uint8_t>>& octets) {
        backend_.record.assign(size_, 0);
        for (const auto& [at, octet] : octets) backend_.record[at] = octet;
        const Oid name = call(object_, {}, 0).name;
        const std::size_t length = object_.entry.namelen;
        if (name.size() < length) return {};
        return services::index_parts(object_.group->fields, name.data() + length, name.size() - length)
            .value_or(Parts{});
    }

    void add(std::size_t at, std::size_t octets, std::size_t part, const char* is, const char* family) {
        for (Found& found : found_) {
            const bool same = found.part == part && found.is == is;
            if (same && found.offset <= at && at < found.offset + found.octets) return found.family.clear();
            if (same && found.family == family && found.offset + found.octets == at) {
                found.octets += octets;
                return;
            }
        }
        found_.push_back({at, octets, part, is, family});
    }

    void add_octets(std::uint8_t family) {
        constexpr std::uint8_t kOctet = 9;
        std::vector<std::pair<std::size_t, std::uint8_t>> octets;
        for (const auto& [at, part] : types_) octets.emplace_back(at, family);
        const Parts base = parts_with(octets);
        for (std::size_t at = 0; at < size_; ++at) {
            if (std::ranges::any_of(types_,
                                    [&](const auto& type) { return at >= type.first && at < type.first + kNumber; }))
                continue;
            octets.emplace_back(at, kOctet);
            const Parts parts = parts_with(octets);
            octets.pop_back();
            for (std::size_t part = 0; part < parts.size() && parts.size() == base.size(); ++part) {
                if (parts[part] == base[part]) continue;
                const auto slash = [](const std::string& text) { return text.substr(0, text.find('/')); };
                const bool is_length =
                    parts[part].find('/') != std::string::npos && slash(parts[part]) == slash(base[part]);
                const bool is_integer = parts[part].find_first_of(".:") == std::string::npos;
                add(at, 1, part,
                    is_length    ? "prefix length"
                    : is_integer ? "integer"
                                 : "address",
                    is_length || is_integer ? ""
                    : family == 1           ? "IPv4"
                                            : "IPv6");
            }
        }
    }

    const Object& object_;
    std::size_t size_;
    RecordingKeys backend_;
    std::vector<std::pair<std::size_t, std::size_t>> types_;  // offset and part
    std::vector<Found> found_;
};

// --- The contract ----------------------------------------------------------------------------------------------------

class Contract {
public:
    Contract(const services::Registry& registry, const services::Library& library)
        : registry_(registry), library_(library), probe_(registry, library) {}

    std::vector<Json> of(const std::vector<Module>& modules) {
        for (const Module& module : modules) {
            Json& entry = add("module", module.name);
            const std::string published = services::published_module(module.name);
            if (published != module.name) entry["published"] = published;
            entry["oid"] = portable(module.oid);
            entry["objects"] = module.objects;
            for (const Module::Part& part : module.parts) add_group(*part.group, part.objects);
            for (const Example& example : kExamples) add_example(module, example);
        }
        return std::move(entries_);
    }

private:
    // Entries of the same group.
    struct Request {
        Json json;
        std::vector<int> columns;
        std::vector<int> exact;
    };

    Json& add(const char* kind, const std::string& name) {
        return entries_.emplace_back(Json{{"entry", kind}, {"name", name}});
    }

    void add_group(const Group& group, const std::vector<const Object*>& objects) {
        rows_ = rows_of(group, *objects.front());
        requests_.clear();
        std::map<const Object*, std::string> answers;
        for (const Object* const object : objects) answers[object] = add_reads(*object);

        Json& entry = add(group.is_table ? "table" : "scalars", group.name);
        entry["module"] = group.module;
        if (group.is_table) entry["oid"] = portable(group.oid);
        entry["answers"] = group.answers;
        if (!group.fields.empty()) {
            const auto asking =
                std::ranges::find_if(objects, [&](const Object* object) { return answers[object] == "backend"; });
            entry["key"] = key_json(group, asking != objects.end() ? **asking : *objects.front());
        }
        for (const Request& request : requests_) {
            Json& asked = add("request", group.name);
            asked.update(request.json);
            asked["exact"] = request.exact;
            asked["columns"] = ranges(request.columns);
        }
        for (const Object* const object : objects) {
            const Oid oid = object->oid();
            Json& its = add("object", object->name);
            its["group"] = group.name;
            its["oid"] = portable(oid);
            its["magic"] = object->entry.magic;
            its["type"] = type_name(object->entry.type);
            its["access"] = access(*object);
            its["answers"] = answers[object];
            Written written = writes(probe_, *object, rows_);
            if (!written.takes.is_null()) its["takes"] = written.takes;
            entries_.insert(entries_.end(), written.entries.begin(), written.entries.end());
        }
    }

    // The rows that a group is shown with.
    std::vector<Oid> rows_of(const Group& group, const Object& object) const {
        if (!group.is_table) return {{0}};
        std::vector<Oid> rows;
        const auto add = [&](Oid row) {
            if (std::ranges::find(rows, row) == rows.end()) rows.push_back(std::move(row));
        };
        for (const ExampleRow& example : kExampleRows) {
            if (group.name != example.table) continue;
            const Oid oid = parse_oid(registry_, fmt::format("{}[{}]", object.name, example.index));
            add({oid.begin() + object.entry.namelen, oid.end()});
        }
        constexpr oid kFirstPort = 5121;
        if (rows.empty())
            for (const bool ipv6 : {false, true}) add(sample_index(group, kFirstPort, 1, ipv6));
        return rows;
    }

    // The requests of one object, merged into those of its group. Says who answers the object.
    std::string add_reads(const Object& object) {
        bool asks = false, by_itself = false;
        for (const auto& setting : kSettings) {
            services::services().context = setting.context;
            const auto read = [&](const char* what, const Oid& index, int exact) {
                std::vector<Json> asked;
                TracingBackend tracing(probe_.backend, registry_, [&](const Event& event) {
                    if (event.kind == Event::Kind::show) asked.push_back(event.json);
                });
                services::services().backend = &tracing;
                probe_.backend.record = {};
                const bool answered = call(object, index, exact).answered;
                services::services().backend = &probe_.backend;
                asks = asks || !asked.empty();
                by_itself = by_itself || (answered && asked.empty());
                for (const Json& json : asked) merge(object, what, index, setting.name, json);
            };
            if (!object.group->is_table) {
                read("scalar", {0}, 1);
                continue;
            }
            read("first row", {}, 0);
            for (const Oid& row : rows_) {
                read("row", row, 1);
                read("row", row, 0);
            }
        }
        services::services().context = {};
        return asks ? "backend" : by_itself ? "library" : "never";
    }

    void merge(const Object& object, const char* what, const Oid& index, const char* context, const Json& asked) {
        Json json{{"for", what}};
        if (what == std::string("row")) json["row"] = index_json(*object.group, index);
        json["command"] = asked["command"];
        json["request"] = asked["name"];
        json["class"] = asked["class"];
        json["size"] = asked["size"];
        if (asked["index_count"] != 0) json["index_count"] = asked["index_count"];
        if (asked.contains("key")) json["key"] = asked["key"]["octets"];
        const int magic = asked["magic"];
        const int exact = asked["exact"];
        const auto same = [&](const Request& request, const Json& wanted) { return request.json == wanted; };
        if (*context != '\0') {  // shown only where it makes a difference
            for (const Request& request : requests_)
                if (same(request, json)) return;
            json[context] = *context == 'v' ? "red" : "blue";
        }
        auto found = std::ranges::find_if(requests_, [&](const Request& request) { return same(request, json); });
        if (found == requests_.end()) found = requests_.insert(found, {json, {}, {}});
        for (auto& [numbers, number] : {std::pair(&found->columns, magic), std::pair(&found->exact, exact)})
            if (std::ranges::find(*numbers, number) == numbers->end()) numbers->push_back(number);
    }

    Json key_json(const Group& group, const Object& object) const {
        Json key{{"octets", group.key_size}};
        const std::vector<std::size_t> offsets = services::key_offsets(group.fields);
        Json fields = Json::array();
        for (std::size_t i = 0; i < group.fields.size(); ++i) {
            const services::IndexField& field = group.fields[i];
            fields.push_back({{"is", services::kind_name(field)},
                              {"kind", field.kind},
                              {"offset", offsets[i]},
                              {"octets", field.octets}});
        }
        const std::size_t size = group.key_size;
        const bool is_key = std::ranges::none_of(requests_, [&](const Request& request) {
            if (!request.json.contains("row") || !request.json.contains("key")) return false;
            const std::vector<std::uint8_t> octets = octets_of(request.json["key"]);
            const auto parts = services::key_parts(group.fields, octets.data(), octets.size());
            return !parts || tool::json_index(group, *parts) != request.json["row"];
        });
        if (is_key)
            key["fields"] = fields;
        else
            key["record"] = RecordLayout(object, size).fields();
        return key;
    }

    static std::vector<std::uint8_t> octets_of(const std::string& hex) {
        std::vector<std::uint8_t> octets;
        for (std::size_t at = 0; at + 1 < hex.size(); at += 3)
            octets.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(at, 2), nullptr, 16)));
        return octets;
    }

    // When its first varbind is of one of the module's objects.
    void add_example(const Module& module, const Example& example) {
        const Explained request = parse_explained(registry_, words_of(example.words));
        const Object* const first = registry_.find(request.varbinds.front().name);
        if (std::ranges::none_of(module.parts, [&](const Module::Part& part) {
                return std::ranges::find(part.objects, first) != part.objects.end();
            }))
            return;
        library_.reset();
        probe_.backend.situation.clear();
        agent::Engine engine(registry_);
        const Explanation explanation = explain(request, engine, registry_, probe_.backend);
        services::services().backend = &probe_.backend;
        Json& entry = add("example", example.title);
        entry["request"] = example.words;
        entry["error"] = status_name(explanation.result.status);
        entry["asks"] = Json::array();
        entry["sends"] = Json::array();
        for (const Explanation::Step& step : explanation.steps)
            for (const Event& event : step.events) {
                const Json& json = event.json;
                if (event.kind == Event::Kind::show && step.phase != agent::kRead)
                    entry["asks"].push_back({{"command", json["command"]},
                                             {"request", json["name"]},
                                             {"magic", json["magic"]},
                                             {"answer", answer_json(json)}});
                if (event.kind == Event::Kind::config)
                    entry["sends"].push_back(line_json({step.phase, json["mode"], json["command"], json["caller"]}));
            }
    }

    const services::Registry& registry_;
    const services::Library& library_;
    Probe probe_;
    std::vector<Json> entries_;
    std::vector<Oid> rows_;
    std::vector<Request> requests_;
};

}  // namespace

std::vector<Json> contract(const services::Registry& registry, const services::Library& library,
                           const std::vector<const services::Object*>& objects) {
    std::vector<const Object*> of_library;
    for (const Object* const object : objects)
        if (object->group != nullptr && library.symbol(object->module + "_variables") != nullptr)
            of_library.push_back(object);
    return Contract(registry, library).of(modules_of(registry, of_library));
}

}  // namespace tool
