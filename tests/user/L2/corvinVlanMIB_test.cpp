#include "support/recording_host.h"

namespace tests {
namespace {

// A VLAN list of 512 octets.
Bytes vlans(std::uint32_t first, std::uint32_t last) {
    Bytes list(512);
    for (std::uint32_t vid = first; vid <= last; ++vid)
        list[(vid - 1) / 8] |= static_cast<std::uint8_t>(0x80 >> (vid - 1) % 8);
    return list;
}

const std::string kVlanLists[] = {"TagAllowVlanLstFirst2K", "TagAllowVlanLstSecond2K", "UntagAllowVlanLstFirst2K",
                                  "UntagAllowVlanLstSecond2K"};

}  // namespace

class CorvinVlans : public RecordingHost {
protected:
    const Oid mac{0, 0x1f, 0, 0, 0xab, 0xcd};
    const Oid other_mac{2, 0, 0, 0, 0, 1};
    const Oid subnet{1, 4, 192, 0, 2, 0, 24};
    unsigned char* const mac_record = loaded().symbol<unsigned char>("mac_vlan");
    unsigned char* const subnet_record = loaded().symbol<unsigned char>("subnet_vlan");
    unsigned char* const port_record = loaded().symbol<unsigned char>("proto_port");
    std::uint32_t port_mode = 2;
    Bytes current = vlans(2, 1);  // of the list that is asked for

    CorvinVlans() {
        clear();
        for (const std::string& list : kVlanLists)
            answers["write_nVlanPortIf" + list] = [this](const services::ShowRequest& request) {
                return Answer{request.magic == 2 ? integer(port_mode) : current, {}};
            };
    }
    void clear() {
        std::fill_n(mac_record, 20, static_cast<unsigned char>(0));
        std::fill_n(subnet_record, 84, static_cast<unsigned char>(0));
        std::fill_n(port_record, 20, static_cast<unsigned char>(0));
    }
    static Bytes part(const unsigned char* record, std::size_t from, std::size_t octets) {
        return {record + from, record + from + octets};
    }
    int set_list(const std::string& list, const Bytes& value) {
        return set("nVlanPortIf" + list, {5121}, OctetString, value);
    }
};

TEST_F(CorvinVlans, ChecksOfScalarsAndPortSettings) {
    const auto setting = [](const char* object, int last) {
        return Writable(object, {5121}, Integer, between(1, last)).order(on_interface());
    };
    expect_checks({
        Writable("nVlanScalar6", {0}, Integer, any_number()).refused(),
        Writable("nVlanScalar7", {0}, Integer, between(1, 2)).refused(),
        setting("nVlanPortIfMode", 6),
        setting("nVlanPortIfTrunkNativeVlanTag", 2),
        setting("nVlanPortIfAcceptableFrameTypes", 3),
        setting("nVlanPortIfVlanPrecedence", 2),
    });
}

TEST_F(CorvinVlans, ChecksOfTheLists) {
    for (const std::string& list : kVlanLists) {
        SCOPED_TRACE(list);
        const std::string object = "nVlanPortIf" + list;
        const Oid row{5121}, unknown{99}, longer{99, 1};
        current = {};
        for (int phase = reserve1; phase <= undo; ++phase) {
            EXPECT_EQ(write(phase, object, longer, Integer, Bytes(513)), wrongType);
            EXPECT_EQ(write(phase, object, longer, OctetString, Bytes(513)), wrongLength);
            EXPECT_EQ(write(phase, object, longer, OctetString, Bytes(512)), noSuchName);
            EXPECT_EQ(write(phase, object, unknown, OctetString, Bytes(512)), genErr);
            EXPECT_EQ(write(phase, object, row, OctetString, {}), noError);
        }
        EXPECT_THAT(lines(), ElementsAre("5 interface port1"));  // the port is entered for no change, too
        forget();
        current = vlans(2, 2);  // a shorter list has no further VLANs; every list counts from VLAN 1
        EXPECT_EQ(set_list(list, Bytes{0x80}), noError);
        const std::string how = list.starts_with("Tag") ? "tagged" : "untagged";
        EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 switchport hybrid allowed vlan remove 2",
                                         "-1 switchport hybrid allowed vlan add " + how + " 1"));
        forget();
        refused_lines = {"interface port1"};  // passed over
        EXPECT_EQ(set_list(list, Bytes{0x80}), noError);
        EXPECT_EQ(sent.size(), 1u);
        refused_lines.clear();
        forget();
    }
}

