#include "support/recording_host.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include <dlfcn.h>
#include <link.h>

namespace tests {
namespace {

// Says what is logged. The library does not export it: it is found as a debugger does.
volatile int* find_log_switch() {
    std::ifstream file(SWITCHMIB_LIBRARY, std::ios::binary);
    const std::string image{std::istreambuf_iterator<char>(file), {}};
    const auto load = [&image]<class T>(T& record, std::size_t offset) {
        std::memcpy(&record, image.data() + offset, sizeof record);
    };
    ElfW(Ehdr) header;
    load(header, 0);
    for (std::size_t section = 0; section < header.e_shnum; ++section) {
        ElfW(Shdr) table, names;
        load(table, header.e_shoff + section * sizeof table);
        if (table.sh_type != SHT_SYMTAB) continue;
        load(names, header.e_shoff + table.sh_link * sizeof names);
        for (std::size_t at = 0; at < table.sh_size; at += sizeof(ElfW(Sym))) {
            ElfW(Sym) symbol;
            load(symbol, table.sh_offset + at);
            const char* name = image.data() + names.sh_offset + symbol.st_name;
            if (std::strcmp(name, "_ZN9switchmib9tunnelMIB10log_switchE") != 0) continue;
            Dl_info library;
            dladdr(loaded().symbol<void>("tunnelMIB_oid"), &library);
            return reinterpret_cast<volatile int*>(static_cast<char*>(library.dli_fbase) + symbol.st_value);
        }
    }
    return nullptr;
}

}  // namespace

class Tunnels : public RecordingHost {
protected:
    // The log without what every line begins with, which is checked, as its level is: errors begin with "!".
    std::string log() const override {
        const std::string front = "<MIB_TNL>(";
        std::string log;
        for (const services::LogLine& line : logged) {
            EXPECT_EQ(line.channel, "an");
            EXPECT_EQ(line.category, 92);
            EXPECT_THAT(line.text, ::testing::StartsWith(front));
            EXPECT_GT(std::atoi(&line.text[front.size()]), 0);
            const std::string text = line.text.substr(line.text.find("):") + 2);
            EXPECT_EQ(line.level, text.starts_with("!") ? 104 : 101) << text;
            log += text;
        }
        return log;
    }
    int set_status(const Oid& index, int value) {
        forget();
        return set("tunnelInetConfigStatus", index, Integer, integer(value));
    }
};

// From 192.0.2.1 to 203.0.113.9.
Oid tunnel(oid method, oid id) { return {1, 4, 192, 0, 2, 1, 1, 4, 203, 0, 113, 9, method, id}; }

TEST_F(Tunnels, RowsOfOtherAddressTypesAreShown) {
    next("tunnelInetConfigIfIndex", {2, 16, 0x20, 1});
    EXPECT_THAT(commands(), ElementsAre("show snmp tunnel inetconfig 2001:: 0.0.0.0 0 0"));
    EXPECT_THAT(logged, IsEmpty());  // commands are not errors
}

TEST_F(Tunnels, AddressThatIsNoTextIsLoggedAndHandsOutNothing) {
    const std::pair<Oid, std::string> odd[] = {{{3, 1, 9, 1, 4, 1, 2, 3, 4, 12, 1}, "!src_str\n"},
                                               {{3, 1, 9, 3, 1, 9, 12, 1}, "!src_str\n"},
                                               {{1, 4, 1, 2, 3, 4, 3, 1, 9, 12, 1}, "!dest_str\n"}};
    for (const auto& [index, line] : odd) {
        forget();
        EXPECT_EQ(get("tunnelInetConfigStatus", index).writer, kUntouched);
        EXPECT_EQ(log(), line);
        EXPECT_THAT(shown, IsEmpty());
    }
    // A table that never answers hands out its writers for any index.
    EXPECT_NE(get("tunnelConfigStatus", {1, 2, 3}).writer, kUntouched);
}

TEST_F(Tunnels, EndIsSetAndMayCreateTheTunnel) {
    const std::pair<std::string, std::string> ends[] = {{"tunnelIfLocalInetAddress", "source"},
                                                        {"tunnelIfRemoteInetAddress", "destination"}};
    for (const auto& [object, end] : ends) {
        const Bytes address{192, 0, 2, 1};
        const Lines some{"4 show interface tunnel2", "5 interface tunnel 2", "-1 tunnel " + end + " 192.0.2.1"};
        expect_checks({Writable(object, {898}, OctetString, octets(4, 4).good(address))
                           .order({step::type, step::column, step::index, step::length.answers(genErr)})
                           .refused_first_line(Writable::is_ignored)
                           .logs({{Step::length, "!invalid length\n"}})});
        // A refused address takes the tunnel away again only if it was not there. Whether that is accepted, or the
        // probe is, is not logged.
        for (const bool is_new : {true, false}) {
            forget();
            refused_lines = {"tunnel " + end + " 192.0.2.1", "no interface tunnel 2"};
            if (is_new) refused_lines.push_back("show interface tunnel2");
            EXPECT_EQ(set(object, {898}, OctetString, address), genErr);
            Lines expected = some;
            if (is_new) expected.push_back("5 no interface tunnel 2");
            EXPECT_EQ(lines(), expected);
            EXPECT_EQ(log(), "!tunnel " + end + " 192.0.2.1\n");
        }
        forget();
        refused_lines = {"interface tunnel 2", "show interface tunnel2"};
        EXPECT_EQ(set(object, {898}, OctetString, address), genErr);
        EXPECT_THAT(lines(), ElementsAre("4 show interface tunnel2", "5 interface tunnel 2"));
        EXPECT_EQ(log(), "!interface tunnel 2\n");
        refused_lines.clear();
    }
    // The tunnel's number is not checked.
    forget();
    EXPECT_EQ(set("tunnelIfLocalInetAddress", {5}, OctetString, {1, 2, 3, 255}), noError);
    EXPECT_THAT(lines(),
                ElementsAre("4 show interface tunnel-891", "5 interface tunnel -891", "-1 tunnel source 1.2.3.255"));
}

TEST_F(Tunnels, CreationIsUndoneWhenALaterLineFails) {
    const std::string row = "192.0.2.1 203.0.113.9 12 7";
    const Lines creation{"4 snmp check tunnel create " + row, "5 interface tunnel 7", "-1 tunnel source 192.0.2.1",
                         "-1 tunnel destination 203.0.113.9", "-1 tunnel mode ipv6ip"};
    EXPECT_EQ(set_status(tunnel(12, 7), createAndGo), noError);
    EXPECT_EQ(lines(), creation);
    for (std::size_t refused = 0; refused < creation.size(); ++refused) {
        refused_line = refused;
        EXPECT_EQ(set_status(tunnel(12, 7), createAndGo), genErr);
        Lines expected(creation.begin(), creation.begin() + static_cast<std::ptrdiff_t>(refused) + 1);
        EXPECT_EQ(log(), "!" + expected.back().substr(expected.back().find(' ') + 1) + "\n");
        if (refused >= 2) expected.push_back("5 no interface tunnel 7");
        EXPECT_EQ(lines(), expected);
    }
    refused_line.reset();
    for (const std::string& line : {"snmp check tunnel destroy " + row, std::string("no interface tunnel 7")}) {
        refused_lines = {line};
        EXPECT_EQ(set_status(tunnel(12, 7), destroy), genErr);
        EXPECT_EQ(log(), "!" + line + "\n");
    }
    refused_lines.clear();
    // Addresses of other types are empty, in the lines too.
    EXPECT_EQ(set_status({2, 2, 0x20, 1, 0, 0, 13, 1}, createAndGo), noError);
    EXPECT_THAT(lines(), ElementsAre("4 snmp check tunnel create   13 1", "5 interface tunnel 1", "-1 tunnel source ",
                                     "-1 tunnel destination ", "-1 tunnel mode ipv6ip isatap"));
}

TEST_F(Tunnels, LogSwitchSaysWhatIsLogged) {
    const Bytes address{192, 0, 2, 1};
    const Oid odd{1, 4, 1, 2, 3, 4, 3, 1, 9, 12, 1};
    volatile int* const log_switch = find_log_switch();
    ASSERT_NE(log_switch, nullptr);
    *log_switch = 3;  // everything
    get("tunnelIfLocalAddress", {897});
    get("tunnelInetConfigIfIndex", tunnel(12, 1));
    EXPECT_EQ(write(undo, "tunnelIfLocalInetAddress", {898}, OctetString, address), noError);
    EXPECT_EQ(log(),
              "show snmp tunnel if 897\nshow snmp tunnel inetconfig 192.0.2.1 203.0.113.9 12 1\nsrc_addr:192.0.2.1\n");
    forget();
    const std::string line = "tunnel destination 192.0.2.1";
    refused_lines = {"show interface tunnel2", line, "no interface tunnel 2"};
    EXPECT_EQ(write(action, "tunnelIfRemoteInetAddress", {898}, OctetString, address), genErr);
    EXPECT_EQ(log(), "dest_addr:192.0.2.1\nshow interface tunnel2\ninterface tunnel 2\n" + line + "\n!" + line +
                         "\nno interface tunnel 2\n");
    *log_switch = 2;  // all but errors
    forget();
    EXPECT_EQ(write(action, "tunnelInetConfigStatus", tunnel(2, 1), Integer, integer(active)), genErr);
    EXPECT_EQ(write(action, "tunnelIfLocalInetAddress", {898}, OctetString, {}), genErr);
    get("tunnelInetConfigIfIndex", odd);
    EXPECT_EQ(write(action, "tunnelInetConfigStatus", tunnel(12, 1), Integer, integer(destroy)), noError);
    EXPECT_EQ(log(), "snmp check tunnel destroy 192.0.2.1 203.0.113.9 12 1\nno interface tunnel 1\n");
    *log_switch = 1;
}

TEST_F(Tunnels, RowsAreCheckedInTheirOrder) {
    for (const oid id : {1u, 127u})
        expect_checks({Writable("tunnelInetConfigStatus", tunnel(12, id), Integer, between(active, destroy))
                           .sends({{active, {}}, {notInService, {}}, {notReady, {}}, {createAndWait, {}}})});
    // The method, then the number, then the value.
    const std::tuple<oid, oid, int, int, std::string> refusals[] = {{2, 128, 7, genErr, "!EncapsMethod 2\n"},
                                                                    {0, 1, active, genErr, "!EncapsMethod 0\n"},
                                                                    {10, 1, active, genErr, "!EncapsMethod 10\n"},
                                                                    {14, 1, active, genErr, "!EncapsMethod 14\n"},
                                                                    {12, 0, 7, genErr, "!ID 0\n"},
                                                                    {12, 128, active, genErr, "!ID 128\n"},
                                                                    {12, 1, 0, wrongValue, "!invalid value 0\n"},
                                                                    {12, 1, -1, wrongValue, "!invalid value -1\n"}};
    for (const auto& [method, id, value, error, line] : refusals) {
        forget();
        EXPECT_EQ(write(reserve1, "tunnelInetConfigStatus", tunnel(method, id), Integer, integer(value)), error);
        EXPECT_EQ(log(), line);
    }
    expect_checks({
        Writable("tunnelIfHopLimit", {9, 9}, Integer, any_number()).order(unparsed()).refused(),
        Writable("tunnelIfAddressType", {9, 9}, Integer, between(0, 4).good(16).bad(15).bad(17))
            .order(unparsed())
            .sends_nothing(),
        Writable("tunnelConfigStatus", {9, 9}, Integer, between(active, destroy)).order(unparsed()).refused(),
    });
}

}  // namespace tests
