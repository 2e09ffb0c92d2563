#include "tool/writes.h"

#include "tool/explain.h"
#include "tool/list.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <set>

namespace tool {
namespace {

using agent::Value;
using services::Oid;
using Octets = std::vector<std::uint8_t>;

constexpr std::array<std::uint8_t, 7> kTypes = {agent::kInteger,  agent::kGauge32,   agent::kOctetString,
                                                agent::kObjectId, agent::kIpAddress, agent::kCounter32,
                                                agent::kTimeTicks};
constexpr std::size_t kNumberSize = 4;

bool is_number(std::uint8_t type) {
    return type == agent::kInteger || type == agent::kGauge32 || type == agent::kCounter32 || type == agent::kTimeTicks;
}

// --- What is tried ---------------------------------------------------------------------------------------------------

// Numbers that tell situations apart.
constexpr std::int64_t kFewNumbers[] = {0, 1, 2, 3, 4, 5, 6, 10, 64, 1000, 1034, 5121};

// Numbers between which accepted ones and refused ones are looked for.
std::vector<std::int64_t> numbers(std::uint8_t type) {
    const bool is_signed = type == agent::kInteger;
    const std::int64_t low = is_signed ? std::numeric_limits<std::int32_t>::min() : 0;
    const std::int64_t high =
        is_signed ? std::numeric_limits<std::int32_t>::max() : std::int64_t{std::numeric_limits<std::uint32_t>::max()};
    std::set<std::int64_t> all{low, high};
    for (std::int64_t number = -2; number <= 66; ++number) all.insert(number);
    for (std::int64_t power = 128; power <= high + 1; power *= 2) all.insert({power - 1, power, power + 1});
    for (std::int64_t power = 100; power <= high; power *= 10) all.insert({power, 3 * power, 9 * power});
    // Interfaces: tunnels, VLANs, ports.
    all.insert({897, 1025, 1034, 5118, 5119, 5121, 5210, 5211});
    std::erase_if(all, [&](std::int64_t number) { return number < low || number > high; });
    return {all.begin(), all.end()};
}

std::uint32_t number_in(const Octets& octets) {
    std::uint32_t number;
    std::memcpy(&number, octets.data(), sizeof number);
    return number;
}

Octets octets_of(std::string_view text) { return {text.begin(), text.end()}; }

Octets list_of(std::uint8_t octet, std::size_t size, std::size_t at = 0) {
    Octets octets(size);
    octets[at] = octet;
    return octets;
}

// Octet strings: texts, then lists of ports and VLANs, and addresses.
const std::vector<Octets>& strings() {
    static const std::vector<Octets> all = {
        octets_of("abc"), octets_of("office"), octets_of("10"), octets_of("NA"),    octets_of(""),
        octets_of("\r"),  octets_of("a\nb"),   {192, 0, 2, 1},  {0, 0, 0, 0},       {2, 0x50, 0, 0, 0, 1},
        list_of(0, 12),   list_of(0x80, 12),   list_of(0, 512), list_of(0x80, 512), list_of(0x80, 652, 640)};
    return all;
}

const Octets& first_text() { return strings()[0]; }
const Octets& second_text() { return strings()[1]; }

std::vector<Value> few_values(std::uint8_t type) {
    std::vector<Value> values;
    switch (type) {
        case agent::kInteger:
            for (const std::int64_t number : kFewNumbers)
                values.push_back(Value::integer(static_cast<std::int32_t>(number)));
            break;
        case agent::kOctetString:
            for (const Octets& octets : strings()) values.push_back(Value::octet_string(octets));
            break;
        case agent::kObjectId: values.push_back(Value::object_id({0, 0})); break;
        case agent::kIpAddress: values = {{type, {192, 0, 2, 1}}, {type, {0, 0, 0, 0}}}; break;
        default:
            for (const std::int64_t number : kFewNumbers)
                values.push_back(Value::unsigned32(type, static_cast<std::uint32_t>(number)));
    }
    return values;
}

// --- Lines that name the value ---------------------------------------------------------------------------------------

// How a value is named in a line, and what is shown in its place.
struct Named {
    std::string text;
    const char* placeholder = "<value>";

