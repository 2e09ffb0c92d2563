// The simulated switch's forwarding database: the same by address, by VLAN and as its ports are, whatever happens.
#include "support/simulated_switch.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace sw {
namespace {

using std::chrono::seconds;

Key key_of(std::uint32_t vid, const Value& mac) {
    Key key(12);
    std::memcpy(key.data(), &vid, sizeof vid);
    std::memcpy(key.data() + 4, mac.data(), 6);
    return key;
}
std::uint32_t vid_of(const Key& key) {
    std::uint32_t vid;
    std::memcpy(&vid, key.data(), sizeof vid);
    return vid;
}
std::string spelled(const unsigned char* mac, const char* octet) {
    std::string text;
    for (int i = 0; i < 6; ++i) text += (i ? "-" : "") + fmt::format(fmt::runtime(octet), mac[i]);
    return text;
}
constexpr const char *kLower = "{:02x}", *kUpper = "{:02X}";

}  // namespace

class Forwarded : public SimulatedSwitchTest {
protected:
    struct Entry {
        std::uint32_t port, vid;
        bool operator==(const Entry&) const = default;
    };
    using Database = std::map<Value, Entry>;  // by address

    Database by_vlan() {
        Database database;
        Key key(12);
        const auto command = [&key] {
            return fmt::format("show uib mac address-table address {} vlan {}", spelled(&key[4], kLower), vid_of(key));
        };
        while (const auto port = show(switch_, "dot1qTpFdbTable", command(), 2, key, false)) {
            const Value mac(key.begin() + 4, key.begin() + 10);
            EXPECT_TRUE(database.emplace(mac, Entry{as_number(port), vid_of(key)}).second);
        }
        return database;
    }
    std::map<Value, std::uint32_t> by_address() {
        std::map<Value, std::uint32_t> ports;
        Key key(6);
        const auto command = [&key] {
            return "show uib default mac address-table address " + spelled(key.data(), kLower);
        };
        while (const auto port = show(switch_, "dot1dTpFdbTable", command(), 2, key, false)) {
            const Value mac(key.begin(), key.end());
            EXPECT_EQ(show(switch_, "dot1dTpFdbTable", command(), 1, key, true), mac);
            ports.emplace(mac, as_number(port));
        }
        return ports;
    }
    // Everything, which has to agree.
    Database all() {
        const Database database = by_vlan();
        std::map<Value, std::uint32_t> ports;
        std::map<std::uint32_t, std::uint32_t> counts;
        for (const auto& [mac, entry] : database) {
            ports.emplace(mac, entry.port);
            counts[entry.vid] += entry.port != 0;  // the switch's own address was not learned
        }
        EXPECT_EQ(by_address(), ports);
        for (const auto& [vid, count] : counts) {
            Key key(4);
            std::memcpy(key.data(), &vid, sizeof vid);
            EXPECT_EQ(as_number(show(switch_, "dot1qFdbTable", fmt::format("show mac address-table count vlan {}", vid),
                                     2, key, true)),
                      count);
        }
        return database;
    }
    static std::size_t on_port(const Database& database, std::uint32_t port) {
        return static_cast<std::size_t>(std::count_if(database.begin(), database.end(),
                                                      [port](const auto& entry) { return entry.second.port == port; }));
    }
    std::optional<Value> group(std::uint32_t vid, const Value& mac, int magic) {
        Key key = key_of(vid, mac);
        return show(switch_, "dot1qTpGroupTable",
                    fmt::format("show debugging mcast group_table vlan {} mac {}", vid, spelled(&key[4], kUpper)),
                    magic, key, true);
    }
    bool global(const std::string& line) { return configure(5, line); }
    bool on_interface(const std::string& name, const std::string& line) {
        return global("interface " + name) && configure(-1, line);
    }
};

TEST_F(Forwarded, IsTheSameByAddressAndByVlanWhileItChanges) {
    now_ = seconds(100000);
    const Database first = all();
    EXPECT_GT(first.size(), 200u);
    EXPECT_EQ(on_port(first, 4), 0u);  // has no cable
    EXPECT_EQ(first.at({"\x02\x53\x57\x10\0\0", 6}), (Entry{0, 1}));
    std::size_t gone = 0, learned = 0;
    Database before = first;
    for (int i = 0; i < 8; ++i) {
        now_ += seconds(150);
        const Database now = all();
        for (const auto& [mac, entry] : before) gone += !now.contains(mac);
        for (const auto& [mac, entry] : now) learned += !before.contains(mac);
        before = now;
    }
    EXPECT_GT(gone, 20u);
    EXPECT_GT(learned, 20u);
    EXPECT_EQ(before, first);  // the stations repeat themselves
    EXPECT_EQ(log_, Log());
}

