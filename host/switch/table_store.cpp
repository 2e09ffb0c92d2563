#include "switch/table_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace sw {
namespace {

constexpr std::size_t kNone = std::string::npos;

bool is_compared(PlaceType type) {
    return type == PlaceType::number || type == PlaceType::octets || type == PlaceType::address ||
           type == PlaceType::prefix;
}

Part::Type part_for(PlaceType type) {
    switch (type) {
        case PlaceType::octets: return Part::Type::octets;
        case PlaceType::address: return Part::Type::address;
        case PlaceType::prefix: return Part::Type::prefix;
        default: return Part::Type::number;
    }
}

bool is_zero(const Index& index, const Part& part) {
    return std::all_of(index.begin() + static_cast<std::ptrdiff_t>(part.at),
                       index.begin() + static_cast<std::ptrdiff_t>(part.at + part.count),
                       [](oid id) { return id == 0; });
}

bool same_octets(const Argument& said, const Index& index, std::size_t at, std::size_t count) {
    for (std::size_t i = 0; i < said.length; ++i)
        if (said.octets[i] != (i < count ? index[at + i] : 0)) return false;
    return true;
}

// A prefix with which a bracket and all in it may be absent: one without a length, or of an address of zeros.
bool names_nothing(const Index& index, const Part& prefix) {
    const auto octets = index.begin() + static_cast<std::ptrdiff_t>(prefix.at) + 1;
    const auto bits = octets + static_cast<std::ptrdiff_t>(index[prefix.at]);
    return *bits == 0 || std::all_of(octets, bits, [](oid octet) { return octet == 0; });
}

// An address. An absent argument is one of a type that commands cannot name. Where the type was forced,
// the index gets the one that was asked for, so that a walk goes on from there.
bool same_address(const Argument& said, Index& index, const Part& part, bool forced_type) {
    const oid type = index[part.type_at];
    const std::size_t count = index[part.at];
    const bool is_prefix = part.type == Part::Type::prefix;
    if (forced_type && said.address_type != type) {
        index[part.type_at] = said.present ? said.address_type : std::numeric_limits<oid>::max();
        return true;
    }
    if (is_prefix && said.bits != index[part.at + 1 + count]) return false;
    const bool has_type = type == 1 || type == 2;
    if (has_type && said.address_type != type) return false;
    return same_octets(said, index, part.at + 1, has_type ? count : 0);
}

}  // namespace

Rows Rows::under(Index before) const {
    return {objects_,
            [rows = *this, before = std::move(before)](std::size_t column, const Index& index,
                                                       bool exact) -> std::optional<Answer> {
                const auto size = static_cast<std::ptrdiff_t>(std::min(before.size(), index.size()));
                const Index start(index.begin(), index.begin() + size);
                if (start > before || (exact && start != before)) return {};
                const Index inner = start == before ? Index(index.begin() + size, index.end()) : Index();
                std::optional<Answer> answer = rows.find_(column, inner, exact);
                if (answer) answer->index = join({before, answer->index});
                return answer;
            }};
}

Rows Rows::ending(Index after, std::size_t length) const {
    return {objects_,
            [rows = *this, after = std::move(after), length](std::size_t column, const Index& index,
                                                             bool exact) -> std::optional<Answer> {
                const auto size = static_cast<std::ptrdiff_t>(std::min(length, index.size()));
                const Index rest(index.begin() + size, index.end());
                if (exact && rest != after) return {};
                Index inner(index.begin(), index.begin() + size);
                if (rest > after) inner.push_back(0);
                std::optional<Answer> answer = rows.find_(column, inner, exact);
                if (answer) answer->index = join({answer->index, after});
                return answer;
            }};
}

Rows Rows::within(oid low, oid high, oid less) const {
    return {objects_,
            [rows = *this, low, high, less](std::size_t column, Index index, bool exact) -> std::optional<Answer> {
                if (index.empty() || index[0] < low - less) {
                    if (exact) return {};
                    index = {low};
                } else if (index[0] > high - less) {
                    return {};
                } else {
                    index[0] += less;
                }
                std::optional<Answer> answer = rows.find_(column, index, exact);
                if (!answer || answer->index[0] > high) return {};
                answer->index[0] -= less;
                return answer;
            }};
}

