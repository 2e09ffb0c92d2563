#include "switch/command_line.h"

#include <fmt/format.h>

namespace sw {
namespace {

constexpr int kFromGlobal = 5;
constexpr int kInEntered = -1;
constexpr int kInExecutive = 4;
constexpr Entered kNothing{{"no"}};

}  // namespace

void CommandLine::add(Mode mode, std::string pattern, Handler handler) {
    lines_.push_back({mode, Pattern(std::move(pattern)), std::move(handler)});
}

bool CommandLine::run(const services::ConfigRequest& request) {
    Outcome outcome;
    switch (request.mode) {
        case kFromGlobal:
            outcome = apply({kGlobal}, request.command);
            entered_ = outcome.enters;
            break;
        case kInEntered:
            outcome = apply(entered_.value_or(kNothing), request.command);
            if (outcome.enters) entered_ = outcome.enters;
            break;
        case kInExecutive: outcome = apply({kExecutive}, request.command); break;
        default: outcome = refused("there is no such mode");
    }
    if (outcome.is_accepted()) return true;
    if (log_)
        log_(fmt::format("refused line '{}' of {} in mode {}: {}", escape(request.command), escape(request.caller),
                         request.mode, outcome.refusal));
    return false;
}

Outcome CommandLine::apply(const Entered& entered, std::string_view command) const {
    if (has_control_character(command)) return refused("it has a control character");
    const Line* fitting = nullptr;
    Arguments arguments;
    // Where no pattern fits, the one that comes closest says what would.
    const Line* closest = nullptr;
    Pattern::Match best;
    for (const Line& line : lines_) {
        if (line.mode != entered.mode && (line.mode != kAny || entered.mode == kExecutive)) continue;
        Pattern::Match match = line.pattern.match(command);
        if (match.whole && (fitting == nullptr || (fitting->pattern.is_loose() && !line.pattern.is_loose()))) {
            fitting = &line;
            arguments = std::move(match.arguments);
        } else if (match.fitted > best.fitted) {
            best = std::move(match);
            closest = &line;
        }
    }
    if (fitting != nullptr) return fitting->handler(entered, arguments);
    if (entered.mode == kNothing.mode) return refused("no mode was entered for it");
    if (closest == nullptr) return refused(fmt::format("unknown in {} mode", entered.mode.name));
    return refused(fmt::format(
        "{}, expected '{}'", best.misfit.empty() ? "it ends too early" : fmt::format("'{}' does not fit", best.misfit),
        closest->pattern.text()));
}

}  // namespace sw