TEST_F(CorvinVlans, ListLinesGoByThePortsMode) {
    current = vlans(4, 4);
    const Bytes wanted = vlans(4094, 4094);
    port_mode = 3;
    EXPECT_EQ(set_list("TagAllowVlanLstSecond2K", wanted), noError);
    port_mode = 1;
    EXPECT_EQ(set_list("UntagAllowVlanLstFirst2K", wanted), noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 switchport trunk allowed vlan remove 4",
                                     "-1 switchport trunk allowed vlan add 4094", "5 interface port1",
                                     "-1 no switchport access vlan", "-1 switchport access vlan 4094"));
    // Modes without such a list fail once there is something to change.
    const auto fails = [&](const char* list) {
        forget();
        EXPECT_EQ(set_list(list, wanted), genErr) << port_mode;
        EXPECT_THAT(lines(), ElementsAre("5 interface port1"));
        EXPECT_EQ(set_list(list, current), noError) << port_mode;
        EXPECT_THAT(lines(), ElementsAre("5 interface port1", "5 interface port1"));
    };
    for (const std::uint32_t mode : {0u, 1u, 4u, 5u, 6u}) port_mode = mode, fails("TagAllowVlanLstFirst2K");
    for (const std::uint32_t mode : {0u, 3u, 4u, 5u, 6u}) port_mode = mode, fails("UntagAllowVlanLstSecond2K");
}

TEST_F(CorvinVlans, WholeListsComeAndGo) {
    for (const std::uint32_t last : {90u, 4094u}) {
        forget();
        EXPECT_EQ(set_list("TagAllowVlanLstFirst2K", vlans(1, last)), noError);
        ASSERT_EQ(sent.size(), 1 + last);
        EXPECT_EQ(sent.back().line, "-1 switchport hybrid allowed vlan add tagged " + std::to_string(last));
    }
    current = vlans(1, 4096);
    forget();
    EXPECT_EQ(set_list("UntagAllowVlanLstFirst2K", {}), noError);  // VLANs after 4094 are never acted on
    ASSERT_EQ(sent.size(), 1u + 4094);
    EXPECT_EQ(sent[1].line, "-1 switchport hybrid allowed vlan remove 1");
    forget();
    refused_line = 3;
    EXPECT_EQ(set_list("TagAllowVlanLstFirst2K", vlans(4, 4096)), genErr);
    EXPECT_EQ(sent.size(), 4u);
    answers.clear();  // nothing is known of the port: nothing is in its list, and its mode is none
    forget();
    EXPECT_EQ(set_list("TagAllowVlanLstFirst2K", {}), noError);
    EXPECT_EQ(set_list("TagAllowVlanLstFirst2K", Bytes{0x80}), genErr);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "5 interface port1"));
}

// --- VLANs of MAC addresses, subnets and protocol groups -------------------------------------------------------------

