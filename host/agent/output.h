// The output of an agent that runs for a long time.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace agent {

// From now on a write to an output that is closed fails and does not end the process. Descriptors 0 to 2 that are not
// open are opened on /dev/null, so that no socket takes their place.
void survive_closed_output();

// Lets at most so many lines a second pass and counts the others.
class LineLimit {
public:
    // Takes the line that says how many were left out, before the next one that passes.
    using Sink = std::function<void(const std::string&)>;
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    LineLimit(unsigned lines_a_second, Sink sink, Clock clock = std::chrono::steady_clock::now);

    // Whether a line may go out.
    bool pass();
    // Says what was left out so far, if anything.
    void flush();

private:
    unsigned limit_;
    Sink sink_;
    Clock clock_;
    std::chrono::steady_clock::time_point second_{};  // when the current second began
    unsigned passed_ = 0;                             // lines in it
    std::uint64_t left_out_ = 0;
};

}  // namespace agent
