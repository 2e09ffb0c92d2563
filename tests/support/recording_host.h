// The host of the module tests: loads the built library once, answers show requests from a script and records what the
// library sends. A test scripts the answers, does one request, and compares.
#pragma once

#include "agent/engine.h"
#include "framework/host.h"
#include "framework/snmp.h"
#include "services/library.h"
#include "services/registry.h"
#include "services/services.h"
#include "support/checks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tests {

// A loaded library with what it registered.
struct Loaded {
    services::Library library;
    std::vector<services::Registration> registrations;
    services::Registry registry;
    explicit Loaded(const char* path);
    // Finds a registered object; fails the test when there is none.
    const services::Object& object(const std::string& name) const;
    template <class T>
    T* symbol(const std::string& name) const {
        void* address = library.symbol(name);
        EXPECT_NE(address, nullptr) << name;
        return static_cast<T*>(address);
    }
};
Loaded& loaded();  // the library under test; one for the process
Loaded& probe();   // the framework with a module for its tests

// A show request as it came, with copies of what it pointed at.
struct Shown {
    services::ShowRequest request;
    Bytes key;
    std::string command() const { return request.command; }
};

// A line as "mode command", "5 interface port1"; callers apart.
struct Sent {
    std::string line;
    std::string caller;
};

// Reads and SETs go to the library as an agent would send them. A test fails when a line is sent in another phase than
// ACTION, or holds a control character.

class RecordingHost : public ::testing::Test, public services::Backend {
protected:
    explicit RecordingHost(const Loaded& library = loaded());
    ~RecordingHost() override;

    // --- script -----------------------------------------------------------------------------------------------------
    // An answer to a show request: the value (none: refused) and for GETNEXT what the key becomes.
    struct Answer {
        std::optional<Bytes> value;
        Bytes next_key;
    };
    // By the name that the request carries (table, group or lookup); an unscripted name is refused.
    std::map<std::string, std::function<Answer(const services::ShowRequest&)>> answers;
    void answer(const std::string& name, Bytes value, Bytes next_key = {});
    // Lines (without their mode) that the backend refuses.
    std::vector<std::string> refused_lines;
    std::optional<std::size_t> refused_line;  // and the how-manieth of what is sent from now on, from 0
    // Other phases that may configure.
    std::set<int> may_configure_in = {action};
    // Names of interfaces; by default ifIndex 5121 and up are port1 and up, 1025 and up vlan1 and up.
    std::map<std::uint32_t, std::string> interface_names;
    bool interfaces_have_names = true;  // false: every lookup fails

    // --- requests ---------------------------------------------------------------------------------------------------
    // The result of one read method call.
    struct ReadResult {
        std::optional<Bytes> value;
        Oid name;                // as the read left it
        WriteMethod* writer;     // as the slot was left; kUntouched when the read didn't touch it
        unsigned char* address;  // what the read method returned
    };
    static WriteMethod* const kUntouched;
    // `object` is a registered name; `index` follows its OID (for a scalar 0 is added).
    ReadResult get(const std::string& object, const Oid& index = {}) { return read(object, index, 1); }
    ReadResult next(const std::string& object, const Oid& index = {}) { return read(object, index, 0); }
    // The same with another magic in the entry, and with any OID.
    ReadResult read(const std::string& object, const Oid& index, int exact, std::optional<int> magic = {});
    ReadResult read_name(const std::string& object, const Oid& name, int exact, std::optional<int> magic = {});

    // One phase of a SET through the write method that a GET hands out.
    int write(int phase, const std::string& object, const Oid& index, std::uint8_t type, const Bytes& value,
              unsigned char* state = nullptr);
    int write_name(int phase, const std::string& object, const Oid& name, std::uint8_t type, const Bytes& value,
                   unsigned char* state = nullptr);
    // A whole SET as the agent does it; the answered error number.
    struct Assignment {
        std::string object;
        Oid index;
        std::uint8_t type;
        Bytes value;
    };
    int set(const std::vector<Assignment>& varbinds);
    int set(const std::string& object, const Oid& index, std::uint8_t type, const Bytes& value) {
        return set({{object, index, type, value}});
    }

    // Every write method must make its checks in their order, alone and before the later ones, in every phase; accept
    // its good values, and send lines in ACTION only.
    void expect_checks(const std::vector<Writable>& writables);

    // --- record -----------------------------------------------------------------------------------------------------
    std::vector<Shown> shown;
    std::vector<Sent> sent;
    std::vector<services::LogLine> logged;
    std::vector<std::string> lines() const;     // of `sent`
    std::vector<std::string> commands() const;  // of `shown`
    void forget();                              // clears the record, keeps the script
    virtual std::string log() const;            // the texts of `logged`

    Oid oid_of(const std::string& object, const Oid& index = {}) const;

private:
    friend class CheckRun;
    const Loaded& library_;
    std::map<std::string, WriteMethod*> writers_;  // by object, as their reads handed them out

    bool show(services::ShowRequest& request) override;
    bool configure(const services::ConfigRequest& request) override;
    std::optional<std::string> interface_name(std::uint32_t ifindex) override;
    WriteMethod* writer_of(const std::string& object, const Oid& name);
    void expect_lines_only_from(std::size_t first, int phase) const;
};

using ::testing::ElementsAre;
using ::testing::IsEmpty;

}  // namespace tests
