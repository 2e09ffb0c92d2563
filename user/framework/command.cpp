#include "framework/command.h"

#include <algorithm>
#include <cstring>

namespace switchmib {
namespace {

constexpr std::size_t kShort = 4;

// The first '%' of a text, or its end.
const char* find_percent(const char* text) {
    for (std::size_t i = 0; i < kShort; ++i)
        if (text[i] == '%' || text[i] == '\0') return text + i;
    return strchrnul(text + kShort, '%');
}

// A text being written: the room that is left, with one octet kept for the NUL.
struct Writing {
    char* at;
    char* end;

    void put(const char* octets, std::size_t count) {
        count = std::min(count, static_cast<std::size_t>(end - at));
        // Most runs are shorter than what a call costs.
        if (count <= kShort)
            for (std::size_t i = 0; i < count; ++i) at[i] = octets[i];
        else
            std::memcpy(at, octets, count);
        at += count;
    }
    void fill(char octet, int count) {
        while (count-- > 0 && at < end) *at++ = octet;
    }
};

constexpr char kDecimal[] = "0123456789", kLowerHex[] = "0123456789abcdef", kUpperHex[] = "0123456789ABCDEF";

struct Digits {
    static constexpr int kMost = 10;  // of 32 bits in decimal
    char octets[kMost];
    const char* first = octets + kMost;

    template <std::size_t size>
    Digits(std::uint32_t number, const char (&alphabet)[size]) {
        constexpr std::uint32_t base = size - 1;
        char* at = octets + kMost;
        do {
            *--at = alphabet[number % base];
            number /= base;
        } while (number != 0);
        first = at;
    }
    Digits(const Digits&) = delete;
    Digits& operator=(const Digits&) = delete;
    int count() const { return static_cast<int>(octets + kMost - first); }
};

// What stands between a '%' and its conversion.
struct Spec {
    bool zeros = false;
    int width = 0;
    int precision = -1;  // none
};

void put_number(Writing& out, const Digits& digits, bool negative, const Spec& spec) {
    int zeros = std::max(spec.precision - digits.count(), 0);
    const int blanks = spec.width - digits.count() - zeros - negative;
    const bool padded_with_zeros = spec.zeros && spec.precision < 0;
    if (padded_with_zeros)
        zeros = std::max(blanks, 0);
    else
        out.fill(' ', blanks);
    if (negative) out.fill('-', 1);
    out.fill('0', zeros);
    out.put(digits.first, static_cast<std::size_t>(digits.count()));
}

void put_decimal(Writing& out, std::int32_t number, const Spec& spec) {
    const auto magnitude = static_cast<std::uint32_t>(number);
    put_number(out, Digits(number < 0 ? 0 - magnitude : magnitude, kDecimal), number < 0, spec);
}

int take_count(const char*& format) {
    int count = 0;
    while (*format >= '0' && *format <= '9') count = count * 10 + (*format++ - '0');
    return count;
}

Spec take_spec(const char*& format, std::va_list& arguments) {
    Spec spec;
    if (*format == '0') spec.zeros = true;
    spec.width = take_count(format);
    if (*format != '.') return spec;
    if (*++format == '*') {
        ++format;
        spec.precision = va_arg(arguments, int);
    } else {
        spec.precision = take_count(format);
    }
    return spec;
}

}  // namespace

void format_text(char* text, std::size_t capacity, const char* format, std::va_list given) {
    std::va_list arguments;  // an array on some machines, which decays in a parameter
    va_copy(arguments, given);
    Writing out{text, text + capacity - 1};
    for (;;) {
        const char* percent = find_percent(format);
        out.put(format, static_cast<std::size_t>(percent - format));
        if (*percent == '\0') break;
        format = percent + 1;
        const Spec spec = *format > '9' ? Spec() : take_spec(format, arguments);
        switch (*format++) {
            case 'd': put_decimal(out, va_arg(arguments, int), spec); break;
            case 'u': put_number(out, Digits(va_arg(arguments, unsigned), kDecimal), false, spec); break;
            case 'x': put_number(out, Digits(va_arg(arguments, unsigned), kLowerHex), false, spec); break;
            case 'X': put_number(out, Digits(va_arg(arguments, unsigned), kUpperHex), false, spec); break;
            case 's': {
                const char* string = va_arg(arguments, const char*);
                const std::size_t length = spec.precision < 0
                                               ? std::strlen(string)
                                               : strnlen(string, static_cast<std::size_t>(spec.precision));
                out.fill(' ', spec.width - static_cast<int>(length));
                out.put(string, length);
                break;
            }
            case '%': out.fill('%', 1); break;
            default: out.put(percent, static_cast<std::size_t>(--format - percent)); break;
        }
    }
    va_end(arguments);
    *out.at = '\0';
}

void format_number(char* text, std::size_t capacity, const NumberFormat& format, std::int32_t number) {
    Writing out{text, text + capacity - 1};
    out.put(format.text, format.before);
    put_decimal(out, number, {});
    out.put(format.text + format.before + 2, format.after);
    *out.at = '\0';
}

}  // namespace switchmib
