// What holds for every object of the library, on the simulated switch: GET, GETNEXT and GETBULK say the same, no read
// asks the backend more often than it must, and what is registered writable can be set or says why not.
#include "agent/responder.h"
#include "framework/snmp.h"
#include "support/fake_proc.h"
#include "support/simulated_switch.h"
#include "tool/explain.h"

#include <fmt/format.h>

#include <gmock/gmock.h>
#include <fstream>

#include <set>
#include <sstream>

namespace sw {
namespace {

using Oid = services::Oid;
using Asked = std::map<std::pair<std::string, int>, std::size_t>;  // how often, by group and magic number

class Whole : public OnSwitch, public services::Backend {
protected:
    Whole() {
        now_ = std::chrono::hours(100);
        for (const char* path : {"/proc/net/snmp", "/proc/net/snmp6", "/proc/sys/net/ipv6/conf/all/forwarding",
                                 "/proc/sys/net/ipv6/conf/default/hop_limit"}) {
            std::ostringstream text;
            text << std::ifstream(path).rdbuf();
            machine_.files[path] = text.str();
        }
        services::services().backend = this;
    }

    bool show(services::ShowRequest& request) override {
        ++asked_[{request.name, request.magic}];
        return switch_.show(request);
    }
    bool configure(const services::ConfigRequest& request) override { return switch_.configure(request); }
    std::optional<std::string> interface_name(std::uint32_t ifindex) override {
        return switch_.interface_name(ifindex);
    }
    using OnSwitch::configure;

    std::vector<agent::Varbind> walk() {
        std::vector<agent::Varbind> found;
        for (Oid at{0, 0};; at = found.back().name) {
            const agent::Varbind next = engine_.next(at);
            if (next.value.is_exception()) return found;
            found.push_back(next);
        }
    }
    std::vector<agent::Varbind> walk_in_bulk(std::int32_t repetitions);

    tests::FakeProc machine_;  // its statistics do not move
    Asked asked_;
};

std::vector<agent::Varbind> Whole::walk_in_bulk(std::int32_t repetitions) {
    agent::Responder responder(engine_, {});
    agent::Message request{
        .community = "public", .pdu = agent::kGetBulkRequest, .error_index = repetitions, .varbinds = {{{0, 0}, {}}}};
    std::vector<agent::Varbind> found;
    while (true) {
        const auto response = responder.respond(agent::encode(request));
        if (!response) return found;
        for (agent::Varbind& varbind : agent::decode(*response).varbinds) {
            if (varbind.value.is_exception()) return found;
            found.push_back(std::move(varbind));
        }
        request.varbinds[0].name = found.back().name;
    }
}

TEST_F(Whole, IsReadAlikeByGetGetNextAndGetBulk) {
    const std::vector<agent::Varbind> all = walk();
    EXPECT_GT(all.size(), 7000u);
    for (const agent::Varbind& varbind : all)
        ASSERT_EQ(engine_.get(varbind.name), varbind) << registry_.format(varbind.name);
    for (const std::int32_t repetitions : {1, 10, 100}) EXPECT_EQ(walk_in_bulk(repetitions), all) << repetitions;
}

TEST_F(Whole, AsksAtMostOnceForARequest) {
    for (const services::Object& object : registry_.objects()) {
        SCOPED_TRACE(object.name);
        std::vector<Index> indexes{{}, {0}, {1}, {5121}, {1, 1}, next(object.name, {})};
        for (const Index& index : indexes) {
            const Oid name = join({object.oid(), index});
            asked_.clear();
            engine_.get(name);
            EXPECT_LE(asked_.size(), object.group->answers ? 1u : 0u);
            for (const auto& [what, times] : asked_) EXPECT_EQ(times, 1u);
            asked_.clear();
            engine_.next(name);  // perhaps in a later object
            for (const auto& [what, times] : asked_) EXPECT_EQ(times, 1u) << what.first;
            EXPECT_TRUE(object.group->answers || !asked_.contains({object.group->name, object.entry.magic}));
        }
    }
}

// A walk of a column with n rows costs n requests and the one that finds its end, a scalar one; what the library answers
// by itself, or never, costs none.
TEST_F(Whole, AsksOnceForEachInstanceOfAWalk) {
    std::map<std::string, std::size_t> rows;
    for (const agent::Varbind& varbind : walk()) ++rows[registry_.find(varbind.name)->name];
    std::set<std::string> by_itself;
    for (const services::Object& object : registry_.objects()) {
        const auto asked = asked_.find({object.group->name, object.entry.magic});
        if (asked != asked_.end()) {
            EXPECT_EQ(asked->second, object.group->is_table ? rows[object.name] + 1 : 1) << object.name;
        } else if (rows.contains(object.name)) {
            by_itself.insert(object.group->name);
        }
    }
    // Statistics of the kernel, and constants.
    EXPECT_THAT(by_itself,
                testing::ElementsAre("corvinPrivateVlanMIBGlobals", "icmpMsgStatsTable", "icmpStatsTable", "ipGlobals",
                                     "ipSystemStatsTable", "pBridgeMIBGlobals", "qBridgeMIBGlobals"));
}

}  // namespace
}  // namespace sw
