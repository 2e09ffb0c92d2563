#include "support/recording_host.h"

namespace tests {

class TimeSync : public RecordingHost {
protected:
    // Names of a group's objects, in the order of their magic numbers.
    static std::vector<std::string> objects_of(const std::string& group) {
        const auto* names = loaded().symbol<const char* const>("ieee8021AsTimeSyncMib_names");
        const auto* infos = loaded().symbol<const GroupInfo>("ieee8021AsTimeSyncMib_groups");
        while (infos->name != group) ++infos;
        return {names + infos->first, names + infos->first + infos->objects};
    }
};

TEST_F(TimeSync, ClockIsShownByOneCommandExceptFiveScalars) {
    answer("ieee8021AsTimeSyncMibGlobals", integer(1));
    std::vector<int> silent;
    int magic = 0;
    for (const std::string& object : objects_of("ieee8021AsTimeSyncMibGlobals")) {
        ++magic;
        forget();
        const ReadResult result = get(object, {0});
        const bool writable = magic == 6 || magic == 7;
        EXPECT_EQ(result.writer != nullptr && result.writer != kUntouched, writable) << object;
        if (shown.empty())
            silent.push_back(magic);
        else
            EXPECT_EQ(shown[0].command(), "show snmp ieee8021as-time-sync-default");
    }
    EXPECT_EQ(magic, 47);
    EXPECT_THAT(silent, ElementsAre(10, 34, 40, 46, 47));
}

TEST_F(TimeSync, PortsAreAskedForByIfIndexAndTheFirstOneByZero) {
    answer("ieee8021AsPortDSIfTable", integer(9), integer(5121));
    answer("ieee8021AsPortStatIfTable", integer(9), integer(5121));
    EXPECT_EQ(next("ieee8021AsBridgeBasePort").name, oid_of("ieee8021AsBridgeBasePort", {5121}));
    EXPECT_EQ(next("ieee8021AsPortStatTxAnnounce").name, oid_of("ieee8021AsPortStatTxAnnounce", {5121}));
    get("ieee8021AsPortDSVersionNumber", {5145});
    get("ieee8021AsPortStatRxSyncCount", {5145});
    EXPECT_THAT(commands(),
                ElementsAre("show snmp ieee8021as-port-ds-if 0", "show snmp ieee8021as-port-stat-if 0",
                            "show snmp ieee8021as-port-ds-if 5145", "show snmp ieee8021as-port-stat-if 5145"));
    forget();
    for (const char* object : {"ieee8021AsPortDSNupMs", "ieee8021AsPortDSNdownLs",
                               "ieee8021AsPortDSAcceptableMasterTableEnabled", "ieee8021AsAcceptableMasterPortNumber"})
        EXPECT_EQ(next(object).value, std::nullopt) << object;
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(TimeSync, OnlyThePrioritiesAreSet) {
    std::vector<Writable> writables{
        Writable("ieee8021AsDefaultDSPriority1", {0}, Unsigned32, any_number())
            .sends({{300, {"5 gptp priority priority1 300"}}, {0x80000000, {"5 gptp priority priority1 -2147483648"}}}),
        Writable("ieee8021AsDefaultDSPriority2", {0}, Unsigned32, any_number())
            .sends({{248, {"5 gptp priority priority2 248"}}}),
        Writable("ieee8021AsPortDSPttPortEnabled", {5121}, Integer, between(1, 2)).order(unparsed()).refused(),
        Writable("ieee8021AsAcceptableMasterClockIdentity", {1}, OctetString, octets(4, 4)).order(unparsed()).refused(),
        Writable("ieee8021AsAcceptableMasterPortNumber", {1}, Unsigned32, any_number()).order(unparsed()).refused(),
        Writable("ieee8021AsAcceptableMasterAlternatePriority1", {1}, Unsigned32, any_number())
            .order(unparsed())
            .refused(),
        Writable("ieee8021AsAcceptableMasterRowStatus", {1}, Integer, any_number()).order(unparsed()).refused(),
    };
    // The other columns of the ports: their types, and which of those that are registered writable refuse.
    std::vector<int> silent;
    int column = 0;
    for (const std::string& object : objects_of("ieee8021AsPortDSIfTable")) {
        const VariableEntry& entry = loaded().object(object).entry;
        if (++column == 6 || entry.acl != ReadWrite) continue;
        if (get(object, {5121}).writer == kUntouched)
            silent.push_back(column);
        else
            writables.push_back(Writable(object, {5121}, entry.type, any_number()).order(unparsed()).refused());
    }
    EXPECT_THAT(silent, ElementsAre(19, 22, 28, 32, 33, 34, 35, 36));
    EXPECT_EQ(writables.size(), 16u);
    expect_checks(writables);
}

}  // namespace tests