std::vector<TableStore::Comparison> TableStore::comparisons(const Table& table, const Pattern& pattern) {
    std::vector<Comparison> comparisons;
    if (table.key.size() == 0 || table.record.row) return comparisons;
    const Parts parts = table.key.parts(table.key.clear());
    std::size_t argument = 0, part = 0, bracket = kNone, bracket_left = 0;
    for (const Pattern::Place& place : pattern.places()) {
        if (place.optional != 0) {
            bracket_left = place.optional;
            bracket = kNone;
        }
        if (is_compared(place.type)) {
            const Part::Type type = part_for(place.type);
            if (place.part != 0) part = place.part - 1;
            while (part < parts.count && parts.parts[part].type != type && place.part == 0) ++part;
            if (part >= parts.count || parts.parts[part].type != type)
                throw std::invalid_argument(fmt::format("'{}': not a key of {}", pattern.text(), table.name));
            if (bracket_left != 0 && bracket == kNone) bracket = comparisons.size();
            comparisons.push_back({argument, part++, place.added, bracket_left != 0 ? bracket : kNone});
        }
        if (place.type != PlaceType::literal) ++argument;
        if (bracket_left != 0) --bracket_left;
    }
    return comparisons;
}

void TableStore::add(Table table) {
    std::string name = table.name;
    Pattern pattern(table.show);
    std::vector<Comparison> compared = comparisons(table, pattern);
    const bool added =
        tables_.try_emplace(name, Entry{std::move(table), std::move(pattern), std::move(compared)}).second;
    if (!added) throw std::invalid_argument(fmt::format("there are two tables {}", name));
}

void TableStore::add_lookup(std::string show, Rows rows, LookedUp row) {
    Pattern pattern(show);
    Table table{.name = {}, .show = std::move(show), .key = {}, .rows = std::move(rows)};
    table.record.row = std::move(row);
    lookups_.push_back({std::move(table), std::move(pattern), {}});
}

void TableStore::add(const std::string& group, const std::string& show, std::vector<Scalar> scalars) {
    for (Scalar& scalar : scalars) {
        Pattern pattern(scalar.show.empty() ? show : scalar.show);
        groups_[group].push_back({std::move(scalar), std::move(pattern)});
    }
}

std::vector<TableStore::Served> TableStore::served() const {
    std::vector<Served> served;
    for (const auto& [name, entry] : tables_)
        for (const Rows::Object& object : entry.table.rows.objects())
            served.push_back({name, object.magic, object.name});
    for (const auto& [name, group] : groups_)
        for (const GroupEntry& entry : group) served.push_back({name, entry.scalar.magic, entry.scalar.name});
    return served;
}

const TableStore::Entry* TableStore::entry_for(const services::ShowRequest& request) const {
    const auto table = tables_.find(request.name);
    // A writer asks for its lookups with its own name, or with that of a table.
    if (table != tables_.end() && request.key != nullptr) return &table->second;
    for (const Entry& lookup : lookups_)
        if (lookup.pattern.match(request.command).whole) return &lookup;
    return table != tables_.end() ? &table->second : nullptr;
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
        if (entry->table.record.fill) entry->table.record.fill(answer->index, request.key);
    }
    return true;
}

bool TableStore::agree(const Entry& entry, Index& index, const Arguments& arguments) {
    const Parts parts = entry.table.key.parts(index);
    for (std::size_t i = 0; i < entry.comparisons.size(); ++i) {
        const Comparison& comparison = entry.comparisons[i];
        // What follows an address that is cut short cannot be compared.
        if (comparison.part >= parts.count) return true;
        const Argument& said = arguments[comparison.argument];
        const Part& part = parts.parts[comparison.part];
        const bool is_address = part.type == Part::Type::address || part.type == Part::Type::prefix;
        const Part* first = nullptr;  // of its bracket
        if (comparison.first_of_bracket != kNone)
            first = &parts.parts[entry.comparisons[comparison.first_of_bracket].part];
        if (first != nullptr && first->type == Part::Type::prefix) {
            if (!said.present && names_nothing(index, *first)) continue;
        } else if (first != nullptr && !is_address) {
            // Absent for the first row, that is where the bracket's first part is zero. Where the others are not, a
            // module may look at all of them.
            const auto zero = [&](const Comparison& one) {
                return one.part < parts.count && is_zero(index, parts.parts[one.part]);
            };
            const bool first_zero = zero(entry.comparisons[comparison.first_of_bracket]);
            const bool all_zero =
                std::all_of(entry.comparisons.begin(), entry.comparisons.end(), [&](const Comparison& one) {
                    return one.first_of_bracket != comparison.first_of_bracket || zero(one);
                });
            if (said.present ? all_zero : !first_zero) return false;
            if (!said.present) continue;
        }
        const bool same = is_address ? same_address(said, index, part, entry.table.forced_type)
                          : part.type == Part::Type::octets
                              ? said.length == part.count && same_octets(said, index, part.at, part.count)
                              : said.number == index[part.at] + comparison.added;
        if (!same) return false;
    }
    return !entry.table.agrees || entry.table.agrees(index, arguments);
}