    Named() = default;
    Named(std::string as_text) : text(std::move(as_text)) {}
    Named(std::int64_t number) : text(std::to_string(number)) {
        if (number <= std::numeric_limits<std::int32_t>::max()) return;
        text = std::to_string(static_cast<std::int32_t>(number));
        placeholder = "<value-2^32>";
    }
};

std::vector<std::string> words(const std::string& text) {
    std::vector<std::string> words{""};
    for (const char c : text) {
        if (c == ' ')
            words.emplace_back();
        else
            words.back() += c;
    }
    return words;
}

std::string with_placeholder(std::string word, const Named& value) {
    const std::size_t at = value.text.empty() ? std::string::npos : word.find(value.text);
    return at == std::string::npos ? word : word.replace(at, value.text.size(), value.placeholder);
}

// The text that two lines have in common when each names its own value; none when they differ in something else.
std::optional<std::string> common(const std::string& a, const Named& value_a, const std::string& b,
                                  const Named& value_b) {
    const auto words_a = words(a), words_b = words(b);
    if (words_a.size() != words_b.size()) return std::nullopt;
    std::string text;
    for (std::size_t i = 0; i < words_a.size(); ++i) {
        std::string word = words_a[i];
        if (word != words_b[i]) {
            word = with_placeholder(word, value_a);
            if (word != with_placeholder(words_b[i], value_b)) return std::nullopt;
        }
        text += (i == 0 ? "" : " ") + word;
    }
    return text;
}

using Texts = std::vector<std::string>;

std::optional<Texts> common(const Outcome& a, const Named& value_a, const Outcome& b, const Named& value_b) {
    if (a.status != b.status || a.phase != b.phase || a.lines.size() != b.lines.size()) return std::nullopt;
    Texts texts;
    for (std::size_t i = 0; i < a.lines.size(); ++i) {
        const SentLine &one = a.lines[i], &other = b.lines[i];
        if (one.mode != other.mode || one.phase != other.phase || one.caller != other.caller) return std::nullopt;
        auto text = common(one.command, value_a, other.command, value_b);
        if (!text) return std::nullopt;
        texts.push_back(std::move(*text));
    }
    return texts;
}

// What an outcome is, whatever the numbers in its lines.
std::string masked(const Outcome& outcome) {
    std::string text = fmt::format("{} {}", outcome.status, outcome.phase);
    for (const SentLine& line : outcome.lines) {
        text += fmt::format("\n{} {} ", line.phase, line.mode);
        for (const char c : line.command) {
            if (c < '0' || c > '9')
                text += c;
            else if (text.back() != '#')
                text += '#';
        }
    }
    return text;
}

bool same(const Outcome& a, const Outcome& b) { return common(a, std::string(), b, std::string()).has_value(); }

// --- The tries of one object -----------------------------------------------------------------------------------------

class Writes {
public:
    Writes(Probe& probe, const services::Object& object, const std::vector<Oid>& rows)
        : probe_(probe), object_(object), rows_(rows) {}

    Written all() {
        find_types();
        if (is_number(type_))
            try_numbers();
        else if (type_ == agent::kOctetString)
            try_strings();
        else
            for (const Value& value : few_values(type_)) try_octets(value);
        refuse_types();
        refuse_lengths();
        if (accepted_) refuse_the_rest();
        Json takes{{"types", Json::array()}};
        for (const std::uint8_t type : types_) takes["types"].push_back(type_name(type));
        for (const auto& [low, high] : sizes_) takes["sizes"].push_back(fmt::format("{}..{}", low, high));
        if (!accepted_) takes = "nothing";
        return {takes, std::move(entries_)};
    }

private:
    using Cases = std::vector<Outcome>;  // one for each situation

    Oid name(const Oid& row) const {
        Oid oid = object_.oid();
        oid.insert(oid.end(), row.begin(), row.end());
        return oid;
    }
    Outcome set(const Value& value, const Situation& situation = {}) {
        probe_.backend.situation = situation;
        return probe_.set(name(rows_.front()), value);
    }
    Cases in_all(const Value& value) {
        Cases cases;
        for (const Situation& situation : situations_) cases.push_back(set(value, situation));
        return cases;
    }

