#include "support/recording_host.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tests {
namespace {

int untouched(int, unsigned char*, unsigned char, std::size_t, unsigned char*, oid*, std::size_t) { return -1; }

}  // namespace

WriteMethod* const RecordingHost::kUntouched = &untouched;

Bytes integer(std::int64_t number) {
    const auto word = static_cast<std::uint32_t>(number);
    Bytes octets(sizeof word);
    std::memcpy(octets.data(), &word, sizeof word);
    return octets;
}

Bytes text(const std::string& octets) { return Bytes(octets.begin(), octets.end()); }

Bytes port_list(std::initializer_list<int> members) {
    Bytes list(12);
    for (const int port : members)
        list[static_cast<std::size_t>(port - 1) / 8] |= static_cast<std::uint8_t>(0x80 >> (port - 1) % 8);
    return list;
}

Bytes address_record(const Bytes& octets) {
    const auto length = static_cast<int>(octets.size());
    Bytes record = join(join(integer(length == 4 ? 1 : length == 16 ? 2 : 0), integer(length)), octets);
    record.resize(28);
    return record;
}

Loaded::Loaded(const char* path)
    : library(path),
      registrations([this] {
          auto& all = services::services().registrations;
          all.clear();
          library.initialise();
          return std::exchange(all, {});
      }()),
      registry(registrations, library) {}

const services::Object& Loaded::object(const std::string& name) const {
    const auto& objects = registry.objects();
    const auto found = std::ranges::find(objects, name, &services::Object::name);
    if (found != objects.end()) return *found;
    ADD_FAILURE() << "no object " << name;
    return objects.front();
}

Loaded& loaded() {
    static Loaded instance(SWITCHMIB_LIBRARY);
    return instance;
}

Loaded& probe() {
    static Loaded instance(PROBE_LIBRARY);
    return instance;
}

RecordingHost::RecordingHost(const Loaded& library) : library_(library) {
    services::services().backend = this;
    services::services().context = {};
    services::services().log = [this](const services::LogLine& line) { logged.push_back(line); };
}

RecordingHost::~RecordingHost() {
    services::services().backend = nullptr;
    services::services().context = {};
    services::services().log = nullptr;
}

void RecordingHost::answer(const std::string& name, Bytes value, Bytes next_key) {
    answers[name] = [value = std::move(value), next_key = std::move(next_key)](const services::ShowRequest&) {
        return Answer{value, next_key};
    };
}

bool RecordingHost::show(services::ShowRequest& request) {
    const auto* key = static_cast<const std::uint8_t*>(request.key);
    EXPECT_GT(request.line, 0);
    if (request.name.starts_with("write_") || request.name == "_get_port_info") {  // a lookup of a write method
        EXPECT_TRUE(request.request_class == 2 && key == nullptr && request.key_size == 0 && request.exact == 1 &&
                    request.index_count == 0)
            << request.command;
    }
    shown.push_back({request, key != nullptr ? Bytes(key, key + request.key_size) : Bytes()});
    const auto script = answers.find(request.name);
    if (script == answers.end()) return false;
    const Answer answer = script->second(request);
    if (!answer.value) return false;
    EXPECT_LE(answer.value->size(), static_cast<std::size_t>(request.result_size));
    std::memcpy(request.result, answer.value->data(), answer.value->size());
    *request.value_length = answer.value->size();
    if (!request.exact && !answer.next_key.empty()) {
        EXPECT_EQ(answer.next_key.size(), static_cast<std::size_t>(request.key_size));
        std::memcpy(request.key, answer.next_key.data(), answer.next_key.size());
    }
    return true;
}

bool RecordingHost::configure(const services::ConfigRequest& request) {
    EXPECT_GT(request.line, 0);
    const bool controlled = std::ranges::any_of(request.command, [](unsigned char c) { return c < 32 || c == 127; });
    // An alias of a carriage return alone is passed on.
    EXPECT_TRUE(!controlled || request.command == "desc \r") << "a control character in a line: " << request.command;
    sent.push_back({std::to_string(request.mode) + " " + request.command, request.caller});
    if (refused_line == sent.size() - 1) return false;
    return std::ranges::find(refused_lines, request.command) == refused_lines.end();
}

