#include "support/recording_host.h"

namespace tests {

class PrivateVlans : public RecordingHost {
protected:
    // The records, as numbers of 4 octets.
    std::uint32_t* const vlan_record = loaded().symbol<std::uint32_t>("private_vlan");
    std::uint32_t* const port_record = loaded().symbol<std::uint32_t>("private_vlan_port");
    enum { kVlan, kType, kPrimary, kPending };
    enum { kPrimaryVlan = 1, kIsolated, kCommunity };  // types
    const Oid pair{5121, 101};

    PrivateVlans() { clear(); }
    void clear() {
        std::fill_n(vlan_record, 4, 0u);
        std::fill_n(port_record, 4, 0u);
    }
    static std::vector<std::uint32_t> numbers(const std::uint32_t* record) { return {record, record + 4}; }
    static Assignment vlan(const char* column, oid vid, int value) {
        return {std::string("nPrivateVlanVlan") + column, {vid}, Integer, integer(value)};
    }
    Assignment map(const char* column, int value) const {
        return {std::string("nPrivateVlanIfVlanMap") + column, pair, Integer, integer(value)};
    }
    using RecordingHost::write;
    int write(int phase, const Assignment& varbind) {
        return write(phase, varbind.object, varbind.index, varbind.type, varbind.value);
    }
};

TEST_F(PrivateVlans, KeyOfAPairIsARecordWithMoreThanTheIndex) {
    EXPECT_EQ(get("nPrivateVlanSyncSecVlans", {0}).value, integer(2));
    answer("nPrivateVlanIfVlanMapTable", integer(100), Bytes{1, 0x14, 0, 0, 101, 0, 0, 0, 9, 9, 9, 9, 9, 9, 9, 9});
    EXPECT_EQ(next("nPrivateVlanIfVlanMapPriVlan").name, oid_of("nPrivateVlanIfVlanMapPriVlan", pair));
    get("nPrivateVlanIfVlanMapRowStatus", pair);
    EXPECT_EQ(shown[1].key, (Bytes{1, 0x14, 0, 0, 101, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(PrivateVlans, Checks) {
    const auto staged = [this](std::uint32_t type, std::uint32_t primary) {
        return [=, this] {
            clear();
            vlan_record[kType] = type;
            vlan_record[kPrimary] = port_record[2] = primary;
        };
    };
    const Order unranged = {step::type, step::length, step::column, step::index};
    answer("write_nPrivateVlanVlanRowStatus", integer(0));
    expect_checks({
        {"nPrivateVlanSyncSecVlans", {0}, Integer, between(1, 2)},
        Writable("nPrivateVlanVlanType", {101}, Integer, between(1, 3)).before(staged(0, 0)),
        Writable("nPrivateVlanVlanAssocPriVlan", {101}, Integer, any_number()).before(staged(0, 0)).order(unranged),
        Writable("nPrivateVlanIfVlanMapPriVlan", pair, Integer, any_number()).before(staged(0, 0)).order(unranged),
        Writable("nPrivateVlanVlanRowStatus", {101}, Integer, between(active, destroy))
            .before(staged(kIsolated, 100))
            .sends({{createAndGo,
                     {"5 vlan 101", "-1 private-vlan isolated", "5 vlan 100", "-1 private-vlan association add 101"}},
                    {destroy, {"5 vlan 101", "-1 no private-vlan isolated"}}}),
        Writable("nPrivateVlanVlanRowStatus", {101}, Integer, between(active, destroy))
            .before(staged(kPrimaryVlan, 100))
            .sends({{createAndGo, {"5 vlan 101", "-1 private-vlan primary"}}}),
        Writable("nPrivateVlanIfVlanMapRowStatus", pair, Integer, between(active, destroy))
            .before(staged(0, 100))
            .sends({{createAndGo, {"5 pvlan port-association create 5121 101 100"}}}),
    });
}

TEST_F(PrivateVlans, RowStatusNeedsAStagedType) {
    for (const int status : {createAndGo, destroy}) {
        clear();
        forget();
        EXPECT_EQ(set({vlan("RowStatus", 101, status)}), wrongValue);  // found when the VLAN was entered
        EXPECT_THAT(lines(), ElementsAre("5 vlan 101"));
        // Nothing clears a type: a row status uses that of an earlier request, for whatever VLAN.
        EXPECT_EQ(set({vlan("Type", 102, kCommunity)}), noError);
        forget();
        EXPECT_EQ(set({vlan("RowStatus", 101, status)}), noError);
        EXPECT_THAT(lines(), ElementsAre("5 vlan 101", std::string("-1 ") + (status == destroy ? "no " : "") +
                                                           "private-vlan community"));
    }
}

TEST_F(PrivateVlans, RowIsCreatedOnce) {
    answer("write_nPrivateVlanVlanRowStatus", integer(kIsolated));
    const std::vector<Assignment> row = {vlan("Type", 101, kCommunity), vlan("AssocPriVlan", 101, 100),
                                         vlan("RowStatus", 101, createAndGo)};
    EXPECT_EQ(set(row), genErr);  // it has a type
    EXPECT_THAT(sent, IsEmpty());
    answers.clear();  // a refused lookup is type 0
    EXPECT_EQ(set(row), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 101", "-1 private-vlan community", "5 vlan 100",
                                     "-1 private-vlan association add 101"));
}

TEST_F(PrivateVlans, RecordsAreFilledInReserve1AndInCommit) {
    using Numbers = std::vector<std::uint32_t>;
    for (const int phase : {reserve1, commit}) {
        clear();
        write(phase, vlan("RowStatus", 101, active));
        write(phase, vlan("AssocPriVlan", 101, 100));
        EXPECT_EQ(numbers(vlan_record), (Numbers{0, 0, 100, 0}));
        write(phase, vlan("RowStatus", 101, active));
        EXPECT_EQ(numbers(vlan_record), (Numbers{0, 0, 100, 1}));
        write(phase, vlan("Type", 101, kIsolated));  // clears the rest
        EXPECT_EQ(numbers(vlan_record), (Numbers{101, kIsolated, 0, 0}));
        write(phase, map("RowStatus", active));
        EXPECT_EQ(numbers(port_record), (Numbers{0, 0, 0, 1}));
        write(phase, map("PriVlan", 100));
        EXPECT_EQ(numbers(port_record), (Numbers{0, 0, 100, 0}));
    }
    clear();
    const Assignment columns[] = {vlan("Type", 101, kIsolated), vlan("AssocPriVlan", 101, 100), map("PriVlan", 100)};
    const Assignment statuses[] = {vlan("RowStatus", 101, active), map("RowStatus", active)};
    for (const int phase : {reserve2, action, release, undo}) {
        for (const Assignment& varbind : columns) EXPECT_EQ(write(phase, varbind), noError);
        for (const Assignment& varbind : statuses) EXPECT_EQ(write(phase, varbind), noError);
    }
    EXPECT_EQ(numbers(vlan_record), Numbers(4));
    EXPECT_EQ(numbers(port_record), Numbers(4));
    // A pending row status leaves ACTION to itself.
    forget();
    vlan_record[kPending] = port_record[kPending] = 1;
    for (const Assignment& varbind : columns) EXPECT_EQ(write(action, varbind), noError);
    EXPECT_THAT(sent, IsEmpty());
}

}  // namespace tests
