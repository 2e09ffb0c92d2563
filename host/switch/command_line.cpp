#include "switch/command_line.h"

#include <fmt/format.h>

namespace sw {
namespace {

constexpr int kFromGlobal = 5;
constexpr int kInEntered = -1;
constexpr int kInExecutive = 4;
constexpr Entered kNothing{{"no"}};

}  // namespace

void refuse(std::string_view reason) { throw Refusal{std::string(reason)}; }

void CommandLine::add(Mode mode, std::string pattern, Handler handler) {
    lines_.push_back({mode, Pattern(std::move(pattern)), std::move(handler)});
}

bool CommandLine::run(const services::ConfigRequest& request) {
    try {
        switch (request.mode) {
            case kFromGlobal:
                entered_.reset();
                entered_ = apply({kGlobal}, request.command);
                return true;
            case kInEntered:
                if (const auto enters = apply(entered_.value_or(kNothing), request.command)) entered_ = enters;
                return true;
            case kInExecutive: apply({kExecutive}, request.command); return true;
            default: refuse("there is no such mode");
        }
    } catch (const Refusal& refusal) {
        if (log_)
            log_(fmt::format("refused line '{}' of {} in mode {}: {}", escape(request.command), escape(request.caller),
                             request.mode, refusal.reason));
        return false;
    }
}

std::optional<Entered> CommandLine::apply(const Entered& entered, std::string_view command) const {
    require(!has_control_character(command), "it has a control character");
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
    require(entered.mode != kNothing.mode, "no mode was entered for it");
    if (closest == nullptr) refuse(fmt::format("unknown in {} mode", entered.mode.name));
    refuse(fmt::format("{}, expected '{}'",
                       best.misfit.empty() ? "it ends too early" : fmt::format("'{}' does not fit", best.misfit),
                       closest->pattern.text()));
}

}  // namespace sw
