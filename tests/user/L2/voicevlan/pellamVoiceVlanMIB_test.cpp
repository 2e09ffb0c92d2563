#include "support/recording_host.h"

namespace tests {

class VoiceVlan : public RecordingHost {
protected:
    unsigned char* const record = loaded().symbol<unsigned char>("voice_oui");
    const Oid row{0, 1, 0xe3, 0, 0, 0, 255, 255, 255, 0, 0, 0};
    const Oid other{2, 0, 0, 0, 0, 1, 255, 255, 255, 255, 255, 255};
    const std::string oui = "voice vlan mac-address 00-01-e3-00-00-00 ff-ff-ff-00-00-00";

    VoiceVlan() { clear(); }
    void clear() { std::fill_n(record, 48, static_cast<unsigned char>(0)); }
    std::string staged() const {
        const std::string text(record + 12, record + 44);
        return text.substr(0, text.find('\0'));
    }
    bool pending() const { return record[44] == 1; }
    Assignment description(const std::string& words) const {
        return {"dVoiceVlanOuiDes", row, OctetString, text(words)};
    }
    Assignment status(int value) const { return {"dVoiceVlanOuiRowStatus", row, Integer, integer(value)}; }
    using RecordingHost::write;
    int write(int phase, const Assignment& varbind) {
        return write(phase, varbind.object, varbind.index, varbind.type, varbind.value);
    }
};

TEST_F(VoiceVlan, SettingsAreCheckedInTheirOrder) {
    const auto unheard = [this] { clear(); };
    expect_checks({
        Writable("dVoiceVlanVlanId", {0}, Integer, any_number()).sends({{-1, {}, genErr}, {INT32_MIN, {}, genErr}}),
        Writable("dVoiceVlanQos", {0}, Gauge32, any_number()),
        Writable("dVoiceVlanAgingTime", {0}, Gauge32, any_number()),
        Writable("dVoiceVlanIfEnabled", {5121}, Integer, between(1, 2)).order(on_interface()),
        Writable("dVoiceVlanIfMode", {5121}, Integer, between(1, 3)).order(on_interface()),
        Writable("dVoiceVlanOuiDes", row, OctetString, words(32))
            .before(unheard)
            .order({step::type, step::column, step::index, step::value}),
        Writable("dVoiceVlanOuiRowStatus", row, Integer, between(active, destroy)).before(unheard),
    });
}

TEST_F(VoiceVlan, OuiIsAppliedByItsRowStatus) {
    EXPECT_EQ(set({description("phone"), status(createAndGo)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 " + oui + " description phone"));
    EXPECT_EQ(sent[0].caller, "write_dVoiceVlanOuiRowStatus");
    EXPECT_EQ(std::count(record, record + 48, 0), 48);
    forget();
    // The other way round, the description's RESERVE1 clears the flag: it creates the row once more.
    EXPECT_EQ(set({status(createAndGo), description(std::string(40, 'x'))}), noError);
    const std::string line = "5 " + oui + " description " + std::string(32, 'x');
    EXPECT_THAT(lines(), ElementsAre(line, line));
}

TEST_F(VoiceVlan, OuiRecordOutlivesTheRequest) {
    EXPECT_EQ(write(reserve1, description(std::string(50, 'x'))), noError);
    EXPECT_EQ(staged(), std::string(32, 'x'));
    EXPECT_FALSE(pending());
    for (const int value : {active, notInService, notReady, createAndWait}) write(reserve1, status(value));
    EXPECT_FALSE(pending());
    for (const int phase : {reserve2, action, commit, release, undo}) {
        write(phase, description("other"));
        if (phase != action) write(phase, status(createAndGo));
    }
    EXPECT_EQ(staged(), std::string(32, 'x'));
    EXPECT_FALSE(pending());
    forget();
    // A destroy keeps what is staged, its flag too: a refused createAndGo as well.
    EXPECT_EQ(set({status(destroy)}), noError);
    EXPECT_TRUE(pending());
    EXPECT_EQ(write(action, description("other")), noError);
    const std::string created =
        "voice vlan mac-address 02-00-00-00-00-01 ff-ff-ff-ff-ff-ff description " + std::string(32, 'x');
    refused_lines = {created};
    EXPECT_EQ(set("dVoiceVlanOuiRowStatus", other, Integer, integer(createAndGo)), genErr);
    EXPECT_EQ(staged(), std::string(32, 'x'));
    refused_lines.clear();
    EXPECT_EQ(set("dVoiceVlanOuiRowStatus", other, Integer, integer(createAndGo)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 no " + oui, "5 " + created, "5 " + created));
    EXPECT_EQ(staged(), "");
    // A description clears what was staged before it.
    EXPECT_EQ(write(reserve1, description("desk phone")), noError);
    EXPECT_EQ(write(reserve1, status(destroy)), noError);
    EXPECT_EQ(write(reserve1, description("any")), noError);
    EXPECT_EQ(staged(), "any");
    EXPECT_FALSE(pending());
}

}  // namespace tests
