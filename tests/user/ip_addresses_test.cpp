// ipAddressTable, ipAddressPrefixTable and ipNetToPhysicalTable.
#include "support/recording_host.h"

#include <cstring>

namespace tests {
namespace {

// 10.0.10.9 and 2001:db8::9, as indexes and as the backend's records have them; an address that has no text.
const Oid kIpv4{1, 4, 10, 0, 10, 9};
const Oid kIpv6{2, 16, 0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9};
const Bytes kIpv6Octets{0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 9};
const Bytes kIpv4Record = join(integer(1), join({10, 0, 10, 9}, Bytes(16)));
const Bytes kIpv6Record = join(integer(2), join(Bytes(4), kIpv6Octets));
const Oid kOdd{3, 4, 10, 0, 10, 9};

constexpr std::uint32_t kVlan10Interface = 1034, kPort1 = 5121;
// What is just outside the VLAN interfaces.
constexpr std::uint32_t kNoVlanInterfaces[] = {1, 1024, 5119, kPort1, 4294967295};

}  // namespace

class IpAddresses : public RecordingHost {
protected:
    std::uint32_t& kept(const char* name) { return *loaded().symbol<std::uint32_t>(name); }
    InetAddress& key(const char* name) { return *loaded().symbol<InetAddress>(name); }

