// Show requests and configuration lines as the library sends them, for tests of the simulated switch.
#pragma once

#include "switch/simulated_switch.h"
#include "switch/table_store.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace sw {

using services::ShowRequest;
using Key = std::vector<unsigned char>;
using Log = std::vector<std::string>;

// One show request over memory of its own. `key` is moved by a GETNEXT; an empty one is sent as null.
template <class Shown>
std::optional<Value> show(Shown& shown, const std::string& name, const std::string& command, int magic, Key& key,
                          bool exact, int result_size = 512) {
    unsigned char result[512];
    std::size_t length = 0;
    ShowRequest request{
        2,     command, result, result_size, &length, key.empty() ? nullptr : key.data(), static_cast<int>(key.size()),
        magic, exact,   0,      name,        1};
    if (!shown.show(request)) return {};
    return Value(reinterpret_cast<const char*>(result), length);
}

inline std::uint32_t as_number(const std::optional<Value>& value) {
    std::uint32_t number = 0;
    EXPECT_TRUE(value && value->size() == sizeof number);
    if (value && value->size() == sizeof number) std::memcpy(&number, value->data(), sizeof number);
    return number;
}

inline bool contains(const std::string& text, const std::string& part) { return text.find(part) != text.npos; }

// A switch with a clock that stands until it is moved.
class SimulatedSwitchTest : public testing::Test {
protected:
    bool configure(int mode, const std::string& line) { return switch_.configure({mode, line, "test", 1}); }

    std::chrono::milliseconds now_{0};
    Log log_;
    SimulatedSwitch switch_{{[this] { return now_; }, [this](const std::string& line) { log_.push_back(line); }}};
};

}  // namespace sw