    // Tries every answer to every question, one after the other as a counter counts, and keeps the situations in which
    // a value does something new. Of many questions, and of those that are not about a number, one alone has an unusual
    // answer at a time.
    void find_situations(const Value& value) {
        std::set<std::string> seen;
        for (const Situation& situation : situations_) seen.insert(masked(set(value, situation)));
        std::vector<std::size_t> choices;
        Situation situation;
        while (true) {
            const Outcome outcome = set(value, situation);
            if (seen.insert(masked(outcome)).second) situations_.push_back(situation);
            const std::vector<Question>& questions = outcome.questions;
            constexpr std::size_t kFew = 3;
            const auto unusual = [&](std::size_t i) {
                return choices[i] != 0 && (questions.size() > kFew || !is_number(questions[i]));
            };
            choices.resize(questions.size());
            std::ptrdiff_t others;
            do {
                while (!choices.empty() && choices.back() + 1 == questions[choices.size() - 1].choices)
                    choices.pop_back();
                if (choices.empty()) return;
                ++choices.back();
                others = 0;
                for (std::size_t i = 0; i < choices.size(); ++i) others += unusual(i);
            } while (others > 1);
            situation.clear();
            for (std::size_t i = 0; i < choices.size(); ++i) situation[questions[i].key()] = choices[i];
        }
    }

    void find_types() {
        std::vector<std::uint8_t> possible;
        for (const std::uint8_t type : kTypes) {
            const auto values = few_values(type);
            if (std::ranges::any_of(values, [&](const Value& each) { return set(each).status != agent::kWrongType; }))
                possible.push_back(type);
        }
        const auto registered = std::ranges::find(possible, object_.entry.type);
        if (registered != possible.end()) std::rotate(possible.begin(), registered, registered + 1);
        for (const std::uint8_t type : possible) {
            for (const Value& value : few_values(type))
                if (is_tried(value)) find_situations(value);
            for (const Value& value : few_values(type)) {
                const Cases cases = in_all(value);
                if (std::ranges::none_of(cases, [](const Outcome& each) { return each.status == agent::kNoError; }))
                    continue;
                types_.push_back(type);
                break;
            }
        }
        type_ = !types_.empty() ? types_.front() : possible.empty() ? object_.entry.type : possible.front();
        if (types_.empty()) types_.push_back(type_);
    }

    // Texts are tried where lines name them, and nothing else is there; the empty one everywhere.
    bool is_tried(const Value& value) {
        if (value.tag != agent::kOctetString || value.octets.empty()) return true;
        if (!names_texts_) {
            const std::string text(first_text().begin(), first_text().end());
            const Outcome outcome = set(Value::octet_string(first_text()));
            names_texts_ = std::ranges::any_of(
                outcome.lines, [&text](const SentLine& line) { return line.command.find(text) != std::string::npos; });
        }
        return *names_texts_ == is_text(value.octets);
    }
    static bool is_text(const Octets& octets) { return octets.size() < 4 || printable(octets.data(), octets.size()); }

    // --- numbers ---
    using Tried = std::map<std::int64_t, Cases>;

    Value number(std::int64_t number) const {
        return type_ == agent::kInteger ? Value::integer(static_cast<std::int32_t>(number))
                                        : Value::unsigned32(type_, static_cast<std::uint32_t>(number));
    }

    static bool alike(const Cases& a, std::int64_t number_a, const Cases& b, std::int64_t number_b) {
        for (std::size_t i = 0; i < a.size(); ++i)
            if (!common(a[i], number_a, b[i], number_b)) return false;
        return true;
    }

    // Numbers one after the other that all do the same.
    struct Range {
        std::int64_t low, high;
        const Cases* at_low;
        const Cases* at_high;
    };
    // Between two samples that differ, the last number that is like the first one and the number after it are looked
    // for, and so on; not where every number is unlike its neighbour.
    template <class Try>
    static std::vector<Range> ranges(const std::vector<std::int64_t>& samples, Tried& tried, const Try& attempt) {
        int patience = 8;
        for (const std::int64_t sample : samples) tried[sample] = attempt(sample);
        for (std::size_t i = 1; i < samples.size(); ++i) {
            std::int64_t low = samples[i - 1];
            const std::int64_t high = samples[i];
            while (patience > 0 && !alike(tried[low], low, tried[high], high)) {
                std::int64_t last = low, other = high;
                while (other - last > 1) {
                    const std::int64_t middle = last + (other - last) / 2;
                    (alike(tried[low], low, attempt(middle), middle) ? last : other) = middle;
                }
                if (last == low && other != high) --patience;
                for (const std::int64_t number : {last, other}) tried[number] = attempt(number);
                low = other;
            }
        }
        std::vector<Range> found;
        for (const auto& [number, cases] : tried) {
            if (!found.empty() && alike(*found.back().at_low, found.back().low, cases, number)) {
                found.back().high = number;
                found.back().at_high = &cases;
            } else {
                found.push_back({number, number, &cases, &cases});
            }
        }
        return found;
    }

