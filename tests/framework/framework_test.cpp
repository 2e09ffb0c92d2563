// The framework's steps, through the probe module: every index kind, and what tables and groups can ask for.
#include "support/recording_host.h"

namespace tests {

class Framework : public RecordingHost {
protected:
    Framework() : RecordingHost(probe()) {}

    // The command that a request forms; "" when the backend is asked nothing.
    std::string command(const std::string& object, const Oid& index, int exact) {
        forget();
        read(object, index, exact);
        return shown.empty() ? "" : shown[0].command();
    }
    std::string get_command(const std::string& object, const Oid& index) { return command(object, index, 1); }
    std::string next_command(const std::string& object, const Oid& index) { return command(object, index, 0); }
};

TEST_F(Framework, ExactIndexMustHaveTheKeysSize) {
    EXPECT_EQ(get_command("TwoValue", {}), "two 0 0 0");
    EXPECT_EQ(get_command("TwoValue", {1}), "two 1 0 0");  // stops at a field boundary
    EXPECT_EQ(get_command("TwoValue", {1, 2}), "two 1 2 0");
    EXPECT_EQ(get_command("TwoValue", {1, 2, 3}), "");
    EXPECT_EQ(get_command("MacAfterIntegerValue", {5, 1, 2, 3, 4, 5}), "");  // cuts a field short
    EXPECT_EQ(get_command("MacAfterIntegerValue", {5, 1, 2, 3, 4, 5, 6}), "mac 5 0106");
    EXPECT_EQ(shown[0].request.key_size, 12);
}

TEST_F(Framework, NextTakesWhatThereIs) {
    EXPECT_EQ(next_command("TwoValue", {1}), "two 1 0 0");
    EXPECT_EQ(next_command("TwoValue", {1, 2, 3, 4}), "two 1 2 0");
    EXPECT_EQ(next_command("MacAfterIntegerValue", {5, 1, 2}), "mac 5 0100");
    // A request before the column asks for the first row, whatever follows.
    Oid before = oid_of("TwoValue", {7, 7});
    --before[before.size() - 3];
    forget();
    const ReadResult result = read_name("TwoValue", before, 0);
    EXPECT_THAT(commands(), ElementsAre("two 0 0 0"));
    EXPECT_EQ(result.name.size(), before.size() - 2);
}

TEST_F(Framework, EveryKindIsParsedAndBuilt) {
    const struct {
        const char* object;
        const char* table;
        Oid index;
        const char* command;
        int cut = 1;  // how many sub-identifiers less cut a field short
    } cases[] = {
        {"MacAfterIntegerValue", "MacAfterInteger", {9, 170, 0, 0, 0, 0, 255}, "mac 9 aaff"},
        {"TextsValue", "Texts", {1, 3, 'a', 'b', 'c', 24}, "text 1 abc 24"},
        {"PolicyValue", "Policy", {1, 4, 10, 0, 0, 1, 24, 2, 0, 7, 1, 4, 10, 0, 0, 9}, "policy 1 1/24 7 1 9"},
        {"OnInterfaceValue", "OnInterface", {1, 4, 239, 0, 0, 1, 1034, 4, 10, 0, 0, 2}, "on 1.1 1034 1.2"},
        {"PairValue", "Pair", {3, 1, 4, 239, 0, 0, 1, 1, 4, 10, 0, 0, 2}, "pair 3 1.1 1.2"},
        {"StreamValue", "Stream", {3, 1, 2, 3, 4, 5, 6, 7, 8, 9}, "stream 3 0108 9", 2},
        {"ProtocolValue", "Protocol", {1, 2, 8, 6}, "protocol 1 0806"},
    };
    for (const auto& [object, table, index, expected, cut] : cases) {
        SCOPED_TRACE(object);
        EXPECT_EQ(get_command(object, index), expected);
        // The key that the backend leaves comes back as the same index.
        answer(table, integer(1), shown.at(0).key);
        EXPECT_EQ(next(object).name, oid_of(object, index));
        EXPECT_EQ(get_command(object, Oid(index.begin(), index.end() - cut)), "");
        Oid longer = index;
        longer.push_back(0);
        EXPECT_EQ(get_command(object, longer), "");
    }
}

TEST_F(Framework, HostileLengthsAreRefusedOrCut) {
    for (const oid length : {17u, 128u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        SCOPED_TRACE(length);
        EXPECT_EQ(get_command("PolicyValue", {1, length, 10, 0, 0, 1, 24}), "");
        EXPECT_EQ(get_command("PairValue", {3, 1, length, 239, 0, 0, 1, 1, 4}), "");
        EXPECT_EQ(get_command("OnInterfaceValue", {1, length, 1}), "");
        EXPECT_EQ(get_command("ProtocolValue", {1, length, 8, 6}), "");
        next_command("PolicyValue", {1, length, 10, 0, 0, 1, 24});
        next_command("OnInterfaceValue", {1, 4, 1, 2, 3, 4, 5, length});
        next_command("TextsValue", {1, length, 'a'});
    }
    // A counted string of another length than the key's has no row, in either direction.
    EXPECT_EQ(get_command("ProtocolValue", {1, 3, 8, 6, 0}), "");
    EXPECT_EQ(get_command("ProtocolValue", {1}), "");
    EXPECT_EQ(next_command("ProtocolValue", {1, 3, 8}), "");
    EXPECT_EQ(next_command("ProtocolValue", {1, 2, 8}), "protocol 1 0800");
    EXPECT_EQ(next_command("ProtocolValue", {1}), "protocol 1 0000");
}

TEST_F(Framework, ScalarsAskByMagicWithoutAKey) {
    answer("probeGlobals", integer(42));
    const ReadResult shown_value = get("probeShown", {0});
    EXPECT_EQ(shown_value.value, integer(42));
    EXPECT_EQ(shown_value.name, oid_of("probeShown", {0}));
    EXPECT_EQ(shown_value.writer, nullptr);  // cleared on the way
    get("probeOwnText", {0});
    answer("probeFormedGlobals", integer(1));
    get("probeFormed", {0});
    EXPECT_THAT(commands(), ElementsAre("show probe", "show probe two", "show probe 1"));
    EXPECT_EQ(shown[0].request.result_size, 12);
    EXPECT_GT(shown[0].request.line, 0);
    EXPECT_EQ(shown[0].request.exact, 1);
    EXPECT_EQ(next("probeShown").name, oid_of("probeShown", {0}));
    EXPECT_EQ(shown.back().request.exact, 1);
    EXPECT_EQ(shown.back().request.key, nullptr);
    EXPECT_EQ(shown.back().request.request_class, 2u);

    forget();
    EXPECT_EQ(get("probeShown", {1}).value, std::nullopt);
    EXPECT_EQ(get("probeShown").value, std::nullopt);
    for (const int magic : {0, 5}) EXPECT_EQ(read("probeShown", {0}, 1, magic).value, std::nullopt);
    const ReadResult never = get("probeNever", {0});
    EXPECT_EQ(never.value, std::nullopt);
    EXPECT_NE(never.writer, nullptr);
    EXPECT_EQ(get("probeComputed", {0}).value, integer(7));
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(Framework, TablesRefuseMagicsOutsideTheirColumns) {
    answer("Two", integer(1));
    for (const int magic : {0, 2, 255}) EXPECT_EQ(read("TwoValue", {1, 2}, 1, magic).value, std::nullopt);
    EXPECT_THAT(shown, IsEmpty());
    EXPECT_EQ(get("TwoValue", {1, 2}).writer, kUntouched);
    EXPECT_EQ(shown[0].request.result, ret_value);
    EXPECT_EQ(shown[0].request.result_size, 8192);
    EXPECT_EQ(shown[0].request.index_count, 0);
}

TEST_F(Framework, OddTableAsksAsItSays) {
    answer("probeOddTable", integer(1), {0, 0, 0, 0, 77, 0, 0, 0});
    const ReadResult result = next("probeOdd", {12, 3});
    EXPECT_EQ(result.name, oid_of("probeOdd", {77}));  // taken from the record
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_EQ(shown[0].request.request_class, 16384u);
    EXPECT_EQ(shown[0].request.index_count, 2);
    EXPECT_EQ(shown[0].key, (Bytes{0, 0, 0, 0, 12, 0, 0, 0}));  // filled from the key
    EXPECT_EQ(shown[0].command(), "odd 12 5");
    EXPECT_EQ(logged.at(0).text, "odd 2\n");
    EXPECT_EQ(logged.at(1).text, "row 77\n");
    answers.clear();
    get("probeOdd", {12});
    EXPECT_EQ(logged.back().text, "none 12\n");

    forget();
    EXPECT_EQ(get("probeOdd", {101}).writer, kUntouched);  // a row that is not accepted
    EXPECT_EQ(get("probeOdd", {1, 2}).writer, kUntouched);
    EXPECT_EQ(logged.at(0).text, "bad index -1\n");
    EXPECT_EQ(get("probeOdd", {13}).writer, kUntouched);  // a command that is not formed
    EXPECT_EQ(get("probeOddNever", {1}).value, std::nullopt);
    EXPECT_EQ(logged.back().text, "odd 1\n");  // a tracing table forms it nevertheless
    for (const int magic : {0, 5}) {           // and for what is not a column
        EXPECT_EQ(read("probeOdd", {1}, 1, magic).writer, kUntouched);
        EXPECT_EQ(logged.back().text, "odd " + std::to_string(magic) + "\n");
    }
    EXPECT_THAT(shown, IsEmpty());
    EXPECT_EQ(get("probeOddCleared", {1}).writer, nullptr);
    EXPECT_EQ(get_command("probeOddText", {1}), "odd text");
}

TEST_F(Framework, ComputedTableMovesItsOwnKey) {
    EXPECT_EQ(next("probeComputedValue").name, oid_of("probeComputedValue", {1}));
    EXPECT_EQ(next("probeComputedValue", {1}).name, oid_of("probeComputedValue", {2}));
    EXPECT_EQ(next("probeComputedValue", {2}).value, std::nullopt);
    EXPECT_EQ(get("probeComputedValue", {2}).value, integer(7));
    EXPECT_THAT(shown, IsEmpty());
}

TEST_F(Framework, WritesPatchTheExportedColumnSlot) {
    auto* oids = probe().symbol<oid>("PROBEODDTABLE_oid");
    const Oid column = oid_of("probeOdd");
    EXPECT_EQ(write(reserve1, "probeOdd", {1}, Unsigned32, integer(9)), noError);
    EXPECT_EQ(Oid(oids, oids + column.size()), column);
    // The codec compares lengths alone: the column of the request is what counts, whichever it is.
    Oid other = oid_of("probeOdd", {4});
    other[column.size() - 1] = 9;
    EXPECT_EQ(write_name(action, "probeOdd", other, Unsigned32, integer(9)), noError);
    EXPECT_EQ(oids[column.size() - 1], 9u);
    EXPECT_THAT(lines(), ElementsAre("4 probe 4"));
    for (const int phase : {+reserve2, +commit, +release, +undo, 6, 99})
        EXPECT_EQ(write(phase, "probeOdd", {1}, Unsigned32, integer(9)), noError);
    EXPECT_EQ(sent.size(), 1u);
}

}  // namespace tests
