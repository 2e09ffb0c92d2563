// SNMP's operations on top of the engine: from a datagram to the datagram that answers it.
#pragma once

#include "agent/engine.h"
#include "agent/message.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace agent {

struct ResponderOptions {
    std::string community = "public";            // reads
    std::optional<std::string> write_community;  // reads and writes; none: no write access
    std::size_t max_response = 65507;            // octets of a response
    std::size_t max_varbinds = 128;              // of a request; more are tooBig
    std::size_t max_bulk_varbinds = 512;         // of the response to a GETBULK, which ends there

    // Throws std::invalid_argument with what is wrong: an empty community, the same one twice.
    void check() const;
};

// Datagrams since the start. Every received one is counted once more: as answered or under what it was dropped for.
struct Counters {
    std::uint64_t received = 0;
    std::uint64_t answered = 0;
    std::uint64_t malformed = 0;
    std::uint64_t unsupported_version = 0;
    std::uint64_t unsupported_pdu = 0;
    std::uint64_t wrong_community = 0;
    std::uint64_t unanswerable = 0;        // not even an error fits a response
    std::uint64_t bad_community_uses = 0;  // of the answered ones: SETs with a community that only reads
};

class Responder {
public:
    // Throws as ResponderOptions::check() does.
    Responder(Engine& engine, ResponderOptions options) : engine_(engine), options_(std::move(options)) {
        options_.check();
    }

    // The response, none when the datagram is dropped. Never throws for what a datagram holds.
    std::optional<ber::Octets> respond(std::span<const std::uint8_t> datagram);

    const Counters& counters() const { return counters_; }

    // Called for every request before it is carried out, and for its response afterwards (`pdu` says which it is).
    std::function<void(const Message&)> on_message;
    // Called with the reason why a datagram is dropped.
    std::function<void(const std::string&)> on_dropped;

private:
    class Response;

    SetResult carry_out(const Message& request, bool may_write, Response& response);
    SetResult get(const Message& request, Response& response);
    SetResult get_next(const Message& request, Response& response);
    void get_bulk(const Message& request, Response& response);
    SetResult set(const Message& request, bool may_write, Response& response);

    Engine& engine_;
    ResponderOptions options_;
    Counters counters_;
    ber::Octets varbinds_;  // of the response that is being made
};

}  // namespace agent
