// The request engine: GET, GETNEXT and SET over the registered variables, in this process, without a network.
#pragma once

#include "services/registry.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace agent {

using services::Oid;

// Value tags on the wire. The last three mean "no value" and are never encoded for SNMPv1.
enum Tag : std::uint8_t {
    kInteger = 0x02,
    kOctetString = 0x04,
    kNull = 0x05,
    kObjectId = 0x06,
    kIpAddress = 0x40,
    kCounter32 = 0x41,
    kGauge32 = 0x42,
    kTimeTicks = 0x43,
    kOpaque = 0x44,
    kCounter64 = 0x46,
    kNoSuchObject = 0x80,
    kNoSuchInstance = 0x81,
    kEndOfMibView = 0x82,
};

// SNMPv2 error-status numbers.
enum Status : int {
    kNoError = 0,
    kTooBig = 1,
    kNoSuchName = 2,
    kBadValue = 3,
    kReadOnly = 4,
    kGenErr = 5,
    kNoAccess = 6,
    kWrongType = 7,
    kWrongLength = 8,
    kWrongEncoding = 9,
    kWrongValue = 10,
    kNoCreation = 11,
    kInconsistentValue = 12,
    kResourceUnavailable = 13,
    kCommitFailed = 14,
    kUndoFailed = 15,
    kAuthorizationError = 16,
    kNotWritable = 17,
    kInconsistentName = 18,
};

// Phases of a SET, as write methods get them; kRead is the read before them.
enum Phase : int { kRead = -1, kReserve1, kReserve2, kAction, kCommit, kFree, kUndo };

// A value as read and write methods see it: numbers of 4 octets (Counter64: 8) in machine order, an OBJECT IDENTIFIER
// 4 octets a sub-identifier, an IpAddress 4 octets in network order.
struct Value {
    std::uint8_t tag = kNull;
    std::vector<std::uint8_t> octets;

    static Value integer(std::int32_t number);
    static Value unsigned32(std::uint8_t tag, std::uint32_t number);  // Counter32, Gauge32, TimeTicks
    static Value counter64(std::uint64_t number);
    static Value octet_string(std::vector<std::uint8_t> octets);
    static Value object_id(const Oid& oid);
    bool is_exception() const { return tag >= kNoSuchObject; }
    bool operator==(const Value&) const = default;
};

struct Varbind {
    Oid name;
    Value value;
    bool operator==(const Varbind&) const = default;
};

// The same in memory of others.
struct ValueView {
    std::uint8_t tag = kNull;
    std::span<const std::uint8_t> octets;

    ValueView(std::uint8_t type, std::span<const std::uint8_t> contents) : tag(type), octets(contents) {}
    ValueView(const Value& value) : tag(value.tag), octets(value.octets) {}
    bool is_exception() const { return tag >= kNoSuchObject; }
    Value copy() const { return {tag, {octets.begin(), octets.end()}}; }
};

struct VarbindView {
    std::span<const oid> name;
    ValueView value;

    VarbindView(std::span<const oid> ids, const ValueView& bound) : name(ids), value(bound) {}
    VarbindView(const Varbind& varbind) : name(varbind.name), value(varbind.value) {}
    Varbind copy() const { return {{name.begin(), name.end()}, value.copy()}; }
};

struct SetResult {
    int status = kNoError;
    std::size_t index = 0;  // 1 for the first varbind; 0 without an error
};

class Engine {
public:
    explicit Engine(const services::Registry& registry) : registry_(registry) {}

    // The value, or noSuchObject where nothing is registered, noSuchInstance where the object has no such row.
    Varbind get(const Oid& name) const { return look_up(name).copy(); }
    // The first instance after `name` over all registrations, or endOfMibView with the name unchanged.
    Varbind next(const Oid& name) const { return Walk(*this, name).next().copy(); }
    // Every varbind through RESERVE1, RESERVE2, ACTION and COMMIT in request order; FREE or UNDO for all after an
    // error. Before any phase, a name without a write method is noCreation where the object is read-write and has no
    // such instance, else notWritable (unregistered names too).
    SetResult set(const std::vector<Varbind>& varbinds);

    // get() without copies: the value is valid until the next request to the engine.
    VarbindView look_up(std::span<const oid> name) const;

    // A walk by GETNEXT, which goes on in the object where it is.
    class Walk {
    public:
        Walk(const Engine& engine, std::span<const oid> from);  // of longer names the first 128 sub-identifiers count
        // The next instance, or endOfMibView with the name unchanged. The name is valid until the walk goes on, the
        // value until the next request to the engine. Objects of `without` type are passed over.
        VarbindView next(std::uint8_t without = kNull);

    private:
        const services::Registry* registry_;
        std::size_t object_;  // where it goes on
        bool within_;         // the name is in that object
        std::size_t length_;
        oid name_[services::kMaxSubIds];
    };

    // Takes every step of a SET when it is done: the phase (-1 for the read before the phases), the varbind from 0 on,
    // and the error number.
    using PhaseObserver = std::function<void(int phase, std::size_t index, int error)>;
    void set_phase_observer(PhaseObserver observer) { observer_ = std::move(observer); }

private:
    const services::Registry& registry_;
    PhaseObserver observer_;
};

}  // namespace agent
