#include "support/recording_host.h"

namespace tests {

class EtherLike : public RecordingHost {
protected:
    void port_is(std::uint32_t type, std::uint32_t medium) {
        answers["_get_port_info"] = [=](const services::ShowRequest& request) {
            return Answer{integer(request.magic == 1 ? type : medium), {}};
        };
    }

    static constexpr std::uint32_t kPlain = 0, kCombo = 2, kCopper = 1, kFiber = 2;
};

TEST_F(EtherLike, ShowsTheKeyedCommandForTheFirstRowToo) {
    for (const char* table : {"dot3StatsTable", "dot3PauseTable", "dot3HCStatsTable"})
        answer(table, integer(3), integer(5121));
    EXPECT_EQ(next("dot3StatsFrameTooLongs").name, oid_of("dot3StatsFrameTooLongs", {5121}));
    next("dot3PauseAdminMode", {5121});
    get("dot3HCStatsSymbolErrors", {5122});
    EXPECT_THAT(commands(), ElementsAre("show interface_uib dot3Stats 0", "show interface_uib dot3Pause 5121",
                                        "show interface_uib dot3HCStats 5122"));
    // Magic numbers count the columns that there are.
    EXPECT_EQ(shown[0].request.magic, 12);
}

TEST_F(EtherLike, CollisionsAndControlFramesAreNeverShown) {
    answer("dot3CollTable", integer(1));
    answer("dot3ControlTable", integer(1));
    for (const char* object : {"dot3CollFrequencies", "dot3ControlFunctionsSupported"}) {
        EXPECT_EQ(get(object, {5121, 1}).value, std::nullopt);
        EXPECT_EQ(next(object).value, std::nullopt);
    }
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(EtherLike, PauseModeIsFlowControl) {
    const auto pauses = [this](std::uint32_t type, std::uint32_t medium, const std::string& word) {
        port_is(type, medium);
        const auto sends = [&word](const char* line) { return Lines{"5 interface port1", line + word}; };
        expect_checks({Writable("dot3PauseAdminMode", {5121}, Integer, between(1, 4))
                           .sends({{1, sends("-1 flowcontrol off")}, {4, sends("-1 flowcontrol on")}})});
        // The second line goes out only where the first one is refused.
        const struct {
            int mode;
            std::string off, on;
        } directions[] = {{2, "flowcontrol receive off" + word, "flowcontrol send on" + word},
                          {3, "flowcontrol send off" + word, "flowcontrol receive on" + word}};
        for (const auto& [mode, off, on] : directions) {
            const auto act = [this, mode = mode](std::vector<std::string> refused) {
                forget();
                refused_lines = std::move(refused);
                return write(action, "dot3PauseAdminMode", {5121}, Integer, integer(mode));
            };
            EXPECT_EQ(act({}), noError);
            EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 " + off));
            EXPECT_EQ(act({off}), noError);
            EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 " + off, "-1 " + on));
            EXPECT_EQ(sent[2].caller, "write_dot3PauseAdminMode");
            EXPECT_EQ(act({off, on}), genErr);
            EXPECT_EQ(act({"interface port1"}), genErr);
            EXPECT_THAT(lines(), ElementsAre("5 interface port1"));
            refused_lines.clear();
        }
    };
    pauses(kPlain, kCopper, "");
    pauses(kPlain, kFiber, "");
    pauses(kCombo, kCopper, " copper");
    pauses(kCombo, kFiber, " fiber");
    pauses(kCombo, 0, " fiber");
    // Even where flow control cannot be set: the backend refuses it.
    pauses(128, kFiber, "");
}

TEST_F(EtherLike, PauseModeOfAnUnknownPortIsLeftToTheBackend) {
    EXPECT_EQ(set("dot3PauseAdminMode", {9999}, Integer, integer(4)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface ", "-1 flowcontrol on"));
    EXPECT_EQ(sent[0].caller, "_enter_intf");
    EXPECT_EQ(commands().back(), "show swport type-medium 9999");
}

}  // namespace tests