    IpAddresses() {
        for (const char* name : {"ipAddressTable_ifindex", "ipAddressTable_type", "ipAddressTable_status"})
            kept(name) = 0;
        for (const char* name : {"key_ifindex", "key_type", "key_status"}) key(name) = {};
    }
    int act(const std::string& column, const Oid& row, std::int64_t value) {
        return write(action, "ipAddress" + column, row, Integer, integer(value));
    }
    // The lines of a row status, for a row with an interface.
    Lines lines_of(const Oid& row, std::uint32_t ifindex, int status, int error = noError) {
        EXPECT_EQ(act("IfIndex", row, ifindex), noError);
        forget();
        EXPECT_EQ(act("RowStatus", row, status), error);
        return lines();
    }
    Lines commands_of(const std::string& object, const Oid& index) {
        forget();
        get(object, index);
        return commands();
    }
};

TEST_F(IpAddresses, AreShownByTextUpToTheLastPort) {
    const auto with = [](std::uint32_t ifindex, const Oid& address, const Oid& bits = {}) {
        return join(join({ifindex}, address), bits);
    };
    const struct {
        const char* object;
        Oid index;
        Lines commands;
    } cases[] = {
        {"ipAddressOrigin", kOdd, {"show ipaddress 3  "}},
        {"ipAddressPrefixOrigin", with(kVlan10Interface, kOdd, {24}), {"show ipaddress prefix 1034 3 "}},
        {"ipAddressPrefixOrigin", with(5210, kIpv4, {24}), {"show ipaddress prefix 5210 1  10.0.10.9/24"}},
        {"ipAddressPrefixOrigin", with(5211, kIpv4, {24}), {}},
        {"ipNetToPhysicalState", with(5210, kIpv6), {"show ipnettophysical ifindex 5210 2 2001:db8::9"}},
        {"ipNetToPhysicalState", with(kVlan10Interface, kOdd), {"show ipnettophysical ifindex 1034 3  "}},
        {"ipNetToPhysicalState", with(5211, kIpv4), {}},
    };
    for (const auto& [object, index, expected] : cases) EXPECT_EQ(commands_of(object, index), expected) << object;
    EXPECT_EQ(get("ipNetToPhysicalType", with(5211, kIpv4)).writer, kUntouched);
    EXPECT_EQ(get("ipAddressStorageType", kIpv4).writer, kUntouched);
    services::services().context.vrf = std::string(800, 'v');
    EXPECT_EQ(commands_of("ipAddressOrigin", kIpv4)[0].size(), 767u);
}

TEST_F(IpAddresses, RowsAreRecordsThatTheBackendMoves) {
    answer("ipAddressTable", integer(1), kIpv6Record);
    EXPECT_EQ(next("ipAddressIfIndex", kIpv4).name, oid_of("ipAddressIfIndex", kIpv6));
    EXPECT_EQ(shown[0].key, kIpv4Record);
    answer("ipAddressTable", integer(1), kIpv4Record);
    EXPECT_EQ(next("ipAddressIfIndex", kIpv6).name, oid_of("ipAddressIfIndex", kIpv4));
    EXPECT_EQ(shown[1].key, kIpv6Record);

    // One of another type has no octets.
    answer("ipAddressTable", integer(1), join(integer(3), Bytes(20, 7)));
    EXPECT_EQ(next("ipAddressIfIndex", kOdd).name, oid_of("ipAddressIfIndex", {3, 0}));
    EXPECT_EQ(shown[2].key, join(integer(3), Bytes(20)));

    answer("ipNetToPhysicalTable", integer(1), join(integer(1044), kIpv6Record));
    EXPECT_EQ(next("ipNetToPhysicalType", join({kVlan10Interface}, kIpv4)).name,
              oid_of("ipNetToPhysicalType", join({1044}, kIpv6)));
    EXPECT_EQ(shown[3].key, join(integer(kVlan10Interface), kIpv4Record));

    // A prefix's record is its index.
    const Bytes prefix = join(address_record(kIpv6Octets), integer(64));
    answer("ipAddressPrefixTable", integer(1), join(integer(1044), prefix));
    EXPECT_EQ(next("ipAddressPrefixOrigin").name, oid_of("ipAddressPrefixOrigin", join(join({1044}, kIpv6), {64})));
    EXPECT_EQ(shown[4].key, Bytes(36));
}

TEST_F(IpAddresses, ColumnsAreKeptWithTheirRow) {
    expect_checks({
        {"ipAddressIfIndex", kIpv4, Integer, any_number()},
        Writable("ipAddressType", kIpv6, Integer, between(1, 3)).sends_nothing(),
        Writable("ipAddressStatus", kIpv6, Integer, between(1, 8)).sends_nothing(),
        Writable("ipAddressRowStatus", kIpv4, Integer, between(4, 6).bad(5)).before([this] {
            act("IfIndex", kIpv4, kPort1);
        }),
    });
    act("Type", kIpv6, 3);
    act("Status", kIpv6, 8);
    EXPECT_EQ(act("Type", kIpv4, 2), genErr) << "IPv4 has unicast addresses alone";
    EXPECT_EQ(act("Status", kIpv4, 2), genErr);
    EXPECT_EQ(set({{"ipAddressIfIndex", kIpv6, Integer, integer(7)},
                   {"ipAddressType", kIpv4, Integer, integer(1)},
                   {"ipAddressStatus", kIpv4, Integer, integer(1)},
                   {"ipAddressRowStatus", kIpv6, Integer, integer(createAndWait)}}),
              wrongValue)
        << "a SET that is refused keeps nothing";
    EXPECT_EQ(kept("ipAddressTable_ifindex"), kPort1);
    EXPECT_EQ(key("key_ifindex").octets[3], 9);
    EXPECT_EQ(kept("ipAddressTable_type"), 3u);
    EXPECT_EQ(key("key_type").octets[15], 9);
    EXPECT_EQ(kept("ipAddressTable_status"), 8u);
    EXPECT_EQ(key("key_status").length, 16u);
}

TEST_F(IpAddresses, RowNeedsTheInterfaceThatWasWrittenForIt) {
    EXPECT_EQ(act("RowStatus", kIpv4, createAndGo), genErr);
    EXPECT_EQ(act("RowStatus", {}, createAndGo), genErr) << "the clear key is that of no interface";
    EXPECT_THAT(lines_of(kIpv4, 0, createAndGo, genErr), IsEmpty());
    act("IfIndex", kIpv6, kVlan10Interface);
    for (const int status : {createAndGo, destroy}) EXPECT_EQ(act("RowStatus", kIpv4, status), genErr);
    EXPECT_THAT(sent, IsEmpty());
    // It stays, for one request and for several.
    EXPECT_EQ(set({{"ipAddressIfIndex", kIpv4, Integer, integer(kVlan10Interface)},
                   {"ipAddressType", kIpv4, Integer, integer(1)},
                   {"ipAddressStatus", kIpv4, Integer, integer(1)},
                   {"ipAddressRowStatus", kIpv4, Integer, integer(createAndGo)}}),
              noError);
    EXPECT_EQ(set("ipAddressRowStatus", kIpv4, Integer, integer(destroy)), noError);
    EXPECT_THAT(lines(), ElementsAre("5 ipaddresstable ip 1034 10.0.10.9", "5 no ipaddresstable ip 1034 10.0.10.9"));
    EXPECT_THAT(lines_of(kOdd, kVlan10Interface, createAndGo), ElementsAre("5 ipaddresstable ip 1034  "));
}

TEST_F(IpAddresses, TypeAndStatusOfTheRowMustBeUnicastAndPreferred) {
    for (const char* column : {"Type", "Status"}) {
        SCOPED_TRACE(column);
        EXPECT_EQ(act(column, kIpv6, 2), noError);
        EXPECT_THAT(lines_of(kIpv6, kVlan10Interface, createAndGo, genErr), IsEmpty());
        EXPECT_THAT(lines_of(kIpv6, kVlan10Interface, destroy, genErr), IsEmpty());
        lines_of(kIpv4, kVlan10Interface, createAndGo);  // it is another row's
        EXPECT_EQ(act(column, kIpv6, 1), noError);
        lines_of(kIpv6, kVlan10Interface, createAndGo);
        // Only the rows of an IP address.
        EXPECT_EQ(act(column, kOdd, 2), noError);
        lines_of(kOdd, kVlan10Interface, createAndGo);
    }
}

TEST_F(IpAddresses, Ipv6AddressGoesToItsVlanInterfaceOrToGlobalMode) {
    const std::string enter = "5 interface vlan10";
    EXPECT_THAT(lines_of(kIpv6, kVlan10Interface, createAndGo), ElementsAre(enter, "-1 ipv6 address 2001:db8::9"));
    EXPECT_THAT(lines_of(kIpv6, kVlan10Interface, destroy), ElementsAre(enter, "-1 no ipv6 address 2001:db8::9"));
    for (const std::uint32_t ifindex : kNoVlanInterfaces) {
        EXPECT_THAT(lines_of(kIpv6, ifindex, createAndGo, genErr), IsEmpty());
        EXPECT_THAT(lines_of(kIpv6, ifindex, destroy), ElementsAre("5 no ipv6 address 2001:db8::9"));
    }
    refused_lines = {"ipv6 address 2001:db8::9", "no ipv6 address 2001:db8::9"};
    lines_of(kIpv6, kVlan10Interface, createAndGo, genErr);
    lines_of(kIpv6, kPort1, destroy, genErr);
    refused_lines.push_back("interface vlan10");
    EXPECT_THAT(lines_of(kIpv6, kVlan10Interface, createAndGo, genErr),
                ElementsAre(enter, "5 ipv6 address 2001:db8::9"));
    refused_lines = {"interface vlan10"};
    lines_of(kIpv6, kVlan10Interface, createAndGo);
    EXPECT_THAT(lines_of(kIpv6, kVlan10Interface, destroy), ElementsAre(enter, "5 no ipv6 address 2001:db8::9"));
}

// --- neighbours ------------------------------------------------------------------------------------------------------

class IpNeighbours : public IpAddresses {
protected:
    static constexpr int kDynamic = 3, kStatic = 4;
    const Oid ipv4 = join({kVlan10Interface}, kIpv4);
    const Oid ipv6 = join({kVlan10Interface}, kIpv6);
    const Oid odd = join({kVlan10Interface}, kOdd);
    const Bytes mac{0, 0x1f, 0xAB, 3, 4, 0xff};
    const std::string enter = "5 interface vlan10";
    const std::string arp = "-1 ip arp 10.0.10.9  00-1f-ab-03-04-ff";

