#include "framework/command.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace switchmib {
namespace {

// Texts up to these are copied octet by octet: most are shorter than what a call costs.
constexpr int kShortRun = 2;
constexpr int kShortString = 6;

// A text being written: the space that is left, with one octet kept for the NUL.
struct Writing {
    char* at;
    char* end;

    void put(const char* octets, std::size_t count) {
        count = std::min(count, static_cast<std::size_t>(end - at));
        std::memcpy(at, octets, count);
        at += count;
    }
    void put_string(const char* string) {
        if (end - at > kShortString) {
            for (char* const stop = at + kShortString; at < stop; *at++ = *string++)
                if (*string == '\0') return;
        }
        put(string, std::strlen(string));
    }
    // The text up to its first '%', or to its end; returns where that is.
    const char* put_run(const char* text) {
        for (int i = 0; i < kShortRun; ++i) {
            if (*text == '%' || *text == '\0') return text;
            if (at < end) *at++ = *text;
            ++text;
        }
        const char* percent = strchrnul(text, '%');
        put(text, static_cast<std::size_t>(percent - text));
        return percent;
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

// What is between a '%' and its conversion.
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

[[gnu::noinline]] void put_signed(Writing& out, std::int32_t number, const Spec& spec) {
    const auto bits = static_cast<std::uint32_t>(number);
    put_number(out, Digits(number < 0 ? 0 - bits : bits, kDecimal), number < 0, spec);
}

constexpr auto kPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

int count_digits(std::uint32_t number) {
    if (number < 10000) return number < 100 ? (number < 10 ? 1 : 2) : (number < 1000 ? 3 : 4);
    int count = 5;
    for (std::uint64_t power = 100000; count < Digits::kMost && number >= power; power *= 10) ++count;
    return count;
}

// A number without a width or a precision, which most are: two digits at a time.
void put_decimal(Writing& out, std::int32_t number) {
    const auto bits = static_cast<std::uint32_t>(number);
    if (out.end - out.at < Digits::kMost + 1) return put_signed(out, number, {});
    if (number < 0) *out.at++ = '-';
    std::uint32_t magnitude = number < 0 ? 0 - bits : bits;
    out.at += count_digits(magnitude);
    char* at = out.at;
    for (; magnitude >= 100; magnitude /= 100) {
        at -= 2;
        std::memcpy(at, &kPairs[std::size_t{2} * (magnitude % 100)], 2);
    }
    if (magnitude >= 10)
        std::memcpy(at - 2, &kPairs[std::size_t{2} * magnitude], 2);
    else
        at[-1] = static_cast<char>('0' + magnitude);
}

// The analyzer takes a va_list by reference for one that has not begun.
// NOLINTBEGIN(clang-analyzer-valist.Uninitialized)

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

// Writes the conversion at `format`; returns what follows it. Not inline, so that the common conversions stay fast.
[[gnu::noinline]] const char* put_other(Writing& out, const char* format, std::va_list& arguments) {
    const char* const percent = format++;
    const Spec spec = take_spec(format, arguments);
    switch (*format++) {
        case 'd': put_signed(out, va_arg(arguments, int), spec); break;
        case 'u': put_number(out, Digits(va_arg(arguments, unsigned), kDecimal), false, spec); break;
        case 'x': put_number(out, Digits(va_arg(arguments, unsigned), kLowerHex), false, spec); break;
        case 'X': put_number(out, Digits(va_arg(arguments, unsigned), kUpperHex), false, spec); break;
        case 's': {
            const char* string = va_arg(arguments, const char*);
            const std::size_t length =
                spec.precision < 0 ? std::strlen(string) : strnlen(string, static_cast<std::size_t>(spec.precision));
            out.fill(' ', spec.width - static_cast<int>(length));
            out.put(string, length);
            break;
        }
        case '%': out.fill('%', 1); break;
        default: out.put(percent, static_cast<std::size_t>(--format - percent)); break;
    }
    return format;
}

}  // namespace

void format_text(char* text, std::size_t capacity, const char* format, std::va_list given) {
    std::va_list arguments;  // an array on some machines, which decays in a parameter
    va_copy(arguments, given);
    Writing out{text, text + capacity - 1};
    for (;;) {
        format = out.put_run(format);
        if (*format == '\0') break;
        if (format[1] == 's') {
            out.put_string(va_arg(arguments, const char*));
            format += 2;
        } else if (format[1] == 'd') {
            put_decimal(out, va_arg(arguments, int));
            format += 2;
        } else {
            format = put_other(out, format, arguments);
        }
    }
    va_end(arguments);
    *out.at = '\0';
}

// NOLINTEND(clang-analyzer-valist.Uninitialized)

void format_number(char* text, std::size_t capacity, const NumberFormat& format, std::int32_t number) {
    Writing out{text, text + capacity - 1};
    out.put(format.text, format.before);
    put_decimal(out, number);
    out.put(format.text + format.before + 2, format.after);
    *out.at = '\0';
}

}  // namespace switchmib
