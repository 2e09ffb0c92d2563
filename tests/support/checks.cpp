#include "support/checks.h"

#include "support/recording_host.h"

#include <algorithm>
#include <limits>
#include <sstream>
#include <utility>

namespace tests {
namespace {

constexpr int kPhases = 7;  // the six, and one that the host doesn't have
constexpr std::size_t kNumberLength = 4;
constexpr std::size_t kLongText = 255;

bool contains(const std::vector<int>& numbers, int number) {
    return std::ranges::find(numbers, number) != numbers.end();
}

// What a command gets of a text.
std::string up_to_nul(const Bytes& octets) { return {octets.begin(), std::ranges::find(octets, 0)}; }

}  // namespace

Values& Values::good(const Value& value) {
    std::erase_if(bad_, [&](const Bad& bad) { return bad.value == value; });
    good_.push_back(value);
    return *this;
}

Values& Values::bad(const Value& value, std::optional<int> error) {
    bad_.push_back({value, error});
    return *this;
}

Values between(std::int64_t low, std::int64_t high) {
    Values values;
    values.numbers_ = true;
    values.low_ = low;
    values.high_ = high;
    values.good(low).good(high);
    return values;
}

Values any_number() {
    Values values = between(0, 1);
    values.bounded_ = false;
    for (const std::int64_t number : {-1, INT32_MAX, INT32_MIN}) values.good(number);
    return values;
}

Values octets(std::size_t shortest, std::size_t longest) {
    Values values;
    values.low_ = static_cast<std::int64_t>(shortest);
    values.high_ = static_cast<std::int64_t>(longest);
    values.good(Bytes(shortest, 'x')).good(Bytes(longest, 'x'));
    return values;
}

Values any_octets() {
    Values values = octets(0, kLongText);
    values.bounded_ = false;
    return values;
}

Values words(std::size_t longest) {
    Values values = octets(0, longest);
    values.words_ = true;
    values.good("50%s\x80\xff").good(text({"a\0\n", 3}));
    for (const char* controlled : {"a\nb", "\x01", "a\x1f", "\x7f", "\r", "\rx"}) values.bad(controlled);
    return values;
}

Values any_words() {
    Values values = words(kLongText);
    values.bounded_ = false;
    return values;
}

Order usual() { return {step::type, step::length, step::column, step::index, step::value}; }
Order on_interface() { return {step::type, step::length, step::column, step::index, step::interface, step::value}; }
Order unparsed() { return {step::type, step::length, step::column, step::value}; }

Writable::Writable(std::string object, Oid index, std::uint8_t type, Values values)
    : object_(std::move(object)),
      index_(std::move(index)),
      type_(type),
      values_(std::move(values)),
      order_(usual()),
      scalar_(index_ == Oid{0}) {
    if (!values_.numbers_ || !values_.bounded_) return;
    constexpr std::int64_t kSmallest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    constexpr std::int64_t kLargestUnsigned = std::numeric_limits<std::uint32_t>::max();
    const bool is_signed = type_ == Integer;
    for (const std::int64_t number : {values_.low_ - 1, values_.high_ + 1, kSmallest, std::int64_t{-1}, std::int64_t{0},
                                      kLargest, kLargest + 1, kLargestUnsigned}) {
        const bool possible =
            is_signed ? number >= kSmallest && number <= kLargest : number >= 0 && number <= kLargestUnsigned;
        if (possible && (number < values_.low_ || number > values_.high_)) values_.bad(number);
    }
}

// The checks of one object. Stops at the first failure of each kind of request, whose reason says the rest.
class CheckRun {
public:
    CheckRun(RecordingHost& host, const Writable& writable) : host_(host), writable_(writable) {}

    void run() {
        for (int phase = 0; phase < kPhases && !failed_; ++phase) {
            phase_ = phase;
            refuses();
            accepts();
        }
    }

private:
    RecordingHost& host_;
    const Writable& writable_;
    int phase_ = 0;
    bool failed_ = false;
    Bytes state_{1, 0, 0, 0};

    struct Request {
        Oid name;
        std::uint8_t type;
        Bytes value;
        std::string broken;  // which checks
    };

