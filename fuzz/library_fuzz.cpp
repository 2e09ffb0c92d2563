// Any requests to any registered objects, with a backend that answers anything: a read answers an instance of the object
// that it was asked for, out of a buffer that holds it; lines are configured in ACTION, each of them one line.
//
// An input is a list of requests, and whatever the backend answers to them, until it ends.
#include "framework/snmp.h"
#include "services/library.h"
#include "services/registry.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using services::Object;

// Where else than in ACTION an object may configure something.
struct Exception {
    int phase;
    std::string_view object;
};
constexpr Exception kExceptions[] = {
    {switchmib::undo, "dot1qVlanStaticRowStatus"},  // removes the VLAN that it may have created
    {switchmib::undo, "ieee8021QBridgeVlanStaticRowStatus"},
};

// The one control character that a line may hold.
constexpr std::string_view kCarriageReturnAlias = "desc \r";

// The rest of the input; nothing but zeros after its end.
class Input {
public:
    explicit Input(std::span<const std::uint8_t> octets) : octets_(octets) {}
    bool empty() const { return octets_.empty(); }
    std::uint8_t octet() {
        if (octets_.empty()) return 0;
        const std::uint8_t octet = octets_.front();
        octets_ = octets_.subspan(1);
        return octet;
    }
    std::uint16_t u16() { return static_cast<std::uint16_t>(octet() << 8 | octet()); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(u16()) << 16 | u16(); }
    std::size_t below(std::size_t bound) { return u16() % bound; }
    void fill(void* memory, std::size_t size) {
        auto* at = static_cast<std::uint8_t*>(memory);
        const std::size_t given = std::min(size, octets_.size());
        std::copy_n(octets_.begin(), given, at);
        std::fill(at + given, at + size, std::uint8_t{0});
        octets_ = octets_.subspan(given);
    }
    std::string text(std::size_t size) {
        std::string text(std::min(size, octets_.size()), '\0');
        fill(text.data(), text.size());
        return text;
    }

    // A number that may well be in range: a small one, an interface index, a special value, or any.
    std::uint32_t number() {
        static constexpr std::uint32_t kBases[] = {0, 896, 1024, 5120, 4080, 0x7ffffff0};
        const std::uint8_t choice = octet();
        if (choice % 8 < std::size(kBases)) return kBases[choice % 8] + choice / 8u;
        return choice % 8 == 6 ? octet() : u32();
    }

private:
    std::span<const std::uint8_t> octets_;
};

// What is being fuzzed: the request that is under way.
struct {
    Input* input = nullptr;
    const Object* object = nullptr;
    int phase = -1;  // outside a SET's phases
} now;

void require(bool holds, std::string_view what, std::string_view detail = {}) {
    if (holds) return;
    fmt::print(stderr, "library_fuzz: {}: {} {}\n", now.object != nullptr ? now.object->name : "", what, detail);
    std::abort();
}

// Answers from the input, and checks what is configured.
class AnyBackend : public services::Backend {
public:
    bool show(services::ShowRequest& request) override {
        const std::uint8_t choice = now.input->octet();
        if (choice % 4 == 0) return false;
        const auto room = static_cast<std::size_t>(request.result_size);
        const std::size_t length = choice % 4 == 1 ? std::min<std::size_t>(4, room) : now.input->below(room + 1);
        now.input->fill(request.result, length);
        *request.value_length = length;
        if (request.exact == 0 && request.key != nullptr) advance(request);
        return true;
    }
    bool configure(const services::ConfigRequest& request) override {
        const auto allows = [](const Exception& exception) {
            return exception.phase == now.phase && exception.object == now.object->name;
        };
        require(now.phase == switchmib::action || std::ranges::any_of(kExceptions, allows),
                fmt::format("configures in phase {}:", now.phase), request.command);
        const auto is_control = [](unsigned char octet) { return octet < 32 || octet == 127; };
        require(request.command == kCarriageReturnAlias || std::ranges::none_of(request.command, is_control),
                "configures a control character:", request.command);
        return now.input->octet() % 8 != 0;
    }
    std::optional<std::string> interface_name(std::uint32_t ifindex) override {
        if (now.input->octet() % 4 == 0) return std::nullopt;
        return fmt::format("port{}", ifindex % 100);
    }

private:
    // The next row: any key, or the same one with another number in it.
    static void advance(const services::ShowRequest& request) {
        const auto size = static_cast<std::size_t>(request.key_size);
        if (now.input->octet() % 2 == 0) {
            now.input->fill(request.key, size);
        } else if (size >= sizeof(std::uint32_t)) {
            const std::uint32_t number = now.input->number();
            const std::size_t at = now.input->below(size / sizeof number) * sizeof number;
            std::memcpy(static_cast<unsigned char*>(request.key) + at, &number, sizeof number);
        }
    }
};