TEST_F(CorvinVlans, ChecksOfClassifications) {
    const Order unranged = {step::type, step::length, step::column, step::index};
    const auto cleared = [this] { clear(); };
    const auto column = [&](const char* object, const Oid& row, std::uint8_t type, int value, Lines lines) {
        answer(std::string("write_") + object, integer(6));  // what the other column is
        return Writable(object, row, type, any_number()).before(cleared).order(unranged).sends({{value, lines}});
    };
    const Oid subnet6{2, 16, 0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 32};
    const auto staged_subnet = [&] {
        clear();
        write(reserve1, "nVlanSubnetVlanId", subnet, Integer, integer(10));
    };
    expect_checks({
        column("nVlanMacVlanId", mac, Integer, 10,
               {"5 no mac-vlan 00-1f-00-00-ab-cd", "5 mac-vlan 00-1f-00-00-ab-cd vlan 10 priority 6"}),
        column("nVlanMacVlanPriority", mac, Gauge32, 3,
               {"5 no mac-vlan 00-1f-00-00-ab-cd", "5 mac-vlan 00-1f-00-00-ab-cd vlan 6 priority 3"}),
        Writable("nVlanMacVlanRowStatus", mac, Integer, between(active, destroy)).before(cleared),
        column("nVlanSubnetVlanId", subnet, Integer, 10,
               {"5 no subnet-vlan ipv4 192.0.2.0/24", "5 subnet-vlan ipv4 192.0.2.0/24 vlan 10 priority 6"}),
        column("nVlanSubnetVlanPriority", subnet6, Gauge32, 3,
               {"5 no subnet-vlan ipv6 2001:db8::/32", "5 subnet-vlan ipv6 2001:db8::/32 vlan 6 priority 3"}),
        Writable("nVlanSubnetVlanRowStatus", subnet6, Integer, between(active, destroy))
            .before(staged_subnet)
            .sends({{createAndGo, {"5 subnet-vlan ipv4 192.0.2.0/24 vlan 10 priority 0"}},
                    {destroy, {"5 no subnet-vlan ipv6 2001:db8::/32"}}}),
        column("nVlanProtocolVlanPriority", {5121, 7}, Gauge32, 3,
               {"5 interface port1", "-1 protocol-vlan profile 7 vlan 6 priority 3"})
            .order({step::type, step::length, step::column, step::index, step::interface.in({action})}),
    });
}

TEST_F(CorvinVlans, MacRowIsAppliedByItsStatus) {
    get("nVlanMacVlanStatus", mac);
    EXPECT_THAT(commands(), ElementsAre("show snmp mac-vlan 00-1f-00-00-ab-cd"));
    EXPECT_EQ(set({{"nVlanMacVlanId", mac, Integer, integer(10)},
                   {"nVlanMacVlanPriority", mac, Gauge32, integer(3)},
                   {"nVlanMacVlanRowStatus", mac, Integer, integer(createAndGo)}}),
              noError);
    EXPECT_THAT(lines(), ElementsAre("5 mac-vlan 00-1f-00-00-ab-cd vlan 10 priority 3"));
    // Nothing clears the record: the next row status creates the same row again, under another address, too.
    EXPECT_EQ(part(mac_record, 0, 6), (Bytes{0, 0x1f, 0, 0, 0xab, 0xcd}));
    EXPECT_EQ(part(mac_record, 8, 12), text(std::string("\x0a\0\0\0\x03\0\0\0\x01\0\0\0", 12)));
    EXPECT_EQ(set("nVlanMacVlanRowStatus", other_mac, Integer, integer(createAndGo)), noError);
    EXPECT_EQ(lines().back(), "5 mac-vlan 00-1f-00-00-ab-cd vlan 10 priority 3");
    EXPECT_EQ(set("nVlanMacVlanRowStatus", other_mac, Integer, integer(destroy)), noError);
    EXPECT_EQ(lines().back(), "5 no mac-vlan 02-00-00-00-00-01");
    // A VLAN id clears what was staged before it, a priority the flag alone.
    EXPECT_EQ(write(reserve1, "nVlanMacVlanId", other_mac, Integer, integer(20)), noError);
    EXPECT_EQ(part(mac_record, 8, 12), text(std::string("\x14\0\0\0\0\0\0\0\0\0\0\0", 12)));
    mac_record[16] = 1;
    EXPECT_EQ(write(action, "nVlanMacVlanId", other_mac, Integer, integer(20)), noError);
    EXPECT_EQ(write(action, "nVlanMacVlanPriority", other_mac, Gauge32, integer(20)), noError);
    EXPECT_EQ(sent.size(), 3u);
    EXPECT_EQ(write(reserve1, "nVlanMacVlanPriority", other_mac, Gauge32, integer(5)), noError);
    EXPECT_EQ(part(mac_record, 8, 12), text(std::string("\x14\0\0\0\x05\0\0\0\0\0\0\0", 12)));
}

