#include "tool/session.h"

#include "services/services.h"

#include <fmt/format.h>

#include <array>
#include <filesystem>

namespace tool {
namespace {

const std::vector<services::Registration>& modules_of(services::Library& library) {
    library.initialise();
    return services::services().registrations;
}

// A group that a module serves is left to it.
const std::vector<services::Registration>& with_standard_groups() {
    for (const services::Registration& group : agent::StandardGroups::registrations()) services::register_module(group);
    return services::services().registrations;
}

}  // namespace

std::string default_library() {
    constexpr const char* kName = "libswitchmib.so";
    std::error_code error;
    const auto here = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    if (!error)
        for (const auto& candidate : std::array{here / kName, here / ".." / "lib" / kName})
            if (std::filesystem::exists(candidate, error)) return candidate.lexically_normal();
    return kName;
}

Session::Session(const std::string& library_path)
    : library_(library_path), groups_(modules_of(library_)), registry_(with_standard_groups(), library_) {}

std::string Session::summary() const {
    const auto count = [](std::size_t number, const char* noun) {
        return fmt::format("{} {}{}", number, noun, number == 1 ? "" : "s");
    };
    const auto* const version = static_cast<const char*>(library_.symbol("switchmib_version"));
    return (version != nullptr ? fmt::format("version {}, ", version) : "") + count(registry_.modules(), "module") +
           ", " + count(registry_.objects().size(), "object");
}

}  // namespace tool
