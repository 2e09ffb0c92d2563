#include "tool/trace.h"

#include "tool/format.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace tool {
namespace {

std::string key_text(const services::ShowRequest& request) {
    if (request.key == nullptr) return "none";
    if (request.key_size == sizeof(std::uint32_t)) {
        std::uint32_t number;
        std::memcpy(&number, request.key, sizeof number);
        return std::to_string(number);
    }
    return hex(static_cast<const std::uint8_t*>(request.key), static_cast<std::size_t>(request.key_size));
}

// A value whose type the request does not tell: text where it can be text, four octets as a number too.
std::string value_text(const services::ShowRequest& request) {
    constexpr std::size_t kShown = 32;
    const auto* octets = static_cast<const std::uint8_t*>(request.result);
    const std::size_t length = std::min(*request.value_length, static_cast<std::size_t>(request.result_size));
    std::string text = fmt::format("{} octet{}", length, length == 1 ? "" : "s");
    if (length == sizeof(std::int32_t)) {
        std::int32_t number;
        std::memcpy(&number, octets, sizeof number);
        text += fmt::format(" {}", number);
    }
    if (length != 0 && printable(octets, length))
        text += ' ' + quoted({reinterpret_cast<const char*>(octets), length});
    else if (length != sizeof(std::int32_t) && length != 0)
        text += ' ' + hex(octets, std::min(length, kShown)) + (length > kShown ? " ..." : "");
    return text;
}

}  // namespace

bool TracingBackend::show(services::ShowRequest& request) {
    // What only few requests have is told only where it is not the usual.
    std::string line = fmt::format("show {} name {} magic {} exact {}", quoted(request.command), request.name,
                                   request.magic, request.exact);
    if (request.key != nullptr) line += " key " + key_text(request);
    if (request.request_class != 2) line += fmt::format(" class {}", request.request_class);
    if (request.index_count != 0) line += fmt::format(" index count {}", request.index_count);

    bool done = false;
    if (const Answer* const answer = scripted(request)) {
        // The value is scripted; which row a GETNEXT moves to stays the backend's business.
        done = !answer->refused;
        if (done) {
            if (request.exact == 0) inner_.show(request);
            const std::size_t length =
                std::min(answer->octets.size(), static_cast<std::size_t>(std::max(request.result_size, 0)));
            std::copy_n(answer->octets.begin(), length, static_cast<std::uint8_t*>(request.result));
            *request.value_length = length;
        }
        line += " (scripted)";
    } else {
        done = inner_.show(request);
    }
    line += done ? " -> " + value_text(request) : " -> refused";
    if (done && request.exact == 0 && request.key != nullptr) line += ", row " + key_text(request);
    sink_(line);
    return done;
}

bool TracingBackend::configure(const services::ConfigRequest& request) {
    std::string line =
        fmt::format("config mode {} {} caller {}", request.mode, quoted(request.command), request.caller);
    bool done = false;
    if (const Answer* const answer = scripted("config")) {
        done = !answer->refused;
        // A line that is scripted as accepted still changes the model, so that later lines find their mode.
        if (done) inner_.configure(request);
        line += " (scripted)";
    } else {
        done = inner_.configure(request);
    }
    sink_(line + (done ? " -> accepted" : " -> refused"));
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

std::string describe(const services::LogLine& line) {
    std::string text = line.text;
    while (text.ends_with('\n')) text.pop_back();
    if (line.channel == "debug") return fmt::format("log debug {}: {}", line.token, quoted(text));
    if (line.channel == "an")
        return fmt::format("log category {} level {}: {}", line.category, line.level, quoted(text));
    if (line.channel == kSwitchChannel) return "switch: " + text;  // escaped already
    return fmt::format("log {}: {}", line.channel, quoted(text));
}

}  // namespace tool
