#include "frame/EC_String.h"

#include "ose/Format.h"

#include <cstdarg>
#include <cstring>
#include <utility>

EC_String::EC_String() { assign("", 0); }

EC_String::EC_String(const char* text)
{
    if (text == nullptr) text = "";
    assign(text, std::strlen(text));
}

EC_String::EC_String(const EC_String& other) { assign(other.c_str(), other.length()); }

EC_String::EC_String(EC_String&& other) noexcept
    : m_pBuffer(std::move(other.m_pBuffer)), m_size(other.m_size)
{
    // The moved-from string stays a valid empty text.
    other.m_pBuffer = std::make_unique<char[]>(1);
    other.m_size = 1;
}

EC_String& EC_String::operator=(const EC_String& other)
{
    if (this != &other) assign(other.c_str(), other.length());
    return *this;
}

EC_String& EC_String::operator=(EC_String&& other) noexcept
{
    if (this != &other) {
        m_pBuffer = std::move(other.m_pBuffer);
        m_size = other.m_size;
        other.m_pBuffer = std::make_unique<char[]>(1);
        other.m_size = 1;
    }
    return *this;
}

EC_String::~EC_String() = default;

EC_String EC_String::format(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list measure;
    va_copy(measure, args);
    int length = ose::vsnprintf(nullptr, 0, format, measure);
    va_end(measure);
    EC_String result;
    if (length > 0) {
        result.m_size = static_cast<std::size_t>(length) + 1;
        result.m_pBuffer = std::make_unique<char[]>(result.m_size);
        ose::vsnprintf(result.m_pBuffer.get(), result.m_size, format, args);
    }
    va_end(args);
    return result;
}

void EC_String::assign(const char* text, std::size_t length)
{
    auto buffer = std::make_unique<char[]>(length + 1);
    std::memcpy(buffer.get(), text, length);
    buffer[length] = '\0';
    m_pBuffer = std::move(buffer);
    m_size = length + 1;
}

bool operator==(const EC_String& a, const EC_String& b)
{
    return a.m_size == b.m_size && std::memcmp(a.c_str(), b.c_str(), a.m_size) == 0;
}

bool operator==(const EC_String& a, const char* b)
{
    return std::strcmp(a.c_str(), b != nullptr ? b : "") == 0;
}