std::optional<Answer> TableStore::find(const Entry& entry, const services::ShowRequest& request, std::string& refusal) {
    const Table& table = entry.table;
    const std::vector<Rows::Object>& objects = table.rows.objects();
    const auto object = std::find_if(objects.begin(), objects.end(),
                                     [&](const Rows::Object& each) { return each.magic == request.magic; });
    if (object == objects.end()) {
        refusal = "there is no such column";
        return {};
    }
    const auto column = static_cast<std::size_t>(object - objects.begin());
    const std::size_t key_size = request.key != nullptr ? static_cast<std::size_t>(std::max(request.key_size, 0)) : 0;
    if (key_size != table.key.size()) {
        refusal = fmt::format("its key has {} octets, not {}", key_size, table.key.size());
        return {};
    }
    if (request.request_class != table.request_class) {
        refusal = fmt::format("its class is {}, not {}", request.request_class, table.request_class);
        return {};
    }
    thread_local Pattern::Match match;  // keeps the memory of its arguments
    entry.pattern.match(request.command, match);
    if (!match.whole) {
        refusal = fmt::format("expected '{}'", entry.pattern.text());
        return {};
    }

    if (table.record.row || key_size == 0) {
        std::optional<Index> index;
        if (table.record.row) {
            index = table.record.row(match.arguments);
        } else {
            index.emplace();
            for (const Argument& argument : match.arguments)
                if (argument.type == PlaceType::number || argument.type == PlaceType::octets)
                    *index = join({*index, argument.index()});
        }
        if (!index) {
            refusal = "its words contradict each other";
            return {};
        }
        return request.exact ? table.rows.at(column, *index) : table.rows.after(column, std::move(*index));
    }

    Index index = table.key.encode(request.key);
    const bool clear = index == table.key.clear();
    if (!agree(entry, index, match.arguments)) {
        refusal = fmt::format("its key names row {}", fmt::join(index, "."));
        return {};
    }
    // No row has a clear key: the row after it is the first one.
    if (clear && request.exact) return {};
    // Of an index that ends early, all rows that begin with it come after.
    if (!request.exact && request.index_count > 0 && index.size() > static_cast<std::size_t>(request.index_count))
        index.resize(static_cast<std::size_t>(request.index_count));
    if (!table.scope) return request.exact ? table.rows.at(column, index) : table.rows.after(column, std::move(index));

    const std::optional<Index> scope = table.scope(match.arguments);
    if (!scope) {
        refusal = "its words contradict each other";
        return {};
    }
    index = join({*scope, index});
    std::optional<Answer> answer =
        request.exact ? table.rows.at(column, index) : table.rows.after(column, std::move(index));
    if (!answer || !std::equal(scope->begin(), scope->end(), answer->index.begin())) return {};
    answer->index.erase(answer->index.begin(), answer->index.begin() + static_cast<std::ptrdiff_t>(scope->size()));
    return answer;
}

std::optional<Answer> TableStore::find(const Group& group, const services::ShowRequest& request, std::string& refusal) {
    for (const auto& [scalar, pattern] : group) {
        if (scalar.magic != request.magic) continue;
        const Pattern::Match match = pattern.match(request.command);
        if (!match.whole) {
            refusal = fmt::format("expected '{}'", pattern.text());
            return {};
        }
        std::optional<Value> value = scalar.value(match.arguments);
        if (!value) return {};
        return Answer{{}, std::move(*value)};
    }
    refusal = "there is no such object";
    return {};
}

}  // namespace sw