TEST_F(CorvinVlans, ClassificationsStageInCommitToo) {
    for (const bool is_mac : {true, false}) {
        const Oid& row = is_mac ? mac : subnet;
        const std::string table = is_mac ? "nVlanMacVlan" : "nVlanSubnetVlan";
        unsigned char* numbers = is_mac ? mac_record + 8 : subnet_record + 72;
        EXPECT_EQ(write(commit, table + "RowStatus", row, Integer, integer(active)), noError);
        EXPECT_EQ(numbers[8], 1);
        EXPECT_EQ(write(commit, table + "Priority", row, Gauge32, integer(3)), noError);
        EXPECT_EQ(numbers[8], 0);
        EXPECT_EQ(numbers[4], 3);
        numbers[8] = 1;
        EXPECT_EQ(write(commit, table + "Id", row, Integer, integer(10)), noError);
        EXPECT_EQ(part(numbers, 0, 12), text(std::string("\x0a\0\0\0\0\0\0\0\0\0\0\0", 12)));
        for (const int phase : {reserve2, release, undo}) {
            EXPECT_EQ(write(phase, table + "Id", row, Integer, integer(11)), noError);
            EXPECT_EQ(write(phase, table + "Priority", row, Gauge32, integer(4)), noError);
            EXPECT_EQ(write(phase, table + "RowStatus", row, Integer, integer(active)), noError);
        }
        EXPECT_EQ(part(numbers, 0, 12), text(std::string("\x0a\0\0\0\0\0\0\0\0\0\0\0", 12)));
    }
}

TEST_F(CorvinVlans, SubnetRowIsStagedAcrossRequests) {
    EXPECT_EQ(set({{"nVlanSubnetVlanId", subnet, Integer, integer(10)},
                   {"nVlanSubnetVlanRowStatus", subnet, Integer, integer(active)}}),
              noError);
    EXPECT_EQ(set({{"nVlanSubnetVlanPriority", subnet, Gauge32, integer(3)},
                   {"nVlanSubnetVlanRowStatus", subnet, Integer, integer(createAndGo)}}),
              noError);
    EXPECT_THAT(lines(), ElementsAre("5 subnet-vlan ipv4 192.0.2.0/24 vlan 10 priority 3"));
    EXPECT_EQ(part(subnet_record, 0, 4), integer(1));
    EXPECT_EQ(part(subnet_record, 4, 10), text(std::string("192.0.2.0\0", 10)));
    EXPECT_EQ(part(subnet_record, 68, 4), integer(24));
}

TEST_F(CorvinVlans, SubnetsAreIpv4OrIpv6) {
    const Oid neither{0, 0, 0};  // no address
    EXPECT_EQ(write(reserve1, "nVlanSubnetVlanId", neither, Integer, integer(10)), noError);
    for (const char* object : {"nVlanSubnetVlanId", "nVlanSubnetVlanRowStatus"}) {
        EXPECT_EQ(write(action, object, neither, Integer, integer(createAndGo)), genErr);
        EXPECT_EQ(write(action, object, neither, Integer, integer(destroy)), genErr);
    }
    EXPECT_EQ(write(action, "nVlanSubnetVlanPriority", neither, Gauge32, integer(1)), genErr);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(CorvinVlans, BindingHasAPriority) {
    const Oid row{5121, 7};
    EXPECT_EQ(set({{"nVlanProtocolVlanVlanId", row, Integer, integer(10)},
                   {"nVlanProtocolVlanPriority", row, Gauge32, integer(3)},
                   {"nVlanProtocolVlanRowStatus", row, Integer, integer(createAndGo)}}),
              noError);
    EXPECT_THAT(lines(), ElementsAre("5 interface port1", "-1 protocol-vlan profile 7 vlan 10 priority 3"));
    EXPECT_EQ(write(commit, "nVlanProtocolVlanPriority", row, Gauge32, integer(3)), noError);
    EXPECT_EQ(part(port_record, 12, 4), integer(0));  // staged in RESERVE1 alone
}

}  // namespace tests
