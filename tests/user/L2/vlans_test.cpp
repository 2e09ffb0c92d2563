// What the VLAN modules have in common: static VLANs, PVIDs, protocol groups and their bindings to ports.
#include "support/recording_host.h"

#include <algorithm>
#include <cstring>

namespace tests {
namespace {

enum Mode { access = 1, hybrid = 2, trunk = 3, untagged_hybrid = 4 };

Bytes every_port() {
    Bytes list(11, 0xff);
    list.push_back(0xc0);
    return list;
}

// The modules as their tables name them. `before` is what each index begins with.
struct Vlans {
    const char* module;
    std::string objects;
    Oid before;
};
const Vlans kVlans[] = {{"qBridgeMIB", "dot1q", {}}, {"ieee8021QBridgeMib", "ieee8021QBridge", {1}}};

template <class Module>
std::string module_name(const ::testing::TestParamInfo<Module>& info) {
    return info.param.module;
}

}  // namespace

class StaticVlans : public RecordingHost, public ::testing::WithParamInterface<Vlans> {
protected:
    const Vlans& module = GetParam();
    std::map<int, std::uint32_t> modes;   // by port; others are hybrid
    Bytes current_ports = port_list({});  // of the VLAN that is asked for

    StaticVlans() {
        const auto lookup = [this](const services::ShowRequest& request) {
            if (request.command.ends_with("portlist")) return Answer{current_ports, {}};
            const int port = std::stoi(request.command.substr(request.command.rfind(' '))) - 5120;
            return Answer{integer(modes.contains(port) ? modes[port] : std::uint32_t{hybrid}), {}};
        };
        for (const char* column : {"Name", "EgressPorts", "UntaggedPorts", "RowStatus"})
            answers["write_" + object("VlanStatic") + column] = lookup;
        answers["write_" + object("Pvid")] = lookup;
        clear_record();
    }

