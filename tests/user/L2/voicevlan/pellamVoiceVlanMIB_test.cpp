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

TEST_F(VoiceVlan, CommandsAndFirstRows) {
    const Oid phone{5121, 0, 1, 0xe3, 0xa, 0xb, 0xc};
    next("dVoiceVlanOuiDes");
    get("dVoiceVlanOuiRowStatus", row);
    next("dVoiceVlanIfIndex");
    get("dVoiceVlanIfMode", {5121});
    next("dVoiceVlanDeviceIfIndex");
    get("dVoiceVlanDeviceMac", phone);
    next("dVoiceVlanLldpMedDeviceColumn8");
    get("dVoiceVlanLldpMedDeviceColumn2", {3});
    get("dVoiceVlanStatusText1", {0});
    EXPECT_THAT(
        commands(),
        ElementsAre("show snmp voice-vlan oui", "show snmp voice-vlan oui 00-01-e3-00-00-00 ff-ff-ff-00-00-00",
                    "show snmp voice-vlan port", "show snmp voice-vlan port 5121", "show snmp voice-vlan device",
                    "show snmp voice-vlan device 5121 00-01-e3-0a-0b-0c", "show snmp voice-vlan lldpmed device",
                    "show snmp voice-vlan lldpmed device 3", "show snmp voice-vlan"));
    EXPECT_EQ(shown[1].key, (Bytes{0, 1, 0xe3, 0, 0, 0, 255, 255, 255, 0, 0, 0}));
    // The key ends with a whole word.
    EXPECT_EQ(shown[5].key, (Bytes{1, 20, 0, 0, 0, 1, 0xe3, 0xa, 0xb, 0xc, 0, 0}));
    EXPECT_EQ(shown[8].request.magic, 4);
    forget();
    for (const char* column : {"dVoiceVlanOuiAddress", "dVoiceVlanOuiMask"})
        EXPECT_EQ(get(column, row).value, std::nullopt);
    EXPECT_EQ(get("dVoiceVlanLldpMedDeviceIndex", {3}).value, std::nullopt);
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(VoiceVlan, Checks) {
    const auto unheard = [this] { clear(); };
    expect_checks({
        Writable("dVoiceVlanVlanId", {0}, Integer, any_number())
            .sends({{20, {"5 voice vlan 20"}},
                    {5000, {"5 voice vlan 5000"}},
                    {0, {"5 no voice vlan"}},
                    {-1, {}, genErr},
                    {INT32_MIN, {}, genErr}}),
        Writable("dVoiceVlanQos", {0}, Gauge32, any_number()).sends({{9, {"5 voice vlan qos 9"}}}),
        Writable("dVoiceVlanAgingTime", {0}, Gauge32, any_number()).sends({{720, {"5 voice vlan aging 720"}}}),
        Writable("dVoiceVlanIfEnabled", {5121}, Integer, between(1, 2))
            .order(on_interface())
            .sends({{1, {"5 interface port1", "-1 voice vlan enable"}},
                    {2, {"5 interface port1", "-1 no voice vlan enable"}}}),
        Writable("dVoiceVlanIfMode", {5121}, Integer, between(1, 3))
            .order(on_interface())
            .sends({{1, {"5 interface port1", "-1 voice vlan mode auto untag"}},
                    {2, {"5 interface port1", "-1 voice vlan mode auto tag"}},
                    {3, {"5 interface port1", "-1 voice vlan mode manual"}}}),
        Writable("dVoiceVlanOuiDes", row, OctetString, words(32))
            .before(unheard)
            .order({step::type, step::column, step::index, step::value})
            .sends({{"phone", {"5 " + oui + " description phone"}}, {"", {"5 " + oui}}}),
        Writable("dVoiceVlanOuiRowStatus", row, Integer, between(active, destroy))
            .before(unheard)
            .sends({{createAndGo, {"5 " + oui}}, {destroy, {"5 no " + oui}}, {active, {}}, {createAndWait, {}}}),
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