    void expect(bool holds, const Request& request, const std::string& what) {
        if (holds || failed_) return;
        failed_ = true;
        std::ostringstream message;
        message << writable_.object_ << " in phase " << phase_ << ", type " << int{request.type} << ", value";
        for (const std::uint8_t octet : request.value) message << ' ' << int{octet};
        if (!request.broken.empty()) message << ", with wrong" << request.broken;
        ADD_FAILURE() << message.str() << ": " << what << "; sent: " << ::testing::PrintToString(host_.lines());
    }

    void expect_error(int error, int expected, const Request& request, const std::string& when = "") {
        expect(error == expected, request,
               "answers " + std::to_string(error) + ", not " + std::to_string(expected) + when);
    }

    Request request_with(const Value& value) const {
        return {host_.oid_of(writable_.object_, writable_.index_), writable_.type_, value.octets, ""};
    }

    int write(const Request& request, bool named = true) {
        host_.forget();
        host_.interfaces_have_names = named;
        const int error = host_.write_name(phase_, writable_.object_, request.name, request.type, request.value,
                                           writable_.existing_ ? state_.data() : nullptr);
        host_.interfaces_have_names = true;
        return error;
    }

    std::vector<std::size_t> wrong_lengths() const {
        const Values& values = writable_.values_;
        if (values.numbers_) return {kNumberLength - 1, kNumberLength + 1, 0};
        std::vector<std::size_t> lengths;
        if (!values.bounded_) return lengths;
        lengths.push_back(static_cast<std::size_t>(values.high_) + 1);
        if (values.low_ > 0) lengths.push_back(static_cast<std::size_t>(values.low_) - 1);
        return lengths;
    }

    static std::vector<std::uint8_t> wrong_types(std::uint8_t type) {
        std::vector<std::uint8_t> types{Integer, OctetString, Unsigned32, IpAddress};
        std::erase(types, type);
        return types;
    }

    // In how many ways a check can fail; 0 when it cannot.
    std::size_t ways(const Step& step) const {
        switch (step.kind) {
            case Step::type: return wrong_types(writable_.type_).size();
            case Step::length: return wrong_lengths().size();
            case Step::column:
            case Step::index: return writable_.scalar_ ? 0 : 1;
            case Step::value: return writable_.values_.bad_.size();
            default: return 1;
        }
    }

    int error_of(const Step& step, std::size_t way) const {
        return step.kind == Step::value ? writable_.values_.bad_[way].error.value_or(step.error) : step.error;
    }

    // A write that fails the steps from `first` on, up to `last`: the first of them in the given way.
    int write_broken(Request& request, Order::const_iterator first, Order::const_iterator last, std::size_t way) {
        const auto answers = host_.answers;
        if (writable_.prepare_) writable_.prepare_();
        bool cut = false, longer = false, named = true;
        std::optional<std::size_t> length;
        for (auto step = first; step != last; ++step) {
            const std::size_t how = step == first ? way : 0;
            if (ways(*step) == 0 || !contains(step->phases, phase_)) continue;
            switch (step->kind) {
                case Step::type: request.type = wrong_types(writable_.type_)[how]; break;
                case Step::length: length = wrong_lengths()[how]; break;
                case Step::column: cut = true; break;
                case Step::index: longer = true; break;
                case Step::interface: named = false; break;
                case Step::value: request.value = writable_.values_.bad_[how].value.octets; break;
                case Step::other: step->violate(); break;
            }
            constexpr const char* kNames[] = {" type",      " length", " column", " index",
                                              " interface", " value",  " other"};
            request.broken += kNames[step->kind];
        }
        if (length) request.value.resize(*length, 'x');
        if (cut)
            request.name.resize(request.name.size() - writable_.index_.size() - 1);
        else if (longer)
            request.name.push_back(1);
        const int error = write(request, named);
        host_.answers = answers;
        return error;
    }

