// Shows the traffic between the library and its backend, and gives scripted answers in place of the backend's.
#pragma once

#include "services/services.h"
#include "tool/arguments.h"
#include "tool/format.h"

#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tool {

// One request with its result, or one line that the library or the switch logged.
struct Event {
    enum class Kind { show, config, log } kind;
    // Texts that make the line, in pieces that need not be broken further.
    std::vector<std::string> text;
    Json json;

    std::string line() const;
};
using EventSink = std::function<void(const Event&)>;

// Passes every request on to another backend and makes an event of it.
class TracingBackend : public services::Backend {
public:
    TracingBackend(services::Backend& inner, const services::Registry& registry, EventSink sink, Script script = {})
        : inner_(inner), registry_(registry), sink_(std::move(sink)), script_(std::move(script)) {}

    bool show(services::ShowRequest& request) override;
    bool configure(const services::ConfigRequest& request) override;
    std::optional<std::string> interface_name(std::uint32_t ifindex) override { return inner_.interface_name(ifindex); }

    // Names in the script that no request has asked for so far.
    std::vector<std::string> unused() const;

private:
    // The next scripted answer under a name (`NAME.MAGIC` before `NAME`), the last one again when they are used up;
    // null where there is none.
    const Answer* scripted(const std::string& name);
    const Answer* scripted(const services::ShowRequest& request);

    services::Backend& inner_;
    const services::Registry& registry_;
    EventSink sink_;
    Script script_;
    std::map<std::string, std::size_t> used_;
};

// Channel of the lines in which the simulated switch says why it refused a request.
inline constexpr const char* kSwitchChannel = "switch";
// Passes such a line on to services().log, so that the library's lines and the switch's come out in their order.
void log_refusal(const std::string& text);

// A logged line as an event.
Event describe(const services::LogLine& line);

}  // namespace tool
