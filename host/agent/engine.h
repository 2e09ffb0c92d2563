// The request engine: GET, GETNEXT and SET over the registered variables, in this process, without a network.
#pragma once

#include "services/registry.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace agent {

using services::Oid;

// Value tags on the wire. The last three stand for "no value" and are never encoded for SNMPv1.
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

struct SetResult {
    int status = kNoError;
    std::size_t index = 0;  // 1 for the first varbind; 0 without an error
};

class Engine {
public:
    explicit Engine(const services::Registry& registry) : registry_(registry) {}

    // The value, or noSuchObject where nothing is registered, noSuchInstance where the object has no such row.
    Varbind get(const Oid& name);
    // The first instance after `name` over all registrations, or endOfMibView with the name unchanged.
    Varbind next(const Oid& name);
    // Every varbind through RESERVE1, RESERVE2, ACTION and COMMIT in request order; FREE or UNDO for all after an
    // error. A name without a write method (unregistered ones too) is notWritable, before any phase.
    SetResult set(const std::vector<Varbind>& varbinds);

    // Told of every step of a SET when it is done: the phase (-1 for the read before the phases), the varbind from 0
    // on, and the error number.
    using PhaseObserver = std::function<void(int phase, std::size_t index, int error)>;
    void set_phase_observer(PhaseObserver observer) { observer_ = std::move(observer); }

private:
    const services::Registry& registry_;
    PhaseObserver observer_;
};

}  // namespace agent
