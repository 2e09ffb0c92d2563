// The groups of the agent itself: `system` with sysORTable, and `snmp`.
#pragma once

#include "agent/responder.h"
#include "services/services.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace agent {

class StandardGroups {
public:
    using Clock = std::function<std::chrono::milliseconds()>;

    // sysORTable has a row for each of the modules. There is one agent in a process, so there is one such object: its
    // read and write methods answer from the last one constructed.
    explicit StandardGroups(const std::vector<services::Registration>& modules, Clock up_time = {});
    ~StandardGroups();
    StandardGroups(const StandardGroups&) = delete;
    StandardGroups& operator=(const StandardGroups&) = delete;

    // Both groups as modules register theirs, for the registry.
    static std::vector<services::Registration> registrations();

    // What `snmp` shows; null: zeros.
    const Counters* counters = nullptr;
    Clock up_time;  // time since the start; none: 0

private:
    struct Methods;

    // A text that managers may set. It is kept as long as this object.
    struct Text {
        std::string value;
        std::optional<std::string> before{};  // while a SET may still be undone

        int write(int phase, std::uint8_t type, const unsigned char* octets, std::size_t length);
    };
    struct Module {
        std::string name;
        services::Oid oid;
    };

    Text contact_{""};
    Text name_{"switch"};
    Text location_{""};
    std::vector<Module> modules_;
    std::uint32_t number_ = 0;  // the answered number
};

}  // namespace agent
