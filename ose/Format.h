#pragma once
// Formatting routines used by every trace and message.
//
// snprintf: the output is cut to size - 1 characters and always ends in NUL;
// the result is the length the whole text would have had. A NIL %s prints
// "(null)", a NIL %p prints "(nil)", and the ' flag groups thousands with ','
// whatever the locale. vasprintf/asprintf measure, allocate length + 1 bytes
// with malloc (the caller frees) and print; the result is -1 when allocation
// fails, with *result set to NIL.
//
// floatToString prints a single-precision float digit by digit, as the target
// did without a floating point unit: a sign if negative, the integer part, a
// point and `decimals` digits, each taken by multiplying the remainder by 10
// and adding 0.0005 before truncation. The last byte of buffer is always NUL.

#include <cstdarg>
#include <cstddef>
#include <string>

namespace ose {

int snprintf(char* buffer, std::size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
int vsnprintf(char* buffer, std::size_t size, const char* format, va_list args);
int asprintf(char** result, const char* format, ...) __attribute__((format(printf, 2, 3)));
int vasprintf(char** result, const char* format, va_list args);

// Convenience for C++ callers: the formatted text as a std::string.
std::string format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string vformat(const char* format, va_list args);

void floatToString(char* buffer, std::size_t size, float value, int decimals);
// The same as text; 2 decimals is the system's usual choice, 5 for small deviations.
std::string floatToString(float value, int decimals = 2);

} // namespace ose
