// Texts in fixed buffers, formatted with formats that the compiler checks.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace switchmib {

// Writes a NUL-terminated text of at most `capacity` - 1 octets; what is longer is cut. Takes what commands use of
// printf's formats: %d %u %x %X %s and %%, with zeros, a width and a precision. Other conversions are copied as they
// are.
void format_text(char* text, std::size_t capacity, const char* format, std::va_list arguments);

void mistake_a_command_without_a_function_has_one_percent_d();  // never defined: names the mistake

// A format with one "%d", cut in two when it is compiled.
struct NumberFormat {
    const char* text = nullptr;
    std::uint16_t before = 0;  // octets before the "%d"
    std::uint16_t after = 0;   // and after it

    constexpr NumberFormat() = default;
    constexpr explicit NumberFormat(const char* format)
        : text(format), before(find_number(format)), after(find_end(format + before + 2)) {}

private:
    static constexpr std::uint16_t find_number(const char* format) {
        std::uint16_t at = 0;
        while (format[at] != '%' && format[at] != '\0') ++at;
        if (format[at] == '\0' || format[at + 1] != 'd') mistake_a_command_without_a_function_has_one_percent_d();
        return at;
    }
    static constexpr std::uint16_t find_end(const char* rest) {
        std::uint16_t at = 0;
        for (; rest[at] != '\0'; ++at)
            if (rest[at] == '%') mistake_a_command_without_a_function_has_one_percent_d();
        return at;
    }
};
void format_number(char* text, std::size_t capacity, const NumberFormat& format, std::int32_t number);

struct NoAnswer {};
inline constexpr NoAnswer no_answer;  // in place of a command: this read has no answer

// A NUL-terminated text of at most capacity - 1 octets; what is longer is cut.
template <std::size_t capacity>
class Text {
public:
    Text() { text_[0] = '\0'; }
    Text(NoAnswer) : refused_(true) { text_[0] = '\0'; }
    Text(const NumberFormat& format, std::uint32_t number) {
        format_number(text_, capacity, format, static_cast<std::int32_t>(number));
    }
    __attribute__((format(printf, 2, 3))) Text(const char* format, ...) {
        std::va_list arguments;
        va_start(arguments, format);
        format_text(text_, capacity, format, arguments);
        va_end(arguments);
    }

    const char* c_str() const { return text_; }
    operator const char*() const { return text_; }
    bool refused() const { return refused_; }  // made of no_answer

    // The same text in a buffer of another size: cut where that is smaller.
    template <std::size_t other>
    Text(const Text<other>& text) : Text("%s", text.c_str()) {}

private:
    char text_[capacity];
    bool refused_ = false;
};

using Command = Text<768>;  // a show command or a configuration line

}  // namespace switchmib