TEST_F(Forwarded, FollowsPortsAndVlans) {
    now_ = seconds(100000);
    EXPECT_GT(on_port(all(), 5), 0u);
    ASSERT_TRUE(on_interface("port5", "shutdown"));
    EXPECT_EQ(on_port(all(), 5), 0u);
    ASSERT_TRUE(on_interface("port5", "no shutdown"));
    EXPECT_GT(on_port(all(), 5), 0u);  // who talks is learned at once, who is silent is not
    EXPECT_LT(on_port(all(), 5), 6u);
    ASSERT_TRUE(on_interface("port5", "switchport access vlan 20"));
    EXPECT_EQ(on_port(all(), 5), 0u);
    ASSERT_TRUE(global("no vlan 10"));
    for (const auto& [mac, entry] : all()) EXPECT_NE(entry.vid, 10u);
}

TEST_F(Forwarded, AgingTimeDecidesHowLongSilentStationsStay) {
    now_ = seconds(100000);
    const std::size_t usual = all().size();
    ASSERT_TRUE(global("mac address-table aging-time 10"));
    const std::size_t few = all().size();
    EXPECT_LT(few, usual);
    ASSERT_TRUE(global("mac address-table aging-time 0"));
    EXPECT_EQ(all().size(), few);  // what has aged has to be learned again
    now_ += seconds(1200);
    EXPECT_GT(all().size(), usual);
    for (const char* line : {"mac address-table aging-time 9", "mac address-table aging-time 1000001"})
        EXPECT_FALSE(global(line)) << line;
}

TEST_F(Forwarded, GroupsAreThoseOfSnoopingAndTheStaticOnes) {
    const Value learned("\x01\x00\x5e\x01\x00\x02", 6), fixed("\x01\x00\x5e\x00\x00\x63", 6);
    const auto ports = [](std::initializer_list<int> members) {
        Value list(12, '\0');
        for (const int port : members)
            list[(port - 1) / 8] = static_cast<char>(list[(port - 1) / 8] | 0x80 >> (port - 1) % 8);
        return list;
    };
    EXPECT_EQ(group(10, learned, 2), ports({5, 6, 13}));
    ASSERT_TRUE(on_interface("port6", "shutdown"));
    EXPECT_EQ(group(10, learned, 3), ports({5, 13}));
    const std::string line = "mac address-table static 01-00-5e-01-00-02 vlan 10 interface port7";
    ASSERT_TRUE(global(line));
    EXPECT_EQ(group(10, learned, 2), ports({5, 7, 13}));
    EXPECT_EQ(group(10, learned, 3), ports({5, 13}));
    ASSERT_TRUE(global("no " + line));
    EXPECT_EQ(group(10, learned, 2), ports({5, 13}));

    ASSERT_TRUE(on_interface("vlan10", "ip igmp snooping static-group 239.1.0.99 interface port8"));
    EXPECT_TRUE(group(10, {"\x01\x00\x5e\x01\x00\x63", 6}, 2));
    ASSERT_TRUE(on_interface("vlan10", "no ip igmp snooping static-group 239.1.0.99 interface port8"));
    EXPECT_FALSE(group(10, {"\x01\x00\x5e\x01\x00\x63", 6}, 2));
    EXPECT_EQ(log_, Log());

    for (const char* refused : {"mac address-table static 00-00-5e-00-00-63 vlan 10 interface port7",
                                "mac address-table static 01-00-5e-00-00-63 vlan 11 interface port7",
                                "mac address-table static 01-00-5e-00-00-63 vlan 10 interface port70",
                                "no mac address-table static 01-00-5e-00-00-63 vlan 10 interface port7",
                                "no mac address-table static 01-00-5e-00-00-63 vlan 10"})
        EXPECT_FALSE(global(refused)) << refused;
}

}  // namespace sw
