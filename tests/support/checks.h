// The checks of a write method as data, for RecordingHost::expect_checks:
//
//     expect_checks({
//         {"ifTestStatus", {1}, Integer, between(1, 2)},
//         Writable("swDdmPortState", {5121}, Integer, between(1, 2)).order(on_interface()),
//     });
#pragma once

#include "framework/snmp.h"
#include "services/registry.h"

#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace tests {

using services::Oid;
using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;
using namespace switchmib;  // the enums of framework/snmp.h: Integer, wrongValue, createAndGo, action, ...

Bytes integer(std::int64_t number);  // 4 octets in machine order
Bytes text(const std::string& octets);
Bytes port_list(std::initializer_list<int> members);  // 12 octets
Bytes address_record(const Bytes& octets);            // the host's, 28 octets: IPv4, IPv6 or none by its length
template <class Element>
std::vector<Element> join(std::vector<Element> a, const std::vector<Element>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The value of a varbind: a number of 4 octets, a text, or octets.
struct Value {
    Bytes octets;

    template <class Number>
    requires(std::integral<Number> || std::is_enum_v<Number>) Value(Number number)
        : octets(integer(static_cast<std::int64_t>(number))) {}
    Value(const char* characters) : octets(text(characters)) {}
    Value(const std::string& characters) : octets(text(characters)) {}
    Value(Bytes given) : octets(std::move(given)) {}
    bool operator==(const Value&) const = default;
};

// The values that a write method accepts and refuses. Numbers have 4 octets; other lengths are refused at step::length.
class Values {
public:
    // A further value that is accepted, or refused with an error (by default that of step::value).
    Values& good(const Value& value);
    Values& bad(const Value& value, std::optional<int> error = {});

    friend Values between(std::int64_t low, std::int64_t high);  // numbers; the ones beyond both ends are refused
    friend Values any_number();
    friend Values octets(std::size_t shortest, std::size_t longest);
    friend Values any_octets();
    // A text that goes into a command: control characters are refused at step::value, and the line must hold the whole
    // of it. Lengths from 0.
    friend Values words(std::size_t longest);
    friend Values any_words();

private:
    friend class Writable;
    friend class CheckRun;
    struct Bad {
        Value value;
        std::optional<int> error;
    };
    bool numbers_ = false;
    bool words_ = false;
    bool bounded_ = true;
    std::int64_t low_ = 0;
    std::int64_t high_ = 0;
    std::vector<Value> good_;
    std::vector<Bad> bad_;
};
Values between(std::int64_t low, std::int64_t high);
Values any_number();
Values octets(std::size_t shortest, std::size_t longest);
Values any_octets();
Values words(std::size_t longest);
Values any_words();

// One check of a write method: what breaks it, and the error that it answers.
struct Step {
    enum Kind { type, length, column, index, interface, value, other };
    Kind kind;
    int error;
    std::function<void()> violate = {};               // of `other`: changes the script so that the check fails
    std::vector<int> phases = {0, 1, 2, 3, 4, 5, 6};  // in which it is made

    Step answers(int other_error) const { return {kind, other_error, violate, phases}; }
    Step in(std::vector<int> some_phases) const { return {kind, error, violate, std::move(some_phases)}; }
};
using Order = std::vector<Step>;

namespace step {
inline const Step type{Step::type, wrongType};
inline const Step length{Step::length, wrongLength};
inline const Step column{Step::column, noSuchName};       // the OID reaches the column
inline const Step index{Step::index, noSuchName};         // the index has the key's size
inline const Step interface { Step::interface, genErr };  // the interface has a name
inline const Step value{Step::value, wrongValue};
// A check of the module's own; `violate` scripts the backend so that it fails.
inline Step other(int error, std::function<void()> violate) { return {Step::other, error, std::move(violate)}; }
}  // namespace step

Order usual();         // type, length, column, index, value
Order on_interface();  // the interface before the value
Order unparsed();      // no index

// An object with its write method's checks.
class Writable {
public:
    // `index` is that of a row which is accepted. {0} is a scalar's, whose OID is not checked.
    Writable(std::string object, Oid index, std::uint8_t type, Values values);

    Writable& order(Order steps) { return with(order_, std::move(steps)); }  // usual() when it is not given

    // What each value sends in ACTION, and the error after it. Values that are not listed may send anything. Without
    // this too, a refused line must be the last, with genErr, and lines must name "write_<object>" as their caller.
    struct Sending {
        Value value;
        Lines lines;
        int error = noError;
    };
    Writable& sends(std::vector<Sending> sendings) { return with(sendings_, std::move(sendings)); }
    Writable& sends_nothing() { return with(sends_nothing_, true); }

    // Writes that pass the checks are refused in these phases, and send nothing.
    Writable& refused(std::vector<int> phases = {action}) { return with(refused_in_, std::move(phases)); }

    // What a refused first line does, when it does not end the write with genErr.
    enum FirstLine { ends, succeeds, is_ignored };
    Writable& refused_first_line(FirstLine what) { return with(first_line_, what); }

    // The host passes a current value.
    Writable& in_existing_row() { return with(existing_, true); }
    // Done before each write.
    Writable& before(std::function<void()> prepare) { return with(prepare_, std::move(prepare)); }
    // What RecordingHost::log() is after each refusal.
    Writable& logs(std::map<Step::Kind, std::string> texts) { return with(logs_, std::move(texts)); }

private:
    friend class CheckRun;
    template <class Field, class Given>
    Writable& with(Field& field, Given given) {
        field = std::move(given);
        return *this;
    }
    std::string object_;
    Oid index_;
    std::uint8_t type_;
    Values values_;
    Order order_;
    bool scalar_;
    std::optional<std::vector<Sending>> sendings_;
    bool sends_nothing_ = false;
    std::vector<int> refused_in_;
    FirstLine first_line_ = ends;
    bool existing_ = false;
    std::function<void()> prepare_;
    std::optional<std::map<Step::Kind, std::string>> logs_;
};

}  // namespace tests
