#include "support/simulated_switch.h"

#include "support/recording_host.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace sw {
namespace {

Fact fact_of(const agent::Value& value) {
    if (value.is_exception()) return {};
    if (value.octets.size() == 8 && value.tag == agent::kCounter64) {
        std::uint64_t number;
        std::memcpy(&number, value.octets.data(), sizeof number);
        return number;
    }
    const bool is_text =
        value.tag == agent::kOctetString || value.tag == agent::kObjectId || value.tag == agent::kIpAddress;
    if (is_text || value.octets.size() != 4) return std::string(value.octets.begin(), value.octets.end());
    std::uint32_t number;
    std::memcpy(&number, value.octets.data(), sizeof number);
    if (value.tag == agent::kInteger) return static_cast<std::int32_t>(number);
    return number;
}

agent::Value value_of(std::uint8_t tag, const Fact& fact) {
    if (const auto* octets = std::get_if<std::string>(&fact.is)) return {tag, {octets->begin(), octets->end()}};
    return agent::Value::unsigned32(tag, static_cast<std::uint32_t>(fact.number()));
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Fact& fact) {
    if (const auto* number = std::get_if<std::int64_t>(&fact.is)) return out << *number;
    if (const auto* octets = std::get_if<std::string>(&fact.is)) return out << '"' << *octets << '"';
    return out << "none";
}

OnSwitch::OnSwitch(const Size& size, std::chrono::milliseconds now)
    : now_(now),
      switch_({[this] { return now_; }, [this](const std::string& line) { log_.push_back(line); }, size}),
      registry_(tests::loaded().registry),
      engine_(registry_) {
    services::services().backend = &switch_;
    services::services().context = {};
}

OnSwitch::~OnSwitch() {
    EXPECT_TRUE(log_.empty()) << log_.front();
    services::services().backend = nullptr;
    services::services().context = {};
}

const services::Object& OnSwitch::object(const std::string& name) const { return tests::loaded().object(name); }

services::Oid OnSwitch::name_of(const std::string& name, const Index& index) const {
    return join({object(name).oid(), index});
}

Fact OnSwitch::get(const std::string& name, const Index& index) {
    return fact_of(engine_.get(name_of(name, index)).value);
}

Index OnSwitch::next(const std::string& name, const Index& index) {
    const services::Oid column = object(name).oid();
    const agent::Varbind found = engine_.next(join({column, index}));
    const bool in_column = !found.value.is_exception() && found.name.size() > column.size() &&
                           std::equal(column.begin(), column.end(), found.name.begin());
    if (!in_column) return {};
    return {found.name.begin() + static_cast<std::ptrdiff_t>(column.size()), found.name.end()};
}

std::vector<Index> OnSwitch::rows(const std::string& name) {
    std::vector<Index> rows;
    for (Index row = next(name, {}); !row.empty() && (rows.empty() || row > rows.back()); row = next(name, row))
        rows.push_back(row);
    return rows;
}

int OnSwitch::set(const std::vector<Assigned>& varbinds) {
    std::vector<agent::Varbind> request;
    for (const Assigned& one : varbinds)
        request.push_back({name_of(one.object, one.index), value_of(object(one.object).entry.type, one.value)});
    return engine_.set(request).status;
}

int OnSwitch::set_row(const Index& index, const std::vector<std::pair<std::string, Fact>>& facts) {
    std::vector<Assigned> varbinds;
    for (const auto& [object, fact] : facts) varbinds.push_back({object, index, fact});
    return set(varbinds);
}

void OnSwitch::make_row(const std::string& status, const Index& index) {
    EXPECT_EQ(set({{status, index, createAndGo}}), agent::kNoError) << status;
    expect_row(index, {{status, 1}});
}

void OnSwitch::remove_row(const std::string& status, const Index& index) {
    EXPECT_EQ(set({{status, index, destroy}}), agent::kNoError) << status;
    expect_row(index, {{status, kNone}});
}

void OnSwitch::expect(const std::vector<Setting>& settings) {
    for (const auto& [object, index, values, reason] : settings)
        for (const Fact& value : values.each) {
            SCOPED_TRACE(fmt::format("{}.{}", object, fmt::join(index, ".")));
            const Fact before = get(object, index);
            const int status = set({{object, index, value}});
            if (reason == nullptr)
                EXPECT_EQ(status, agent::kNoError);
            else
                expect_refused(status, reason);
            EXPECT_EQ(get(object, index), reason == nullptr ? value : before);
        }
}

void OnSwitch::expect_refused(int status, const std::string& reason) {
    EXPECT_NE(status, agent::kNoError) << reason;
    EXPECT_TRUE(!log_.empty() && contains(log_.back(), reason)) << reason << ": " << (log_.empty() ? "" : log_.back());
    log_.clear();
}

void OnSwitch::expect_refused(int mode, const std::string& line, const std::string& reason) {
    expect_refused(configure(mode, line) ? agent::kNoError : agent::kGenErr, reason);
}

void OnSwitch::expect_row(const Index& index, const std::vector<std::pair<std::string, Fact>>& facts) {
    for (const auto& [object, fact] : facts)
        EXPECT_EQ(get(object, index), fact) << fmt::format("{}.{}", object, fmt::join(index, "."));
}

void OnSwitch::expect_rows(std::size_t count, const std::vector<std::string>& objects) {
    for (const std::string& object : objects) EXPECT_EQ(rows(object).size(), count) << object;
}

std::map<std::string, agent::Value> OnSwitch::everything() {
    std::map<std::string, agent::Value> values;
    for (const auto& [name, magic] : switch_.served())
        for (const Index& index : rows(name))
            values[fmt::format("{}.{}", name, fmt::join(index, "."))] = engine_.get(name_of(name, index)).value;
    return values;
}

std::string ports(std::initializer_list<std::uint32_t> members) {
    PortList list;
    for (const std::uint32_t n : members) list.set(n, true);
    return {list.octets.begin(), list.octets.end()};
}

}  // namespace sw
