// Requests to the library for its own sake: each is answered as if it were the first after the load, by a backend that
// records what it is asked and sent.
#pragma once

#include "agent/engine.h"
#include "services/library.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// One call of an object's read method, for an index after its OID.
struct Called {
    bool answered;
    WriteMethod* write_method;
    services::Oid name;  // as the read method left it
};
Called call(const services::Object& object, const services::Oid& index, int exact);

// The index of a row that may well exist: the first field is `first` where it is an integer, other integers are `others`,
// addresses are IPv4 or IPv6.
services::Oid sample_index(const services::Group& group, oid first, oid others, bool ipv6 = false);

// A show request that a write causes, and how many answers there are to try.
struct Question {
    std::string command;
    std::string name;
    int magic;
    int size;     // of the result
    bool is_row;  // the read of the row before the phases
    std::size_t choices;

    std::string key() const;  // the same for the same question
};
// What the backend answers to questions, by their keys: the number of an answer. The first one where it has none.
using Situation = std::map<std::string, std::size_t>;

// Whether its result is a single number; the row before the phases is none.
bool is_number(const Question& question);
// The answer to a question of that number: octets, none where it is refused.
std::optional<std::vector<std::uint8_t>> answer(const Question& question, std::size_t choice);

struct SentLine {
    int phase;
    int mode;
    std::string command;
    std::string caller;
};

// What one SET does.
struct Outcome {
    int status = 0;
    int phase = 0;  // in which the error came
    std::vector<Question> questions;
    std::vector<SentLine> lines;
};

// What every request is answered by.
class RecordingBackend : public services::Backend {
public:
    bool show(services::ShowRequest& request) override;
    bool configure(const services::ConfigRequest& request) override;
    std::optional<std::string> interface_name(std::uint32_t ifindex) override;

    const services::Registry* registry = nullptr;  // by which the read of a row is known
    Situation situation;
    std::optional<std::size_t> refused_line;  // the how-manieth, from 0
    bool interfaces_have_names = true;
    Outcome record;
};

class Probe {
public:
    // Owns services().backend and log while it exists, and leaves the library as it was after its load.
    Probe(const services::Registry& registry, const services::Library& library);
    ~Probe();
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;

    RecordingBackend backend;

    // One SET; `backend` says how it is answered.
    Outcome set(const services::Oid& name, const agent::Value& value);

private:
    const services::Library& library_;
    agent::Engine engine_;
};

}  // namespace tool