    void refuses() {
        const Order& order = writable_.order_;
        for (auto step = order.begin(); step != order.end(); ++step) {
            if (!contains(step->phases, phase_)) continue;
            for (std::size_t way = 0; way < ways(*step); ++way)
                for (const auto last : {std::next(step), order.end()}) {
                    Request request = request_with(writable_.values_.good_.front());
                    const int error = write_broken(request, step, last, way);
                    expect_error(error, error_of(*step, way), request);
                    expect(host_.sent.empty(), request, "sends in spite of its refusal");
                    if (!writable_.logs_) continue;
                    const auto logged = writable_.logs_->find(step->kind);
                    const std::string text = logged != writable_.logs_->end() ? logged->second : "";
                    expect(host_.log() == text, request, "logs \"" + host_.log() + "\", not \"" + text + "\"");
                }
        }
    }

    bool makes(Step::Kind kind) const {
        return std::ranges::any_of(writable_.order_, [&](const Step& step) { return step.kind == kind; });
    }

    void accepts() {
        std::vector<Value> values = writable_.values_.good_;
        for (const Writable::Sending& sending : writable_.sendings_.value_or(std::vector<Writable::Sending>()))
            values.push_back(sending.value);
        for (const Value& value : values) {
            const Request request = request_with(value);
            if (phase_ == action && !contains(writable_.refused_in_, action))
                acts(request);
            else
                waits(request, true);
        }
        if (phase_ == action) return;
        // What is not a check must not refuse.
        Request request = request_with(values.front());
        if (!makes(Step::interface)) waits(request, false);
        if (!makes(Step::index) && !writable_.scalar_) {
            request.name.push_back(1);
            waits(request, true);
        }
    }

    int write_good(const Request& request, bool named = true) {
        if (writable_.prepare_) writable_.prepare_();
        return write(request, named);
    }

    void waits(const Request& request, bool named) {
        const int error = write_good(request, named);
        expect_error(error, contains(writable_.refused_in_, phase_) ? genErr : noError, request,
                     named ? " to a good value" : " for an interface without a name");
        expect(host_.sent.empty() || host_.may_configure_in.contains(phase_), request, "sends outside ACTION");
    }

    void acts(const Request& request) {
        const int error = write_good(request);
        const Lines lines = host_.lines();
        int expected = noError;
        if (writable_.sends_nothing_) expect(lines.empty(), request, "sends");
        if (const Writable::Sending* sending = sending_of(request.value)) {
            expected = sending->error;
            expect(lines == sending->lines, request, "is to send " + ::testing::PrintToString(sending->lines));
        }
        expect_error(error, expected, request);
        for (const Sent& line : host_.sent) {
            const bool enters = line.caller == "_enter_intf" && line.line.starts_with("5 interface ");
            expect(enters || line.caller == "write_" + writable_.object_, request, "is called " + line.caller);
        }
        if (writable_.values_.words_ && !lines.empty())
            expect(std::ranges::any_of(lines, [text = up_to_nul(request.value)](
                                                  const std::string& line) { return line.find(text) != line.npos; }),
                   request, "does not send its whole text");
        for (std::size_t at = 0; at < lines.size() && !failed_; ++at) stops_at(request, lines, at, error);
    }

    const Writable::Sending* sending_of(const Bytes& value) const {
        if (!writable_.sendings_) return nullptr;
        const auto found = std::ranges::find(*writable_.sendings_, Value(value), &Writable::Sending::value);
        return found != writable_.sendings_->end() ? &*found : nullptr;
    }

    // A line that the backend refuses is the last.
    void stops_at(const Request& request, Lines lines, std::size_t at, int error_when_accepted) {
        host_.refused_line = at;
        const int error = write_good(request);
        host_.refused_line.reset();
        const auto what = at == 0 && lines.size() > 1 ? writable_.first_line_ : Writable::ends;
        const int expected = what == Writable::ends       ? int{genErr}
                             : what == Writable::succeeds ? int{noError}
                                                          : error_when_accepted;
        if (what != Writable::is_ignored) lines.resize(at + 1);
        const std::string when = " when line " + std::to_string(at + 1) + " is refused";
        expect_error(error, expected, request, when);
        expect(host_.lines() == lines, request, "sends on" + when);
    }
};

void RecordingHost::expect_checks(const std::vector<Writable>& writables) {
    for (const Writable& writable : writables) CheckRun(*this, writable).run();
    forget();
}

}  // namespace tests
