#include "agent/output.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace agent {

void survive_closed_output() {
    std::signal(SIGPIPE, SIG_IGN);
    // open() takes the lowest free descriptor.
    int descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) descriptor = ::open("/dev/null", O_RDWR);
    if (descriptor >= 0) ::close(descriptor);
}

LineLimit::LineLimit(unsigned lines_a_second, Sink sink, Clock clock)
    : limit_(lines_a_second), sink_(std::move(sink)), clock_(std::move(clock)) {}

bool LineLimit::pass() {
    const auto now = clock_();
    if (now - second_ >= std::chrono::seconds(1)) {
        second_ = now;
        passed_ = 0;
    }
    if (passed_ == limit_) {
        ++left_out_;
        return false;
    }
    ++passed_;
    flush();
    return true;
}

void LineLimit::flush() {
    if (left_out_ == 0) return;
    sink_(std::to_string(left_out_) + (left_out_ == 1 ? " line" : " lines") + " left out: more than " +
          std::to_string(limit_) + " a second");
    left_out_ = 0;
}

}  // namespace agent