    std::string object(const std::string& suffix) const { return module.objects + suffix; }
    Oid row(std::uint32_t number) const { return join(module.before, {number}); }
    // The columns of VLAN 10, and a row status.
    Assignment column(const char* suffix, const Bytes& value) const {
        return {object(suffix), row(10), OctetString, value};
    }
    Assignment name(const std::string& value) const { return column("VlanStaticName", text(value)); }
    Assignment egress(const Bytes& list) const { return column("VlanStaticEgressPorts", list); }
    Assignment forbidden(const Bytes& list) const { return column("VlanForbiddenEgressPorts", list); }
    Assignment untagged(const Bytes& list) const { return column("VlanStaticUntaggedPorts", list); }
    Assignment status(int value, oid vid = 10) const {
        return {object("VlanStaticRowStatus"), row(vid), Integer, integer(value)};
    }
    using RecordingHost::write;
    int write(int phase, const Assignment& varbind) {
        return write(phase, varbind.object, varbind.index, varbind.type, varbind.value);
    }
    // Staging a name clears everything that was staged before.
    void clear_record() { write(reserve1, name("")); }
    // Whether a row status is pending: a name then does nothing in ACTION.
    bool pending() {
        const auto before = sent;
        write(action, name("x"));
        return std::exchange(sent, before).size() == before.size();
    }
    // What a row status alone would send now.
    Lines staged() {
        const auto before = std::exchange(sent, {});
        write(action, status(createAndGo, 99));
        const Lines sends = lines();
        sent = before;
        return sends;
    }
};

INSTANTIATE_TEST_SUITE_P(Modules, StaticVlans, ::testing::ValuesIn(kVlans), module_name<Vlans>);

TEST_P(StaticVlans, ChecksOfTheColumns) {
    const auto cleared = [this] { clear_record(); };
    const auto list = [&](const char* suffix) {
        return Writable(object(suffix), row(10), OctetString, octets(0, 12)).before(cleared);
    };
    expect_checks({
        Writable(object("VlanStaticName"), row(10), OctetString, words(32))
            .before(cleared)
            .sends({{"VLAN0010", {"5 vlan 10", "-1 name VLAN0010"}}}),  // the default name, too
        list("VlanForbiddenEgressPorts").sends_nothing(),
        list("VlanStaticEgressPorts"),
        list("VlanStaticUntaggedPorts"),
        Writable(object("Pvid"), row(5122), Gauge32, any_number()).order(on_interface()),
    });
    may_configure_in.insert(undo);
    expect_checks(
        {Writable(object("VlanStaticRowStatus"), row(10), Integer, between(active, destroy)).before(cleared)});
    clear_record();
    for (Assignment column : {name("x"), egress(port_list({1}))}) {
        column.index.push_back(1);
        EXPECT_EQ(write(reserve1, column), noSuchName);
    }
    EXPECT_THAT(staged(), ElementsAre("5 vlan 99"));  // nothing is staged before the index is right
}

TEST_P(StaticVlans, RowIsAppliedByItsStatus) {
    modes = {{1, access}, {2, hybrid}, {3, trunk}, {4, untagged_hybrid}, {5, access}};
    EXPECT_EQ(set({name("office"), egress(port_list({1, 2, 3, 4, 5})), forbidden(port_list({9})),
                   untagged(port_list({2, 5})), status(createAndGo)}),
              noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "-1 name office",  //
                                     "5 interface port2", "-1 switchport hybrid allowed vlan add untagged 10",
                                     "5 interface port5", "-1 switchport access vlan 10", "5 interface port1",
                                     "-1 switchport access vlan 10", "5 interface port3",
                                     "-1 switchport trunk allowed vlan add 10", "5 interface port4",
                                     "-1 switchport hybrid allowed vlan add untagged 10"));
    for (const Sent& line : sent) EXPECT_EQ(line.caller, "write_" + object("VlanStaticRowStatus"));
    EXPECT_EQ(shown.back().command(), "show snmp vlan-mode 5124");
    EXPECT_FALSE(pending());
    EXPECT_THAT(staged(), ElementsAre("5 vlan 99"));  // the record is clear
}

