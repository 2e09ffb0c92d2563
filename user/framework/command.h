// Texts in fixed buffers, formatted with formats that the compiler checks.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace switchmib {

struct NoAnswer {};
inline constexpr NoAnswer no_answer;  // in place of a command: this read has no answer

// A NUL-terminated text of at most capacity - 1 octets; what is longer is cut.
template <std::size_t capacity>
class Text {
public:
    Text() { text_[0] = '\0'; }
    Text(NoAnswer) : refused_(true) { text_[0] = '\0'; }
    __attribute__((format(printf, 2, 3))) Text(const char* format, ...) {
        std::va_list arguments;
        va_start(arguments, format);
        static_cast<void>(std::vsnprintf(text_, capacity, format, arguments));
        va_end(arguments);
    }

    const char* c_str() const { return text_; }
    operator const char*() const { return text_; }
    bool refused() const { return refused_; }  // made of no_answer

private:
    char text_[capacity];
    bool refused_ = false;
};

using Command = Text<768>;  // a show command or a configuration line

}  // namespace switchmib
