// The recording host of the router's multicast modules, and how their log is compared.
#pragma once

#include "support/recording_host.h"

#include <set>
#include <string>

namespace tests {

class MulticastHost : public RecordingHost {
protected:
    // Each line after a "|", those of level 104 with "!" before them. "MGMD$" at the front and what ends each line, the
    // table or writer and the source line, are left out.
    std::string log() const override {
        std::string log;
        for (const services::LogLine& entry : logged) {
            EXPECT_EQ(entry.channel + std::to_string(entry.category), "an62");
            EXPECT_TRUE(entry.level == 101 || entry.level == 104);
            const std::size_t line = entry.text.rfind('$'), of = entry.text.rfind('$', line - 1);
            EXPECT_TRUE(entry.text.starts_with("MGMD$") && entry.text.ends_with("\n") && of > 4) << entry.text;
            EXPECT_GT(std::stoi(entry.text.substr(line + 1)), 0);
            log += (entry.level == 104 ? "|!" : "|") + entry.text.substr(5, of - 5);
        }
        return log;
    }
    // The tables and writers that the lines name.
    std::set<std::string> loggers() const {
        std::set<std::string> names;
        for (const services::LogLine& entry : logged) {
            const std::size_t line = entry.text.rfind('$'), of = entry.text.rfind('$', line - 1) + 1;
            names.insert(entry.text.substr(of, line - of));
        }
        return names;
    }

    int write_phase(int phase, const std::string& column, const Oid& index, std::uint8_t type, const Bytes& value) {
        forget();
        return write(phase, column, index, type, value);
    }
};

// "5121.1034.1" as an index.
inline Oid index_of(const char* numbers) { return *numbers ? services::oid_from_numbers(numbers).value() : Oid(); }

// Lines in one text, each after a "|".
inline std::string joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) text += "|" + line;
    return text;
}

// The first refusals of a writer, in the order of its steps, as Writable::logs takes them.
inline std::map<Step::Kind, std::string> refusals(const std::vector<std::string>& logs) {
    constexpr Step::Kind kKinds[] = {Step::type, Step::length, Step::column, Step::index, Step::value};
    std::map<Step::Kind, std::string> texts;
    for (std::size_t i = 0; i < logs.size(); ++i) texts[kKinds[i]] = logs[i];
    return texts;
}

}  // namespace tests
