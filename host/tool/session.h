// The library, loaded and registered, with everything that a command needs around it.
#pragma once

#include "agent/engine.h"
#include "agent/standard_groups.h"
#include "services/library.h"
#include "services/registry.h"

#include <string>

namespace tool {

// Where the library is looked for without --library: beside the tool, in ../lib from there, then by the loader.
std::string default_library();
// Where the table of the MIB texts is looked for without --texts: in the build, and where it is installed. Empty when
// it is in neither.
std::string default_texts();

class Session {
public:
    // Loads and registers; throws std::runtime_error with the reason.
    // Values go by the table of MIB texts, unless it is empty.
    explicit Session(const std::string& library_path, const std::string& texts = "");

    const services::Library& library() const { return library_; }
    // What the library and the agent itself serve.
    const services::Registry& registry() const { return registry_; }
    agent::StandardGroups& groups() { return groups_; }
    // "version 1.0.0, 4 modules, 72 objects"
    std::string summary() const;

private:
    services::Library library_;
    agent::StandardGroups groups_;
    services::Registry registry_;
};

}  // namespace tool
