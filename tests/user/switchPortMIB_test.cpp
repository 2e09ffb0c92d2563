#include "support/recording_host.h"

namespace tests {

class SwitchPorts : public RecordingHost {
protected:
    // What _get_port_info tells of every port.
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
        return "error " + std::to_string(error) +
               (lines() == std::vector<std::string>{"5 interface port1"} ? " entered" : "");
    }
    int check(const std::string& object, std::int32_t value) {
        return write(reserve1, object, {5121}, Integer, integer(value));
    }

    static constexpr std::uint32_t kPlain = 0, kCombo = 2, kCopper = 1, kFiber = 2;
};

TEST_F(SwitchPorts, AreShownWithAFormOfTheirOwnForTheFirstRow) {
    answer("swPortTable", integer(1), integer(5121));
    EXPECT_EQ(next("swPortDuplex").name, oid_of("swPortDuplex", {5121}));
    get("swPortDuplex", {5121});
    answer("switchPortMIBGlobals", integer(26));
    EXPECT_EQ(get("swPortTableNumber", {0}).value, integer(26));
    EXPECT_THAT(commands(),
                ElementsAre("show swport swport_table", "show swport swport_table 5121", "show swport table_number"));
}

TEST_F(SwitchPorts, AreLookedUpWithTheirOwnRequest) {
    port_is(kPlain, kCopper);
    check("swPortSpeed", 1);
    ASSERT_EQ(shown.size(), 2u);
    const services::ShowRequest& lookup = shown[0].request;
    EXPECT_EQ(lookup.command, "show swport type-medium 5121");
    EXPECT_EQ(lookup.name, "_get_port_info");
    EXPECT_EQ(lookup.request_class, 2u);
    EXPECT_EQ(lookup.result_size, 4);
    EXPECT_EQ(lookup.key, nullptr);
    EXPECT_EQ(lookup.key_size, 0);
    EXPECT_EQ(lookup.exact, 1);
    EXPECT_EQ(lookup.magic, 1);
    EXPECT_EQ(shown[1].request.magic, 2);
}

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
        port_is(kPlain, kCopper);
        EXPECT_EQ(check("swPortSpeed", value), noError);
        EXPECT_EQ(act("swPortSpeed", value), plain_copper);
        port_is(kPlain, kFiber);
        EXPECT_EQ(act("swPortSpeed", value), plain_fiber);
        port_is(kCombo, kCopper);
        EXPECT_EQ(act("swPortSpeed", value), combo_copper);
        port_is(kCombo, kFiber);
        EXPECT_EQ(act("swPortSpeed", value), combo_fiber);
    }
    for (const std::int32_t value : {-4, 0, 13, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(check("swPortSpeed", value), wrongValue);
        EXPECT_EQ(act("swPortSpeed", value), "error 10");
    }
    for (const std::uint32_t fixed : {16u, 32u, 64u}) {
        port_is(fixed, kCopper);
        EXPECT_EQ(check("swPortSpeed", 1), noError);
        EXPECT_EQ(act("swPortSpeed", 1), "error 17 entered");
    }
}

TEST_F(SwitchPorts, Duplex) {
    port_is(kPlain, kCopper);
    EXPECT_EQ(act("swPortDuplex", 1), "-1 duplex full");
    EXPECT_EQ(act("swPortDuplex", 2), "-1 duplex half");
    EXPECT_EQ(act("swPortDuplex", 3), "-1 duplex auto");
    EXPECT_EQ(check("swPortDuplex", 0), wrongValue);
    EXPECT_EQ(check("swPortDuplex", 4), wrongValue);
    port_is(kCombo, kCopper);
    EXPECT_EQ(act("swPortDuplex", 3), "-1 duplex auto copper");
    // Capability before range, and both before the phase.
    port_is(kCombo, kFiber);
    EXPECT_EQ(check("swPortDuplex", 4), notWritable);
}

