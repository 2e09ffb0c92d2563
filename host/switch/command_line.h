// The configuration command line: every line that the switch takes, by mode, and what it sets.
#pragma once

#include "services/services.h"
#include "switch/grammar.h"

#include <fmt/format.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace sw {

// Where a line can be. Areas may have modes of their own.
struct Mode {
    std::string_view name;
    bool operator==(const Mode&) const = default;
};
inline constexpr Mode kGlobal{"global"};
inline constexpr Mode kInterface{"interface"};  // its object is an ifIndex
inline constexpr Mode kVlan{"VLAN"};            // a VLAN id
inline constexpr Mode kVrf{"VRF"};              // a VRF's number
inline constexpr Mode kExecutive{"executive"};
inline constexpr Mode kAny{"any"};  // in every mode but the executive one, even where none was entered

// The mode that the command line is in, and the number of the object whose mode it is.
struct Entered {
    Mode mode;
    std::uint32_t object = 0;
};

// Thrown for a line that is refused. What it changed before that stays.
struct Refusal {
    std::string reason;
};
[[noreturn]] void refuse(std::string_view reason);
inline void require(bool condition, std::string_view reason) {
    if (!condition) refuse(reason);
}

class CommandLine {
public:
    // Carries out a line; returns the mode that it enters, if any, or throws Refusal.
    using Handler = std::function<std::optional<Entered>(const Entered&, const Arguments&)>;

    // `log` takes a line for every refusal; none: they are dropped.
    explicit CommandLine(std::function<void(const std::string&)> log) : log_(std::move(log)) {}

    // Where several patterns fit a line, one with {word} or {text} gives way to one without; otherwise the first one
    // that was added serves it.
    void add(Mode mode, std::string pattern, Handler handler);

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
    std::optional<Entered> apply(const Entered& entered, std::string_view command) const;

    std::function<void(const std::string&)> log_;
    std::vector<Line> lines_;
    std::optional<Entered> entered_;
};

// Lines that set something of an `Object`: the one whose mode it is, or an area itself. In each, `member` is a member of
// the object, or a function that returns a reference to what is set.
template <class Object>
class Lines {
public:
    // The object that a line is for; throws Refusal where there is none. The reference is used at once and not kept.
    using Find = std::function<Object&(const Entered&)>;
    // Takes the consequences of an accepted line.
    using Changed = std::function<void(const Entered&)>;

    Lines(CommandLine& lines, std::vector<Mode> modes, Find find, Changed changed = {})
        : lines_(lines), modes_(std::move(modes)), find_(std::move(find)), changed_(std::move(changed)) {}

    // A line that does more. `handle` takes (Object&, const Arguments&), (Object&, const Arguments&, const Entered&),
    // (const Arguments&) or nothing; it returns the mode that it enters as an Entered, or nothing, and throws Refusal.
    template <class Handle>
    void line(const std::string& pattern, Handle handle) const {
        for (const Mode& mode : modes_)
            lines_.add(mode, pattern,
                       [find = find_, changed = changed_, handle](const Entered& entered, const Arguments& arguments) {
                           const std::optional<Entered> enters = call(handle, find(entered), arguments, entered);
                           if (changed) changed(entered);
                           return enters;
                       });
    }
    // "LINE" sets it, "no LINE" clears it.
    template <class Member>
    void flag(const std::string& name, Member member) const {
        set(name, member, true);
        set("no " + name, member, false);
    }
    template <class Member, class Fact>
    void set(const std::string& pattern, Member member, Fact fact) const {
        line(pattern, [member, fact](Object& object, const Arguments&) {
            auto& value = std::invoke(member, object);
            value = static_cast<std::remove_reference_t<decltype(value)>>(fact);
        });
    }
    // The line's first number.
    template <class Member>
    void number(const std::string& pattern, Member member) const {
        line(pattern, [member](Object& object, const Arguments& arguments) {
            auto& fact = std::invoke(member, object);
            for (const Argument& argument : arguments)
                if (argument.type == PlaceType::number) {
                    fact = static_cast<std::remove_reference_t<decltype(fact)>>(argument.number);
                    return;
                }
        });
    }
    // The line's last argument, at most `longest` octets of it.
    template <class Member>
    void text(const std::string& pattern, Member member, std::size_t longest) const {
        line(pattern, [member, longest](Object& object, const Arguments& arguments) {
            require(arguments.back().text.size() <= longest, fmt::format("it has at most {} octets", longest));
            std::invoke(member, object) = arguments.back().text;
        });
    }
    // Which of the words in its first choice the line has, as a number from `first` on.
    template <class Member>
    void choice(const std::string& pattern, Member member, std::uint32_t first = 1) const {
        const Pattern parsed(pattern);
        std::vector<std::string> words;
        for (const Pattern::Place& place : parsed.places())
            if (place.type == PlaceType::choice && words.empty()) words = place.words;
        line(pattern, [member, first, words](Object& object, const Arguments& arguments) {
            auto& fact = std::invoke(member, object);
            for (std::uint32_t i = 0; i < words.size(); ++i)
                if (words[i] == arguments.front().text)
                    fact = static_cast<std::remove_reference_t<decltype(fact)>>(first + i);
        });
    }

    // Lines of the same mode for what belongs to the object: `part` finds it, or throws Refusal. Changes have the
    // consequences of `changed`, and then the same ones.
    template <class Part>
    Lines<Part> of(std::function<Part&(Object&, const Entered&)> part, Changed changed = {}) const {
        const auto find = [find = find_, part = std::move(part)](const Entered& entered) -> Part& {
            return part(find(entered), entered);
        };
        const auto both = [outer = changed_, changed = std::move(changed)](const Entered& entered) {
            if (changed) changed(entered);
            if (outer) outer(entered);
        };
        return {lines_, modes_, find, both};
    }
    // The same for what an area keeps by the number of the object, such as an ifIndex.
    template <class Part>
    Lines<Part> of(std::map<std::uint32_t, Part>& parts, Changed changed = {}) const {
        return of<Part>([&parts](Object&, const Entered& entered) -> Part& { return parts[entered.object]; },
                        std::move(changed));
    }
    // The same where not every object has one; the others refuse the lines for this reason.
    template <class Part>
    Lines<Part> of(std::map<std::uint32_t, Part>& parts, const std::string& missing) const {
        return of<Part>([&parts, missing](Object&, const Entered& entered) -> Part& {
            const auto part = parts.find(entered.object);
            require(part != parts.end(), missing);
            return part->second;
        });
    }

private:
    template <class Handle>
    static std::optional<Entered> call(const Handle& handle, Object& object, const Arguments& arguments,
                                       const Entered& entered) {
        const auto entered_by = [](auto&& call_it) -> std::optional<Entered> {
            if constexpr (std::is_void_v<decltype(call_it())>) {
                call_it();
                return {};
            } else {
                return call_it();
            }
        };
        if constexpr (std::is_invocable_v<const Handle&, Object&, const Arguments&, const Entered&>)
            return entered_by([&] { return handle(object, arguments, entered); });
        else if constexpr (std::is_invocable_v<const Handle&, Object&, const Arguments&>)
            return entered_by([&] { return handle(object, arguments); });
        else if constexpr (std::is_invocable_v<const Handle&, const Arguments&>)
            return entered_by([&] { return handle(arguments); });
        else
            return entered_by(handle);
    }

    CommandLine& lines_;
    std::vector<Mode> modes_;
    Find find_;
    Changed changed_;
};

}  // namespace sw
