#include "agent/engine.h"

#include "agent/ber.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace agent {
namespace {

constexpr std::size_t kMaxValueLength = sizeof ret_value;

enum Phase : int { kRead = -1, kReserve1, kReserve2, kAction, kCommit, kFree, kUndo };

// One call of a read method, with the memory that it works on.
class Read {
public:
    Read(const services::Object& object, const Oid& name, int exact)
        : object_(object), length_(std::min(name.size(), services::kMaxSubIds)) {
        std::copy_n(name.begin(), length_, name_);
        state_ = object.entry.findVar(&object.entry, name_, &length_, exact, &value_length_, &writer_);
    }

    bool answered() const { return state_ != nullptr; }
    unsigned char* state() const { return state_; }
    WriteMethod* writer() const { return writer_; }

    // Whether the answered name lies in the object and behind `name`, as a GETNEXT's must.
    bool goes_on_from(const Oid& name) const {
        const VariableEntry& entry = object_.entry;
        if (length_ <= services::kMaxSubIds && length_ >= entry.namelen &&
            std::equal(entry.name, entry.name + entry.namelen, name_) &&
            snmp_oid_compare(name_, length_, name.data(), name.size()) > 0)
            return true;
        complain("an answer that does not follow its request");
        return false;
    }
    Oid name() const { return Oid(name_, name_ + length_); }

    // The value, none when there is none or its octets are no value of the object's type.
    std::optional<Value> value() const {
        if (state_ == nullptr) return std::nullopt;
        Value value{object_.entry.type, {state_, state_ + std::min(value_length_, kMaxValueLength)}};
        if (value_length_ <= kMaxValueLength && ber::well_formed(value)) return value;
        complain("a value that is none of its type");
        return std::nullopt;
    }

private:
    void complain(const char* about) const {
        debugmsg("agent", "%s: %s\n", services::to_string(object_.oid()).c_str(), about);
    }

    const services::Object& object_;
    oid name_[services::kNameRoom] = {};
    std::size_t length_;
    std::size_t value_length_ = 0;
    WriteMethod* writer_ = nullptr;
    unsigned char* state_;
};

// A varbind of a SET between its phases.
struct Assignment {
    const Varbind& varbind;
    WriteMethod* writer;
    unsigned char* state;

    // Runs one phase on copies, so that none sees what a write method left in the one before.
    int run(int phase) const {
        oid name[services::kNameRoom] = {};
        std::ranges::copy(varbind.name, name);
        std::vector<unsigned char> octets;
        octets.reserve(varbind.value.octets.size() + 1);  // never null
        octets = varbind.value.octets;
        const int error =
            writer(phase, octets.data(), varbind.value.tag, octets.size(), state, name, varbind.name.size());
        return error >= kNoError && error <= kInconsistentName ? error : static_cast<int>(kGenErr);
    }
};

template <class Number>
Value number_value(std::uint8_t tag, Number number) {
    Value value{tag, std::vector<std::uint8_t>(sizeof number)};
    std::memcpy(value.octets.data(), &number, sizeof number);
    return value;
}

}  // namespace

Value Value::integer(std::int32_t number) { return number_value(kInteger, number); }
Value Value::unsigned32(std::uint8_t tag, std::uint32_t number) { return number_value(tag, number); }
Value Value::counter64(std::uint64_t number) { return number_value(kCounter64, number); }
Value Value::octet_string(std::vector<std::uint8_t> octets) { return {kOctetString, std::move(octets)}; }

Value Value::object_id(const Oid& oid) {
    Value value{kObjectId, std::vector<std::uint8_t>(oid.size() * sizeof(::oid))};
    if (!oid.empty()) std::memcpy(value.octets.data(), oid.data(), value.octets.size());
    return value;
}

Varbind Engine::get(const Oid& name) {
    const services::Object* object = name.size() <= services::kMaxSubIds ? registry_.find(name) : nullptr;
    if (object == nullptr) return {name, {kNoSuchObject, {}}};
    if (auto value = Read(*object, name, 1).value()) return {name, std::move(*value)};
    return {name, {kNoSuchInstance, {}}};
}

Varbind Engine::next(const Oid& name) {
    const auto& objects = registry_.objects();
    // The object that the name lies in comes first; every other one is asked for its first instance.
    const services::Object* const within = registry_.find(name);
    std::size_t at = registry_.behind(name);
    if (within != nullptr) --at;
    for (; at < objects.size(); ++at) {
        const services::Object& object = objects[at];
        const Oid from = &object == within ? name : object.oid();
        const Read read(object, from, 0);
        if (!read.answered() || !read.goes_on_from(from)) continue;
        if (auto value = read.value()) return {read.name(), std::move(*value)};
    }
    return {name, {kEndOfMibView, {}}};
}

SetResult Engine::set(const std::vector<Varbind>& varbinds) {
    const auto tell = [this](int phase, std::size_t index, int error) {
        if (observer_) observer_(phase, index, error);
    };

    std::vector<Assignment> assignments;
    for (std::size_t i = 0; i < varbinds.size(); ++i) {
        const Oid& name = varbinds[i].name;
        const services::Object* object = name.size() <= services::kMaxSubIds ? registry_.find(name) : nullptr;
        Assignment assignment{varbinds[i], nullptr, nullptr};
        if (object != nullptr) {
            const Read read(*object, name, 1);
            assignment.writer = read.writer();
            assignment.state = read.state();
        }
        const int error = assignment.writer != nullptr ? kNoError : kNotWritable;
        tell(kRead, i, error);
        if (error != kNoError) return {error, i + 1};
        assignments.push_back(assignment);
    }

    SetResult result;
    // Every varbind, or as far as the first that fails when the phase `stops`; the first error of the SET counts.
    const auto run = [&](int phase, bool stops) {
        for (std::size_t i = 0; i < assignments.size(); ++i) {
            const int error = assignments[i].run(phase);
            tell(phase, i, error);
            if (error == kNoError || result.status != kNoError) continue;
            result = {error, i + 1};
            if (stops) return;
        }
    };
    for (const int phase : {kReserve1, kReserve2, kAction}) {
        run(phase, true);
        if (result.status == kNoError) continue;
        run(phase == kAction ? kUndo : kFree, false);
        return result;
    }
    run(kCommit, false);  // nothing undoes an ACTION, so every varbind is committed
    return result;
}

}  // namespace agent