    IpNeighbours() {
        // What other tests left is of another row then, and static.
        type({1}, kStatic);
        address({1});
        forget();
    }
    int type(const Oid& row, int value) { return write(action, "ipNetToPhysicalType", row, Integer, integer(value)); }
    int address(const Oid& row) { return write(action, "ipNetToPhysicalPhysAddress", row, OctetString, mac); }
    Lines lines_of(const Oid& row, int status, int error = noError) {
        forget();
        EXPECT_EQ(write(action, "ipNetToPhysicalRowStatus", row, Integer, integer(status)), error);
        return lines();
    }
};

TEST_F(IpNeighbours, WritersCheckAndSend) {
    expect_checks({
        {"ipNetToPhysicalPhysAddress", ipv4, OctetString, octets(6, 6)},
        Writable("ipNetToPhysicalType", join({1044}, kIpv4), Integer, between(3, 4)).sends_nothing(),
        Writable("ipNetToPhysicalRowStatus", ipv4, Integer, between(4, 6).bad(5))
            .before([this] {
                address(ipv4);
                type({}, kStatic);
            })
            .refused_first_line(Writable::succeeds),
    });
}

TEST_F(IpNeighbours, PhysicalAddressIsSentAtOnceAndRememberedEvenIfRefused) {
    EXPECT_EQ(address(ipv6), noError);
    EXPECT_THAT(lines(), ElementsAre(enter, "-1 ip arp 2001:db8::9  00-1f-ab-03-04-ff"));
    forget();
    type(ipv4, kDynamic);
    EXPECT_EQ(address(ipv4), genErr);
    EXPECT_EQ(address(odd), genErr);
    for (const std::uint32_t ifindex : kNoVlanInterfaces) EXPECT_EQ(address(join({ifindex}, kIpv4)), genErr);
    EXPECT_EQ(address(ipv4), genErr);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_THAT(lines_of(ipv4, createAndGo), ElementsAre(enter, arp)) << "whatever its type";
    type({1044}, kDynamic);  // another row's
    EXPECT_EQ(address(ipv4), noError);
}

TEST_F(IpNeighbours, RowNeedsThePhysicalAddressThatWasWrittenForIt) {
    EXPECT_EQ(set({{"ipNetToPhysicalPhysAddress", ipv4, OctetString, mac},
                   {"ipNetToPhysicalType", ipv4, Integer, integer(kDynamic)},
                   {"ipNetToPhysicalRowStatus", ipv4, Integer, integer(createAndWait)}}),
              wrongValue);
    EXPECT_THAT(lines_of(ipv4, destroy), ElementsAre(enter, "-1 no ip arp 10.0.10.9")) << "the type was not kept";
    EXPECT_THAT(lines_of(ipv4, createAndGo, genErr), IsEmpty());
    EXPECT_EQ(set({{"ipNetToPhysicalPhysAddress", ipv4, OctetString, mac},
                   {"ipNetToPhysicalType", ipv4, Integer, integer(kStatic)},
                   {"ipNetToPhysicalRowStatus", ipv4, Integer, integer(createAndGo)}}),
              noError);
    EXPECT_THAT(lines(), ElementsAre(enter, arp, enter, arp));
    EXPECT_THAT(lines_of(ipv4, createAndGo), ElementsAre(enter, arp)) << "it stays";
    EXPECT_THAT(lines_of(join({1044}, kIpv4), createAndGo, genErr), IsEmpty());
    std::vector<Oid> without_a_line{odd, {kVlan10Interface}};
    for (const std::uint32_t ifindex : kNoVlanInterfaces) without_a_line.push_back(join({ifindex}, kIpv4));
    for (const Oid& row : without_a_line) {
        address(row);
        EXPECT_THAT(lines_of(row, createAndGo, genErr), IsEmpty());
    }
}

TEST_F(IpNeighbours, Ipv6IsNotCreatedAndNeedsAnAddressesInterface) {
    address(ipv6);
    EXPECT_THAT(lines_of(ipv6, createAndGo, genErr), IsEmpty());
    for (const std::uint32_t ifindex : kNoVlanInterfaces) {
        act("IfIndex", kIpv4, ifindex);
        EXPECT_THAT(lines_of(ipv6, createAndGo, genErr), IsEmpty());
    }
    for (const std::uint32_t ifindex : {1025u, 5118u}) {
        act("IfIndex", kIpv4, ifindex);
        EXPECT_THAT(lines_of(ipv6, createAndGo), IsEmpty());
    }
}

TEST_F(IpNeighbours, DestroyGoesByTheTypeThatWasWrittenLast) {
    EXPECT_THAT(lines_of(ipv4, destroy), ElementsAre(enter, "-1 no ip arp 10.0.10.9"));
    EXPECT_THAT(lines_of(ipv6, destroy), ElementsAre("5 no ipv6 neighbor 2001:db8::9 vlan10"));
    refused_lines = {"no ipv6 neighbor 2001:db8::9 vlan10"};
    lines_of(ipv6, destroy, genErr);
    for (const std::uint32_t ifindex : kNoVlanInterfaces)
        for (const Oid& address : {kIpv4, kIpv6})
            EXPECT_THAT(lines_of(join({ifindex}, address), destroy, genErr), IsEmpty());
    type({1044}, kDynamic);
    EXPECT_THAT(lines_of(ipv4, destroy), ElementsAre("4 clear ip arp 10.0.10.9"));
    EXPECT_THAT(lines_of(join({kPort1}, kIpv4), destroy), ElementsAre("4 clear ip arp 10.0.10.9"));
    EXPECT_THAT(lines_of(ipv6, destroy, genErr), IsEmpty());
    refused_lines = {"clear ip arp 10.0.10.9"};
    lines_of(ipv4, destroy, genErr);
    for (const Oid& row : {odd, Oid{kVlan10Interface}}) EXPECT_THAT(lines_of(row, destroy, genErr), IsEmpty());
}

}  // namespace tests
