#include "tool/session.h"

#include "services/services.h"
#include "tool/format.h"

#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <vector>

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

// The first of these files that there is, from the tool's directory on.
std::optional<std::string> beside_the_tool(const std::vector<std::string>& files) {
    std::error_code error;
    const auto here = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    if (error) return std::nullopt;
    for (const std::string& file : files)
        if (std::filesystem::exists(here / file, error)) return (here / file).lexically_normal();
    return std::nullopt;
}

}  // namespace

std::string default_library() {
    constexpr const char* kName = "libswitchmib.so";
    return beside_the_tool({kName, fmt::format("{}/{}", LIBRARY_FROM_MIBHOST, kName)}).value_or(kName);
}

std::string default_texts() {
    return beside_the_tool({"mibs/switchmib.mosy", "../share/switchmib/switchmib.mosy"}).value_or("");
}

Session::Session(const std::string& library_path, const std::string& texts)
    : library_(library_path), groups_(modules_of(library_)), registry_(with_standard_groups(), library_) {
    if (!texts.empty()) registry_.set_syntaxes(services::read_syntaxes(texts));
}

std::string Session::summary() const {
    const auto* const version = static_cast<const char*>(library_.symbol("switchmib_version"));
    return (version != nullptr ? fmt::format("version {}, ", version) : "") + counted(registry_.modules(), "module") +
           ", " + counted(registry_.objects().size(), "object");
}

}  // namespace tool
