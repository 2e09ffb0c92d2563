// Makes the traffic between the library and its backend visible, and lets scripted answers stand in for the backend's.
#pragma once

#include "services/services.h"
#include "tool/arguments.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tool {

// One line without its end: a request with its result, or a line that the library logged.
using LineSink = std::function<void(const std::string&)>;

// Passes every request on to another backend and tells what was asked and answered, one line each.
class TracingBackend : public services::Backend {
public:
    TracingBackend(services::Backend& inner, LineSink sink, Script script = {})
        : inner_(inner), sink_(std::move(sink)), script_(std::move(script)) {}

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
    LineSink sink_;
    Script script_;
    std::map<std::string, std::size_t> used_;
};

// Channel of the lines in which the simulated switch says why it refused a request.
inline constexpr const char* kSwitchChannel = "switch";
// Passes such a line on to services().log, so that the library's lines and the switch's come out in their order.
void log_refusal(const std::string& text);

// A logged line as the trace shows it.
std::string describe(const services::LogLine& line);

}  // namespace tool