// The objects by a number of their own, so that an input means the same when modules come.
class Objects {
public:
    explicit Objects(const services::Registry& registry) {
        for (const Object& object : registry.objects()) {
            std::uint32_t hash = 2166136261;
            for (const oid id : object.oid()) hash = (hash ^ id) * 16777619;
            objects_.emplace_back(hash >> 16, &object);
        }
        std::ranges::sort(objects_);
    }
    const Object& operator[](std::uint32_t number) const {
        const auto found = std::ranges::lower_bound(objects_, number, {}, &Numbered::first);
        return *(found != objects_.end() ? found : objects_.begin())->second;
    }

private:
    using Numbered = std::pair<std::uint32_t, const Object*>;
    std::vector<Numbered> objects_;
};

// Sub-identifiers of an index field that may well be one.
void append_field(services::Oid& name, const services::IndexField& field, Input& input) {
    const auto address = [&](bool has_prefix) {
        const bool ipv6 = input.octet() % 2 != 0;
        name.push_back(ipv6 ? 2 : 1);
        name.push_back(ipv6 ? 16 : 4);
        for (int i = 0; i < (ipv6 ? 16 : 4); ++i) name.push_back(input.octet());
        if (has_prefix) name.push_back(input.octet() % 129);
    };
    switch (field.kind) {
        case 2: name.push_back(input.number()); break;
        case 8: name.insert(name.end(), {2, 0, 0}); break;
        case 10: address(false); break;
        case 11: address(true); break;
        case 12:
            address(false);
            name.push_back(input.number());
            address(false);
            break;
        case 13:
            address(false);
            address(false);
            break;
        default:  // octets, with their number before them where it varies
            if (field.kind == 14) name.push_back(field.octets);
            for (int i = 0; i < field.octets; ++i) name.push_back(input.octet());
    }
}

// The object with an index of its fields, with any one, or cut short somewhere.
services::Oid any_name(const Object& object, Input& input) {
    services::Oid name = object.oid();
    const std::uint8_t choice = input.octet();
    if (choice % 4 == 0) {
        for (std::size_t count = input.octet() % 40u; count > 0; --count) name.push_back(input.number());
    } else if (object.group != nullptr && object.group->is_table) {
        for (const services::IndexField& field : object.group->fields) append_field(name, field, input);
    } else {
        name.push_back(0);
    }
    if (choice % 4 == 1) name.resize(object.entry.namelen + input.below(name.size() - object.entry.namelen + 1));
    if (name.size() > services::kMaxSubIds) name.resize(services::kMaxSubIds);
    return name;
}

// What a read or write method gets: exactly the memory that it may use, so that a sanitizer sees a step beyond it.
std::unique_ptr<oid[]> room_for(const services::Oid& name) {
    auto room = std::make_unique<oid[]>(services::kNameRoom);
    std::ranges::copy(name, room.get());
    return room;
}

struct Answer {
    unsigned char* value;
    WriteMethod* writer;
};

Answer read(const Object& object, const services::Oid& asked, int exact) {
    const auto name = room_for(asked);
    std::size_t name_length = asked.size();
    std::size_t value_length = 0;
    Answer answer{};
    answer.value = object.entry.findVar(&object.entry, name.get(), &name_length, exact, &value_length, &answer.writer);
    if (answer.value == nullptr) return answer;
    const services::Oid oid = object.oid();
    require(name_length <= services::kMaxSubIds && name_length >= oid.size() &&
                std::equal(oid.begin(), oid.end(), name.get()),
            "answers another object");
    if (answer.value >= ret_value && answer.value < ret_value + sizeof ret_value)
        require(value_length <= static_cast<std::size_t>(ret_value + sizeof ret_value - answer.value),
                "answers more than its buffer holds");
    // Every octet is looked at, for the sanitizer.
    volatile unsigned char last = 0;
    for (std::size_t i = 0; i < value_length; ++i) last = answer.value[i];
    static_cast<void>(last);
    return answer;
}

