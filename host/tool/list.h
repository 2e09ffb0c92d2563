// `mibhost list`: what the library registered.
#pragma once

#include "services/registry.h"

#include <string>

namespace tool {

// Whether a SET of this object would find a write method: its read method is asked for rows that may well exist, with a
// backend that refuses everything, and the write-method slot tells. Replaces services().backend and log meanwhile.
bool writable(const services::Object& object);

// Every registration with its objects; `format` is "text", "json" or "markdown".
std::string list(const services::Registry& registry, const std::string& format);

}  // namespace tool
