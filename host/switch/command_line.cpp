#include "switch/command_line.h"

#include <fmt/format.h>

#include <optional>

namespace sw {
namespace {

constexpr int kGlobal = 5;
constexpr int kEntered = -1;
constexpr int kExecutive = 4;

const char* name_of(Mode mode) {
    switch (mode) {
        case Mode::global: return "global";
        case Mode::interface: return "interface";
        case Mode::vlan: return "VLAN";
        case Mode::vrf: return "VRF";
        case Mode::executive: return "executive";
        case Mode::none: break;
    }
    return "no";
}

}  // namespace

void CommandLine::add(Mode mode, const char* pattern, Handler handler) {
    lines_.push_back({mode, Pattern(pattern), std::move(handler)});
}

bool CommandLine::run(const services::ConfigRequest& request) {
    Outcome outcome;
    switch (request.mode) {
        case kGlobal:
            outcome = apply(Mode::global, request.command);
            entered_ = outcome.enters;
            break;
        case kEntered:
            outcome = entered_ == Mode::none ? refused("no mode was entered for it") : apply(entered_, request.command);
            break;
        case kExecutive: outcome = apply(Mode::executive, request.command); break;
        default: outcome = refused("there is no such mode");
    }
    if (outcome.is_accepted()) return true;
    if (log_)
        log_(fmt::format("refused line '{}' of {} in mode {}: {}", escape(request.command), escape(request.caller),
                         request.mode, outcome.refusal));
    return false;
}

Outcome CommandLine::apply(Mode mode, std::string_view command) const {
    if (has_control_character(command)) return refused("it has a control character");
    // Where no pattern fits, the one that comes closest says what would.
    const Line* closest = nullptr;
    Pattern::Match best;
    for (const Line& line : lines_) {
        if (line.mode != mode) continue;
        Pattern::Match match = line.pattern.match(command);
        if (match.whole) return line.handler(match.arguments);
        if (match.fitted > best.fitted) {
            best = std::move(match);
            closest = &line;
        }
    }
    if (closest == nullptr) return refused(fmt::format("unknown in {} mode", name_of(mode)));
    return refused(fmt::format(
        "{}, expected '{}'", best.misfit.empty() ? "it ends too early" : fmt::format("'{}' does not fit", best.misfit),
        closest->pattern.text()));
}

}  // namespace sw
