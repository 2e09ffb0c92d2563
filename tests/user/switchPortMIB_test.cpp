#include "support/recording_host.h"

namespace tests {

class SwitchPorts : public RecordingHost {
protected:
    // What _get_port_info answers for every port.
    void port_is(std::uint32_t type, std::uint32_t medium) {
        answers["_get_port_info"] = [=](const services::ShowRequest& request) {
            return Answer{integer(request.magic == 1 ? type : medium), {}};
        };
    }
    // The sub-command of a SET in ACTION, or "error N" and what was sent before it.
    std::string act(const std::string& object, std::int32_t value) {
        forget();
        const int error = write(action, object, {5121}, Integer, integer(value));
        if (error == noError && lines().size() == 2 && lines()[0] == "5 interface port1") return lines()[1];
        return "error " + std::to_string(error) + (lines() == Lines{"5 interface port1"} ? " entered" : "");
    }
    int check(const std::string& object, std::int32_t value) {
        return write(reserve1, object, {5121}, Integer, integer(value));
    }

    static constexpr std::uint32_t kPlain = 0, kCombo = 2, kCopper = 1, kFiber = 2;
};

TEST_F(SwitchPorts, Speed) {
    const struct {
        std::int32_t value;
        const char* plain_copper;
        const char* plain_fiber;
        const char* combo_copper;
        const char* combo_fiber;
    } cases[] = {
        {-3, "-1 speed 1000", "-1 speed 1000", "error 10 entered", "-1 speed 1000 fiber"},
        {-2, "-1 speed 1000 slave", "-1 speed 1000 slave", "-1 speed 1000 slave copper", "error 10 entered"},
        {-1, "-1 speed 1000 master", "-1 speed 1000 master", "-1 speed 1000 master copper", "error 10 entered"},
        {1, "-1 speed 10", "-1 speed 10", "-1 speed 10 copper", "error 10 entered"},
        {2, "-1 speed 100", "-1 speed 100", "-1 speed 100 copper", "error 10 entered"},
        {3, "-1 speed 1000", "-1 speed 1000", "error 10 entered", "error 10 entered"},
        {4, "error 10 entered", "error 10 entered", "error 10 entered", "error 10 entered"},
        {5, "error 10 entered", "error 10 entered", "error 10 entered", "error 10 entered"},
        {6, "-1 speed auto", "-1 speed auto", "-1 speed auto copper", "-1 speed auto fiber"},
        {7, "-1 speed auto 10", "error 10 entered", "-1 speed auto 10 copper", "error 10 entered"},
        {8, "-1 speed auto 100", "error 10 entered", "-1 speed auto 100 copper", "error 10 entered"},
        {9, "-1 speed auto 1000", "error 10 entered", "-1 speed auto 1000 copper", "error 10 entered"},
        {10, "-1 speed auto 10,100", "error 10 entered", "-1 speed auto 10,100 copper", "error 10 entered"},
        {11, "-1 speed auto 10,1000", "error 10 entered", "-1 speed auto 10,1000 copper", "error 10 entered"},
        {12, "-1 speed auto 100,1000", "error 10 entered", "-1 speed auto 100,1000 copper", "error 10 entered"},
    };
    for (const auto& [value, plain_copper, plain_fiber, combo_copper, combo_fiber] : cases) {
        SCOPED_TRACE(value);
        const std::tuple<std::uint32_t, std::uint32_t, const char*> ports[] = {{kPlain, kCopper, plain_copper},
                                                                               {kPlain, kFiber, plain_fiber},
                                                                               {kCombo, kCopper, combo_copper},
                                                                               {kCombo, kFiber, combo_fiber}};
        for (const auto& [type, medium, outcome] : ports) {
            port_is(type, medium);
            EXPECT_EQ(act("swPortSpeed", value), outcome);
        }
    }
    for (const std::uint32_t fixed : {16u, 32u, 64u}) {
        port_is(fixed, kCopper);
        EXPECT_EQ(check("swPortSpeed", 1), noError);
        EXPECT_EQ(act("swPortSpeed", 1), "error 17 entered");
    }
}

TEST_F(SwitchPorts, WritesAreCheckedInTheirOrder) {
    const auto is = [this](std::uint32_t type, std::uint32_t medium) { return [=, this] { port_is(type, medium); }; };
    // Capability before range, and both before the phase.
    const auto needs = [&](std::uint32_t type, std::uint32_t medium) {
        Order order = on_interface();
        order.insert(order.end() - 1, step::other(notWritable, is(type, medium)));
        return order;
    };
    const auto flow_control = [&](const char* object) {
        return Writable(object, {5121}, Integer, between(0, 1)).order(needs(128, kCopper)).before(is(kPlain, kFiber));
    };
    const Lines entered{"5 interface port1"};
    expect_checks({
        flow_control("swPortFlowControlSend"),
        flow_control("swPortFlowControlReceive"),
        Writable("swPortDuplex", {5121}, Integer, between(1, 3))
            .order(needs(kPlain, kFiber))
            .before(is(kPlain, kCopper)),
        // The value 0 is in the range, and is refused nevertheless.
        Writable("swPortSpeed", {5121}, Integer, between(-3, 12).bad(0))
            .order(on_interface())
            .before(is(kPlain, kCopper)),
        // Unlike the other capabilities, this one is looked at after the interface line.
        Writable("swPortMedium", {5121}, Integer, between(1, 4))
            .order(on_interface())
            .before(is(kPlain, kCopper))
            .sends({{1, entered, notWritable}, {4, entered, notWritable}}),
        // 0 passes the checks, and fails in ACTION.
        Writable("swPortBreakout", {5121}, Integer, between(0, 2))
            .order(needs(kCombo, kFiber))
            .before(is(1u << 28, kFiber))
            .sends({{0, {}, wrongValue}}),
        Writable("swPortMaxRcvFrameSize", {5121}, Integer, any_number())
            .order(on_interface())
            .refused_first_line(Writable::is_ignored),
    });
}

TEST_F(SwitchPorts, AreLookedUpOnlyOnceTheyHaveAName) {
    for (const char* object : {"swPortDuplex", "swPortSpeed", "swPortFlowControlSend", "swPortMedium", "swPortBreakout",
                               "swPortMaxRcvFrameSize"})
        EXPECT_EQ(write(reserve1, object, {99}, Integer, integer(1)), genErr) << object;
    EXPECT_THAT(shown, IsEmpty());
    // A refused lookup counts as 0.
    EXPECT_EQ(check("swPortDuplex", 1), notWritable);
}

}  // namespace tests