TEST_P(StaticVlans, RowIsStagedAcrossRequests) {
    // The columns act on their own, too: the row status comes later.
    EXPECT_EQ(set({name("office")}), noError);
    EXPECT_EQ(set({egress(port_list({3}))}), noError);
    forget();
    EXPECT_EQ(set({status(createAndGo)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "-1 name office", "5 interface port3",
                                     "-1 switchport hybrid allowed vlan add tagged 10"));
    EXPECT_THAT(staged(), ElementsAre("5 vlan 99"));
    // A name clears the lists that were staged before it; a destroy clears nothing.
    EXPECT_EQ(set({egress(port_list({3})), name("x"), status(destroy)}), noError);
    EXPECT_THAT(staged(), ElementsAre("5 vlan 99", "-1 name x"));
}

TEST_P(StaticVlans, DefaultNameIsNotSentByTheRowStatus) {
    EXPECT_EQ(set({name("VLAN0010"), status(createAndGo)}), noError);
    EXPECT_EQ(set({name("VLAN0011"), status(createAndGo)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "5 vlan 10", "-1 name VLAN0011"));
}

// Kept so: the row status does not ask for which VLAN the values were staged.
TEST_P(StaticVlans, StagedRowIsAppliedToTheStatusOwnVlan) {
    EXPECT_EQ(set({name("office"), egress(port_list({2})), status(createAndGo, 20)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 20", "-1 name office", "5 interface port2",
                                     "-1 switchport hybrid allowed vlan add tagged 20"));
}

TEST_P(StaticVlans, PendingStatusSilencesTheColumnsUntilOneIsStagedAgain) {
    EXPECT_EQ(set({status(active)}), noError);
    EXPECT_EQ(set({status(createAndWait)}), noError);
    EXPECT_TRUE(pending());
    // A column before its own row status does nothing; one after it clears the flag by being staged.
    EXPECT_EQ(set({name("a"), egress(every_port()), status(notReady)}), noError);
    EXPECT_THAT(lines(), IsEmpty());
    EXPECT_TRUE(pending());
    for (const Assignment& column :
         {name("b"), egress(port_list({})), forbidden(port_list({7})), untagged(port_list({}))}) {
        EXPECT_EQ(set({status(active), column}), noError) << column.object;
        EXPECT_FALSE(pending()) << column.object;
    }
}

TEST_P(StaticVlans, PortListsAreChangedPortByPort) {
    modes = {{1, access}, {2, hybrid}, {3, trunk}, {4, untagged_hybrid}};
    current_ports = port_list({1, 2, 3, 4, 8});
    EXPECT_EQ(set({egress(port_list({8, 90}))}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 no switchport access vlan",  //
                                     "5 interface port2", "-1 switchport hybrid allowed vlan remove 10",
                                     "5 interface port3", "-1 switchport trunk allowed vlan remove 10",
                                     "5 interface port4", "-1 switchport hybrid allowed vlan remove 10",
                                     "5 interface port90", "-1 switchport hybrid allowed vlan add tagged 10"));

    forget();
    EXPECT_EQ(set({egress(current_ports)}), noError);
    EXPECT_EQ(set({egress(Bytes{0xf1})}), noError);  // a shorter list is padded with zero bits
    current_ports = port_list({});
    EXPECT_EQ(set({egress(port_list({91, 96}))}), noError);  // ports after 90 are never acted on
    EXPECT_EQ(set({egress({})}), noError);
    EXPECT_THAT(sent, IsEmpty());

    clear_record();  // or the staged egress list would be looked at
    EXPECT_EQ(set({untagged(port_list({1, 2, 4}))}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 switchport access vlan 10",  //
                                     "5 interface port2", "-1 switchport hybrid allowed vlan add untagged 10",
                                     "5 interface port4", "-1 switchport hybrid allowed vlan add untagged 10"));
}

TEST_P(StaticVlans, WholePortListsComeAndGo) {
    EXPECT_EQ(set({egress(every_port())}), noError);
    EXPECT_EQ(sent.size(), 2u * 90);
    current_ports = Bytes(12, 0xff);
    forget();
    EXPECT_EQ(set({egress({})}), noError);
    ASSERT_EQ(sent.size(), 2u * 90);
    EXPECT_EQ(sent.back().line, "-1 switchport hybrid allowed vlan remove 10");
    EXPECT_EQ(sent[sent.size() - 2].line, "5 interface port90");
}

TEST_P(StaticVlans, ListWritesStopAtTheFirstFailure) {
    modes = {{2, trunk}, {3, 9}};
    EXPECT_EQ(write(action, untagged(port_list({1, 2, 4}))), genErr);  // a trunk carries no VLAN untagged
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 switchport hybrid allowed vlan add untagged 10",
                                     "5 interface port2"));
    forget();
    EXPECT_EQ(write(action, egress(port_list({3, 4}))), genErr);  // no such mode
    EXPECT_THAT(lines(), ElementsAre("5 interface port3"));
    forget();
    refused_lines = {"interface port4"};
    EXPECT_EQ(write(action, egress(port_list({4, 5}))), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port4"));
    forget();
    interfaces_have_names = false;
    EXPECT_EQ(write(action, egress(port_list({5}))), genErr);
    EXPECT_THAT(lines(), IsEmpty());
    interfaces_have_names = true;
    answers.clear();  // a refused mode is none
    EXPECT_EQ(write(action, egress(port_list({5}))), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port5"));
}

TEST_P(StaticVlans, UntaggedPortsMustBeEgressPorts) {
    EXPECT_EQ(set({egress(port_list({1})), untagged(port_list({1, 2})), status(createAndGo)}), genErr);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_TRUE(pending());  // a refused RESERVE1 leaves the flag set
    // Without a row status the check waits for RESERVE2, and an empty egress list is not a reason.
    EXPECT_EQ(set({egress(port_list({1})), untagged(port_list({2}))}), genErr);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_EQ(set({egress(port_list({})), untagged(port_list({2}))}), noError);
    // The row status looks at what is staged, whatever its value.
    EXPECT_EQ(write(reserve1, status(active)), genErr);
}

TEST_P(StaticVlans, UndoRemovesTheVlan) {
    may_configure_in.insert(undo);
    refused_lines = {"vlan 10"};
    EXPECT_EQ(set({name("a"), status(createAndGo)}), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10"));  // nothing to take away
    EXPECT_FALSE(pending());
    EXPECT_THAT(staged(), ElementsAre("5 vlan 99"));
    forget();
    refused_lines = {"name a"};
    EXPECT_EQ(set({name("a"), status(createAndGo)}), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 vlan 10", "-1 name a", "5 no vlan 10"));
    forget();
    EXPECT_EQ(write(undo, status(active)), noError);  // whatever is undone
    EXPECT_THAT(lines(), ElementsAre("5 no vlan 10"));
    EXPECT_EQ(write(undo, status(7)), wrongValue);
    EXPECT_EQ(sent.size(), 1u);
}

TEST_P(StaticVlans, PvidGoesByThePortsMode) {
    modes = {{1, access}, {2, hybrid}, {3, trunk}, {4, untagged_hybrid}};
    for (const auto& [port, vid] : std::map<std::uint32_t, int>{{5122, 77}, {5123, 5000}, {5124, 77}})
        EXPECT_EQ(set(object("Pvid"), row(port), Gauge32, integer(vid)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port2", "-1 switchport hybrid native vlan 77",  //
                                     "5 interface port3", "-1 switchport trunk native vlan 5000", "5 interface port4",
                                     "-1 switchport hybrid native vlan 5124"));
    forget();
    EXPECT_EQ(set(object("Pvid"), row(5121), Gauge32, integer(77)), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1"));
}

// --- protocol groups -------------------------------------------------------------------------------------------------

namespace {

// The private module has LLC as frame type 3, sends a group again that the protocol has already, has priorities, and
// stages a row status in COMMIT, too.
struct Protocols {
    const char* module;
    bool is_private;
    Oid before;
    std::string objects, vlan, vlan_status;  // what their names begin with, and two names
};
const Protocols kProtocols[] = {
    {"qBridgeMIB", false, {}, "dot1vProtocol", "PortGroupVid", "PortRowStatus"},
    {"ieee8021QBridgeMib", false, {1}, "ieee8021QBridgeProtocol", "PortGroupVid", "PortRowStatus"},
    {"corvinVlanMIB", true, {}, "nVlanProtocolVlan", "VlanId", "RowStatus"},
};

}  // namespace

class ProtocolVlans : public RecordingHost, public ::testing::WithParamInterface<Protocols> {
protected:
    const Protocols& module = GetParam();
    const bool is_private = module.is_private;
    const std::uint32_t llc = is_private ? 3 : 5;
    const std::uint8_t group_type = is_private ? Gauge32 : Integer;
    const std::string group_object = module.objects + "GroupId";
    const std::string group_status_object = module.objects + "GroupRowStatus";
    const std::string vlan_object = module.objects + module.vlan;
    const std::string vlan_status_object = module.objects + module.vlan_status;
    // The records that all modules share, as numbers of 4 octets.
    std::uint32_t* const group_record = loaded().symbol<std::uint32_t>("proto_group");
    std::uint32_t* const port_record = loaded().symbol<std::uint32_t>("proto_port");
    enum { kFrame, kProtocol, kGroup, kGroupPending };
    enum { kIfIndex, kPortGroup, kVlan, kPriority, kPortPending };

    ProtocolVlans() { clear(); }
    void clear() {
        std::fill_n(group_record, 4, 0u);
        std::fill_n(port_record, 5, 0u);
    }
    Oid with(const Oid& index) const { return join(module.before, index); }
    // The row of a protocol value, 0x0800 by default.
    Oid protocol(std::uint32_t frame, oid high = 8, oid low = 0) const { return with({frame, 2, high, low}); }
    Assignment group(const Oid& row, int number) { return {group_object, row, group_type, integer(number)}; }
    Assignment group_status(const Oid& row, int value) { return {group_status_object, row, Integer, integer(value)}; }
    Assignment vlan(const Oid& row, int vid) { return {vlan_object, row, Integer, integer(vid)}; }
    Assignment vlan_status(const Oid& row, int value) { return {vlan_status_object, row, Integer, integer(value)}; }
    using RecordingHost::write;
    int write(int phase, const Assignment& varbind) {
        return write(phase, varbind.object, varbind.index, varbind.type, varbind.value);
    }
    std::string bound(int group, int vid, int priority) const {
        return "-1 protocol-vlan profile " + std::to_string(group) + " vlan " + std::to_string(vid) +
               (is_private ? " priority " + std::to_string(priority) : "");
    }
};

INSTANTIATE_TEST_SUITE_P(Modules, ProtocolVlans, ::testing::ValuesIn(kProtocols), module_name<Protocols>);

TEST_P(ProtocolVlans, ChecksOfTheColumns) {
    const auto cleared = [this] { clear(); };
    answer("write_" + group_status_object, integer(4));
    const Order unranged = {step::type, step::length, step::column, step::index};
    expect_checks({
        Writable(group_object, protocol(1), group_type, any_number()).before(cleared).order(unranged),
        Writable(group_status_object, protocol(2), Integer, between(active, destroy))
            .before(cleared)
            .sends({{destroy, {"5 no protocol-vlan profile 4"}}}),
        Writable(vlan_object, with({5121, 7}), Integer, any_number())
            .before(cleared)
            .order({step::type, step::length, step::column, step::index, step::interface.in({action})}),
        Writable(vlan_status_object, with({5121, 7}), Integer, between(active, destroy))
            .before(cleared)
            .order(on_interface()),
    });
}

TEST_P(ProtocolVlans, FrameTypeAndValueAreInTheIndex) {
    EXPECT_EQ(write(action, group_status(protocol(llc, 0x86, 0xdd), createAndGo)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 protocol-vlan profile 0 frame-type llc ether-type 0x68dd"));
    for (const std::uint32_t frame : {0u, 8u - llc, 4u, 6u}) {
        EXPECT_EQ(write(reserve1, group(protocol(frame), 1)), wrongValue) << frame;
        EXPECT_EQ(write(reserve1, group_status(protocol(frame), 7)), wrongValue) << frame;
    }
    // The protocol value has two octets.
    for (const Oid& rest : std::vector<Oid>{{1}, {1, 0}, {1, 1, 8}, {1, 3, 8, 0, 0}, {1, 2, 8}}) {
        EXPECT_EQ(write(reserve1, group(with(rest), 1)), noSuchName) << rest.size();
        EXPECT_EQ(write(reserve1, group_status(with(rest), createAndGo)), noSuchName) << rest.size();
        EXPECT_EQ(get(group_object, with(rest)).value, std::nullopt);
    }
    EXPECT_THAT(shown, IsEmpty());
}

TEST_P(ProtocolVlans, GroupIsAppliedByItsRowStatus) {
    EXPECT_EQ(set({group(protocol(1), 9), group_status(protocol(2, 0x12, 0x34), createAndGo)}), noError);
    // The group is the staged one, frame type and protocol are the row status's own.
    EXPECT_THAT(lines(), ElementsAre("5 protocol-vlan profile 9 frame-type snap ether-type 0x2143"));
    EXPECT_EQ(group_record[kGroup], 0u);
    EXPECT_EQ(group_record[kGroupPending], is_private ? 1u : 0u);
    EXPECT_EQ(write(reserve1, group(protocol(1), 9)), noError);
    const unsigned char value[] = {8, 0, 0, 0};
    EXPECT_TRUE(std::equal(value, value + 4, reinterpret_cast<const unsigned char*>(group_record + kProtocol)));
    EXPECT_EQ(group_record[kFrame], 1u);
    EXPECT_EQ(group_record[kGroup], 9u);
    EXPECT_EQ(group_record[kGroupPending], 0u);
    // Whether the record goes before the line shows when that is refused.
    refused_line = sent.size();
    EXPECT_EQ(write(action, group_status(protocol(1), createAndGo)), genErr);
    EXPECT_EQ(group_record[kGroup], is_private ? 9u : 0u);
}

TEST_P(ProtocolVlans, PendingRowStatusSilencesTheColumns) {
    const Assignment columns[] = {group(protocol(1), 9), vlan(with({5121, 7}), 10)};
    const Assignment statuses[] = {group_status(protocol(1), active), vlan_status(with({5121, 7}), active)};
    for (const Assignment& status : statuses) EXPECT_EQ(set({status}), noError);
    EXPECT_EQ(group_record[kGroupPending], 1u);
    EXPECT_EQ(port_record[kPortPending], 1u);
    for (const int i : {0, 1}) EXPECT_EQ(set({columns[i], statuses[i]}), noError);
    for (const Assignment& column : columns) EXPECT_EQ(write(action, column), noError);
    EXPECT_THAT(lines(), IsEmpty());
    // Only the private module stages a row status again in COMMIT.
    clear();
    for (const Assignment& status : statuses) EXPECT_EQ(write(commit, status), noError);
    for (const Assignment& column : columns) EXPECT_EQ(write(commit, column), noError);
    EXPECT_EQ(group_record[kGroupPending], is_private ? 1u : 0u);
    EXPECT_EQ(port_record[kPortPending], is_private ? 1u : 0u);
    EXPECT_EQ(group_record[kGroup], 0u);
    EXPECT_EQ(port_record[kVlan], 0u);
}

TEST_P(ProtocolVlans, GroupIsChangedInPlace) {
    answer("write_" + group_object, integer(4));
    EXPECT_EQ(set({group(protocol(llc, 0x86, 0xdd), 4)}), noError);
    EXPECT_EQ(sent.size(), is_private ? 2u : 0u);
    forget();
    // A refused lookup is group 0, whatever the backend wrote.
    answers["write_" + group_object] = [](const services::ShowRequest& request) {
        std::memset(request.result, 1, 4);
        return Answer{};
    };
    EXPECT_EQ(set({group(protocol(1), 5)}), noError);
    EXPECT_THAT(lines(), ElementsAre("5 no protocol-vlan profile 0",
                                     "5 protocol-vlan profile 5 frame-type ethernet2 ether-type 0x8000"));
}

TEST_P(ProtocolVlans, BindingIsAppliedByItsRowStatus) {
    EXPECT_EQ(set({vlan(with({5121, 7}), 10), vlan_status(with({5122, 8}), createAndGo)}), noError);
    // The interface is the row status's own, the rest is staged.
    EXPECT_THAT(lines(), ElementsAre("5 interface port2", bound(7, 10, 0)));
    for (const int field : {kIfIndex, kPortGroup, kVlan, kPriority}) EXPECT_EQ(port_record[field], 0u);
    port_record[kPriority] = 6;  // as the table that has one stages it
    EXPECT_EQ(write(reserve1, vlan(with({5121, 7}), 10)), noError);
    EXPECT_EQ(port_record[kIfIndex], 5121u);
    EXPECT_EQ(port_record[kPriority], is_private ? 0u : 6u);
    refused_line = sent.size() + 1;
    EXPECT_EQ(write(action, vlan_status(with({5121, 7}), createAndGo)), genErr);
    EXPECT_EQ(port_record[kVlan], 10u);
}

}  // namespace tests