TEST_F(SwitchPorts, FlowControl) {
    port_is(kPlain, kFiber);
    EXPECT_EQ(act("swPortFlowControlSend", 1), "-1 flowcontrol send on");
    EXPECT_EQ(act("swPortFlowControlReceive", 0), "-1 flowcontrol receive off");
    port_is(kCombo, kCopper);
    EXPECT_EQ(act("swPortFlowControlSend", 0), "-1 flowcontrol send off copper");
    EXPECT_EQ(sent[1].caller, "write_swPortFlowControlSend");
    port_is(kCombo, kFiber);
    EXPECT_EQ(act("swPortFlowControlReceive", 1), "-1 flowcontrol receive on fiber");
    EXPECT_EQ(sent[1].caller, "write_swPortFlowControlReceive");
    EXPECT_EQ(check("swPortFlowControlSend", 2), wrongValue);
    EXPECT_EQ(check("swPortFlowControlSend", -1), wrongValue);
    port_is(128, kCopper);
    EXPECT_EQ(check("swPortFlowControlReceive", 2), notWritable);
}

TEST_F(SwitchPorts, Medium) {
    port_is(kCombo, kCopper);
    EXPECT_EQ(act("swPortMedium", 1), "-1 media-type fiber auto-failover");
    EXPECT_EQ(act("swPortMedium", 2), "-1 media-type copper auto-failover");
    EXPECT_EQ(act("swPortMedium", 3), "-1 media-type fiber");
    EXPECT_EQ(act("swPortMedium", 4), "-1 media-type copper");
    EXPECT_EQ(check("swPortMedium", 5), wrongValue);
    EXPECT_EQ(check("swPortMedium", 0), wrongValue);
    port_is(kPlain, kCopper);
    EXPECT_EQ(check("swPortMedium", 1), noError);
    EXPECT_EQ(act("swPortMedium", 1), "error 17 entered");
}

TEST_F(SwitchPorts, BreakoutIsAGlobalLine) {
    port_is(1u << 28, kFiber);
    EXPECT_EQ(set("swPortBreakout", {5121}, Integer, integer(1)), noError);
    EXPECT_EQ(set("swPortBreakout", {5121}, Integer, integer(2)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface breakout port port1", "5 no interface breakout port port1"));
    EXPECT_EQ(check("swPortBreakout", 0), noError);
    EXPECT_EQ(act("swPortBreakout", 0), "error 10");
    EXPECT_EQ(check("swPortBreakout", 3), wrongValue);
    EXPECT_EQ(check("swPortBreakout", -1), wrongValue);
    port_is(kCombo, kFiber);
    EXPECT_EQ(check("swPortBreakout", 3), notWritable);
}

TEST_F(SwitchPorts, FrameSizeIgnoresTheRefusedInterfaceLine) {
    refused_lines = {"interface port1"};
    EXPECT_EQ(act("swPortMaxRcvFrameSize", 9216), "-1 max-rcv-frame-size 9216");
    EXPECT_EQ(act("swPortMaxRcvFrameSize", -1), "-1 max-rcv-frame-size -1");
    refused_lines = {"max-rcv-frame-size 9216"};
    EXPECT_EQ(act("swPortMaxRcvFrameSize", 9216), "error 5");
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(SwitchPorts, EveryWriterLooksTheNameUpBeforeAnythingOfItsOwn) {
    port_is(128, kFiber);
    for (const char* object : {"swPortDuplex", "swPortSpeed", "swPortFlowControlSend", "swPortFlowControlReceive",
                               "swPortMedium", "swPortBreakout", "swPortMaxRcvFrameSize"}) {
        SCOPED_TRACE(object);
        EXPECT_EQ(write(reserve1, object, {99}, OctetString, integer(99)), wrongType);
        EXPECT_EQ(write(reserve1, object, {99}, Integer, {1}), wrongLength);
        EXPECT_EQ(write(reserve1, object, {99, 1}, Integer, integer(99)), noSuchName);
        EXPECT_EQ(write(reserve1, object, {99}, Integer, integer(99)), genErr);
    }
    EXPECT_THAT(shown, IsEmpty());
    EXPECT_THAT(sent, IsEmpty());
    // Nothing comes behind a refused interface line, and a refused lookup counts as 0.
    answers.erase("_get_port_info");
    refused_lines = {"interface port1"};
    EXPECT_EQ(write(action, "swPortSpeed", {5121}, Integer, integer(1)), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1"));
    EXPECT_EQ(check("swPortDuplex", 1), notWritable);
}

}  // namespace tests