    void try_numbers() {
        Tried tried;
        for (const Range& range : ranges(numbers(type_), tried, [this](std::int64_t n) { return in_all(number(n)); })) {
            const Json values =
                range.low == range.high ? Json(range.low) : Json(fmt::format("{}..{}", range.low, range.high));
            add(number(range.low), values, *range.at_low, range.low, *range.at_high, range.high);
        }
    }

    // --- strings ---
    void try_strings() {
        // By length, with three contents.
        const auto by_length = [this](std::int64_t length) {
            Cases cases;
            for (const std::uint8_t octet : {std::uint8_t{'x'}, std::uint8_t{'1'}, std::uint8_t{0}})
                for (Outcome& outcome : in_all(Value::octet_string(Octets(static_cast<std::size_t>(length), octet)))) {
                    outcome.lines.clear();
                    cases.push_back(std::move(outcome));
                }
            return cases;
        };
        std::vector<std::int64_t> lengths;
        for (std::int64_t length = 0; length <= 40; ++length) lengths.push_back(length);
        for (const std::int64_t length : {63, 64, 65, 127, 128, 254, 255, 256, 257, 511, 512, 513, 651, 652, 653, 1400})
            lengths.push_back(length);
        Tried tried;
        for (const Range& range : ranges(lengths, tried, by_length)) {
            const bool taken = std::ranges::any_of(*range.at_low, [](const Outcome& each) { return each.status == 0; });
            if (taken) {
                if (!sizes_.empty() && sizes_.back().second + 1 == range.low)
                    sizes_.back().second = range.high;
                else
                    sizes_.emplace_back(range.low, range.high);
            } else {
                Json& refusal = add_refusal("length", range.at_low->front());
                refusal["sizes"] = fmt::format("{}..{}", range.low, range.high);
            }
        }
        const Value text = Value::octet_string(first_text());
        const std::string abc(first_text().begin(), first_text().end());
        const std::string office(second_text().begin(), second_text().end());
        const Cases of_text = in_all(text);
        const bool names = is_tried(text);
        if (names) add(text, "any text", of_text, abc, in_all(Value::octet_string(second_text())), office);
        for (const Octets& octets : strings()) {
            const Value value = Value::octet_string(octets);
            if (!is_tried(value) || (!names && !is_longest(octets.size()))) continue;
            const Cases cases = in_all(value);
            bool covered = names;
            for (std::size_t i = 0; i < cases.size() && covered; ++i)
                covered = common(of_text[i], abc, cases[i], std::string(octets.begin(), octets.end())).has_value();
            if (!covered) add(value, string_json(octets), cases, {}, cases, {});
        }
    }

    // Whether lists are looked at in this size: the longest ones that are taken, or where any length is, usual ones.
    bool is_longest(std::size_t size) const {
        constexpr std::int64_t kPorts = 12, kMost = 1400;
        const auto length = static_cast<std::int64_t>(size);
        const std::int64_t longest = sizes_.empty() ? 0 : sizes_.back().second;
        return length == 0 || length == longest || (longest == kMost && length >= kPorts);
    }

    static Json string_json(const Octets& octets) {
        if (is_text(octets)) return std::string(octets.begin(), octets.end());
        Octets shown = octets;
        while (shown.size() > 1 && shown.back() == 0) shown.pop_back();
        std::size_t zeros = 0;
        while (zeros + 1 < shown.size() && shown[zeros] == 0) ++zeros;
        constexpr std::size_t kMany = 16;
        if (zeros < kMany) zeros = 0;
        Json json{{"octets", hex(shown.data() + zeros, shown.size() - zeros)}, {"size", octets.size()}};
        if (zeros != 0) json["at"] = zeros;
        return json;
    }

