// The Basic Encoding Rules as far as SNMP needs them: definite lengths, single-octet tags.
#pragma once

#include "agent/engine.h"

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace agent::ber {

using Octets = std::vector<std::uint8_t>;

inline constexpr std::uint8_t kSequence = 0x30;

// What is wrong with an encoding.
struct Error : std::runtime_error {
    using runtime_error::runtime_error;
};

// Takes one element after the other from an encoding, which must outlive it. Throws Error for what is cut short, has
// another tag than asked for, or does not fit its type. Lengths may have leading zeros and numbers spare sign octets.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> octets) : left_(octets) {}

    bool at_end() const { return left_.empty(); }
    void expect_end() const;
    std::uint8_t next_tag() const;

    std::span<const std::uint8_t> contents(std::uint8_t tag);
    Reader enter(std::uint8_t tag) { return Reader(contents(tag)); }
    std::int32_t integer(std::uint8_t tag = kInteger);
    std::uint64_t unsigned_integer(std::uint8_t tag, std::size_t octets);  // of at most that many octets, no sign
    Oid object_id();                                                       // 2 to 128 sub-identifiers
    Value value();

private:
    std::span<const std::uint8_t> left_;
};

// Appends one element. Values must be well-formed.
void append(Octets& out, std::uint8_t tag, std::span<const std::uint8_t> contents);
void append_integer(Octets& out, std::int32_t number);
void append_value(Octets& out, const ValueView& value);
void append_varbind(Octets& out, const VarbindView& varbind);
// Appends the tag and length of an element whose contents follow.
void append_head(Octets& out, std::uint8_t tag, std::size_t contents);

// Octets of an element with that much content, and of an INTEGER.
std::size_t element_size(std::size_t contents);
std::size_t integer_size(std::int32_t number);

// Whether the octets are a value of the tag's type and can be encoded.
bool well_formed(const ValueView& value);

}  // namespace agent::ber
