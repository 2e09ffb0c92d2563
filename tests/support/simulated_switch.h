// The library on the simulated switch: objects are read and set by name, as a manager does.
#pragma once

#include "agent/engine.h"
#include "framework/snmp.h"
#include "services/registry.h"
#include "switch/area.h"
#include "switch/simulated_switch.h"
#include "switch/values.h"

#include <gtest/gtest.h>

#include <chrono>
#include <concepts>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

namespace sw {

using std::chrono::hours, std::chrono::seconds;
using switchmib::createAndGo, switchmib::destroy;

// A value: a number, octets, or none where there is no such instance.
struct Fact {
    std::variant<std::monostate, std::int64_t, std::string> is{};

    Fact() = default;
    template <std::convertible_to<std::int64_t> Number>
    Fact(Number number) : is(static_cast<std::int64_t>(number)) {}
    Fact(std::string octets) : is(std::move(octets)) {}
    Fact(const char* text) : is(std::string(text)) {}

    std::int64_t number() const { return std::get<std::int64_t>(is); }
    bool operator==(const Fact&) const = default;
};
std::ostream& operator<<(std::ostream&, const Fact&);
inline const Fact kNone{};

// One value, or several that are set one after another.
struct Facts {
    std::vector<Fact> each;

    template <std::convertible_to<Fact> One>
    Facts(One one) : each{Fact(one)} {}
    Facts(std::initializer_list<Fact> several) : each(several) {}
};

// A SET of one object. Without a reason it is accepted and reads back; with one it changes nothing, and the switch's
// refusal names the reason.
struct Setting {
    std::string object;
    Index index;
    Facts values;
    const char* reason = nullptr;
};

struct Assigned {
    std::string object;
    Index index;
    Fact value;
};

// A clock that tests move, and a log of what the switch refuses, which has to be empty at the end of a test.
class OnSwitch : public testing::Test {
protected:
    explicit OnSwitch(const Size& size = {}, std::chrono::milliseconds now = {});
    ~OnSwitch() override;

    // A scalar has the index 0. Numbers are signed as their type is.
    Fact get(const std::string& object, const Index& index = {0});
    // The indexes under which a column, or a scalar, is met by GETNEXT.
    std::vector<Index> rows(const std::string& object);
    // The index of the row after one; empty at the column's end.
    Index next(const std::string& object, const Index& index);
    // One request; its error number.
    int set(const std::vector<Assigned>& varbinds);
    // One request that sets objects in one row.
    int set_row(const Index& index, const std::vector<std::pair<std::string, Fact>>& facts);
    // A row that is made by its status alone is active then; one that is removed is gone.
    void make_row(const std::string& status, const Index& index);
    void remove_row(const std::string& status, const Index& index);
    void expect(const std::vector<Setting>& settings);
    // A SET, by its error number, or a line was refused for that reason. Clears the log.
    void expect_refused(int status, const std::string& reason);
    void expect_refused(int mode, const std::string& line, const std::string& reason);
    // What objects have in one row; kNone: they have none.
    void expect_row(const Index& index, const std::vector<std::pair<std::string, Fact>>& facts);
    // Each of the objects has so many rows.
    void expect_rows(std::size_t count, const std::vector<std::string>& objects);
    // Everything that the switch serves, by name and index.
    std::map<std::string, agent::Value> everything();

    // Lines of modes 5 and -1, as commands make them.
    bool configure(int mode, const std::string& line) { return switch_.configure({mode, line, "test", 1}); }

    // Fails the test when there is none of that name.
    const services::Object& object(const std::string& name) const;

    std::chrono::milliseconds now_;
    std::vector<std::string> log_;
    SimulatedSwitch switch_;
    const services::Registry& registry_;
    agent::Engine engine_;

private:
    services::Oid name_of(const std::string& object, const Index& index) const;
};

// The index of a port, which is its ifIndex.
inline Index port(std::uint32_t number) { return {kPortIfIndexBase + number}; }
// A port list of 12 octets.
std::string ports(std::initializer_list<std::uint32_t> members);

inline bool contains(const std::string& text, const std::string& part) { return text.find(part) != text.npos; }

}  // namespace sw