// A varbind of a SET.
struct Assignment {
    const Object* object;
    services::Oid name;
    std::uint8_t type;
    std::vector<unsigned char> value;
    Answer current{};

    int run(int phase) const {
        const auto copy = room_for(name);
        const auto octets = std::make_unique<unsigned char[]>(value.size());
        std::ranges::copy(value, octets.get());
        now.object = object;
        now.phase = phase;
        const int error =
            current.writer(phase, octets.get(), type, value.size(), current.value, copy.get(), name.size());
        now.phase = -1;
        return error;
    }
};

std::vector<unsigned char> any_value(std::uint8_t type, Input& input) {
    std::vector<unsigned char> value(sizeof(std::uint32_t));
    if (type == switchmib::OctetString || type == switchmib::ObjectIdentifier) {
        value.resize(input.octet() % 2 == 0 ? input.octet() % 13u : input.below(600));
        input.fill(value.data(), value.size());
        if (type == switchmib::ObjectIdentifier) value.resize(value.size() / sizeof(oid) * sizeof(oid));
    } else {
        const std::uint32_t number = input.number();
        std::memcpy(value.data(), &number, sizeof number);
    }
    return value;
}

void set(const Objects& objects, Input& input) {
    std::vector<Assignment> assignments;
    for (std::size_t count = 1 + input.octet() % 4u; count > 0; --count) {
        const Object& object = objects[input.u16()];
        Assignment assignment{&object, any_name(object, input), object.entry.type, {}, {}};
        if (input.octet() % 16 == 0) assignment.type = input.octet();
        assignment.value = any_value(assignment.type, input);
        now.object = &object;
        assignment.current = read(object, assignment.name, 1);
        if (assignment.current.writer == nullptr) return;
        assignments.push_back(std::move(assignment));
    }
    const auto run = [&](int phase) {
        bool done = true;
        for (const Assignment& assignment : assignments) {
            done = assignment.run(phase) == switchmib::noError && done;
            if (!done && phase <= switchmib::action) break;
        }
        return done;
    };
    for (const int phase : {switchmib::reserve1, switchmib::reserve2, switchmib::action})
        if (!run(phase)) {
            run(phase == switchmib::action ? switchmib::undo : switchmib::release);
            return;
        }
    run(switchmib::commit);
}

const Objects& objects() {
    static services::Library library(SWITCHMIB_LIBRARY);
    static const services::Registry registry = [] {
        library.initialise();
        return services::Registry(services::services().registrations, library);
    }();
    static const Objects objects(registry);
    return objects;
}

}  // namespace

// The kernel's files hold whatever the input has next.
extern "C" std::FILE* fopen(const char* path, const char* mode) {
    static auto* const next = reinterpret_cast<decltype(&std::fopen)>(dlsym(RTLD_NEXT, "fopen"));
    if (now.input == nullptr || !std::string_view(path).starts_with("/proc/")) return next(path, mode);
    static std::string text;
    text = now.input->text(now.input->octet());
    if (text.empty()) return nullptr;
    return fmemopen(text.data(), text.size(), mode);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static AnyBackend backend;
    const Objects& all = objects();
    Input input({data, size});
    auto& host = services::services();
    host.backend = &backend;
    host.context = {};
    now = {&input, nullptr, -1};
    while (!input.empty()) {
        const std::uint8_t choice = input.octet();
        if (choice / 16 == 1) host.context.vrf = input.text(input.octet() % 64u);
        if (choice / 16 == 2) host.context.snmp_context = input.text(input.octet() % 64u);
        if (choice % 4 == 0) {
            set(all, input);
            continue;
        }
        const Object& object = all[input.u16()];
        now.object = &object;
        read(object, any_name(object, input), choice % 4 == 1);
    }
    now = {};
    return 0;
}
