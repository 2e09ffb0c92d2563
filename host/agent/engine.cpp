#include "agent/engine.h"

#include "agent/ber.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace agent {
namespace {

constexpr std::size_t kMaxValueLength = sizeof ret_value;

constexpr std::uint16_t kReadWrite = 2;  // a variable's acl

// One call of a read method, with the memory that it works on.
class Read {
public:
    Read(const services::Object& object, std::span<const oid> name, int exact)
        : object_(object), length_(std::min(name.size(), services::kMaxSubIds)) {
        std::copy_n(name.begin(), length_, name_);
        state_ = object.entry.findVar(&object.entry, name_, &length_, exact, &value_length_, &writer_);
    }

    bool answered() const { return state_ != nullptr; }
    unsigned char* state() const { return state_; }
    WriteMethod* writer() const { return writer_; }

    // Whether the answered name is in the object and after `name`, as a GETNEXT's must.
    bool goes_on_from(std::span<const oid> name) const {
        if (length_ <= services::kMaxSubIds && services::is_under(this->name(), object_.entry) &&
            snmp_oid_compare(name_, length_, name.data(), name.size()) > 0)
            return true;
        complain("an answer that does not follow its request");
        return false;
    }
    std::span<const oid> name() const { return {name_, length_}; }

    // The value, none when there is none or its octets are no value of the object's type.
    std::optional<ValueView> value() const {
        if (state_ == nullptr) return std::nullopt;
        if (value_length_ <= kMaxValueLength)
            if (const ValueView value{object_.entry.type, {state_, value_length_}}; ber::well_formed(value))
                return value;
        complain("a value that is not of its type");
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

VarbindView Engine::look_up(std::span<const oid> name) const {
    const services::Object* object = name.size() <= services::kMaxSubIds ? registry_.locate(name).within : nullptr;
    if (object == nullptr) return {name, {kNoSuchObject, {}}};
    const auto value = Read(*object, name, 1).value();
    return {name, value ? *value : ValueView{kNoSuchInstance, {}}};
}

Engine::Walk::Walk(const Engine& engine, std::span<const oid> from)
    : registry_(&engine.registry_), length_(std::min(from.size(), services::kMaxSubIds)) {
    std::copy_n(from.begin(), length_, name_);
    const services::Registry::Place place = registry_->locate({name_, length_});
    within_ = place.within != nullptr;
    object_ = within_ ? place.after - 1 : place.after;
}

VarbindView Engine::Walk::next(std::uint8_t without) {
    const auto& objects = registry_->objects();
    // The object that the name is in comes first; every other one is asked for its first instance.
    for (; object_ < objects.size(); ++object_, within_ = false) {
        const services::Object& object = objects[object_];
        if (object.entry.type == without) continue;
        const std::span<const oid> from =
            within_ ? std::span<const oid>(name_, length_) : std::span(object.entry.name, object.entry.namelen);
        const Read read(object, from, 0);
        if (!read.answered() || !read.goes_on_from(from)) continue;
        const auto value = read.value();
        if (!value) continue;
        within_ = true;
        length_ = read.name().size();
        std::ranges::copy(read.name(), name_);
        return {{name_, length_}, *value};
    }
    return {{name_, length_}, {kEndOfMibView, {}}};
}

SetResult Engine::set(const std::vector<Varbind>& varbinds) {
    const auto observe = [this](int phase, std::size_t index, int error) {
        if (observer_) observer_(phase, index, error);
    };

    std::vector<Assignment> assignments;
    for (std::size_t i = 0; i < varbinds.size(); ++i) {
        const Oid& name = varbinds[i].name;
        const services::Object* object = name.size() <= services::kMaxSubIds ? registry_.locate(name).within : nullptr;
        Assignment assignment{varbinds[i], nullptr, nullptr};
        int error = kNotWritable;
        if (object != nullptr) {
            const Read read(*object, name, 1);
            assignment.writer = read.writer();
            assignment.state = read.state();
            if (read.writer() != nullptr)
                error = kNoError;
            else if (!read.answered() && object->entry.acl == kReadWrite)
                error = kNoCreation;
        }
        observe(kRead, i, error);
        if (error != kNoError) return {error, i + 1};
        assignments.push_back(assignment);
    }

    SetResult result;
    // Every varbind, or as far as the first that fails when the phase `stops`; the first error of the SET counts.
    const auto run = [&](int phase, bool stops) {
        for (std::size_t i = 0; i < assignments.size(); ++i) {
            const int error = assignments[i].run(phase);
            observe(phase, i, error);
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