    // Of a type that is neither.
    void try_octets(const Value& value) {
        const Cases cases = in_all(value);
        add(value, hex(value.octets.data(), value.octets.size()), cases, {}, cases, {});
    }

    // --- entries ---

    // What a value, or the values between two, do in each situation that makes a difference.
    void add(const Value& value, const Json& values, const Cases& low, const Named& at_low, const Cases& high,
             const Named& at_high) {
        std::set<std::string> seen;
        const bool taken = std::ranges::any_of(low, [](const Outcome& each) { return each.status == agent::kNoError; });
        for (std::size_t i = 0; i < low.size(); ++i) {
            if (!seen.insert(masked(low[i])).second) continue;
            const auto texts = common(low[i], at_low, high[i], at_high);
            if (low[i].status == agent::kNoError && !accepted_) accepted_ = value;
            if (low[i].status == agent::kNoError && low[i].lines.size() > most_lines_) {
                most_lines_ = low[i].lines.size();
                accepted_ = value;
                accepted_in_ = situations_[i];
            }
            add_outcome(low[i], texts ? *texts : Texts{}, values, situations_[i], rows_.front());
            if (low[i].status != agent::kNoError) {
                if (!taken) break;  // refused whatever the situation
                continue;
            }
            try_elsewhere(value, values, low[i], situations_[i]);
        }
    }

    // The same in a VRF, with a context and in the other rows.
    void try_elsewhere(const Value& value, const Json& values, const Outcome& usual, const Situation& situation) {
        services::Context& context = services::services().context;
        const auto rest = [&](const char* what, const char* is) {
            const Outcome outcome = set(value, situation);
            if (!same(outcome, usual)) add_outcome(outcome, {}, values, situation, rows_.front())[what] = is;
        };
        context.vrf = "red";
        rest("vrf", "red");
        context.vrf.reset();
        context.snmp_context = "blue";
        rest("context", "blue");
        context.snmp_context.reset();
        for (std::size_t i = 1; i < rows_.size(); ++i) {
            // The questions are other ones, in the same order.
            probe_.backend.situation.clear();
            const Outcome first = probe_.set(name(rows_[i]), value);
            Situation its;
            for (std::size_t at = 0; at < std::min(first.questions.size(), usual.questions.size()); ++at) {
                const auto chosen = situation.find(usual.questions[at].key());
                if (chosen != situation.end()) its[first.questions[at].key()] = chosen->second;
            }
            probe_.backend.situation = its;
            add_outcome(probe_.set(name(rows_[i]), value), {}, values, its, rows_[i]);
        }
    }

    Json& add_outcome(const Outcome& outcome, const Texts& texts, const Json& values, const Situation& situation,
                      const Oid& row) {
        Json& entry = entry_of(outcome, row);
        if (outcome.status != agent::kNoError) entry["what"] = "value";
        entry["values"] = values;
        Json asks = Json::array();
        for (const Question& question : outcome.questions) {
            const auto chosen = situation.find(question.key());
            const std::size_t choice = chosen != situation.end() ? chosen->second : 0;
            const auto octets = answer(question, choice);
            if (question.is_row) {
                if (!octets) entry["row exists"] = false;
                continue;
            }
            Json asked{{"command", question.command},
                       {"request", question.name},
                       {"magic", question.magic},
                       {"size", question.size}};
            if (!octets)
                asked["answer"] = "refused";
            else if (octets->size() == kNumberSize)
                asked["answer"] = number_in(*octets);
            else
                asked["answer"] = octets->front() != 0 ? "member 1" : "no member";
            asks.push_back(asked);
        }
        if (!asks.empty()) entry["asks"] = asks;
        add_lines(entry, outcome, texts);
        return entry;
    }

    Json& entry_of(const Outcome& outcome, const Oid& row) {
        const bool taken = outcome.status == agent::kNoError;
        Json& entry = entries_.emplace_back(Json{{"entry", taken ? "write" : "refusal"}, {"name", object_.name}});
        if (object_.group->is_table)
            if (const auto parts = services::index_parts(object_.group->fields, row.data(), row.size()))
                entry["row"] = json_index(*object_.group, *parts);
        if (!taken) {
            entry["error"] = status_name(outcome.status);
            entry["phase"] = phase_name(outcome.phase);
        }
        return entry;
    }

