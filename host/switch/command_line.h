// The configuration command line: every line that the switch takes, by mode.
#pragma once

#include "services/services.h"
#include "switch/grammar.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace sw {

// Where a line may stand. `none` is no place: what a line leads to that enters no mode of its own.
enum class Mode { none, global, interface, vlan, vrf, executive };

// What became of a line: accepted, perhaps entering a mode, or refused with the reason.
struct Outcome {
    std::string refusal;
    Mode enters = Mode::none;

    bool is_accepted() const { return refusal.empty(); }
};
inline Outcome refused(std::string reason) { return {std::move(reason)}; }
inline const Outcome accepted{};

class CommandLine {
public:
    using Handler = std::function<Outcome(const Arguments&)>;

    // `log` takes a line for every refusal; none: they are dropped.
    explicit CommandLine(std::function<void(const std::string&)> log) : log_(std::move(log)) {}

    // Where several patterns fit a line, the first one that was added serves it.
    void add(Mode mode, const char* pattern, Handler handler);

    // A request of mode 5 starts in global mode, one of mode -1 in the mode that the mode-5 line before it entered, one
    // of mode 4 in executive mode. A refused mode-5 line enters none, so that what follows it cannot hit another
    // interface than the one that was meant.
    bool run(const services::ConfigRequest& request);

private:
    struct Line {
        Mode mode;
        Pattern pattern;
        Handler handler;
    };
    Outcome apply(Mode mode, std::string_view command) const;

    std::function<void(const std::string&)> log_;
    std::vector<Line> lines_;
    Mode entered_ = Mode::none;
};

}  // namespace sw
