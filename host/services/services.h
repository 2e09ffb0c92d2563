// The host's C symbols (user/framework/host.h) over a backend that can be exchanged.
//
// There is one agent in a process, so there is one `services()`: whoever calls the library (the agent, the
// tool, a test) plugs its backend, log and request context in here, and the C functions answer from it.
#pragma once

#include "framework/host.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace services {

inline constexpr std::size_t kMaxSubIds = 128;  // of an OID
// What a read or write method gets room for. After a name that ends anywhere there are zeros, as many as the size
// question about an address pair may look at.
inline constexpr std::size_t kNameRoom = kMaxSubIds + 32;

// One show request, as the library sent it. `result`, `value_length` and `key` are the library's own memory.
struct ShowRequest {
    std::uint64_t request_class;
    std::string command;
    void* result;
    int result_size;
    std::size_t* value_length;
    void* key;  // null for scalar groups and lookups
    int key_size;
    int magic;
    int exact;
    int index_count;
    std::string name;  // table, scalar group or lookup
    int line;
};

// One configuration line, as the library sent it.
struct ConfigRequest {
    int mode;  // 5 global, -1 in the mode entered before, 4 executive
    std::string command;
    std::string caller;
    int line;
};

// What manages the switch. Functions return true when the request was done.
class Backend {
public:
    virtual ~Backend() = default;
    // Fills request.result and *request.value_length, and for exact 0 moves request.key to the answered row.
    virtual bool show(ShowRequest& request) = 0;
    virtual bool configure(const ConfigRequest& request) = 0;
    // Command-line name of an interface, none when there is no such interface.
    virtual std::optional<std::string> interface_name(std::uint32_t ifindex) = 0;
};

// What the request being served has besides its varbinds. The library gets null for an absent name.
struct Context {
    std::optional<std::string> vrf;
    std::optional<std::string> snmp_context;
    bool debugging = false;
};

// One call of register_mib.
struct Registration {
    std::string descr;
    std::vector<oid> module_oid;
    const VariableEntry* entries;
    std::size_t count;
    // Names of the entries, and their scalar groups and tables; none: what the library exports for the module.
    const char* const* names = nullptr;
    std::span<const GroupInfo> groups{};
};

// One line that the library logged. `channel` is "debug", "an" or "ui".
struct LogLine {
    std::string channel;
    std::string token;  // of a debug line
    int category = 0;   // of an "an" line, like level
    int level = 0;
    std::string text;
};

struct Services {
    Backend* backend = nullptr;  // none: every show and configuration request is refused
    Context context;
    std::vector<Registration> registrations;
    std::function<void(const LogLine&)> log;                // none: lines are dropped
    bool quiet = false;                                     // what the library logs is dropped unread
    std::function<bool(const Registration&)> may_register;  // none: every registration is taken
};

Services& services();

// Adds a module to the registrations. False when another one has its OID, or `may_register` refuses it.
bool register_module(Registration registration);

}  // namespace services
