#include "switch/table_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace sw {
namespace {

constexpr int kFixedString = 0;
constexpr int kCountedString = 14;

struct Extent {
    std::size_t octets;
    std::size_t alignment;
};

// The place that a field takes in a key record.
Extent extent_of(const Field& field) {
    switch (field.kind) {
        case kFixedString:
        case kCountedString: return {field.octets, 1};
        case 2:
        case 8: return {sizeof(std::uint32_t), alignof(std::uint32_t)};
        case 6: return {6, 1};
        case 7: return {sizeof(InetText), alignof(InetText)};
        case 10: return {sizeof(InetAddress), alignof(InetAddress)};
        case 11: return {sizeof(InetPrefix), alignof(InetPrefix)};
        case 12: return {sizeof(InetPairOnInterface), alignof(InetPairOnInterface)};
        case 13: return {2 * sizeof(InetAddress), alignof(InetAddress)};
        default: throw std::invalid_argument(fmt::format("index kind {} has no place in a key", field.kind));
    }
}

std::size_t align(std::size_t offset, std::size_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

template <class Convert>
Convert* converter(int slot) {
    return reinterpret_cast<Convert*>(uib_oid_convert[slot]);
}

// Compares the addresses that a command spells with those in the key's index from `at` on. The type of a key's address
// may have been forced, and a command without an address stands for one of no known type: the index gets the type that
// was asked for, so that a walk goes on from there.
bool agree(Index& index, std::size_t at, const Arguments& arguments) {
    for (const Argument& argument : arguments) {
        if (argument.is_number) continue;
        if (at + 2 > index.size()) return false;
        const std::size_t length = std::min<std::size_t>(index[at + 1], index.size() - at - 2);
        const Index& said = argument.address;
        const bool same_type = !said.empty() && said[0] == index[at];
        if (same_type && said[1] == length &&
            !std::equal(said.begin() + 2, said.end(), index.begin() + static_cast<std::ptrdiff_t>(at) + 2))
            return false;
        index[at] = said.empty() ? std::numeric_limits<oid>::max() : said[0];
        at += 2 + length;
    }
    return true;
}

template <class Number>
Value octets_of(const Number& number) {
    return Value(reinterpret_cast<const char*>(&number), sizeof number);
}

}  // namespace

Index join(std::initializer_list<Index> parts) {
    Index joined;
    for (const Index& part : parts) joined.insert(joined.end(), part.begin(), part.end());
    return joined;
}

KeyLayout::KeyLayout(std::initializer_list<Field> fields, std::size_t size) {
    std::size_t alignment = 1;
    for (const Field& field : fields) {
        const Extent extent = extent_of(field);
        alignment = std::max(alignment, extent.alignment);
        fields_.push_back({field, align(size_, extent.alignment)});
        size_ = fields_.back().offset + extent.octets;
    }
    size_ = std::max(align(size_, alignment), size);
    clear_ = encode(std::vector<unsigned char>(size_).data());
}

Index KeyLayout::encode(const void* key) const {
    std::array<oid, services::kMaxSubIds> ids{};
    std::size_t count = 0;
    for (const auto& [field, offset] : fields_) {
        const auto* octets = static_cast<const unsigned char*>(key) + offset;
        if (field.kind == kFixedString) {
            if (count + field.octets > services::kMaxSubIds) break;
            std::copy_n(octets, field.octets, ids.begin() + count);
            count += field.octets;
            continue;
        }
        const auto length = static_cast<std::uint32_t>(field.octets);
        // The descriptor points into the record, which is only read here.
        const CountedString string{length, length, const_cast<unsigned char*>(octets)};
        const void* source = field.kind == kCountedString ? static_cast<const void*>(&string) : octets;
        const int needed = uib_snmp_set_oid_size(ids.data() + count, field.kind, source);
        if (needed < 0 || count + static_cast<std::size_t>(needed) > services::kMaxSubIds) break;
        converter<uib_to_oid>(3 * field.kind + 1)(ids.data() + count, source, needed);
        count += static_cast<std::size_t>(needed);
    }
    return {ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(count)};
}

void KeyLayout::decode(const Index& index, void* key) const {
    std::array<oid, services::kNameRoom> ids{};
    const std::size_t count = std::min(index.size(), services::kMaxSubIds);
    std::copy_n(index.begin(), count, ids.begin());
    std::memset(key, 0, size_);
    std::size_t at = 0;
    for (const auto& [field, offset] : fields_) {
        auto* octets = static_cast<unsigned char*>(key) + offset;
        if (field.kind == kFixedString) {
            if (at + field.octets > count) return;
            for (std::size_t i = 0; i < field.octets; ++i) octets[i] = static_cast<unsigned char>(ids[at + i]);
            at += field.octets;
            continue;
        }
        CountedString string{0, static_cast<std::uint32_t>(field.octets), octets};
        void* target = field.kind == kCountedString ? static_cast<void*>(&string) : octets;
        const int size = uib_snmp_get_oid_size(ids.data() + at, field.kind);
        if (size < 0 || at + static_cast<std::size_t>(size) > count) return;
        converter<uib_to_field>(3 * field.kind)(ids.data() + at, size, target);
        at += static_cast<std::size_t>(size);
    }
}

Value number(std::uint32_t value) { return octets_of(value); }

Value counter64(std::uint64_t value) { return octets_of(value); }

Value object_id(const Index& ids) { return Value(reinterpret_cast<const char*>(ids.data()), ids.size() * sizeof(oid)); }

Rows translated(Rows rows, std::function<Index(const Index&)> inner,
                std::function<std::optional<Index>(const Index&)> outer) {
    const auto translate = [inner = std::move(inner), outer = std::move(outer)](auto find) {
        return [find = std::move(find), inner, outer](int magic, const Index& index) -> std::optional<Answer> {
            std::optional<Answer> answer = find(magic, inner(index));
            if (!answer) return {};
            std::optional<Index> translation = outer(answer->index);
            if (!translation) return {};
            return Answer{std::move(*translation), std::move(answer->value)};
        };
    };
    return {std::move(rows.magics), translate(std::move(rows.at)), translate(std::move(rows.behind))};
}

void TableStore::add(Table table) {
    std::string name = table.name;
    Pattern first(table.first), keyed(table.keyed);
    Entry entry{std::move(table), std::move(first), std::move(keyed)};
    if (name.empty())
        lookups_.push_back(std::move(entry));
    else
        tables_.insert_or_assign(std::move(name), std::move(entry));
}

void TableStore::add(const std::string& group, std::vector<Scalar> scalars) { groups_[group] = std::move(scalars); }

const TableStore::Entry* TableStore::entry_for(const services::ShowRequest& request) const {
    const auto table = tables_.find(request.name);
    if (table != tables_.end()) return &table->second;
    for (const Entry& lookup : lookups_)
        if (lookup.keyed.match(request.command).whole) return &lookup;
    return nullptr;
}

bool TableStore::show(services::ShowRequest& request) const {
    std::string refusal;
    std::optional<Answer> answer;
    const auto group = groups_.find(request.name);
    const Entry* entry = group == groups_.end() ? entry_for(request) : nullptr;
    if (group != groups_.end())
        answer = find(group->second, request, refusal);
    else if (entry != nullptr)
        answer = find(*entry, request, refusal);
    else
        refusal = "there is no such table";
    if (answer && answer->value.size() > static_cast<std::size_t>(std::max(request.result_size, 0)))
        refusal = fmt::format("the result has {} octets, and there is room for {}", answer->value.size(),
                              request.result_size);
    if (!refusal.empty()) {
        if (log_)
            log_(fmt::format("refused show '{}' for column {} of {}: {}", escape(request.command), request.magic,
                             escape(request.name), refusal));
        return false;
    }
    if (!answer) return false;
    std::copy(answer->value.begin(), answer->value.end(), static_cast<char*>(request.result));
    *request.value_length = answer->value.size();
    if (!request.exact && request.key != nullptr && entry != nullptr) {
        entry->table.key.decode(answer->index, request.key);
        if (entry->table.record) entry->table.record->fill(answer->index, request.key);
    }
    return true;
}

std::optional<Answer> TableStore::find(const Entry& entry, const services::ShowRequest& request, std::string& refusal) {
    const Table& table = entry.table;
    const std::vector<int>& magics = table.rows.magics;
    if (std::find(magics.begin(), magics.end(), request.magic) == magics.end()) {
        refusal = "there is no such column";
        return {};
    }
    const std::size_t key_size = request.key != nullptr ? static_cast<std::size_t>(std::max(request.key_size, 0)) : 0;
    if (key_size != table.key.size()) {
        refusal = fmt::format("its key has {} octets instead of {}", key_size, table.key.size());
        return {};
    }

    const bool has_key = key_size != 0;
    Index index = has_key ? table.key.encode(request.key) : Index();
    const bool clear = has_key && index == table.key.clear();
    const bool first = !table.first.empty() && (table.is_first ? table.is_first(index) : clear);
    const Pattern& pattern = first ? entry.first : entry.keyed;
    const Pattern::Match match = pattern.match(request.command);
    if (!match.whole) {
        refusal = fmt::format("expected '{}'", pattern.text());
        return {};
    }
    Index said;
    for (const Argument& argument : match.arguments)
        if (argument.is_number) said.push_back(argument.number);
    if (table.record) {
        std::optional<Index> row = table.record->row(match.arguments);
        if (!row) {
            refusal = "its words contradict each other";
            return {};
        }
        index = std::move(*row);
    } else if (!has_key) {
        index = std::move(said);
    } else if (!first && (said != table.arguments(index) ||
                          (table.addresses_behind && !agree(index, *table.addresses_behind, match.arguments)))) {
        refusal = fmt::format("its key names row {}", fmt::join(index, "."));
        return {};
    }

    // A clear key sorts before every row, so the row behind it is the first one. (A row whose index is all zeros could
    // not be told from it; a walk passes over such a one, as it would never come past it.)
    const bool exact = request.exact && !(clear && table.clear_key_is_first_row);
    return exact ? table.rows.at(request.magic, index) : table.rows.behind(request.magic, index);
}

std::optional<Answer> TableStore::find(const std::vector<Scalar>& scalars, const services::ShowRequest& request,
                                       std::string& refusal) {
    for (const Scalar& scalar : scalars) {
        if (scalar.magic != request.magic) continue;
        if (request.command == scalar.command) return Answer{{}, scalar.value()};
        refusal = fmt::format("expected '{}'", scalar.command);
        return {};
    }
    refusal = "there is no such object";
    return {};
}

}  // namespace sw
