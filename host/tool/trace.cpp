#include "tool/trace.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace tool {
namespace {

std::optional<std::vector<std::string>> parts_of(const services::Group* group, const services::ShowRequest& request) {
    if (group == nullptr || group->fields.empty()) return std::nullopt;
    return services::key_parts(group->fields, request.key, static_cast<std::size_t>(request.key_size));
}

std::string key_hex(const services::ShowRequest& request) {
    return hex(static_cast<const std::uint8_t*>(request.key), static_cast<std::size_t>(request.key_size));
}

constexpr std::size_t kShown = 32;  // octets of a record or value

std::string shortened(const std::uint8_t* octets, std::size_t count) {
    return hex(octets, std::min(count, kShown)) + (count > kShown ? " ..." : "");
}

// By its fields; where the key is a record of another layout, its octets.
std::string key_text(const services::Group* group, const services::ShowRequest& request) {
    if (const auto parts = parts_of(group, request)) return services::bracketed(*group, *parts);
    const auto* octets = static_cast<const std::uint8_t*>(request.key);
    const auto size = static_cast<std::size_t>(request.key_size);
    if (group == nullptr && size == sizeof(std::uint32_t)) {  // a library without names: most such keys are a number
        std::uint32_t number;
        std::memcpy(&number, octets, sizeof number);
        return std::to_string(number);
    }
    if (std::all_of(octets, octets + size, [](std::uint8_t octet) { return octet == 0; }))
        return counted(size, "zero octet");
    return counted(size, "octet") + ' ' + shortened(octets, size);
}

Json key_json(const services::Group* group, const services::ShowRequest& request) {
    Json json{{"octets", key_hex(request)}};
    if (const auto parts = parts_of(group, request)) json["index"] = json_index(*group, *parts);
    return json;
}

// A value whose type the request does not give: text where it can be text, four octets as a number too.
struct ShownValue {
    explicit ShownValue(const services::ShowRequest& request)
        : octets(static_cast<const std::uint8_t*>(request.result)),
          length(std::min(*request.value_length, static_cast<std::size_t>(std::max(request.result_size, 0)))) {
        if (length == sizeof(std::int32_t)) std::memcpy(&number.emplace(), octets, length);
        if (length != 0 && printable(octets, length)) text = std::string(octets, octets + length);
    }
    const std::uint8_t* octets;
    std::size_t length;
    std::optional<std::int32_t> number;
    std::optional<std::string> text;
};

std::string value_text(const services::ShowRequest& request) {
    const ShownValue value(request);
    std::string text = counted(value.length, "octet");
    if (value.number) text += fmt::format(" {}", *value.number);
    if (value.text)
        text += ' ' + in_quotes(*value.text);
    else if (!value.number && value.length != 0)
        text += ' ' + shortened(value.octets, value.length);
    return text;
}

Json value_json(const services::ShowRequest& request) {
    const ShownValue value(request);
    Json json{{"length", value.length}, {"octets", hex(value.octets, value.length)}};
    if (value.number) json["integer"] = *value.number;
    if (value.text) json["text"] = *value.text;
    return json;
}

}  // namespace

std::string Event::line() const { return fmt::format("{}", fmt::join(text, " ")); }

bool TracingBackend::show(services::ShowRequest& request) {
    const services::Group* const group = registry_.group(request.name);
    // What only few requests have is shown only where it is not the usual.
    std::string named = fmt::format("name {} magic {} exact {}", request.name, request.magic, request.exact);
    if (request.key != nullptr) named += " key " + key_text(group, request);
    if (request.request_class != 2) named += fmt::format(" class {}", request.request_class);
    if (request.index_count != 0) named += fmt::format(" index count {}", request.index_count);
    Json json{{"event", "show"},
              {"command", request.command},
              {"name", request.name},
              {"magic", request.magic},
              {"exact", request.exact},
              {"class", request.request_class},
              {"size", request.result_size},
              {"index_count", request.index_count}};
    if (request.key != nullptr) json["key"] = key_json(group, request);

    bool done = false;
    const Answer* const answer = scripted(request);
    if (answer != nullptr) {
        // The value is scripted; which row a GETNEXT moves to stays the backend's business.
        done = !answer->refused;
        if (done) {
            if (request.exact == 0) inner_.show(request);
            const std::size_t length =
                std::min(answer->octets.size(), static_cast<std::size_t>(std::max(request.result_size, 0)));
            std::copy_n(answer->octets.begin(), length, static_cast<std::uint8_t*>(request.result));
            *request.value_length = length;
        }
    } else {
        done = inner_.show(request);
    }

    std::string result = answer != nullptr ? "(scripted) -> " : "-> ";
    result += done ? value_text(request) : "refused";
    json["scripted"] = answer != nullptr;
    json["done"] = done;
    if (done) json["value"] = value_json(request);
    if (done && request.exact == 0 && request.key != nullptr) {
        result += ", row " + key_text(group, request);
        json["row"] = key_json(group, request);
    }
    sink_({Event::Kind::show,
           {"show " + in_quotes(request.command), std::move(named), std::move(result)},
           std::move(json)});
    return done;
}

bool TracingBackend::configure(const services::ConfigRequest& request) {
    bool done = false;
    const Answer* const answer = scripted("config");
    if (answer != nullptr) {
        done = !answer->refused;
        // A line that is scripted as accepted still changes the model, so that later lines find their mode.
        if (done) inner_.configure(request);
    } else {
        done = inner_.configure(request);
    }
    sink_({Event::Kind::config,
           {fmt::format("config mode {} {}", request.mode, in_quotes(request.command)), "caller " + request.caller,
            fmt::format("{}-> {}", answer != nullptr ? "(scripted) " : "", done ? "accepted" : "refused")},
           {{"event", "config"},
            {"mode", request.mode},
            {"command", request.command},
            {"caller", request.caller},
            {"scripted", answer != nullptr},
            {"done", done}}});
    return done;
}

const Answer* TracingBackend::scripted(const std::string& name) {
    const auto found = script_.find(name);
    if (found == script_.end()) return nullptr;
    const auto& answers = found->second;
    return &answers[std::min(used_[name]++, answers.size() - 1)];
}

const Answer* TracingBackend::scripted(const services::ShowRequest& request) {
    const Answer* const answer = scripted(fmt::format("{}.{}", request.name, request.magic));
    return answer != nullptr ? answer : scripted(request.name);
}

std::vector<std::string> TracingBackend::unused() const {
    std::vector<std::string> names;
    for (const auto& [name, answers] : script_)
        if (!used_.contains(name)) names.push_back(name);
    return names;
}

void log_refusal(const std::string& text) {
    if (services::services().log) services::services().log({kSwitchChannel, {}, 0, 0, text});
}

Event describe(const services::LogLine& line) {
    std::string text = line.text;
    while (text.ends_with('\n')) text.pop_back();
    Json json{{"event", "log"}, {"channel", line.channel}};
    std::string said;
    if (line.channel == "debug") {
        json["token"] = line.token;
        said = fmt::format("log debug {}: {}", line.token, in_quotes(text));
    } else if (line.channel == "an") {
        json["category"] = line.category;
        json["level"] = line.level;
        said = fmt::format("log category {} level {}: {}", line.category, line.level, in_quotes(text));
    } else if (line.channel == kSwitchChannel) {
        said = "switch: " + text;  // escaped already
    } else {
        said = fmt::format("log {}: {}", line.channel, in_quotes(text));
    }
    json["text"] = text;
    return {Event::Kind::log, {std::move(said)}, std::move(json)};
}

}  // namespace tool
