// The kernel's files and uptime as a test sets them. The test executable defines fopen() and sysinfo() itself, which
// the library finds before libc's: while a FakeProc exists, what the library reads under /proc/ is the test's.
#pragma once

#include <map>
#include <string>

namespace tests {

class FakeProc {
public:
    FakeProc();
    ~FakeProc();
    FakeProc(const FakeProc&) = delete;
    FakeProc& operator=(const FakeProc&) = delete;

    // By path: those under /proc/, which can't be opened unless they are here, and any others.
    std::map<std::string, std::string> files;
    std::map<std::string, int> opened;  // how often each was, or would have been

    // Seconds; each FakeProc begins an hour after the last one, when everything read before it is old.
    long uptime;
    bool has_uptime = true;  // false: sysinfo() fails
};

}  // namespace tests
