#include "ose/Format.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

namespace ose {
namespace {

// Collects output into a caller's buffer of fixed size, counting what the
// whole text would have needed.
class Sink {
public:
    Sink(char* buffer, std::size_t size) : m_buffer(buffer), m_size(size) {}

    void put(const char* text, std::size_t length)
    {
        if (m_size > 0 && m_used + 1 < m_size) {
            std::size_t room = m_size - 1 - m_used;
            std::size_t n = length < room ? length : room;
            std::memcpy(m_buffer + m_used, text, n);
            m_used += n;
        }
        m_total += length;
    }
    void put(const std::string& text) { put(text.data(), text.size()); }
    void finish()
    {
        if (m_size > 0)
            m_buffer[m_used] = '\0';
    }
    std::size_t total() const { return m_total; }

private:
    char* m_buffer;
    std::size_t m_size;
    std::size_t m_used = 0;
    std::size_t m_total = 0;
};

enum class Length { None, hh, h, l, ll, j, z, t, L };

struct ConversionSpec {
    std::string flags; // without the grouping flag
    bool group = false;
    bool leftAlign = false;
    bool zeroPad = false;
    int width = -1;
    int precision = -1;
    Length length = Length::None;
    char conversion = 0;
};

const char* lengthText(Length length)
{
    switch (length) {
    case Length::hh: return "hh";
    case Length::h: return "h";
    case Length::l: return "l";
    case Length::ll: return "ll";
    case Length::j: return "j";
    case Length::z: return "z";
    case Length::t: return "t";
    case Length::L: return "L";
    case Length::None: break;
    }
    return "";
}

// Parses one conversion after '%'; returns the position after it, or nullptr
// when the text ends inside the conversion.
const char* parseSpec(const char* p, ConversionSpec& definition, va_list& args)
{
    for (;; ++p) {
        char c = *p;
        if (c == '\'') { definition.group = true; continue; }
        if (c == '-') definition.leftAlign = true;
        else if (c == '0') definition.zeroPad = true;
        else if (c != '+' && c != ' ' && c != '#') break;
        definition.flags += c;
    }
    if (*p == '*') {
        definition.width = va_arg(args, int);
        if (definition.width < 0) { definition.leftAlign = true; definition.flags += '-'; definition.width = -definition.width; }
        ++p;
    } else if (*p >= '0' && *p <= '9') {
        definition.width = 0;
        while (*p >= '0' && *p <= '9') definition.width = definition.width * 10 + (*p++ - '0');
    }
    if (*p == '.') {
        ++p;
        definition.precision = 0;
        if (*p == '*') {
            definition.precision = va_arg(args, int);
            if (definition.precision < 0) definition.precision = -1; // negative means "not given"
            ++p;
        } else {
            while (*p >= '0' && *p <= '9') definition.precision = definition.precision * 10 + (*p++ - '0');
        }
    }
    if (*p == 'h') { ++p; definition.length = Length::h; if (*p == 'h') { ++p; definition.length = Length::hh; } }
    else if (*p == 'l') { ++p; definition.length = Length::l; if (*p == 'l') { ++p; definition.length = Length::ll; } }
    else if (*p == 'j') { ++p; definition.length = Length::j; }
    else if (*p == 'z') { ++p; definition.length = Length::z; }
    else if (*p == 't') { ++p; definition.length = Length::t; }
    else if (*p == 'L') { ++p; definition.length = Length::L; }
    if (*p == '\0')
        return nullptr;
    definition.conversion = *p;
    return p + 1;
}

std::string libcFormat(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
std::string libcFormat(const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, fmt, copy);
    va_end(copy);
    std::string out;
    if (n > 0) {
        out.resize(static_cast<std::size_t>(n));
        std::vsnprintf(out.data(), out.size() + 1, fmt, args);
    }
    va_end(args);
    return out;
}

// The conversion rebuilt for the C library, without the grouping flag.
std::string libcSpec(const ConversionSpec& definition, char conversion, bool withLength = true)
{
    std::string f(1, '%');
    f += definition.flags;
    if (definition.width >= 0) f += std::to_string(definition.width);
    if (definition.precision >= 0) {
        f += '.';
        f += std::to_string(definition.precision);
    }
    if (withLength) f += lengthText(definition.length);
    f += conversion;
    return f;
}

std::string pad(std::string text, const ConversionSpec& definition, bool zeroAllowed)
{
    if (definition.width < 0 || text.size() >= static_cast<std::size_t>(definition.width))
        return text;
    std::size_t fill = static_cast<std::size_t>(definition.width) - text.size();
    if (definition.leftAlign)
        return text + std::string(fill, ' ');
    if (definition.zeroPad && zeroAllowed && definition.precision < 0) {
        std::size_t signEnd = (!text.empty() && (text[0] == '-' || text[0] == '+' || text[0] == ' ')) ? 1 : 0;
        return text.insert(signEnd, fill, '0');
    }
    return std::string(fill, ' ') + text;
}

std::string groupThousands(const std::string& digits)
{
    std::size_t start = (!digits.empty() && (digits[0] == '-' || digits[0] == '+' || digits[0] == ' ')) ? 1 : 0;
    std::string out = digits.substr(0, start);
    std::size_t count = digits.size() - start;
    for (std::size_t i = 0; i < count; ++i) {
        out += digits[start + i];
        std::size_t left = count - i - 1;
        if (left > 0 && left % 3 == 0) out += ',';
    }
    return out;
}

// A libc conversion for a value read as long long / unsigned long long.
std::string wideIntSpec(const ConversionSpec& definition, char conversion)
{
    std::string f = libcSpec(definition, conversion, false);
    f.insert(f.size() - 1, "ll");
    return f;
}

// Grouped numbers are printed bare, grouped, then padded to the width.
ConversionSpec bareForGrouping(const ConversionSpec& definition)
{
    ConversionSpec bare = definition;
    bare.width = -1;
    bare.flags.clear();
    for (char c : definition.flags)
        if (c == '+' || c == ' ') bare.flags += c;
    return bare;
}

std::string formatSigned(const ConversionSpec& definition, long long value)
{
    if (!definition.group) return libcFormat(wideIntSpec(definition, 'd').c_str(), value);
    std::string digits = libcFormat(wideIntSpec(bareForGrouping(definition), 'd').c_str(), value);
    return pad(groupThousands(digits), definition, true);
}

std::string formatUnsigned(const ConversionSpec& definition, unsigned long long value)
{
    if (!definition.group || definition.conversion != 'u') return libcFormat(wideIntSpec(definition, definition.conversion).c_str(), value);
    std::string digits = libcFormat(wideIntSpec(bareForGrouping(definition), 'u').c_str(), value);
    return pad(groupThousands(digits), definition, true);
}

long long readSigned(Length length, va_list& args)
{
    switch (length) {
    case Length::hh: return static_cast<signed char>(va_arg(args, int));
    case Length::h: return static_cast<short>(va_arg(args, int));
    case Length::l: return va_arg(args, long);
    case Length::ll: return va_arg(args, long long);
    case Length::j: return va_arg(args, std::intmax_t);
    case Length::z: return static_cast<long long>(va_arg(args, std::size_t));
    case Length::t: return va_arg(args, std::ptrdiff_t);
    default: return va_arg(args, int);
    }
}

unsigned long long readUnsigned(Length length, va_list& args)
{
    switch (length) {
    case Length::hh: return static_cast<unsigned char>(va_arg(args, unsigned));
    case Length::h: return static_cast<unsigned short>(va_arg(args, unsigned));
    case Length::l: return va_arg(args, unsigned long);
    case Length::ll: return va_arg(args, unsigned long long);
    case Length::j: return va_arg(args, std::uintmax_t);
    case Length::z: return va_arg(args, std::size_t);
    case Length::t: return static_cast<unsigned long long>(va_arg(args, std::ptrdiff_t));
    default: return va_arg(args, unsigned);
    }
}

std::string formatString(const ConversionSpec& definition, va_list& args)
{
    if (definition.length == Length::l) {
        const wchar_t* text = va_arg(args, const wchar_t*);
        if (text != nullptr) return libcFormat(libcSpec(definition, 's').c_str(), text);
    } else {
        const char* text = va_arg(args, const char*);
        if (text != nullptr) return libcFormat(libcSpec(definition, 's', false).c_str(), text);
    }
    ConversionSpec plain = definition;
    plain.precision = -1; // "(null)" is printed whole
    return libcFormat(libcSpec(plain, 's', false).c_str(), "(null)");
}

std::string formatOne(const ConversionSpec& definition, va_list& args)
{
    switch (definition.conversion) {
    case 'd':
    case 'i':
        return formatSigned(definition, readSigned(definition.length, args));
    case 'u':
    case 'o':
    case 'x':
    case 'X':
        return formatUnsigned(definition, readUnsigned(definition.length, args));
    case 'f': case 'F': case 'e': case 'E': case 'g': case 'G': case 'a': case 'A':
        if (definition.length == Length::L)
            return libcFormat(libcSpec(definition, definition.conversion).c_str(), va_arg(args, long double));
        return libcFormat(libcSpec(definition, definition.conversion, false).c_str(), va_arg(args, double));
    case 'c':
        if (definition.length == Length::l)
            return libcFormat(libcSpec(definition, 'c').c_str(), static_cast<wint_t>(va_arg(args, wint_t)));
        return libcFormat(libcSpec(definition, 'c', false).c_str(), va_arg(args, int));
    case 's':
        return formatString(definition, args);
    case 'p': {
        void* pointer = va_arg(args, void*);
        ConversionSpec plain = definition;
        plain.precision = -1;
        if (pointer == nullptr) return libcFormat(libcSpec(plain, 's', false).c_str(), "(nil)");
        return libcFormat(libcSpec(plain, 'p', false).c_str(), pointer);
    }
    case 'n':
        // Writing through a pointer taken from the argument list is never wanted
        // in a trace; the argument is consumed and nothing is written.
        (void)va_arg(args, void*);
        return {};
    case '%':
        return "%";
    default:
        // Unknown conversion: printed as it stands, no argument consumed.
        return std::string("%") + definition.conversion;
    }
}

} // namespace

int vsnprintf(char* buffer, std::size_t size, const char* format, va_list args)
{
    Sink sink(buffer, buffer == nullptr ? 0 : size);
    if (format == nullptr) format = "(null)";
    va_list ap;
    va_copy(ap, args);
    const char* p = format;
    while (*p != '\0') {
        const char* percent = std::strchr(p, '%');
        if (percent == nullptr) { sink.put(p, std::strlen(p)); break; }
        sink.put(p, static_cast<std::size_t>(percent - p));
        ConversionSpec definition;
        const char* next = parseSpec(percent + 1, definition, ap);
        if (next == nullptr) { sink.put(percent, std::strlen(percent)); break; }
        sink.put(formatOne(definition, ap));
        p = next;
    }
    va_end(ap);
    sink.finish();
    return static_cast<int>(sink.total());
}

int snprintf(char* buffer, std::size_t size, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    int n = ose::vsnprintf(buffer, size, format, args);
    va_end(args);
    return n;
}

int vasprintf(char** result, const char* format, va_list args)
{
    if (result == nullptr) return -1;
    va_list copy;
    va_copy(copy, args);
    int n = ose::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    *result = static_cast<char*>(std::malloc(static_cast<std::size_t>(n) + 1));
    if (*result == nullptr) return -1;
    ose::vsnprintf(*result, static_cast<std::size_t>(n) + 1, format, args);
    return n;
}

int asprintf(char** result, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    int n = ose::vasprintf(result, format, args);
    va_end(args);
    return n;
}

std::string vformat(const char* format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    int n = ose::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string out(static_cast<std::size_t>(n), '\0');
    ose::vsnprintf(out.data(), out.size() + 1, format, args);
    return out;
}

std::string format(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    std::string out = vformat(format, args);
    va_end(args);
    return out;
}

void floatToString(char* buffer, std::size_t size, float value, int decimals)
{
    if (buffer == nullptr || size == 0) return;
    if (std::isnan(value)) { ose::snprintf(buffer, size, "nan"); return; }
    if (std::isinf(value)) { ose::snprintf(buffer, size, value < 0.0f ? "-inf" : "inf"); return; }
    constexpr int kMaxDecimals = 30;
    if (decimals < 0) decimals = 0;
    if (decimals > kMaxDecimals) decimals = kMaxDecimals;

    bool negative = value < 0.0f;
    float magnitude = negative ? -value : value;
    float integerPart = std::floor(magnitude);
    float remainder = magnitude - integerPart;
    char digits[kMaxDecimals + 1];
    for (int i = 0; i < decimals; ++i) {
        float scaled = remainder * 10.0f;
        int digit = static_cast<int>(scaled + 0.0005f);
        if (digit > 9) digit = 9; // a remainder just under 1 must not print a tenth digit value
        digits[i] = static_cast<char>('0' + digit);
        remainder = scaled - static_cast<float>(digit);
        if (remainder < 0.0f) remainder = 0.0f;
    }
    digits[decimals] = '\0';
    // The integer part is exact in a float; %.0f prints it without the int
    // overflow that values beyond 2^31 would cause.
    ose::snprintf(buffer, size, negative ? "-%.0f.%s" : "%.0f.%s", static_cast<double>(integerPart), digits);
    buffer[size - 1] = '\0';
}

std::string floatToString(float value, int decimals)
{
    char buffer[64];
    floatToString(buffer, sizeof buffer, value, decimals);
    return buffer;
}

} // namespace ose