    Json& add_refusal(const char* what, const Outcome& outcome) {
        Json& entry = entry_of(outcome, rows_.front());
        entry["what"] = what;
        return entry;
    }

    static void add_lines(Json& entry, const Outcome& outcome, const Texts& texts) {
        if (outcome.status != agent::kNoError && outcome.lines.empty()) return;  // as usual for a refusal
        Json sends = Json::array();
        for (std::size_t i = 0; i < outcome.lines.size(); ++i) {
            SentLine line = outcome.lines[i];
            if (i < texts.size()) line.command = texts[i];
            sends.push_back(line_json(line));
        }
        entry["sends"] = sends;
    }

    // --- refusals ---
    void refuse_types() {
        std::map<int, std::pair<Outcome, std::vector<std::string>>> by_status;
        const Value value = accepted_.value_or(few_values(type_).front());
        for (const std::uint8_t type : kTypes) {
            if (std::ranges::find(types_, type) != types_.end()) continue;
            const Outcome outcome = set({type, value.octets}, accepted_in_);
            auto& [first, names] =
                by_status.try_emplace(outcome.status, outcome, std::vector<std::string>{}).first->second;
            names.push_back(type_name(type));
        }
        for (const auto& [status, found] : by_status)
            if (status != agent::kNoError) add_refusal("type", found.first)["types"] = found.second;
    }

    void refuse_lengths() {
        if (!is_number(type_)) return;
        const Value value = accepted_.value_or(few_values(type_).front());
        for (const std::size_t length : {3u, 5u}) {
            Octets octets = value.octets;
            octets.resize(length);
            const Outcome outcome = set({type_, octets}, accepted_in_);
            if (outcome.status == agent::kNoError) continue;
            add_refusal("length", outcome)["sizes"] = fmt::format("not {}", kNumberSize);
            break;
        }
    }

    void refuse_the_rest() {
        const auto refuse = [&](const char* what, const Outcome& outcome) {
            if (outcome.status == agent::kNoError) return;
            add_lines(add_refusal(what, outcome), outcome, {});
        };
        const Oid whole = name(rows_.front());
        if (object_.group->is_table) {
            Oid longer = whole;
            longer.push_back(1);
            refuse("index too long", probe_.set(longer, *accepted_));
        }
        const Outcome usual = set(*accepted_, accepted_in_);
        probe_.backend.interfaces_have_names = false;
        const Outcome unnamed = set(*accepted_, accepted_in_);
        probe_.backend.interfaces_have_names = true;
        refuse("interface without a name", unnamed);
        if (unnamed.status == agent::kNoError && !same(unnamed, usual)) {
            Json& entry = entry_of(unnamed, rows_.front());
            entry["what"] = "interface without a name";
            add_lines(entry, unnamed, {});
        }
        for (std::size_t line = 0; line < usual.lines.size(); ++line) {
            probe_.backend.refused_line = line;
            const Outcome outcome = set(*accepted_, accepted_in_);
            probe_.backend.refused_line.reset();
            Json& entry = entry_of(outcome, rows_.front());
            entry["what"] = "refused line";
            entry["line"] = line + 1;
            Outcome rest = outcome;
            rest.lines.erase(rest.lines.begin(), rest.lines.begin() + static_cast<std::ptrdiff_t>(line) + 1);
            add_lines(entry, rest, {});
        }
    }

    Probe& probe_;
    const services::Object& object_;
    const std::vector<Oid>& rows_;
    std::vector<Situation> situations_{{}};
    std::optional<bool> names_texts_;  // lines name the texts that are set
    std::vector<std::uint8_t> types_;
    std::uint8_t type_ = 0;
    std::vector<std::pair<std::int64_t, std::int64_t>> sizes_;
    std::optional<Value> accepted_;
    Situation accepted_in_;
    std::size_t most_lines_ = 0;
    std::vector<Json> entries_;
};

}  // namespace

Json line_json(const SentLine& line) {
    Json json{{"mode", line.mode}, {"line", line.command}, {"caller", line.caller}};
    if (line.phase != agent::kAction) json["phase"] = phase_name(line.phase);
    return json;
}

Written writes(Probe& probe, const services::Object& object, const std::vector<services::Oid>& rows) {
    if (!writable(object)) return {};
    return Writes(probe, object, rows).all();
}

}  // namespace tool
