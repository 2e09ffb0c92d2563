#include "tool/probe.h"

#include "framework/ifindex.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace tool {
namespace {

using Octets = std::vector<std::uint8_t>;

// What lookups of one number are tried with: kinds and modes, and each flag of a port.
constexpr std::array<std::uint32_t, 9> kNumbers = {0, 1, 2, 3, 4, 16, 128, 2 | 128, 1u << 28};
constexpr std::size_t kLists = 2;  // an empty one, and one of the first member

Octets number_octets(std::uint32_t number) {
    Octets octets(sizeof number);
    std::memcpy(octets.data(), &number, sizeof number);
    return octets;
}

std::size_t answers_to(const Question& question) {
    if (question.is_row) return 1;
    return is_number(question) ? kNumbers.size() : kLists;
}

}  // namespace

Called call(const services::Object& object, const services::Oid& index, int exact) {
    std::array<oid, services::kNameRoom> name{};
    std::size_t length = object.entry.namelen;
    std::copy_n(object.entry.name, length, name.begin());
    for (const oid id : index) name[length++] = id;
    std::size_t value_length = 0;
    WriteMethod* write_method = nullptr;
    const bool answered =
        object.entry.findVar(&object.entry, name.data(), &length, exact, &value_length, &write_method) != nullptr;
    return {answered, write_method, {name.begin(), name.begin() + static_cast<std::ptrdiff_t>(length)}};
}

services::Oid sample_index(const services::Group& group, oid first, oid others, bool ipv6) {
    static constexpr std::array kIpv4 = {"192.0.2.1", "192.0.2.0/24", "192.0.2.1 192.0.2.2",
                                         "192.0.2.1 5121 192.0.2.2"};
    static constexpr std::array kIpv6 = {"2001:db8::1", "2001:db8::/64", "2001:db8::1 2001:db8::2",
                                         "2001:db8::1 5121 2001:db8::2"};
    static constexpr std::array kOthers = {"01:02:03:04:05:06:07:08", "00:00:00:00:00:01", "01:02", "0.0",
                                           "c0:00:02:01"};
    services::Oid index;
    for (std::size_t i = 0; i < group.fields.size(); ++i) {
        auto ids = services::index_from_text(group.fields[i], std::to_string(i == 0 ? first : others));
        const auto try_all = [&](const auto& samples) {
            for (const char* const sample : samples)
                if (!ids) ids = services::index_from_text(group.fields[i], sample);
        };
        try_all(ipv6 ? kIpv6 : kIpv4);
        try_all(kOthers);
        if (ids) index.insert(index.end(), ids->begin(), ids->end());
    }
    return index;
}

std::string Question::key() const { return fmt::format("{} {} {}", name, magic, command); }

bool is_number(const Question& question) { return !question.is_row && question.size == sizeof(std::uint32_t); }

std::optional<Octets> answer(const Question& question, std::size_t choice) {
    if (choice >= answers_to(question)) return std::nullopt;
    if (question.is_row) return number_octets(0);
    if (is_number(question)) return number_octets(kNumbers[choice]);
    Octets list(static_cast<std::size_t>(question.size));
    constexpr std::uint8_t kFirstMember = 0x80;
    if (choice == 1) list.front() = kFirstMember;
    return list;
}

bool RecordingBackend::show(services::ShowRequest& request) {
    Question question{request.command, request.name, request.magic, request.result_size, false, 0};
    question.is_row = registry != nullptr && registry->group(request.name) != nullptr;
    question.choices = answers_to(question) + 1;
    if (std::ranges::find(record.questions, question.key(), &Question::key) == record.questions.end())
        record.questions.push_back(question);
    const auto chosen = situation.find(question.key());
    const auto octets = answer(question, chosen != situation.end() ? chosen->second : 0);
    if (!octets) return false;
    std::ranges::copy(*octets, static_cast<std::uint8_t*>(request.result));
    *request.value_length = octets->size();
    return true;
}

bool RecordingBackend::configure(const services::ConfigRequest& request) {
    record.lines.push_back({agent::kRead, request.mode, request.command, request.caller});
    return refused_line != record.lines.size() - 1;
}

std::optional<std::string> RecordingBackend::interface_name(std::uint32_t ifindex) {
    using namespace switchmib;
    if (!interfaces_have_names) return std::nullopt;
    if (ifindex > kPortIfIndexBase && ifindex <= kLastPortIfIndex)
        return fmt::format("port{}", ifindex - kPortIfIndexBase);
    if (is_vlan_interface(ifindex)) return fmt::format("vlan{}", ifindex - kVlanIfIndexBase);
    if (ifindex > kTunnelIfIndexBase && ifindex < kVlanIfIndexBase)
        return fmt::format("tunnel{}", ifindex - kTunnelIfIndexBase);
    return std::nullopt;
}

Probe::Probe(const services::Registry& registry, const services::Library& library)
    : library_(library), engine_(registry) {
    services::services().backend = &backend;
    services::services().log = nullptr;
    backend.registry = &registry;
    engine_.set_phase_observer([this](int phase, std::size_t, int error) {
        Outcome& record = backend.record;
        for (SentLine& line : record.lines)
            if (line.phase == agent::kRead) line.phase = phase;
        if (error != agent::kNoError && record.status == agent::kNoError) {
            record.status = error;
            record.phase = phase;
        }
    });
}

Probe::~Probe() {
    library_.reset();
    services::services().backend = nullptr;
    services::services().context = {};
}

Outcome Probe::set(const services::Oid& name, const agent::Value& value) {
    library_.reset();
    backend.record = {};
    engine_.set({{name, value}});
    return std::move(backend.record);
}

}  // namespace tool