std::optional<std::string> RecordingHost::interface_name(std::uint32_t ifindex) {
    if (!interfaces_have_names) return std::nullopt;
    if (const auto named = interface_names.find(ifindex); named != interface_names.end()) return named->second;
    if (ifindex > 5120 && ifindex <= 5120 + 90) return "port" + std::to_string(ifindex - 5120);
    if (ifindex > 1024 && ifindex <= 1024 + 4094) return "vlan" + std::to_string(ifindex - 1024);
    return std::nullopt;
}

Oid RecordingHost::oid_of(const std::string& object, const Oid& index) const {
    Oid name = library_.object(object).oid();
    name.insert(name.end(), index.begin(), index.end());
    return name;
}

RecordingHost::ReadResult RecordingHost::read(const std::string& object, const Oid& index, int exact,
                                              std::optional<int> magic) {
    return read_name(object, oid_of(object, index), exact, magic);
}

RecordingHost::ReadResult RecordingHost::read_name(const std::string& object, const Oid& name, int exact,
                                                   std::optional<int> magic) {
    VariableEntry entry = library_.object(object).entry;
    if (magic) entry.magic = static_cast<std::uint8_t>(*magic);
    oid room[services::kNameRoom] = {};
    std::ranges::copy(name, room);
    std::size_t name_length = name.size();
    std::size_t value_length = 0;
    const std::size_t before = sent.size();
    ReadResult result{{}, {}, kUntouched, nullptr};
    result.address = entry.findVar(&entry, room, &name_length, exact, &value_length, &result.writer);
    if (result.address != nullptr) result.value = Bytes(result.address, result.address + value_length);
    result.name.assign(room, room + name_length);
    EXPECT_EQ(sent.size(), before) << "a read configures";
    return result;
}

WriteMethod* RecordingHost::writer_of(const std::string& object, const Oid& name) {
    WriteMethod*& writer = writers_.try_emplace(object, nullptr).first->second;
    if (writer != nullptr) return writer;
    const auto before = std::tuple(shown, sent, logged);
    for (const Oid& asked : {oid_of(object), oid_of(object, {0}), name}) {  // a column, a scalar's instance
        writer = read_name(object, asked, 1).writer;
        if (writer != kUntouched && writer != nullptr) break;
    }
    std::tie(shown, sent, logged) = before;
    EXPECT_TRUE(writer != kUntouched && writer != nullptr) << object << " hands out no write method";
    if (writer == nullptr) writer = kUntouched;
    return writer;
}

int RecordingHost::write(int phase, const std::string& object, const Oid& index, std::uint8_t type, const Bytes& value,
                         unsigned char* state) {
    return write_name(phase, object, oid_of(object, index), type, value, state);
}

int RecordingHost::write_name(int phase, const std::string& object, const Oid& name, std::uint8_t type,
                              const Bytes& value, unsigned char* state) {
    WriteMethod* writer = writer_of(object, name);
    Oid room = name;
    room.resize(services::kNameRoom);
    Bytes octets;
    octets.reserve(value.size() + 1);  // never null
    octets = value;
    const std::size_t before = sent.size();
    const int error = writer(phase, octets.data(), type, octets.size(), state, room.data(), name.size());
    expect_lines_only_from(before, phase);
    return error;
}

void RecordingHost::expect_lines_only_from(std::size_t first, int phase) const {
    if (may_configure_in.contains(phase)) return;
    for (std::size_t i = first; i < sent.size(); ++i) ADD_FAILURE() << "phase " << phase << " sends " << sent[i].line;
}

int RecordingHost::set(const std::vector<Assignment>& varbinds) {
    std::vector<agent::Varbind> request;
    for (const Assignment& varbind : varbinds)
        request.push_back({oid_of(varbind.object, varbind.index), {varbind.type, varbind.value}});
    agent::Engine engine(library_.registry);
    std::size_t before = sent.size();
    engine.set_phase_observer([&](int phase, std::size_t, int) {
        expect_lines_only_from(before, phase);
        before = sent.size();
    });
    return engine.set(request).status;
}

std::vector<std::string> RecordingHost::lines() const {
    std::vector<std::string> lines;
    for (const Sent& line : sent) lines.push_back(line.line);
    return lines;
}

std::vector<std::string> RecordingHost::commands() const {
    std::vector<std::string> commands;
    for (const Shown& request : shown) commands.push_back(request.command());
    return commands;
}

std::string RecordingHost::log() const {
    std::string log;
    for (const services::LogLine& line : logged) log += line.text;
    return log;
}

void RecordingHost::forget() {
    shown.clear();
    sent.clear();
    logged.clear();
}

}  // namespace tests
