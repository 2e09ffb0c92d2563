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

OnSwitch::OnSwitch(const Size& size)
    : switch_({[this] { return now_; }, [this](const std::string& line) { log_.push_back(line); }, size}),
      registry_(tests::loaded().registry),
      engine_(registry_) {
    services::services().backend = &switch_;
    services::services().context = {};
}

OnSwitch::~OnSwitch() {
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

void OnSwitch::expect(const std::vector<Setting>& settings) {
    for (const Setting& setting : settings) {
        SCOPED_TRACE(fmt::format("{}.{}", setting.object, fmt::join(setting.index, ".")));
        const Fact before = get(setting.object, setting.index);
        log_.clear();
        const int status = set({{setting.object, setting.index, setting.value}});
        const bool is_accepted = setting.reason == nullptr;
        EXPECT_EQ(status == agent::kNoError, is_accepted) << status;
        EXPECT_EQ(get(setting.object, setting.index), is_accepted ? setting.value : before);
        const std::string log = log_.empty() ? "" : log_.front();
        EXPECT_TRUE(is_accepted ? log.empty() : contains(log, setting.reason)) << log;
    }
    log_.clear();
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
